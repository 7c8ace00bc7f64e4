// The settings' file: the command reads it as the library does.

#include <json/value.h>

#include "command/console.h"
#include "command/document/storedSettings.h"
#include "fuzz/harness.h"
#include "library/model/names.h"
#include "zamofirewall/lockedJson.h"

void fuzz::run(const std::string& text) {
    writeFile(FW::kSettingsFile, text);
    Json::Value stored;
    const bool isRead = FW::jsonFileLoad(stored, FW::kSettingsFile);
    try {
        const zamofw::StoredSettings settings = zamofw::storedSettings();
        require(isRead && stored.isObject(), "only what the library reads are settings");
        require(settings.isEnabled == stored.get("status", false).asBool(), "the status is read");
        require(settings.profile == stored.get("profile", "").asString(), "the profile is read");
    } catch (const zamofw::Failure& failure) {
        require(failure.status() == zamofw::Status::kFailed, "settings that cannot be used fail");
    }
}
