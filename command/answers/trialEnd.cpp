#include "command/answers/trialEnd.h"

#include <unistd.h>

#include <exception>
#include <ostream>

#include "command/answers/refusalText.h"
#include "command/answers/reloadAnswer.h"
#include "command/apply/chains.h"
#include "command/apply/keptRules.h"
#include "command/apply/transaction.h"
#include "command/apply/trial.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

constexpr const char* kOldRules = "the rules that were in force before it are in force again";

bool isSavedBack(Patience patience, const ExecutionLock& lock, std::string& problems) {
    try {
        return bringSavedRulesBack(lock);
    } catch (const Failure& failure) {
        if (patience == Patience::kWait) {
            throw;
        }
        problems += std::string(failure.what()) + "\n";
        return false;
    }
}

// Whether the stored configuration is in force. A firewall that is switched off has open doors.
bool isStoredInForce(const Console& console, const ExecutionLock& lock, std::string& problems) {
    try {
        const InForce result = putIntoForce(console, Errors::kKnown, lock);
        std::string refused = refusalsText(result.outcome.refused);
        if (!result.isEnabled) {
            refused = openDoor(lock).problems;
        }
        problems += refused;
        return refused.empty();
    } catch (const std::exception& problem) {
        problems += std::string(problem.what()) + "\n";
        return false;
    }
}

bool isLastInForce(const ExecutionLock& lock, std::string& problems) {
    try {
        const std::optional<RestoreInputs> last = readRules(kKeptRulesFile);
        return last && applyInputs(*last, lock).applied;
    } catch (const std::exception& problem) {
        problems += std::string(problem.what()) + "\n";
        return false;
    }
}

}  // namespace

void endTrial(const Console& console) {
    std::optional<TrialState> trial;
    try {
        trial = readTrial();
        if (!trial) {
            return;
        }
    } catch (const Failure&) {
        // A record that nobody can read ends like any other.
    }
    try {
        forgetTrial(trial);
    } catch (const Failure& failure) {
        console.err << "warning: " << failure.what() << "\n";
    }
    if (!console.quiet) {
        console.err << "the trial" << (trial ? " of " + shown(trial->profile) : "")
                    << " is over: it needs no `zamofw confirm`, and is not taken back\n";
    }
}

void endTrialUnderLock(const Console& console) {
    // Without a trial nobody waits for a lock that somebody else holds.
    if (access(kTrialFile, F_OK) == 0) {
        const ExecutionLock lock;
        endTrial(console);
    }
}

std::string takeBackTrial(const Console& console,
                          const std::optional<TrialState>& trial,
                          Patience patience,
                          const ExecutionLock& lock) {
    // Somebody may have taken them away meanwhile.
    std::string problems = makeChains(Door::kAsItIs, lock).problems;
    if (isSavedBack(patience, lock, problems)) {
        forgetTrial(trial);
        return kOldRules;
    }
    Console silent = console;
    silent.quiet = true;
    if (isStoredInForce(silent, lock, problems)) {
        forgetTrial(trial);
        return "the stored configuration is in force";
    }
    if (isLastInForce(lock, problems)) {
        forgetTrial(trial);
        return "the last rules that were in force are in force again, since the stored ones cannot "
               "be:\n" +
               problems;
    }
    failed(problems + "the trial could not be taken back",
           "find the cause, then run `zamofw revert`, or `zamofw disable` to open the firewall");
}

}  // namespace zamofw
