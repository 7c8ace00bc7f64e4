// Two lists of rules can differ in their verdicts only where a rule holds that is in one of them
// alone. So each step cuts the region down to those rules, drops what has no part in it, and then
// splits one dimension. Pieces that are left with the same rules go on as one, and where the lists
// have become the same, nothing is looked at any more.

#include "command/analysis/comparison.h"

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <utility>

#include "command/console.h"
#include "command/plan/lineDiff.h"

namespace zamofw::analysis {
namespace {

// A box, and on which dimensions it holds only some of the part that is looked at.
struct Entry {
    std::size_t box;
    unsigned cuts;  // bits by dimension
};
bool operator<(const Entry& one, const Entry& other) {
    return one.box < other.box;
}

// A list of boxes, and the verdict where none of them holds.
struct Verdicts {
    std::vector<Entry> boxes;
    bool isAllowedAtEnd = true;
};

// What is left to be compared.
struct State {
    Part part;
    Verdicts before;
    Verdicts after;
};
bool operator<(const State& one, const State& other) {
    const auto key = [](const State& state) {
        return std::tie(state.before.isAllowedAtEnd,
                        state.after.isAllowedAtEnd,
                        state.before.boxes,
                        state.after.boxes,
                        state.part);
    };
    return key(one) < key(other);
}

}  // namespace

class Comparison::Work {
  public:
    Work(const BoxSpace& space, std::size_t& stepsLeft)
        : space_(space), stepsLeft_(stepsLeft), twin_(space.boxes().size(), kNone) {
        const std::vector<std::string> before = textsOf(space.list(0));
        const std::vector<std::string> after = textsOf(space.list(1));
        for (const Edit& edit : lineDiff(before, after)) {
            if (edit.kind == Edit::Kind::kSame) {
                const std::size_t one = space.list(0).begin + edit.oldIndex;
                const std::size_t other = space.list(1).begin + edit.newIndex;
                twin_[one] = other;
                twin_[other] = one;
            }
        }
    }

    // The differences among the boxes of a mask.
    [[nodiscard]] std::vector<Difference> compare(const BoxMask& mask) {
        known_.clear();
        State state;
        for (std::size_t i = 0; i < kFreeAxes; ++i) {
            state.part[i] = space_.axis(kFree[i]).classesIn(0);
        }
        state.before.boxes = boxesIn(mask, space_.list(0));
        state.after.boxes = boxesIn(mask, space_.list(1));
        trim(state.part, state.before);
        trim(state.part, state.after);
        std::vector<Difference> found;
        if (settle(state)) {
            compare(state, found);
        }
        return found;
    }

  private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    [[nodiscard]] std::vector<Entry> boxesIn(const BoxMask& mask,
                                             const BoxSpace::List& list) const {
        std::vector<Entry> boxes;
        for (std::size_t box = list.begin; box < list.end; ++box) {
            if ((mask[box / kWordBits] >> box % kWordBits & 1) != 0) {
                unsigned cuts = 0;
                for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
                    cuts |= space_.boxes()[box].sets[kFree[axis]] != 0 ? 1U << axis : 0U;
                }
                boxes.push_back({box, cuts});
            }
        }
        return boxes;
    }

    [[nodiscard]] std::vector<std::string> textsOf(const BoxSpace::List& list) const {
        std::vector<std::string> texts;
        for (std::size_t i = list.begin; i < list.end; ++i) {
            const Box& box = space_.boxes()[i];
            std::string text = box.isAllowed ? "+" : "-";
            for (const std::uint32_t set : box.sets) {
                text += std::to_string(set) + ' ';
            }
            texts.push_back(std::move(text));
        }
        return texts;
    }

    [[nodiscard]] const Bits& classesOf(std::size_t box, std::size_t axis) const {
        return space_.axis(kFree[axis]).classesIn(space_.boxes()[box].sets[kFree[axis]]);
    }
    // Appends a box that holds some of the part. False when it holds all of it, so that nothing
    // comes after it.
    bool keep(const Entry& entry, Verdicts& verdicts) const {
        if (entry.cuts == 0) {
            verdicts.isAllowedAtEnd = space_.boxes()[entry.box].isAllowed;
            return false;
        }
        verdicts.boxes.push_back(entry);
        return true;
    }

    // Drops the boxes at the end that say what the end says.
    void dropTail(Verdicts& verdicts) const {
        while (!verdicts.boxes.empty() &&
               space_.boxes()[verdicts.boxes.back().box].isAllowed == verdicts.isAllowedAtEnd) {
            verdicts.boxes.pop_back();
        }
    }

