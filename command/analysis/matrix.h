// Who reaches what.
#ifndef COMMAND_ANALYSIS_MATRIX_H
#define COMMAND_ANALYSIS_MATRIX_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "command/analysis/boxSpace.h"
#include "command/analysis/model.h"

namespace zamofw::analysis {

// What is allowed of a protocol; the ports are of TCP and UDP alone.
struct AllowedProtocol {
    std::string name;
    std::optional<Intervals> ports;
};

// Sources that may reach the same.
struct SourceClass {
    std::string in;
    Hook hook = Hook::kInput;
    int family = 4;
    Intervals sources;
    std::vector<AllowedProtocol> allowed;
};

struct MatrixQuestion {
    std::optional<std::string> in;      // none: each interface
    std::optional<int> family;          // none: both
    std::optional<Number> destination;  // of that family; none: one that no rule names
};

// By interface, hook, family and first address. The classes of one interface, hook and family cover
// every address once, and no two of them allow the same.
[[nodiscard]] std::vector<SourceClass> matrix(const Model& model, const MatrixQuestion& question);

// The protocols that answers tell apart in a family, by number; the last stands for all others.
struct NamedProtocol {
    std::string name;
    std::uint8_t number;
};
[[nodiscard]] std::vector<NamedProtocol> namedProtocols(const std::vector<const Model*>& models,
                                                        int family);

}  // namespace zamofw::analysis

#endif
