// The lines of both families, in force or not at all.
#ifndef COMMAND_APPLY_BOTHFAMILIES_H
#define COMMAND_APPLY_BOTHFAMILIES_H

#include <functional>
#include <optional>

#include "command/apply/program.h"
#include "command/apply/restore.h"

namespace zamofw {

// What the programs of both families said. A family that it did not come to has no result.
struct Results {
    std::optional<ProgramResult> v4;
    std::optional<ProgramResult> v6;

    std::optional<ProgramResult>& of(int family) { return family == 4 ? v4 : v6; }
};

// Tests both families, then commits the one with fewer lines, then the other. From the first commit
// on, both families get their lines or both keep what they have. It is to be called by a process
// that outlives a kill of the command. `executionLock` is the descriptor of the lock that the
// programs keep. `whenCommitted` is done when both have got their lines, before a kill can end it.
// Throws Failure when the xtables lock is not free in time, or a program is missing.
[[nodiscard]] Results commitBothFamilies(const Restore& v4,
                                         const Restore& v6,
                                         int executionLock,
                                         const std::function<void()>& whenCommitted);

}  // namespace zamofw

#endif
