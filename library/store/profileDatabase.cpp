#include "zamofirewall/profileDatabase.h"

#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <boost/lexical_cast.hpp>
#include <cstdint>
#include <cstdlib>
#include <ctime>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/store/profileIndex.h"
#include "library/store/settings.h"
#include "zamofirewall/lockedJson.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwDB";
constexpr int kFileNameSpread = 100;

bool fileExists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

// Without a seed every process would draw the same numbers, and two that make a profile in the same
// second would take the same file. The generator's state is private to the draw, so that a program
// that seeds the generator for its own purposes is not disturbed.
int drawRandom() {
    unsigned seed = 0;
    if (getrandom(&seed, sizeof seed, GRND_NONBLOCK) != sizeof seed) {
        seed = static_cast<unsigned>(getpid());
    }
    alignas(std::int32_t) std::array<char, 64> state = {};
    char* const previous = initstate(seed, state.data(), state.size());
    const int drawn = rand();
    (void)setstate(previous);
    return drawn;
}

bool isFileNameTaken(const Json::Value& meta, const std::string& fileName) {
    for (const Json::Value& entry : meta) {
        if (entry["fileName"].asString() == fileName) {
            return true;
        }
    }
    return false;
}

bool profileRead(ProfileIndex& index, const std::string& name, FWPROFILE& profile) {
    if (!fileExists(index.pathOf(name))) {
        return FW_FAILURE("Failed to profileGet %s due to not exist", name.c_str());
    }
    Json::Value document;
    if (!jsonFileLoad(document, index.pathOf(name)) ||
        !ZAMOFW_JSON_DB().jsonToProfile(document, profile)) {
        return FW_FAILURE("Failed to profileDbLoad()");
    }
    return true;
}

FW_POLICY initialPolicy(const std::string& adapter) {
    return adapter == kGlobalAdapter ? FW_POLICY_NONE : FW_POLICY_ALLOW;
}

}  // namespace

bool ZAMOFW_JSON_DB::profileMetaCreate(Json::Value& meta) {
    return ProfileIndex().create(meta);
}

std::string ZAMOFW_JSON_DB::profilePathNameGen(const Json::Value& meta) {
    for (;;) {
        const auto number =
            static_cast<std::int32_t>(drawRandom() % kFileNameSpread + time(nullptr));
        std::string fileName = boost::lexical_cast<std::string>(number);
        if (!meta.empty() && !isFileNameTaken(meta, fileName)) {
            return fileName;
        }
    }
}

std::string ZAMOFW_JSON_DB::profilePathGet(const std::string& name) {
    return ProfileIndex().pathOf(name);
}

bool ZAMOFW_JSON_DB::profileDbLoad(const std::string& name, Json::Value& document) {
    return jsonFileLoad(document, profilePathGet(name));
}

bool ZAMOFW_JSON_DB::profileDbDump(const std::string& name, const Json::Value& document) {
    ProfileIndex index;
    Json::Value meta;
    if (!index.createForUse(meta)) {
        return false;
    }
    std::string path = meta.isMember(name) ? index.pathOf(name) : std::string();
    if (path.empty()) {
        path = kProfileDirectory + profilePathNameGen(meta) + kProfileExtension;
    }
    return jsonFileDump(document, path);
}

bool ZAMOFW_JSON_DB::profileDbRemove(const std::string& name) {
    const std::string path = profilePathGet(name);
    (void)unlink(path.c_str());
    (void)unlink(getLockFile(path).c_str());
    return true;
}

bool ZAMOFW_JSON_DB::profileExist(const std::string& name) {
    return fileExists(profilePathGet(name));
}

bool ZAMOFW_JSON_DB::profileDelete(const std::string& name) {
    return profileDbRemove(name);
}

bool ZAMOFW_JSON_DB::profileEnum(std::vector<std::string>& names) {
    Json::Value meta;
    if (!ProfileIndex().createForUse(meta)) {
        return false;
    }
    const std::vector<std::string> found = meta.getMemberNames();
    names.insert(names.end(), found.begin(), found.end());
    return true;
}

bool ZAMOFW_JSON_DB::profileEnum(std::map<std::string, FWPROFILE>& profiles) {
    ProfileIndex index;
    Json::Value meta;
    if (!index.createForUse(meta)) {
        return false;
    }
    for (const std::string& name : meta.getMemberNames()) {
        FWPROFILE profile;
        if (!profileRead(index, name, profile)) {
            return FW_FAILURE("Failed to profileDbLoad() [%s]", name.c_str());
        }
        profiles[name] = std::move(profile);
    }
    return true;
}

bool ZAMOFW_JSON_DB::profileGet(const std::string& name, FWPROFILE& profile) {
    ProfileIndex index;
    return profileRead(index, name, profile);
}

bool ZAMOFW_JSON_DB::profileSet(const std::string& name, const FWPROFILE& profile) {
    FWPROFILE stored = profile;
    for (const auto& entry : stored.rules) {
        stored.adapterPolicyMap.emplace(entry.first, initialPolicy(entry.first));
    }
    stored.adapterPolicyMap[kGlobalAdapter] = FW_POLICY_NONE;

    Json::Value document;
    profileToJson(stored, document);
    if (!profileDbDump(name, document)) {
        return FW_FAILURE("Failed to profileDbDump()");
    }
    return true;
}

bool ZAMOFW_JSON_DB::profileCreate(const std::string& name) {
    if (profileExist(name)) {
        return FW_FAILURE("The profile %s already exist", name.c_str());
    }
    FWPROFILE profile;
    profile.name = name;
    if (!profileSet(name, profile)) {
        return FW_FAILURE("Failed to profileSet");
    }
    return true;
}

bool ZAMOFW_JSON_DB::profileRename(const std::string& oldName, const std::string& newName) {
    if (profileExist(newName)) {
        return FW_FAILURE("profile %s already exist", newName.c_str());
    }
    Json::Value settings;
    std::string inForce;
    if (!settingsGetWithProfile(settings, inForce)) {
        return FW_FAILURE("Falied to config.configGet()");
    }
    FWPROFILE profile;
    if (!profileGet(oldName, profile)) {
        return FW_FAILURE("Failed to get profile %s", oldName.c_str());
    }
    profile.name = newName;
    Json::Value document;
    profileToJson(profile, document);
    if (!jsonFileDump(document, profilePathGet(oldName))) {
        return FW_FAILURE("Failed to jsonFileDump [%s]", newName.c_str());
    }
    if (inForce == oldName) {
        settings["profile"] = newName;
        if (!settingsSet(settings)) {
            return FW_FAILURE("Falied to config.configSet()");
        }
    }
    return true;
}

}  // namespace FW
