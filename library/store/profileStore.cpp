#include "library/store/profileStore.h"

#include <unistd.h>

#include <algorithm>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/model/utf8.h"
#include "library/store/fileName.h"
#include "library/store/jsonText.h"
#include "library/store/lockPath.h"
#include "library/store/settings.h"
#include "zamofirewall/profileDatabase.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwDB";
// Each time another process must have made, renamed or deleted the very file that was meant.
constexpr int kMaxDumps = 10;

bool fileExists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

bool carriesName(const Json::Value* document, const std::string& name) {
    const Json::Value* const member = document == nullptr ? nullptr : nameMember(*document);
    return member != nullptr && member->asString() == name;
}

// Writes the document while the file holds the profile of this name.
DumpResult replaceDocument(Documents& documents,
                           const std::string& path,
                           const std::string& name,
                           const Json::Value& document) {
    return documents.edit(
        [&](LoadResult, const Json::Value* stored) {
            return carriesName(stored, name) ? &document : nullptr;
        },
        path);
}

// An index without profiles makes no name: a store in use holds at least one.
std::string newPath(const ProfileIndex& index) {
    const auto& paths = index.paths();
    return profilePath(drawFileName([&paths](const std::string& name) {
        const auto hasName = [path = profilePath(name)](const auto& entry) {
            return entry.second == path;
        };
        return paths.empty() || std::any_of(paths.begin(), paths.end(), hasName);
    }));
}

// Of two processes that draw the same name in the same second, the second one draws again.
DumpResult addDocument(ProfileIndex& index, const Json::Value& document) {
    return index.documents().edit(
        [&document](LoadResult result, const Json::Value*) {
            return result == LoadResult::kVanished ? &document : nullptr;
        },
        newPath(index));
}

// A profile that is in an unreadable file must not get a second file, and where no file can be read
// there is nothing that a name could be drawn for.
bool mayAdd(const ProfileIndex& index) {
    return !index.mayMissProfiles() && (!index.paths().empty() || index.firstUnreadable().empty());
}

FW_POLICY initialPolicy(const std::string& adapter) {
    return adapter == kGlobalAdapter ? FW_POLICY_NONE : FW_POLICY_ALLOW;
}

Json::Value documentOf(const FWPROFILE& profile) {
    FWPROFILE stored = profile;
    for (const auto& entry : stored.rules) {
        stored.adapterPolicyMap.emplace(entry.first, initialPolicy(entry.first));
    }
    stored.adapterPolicyMap[kGlobalAdapter] = FW_POLICY_NONE;
    Json::Value document;
    ZAMOFW_JSON_DB().profileToJson(stored, document);
    return document;
}

const Json::Value* findDocument(ProfileIndex& index, const std::string& name) {
    if (!fileExists(index.pathOf(name))) {
        FW_LOG(LOG_ERR, "Failed to profileGet %s due to not exist", name.c_str());
        return nullptr;
    }
    const Json::Value* const document = loadDocument(index.documents(), index.pathOf(name), name);
    if (document == nullptr) {
        FW_LOG(LOG_ERR, "Failed to profileDbLoad()");
    }
    return document;
}

bool readProfile(ProfileIndex& index, const std::string& name, FWPROFILE& profile) {
    const Json::Value* const document = findDocument(index, name);
    return document != nullptr && profileOfDocument(*document, profile);
}

}  // namespace

const Json::Value* loadDocument(Documents& documents,
                                const std::string& path,
                                const std::string& name) {
    const Json::Value* const document = documents.load(path);
    return carriesName(document, name) ? document : nullptr;
}

bool profileExists(Documents& documents, const std::string& name) {
    return fileExists(ProfileIndex(documents).pathOf(name));
}

bool listProfiles(Documents& documents, std::vector<std::string>& names) {
    ProfileIndex index(documents);
    if (!index.buildForUse()) {
        return false;
    }
    for (const auto& entry : index.paths()) {
        names.push_back(entry.first);
    }
    return true;
}

const Json::Value* findDocument(Documents& documents, const std::string& name) {
    ProfileIndex index(documents);
    return findDocument(index, name);
}

