#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <ostream>

#include "command/answers/changeAnswer.h"
#include "command/answers/trialAnswers.h"
#include "command/answers/trialEnd.h"
#include "command/apply/bootTime.h"
#include "command/apply/trial.h"
#include "command/apply/trialTimer.h"
#include "command/systemLog.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

constexpr int kPatientTries = 3;
constexpr unsigned kFirstPause = 1;
constexpr unsigned kLongestPause = 30;

std::string nameOf(const std::optional<TrialState>& trial) {
    return trial ? " of " + shown(trial->profile) : "";
}

// A record that nobody can read stands for a trial all the same.
std::optional<TrialState> readableTrial(bool& isThere) {
    isThere = true;
    try {
        std::optional<TrialState> trial = readTrial();
        isThere = trial.has_value();
        return trial;
    } catch (const Failure&) {
        return std::nullopt;
    }
}

void takeBack(const Console& console,
              const std::optional<TrialState>& trial,
              Patience patience,
              const ExecutionLock& lock) {
    const std::string end = takeBackTrial(console, trial, patience, lock);
    logUnseen(LOG_NOTICE, "the trial" + nameOf(trial) + " is taken back: " + end);
    answerChange(console, true, "the trial" + nameOf(trial) + " is taken back: " + end);
}

// Whether it is this process that ends the trial. A timer that systemd has started in the place of
// a killed one says so in the record.
bool adopt(const std::string& id) try {
    const ExecutionLock lock;
    std::optional<TrialState> trial = readTrial();
    if (!trial || trial->id != id) {
        return false;
    }
    if (trial->timer == getpid()) {
        return true;
    }
    if (startOfProcess(trial->timer) == trial->timerStart && trial->timer > 0) {
        return false;
    }
    trial->timer = getpid();
    trial->timerStart = startOfProcess(getpid()).value_or(0);
    writeTrial(*trial);
    return true;
} catch (const Failure&) {
    // It is worth more that the trial ends than that the record is right.
    return true;
}

enum class Turn { kOver, kTooEarly, kTakenBack };

// Sets the deadline to that of the record, which `try` puts off when the rules are in force.
Turn takeBackIfDue(const Console& console,
                   const std::string& id,
                   Patience patience,
                   std::int64_t& deadline) {
    const ExecutionLock lock;
    std::optional<TrialState> trial;
    try {
        trial = readTrial();
        if (!trial || trial->id != id) {
            return Turn::kOver;
        }
        deadline = trial->deadline;
    } catch (const Failure&) {
        if (patience == Patience::kWait) {
            throw;
        }
    }
    if (nanosecondsSinceBoot() < deadline) {
        return Turn::kTooEarly;
    }
    takeBack(console, trial, patience, lock);
    return Turn::kTakenBack;
}

// Somebody may be locked out, so that this does not give up.
Turn takeBackAtLast(const Console& console, const std::string& id, std::int64_t deadline) {
    std::string lastProblem;
    unsigned pause = kFirstPause;
    for (int tries = 1;; ++tries) {
        try {
            waitUntil(deadline);
            const Patience patience = tries <= kPatientTries ? Patience::kWait : Patience::kLast;
            const Turn turn = takeBackIfDue(console, id, patience, deadline);
            if (turn != Turn::kTooEarly) {
                return turn;
            }
            tries = 0;
        } catch (const std::exception& problem) {
            if (lastProblem != problem.what()) {
                lastProblem = problem.what();
                logUnseen(LOG_ERR, "the trial could not be taken back yet: " + lastProblem);
            }
            (void)sleep(pause);
            pause = std::min(2 * pause, kLongestPause);
        }
    }
}

}  // namespace

Status revertAnswer(const Console& console) {
    requireRoot("taking a trial back");
    const ExecutionLock lock;
    bool isThere = false;
    const std::optional<TrialState> trial = readableTrial(isThere);
    if (!isThere) {
        answerChange(console, false, "no trial is under way");
        return Status::kNo;
    }
    if (trial && trial->boot != bootId()) {
        forgetTrial(trial);
        answerChange(console,
                     false,
                     "the trial" + nameOf(trial) + " has ended with the start of the system");
        return Status::kNo;
    }
    takeBack(console, trial, Patience::kWait, lock);
    return Status::kDone;
}

Status revertWhenDue(const Console& console) {
    requireRoot("taking a trial back");
    becomeTrialTimer();
    const std::optional<TrialState> trial = readTrial();
    if (!trial || !adopt(trial->id)) {
        answerChange(console, false, "no trial is under way that lacks a timer");
        return Status::kNo;
    }
    return takeBackAtLast(console, trial->id, trial->deadline) == Turn::kTakenBack ? Status::kDone
                                                                                   : Status::kNo;
}

}  // namespace zamofw
