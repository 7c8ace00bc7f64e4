// A trial's rules, and those that come back after it.
#ifndef COMMAND_APPLY_TRIAL_H
#define COMMAND_APPLY_TRIAL_H

#include <optional>

#include "command/apply/executionLock.h"
#include "command/apply/trialState.h"

namespace zamofw {

// Keeps the rules that are in force now, to bring them back after the trial. Nothing is kept of a
// state that nobody wants back: a door that an interrupted reload has left closed.
void saveRulesBeforeTrial();

// Whether those rules are in force again. False when there are none, or the kernel refuses one.
// Throws Failure when the kernel could not be asked.
[[nodiscard]] bool bringSavedRulesBack(const ExecutionLock& lock);

// The trial is over, and the rules in force are meant to stay: its copy, its saved rules, its
// record and its timer go. The record comes last but one, so that somebody still ends a trial whose
// end was interrupted.
void forgetTrial(const std::optional<TrialState>& trial);

// While other rules are on their way into force, the saved ones must not come back: a timer that
// finds a killed change would undo it. It puts the stored configuration into force instead.
class SavedRulesAside {
  public:
    SavedRulesAside();
    ~SavedRulesAside();
    SavedRulesAside(const SavedRulesAside&) = delete;
    SavedRulesAside& operator=(const SavedRulesAside&) = delete;

  private:
    bool isAside_;
};

}  // namespace zamofw

#endif
