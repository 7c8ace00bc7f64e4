// `zamofw rehearse [PROFILE]`
#ifndef COMMAND_ANSWERS_REHEARSEANSWER_H
#define COMMAND_ANSWERS_REHEARSEANSWER_H

#include "command/console.h"
#include "command/document/target.h"

namespace zamofw {

// Answers {"ok":B,"lines":N,"refused":[...]}, or the same as text: what this kernel would refuse of
// a profile, with nothing put into force. kNo when it would refuse a line.
[[nodiscard]] Status rehearseAnswer(const Console& console, const TargetWords& words);

}  // namespace zamofw

#endif
