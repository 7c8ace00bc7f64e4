// The process that takes a trial back when nobody confirms it in time.
#ifndef COMMAND_APPLY_TRIALTIMER_H
#define COMMAND_APPLY_TRIALTIMER_H

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "command/apply/trialState.h"

namespace zamofw {

// Starts `zamofw revert --when-due` away from this call's terminal, session and control group: as a
// unit of the system where systemd runs, which starts it again when somebody kills it, or else as a
// process of its own. Its id; 0 when it is not known, and then the process will say it itself.
// Throws Failure when it cannot be started.
[[nodiscard]] pid_t startTrialTimer(const std::string& trialId);

// Ends the timer, unless it is this process. The caller holds the execution lock, so that the timer
// is only waiting.
void endTrialTimer(const TrialState& trial);

// For a process that is such a timer: a kill of the command by its name shall not hit it.
void becomeTrialTimer();

// Returns when nanosecondsSinceBoot() has come there. Standby counts, and so does no change of the
// clock.
void waitUntil(std::int64_t deadline);

}  // namespace zamofw

#endif
