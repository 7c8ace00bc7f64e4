// The whole configuration as one document:
//
//   { "config_profiles": { "1700000000.json": profile document, ... },
//     "config_firewall_settings": settings document, "config_version": 1 }

#include "library/logging/log.h"
#include "library/store/jsonFile.h"
#include "library/store/profileIndex.h"
#include "library/store/settings.h"
#include "zamofirewall/lockedJson.h"
#include "zamofirewall/profileDatabase.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwDB";
constexpr const char* kProfiles = "config_profiles";
constexpr const char* kSettings = "config_firewall_settings";
constexpr const char* kVersion = "config_version";
constexpr Json::UInt kFormatVersion = 1;

void logUnreadable(const std::string& path, const std::string& name, bool current) {
    FW_LOG(LOG_ERR,
           "Failed to load json from [%s] for profile [%s]%s",
           path.c_str(),
           name.c_str(),
           current ? " which is the current one." : ".");
}

bool hasShapeOfExport(const Json::Value& document) {
    return isObjectOrNull(document) && isObjectOrNull(document[kProfiles]) &&
           isObjectOrNull(document[kSettings]);
}

// The keys come from a document that somebody hands in; a file name stays in the directory.
bool storeProfile(const std::string& fileName, const Json::Value& document) {
    return fileName.find('/') == std::string::npos &&
           jsonFileDump(document, kProfileDirectory + fileName);
}

}  // namespace

bool ZAMOFW_JSON_DB::exportConfig(Json::Value& out) {
    out = Json::Value(Json::objectValue);
    Json::Value& profiles = out[kProfiles] = Json::Value(Json::objectValue);

    ProfileIndex index;
    Json::Value meta;
    if (!index.createForUse(meta)) {
        return false;
    }
    Json::Value settings;
    std::string current;
    if (!settingsGetWithProfile(settings, current)) {
        return FW_FAILURE("Falied to get firewall settings.");
    }
    out[kSettings] = settings;
    out[kVersion] = kFormatVersion;

    // A file that cannot be read may be the profile in force.
    if (!meta.isMember(current) && !index.firstUnreadable().empty()) {
        logUnreadable(index.firstUnreadable(), current, /*current=*/true);
        return false;
    }
    for (const std::string& name : meta.getMemberNames()) {
        const std::string path = profilePath(meta[name]);
        Json::Value document;
        if (jsonFileLoad(document, path)) {
            profiles[meta[name]["fileName"].asString() + kProfileExtension] = std::move(document);
            continue;
        }
        logUnreadable(path, name, name == current);
        if (name == current) {
            return false;
        }
    }
    return true;
}

bool ZAMOFW_JSON_DB::importConfig(const Json::Value& document) {
    if (!hasShapeOfExport(document)) {
        return FW_FAILURE("Falied to set firewall settings.");
    }
    Json::Value meta;
    (void)ProfileIndex().createForUse(meta);
    for (const std::string& name : meta.getMemberNames()) {
        if (!profileDelete(name)) {
            FW_LOG(LOG_ERR, "Failed to delete old profile '%s'.", name.c_str());
        }
    }
    const Json::Value& profiles = document[kProfiles];
    for (const std::string& fileName : profiles.getMemberNames()) {
        if (!storeProfile(fileName, profiles[fileName])) {
            FW_LOG(LOG_ERR, "Failed to jsonFileDump [%s].", fileName.c_str());
        }
    }
    if (!settingsSet(document[kSettings])) {
        return FW_FAILURE("Falied to set firewall settings.");
    }
    return true;
}

}  // namespace FW
