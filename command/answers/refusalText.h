// Refused lines as an answer.
#ifndef COMMAND_ANSWERS_REFUSALTEXT_H
#define COMMAND_ANSWERS_REFUSALTEXT_H

#include <json/value.h>

#include <string>
#include <vector>

#include "command/apply/transaction.h"
#include "command/plan/plannedLine.h"

namespace zamofw {

// Each with the rule that it came from and the program's words.
[[nodiscard]] std::string refusalsText(const std::vector<Refusal>& refused);

// Ends the call after the library has put the plan's lines into force one by one and failed, which
// its log alone explains: names the refused lines.
[[noreturn]] void failedLineByLine(const Plan& plan, const std::string& what);

[[nodiscard]] Json::Value refusalsJson(const std::vector<Refusal>& refused);

}  // namespace zamofw

#endif
