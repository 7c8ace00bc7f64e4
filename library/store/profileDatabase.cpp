// The profile database's public members.

#include "zamofirewall/profileDatabase.h"

#include <algorithm>

#include "library/store/fileName.h"
#include "library/store/profileStore.h"

namespace FW {

bool ZAMOFW_JSON_DB::profileMetaCreate(Json::Value& meta) {
    Documents documents;
    ProfileIndex index(documents);
    if (!index.build()) {
        return false;
    }
    for (const auto& [name, path] : index.paths()) {
        Json::Value entry(Json::objectValue);
        entry["fileName"] = profileFileName(path);
        meta[name] = std::move(entry);
    }
    return true;
}

std::string ZAMOFW_JSON_DB::profilePathNameGen(const Json::Value& meta) {
    return drawFileName([&meta](const std::string& name) {
        const auto hasName = [&name](const Json::Value& entry) {
            return entry["fileName"].asString() == name;
        };
        return meta.empty() || std::any_of(meta.begin(), meta.end(), hasName);
    });
}

std::string ZAMOFW_JSON_DB::profilePathGet(const std::string& name) {
    Documents documents;
    return ProfileIndex(documents).pathOf(name);
}

bool ZAMOFW_JSON_DB::profileDbLoad(const std::string& name, Json::Value& document) {
    Documents documents;
    const std::string path = ProfileIndex(documents).pathOf(name);
    const Json::Value* const loaded = loadDocument(documents, path, name);
    if (loaded == nullptr) {
        return false;
    }
    document = *loaded;
    return true;
}

bool ZAMOFW_JSON_DB::profileDbDump(const std::string& name, const Json::Value& document) {
    Documents documents;
    return storeDocument(documents, name, document);
}

bool ZAMOFW_JSON_DB::profileDbRemove(const std::string& name) {
    Documents documents;
    ProfileIndex index(documents);
    return deleteProfile(index, name);
}

bool ZAMOFW_JSON_DB::profileExist(const std::string& name) {
    Documents documents;
    return profileExists(documents, name);
}

bool ZAMOFW_JSON_DB::profileDelete(const std::string& name) {
    return profileDbRemove(name);
}

bool ZAMOFW_JSON_DB::profileEnum(std::vector<std::string>& names) {
    Documents documents;
    return listProfiles(documents, names);
}

bool ZAMOFW_JSON_DB::profileEnum(std::map<std::string, FWPROFILE>& profiles) {
    Documents documents;
    ProfileIndex index(documents);
    return readProfiles(index, profiles);
}

bool ZAMOFW_JSON_DB::profileGet(const std::string& name, FWPROFILE& profile) {
    Documents documents;
    return readProfile(documents, name, profile);
}

bool ZAMOFW_JSON_DB::profileSet(const std::string& name, const FWPROFILE& profile) {
    Documents documents;
    return storeProfile(documents, name, profile);
}

bool ZAMOFW_JSON_DB::profileCreate(const std::string& name) {
    Documents documents;
    return createProfile(documents, name);
}

bool ZAMOFW_JSON_DB::profileRename(const std::string& oldName, const std::string& newName) {
    Documents documents;
    return renameProfile(documents, oldName, newName);
}

}  // namespace FW
