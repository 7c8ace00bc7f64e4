#include "command/apply/trial.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "command/apply/keptRules.h"
#include "command/apply/kernelState.h"
#include "command/apply/transaction.h"
#include "command/apply/trialTimer.h"
#include "command/console.h"
#include "zamofirewall/profile.h"

namespace zamofw {
namespace {

constexpr const char* kSavedPath = "/var/lib/zamofw/trial.rules";
constexpr const char* kAsidePath = "/var/lib/zamofw/trial.rules.aside";

bool isWanted(const std::string& input) {
    return input.find(":INPUT DROP") == std::string::npos &&
           input.find(":FORWARD DROP") == std::string::npos &&
           input.find("] -A FIREWALL_RELOADING ") == std::string::npos;
}

void removeSavedRules() {
    (void)unlink(kSavedPath);
    (void)unlink(kAsidePath);
}

void removeCopy(const std::string& profile) {
    FW::ZAMOFW_PROFILE store;
    if (store.profileExist(trialCopyName(profile))) {
        (void)store.RemoveTestProfile(profile);
    }
}

}  // namespace

void saveRulesBeforeTrial() {
    removeSavedRules();
    const RestoreInputs inputs = {
        "# IPv4\n" + SavedChains(4).input(), "# IPv6\n" + SavedChains(6).input(), 0};
    if (isWanted(inputs.v4 + inputs.v6) && !writeRules(kSavedRulesFile, inputs)) {
        failed(std::string("the rules in force cannot be kept in ") + kSavedPath + ": " +
                   std::strerror(errno),
               "see that /var/lib/zamofw/ belongs to root and its disk is not full or mounted "
               "read-only");
    }
}

bool bringSavedRulesBack(const ExecutionLock& lock) {
    const std::optional<RestoreInputs> saved = readRules(kSavedRulesFile);
    return saved && applyInputs(*saved, lock).applied;
}

void forgetTrial(const std::optional<TrialState>& trial) {
    if (trial) {
        removeCopy(trial->profile);
    }
    removeSavedRules();
    removeTrial();
    if (trial) {
        endTrialTimer(*trial);
    }
}

SavedRulesAside::SavedRulesAside() : isAside_(std::rename(kSavedPath, kAsidePath) == 0) {}

SavedRulesAside::~SavedRulesAside() {
    // Gone when the trial has ended meanwhile.
    if (isAside_) {
        (void)std::rename(kAsidePath, kSavedPath);
    }
}

}  // namespace zamofw
