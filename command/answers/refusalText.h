// Refused lines as an answer.
#ifndef COMMAND_ANSWERS_REFUSALTEXT_H
#define COMMAND_ANSWERS_REFUSALTEXT_H

#include <json/value.h>

#include <string>
#include <vector>

#include "command/apply/transaction.h"

namespace zamofw {

// Each with the rule that it came from and the program's words.
[[nodiscard]] std::string refusalsText(const std::vector<Refusal>& refused);

[[nodiscard]] Json::Value refusalsJson(const std::vector<Refusal>& refused);

}  // namespace zamofw

#endif
