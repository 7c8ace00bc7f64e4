// The boxes of two lists that are compared, among those of one mask.
#ifndef COMMAND_ANALYSIS_SLICE_H
#define COMMAND_ANALYSIS_SLICE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "command/analysis/boxSpace.h"

namespace zamofw::analysis {

// The dimensions that are looked at. A mask leaves the boxes of one choice in the others.
constexpr std::size_t kFreeAxes = 4;
constexpr std::array<Axis, kFreeAxes> kFree = {kSource, kDestination, kSourcePort, kPort};

// A box that one of the lists has, or both.
struct ListedBox {
    std::size_t box = 0;
    bool isBefore = false;
    bool isAfter = false;
};

// Boxes by a number of their own, and each dimension in groups of classes that none of them tells
// apart. Only where a box holds that one list has alone can the lists differ, so that the groups
// are of that part, and other boxes are left out.
class Slice {
  public:
    Slice(const BoxSpace& space, const std::vector<ListedBox>& boxes);

    [[nodiscard]] std::size_t words() const { return words_; }  // of a mask of the slice's boxes
    [[nodiscard]] const BoxMask& before() const { return before_; }
    [[nodiscard]] const BoxMask& after() const { return after_; }
    [[nodiscard]] const BoxMask& allowing() const { return allowing_; }

    [[nodiscard]] std::size_t groupCount(std::size_t axis) const { return axes_[axis].count; }
    // The boxes that hold a group.
    [[nodiscard]] const Word* boxesAt(std::size_t axis, std::size_t group) const {
        return axes_[axis].rows.data() + group * words_;
    }
    // The boxes that do not hold all of the dimension.
    [[nodiscard]] const BoxMask& cutting(std::size_t axis) const { return axes_[axis].cutting; }
    // The groups of a box that cuts the dimension.
    [[nodiscard]] const Bits& groupsOf(std::size_t axis, std::size_t box) const {
        return axes_[axis].groupsIn[axes_[axis].setOfBox[box]];
    }
    // An empty set of groups stands for all of them.
    [[nodiscard]] Bits classesOf(std::size_t axis, const Bits& groups) const;

  private:
    struct GroupedAxis {
        std::size_t count = 0;             // of groups
        std::vector<std::size_t> groupOf;  // of each class, or kNone
        std::vector<std::size_t> setOfBox;
        std::vector<Bits> groupsIn;  // of each set
        std::vector<Word> rows;      // of boxes
        BoxMask cutting;
    };

    [[nodiscard]] GroupedAxis grouped(const Dimension& dimension,
                                      const std::vector<std::uint32_t>& setOfBox,
                                      const Bits& part) const;
    void fillRows(GroupedAxis& axis) const;

    std::size_t words_ = 0;
    BoxMask before_;
    BoxMask after_;
    BoxMask allowing_;
    std::array<GroupedAxis, kFreeAxes> axes_;
};

}  // namespace zamofw::analysis

#endif
