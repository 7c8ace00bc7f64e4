// `zamofw log` and `zamofw undo`: what was changed, and taking it back.
#ifndef COMMAND_ANSWERS_HISTORYANSWERS_H
#define COMMAND_ANSWERS_HISTORYANSWERS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "command/console.h"

namespace zamofw {

// The last `count` changes, or all. With --json a line for each, as it is logged:
// {"time":RFC3339,"user":S,"from":S|null,"command":[S...],"result":N,"before":DIGEST,
//  "after":DIGEST,"milliseconds":N}
[[nodiscard]] Status logAnswer(const Console& console, std::optional<std::size_t> count);

// Brings back what was there before the last change. kNo when there is nothing to take back.
[[nodiscard]] Status undoAnswer(const Console& console, const std::vector<std::string>& call);

// "done", "refused"; what an exit status in the log of changes says.
[[nodiscard]] std::string resultText(int result);

}  // namespace zamofw

#endif
