// Why a restore failed: a line that was refused, or something that is no line's fault.
#ifndef COMMAND_APPLY_REFUSAL_H
#define COMMAND_APPLY_REFUSAL_H

#include <string>
#include <vector>

#include "command/apply/program.h"
#include "command/apply/transaction.h"
#include "command/plan/plan.h"

namespace zamofw {

// The line that the program refused, its words, and the rule that the line came from. Throws
// Failure when the program failed for another reason: a lock that is held, a missing chain, no
// packet filter in the kernel.
[[nodiscard]] Refusal refusalOf(int family, const RestoreText& input, const ProgramResult& result);

// What this kernel refuses of a plan: the first line of each family, tried in a network namespace
// that nobody else sees. Empty as well when there is no place to try.
[[nodiscard]] std::vector<Refusal> refusedLines(const Plan& plan);

// Throws Failure, naming the holder, when the program ended because the xtables lock was not free.
void throwIfLockIsHeld(const ProgramResult& result);

// Ends the call: the program failed, and no line of ours is the reason.
[[noreturn]] void failedProgram(int family,
                                const std::string& program,
                                const ProgramResult& result);

}  // namespace zamofw

#endif
