// How a matching rule changes the answer of a blocked query.
#ifndef LIBRARY_PROFILES_POLICYSTEP_H
#define LIBRARY_PROFILES_POLICYSTEP_H

#include "zamofirewall/ruleModel.h"

namespace FW {

struct PolicyStep {
    FW_POLICY answer;
    bool isLast;  // no later rule changes the answer
};

// The step from `answer` by a rule that matches the port.
[[nodiscard]] PolicyStep policyStep(const FWRULE& rule, FW_POLICY answer);

}  // namespace FW

#endif
