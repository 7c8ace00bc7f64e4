// A line of the command list, with the rule that it came from.
#ifndef COMMAND_PLAN_PLANNEDLINE_H
#define COMMAND_PLAN_PLANNEDLINE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace zamofw {

enum class LineKind { kBuiltIn, kRule, kDefault };

struct PlannedLine {
    std::string line;     // everything after the program's path, as the translator makes it
    std::string adapter;  // the profile's adapter, also for the lines of its 6in4 tunnel
    LineKind kind = LineKind::kBuiltIn;
    std::optional<std::size_t> position;  // of the rule, from 1
    std::string name;                     // of the rule
};

// Both families in the order in which the library would run the lines.
struct Plan {
    std::string profile;
    std::vector<PlannedLine> v4;
    std::vector<PlannedLine> v6;
};

}  // namespace zamofw

#endif
