// Putting a plan into force as one transaction.
#ifndef COMMAND_APPLY_TRANSACTION_H
#define COMMAND_APPLY_TRANSACTION_H

#include <optional>
#include <string>
#include <vector>

#include "command/apply/executionLock.h"
#include "command/apply/keptRules.h"
#include "command/plan/plannedLine.h"

namespace zamofw {

// A line that the system's program refused.
struct Refusal {
    int family = 4;
    std::string line;  // empty when it cannot be told which
    std::string adapter;
    std::optional<std::size_t> position;
    std::string name;
    std::string message;  // the program's own words
};

struct Outcome {
    bool applied = false;
    std::size_t lines = 0;
    long milliseconds = 0;
    std::vector<Refusal> refused;
};

// Under the library's execution lock: tests both families, commits the one with fewer lines, then
// the other, and puts the first back when the second fails. Nothing is changed unless `applied`. A
// child process does it, so that a kill of this one leaves the old rules or the new ones; a kill of
// all processes at once, as that of a control group, may hit between the two commits. Throws
// Failure when the lock or the xtables lock is not acquired in time, or a program is missing.
[[nodiscard]] Outcome applyPlan(const Plan& plan);

// The same for a caller that holds the lock already, so that the plan is that of the profile as it
// is now and not as it was before another reload.
[[nodiscard]] Outcome applyPlan(const Plan& plan, const ExecutionLock& lock);

// The same for rules that shall not become those that a later start falls back to.
[[nodiscard]] Outcome applyForNow(const Plan& plan, const ExecutionLock& lock);

// The same for input that was made before. It is not known which rule a line comes from.
[[nodiscard]] Outcome applyInputs(const RestoreInputs& inputs, const ExecutionLock& lock);

}  // namespace zamofw

#endif
