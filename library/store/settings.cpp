#include "library/store/settings.h"

#include <unistd.h>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/store/jsonFile.h"
#include "zamofirewall/lockedJson.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";
constexpr const char* kStatus = "status";
constexpr const char* kProfile = "profile";

// An array or an object does not convert to a flag or a text.
template <typename Convert>
bool converted(Convert convert) {
    try {
        convert();
        return true;
    } catch (const Json::Exception&) {
        return false;
    }
}

}  // namespace

void settingsInit(Json::Value& settings) {
    settings[kStatus] = false;
    settings[kProfile] = "default";
}

bool settingsGet(Json::Value& settings) {
    if (access(kSettingsFile, F_OK) != 0) {
        settings = Json::Value(Json::objectValue);
        settingsInit(settings);
        // The caller has the defaults all the same, and the next call tries again.
        (void)jsonFileDump(settings, kSettingsFile);
        return true;
    }
    return jsonObjectLoad(settings, kSettingsFile);
}

bool settingsSet(const Json::Value& values) {
    if (!isObjectOrNull(values)) {
        return FW_FAILURE("Falied to configSet()");
    }
    Json::Value settings;
    if (!settingsGet(settings)) {
        return FW_FAILURE("Falied to config.configGet()");
    }
    for (const std::string& name : values.getMemberNames()) {
        settings[name] = values[name];
    }
    return jsonFileDump(settings, kSettingsFile);
}

bool settingsStatus(bool& enabled) {
    Json::Value settings;
    if (!settingsGet(settings) ||
        !converted([&] { enabled = settings.get(kStatus, false).asBool(); })) {
        return FW_FAILURE("Falied to configGet()");
    }
    return true;
}

bool settingsProfile(std::string& name) {
    Json::Value settings;
    if (!settingsGet(settings)) {
        return FW_FAILURE("Falied to configGet()");
    }
    if (!settings.isMember(kProfile)) {
        return FW_FAILURE("There are no key: %s in config", kProfile);
    }
    if (!converted([&] { name = settings[kProfile].asString(); })) {
        return FW_FAILURE("Falied to configGet()");
    }
    return true;
}

bool settingsGetWithProfile(Json::Value& settings, std::string& profile) {
    return settingsGet(settings) &&
           converted([&] { profile = settings.get(kProfile, "").asString(); });
}

}  // namespace FW
