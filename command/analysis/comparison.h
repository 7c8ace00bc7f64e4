// Where two lists of boxes give different verdicts.
#ifndef COMMAND_ANALYSIS_COMPARISON_H
#define COMMAND_ANALYSIS_COMPARISON_H

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "command/analysis/boxSpace.h"

namespace zamofw::analysis {

// The dimensions that are looked at. A mask leaves the boxes of one choice in the others.
constexpr std::size_t kFreeAxes = 4;
constexpr std::array<Axis, kFreeAxes> kFree = {kSource, kDestination, kSourcePort, kPort};

// Classes of the dimensions that are not fixed.
using Part = std::array<Bits, kFreeAxes>;

struct Difference {
    Part part;
    bool isAllowedAfter;
};

class Comparison {
  public:
    // Compares the two lists of a space. A step less is left for each split.
    Comparison(const BoxSpace& space, std::size_t& stepsLeft);
    ~Comparison();

    // The differences among the boxes of a mask. Throws Failure when no step is left.
    [[nodiscard]] std::vector<Difference> compare(const BoxMask& mask);

  private:
    class Work;
    std::unique_ptr<Work> work_;
};

}  // namespace zamofw::analysis

#endif
