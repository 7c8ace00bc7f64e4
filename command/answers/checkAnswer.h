// `zamofw check [PROFILE] [--all]`
#ifndef COMMAND_ANSWERS_CHECKANSWER_H
#define COMMAND_ANSWERS_CHECKANSWER_H

#include "command/console.h"
#include "command/document/target.h"

namespace zamofw {

struct CheckRequest {
    TargetWords target;
    bool all = false;  // every stored profile
};

// {"ok":B,"findings":[...]}, or the findings as a compiler prints them. kNo when there is an error.
[[nodiscard]] Status checkAnswer(const Console& console, const CheckRequest& request);

}  // namespace zamofw

#endif
