// Looking for everything that may be wrong, and mending it.
#ifndef COMMAND_ANSWERS_EXAMINATION_H
#define COMMAND_ANSWERS_EXAMINATION_H

#include <optional>
#include <string>

#include "command/apply/damage.h"
#include "command/apply/executionLock.h"
#include "command/console.h"

namespace zamofw {

struct Examination {
    Damages damages;
    std::optional<Failure> problem;  // why not all of it could be looked at
};

// `lock` is null when a reload holds it: then what belongs to a reload is not looked for.
[[nodiscard]] Examination examine(const ExecutionLock* lock);

// Mends what can be mended, and says on standard error what could not be and why.
void repairDamages(const Console& console, const ExecutionLock& lock);

// lock-held, for the lock of a reload.
[[nodiscard]] Damage reloadLockDamage();

}  // namespace zamofw

#endif
