#include "command/history/configuration.h"

#include <json/writer.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <vector>

#include "command/console.h"
#include "command/document/storedProfile.h"
#include "command/words/quoting.h"
#include "library/model/names.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/lockedJson.h"
#include "zamofirewall/profileDatabase.h"

namespace zamofw {
namespace {

constexpr const char* kExportVersion = "config_version";
constexpr const char* kFileName = "fileName";

std::string nameIn(const Json::Value& profile) {
    return profile.isObject() && profile["name"].isString() ? profile["name"].asString() : "";
}

// The profiles of an export that are trial copies, or those that are none.
Json::Value selectedProfiles(const Json::Value& profiles, bool trialCopies) {
    Json::Value selected(Json::objectValue);
    for (const std::string& file : profiles.getMemberNames()) {
        if (isTrialCopy(nameIn(profiles[file])) == trialCopies) {
            selected[file] = profiles[file];
        }
    }
    return selected;
}

bool exportAll(Json::Value& configuration) {
    return FW::ZAMOFW_JSON_DB().exportConfig(configuration);
}

Json::Value readableParts() {
    Json::Value parts(Json::objectValue);
    parts[kExportedProfiles] = Json::Value(Json::objectValue);
    parts[kExportVersion] = 1;
    (void)FW::ZAMOFW().configGet(parts[kExportedSettings]);
    FW::ZAMOFW_JSON_DB store;
    Json::Value meta;
    (void)store.profileMetaCreate(meta);
    for (const std::string& name : meta.getMemberNames()) {
        Json::Value document;
        if (store.profileDbLoad(name, document)) {
            parts[kExportedProfiles][meta[name][kFileName].asString() + FW::kProfileExtension] =
                document;
        }
    }
    return parts;
}

std::vector<std::string> storedNames() {
    std::vector<std::string> names;
    (void)FW::ZAMOFW_JSON_DB().profileEnum(names);
    return names;
}

// Of two files with the same name the store shows the second only when the first is gone.
void removeOthers(const Json::Value& profiles) {
    std::set<std::string> wanted;
    for (const Json::Value& profile : profiles) {
        wanted.insert(nameIn(profile));
    }
    bool removed = true;
    while (removed) {
        removed = false;
        for (const std::string& name : storedNames()) {
            if (wanted.count(name) == 0) {
                (void)FW::ZAMOFW_JSON_DB().profileDelete(name);
                removed = !FW::ZAMOFW_JSON_DB().profileExist(name) || removed;
            }
        }
    }
}

void requireStored(const std::string& path, const Json::Value& document) {
    Json::Value stored;
    if (!FW::jsonFileLoad(stored, path) || exportText(stored) != exportText(document)) {
        failed(path + " could not be written, so that the configuration is stored in part",
               "see that the disk is not full or mounted read-only; `zamofw undo` brings back what "
               "was there before");
    }
}

}  // namespace

void requireStoreDirectory() {
    if (access(FW::kProfileDirectory, F_OK) != 0 && errno == ENOENT) {
        missingStoreDirectory();
    }
    // Without it the store looks empty to a caller who may not read it.
    if (access(FW::kProfileDirectory, R_OK | X_OK) != 0 && errno == EACCES) {
        requireRoot("reading the profiles");
    }
    Json::Value settings;
    if (geteuid() == 0 && access(FW::kSettingsFile, F_OK) != 0) {
        (void)FW::ZAMOFW().configGet(settings);
    }
}

Json::Value exportedConfiguration() {
    requireStoreDirectory();
    Json::Value configuration;
    if (!exportAll(configuration)) {
        if (geteuid() != 0) {
            requireRoot("reading the whole configuration");
        }
        failed(
            std::string("the configuration in ") + FW::kProfileDirectory + " cannot be read whole",
            "mend the file that the lines above name; `zamofw check --all` shows what is wrong");
    }
    configuration[kExportedProfiles] =
        selectedProfiles(configuration[kExportedProfiles], /*trialCopies=*/false);
    return configuration;
}

Json::Value readableConfiguration() {
    Json::Value configuration;
    if (!exportAll(configuration)) {
        configuration = readableParts();
    }
    configuration[kExportedProfiles] =
        selectedProfiles(configuration[kExportedProfiles], /*trialCopies=*/false);
    return configuration;
}

std::string exportText(const Json::Value& configuration) {
    return Json::StyledWriter().write(configuration);
}

void restoreConfiguration(const Json::Value& configuration) {
    Json::Value wanted = configuration;
    const Json::Value copies =
        selectedProfiles(readableParts()[kExportedProfiles], /*trialCopies=*/true);
    for (const std::string& file : copies.getMemberNames()) {
        wanted[kExportedProfiles][file] = copies[file];
    }
    const Json::Value& settings = wanted[kExportedSettings];
    if (!FW::ZAMOFW_JSON_DB().importConfig(wanted) ||
        // The import keeps settings that the document does not have.
        (settings.isObject() && !FW::jsonFileDump(settings, FW::kSettingsFile))) {
        failed("the configuration could not be stored in " + shown(FW::kProfileDirectory),
               "see that the directory exists, and that its disk is not full or mounted "
               "read-only");
    }
    removeOthers(wanted[kExportedProfiles]);
    for (const std::string& file : wanted[kExportedProfiles].getMemberNames()) {
        requireStored(FW::kProfileDirectory + file, wanted[kExportedProfiles][file]);
    }
    if (settings.isObject()) {
        requireStored(FW::kSettingsFile, settings);
    }
}

}  // namespace zamofw
