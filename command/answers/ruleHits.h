// How often each rule in force was hit, by the kernel's counters.
#ifndef COMMAND_ANSWERS_RULEHITS_H
#define COMMAND_ANSWERS_RULEHITS_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "command/plan/plannedLine.h"

namespace zamofw {

struct Hits {
    std::uint64_t packets = 0;
    std::uint64_t bytes = 0;
};

// By adapter and position; a rule without a line is not in it.
using RuleHits = std::map<std::pair<std::string, std::size_t>, Hits>;

// What `iptables -v -S CHAIN` prints for a chain of a family (4 or 6), line by line.
using ChainListing = std::function<std::vector<std::string>(int family, const std::string& chain)>;

// The plan's lines are paired with the kernel's in their order. None when they are not the same
// rules. A log line is not counted: the packets that it counts are those of the line after it.
[[nodiscard]] std::optional<RuleHits> hitsOf(const Plan& plan, const ChainListing& listing);

// The kernel's own listing. Throws Failure when it cannot be had.
[[nodiscard]] std::vector<std::string> kernelChain(int family, const std::string& chain);

}  // namespace zamofw

#endif
