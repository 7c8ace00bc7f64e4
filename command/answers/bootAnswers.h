// `zamofw start` and `zamofw stop`: what the system's unit calls.
#ifndef COMMAND_ANSWERS_BOOTANSWERS_H
#define COMMAND_ANSWERS_BOOTANSWERS_H

#include "command/console.h"

namespace zamofw {

// Makes chains and jumps, and puts the stored configuration into force. Chains without rules are
// closed until then. Falls back to the last rules that were in force, or without any to an open
// door, and says so: kFailed. Answers {"changed":B}.
[[nodiscard]] Status startAnswer(const Console& console);

// Opens the door. What is stored stays as it is. Answers {"changed":B}.
[[nodiscard]] Status stopAnswer(const Console& console);

}  // namespace zamofw

#endif
