#include "command/answers/switchAnswers.h"

#include <json/value.h>

#include <memory>

#include "command/answers/changeAnswer.h"
#include "command/answers/profileInForce.h"
#include "command/answers/refusalText.h"
#include "command/answers/trialEnd.h"
#include "command/apply/executionLock.h"
#include "command/apply/keptRules.h"
#include "command/apply/kernelDamage.h"
#include "command/apply/kernelState.h"
#include "command/apply/savedTable.h"
#include "command/apply/startNote.h"
#include "command/apply/trial.h"
#include "command/history/change.h"
#include "command/plan/plan.h"
#include "library/model/names.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/profileDatabase.h"

namespace zamofw {
namespace {

Json::Value configuration() {
    Json::Value document;
    (void)FW::ZAMOFW_JSON_DB().exportConfig(document);
    return document;
}

// False when it cannot be told.
bool areRulesLeft() try {
    const SavedFamilies there = savedFamilies();
    for (const SavedTables* const tables : {&there.v4, &there.v6}) {
        for (const char* const chain : FW::kFirewallChains) {
            if (!rulesOf(tableOf(*tables, kFilterTable), chain).empty()) {
                return true;
            }
        }
    }
    return false;
} catch (const Failure&) {
    return false;
}

// The library stores the status whether or not it could empty the chains. A reload that runs at the
// same time may have filled them again, and empties them before it gives its lock away.
void requireEmptyChains() {
    constexpr int kLongestWait = 30;
    if (areRulesLeft()) {
        const std::unique_ptr<ExecutionLock> lock = ExecutionLock::takenWithin(kLongestWait);
        if (areRulesLeft()) {
            failed(
                "it is stored that the firewall is switched off, but some of its rules could not "
                "be removed and are still in force",
                "see that nothing holds up the iptables programs, and run `zamofw disable` again");
        }
    }
}

}  // namespace

Status enableAnswer(const Console& console, const std::vector<std::string>& given, Errors errors) {
    requireRoot("switching the firewall on");
    const Target profile = readTarget({});
    try {
        showFindings(console, profile, errors);
    } catch (const Failure&) {
        answerChange(console, false, "");
        throw;
    }
    const Guards guards = requireChains();
    return recordedChange(given, [&] {
        const bool wasEnabled = isFirewallEnabled();
        const SavedRulesAside aside;
        const bool isSwitchedOn = FW::ZAMOFW().fwEnable();
        endTrialUnderLock(console);
        if (!isSwitchedOn) {
            failedLineByLine(planProfile(profileOf(profile)),
                             isFirewallEnabled() ? "the firewall is switched on, but its rules "
                                                   "could not be put into force"
                                                 : "the firewall could not be switched on");
        }
        removeGuards(guards);
        keepRules(planProfile(profileOf(profile)));
        dropStartNote();
        answerChange(console,
                     !wasEnabled,
                     "the firewall is enabled, with the profile `" + profile.name + "`");
        return Status::kDone;
    });
}

Status disableAnswer(const Console& console, const std::vector<std::string>& given) {
    requireRoot("switching the firewall off");
    return recordedChange(given, [&] {
        const bool wasEnabled = isFirewallEnabled();
        const SavedRulesAside aside;
        const bool isSwitchedOff = FW::ZAMOFW().fwDisable();
        endTrialUnderLock(console);
        if (!isSwitchedOff) {
            failed(
                "the firewall's rules were removed, but it could not be stored that it is "
                "switched off",
                "see that /usr/zamo/etc/firewall.d/ can be written to");
        }
        requireEmptyChains();
        dropKeptRules();
        dropStartNote();
        answerChange(console, wasEnabled, "the firewall is disabled");
        return Status::kDone;
    });
}

Status updateAnswer(const Console& console, const std::vector<std::string>& given) {
    requireRoot("repairing the profiles");
    return recordedChange(given, [&] {
        const Json::Value before = configuration();
        if (!FW::ZAMOFW().fwUpdate()) {
            failed("the profiles could not be repaired",
                   "see that the service catalogue /usr/zamo/etc.defaults/services.d/ can be read "
                   "and /usr/zamo/etc/firewall.d/ written to; the system log has the details");
        }
        const bool isChanged = configuration() != before;
        answerChange(console,
                     isChanged,
                     isChanged ? "the profiles fit the service catalogue again; `zamofw reload` "
                                 "puts them into force"
                               : "the profiles fit the service catalogue: nothing to change");
        return Status::kDone;
    });
}

}  // namespace zamofw
