// `zamofw diff [A] [B] --meaning`
#ifndef COMMAND_ANSWERS_MEANINGANSWER_H
#define COMMAND_ANSWERS_MEANINGANSWER_H

#include <vector>

#include "command/analysis/difference.h"
#include "command/answers/diffAnswer.h"
#include "command/console.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

// Shows the packets whose verdict changes from A to B. kNo when there are any.
[[nodiscard]] Status meaningAnswer(const Console& console, const DiffRequest& request);

// The same packets, for a change that is about to be made. Throws Failure when a profile cannot be
// translated, or holds lines that are not understood.
[[nodiscard]] std::vector<analysis::Change> changesInMeaning(const FW::FWPROFILE& before,
                                                             const FW::FWPROFILE& after);

// A line per change, at most `most` of them.
[[nodiscard]] std::string changesText(const std::vector<analysis::Change>& changes,
                                      std::size_t most);

}  // namespace zamofw

#endif
