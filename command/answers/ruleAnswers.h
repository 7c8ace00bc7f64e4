// `zamofw rule ...`: the rules of a profile, listed and changed.
//
// Call::words are the words after the sub-command. Wrong words throw a Failure with kWrongUse
// before anything is done. The commands that change something take `--force`, with which the faults
// of the resulting profile are shown but do not refuse it; they never put rules into force.
#ifndef COMMAND_ANSWERS_RULEANSWERS_H
#define COMMAND_ANSWERS_RULEANSWERS_H

#include "command/answers/call.h"
#include "command/console.h"

namespace zamofw {

// [PROFILE] [ADAPTER] [--hits] [--file FILE]
[[nodiscard]] Status ruleList(const Console& console, const Call& call);

// PROFILE ADAPTER WORDS
[[nodiscard]] Status ruleAdd(const Console& console, const Call& call);

// PROFILE ADAPTER POSITION WORDS
[[nodiscard]] Status ruleInsert(const Console& console, const Call& call);
[[nodiscard]] Status ruleReplace(const Console& console, const Call& call);

// PROFILE ADAPTER POSITION
[[nodiscard]] Status ruleRemove(const Console& console, const Call& call);
[[nodiscard]] Status ruleEnable(const Console& console, const Call& call);
[[nodiscard]] Status ruleDisable(const Console& console, const Call& call);

// PROFILE ADAPTER FROM TO
[[nodiscard]] Status ruleMove(const Console& console, const Call& call);

}  // namespace zamofw

#endif
