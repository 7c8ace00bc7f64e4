// Where two lists of boxes give different verdicts.
#ifndef COMMAND_ANALYSIS_COMPARISON_H
#define COMMAND_ANALYSIS_COMPARISON_H

#include <array>
#include <cstddef>
#include <vector>

#include "command/analysis/boxSpace.h"
#include "command/analysis/slice.h"

namespace zamofw::analysis {

// Classes of the dimensions that are not fixed, in the order of kFree.
struct Difference {
    std::array<Bits, kFreeAxes> part;
    bool isAllowedAfter;
};

class Comparison {
  public:
    // Compares the two lists of a space. A step less is left for each split.
    Comparison(const BoxSpace& space, std::size_t& stepsLeft);

    // The differences among the boxes of a mask. Throws Failure when no step is left.
    [[nodiscard]] std::vector<Difference> compare(const BoxMask& mask);

  private:
    const BoxSpace& space_;
    std::size_t& stepsLeft_;
    std::vector<ListedBox> boxes_;  // of both lists, each list in its order
};

}  // namespace zamofw::analysis

#endif
