// The copies of profiles that trials work on.

#include "library/logging/log.h"
#include "library/profiles/profileDeletion.h"
#include "library/store/profileStore.h"
#include "library/store/trialName.h"
#include "zamofirewall/profile.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

}  // namespace

bool ZAMOFW_PROFILE::CreateTestProfile(std::string name, const FWPROFILE& profile) {
    FWPROFILE trial = profile;
    trial.name = trialName(name);
    Documents documents;
    if (profileExists(documents, trial.name) && !deleteUnlessInForce(documents, trial.name)) {
        return FW_FAILURE("failed to profileDelete()");
    }
    if (!createProfile(documents, trial.name)) {
        return FW_FAILURE("failed to profileCreate()");
    }
    if (!storeProfile(documents, trial.name, trial)) {
        return FW_FAILURE("failed to profileSet()");
    }
    return true;
}

bool ZAMOFW_PROFILE::AdoptTestProfile(std::string name) {
    const std::string trial = trialName(name);
    Documents documents;
    if (!profileExists(documents, trial)) {
        return FW_FAILURE("profile does not exist");
    }
    FWPROFILE profile;
    if (!readProfile(documents, trial, profile)) {
        return FW_FAILURE("failed to profileGet()");
    }
    profile.name = name;
    if (!storeProfile(documents, name, profile)) {
        return FW_FAILURE("failed to profileSet()");
    }
    return true;
}

bool ZAMOFW_PROFILE::RemoveTestProfile(std::string name) {
    Documents documents;
    if (!deleteUnlessInForce(documents, trialName(name))) {
        return FW_FAILURE("failed to profileDelete()");
    }
    return true;
}

}  // namespace FW
