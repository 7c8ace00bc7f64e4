#include "library/store/settings.h"

#include <unistd.h>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/store/jsonText.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";
constexpr const char* kStatus = "status";
constexpr const char* kProfile = "profile";

// An array or an object does not convert to a flag or a string.
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

bool settingsGet(Documents& documents, Json::Value& settings) {
    if (access(kSettingsFile, F_OK) != 0) {
        settings = Json::Value(Json::objectValue);
        settingsInit(settings);
        // The caller has the defaults all the same, and the next call tries again.
        (void)documents.dump(settings, kSettingsFile);
        return true;
    }
    const Json::Value* const stored = documents.load(kSettingsFile);
    if (stored == nullptr) {
        return false;
    }
    if (!isObjectOrNull(*stored)) {
        return logLoad(LoadResult::kNotParsed, kSettingsFile);
    }
    settings = *stored;
    return true;
}

bool settingsSet(Documents& documents, const Json::Value& values) {
    if (!isObjectOrNull(values)) {
        return FW_FAILURE("Falied to configSet()");
    }
    Json::Value settings;
    if (!settingsGet(documents, settings)) {
        return FW_FAILURE("Falied to config.configGet()");
    }
    const auto merge = [&](LoadResult result, const Json::Value* stored) -> const Json::Value* {
        if (stored != nullptr && isObjectOrNull(*stored)) {
            settings = *stored;
        } else if (result != LoadResult::kVanished) {
            return nullptr;
        }
        for (const std::string& name : values.getMemberNames()) {
            settings[name] = values[name];
        }
        return &settings;
    };
    const DumpResult result = documents.edit(merge, kSettingsFile);
    if (result == DumpResult::kRefused) {
        return FW_FAILURE("Falied to config.configGet()");
    }
    return result == DumpResult::kWritten;
}

bool settingsSetProfile(Documents& documents, const std::string& name) {
    Json::Value values;
    values[kProfile] = name;
    return settingsSet(documents, values);
}

bool settingsStatus(Documents& documents, bool& enabled) {
    Json::Value settings;
    if (!settingsGet(documents, settings) ||
        !converted([&] { enabled = settings.get(kStatus, false).asBool(); })) {
        return FW_FAILURE("Falied to configGet()");
    }
    return true;
}

bool settingsProfile(Documents& documents, std::string& name) {
    Json::Value settings;
    if (!settingsGet(documents, settings)) {
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

bool settingsGetWithProfile(Documents& documents, Json::Value& settings, std::string& profile) {
    return settingsGet(documents, settings) &&
           converted([&] { profile = settings.get(kProfile, "").asString(); });
}

}  // namespace FW
