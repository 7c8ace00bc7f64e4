// The packets whose verdict changes from one profile to another.
#ifndef COMMAND_ANALYSIS_DIFFERENCE_H
#define COMMAND_ANALYSIS_DIFFERENCE_H

#include <optional>
#include <string>
#include <vector>

#include "command/analysis/boxSpace.h"
#include "command/analysis/explanation.h"
#include "command/analysis/model.h"

namespace zamofw::analysis {

// A set of packets: what is not there is every one.
struct Change {
    bool isAllowedAfter = false;  // and not before, or the other way round
    std::string in;
    Hook hook = Hook::kInput;
    std::string out;  // of forwarded packets
    int family = 4;
    std::string protocol;
    Intervals sources;
    std::optional<Intervals> destinations;
    std::optional<Intervals> sourcePorts;
    std::optional<Intervals> ports;  // always there for TCP and UDP
    Packet witness;                  // one of them
};

// Every packet whose verdict changes, once. The models come from one reader.
[[nodiscard]] std::vector<Change> difference(const Model& before, const Model& after);

}  // namespace zamofw::analysis

#endif
