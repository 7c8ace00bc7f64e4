// How trials end.
#ifndef COMMAND_ANSWERS_TRIALEND_H
#define COMMAND_ANSWERS_TRIALEND_H

#include <string>

#include "command/apply/executionLock.h"
#include "command/apply/trialState.h"
#include "command/console.h"

namespace zamofw {

// Other rules are in force now, and meant to stay: a trial that is under way is over, and says so
// on standard error. The caller holds the execution lock.
void endTrial(const Console& console);

// The same for a caller without the lock.
void endTrialUnderLock(const Console& console);

// What a trial is taken back with when the saved rules cannot be asked for.
enum class Patience {
    kWait,  // a lock that is held is a failure, and the trial goes on
    kLast,  // whatever rules can be put into force
};

// Ends the trial with the rules that were in force before it; when the kernel refuses these, with
// the stored configuration, and then with the last rules that a transaction has put into force.
// Gives back what is in force now, in words. Throws Failure when none of them can be put into
// force; then the trial goes on.
[[nodiscard]] std::string takeBackTrial(const Console& console,
                                        const std::optional<TrialState>& trial,
                                        Patience patience,
                                        const ExecutionLock& lock);

}  // namespace zamofw

#endif