    // Keeps the boxes that have a share in the part.
    void trim(const Part& part, Verdicts& verdicts) const {
        const std::vector<Entry> all = std::move(verdicts.boxes);
        verdicts.boxes.clear();
        for (Entry entry : all) {
            bool isApart = false;
            for (std::size_t axis = 0; axis < kFreeAxes && !isApart; ++axis) {
                if ((entry.cuts >> axis & 1) != 0) {
                    const Bits& classes = classesOf(entry.box, axis);
                    isApart = !part[axis].intersects(classes);
                    if (!isApart && part[axis].is_subset_of(classes)) {
                        entry.cuts &= ~(1U << axis);
                    }
                }
            }
            if (!isApart && !keep(entry, verdicts)) {
                break;
            }
        }
        dropTail(verdicts);
    }

    // The list where a group of classes of the axis is all there is: each box holds all of them, or
    // none.
    [[nodiscard]] Verdicts within(const Verdicts& verdicts,
                                  std::size_t axis,
                                  const Bits& group) const {
        const Word* const here = space_.axis(kFree[axis]).boxesAt(group.find_first());
        Verdicts kept = {{}, verdicts.isAllowedAtEnd};
        for (Entry entry : verdicts.boxes) {
            if ((entry.cuts >> axis & 1) != 0) {
                if ((here[entry.box / kWordBits] & bitOf(entry.box)) == 0) {
                    continue;
                }
                entry.cuts &= ~(1U << axis);
            }
            if (!keep(entry, kept)) {
                break;
            }
        }
        dropTail(kept);
        return kept;
    }

    // The boxes that only one of the lists has. Twins come in the same order in both.
    [[nodiscard]] std::vector<std::size_t> changedBoxes(const State& state) const {
        std::vector<std::size_t> changed;
        const auto collect = [&](const Verdicts& own, const Verdicts& others) {
            auto other = others.boxes.begin();
            for (const Entry& entry : own.boxes) {
                const std::size_t twin = twin_[entry.box];
                while (twin != kNone && other != others.boxes.end() && other->box < twin) {
                    ++other;
                }
                if (twin == kNone || other == others.boxes.end() || other->box != twin) {
                    changed.push_back(entry.box);
                }
            }
        };
        collect(state.before, state.after);
        collect(state.after, state.before);
        return changed;
    }

