// `zamofw diff [A] [B] --meaning`
#ifndef COMMAND_ANSWERS_MEANINGANSWER_H
#define COMMAND_ANSWERS_MEANINGANSWER_H

#include <json/value.h>

#include <string>

#include "command/answers/diffAnswer.h"
#include "command/console.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

// Shows the packets whose verdict changes from A to B. kNo when there are any.
[[nodiscard]] Status meaningAnswer(const Console& console, const DiffRequest& request);

// Says on standard error what a change that is about to be made does to packets. Says nothing under
// --quiet, and nothing in JSON: that is for `diff --meaning`.
void showMeaning(const Console& console, const FW::FWPROFILE& before, const FW::FWPROFILE& after);

// "packets that get another verdict:" and the first of them, or why it cannot be said. Empty when
// there are none.
[[nodiscard]] std::string meaningText(const FW::FWPROFILE& before, const FW::FWPROFILE& after);

// As in the answer to `diff --meaning`; null when it cannot be said.
[[nodiscard]] Json::Value meaningJson(const FW::FWPROFILE& before, const FW::FWPROFILE& after);

}  // namespace zamofw

#endif
