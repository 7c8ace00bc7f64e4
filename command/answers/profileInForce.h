// The stored profile and its check, before its rules go into force.
#ifndef COMMAND_ANSWERS_PROFILEINFORCE_H
#define COMMAND_ANSWERS_PROFILEINFORCE_H

#include "command/answers/reloadAnswer.h"
#include "command/console.h"
#include "command/document/target.h"

namespace zamofw {

// Whether the firewall is switched on. Throws Failure when the settings cannot be read.
[[nodiscard]] bool isFirewallEnabled();

// Shows on standard error what the check finds in a profile. Throws Failure (kNo) for errors that
// refuse it, or an intent that it breaks.
void showFindings(const Console& console, const Target& profile, Errors errors);

}  // namespace zamofw

#endif
