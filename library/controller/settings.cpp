// The controller's face of the settings document, and the choice of the profile in force.

#include "library/store/settings.h"

#include <algorithm>

#include "library/logging/log.h"
#include "library/store/jsonFile.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/profileDatabase.h"

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
    return settingsGet(out);
}

bool ZAMOFW::configSet(const Json::Value& values) {
    return settingsSet(values);
}

bool ZAMOFW::fwStatus(bool& enabled) {
    return settingsStatus(enabled);
}

bool ZAMOFW::fwProfileConfigGet(std::string& name) {
    return settingsProfile(name);
}

bool ZAMOFW::fwProfileConfigSet(const std::string& name, bool reload) {
    std::vector<std::string> names;
    if (!ZAMOFW_JSON_DB().profileEnum(names)) {
        return FW_FAILURE("Failed to profileEnum()");
    }
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        return FW_FAILURE("Profile %s is not in database", name.c_str());
    }
    Json::Value settings;
    if (!configGet(settings)) {
        return FW_FAILURE("Falied to configGet()");
    }
    settings["profile"] = name;
    if (!configSet(settings)) {
        return FW_FAILURE("Falied to configSet()");
    }
    // An object of its own: this one may hold the interfaces of an earlier operation.
    if (reload && !ZAMOFW().fwReload(/*blEstablished=*/true)) {
        return FW_FAILURE("Failed to reload firewall");
    }
    return true;
}

}  // namespace FW
