// `zamofw plan [PROFILE] [--format lines|restore|json]`
#ifndef COMMAND_ANSWERS_PLANANSWER_H
#define COMMAND_ANSWERS_PLANANSWER_H

#include <optional>
#include <string>

#include "command/console.h"
#include "command/document/target.h"

namespace zamofw {

struct PlanRequest {
    TargetWords target;
    std::optional<std::string> format;  // not given: lines, on a terminal with their rules
};

// Shows the command list of a profile.
[[nodiscard]] Status planAnswer(const Console& console, const PlanRequest& request);

}  // namespace zamofw

#endif
