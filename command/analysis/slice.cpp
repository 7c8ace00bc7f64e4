#include "command/analysis/slice.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace zamofw::analysis {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

using Part = std::array<Bits, kFreeAxes>;

const Bits& classesOfBox(const BoxSpace& space, std::size_t box, std::size_t axis) {
    return space.axis(kFree[axis]).classesIn(space.boxes()[box].sets[kFree[axis]]);
}

// The smallest part that has all boxes that only one list has.
Part partOfChanged(const BoxSpace& space, const std::vector<ListedBox>& boxes) {
    Part part;
    for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
        part[axis].resize(space.axis(kFree[axis]).size());
        for (const ListedBox& listed : boxes) {
            if (listed.isBefore != listed.isAfter) {
                part[axis] |= classesOfBox(space, listed.box, axis);
            }
        }
    }
    return part;
}

std::vector<ListedBox> boxesIn(const BoxSpace& space,
                               const std::vector<ListedBox>& boxes,
                               const Part& part) {
    std::vector<ListedBox> inside;
    for (const ListedBox& listed : boxes) {
        bool isInside = true;
        for (std::size_t axis = 0; axis < kFreeAxes && isInside; ++axis) {
            isInside = part[axis].intersects(classesOfBox(space, listed.box, axis));
        }
        if (isInside) {
            inside.push_back(listed);
        }
    }
    return inside;
}

// Cuts a part into groups, set by set.
class Grouping {
  public:
    explicit Grouping(const Bits& part) : part_(part), groupOf_(part.size(), kNone) {
        for (auto i = part.find_first(); i != Bits::npos; i = part.find_next(i)) {
            groupOf_[i] = 0;
        }
        targets_.resize(1);
    }

    void cutBy(const Bits& classes) {
        ++cut_;
        const Bits inside = part_ & classes;
        for (auto i = inside.find_first(); i != Bits::npos; i = inside.find_next(i)) {
            const std::size_t group = groupOf_[i];
            if (targets_[group].cut != cut_) {
                targets_[group] = {cut_, targets_.size()};
                targets_.emplace_back();
            }
            groupOf_[i] = targets_[group].group;
        }
    }

    // The number of groups. Sets the group of each class.
    std::size_t finish(std::vector<std::size_t>& groupOf) {
        std::vector<std::size_t> number(targets_.size(), kNone);
        std::size_t count = 0;
        for (std::size_t& group : groupOf_) {
            if (group != kNone) {
                if (number[group] == kNone) {
                    number[group] = count++;
                }
                group = number[group];
            }
        }
        groupOf = std::move(groupOf_);
        return count;
    }

  private:
    struct Target {
        std::size_t cut = 0;    // the last one that took classes out of the group
        std::size_t group = 0;  // where they went
    };

    const Bits& part_;
    std::vector<std::size_t> groupOf_;
    std::vector<Target> targets_;
    std::size_t cut_ = 0;
};

}  // namespace

Slice::Slice(const BoxSpace& space, const std::vector<ListedBox>& boxes) {
    const Part part = partOfChanged(space, boxes);
    const std::vector<ListedBox> inside = boxesIn(space, boxes, part);
    words_ = (inside.size() + kWordBits - 1) / kWordBits;
    for (BoxMask* const mask : {&before_, &after_, &allowing_}) {
        mask->resize(words_);
    }
    for (std::size_t i = 0; i < inside.size(); ++i) {
        const auto bitIf = [i](bool isSet) { return isSet ? bitOf(i) : Word{0}; };
        before_[i / kWordBits] |= bitIf(inside[i].isBefore);
        after_[i / kWordBits] |= bitIf(inside[i].isAfter);
        allowing_[i / kWordBits] |= bitIf(space.boxes()[inside[i].box].isAllowed);
    }
    for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
        std::vector<std::uint32_t> setOfBox;
        setOfBox.reserve(inside.size());
        for (const ListedBox& listed : inside) {
            setOfBox.push_back(space.boxes()[listed.box].sets[kFree[axis]]);
        }
        axes_[axis] = grouped(space.axis(kFree[axis]), setOfBox, part[axis]);
        fillRows(axes_[axis]);
    }
}

Slice::GroupedAxis Slice::grouped(const Dimension& dimension,
                                  const std::vector<std::uint32_t>& setOfBox,
                                  const Bits& part) const {
    GroupedAxis axis;
    std::unordered_map<std::uint32_t, std::size_t> numbers;
    std::vector<std::uint32_t> sets;
    axis.setOfBox.reserve(setOfBox.size());
    for (const std::uint32_t set : setOfBox) {
        const auto [entry, isNew] = numbers.try_emplace(set, sets.size());
        if (isNew) {
            sets.push_back(set);
        }
        axis.setOfBox.push_back(entry->second);
    }
    Grouping grouping(part);
    for (const std::uint32_t set : sets) {
        if (set != 0) {
            grouping.cutBy(dimension.classesIn(set));
        }
    }
    axis.count = grouping.finish(axis.groupOf);
    for (const std::uint32_t set : sets) {
        const Bits inside = part & dimension.classesIn(set);
        Bits& groups = axis.groupsIn.emplace_back(axis.count);
        for (auto i = inside.find_first(); i != Bits::npos; i = inside.find_next(i)) {
            groups.set(axis.groupOf[i]);
        }
    }
    return axis;
}

void Slice::fillRows(GroupedAxis& axis) const {
    axis.cutting.resize(words_);
    BoxMask uncut(words_);
    std::vector<bool> isCut;
    isCut.reserve(axis.groupsIn.size());
    for (const Bits& groups : axis.groupsIn) {
        isCut.push_back(!groups.all());
    }
    for (std::size_t box = 0; box < axis.setOfBox.size(); ++box) {
        (isCut[axis.setOfBox[box]] ? axis.cutting : uncut)[box / kWordBits] |= bitOf(box);
    }
    axis.rows.reserve(axis.count * words_);
    for (std::size_t group = 0; group < axis.count; ++group) {
        axis.rows.insert(axis.rows.end(), uncut.begin(), uncut.end());
    }
    for (std::size_t box = 0; box < axis.setOfBox.size(); ++box) {
        if (isCut[axis.setOfBox[box]]) {
            const Bits& groups = axis.groupsIn[axis.setOfBox[box]];
            for (auto i = groups.find_first(); i != Bits::npos; i = groups.find_next(i)) {
                axis.rows[i * words_ + box / kWordBits] |= bitOf(box);
            }
        }
    }
}

Bits Slice::classesOf(std::size_t axis, const Bits& groups) const {
    const std::vector<std::size_t>& groupOf = axes_[axis].groupOf;
    Bits classes(groupOf.size());
    for (std::size_t i = 0; i < groupOf.size(); ++i) {
        if (groupOf[i] != kNone && (groups.empty() || groups.test(groupOf[i]))) {
            classes.set(i);
        }
    }
    return classes;
}

}  // namespace zamofw::analysis
