#include "command/answers/switchAnswers.h"

#include <json/value.h>

#include "command/answers/changeAnswer.h"
#include "command/answers/profileInForce.h"
#include "command/answers/refusalText.h"
#include "command/answers/trialEnd.h"
#include "command/apply/keptRules.h"
#include "command/apply/kernelState.h"
#include "command/apply/startNote.h"
#include "command/apply/trial.h"
#include "command/history/change.h"
#include "command/plan/plan.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/profileDatabase.h"

namespace zamofw {
namespace {

Json::Value configuration() {
    Json::Value document;
    (void)FW::ZAMOFW_JSON_DB().exportConfig(document);
    return document;
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
    requireChains();
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
