#include <json/value.h>

#include <exception>
#include <functional>
#include <ostream>

#include "command/answers/changeAnswer.h"
#include "command/answers/profileInForce.h"
#include "command/answers/profileReplacement.h"
#include "command/answers/profileStore.h"
#include "command/answers/refusalText.h"
#include "command/answers/trialAnswers.h"
#include "command/answers/trialEnd.h"
#include "command/apply/bootTime.h"
#include "command/apply/trial.h"
#include "command/document/storedProfile.h"
#include "command/history/change.h"
#include "command/history/configuration.h"
#include "command/history/connection.h"
#include "command/words/quoting.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/hook.h"

namespace zamofw {
namespace {

bool isDue(const TrialState& trial) {
    return nanosecondsSinceBoot() >= trial.deadline;
}

// Whether the person can get in with the rules on trial: not whether one who is in already stays.
std::string whyNotNew(const TrialState& trial, const Connection& connection) {
    if (connection.ssh && connection.ssh == trial.connection) {
        return "this is the connection that the trial was begun from";
    }
    if (connection.began < trial.beganTick) {
        return connection.ssh ? "this connection was there before the trial began"
                              : "this session was there before the trial began";
    }
    return "";
}

// Ends what is no trial any more. False when there is nothing left to confirm.
bool isConfirmable(const Console& console, const std::optional<TrialState>& trial) {
    if (!trial) {
        console.err << "no trial is under way\n";
        return false;
    }
    const std::string name = shown(trial->profile);
    if (trial->boot != bootId()) {
        const ExecutionLock lock;
        forgetTrial(trial);
        console.err << "the trial of " << name << " has ended with the start of the system\n";
        return false;
    }
    if (isDue(*trial) || trial->beganTick == 0) {
        const ExecutionLock lock;
        const std::optional<TrialState> now = readTrial();
        if (now && now->id == trial->id) {
            console.err << "this comes too late for the trial of " << name << ": "
                        << takeBackTrial(console, trial, Patience::kWait, lock) << "\n";
        } else {
            console.err << "the trial of " << name << " has been taken back\n";
        }
        return false;
    }
    const std::string why = whyNotNew(*trial, currentConnection());
    if (!why.empty()) {
        console.err << why << ", so that it does not prove that somebody can still get in\n"
                    << "  make a new connection, or log in at another terminal, and say `zamofw "
                       "confirm` there\n";
        return false;
    }
    return true;
}

std::string triedDocument(const TrialState& trial) {
    const std::optional<Document> copy = findStored(trialCopyName(trial.profile));
    if (!copy) {
        failed("the copy of " + shown(trial.profile) + " that is tried is not there any more",
               "take the trial back with `zamofw revert`, and try again");
    }
    return renamedDocument(*copy, trial.profile);
}

struct Kept {
    std::string profile;
    std::string document;
    bool isStored = false;  // like this already
};

void storeAndPutIntoForce(const Console& console, const Kept& kept, const ExecutionLock& lock) {
    if (!kept.isStored) {
        storeDocument(kept.profile, kept.document);
    }
    Json::Value settings;
    settings["profile"] = kept.profile;
    settings["status"] = true;
    if (!FW::ZAMOFW().configSet(settings)) {
        failed("the choice of the profile " + shown(kept.profile) + " could not be stored",
               "see that /usr/zamo/etc/firewall.d/ can be written to");
    }
    Console silent = console;
    silent.quiet = true;
    const InForce result = putIntoForce(silent, Errors::kKnown, lock);
    if (!result.outcome.applied) {
        failed(refusalsText(result.outcome.refused) +
                   "the profile could not be kept, and its trial goes on",
               "find the cause and confirm again, or say `zamofw revert`");
    }
}

Status keep(const Console& console, const TrialState& trial, const Kept& kept) {
    // Confirmation and timer: whoever has the lock first decides.
    const ExecutionLock lock;
    const std::optional<TrialState> now = readTrial();
    if (!now || now->id != trial.id || isDue(*now)) {
        console.err << "the trial of " << shown(trial.profile)
                    << " has been taken back meanwhile\n";
        return refusedChange(console);
    }
    const SavedRulesAside aside;
    const Json::Value before = readableConfiguration();
    try {
        storeAndPutIntoForce(console, kept, lock);
    } catch (const std::exception&) {
        restoreConfiguration(before);
        throw;
    }
    answerChange(console, true, "the profile " + shown(kept.profile) + " is in force, and stays");
    return Status::kDone;
}

// The hooks tell other packages when the firewall is switched on.
Status switchOn(const std::function<Status()>& action) {
    FW::ZamoFwHook hook;
    (void)hook.RunFwEnablePreHook();
    Status status = Status::kFailed;
    try {
        status = action();
    } catch (...) {
        (void)hook.RunFwEnablePostHook(false);
        throw;
    }
    (void)hook.RunFwEnablePostHook(status == Status::kDone);
    return status;
}

}  // namespace

Status confirmAnswer(const Console& console, const std::vector<std::string>& given) {
    requireRoot("confirming a trial");
    const std::optional<TrialState> trial = readTrial();
    if (!isConfirmable(console, trial)) {
        return refusedChange(console);
    }
    Kept kept = {trial->profile, triedDocument(*trial)};
    const Replacement replacement = replacementBy(console, kept.profile, kept.document, Loss::kAsk);
    if (replacement == Replacement::kRefused) {
        console.err << "the trial goes on\n";
        return refusedChange(console);
    }
    kept.isStored = replacement == Replacement::kSame;
    return recordedChange(given, [&] {
        const auto action = [&] { return keep(console, *trial, kept); };
        return isFirewallEnabled() ? action() : switchOn(action);
    });
}

}  // namespace zamofw
