// `zamofw policy PROFILE ADAPTER allow|deny|none`
#ifndef COMMAND_ANSWERS_POLICYANSWER_H
#define COMMAND_ANSWERS_POLICYANSWER_H

#include "command/answers/call.h"
#include "command/console.h"

namespace zamofw {

// Sets the default of an adapter, which need not have rules. Takes `--force` as the commands of
// ruleAnswers.h do.
[[nodiscard]] Status policySet(const Console& console, const Call& call);

}  // namespace zamofw

#endif
