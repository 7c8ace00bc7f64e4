#include "zamofirewall/profile.h"

#include "library/logging/log.h"
#include "library/profiles/profileDeletion.h"
#include "library/store/profileStore.h"
#include "library/store/settings.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

}  // namespace

bool ZAMOFW_PROFILE::profileEnum(std::map<std::string, FWPROFILE>& profiles) {
    return ZAMOFW_JSON_DB::profileEnum(profiles);
}

bool ZAMOFW_PROFILE::profileEnum(std::vector<std::string>& names) {
    return ZAMOFW_JSON_DB::profileEnum(names);
}

bool ZAMOFW_PROFILE::profileGet(const std::string& name, FWPROFILE& profile) {
    return ZAMOFW_JSON_DB::profileGet(name, profile);
}

bool ZAMOFW_PROFILE::profileSet(const std::string& name, const FWPROFILE& profile) {
    return ZAMOFW_JSON_DB::profileSet(name, profile);
}

bool ZAMOFW_PROFILE::profileExist(const std::string& name) {
    return ZAMOFW_JSON_DB::profileExist(name);
}

bool ZAMOFW_PROFILE::profileCreate(const std::string& name) {
    return ZAMOFW_JSON_DB::profileCreate(name);
}

bool ZAMOFW_PROFILE::profileRename(const std::string& oldName, const std::string& newName) {
    return ZAMOFW_JSON_DB::profileRename(oldName, newName);
}

bool deleteUnlessInForce(Documents& documents, const std::string& name) {
    Json::Value settings;
    std::string inForce;
    if (!settingsGetWithProfile(documents, settings, inForce)) {
        return FW_FAILURE("Falied to config.configGet()");
    }
    if (inForce == name) {
        return FW_FAILURE("The profile %s is used now so cannot remove", name.c_str());
    }
    ProfileIndex index(documents);
    return deleteProfile(index, name);
}

bool ZAMOFW_PROFILE::profileDelete(const std::string& name) {
    Documents documents;
    return deleteUnlessInForce(documents, name);
}

}  // namespace FW
