// What the commands that change something answer.
#ifndef COMMAND_ANSWERS_CHANGEANSWER_H
#define COMMAND_ANSWERS_CHANGEANSWER_H

#include <string>

#include "command/console.h"
#include "command/document/finding.h"

namespace zamofw {

// {"changed":B}, or the text.
void answerChange(const Console& console, bool changed, const std::string& text);

// The answer of a change that was refused; why has been said on standard error.
[[nodiscard]] Status refusedChange(const Console& console);

// Says that a stored change of the profile is not yet in force, which surprises who expects it. An
// empty name stands for every profile.
void noteReload(const Console& console, const std::string& profile);

// Shows the findings on standard error. False when there is an error and `force` is not set: the
// document is refused.
[[nodiscard]] bool isAccepted(const Console& console, const Findings& findings, bool force);

}  // namespace zamofw

#endif
