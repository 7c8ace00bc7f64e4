// Why a restore failed: a line that was refused, or something that is no line's fault.
#ifndef COMMAND_APPLY_REFUSAL_H
#define COMMAND_APPLY_REFUSAL_H

#include <string>
#include <vector>

#include "command/apply/program.h"
#include "command/apply/transaction.h"
#include "command/plan/plan.h"

namespace zamofw {

[[nodiscard]] std::vector<std::string> linesOf(const std::string& text);

// The refusal of the input's line at an index, with the rule that the line came from.
[[nodiscard]] Refusal refusalAt(int family,
                                const RestoreText& input,
                                const std::vector<std::string>& lines,
                                std::size_t index,
                                const std::string& words);

// The line that the program refused, its words, and the rule that the line came from. Throws
// Failure when the program failed for another reason: a lock that is held, a missing chain, no
// packet filter in the kernel.
[[nodiscard]] Refusal refusalOf(int family, const RestoreText& input, const ProgramResult& result);

}  // namespace zamofw

#endif
