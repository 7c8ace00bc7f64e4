// The copies of profiles that trials work on.

#include "library/logging/log.h"
#include "library/store/trialName.h"
#include "zamofirewall/profile.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

}  // namespace

bool ZAMOFW_PROFILE::CreateTestProfile(std::string name, const FWPROFILE& profile) {
    FWPROFILE trial = profile;
    trial.name = trialName(name);
    if (profileExist(trial.name) && !profileDelete(trial.name)) {
        return FW_FAILURE("failed to profileDelete()");
    }
    if (!profileCreate(trial.name)) {
        return FW_FAILURE("failed to profileCreate()");
    }
    if (!profileSet(trial.name, trial)) {
        return FW_FAILURE("failed to profileSet()");
    }
    return true;
}

bool ZAMOFW_PROFILE::AdoptTestProfile(std::string name) {
    const std::string trial = trialName(name);
    if (!profileExist(trial)) {
        return FW_FAILURE("profile does not exist");
    }
    FWPROFILE profile;
    if (!profileGet(trial, profile)) {
        return FW_FAILURE("failed to profileGet()");
    }
    profile.name = name;
    if (!profileSet(name, profile)) {
        return FW_FAILURE("failed to profileSet()");
    }
    return true;
}

bool ZAMOFW_PROFILE::RemoveTestProfile(std::string name) {
    if (!profileDelete(trialName(name))) {
        return FW_FAILURE("failed to profileDelete()");
    }
    return true;
}

}  // namespace FW