bool profileOfDocument(const Json::Value& document, FWPROFILE& profile) {
    if (!ZAMOFW_JSON_DB().jsonToProfile(document, profile)) {
        return FW_FAILURE("Failed to profileDbLoad()");
    }
    return true;
}

bool readProfile(Documents& documents, const std::string& name, FWPROFILE& profile) {
    ProfileIndex index(documents);
    return readProfile(index, name, profile);
}

bool readProfiles(ProfileIndex& index, ProfileMap& profiles) {
    if (!index.buildForUse()) {
        return false;
    }
    for (const auto& entry : index.paths()) {
        FWPROFILE profile;
        if (!readProfile(index, entry.first, profile)) {
            return FW_FAILURE("Failed to profileDbLoad() [%s]", entry.first.c_str());
        }
        profiles[entry.first] = std::move(profile);
    }
    return true;
}

bool storeDocument(Documents& documents, const std::string& name, const Json::Value& document) {
    DumpResult result = DumpResult::kRefused;
    for (int i = 0; i < kMaxDumps && result == DumpResult::kRefused; ++i) {
        ProfileIndex index(documents);
        if (!index.buildForUse() || !isUtf8(name)) {
            return false;
        }
        if (index.paths().count(name) != 0) {
            result = replaceDocument(documents, index.pathOf(name), name, document);
        } else if (mayAdd(index)) {
            result = addDocument(index, document);
        } else {
            return false;
        }
    }
    return result == DumpResult::kWritten;
}

bool storeProfile(Documents& documents, const std::string& name, const FWPROFILE& profile) {
    if (!isUtf8(profile.name) || !storeDocument(documents, name, documentOf(profile))) {
        return FW_FAILURE("Failed to profileDbDump()");
    }
    return true;
}

bool rewriteProfile(ProfileIndex& index, const std::string& name, const FWPROFILE& profile) {
    index.startOver();
    const bool known = index.buildForUse() && index.paths().count(name) != 0 && isUtf8(name);
    if (!known ||
        replaceDocument(index.documents(), index.pathOf(name), name, documentOf(profile)) !=
            DumpResult::kWritten) {
        return FW_FAILURE("Failed to profileDbDump()");
    }
    return true;
}

bool createProfile(Documents& documents, const std::string& name) {
    if (profileExists(documents, name)) {
        return FW_FAILURE("The profile %s already exist", name.c_str());
    }
    FWPROFILE profile;
    profile.name = name;
    if (!storeProfile(documents, name, profile)) {
        return FW_FAILURE("Failed to profileSet");
    }
    return true;
}

bool renameProfile(Documents& documents, const std::string& oldName, const std::string& newName) {
    if (profileExists(documents, newName)) {
        return FW_FAILURE("profile %s already exist", newName.c_str());
    }
    Json::Value settings;
    std::string inForce;
    if (!settingsGetWithProfile(documents, settings, inForce)) {
        return FW_FAILURE("Falied to config.configGet()");
    }
    ProfileIndex index(documents);
    FWPROFILE profile;
    if (!readProfile(index, oldName, profile)) {
        return FW_FAILURE("Failed to get profile %s", oldName.c_str());
    }
    profile.name = newName;
    Json::Value document;
    ZAMOFW_JSON_DB().profileToJson(profile, document);
    index.startOver();
    const std::string path = index.pathOf(oldName);
    if (!isUtf8(newName) || index.mayMissProfiles() ||
        replaceDocument(documents, path, oldName, document) != DumpResult::kWritten) {
        return FW_FAILURE("Failed to jsonFileDump [%s]", newName.c_str());
    }
    if (inForce == oldName && !settingsSetProfile(documents, newName)) {
        return FW_FAILURE("Falied to config.configSet()");
    }
    return true;
}

bool deleteProfile(ProfileIndex& index, const std::string& name) {
    index.startOver();
    const std::string path = index.pathOf(name);
    if (path.empty()) {
        (void)lockDirectory();
        return true;
    }
    // Meanwhile another process may have deleted the profile and made one of another name, whose
    // file got the same number.
    index.documents().remove(
        path, [&name](const Json::Value& stored) { return !carriesName(&stored, name); });
    return true;
}

}  // namespace FW
