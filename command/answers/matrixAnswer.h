// `zamofw matrix [PROFILE] [--in INTERFACE] [--to ADDRESS]`
#ifndef COMMAND_ANSWERS_MATRIXANSWER_H
#define COMMAND_ANSWERS_MATRIXANSWER_H

#include <optional>
#include <string>

#include "command/console.h"
#include "command/document/target.h"

namespace zamofw {

struct MatrixRequest {
    TargetWords target;
    std::optional<std::string> in;  // none: each interface that a rule names, and all others
    std::optional<std::string> to;  // none: a destination that no rule names
};

// Shows which sources may reach what with new connections.
[[nodiscard]] Status matrixAnswer(const Console& console, const MatrixRequest& request);

}  // namespace zamofw

#endif
