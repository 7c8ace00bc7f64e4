// The packets whose verdict changes from one profile to another.
#ifndef COMMAND_ANALYSIS_DIFFERENCE_H
#define COMMAND_ANALYSIS_DIFFERENCE_H

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "command/analysis/boxSpace.h"
#include "command/analysis/explanation.h"
#include "command/analysis/model.h"

namespace zamofw::analysis {

// Shared by changes, which can be tens of thousands.
using SharedIntervals = std::shared_ptr<const Intervals>;

// A set of packets: what is null is every one.
struct Change {
    bool isAllowedAfter = false;  // and not before, or the other way round
    std::string in;
    Hook hook = Hook::kInput;
    std::string out;  // of forwarded packets
    int family = 4;
    std::string protocol;
    SharedIntervals sources;  // never null
    SharedIntervals destinations;
    SharedIntervals sourcePorts;
    SharedIntervals ports;  // never null for TCP and UDP
    Packet witness;         // one of them
};

// Profiles that have little in common differ in more ways than anybody reads, and finding them
// takes seconds. This many steps take about half a second.
constexpr std::size_t kFewSteps = 5000;
constexpr std::size_t kAllSteps = std::numeric_limits<std::size_t>::max();

// Every packet whose verdict changes, once. The models come from one reader. Throws Failure when it
// takes more than `mostSteps`.
[[nodiscard]] std::vector<Change> difference(const Model& before,
                                             const Model& after,
                                             std::size_t mostSteps = kAllSteps);

}  // namespace zamofw::analysis

#endif
