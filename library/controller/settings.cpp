// The settings document's public members, and the choice of the profile in force.

#include "library/store/settings.h"

#include <algorithm>

#include "library/logging/log.h"
#include "library/store/jsonText.h"
#include "library/store/profileStore.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

}  // namespace

bool ZAMOFW::initJconfig(Json::Value& config) {
    if (!isObjectOrNull(config)) {
        return false;
    }
    settingsInit(config);
    return true;
}

bool ZAMOFW::configGet(Json::Value& out) {
    Documents documents;
    return settingsGet(documents, out);
}

bool ZAMOFW::configSet(const Json::Value& values) {
    Documents documents;
    return settingsSet(documents, values);
}

bool ZAMOFW::fwStatus(bool& enabled) {
    Documents documents;
    return settingsStatus(documents, enabled);
}

bool ZAMOFW::fwProfileConfigGet(std::string& name) {
    Documents documents;
    return settingsProfile(documents, name);
}

bool ZAMOFW::fwProfileConfigSet(const std::string& name, bool reload) {
    Documents documents;
    std::vector<std::string> names;
    if (!listProfiles(documents, names)) {
        return FW_FAILURE("Failed to profileEnum()");
    }
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        return FW_FAILURE("Profile %s is not in database", name.c_str());
    }
    Json::Value settings;
    if (!settingsGet(documents, settings)) {
        return FW_FAILURE("Falied to configGet()");
    }
    if (!settingsSetProfile(documents, name)) {
        return FW_FAILURE("Falied to configSet()");
    }
    // An object of its own: this one may hold the interfaces of an earlier operation.
    if (reload && !ZAMOFW().fwReload(/*blEstablished=*/true)) {
        return FW_FAILURE("Failed to reload firewall");
    }
    return true;
}

}  // namespace FW