    // Cuts the part down to those boxes. False when nothing is cut off.
    bool cutDown(Part& part, const std::vector<std::size_t>& changed) const {
        bool isCut = false;
        for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
            if (part[axis].empty()) {
                continue;  // no box cuts it
            }
            Bits hull(part[axis].size());
            for (const std::size_t box : changed) {
                hull |= classesOf(box, axis);
            }
            if (!part[axis].is_subset_of(hull)) {
                isCut = true;
                part[axis] &= hull;
            }
        }
        return isCut;
    }

    // Makes the state as small as can be without a split. False when nothing differs.
    bool settle(State& state) const {
        while (state.before.isAllowedAtEnd == state.after.isAllowedAtEnd) {
            const std::vector<std::size_t> changed = changedBoxes(state);
            if (changed.empty()) {
                return false;
            }
            if (!cutDown(state.part, changed)) {
                return true;
            }
            trim(state.part, state.before);
            trim(state.part, state.after);
        }
        return true;
    }

    // The sets of boxes that cut an axis.
    [[nodiscard]] std::vector<std::uint32_t> setsOn(std::size_t axis, const State& state) const {
        std::vector<std::uint32_t> sets;
        for (const Verdicts* const list : {&state.before, &state.after}) {
            for (const Entry& entry : list->boxes) {
                if ((entry.cuts >> axis & 1) != 0) {
                    sets.push_back(space_.boxes()[entry.box].sets[kFree[axis]]);
                }
            }
        }
        std::sort(sets.begin(), sets.end());
        sets.erase(std::unique(sets.begin(), sets.end()), sets.end());
        return sets;
    }

    // The classes of the part on an axis, by the sets that they are in.
    [[nodiscard]] std::vector<Bits> groupsOn(std::size_t axis,
                                             const std::vector<std::uint32_t>& sets,
                                             const Bits& part) const {
        std::vector<std::size_t> groupOf(part.size());
        std::size_t count = 1;
        for (const std::uint32_t set : sets) {
            std::vector<std::size_t> moved(count, kNone);
            const Bits inside = part & space_.axis(kFree[axis]).classesIn(set);
            for (auto i = inside.find_first(); i != Bits::npos; i = inside.find_next(i)) {
                std::size_t& target = moved[groupOf[i]];
                if (target == kNone) {
                    target = count++;
                }
                groupOf[i] = target;
            }
        }
        std::vector<Bits> groups(count);
        for (auto i = part.find_first(); i != Bits::npos; i = part.find_next(i)) {
            Bits& group = groups[groupOf[i]];
            group.resize(part.size());
            group.set(i);
        }
        groups.erase(
            std::remove_if(
                groups.begin(), groups.end(), [](const Bits& group) { return group.empty(); }),
            groups.end());
        return groups;
    }

    // The dimensions that a box of the state cuts, as bits.
    [[nodiscard]] static unsigned cutsOf(const State& state) {
        unsigned cuts = 0;
        for (const Verdicts* const list : {&state.before, &state.after}) {
            for (const Entry& entry : list->boxes) {
                cuts |= entry.cuts;
            }
        }
        return cuts;
    }

    // Appends the differences of a settled state. Dimensions that no box cuts have no say in them,
    // so that many states share what is found in the others.
    void compare(const State& state, std::vector<Difference>& found) {
        if (state.before.boxes.empty() && state.after.boxes.empty()) {
            found.push_back({state.part, state.after.isAllowedAtEnd});
            return;
        }
        const unsigned cuts = cutsOf(state);
        State cutState = state;
        for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
            if ((cuts >> axis & 1) == 0) {
                cutState.part[axis].clear();
            }
        }
        const auto [known, isNew] = known_.try_emplace(std::move(cutState));
        if (isNew) {
            known->second = split(known->first);
        }
        for (const Difference& difference : known->second) {
            found.push_back(difference);
            for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
                if ((cuts >> axis & 1) == 0) {
                    found.back().part[axis] = state.part[axis];
                }
            }
        }
    }

    // Splits the dimension with the most sets: what is left is small then, and the same for many
    // pieces.
    [[nodiscard]] std::vector<Difference> split(const State& state) {
        if (stepsLeft_-- == 0) {
            failed("they are too many to be listed at once",
                   "`zamofw diff --meaning` takes its time, and lists them all");
        }
        std::size_t axis = 0;
        std::vector<std::uint32_t> most;
        for (std::size_t i = 0; i < kFreeAxes; ++i) {
            std::vector<std::uint32_t> sets = setsOn(i, state);
            if (sets.size() > most.size()) {
                most = std::move(sets);
                axis = i;
            }
        }
        std::map<State, Bits> pieces;
        for (const Bits& group : groupsOn(axis, most, state.part[axis])) {
            State piece = {
                state.part, within(state.before, axis, group), within(state.after, axis, group)};
            piece.part[axis] = group;
            if (settle(piece)) {
                const Bits share = std::exchange(piece.part[axis], Bits());
                pieces.try_emplace(std::move(piece), Bits(group.size())).first->second |= share;
            }
        }
        // Pieces with the same differences in the other dimensions are one.
        std::vector<Difference> found;
        std::map<std::pair<Part, bool>, std::size_t> indexOf;
        for (const auto& [piece, classes] : pieces) {
            State whole = piece;
            whole.part[axis] = classes;
            std::vector<Difference> parts;
            compare(whole, parts);
            for (Difference& difference : parts) {
                Bits share = std::exchange(difference.part[axis], Bits());
                std::pair<Part, bool> key(difference.part, difference.isAllowedAfter);
                const auto [entry, isNew] = indexOf.try_emplace(std::move(key), found.size());
                if (isNew) {
                    difference.part[axis] = std::move(share);
                    found.push_back(std::move(difference));
                } else {
                    found[entry->second].part[axis] |= share;
                }
            }
        }
        return found;
    }

    const BoxSpace& space_;
    std::size_t& stepsLeft_;
    std::vector<std::size_t> twin_;  // of a box that both lists have: the other's
    std::map<State, std::vector<Difference>> known_;
};

Comparison::Comparison(const BoxSpace& space, std::size_t& stepsLeft)
    : work_(std::make_unique<Work>(space, stepsLeft)) {}

Comparison::~Comparison() = default;

std::vector<Difference> Comparison::compare(const BoxMask& mask) {
    return work_->compare(mask);
}

}  // namespace zamofw::analysis
