// Where two lists of boxes give different verdicts.
#ifndef COMMAND_ANALYSIS_COMPARISON_H
#define COMMAND_ANALYSIS_COMPARISON_H

#include <array>
#include <cstddef>
#include <vector>

#include "command/analysis/boxSpace.h"
#include "command/analysis/slice.h"

namespace zamofw::analysis {

// The dimensions of these are the free ones, in the order of kFree.
struct Difference {
    std::array<std::size_t, kFreeAxes> part;  // indexes in Differences::classes
    bool isAllowedAfter;
};
struct Differences {
    std::array<std::vector<Bits>, kFreeAxes> classes;  // each set once, since many share it
    std::vector<Difference> list;
};

class Comparison {
  public:
    // Compares the two lists of a space. A step less is left for each split.
    Comparison(const BoxSpace& space, std::size_t& stepsLeft);

    // The differences among the boxes of a mask. Throws Failure when no step is left.
    [[nodiscard]] Differences compare(const BoxMask& mask);

  private:
    const BoxSpace& space_;
    std::size_t& stepsLeft_;
    std::vector<ListedBox> boxes_;  // of both lists, each list in its order
};

}  // namespace zamofw::analysis

#endif
