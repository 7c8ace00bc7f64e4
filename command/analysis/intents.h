// Intents: sets of packets that should all get one verdict.
#ifndef COMMAND_ANALYSIS_INTENTS_H
#define COMMAND_ANALYSIS_INTENTS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "command/analysis/explanation.h"
#include "command/analysis/model.h"

namespace zamofw::analysis {

// Its addresses, protocol and ports are those of the rule at the same position of a model; see
// below.
struct Intent {
    bool isAllowed = true;
    std::optional<std::string> in;   // none: each interface
    std::optional<std::string> out;  // then it is about forwarded packets alone
};

// A packet that gets the other verdict, and what decides about it.
struct Violation {
    Packet witness;
    std::string protocol;
    Origin decider;
};

// For each intent a violation, if there is one. `intended` is the model of a profile that has a
// rule for each intent, in their order, for both chains of the adapter "global"; `rules` is judged.
// Both come from one reader.
[[nodiscard]] std::vector<std::optional<Violation>> violations(const Model& rules,
                                                               const Model& intended,
                                                               const std::vector<Intent>& intents);

}  // namespace zamofw::analysis

#endif
