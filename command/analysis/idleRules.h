// Rules that do nothing.
#ifndef COMMAND_ANALYSIS_IDLERULES_H
#define COMMAND_ANALYSIS_IDLERULES_H

#include <vector>

#include "command/analysis/model.h"

namespace zamofw::analysis {

struct ShadowedRule {
    Origin rule;
    std::vector<Origin> by;  // what decides about its packets, in the order of evaluation
};

struct IdleRules {
    std::vector<ShadowedRule> shadowed;  // no packet reaches them
    // Each could be taken away without a change of any verdict. Shadowed rules are not repeated.
    std::vector<Origin> redundant;
};

// A rule of which a line is unknown is not judged.
[[nodiscard]] IdleRules idleRules(const Model& model);

}  // namespace zamofw::analysis

#endif
