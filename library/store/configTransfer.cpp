// The whole configuration as one document:
//
//   { "config_profiles": { "1700000000.json": profile document, ... },
//     "config_firewall_settings": settings document, "config_version": 1 }

#include <algorithm>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/store/fileName.h"
#include "library/store/jsonText.h"
#include "library/store/profileStore.h"
#include "library/store/settings.h"
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
    return document.isObject() && (document.isMember(kProfiles) || document.isMember(kSettings)) &&
           isObjectOrNull(document[kProfiles]) && isObjectOrNull(document[kSettings]);
}

bool hasUsableFileNames(const Json::Value& profiles) {
    const std::vector<std::string> names = profiles.getMemberNames();
    return std::all_of(names.begin(), names.end(), isFileName);
}

// A document may name the settings file among the profiles, from a time when it was taken for one.
// The settings come from their own member.
bool storeFile(Documents& documents, const std::string& fileName, const Json::Value& document) {
    const std::string path = kProfileDirectory + fileName;
    return path != kSettingsFile && documents.dump(document, path);
}

void deleteProfiles(Documents& documents) {
    ProfileIndex index(documents);
    (void)index.buildForUse();
    for (const auto& entry : index.paths()) {
        if (!deleteProfile(index, entry.first)) {
            FW_LOG(LOG_ERR, "Failed to delete old profile '%s'.", entry.first.c_str());
        }
    }
}

}  // namespace

bool ZAMOFW_JSON_DB::exportConfig(Json::Value& out) {
    out = Json::Value(Json::objectValue);
    Json::Value& profiles = out[kProfiles] = Json::Value(Json::objectValue);

    Documents documents;
    ProfileIndex index(documents);
    if (!index.buildForUse()) {
        return false;
    }
    Json::Value settings;
    std::string current;
    if (!settingsGetWithProfile(documents, settings, current)) {
        return FW_FAILURE("Falied to get firewall settings.");
    }
    out[kSettings] = settings;
    out[kVersion] = kFormatVersion;

    // A file that cannot be read may be the profile in force.
    const std::string unreadable = index.firstUnreadable();
    if (index.paths().count(current) == 0 && !unreadable.empty()) {
        logUnreadable(unreadable, current, /*current=*/true);
        return false;
    }
    for (const auto& [name, path] : index.paths()) {
        const bool isCurrent = name == current;
        const Json::Value* const document =
            isCurrent ? loadDocument(documents, path, name) : documents.load(path);
        if (document != nullptr) {
            profiles[profileFileName(path) + kProfileExtension] = *document;
            continue;
        }
        logUnreadable(path, name, isCurrent);
        if (isCurrent) {
            return false;
        }
    }
    return true;
}

bool ZAMOFW_JSON_DB::importConfig(const Json::Value& document) {
    if (!hasShapeOfExport(document) || !hasUsableFileNames(document[kProfiles])) {
        return FW_FAILURE("Falied to set firewall settings.");
    }
    Documents documents;
    deleteProfiles(documents);
    const Json::Value& profiles = document[kProfiles];
    for (const std::string& fileName : profiles.getMemberNames()) {
        if (!storeFile(documents, fileName, profiles[fileName])) {
            FW_LOG(LOG_ERR, "Failed to jsonFileDump [%s].", fileName.c_str());
        }
    }
    if (!settingsSet(documents, document[kSettings])) {
        return FW_FAILURE("Falied to set firewall settings.");
    }
    return true;
}

}  // namespace FW
