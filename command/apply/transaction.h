// Putting a plan into force as one transaction.
#ifndef COMMAND_APPLY_TRANSACTION_H
#define COMMAND_APPLY_TRANSACTION_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "command/apply/executionLock.h"
#include "command/plan/plan.h"

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

// Whether a later start that cannot make its own rules falls back to these.
enum class StartFallback { kTheseRules, kEarlierRules };

// Under the library's execution lock: tests both families, commits the one with fewer lines, then
// the other, and puts the first back when the second fails. A child process does it, so that a kill
// of this one leaves the old rules or the new ones; a kill of all processes at once, as that of a
// control group, may hit between the two commits.
class Transaction {
  public:
    // For a caller that holds the lock already, so that the plan is that of the profile as it is
    // now and not as it was before another reload. Starts the child: the less memory this process
    // has by then, the cheaper.
    explicit Transaction(const ExecutionLock& lock,
                         StartFallback fallback = StartFallback::kTheseRules);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // Nothing is changed unless `applied`. Throws Failure when the xtables lock is not acquired in
    // time, or a program is missing.
    [[nodiscard]] Outcome apply(const Plan& plan);
    // The plan is asked for when a line is refused.
    [[nodiscard]] Outcome apply(const RestoreInputs& inputs, const std::function<Plan()>& plan);
    // Of inputs that were made before, nobody knows which rule a line comes from.
    [[nodiscard]] Outcome apply(const RestoreInputs& inputs);

  private:
    using TextOf = std::function<RestoreText(int family)>;
    [[nodiscard]] Outcome applyTexts(const RestoreInputs& inputs, const TextOf& textOf);

    class Child;
    std::unique_ptr<Child> child_;
};

// The same in one step. Throws Failure when the execution lock is not acquired in time, too.
[[nodiscard]] Outcome applyPlan(const Plan& plan);
[[nodiscard]] Outcome applyPlan(const Plan& plan, const ExecutionLock& lock);

// The same for rules that shall not become those that a later start falls back to.
[[nodiscard]] Outcome applyForNow(const Plan& plan, const ExecutionLock& lock);

// The same for inputs that were made before.
[[nodiscard]] Outcome applyInputs(const RestoreInputs& inputs, const ExecutionLock& lock);

}  // namespace zamofw

#endif
