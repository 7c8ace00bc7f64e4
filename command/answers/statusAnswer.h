// `zamofw status`
#ifndef COMMAND_ANSWERS_STATUSANSWER_H
#define COMMAND_ANSWERS_STATUSANSWER_H

#include "command/console.h"

namespace zamofw {

// Answers {"enabled":B,"profile":S,"rules":N,"kernel":"same"|"differs"|"unknown","policies":{"v4":
// {"INPUT":S,"FORWARD":S},"v6":{...}},"trial":null}, or the same as text. What only root may ask
// the kernel is "unknown" for others.
[[nodiscard]] Status statusAnswer(const Console& console);

}  // namespace zamofw

#endif
