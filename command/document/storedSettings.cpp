#include "command/document/storedSettings.h"

#include <json/reader.h>
#include <json/value.h>

#include <cerrno>

#include "command/console.h"
#include "command/document/textFile.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

[[noreturn]] void badSettings(const std::string& why) {
    failed(std::string(FW::kSettingsFile) + " " + why, "mend the file, or delete it");
}

}  // namespace

StoredSettings storedSettings() {
    StoredSettings settings;
    std::string text;
    if (!readTextQuietly(FW::kSettingsFile, text)) {
        if (errno == EACCES) {
            requireRoot(std::string("reading ") + FW::kSettingsFile);
        }
        if (errno != ENOENT) {
            badSettings("cannot be read");
        }
        return settings;
    }
    Json::Value json;
    try {
        if (!Json::Reader().parse(text, json) || !json.isObject()) {
            badSettings("is no JSON object");
        }
        settings.isEnabled = json.get("status", false).asBool();
        settings.profile = json.get("profile", "").asString();
    } catch (const Json::Exception& problem) {
        badSettings(std::string("cannot be used: ") + problem.what());
    }
    return settings;
}

}  // namespace zamofw
