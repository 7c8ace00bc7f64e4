// Each step fixes a group of one dimension, so that only the boxes that hold it are left. Groups
// that leave the same boxes go on as one, and those where both lists have become the same are done.
// The last dimension needs no steps: each list's verdicts on it are a row of bits.

#include "command/analysis/comparison.h"

#include <algorithm>
#include <boost/functional/hash.hpp>
#include <boost/iterator/function_output_iterator.hpp>
#include <iterator>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

#include "command/console.h"
#include "command/plan/lineDiff.h"

namespace zamofw::analysis {
namespace {

// The boxes that have a say yet, and the verdicts where none of them holds.
struct State {
    BoxMask before;
    BoxMask after;
    bool isAllowedBefore = true;
    bool isAllowedAfter = true;
    unsigned fixed = 0;  // the dimensions that are, as bits
};
bool operator==(const State& one, const State& other) {
    return one.before == other.before && one.after == other.after &&
           one.isAllowedBefore == other.isAllowedBefore &&
           one.isAllowedAfter == other.isAllowedAfter && one.fixed == other.fixed;
}
struct StateHash {
    std::size_t operator()(const State& state) const {
        std::size_t hash = state.fixed;
        boost::hash_combine(hash, state.isAllowedBefore);
        boost::hash_combine(hash, state.isAllowedAfter);
        boost::hash_range(hash, state.before.begin(), state.before.end());
        boost::hash_range(hash, state.after.begin(), state.after.end());
        return hash;
    }
};

// Sets of groups, each with a number: what many differences share is stored and compared once.
// Number 0 is the empty set, which stands for all groups.
class SetPool {
  public:
    SetPool() { (void)numberOf({}); }

    [[nodiscard]] std::size_t numberOf(Bits set) {
        const auto [entry, isNew] = numbers_.try_emplace(std::move(set), sets_.size());
        if (isNew) {
            sets_.push_back(&entry->first);
        }
        return entry->second;
    }
    [[nodiscard]] const Bits& operator[](std::size_t number) const { return *sets_[number]; }

  private:
    struct Hash {
        std::size_t operator()(const Bits& set) const {
            std::size_t hash = 0;
            boost::to_block_range(set, boost::make_function_output_iterator([&hash](Word word) {
                                      boost::hash_combine(hash, word);
                                  }));
            return hash;
        }
    };

    std::unordered_map<Bits, std::size_t, Hash> numbers_;
    std::vector<const Bits*> sets_;
};

struct GroupDifference {
    std::array<std::size_t, kFreeAxes> part = {};  // a set of groups of each dimension
    bool isAllowedAfter = false;
};
bool operator==(const GroupDifference& one, const GroupDifference& other) {
    return one.isAllowedAfter == other.isAllowedAfter && one.part == other.part;
}
struct DifferenceHash {
    std::size_t operator()(const GroupDifference& difference) const {
        std::size_t hash = difference.isAllowedAfter ? 1 : 0;
        boost::hash_range(hash, difference.part.begin(), difference.part.end());
        return hash;
    }
};

std::size_t bitCount(Word word) {
    return static_cast<std::size_t>(__builtin_popcountll(word));
}

void keepBelow(std::size_t bit, BoxMask& mask) {
    for (std::size_t word = bit / kWordBits; word < mask.size(); ++word) {
        mask[word] &= word == bit / kWordBits ? bitOf(bit) - 1 : 0;
    }
}

// Compares the lists of one slice.
class SliceComparison {
  public:
    SliceComparison(const Slice& slice, std::size_t& stepsLeft)
        : slice_(slice), stepsLeft_(stepsLeft) {
        for (unsigned fixed = 0; fixed < uncut_.size(); ++fixed) {
            uncut_[fixed].resize(slice.words(), ~Word{0});
            for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
                for (std::size_t word = 0; (fixed >> axis & 1) == 0 && word < slice.words();
                     ++word) {
                    uncut_[fixed][word] &= ~slice.cutting(axis)[word];
                }
            }
        }
    }

    [[nodiscard]] std::vector<GroupDifference> compare() {
        State whole = {slice_.before(), slice_.after(), true, true, 0};
        std::vector<GroupDifference> found;
        if (settle(whole)) {
            append(whole, found);
        }
        return found;
    }

    [[nodiscard]] const SetPool& setsOn(std::size_t axis) const { return sets_[axis]; }

  private:
    // A state, and the groups of a dimension that leave it.
    struct Piece {
        const State* state;
        Bits groups;
    };

    // Drops the boxes that have no say: those after one that holds everything that is left, and
    // those at the end that say what the end says.
    void settle(BoxMask& mask, bool& isAllowedAtEnd, const BoxMask& uncut) const {
        for (std::size_t word = 0; word < mask.size(); ++word) {
            if (const Word whole = mask[word] & uncut[word]; whole != 0) {
                const std::size_t box = word * kWordBits + firstBitOf(whole);
                isAllowedAtEnd = (slice_.allowing()[word] & bitOf(box)) != 0;
                keepBelow(box, mask);
                break;
            }
        }
        for (std::size_t word = mask.size(); word-- > 0;) {
            const Word allowing = slice_.allowing()[word];
            if (const Word other = mask[word] & (isAllowedAtEnd ? ~allowing : allowing);
                other != 0) {
                keepBelow(word * kWordBits + lastBitOf(other) + 1, mask);
                return;
            }
        }
        std::fill(mask.begin(), mask.end(), 0);
    }

    // False when nothing differs.
    bool settle(State& state) const {
        const BoxMask& uncut = uncut_[state.fixed];
        settle(state.before, state.isAllowedBefore, uncut);
        settle(state.after, state.isAllowedAfter, uncut);
        return state.isAllowedBefore != state.isAllowedAfter || state.before != state.after;
    }

    // How many boxes of the state cut a dimension that is not fixed.
    [[nodiscard]] std::size_t cutsOn(std::size_t axis, const State& state) const {
        std::size_t count = 0;
        if ((state.fixed >> axis & 1) == 0) {
            const BoxMask& cutting = slice_.cutting(axis);
            for (std::size_t word = 0; word < cutting.size(); ++word) {
                count += bitCount((state.before[word] | state.after[word]) & cutting[word]);
            }
        }
        return count;
    }

    // The dimensions that boxes of the state cut; the one that most of them cut comes first.
    [[nodiscard]] std::vector<std::size_t> cutAxes(const State& state) const {
        std::array<std::size_t, kFreeAxes> cuts = {};
        std::vector<std::size_t> axes;
        for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
            cuts[axis] = cutsOn(axis, state);
            if (cuts[axis] != 0) {
                axes.push_back(axis);
            }
        }
        std::stable_sort(axes.begin(), axes.end(), [&](std::size_t one, std::size_t other) {
            return cuts[one] > cuts[other];
        });
        return axes;
    }

    // Appends the differences of a settled state. The dimension that most boxes cut is split first:
    // what is left is small then, and the same for many pieces.
    void append(const State& state, std::vector<GroupDifference>& found) {
        const std::vector<std::size_t> axes = cutAxes(state);
        if (axes.empty()) {
            found.emplace_back();
            found.back().isAllowedAfter = state.isAllowedAfter;
        } else if (axes.size() == 1) {
            appendOn(axes.front(), state, found);
        } else {
            const auto [known, isNew] = known_.try_emplace(state);
            std::vector<GroupDifference>& differences = known->second;
            if (isNew) {
                split(state, axes.front(), differences);
            }
            found.insert(found.end(), differences.begin(), differences.end());
        }
    }

    // The groups of the only dimension that is cut which a list allows.
    [[nodiscard]] Bits allowedOn(std::size_t axis, const BoxMask& list, bool isAllowedAtEnd) const {
        Bits allowed(slice_.groupCount(axis));
        if (isAllowedAtEnd) {
            allowed.set();
        }
        for (std::size_t word = list.size(); word-- > 0;) {
            for (Word left = list[word]; left != 0;) {
                const std::size_t box = word * kWordBits + lastBitOf(left);
                left &= ~bitOf(box);
                if ((slice_.allowing()[word] & bitOf(box)) != 0) {
                    allowed |= slice_.groupsOf(axis, box);
                } else {
                    allowed -= slice_.groupsOf(axis, box);
                }
            }
        }
        return allowed;
    }

    void appendOn(std::size_t axis, const State& state, std::vector<GroupDifference>& found) {
        const Bits before = allowedOn(axis, state.before, state.isAllowedBefore);
        const Bits after = allowedOn(axis, state.after, state.isAllowedAfter);
        for (const bool isAllowedAfter : {true, false}) {
            Bits groups = isAllowedAfter ? after - before : before - after;
            if (groups.any()) {
                found.emplace_back();
                found.back().part[axis] = sets_[axis].numberOf(std::move(groups));
                found.back().isAllowedAfter = isAllowedAfter;
            }
        }
    }

    // The groups that some box which cuts the dimension holds. All others leave the same boxes.
    [[nodiscard]] Bits touchedOn(std::size_t axis, const State& state) const {
        Bits touched(slice_.groupCount(axis));
        const BoxMask& cutting = slice_.cutting(axis);
        for (std::size_t word = 0; word < cutting.size(); ++word) {
            Word left = (state.before[word] | state.after[word]) & cutting[word];
            for (; left != 0; left &= left - 1) {
                touched |= slice_.groupsOf(axis, word * kWordBits + firstBitOf(left));
            }
        }
        return touched;
    }

    // What is left of a state where a group is fixed.
    void narrow(const State& state, std::size_t axis, std::size_t group, State& narrowed) const {
        const Word* const boxes = slice_.boxesAt(axis, group);
        narrowed = state;
        for (std::size_t word = 0; word < slice_.words(); ++word) {
            narrowed.before[word] &= boxes[word];
            narrowed.after[word] &= boxes[word];
        }
        narrowed.fixed |= 1U << axis;
    }

    void split(const State& state, std::size_t axis, std::vector<GroupDifference>& found) {
        if (stepsLeft_-- == 0) {
            failed("they are too many to be listed at once",
                   "`zamofw diff --meaning` takes its time, and lists them all");
        }
        const Bits touched = touchedOn(axis, state);
        std::vector<Piece> pieces;
        std::unordered_map<State, std::size_t, StateHash> indexOf;
        State piece;
        const auto add = [&](std::size_t group, const Bits& groups) {
            narrow(state, axis, group, piece);
            if (settle(piece)) {
                const auto [entry, isNew] = indexOf.try_emplace(piece, pieces.size());
                if (isNew) {
                    pieces.push_back({&entry->first, groups});
                } else {
                    pieces[entry->second].groups |= groups;
                }
            }
        };
        if (const Bits others = ~touched; others.any()) {
            add(others.find_first(), others);
        }
        Bits one(touched.size());
        for (auto i = touched.find_first(); i != Bits::npos; i = touched.find_next(i)) {
            add(i, one.set(i));
            one.reset(i);
        }
        join(pieces, axis, found);
    }

    // Pieces with the same differences in the other dimensions are one.
    void join(const std::vector<Piece>& pieces,
              std::size_t axis,
              std::vector<GroupDifference>& found) {
        std::vector<std::pair<GroupDifference, Bits>> shares;
        std::unordered_map<GroupDifference, std::size_t, DifferenceHash> indexOf;
        for (const auto& [piece, groups] : pieces) {
            std::vector<GroupDifference> parts;
            append(*piece, parts);
            for (const GroupDifference& part : parts) {
                const auto [entry, isNew] = indexOf.try_emplace(part, shares.size());
                if (isNew) {
                    shares.emplace_back(part, groups);
                } else {
                    shares[entry->second].second |= groups;
                }
            }
        }
        for (auto& [difference, groups] : shares) {
            difference.part[axis] = sets_[axis].numberOf(std::move(groups));
            found.push_back(difference);
        }
    }

    const Slice& slice_;
    std::size_t& stepsLeft_;
    std::array<BoxMask, 1U << kFreeAxes> uncut_;  // by fixed dimensions: who holds all others
    std::unordered_map<State, std::vector<GroupDifference>, StateHash> known_;
    std::array<SetPool, kFreeAxes> sets_;
};

std::vector<std::string> textsOf(const BoxSpace& space, const BoxSpace::List& list) {
    std::vector<std::string> texts;
    texts.reserve(list.end - list.begin);
    for (std::size_t i = list.begin; i < list.end; ++i) {
        const Box& box = space.boxes()[i];
        std::string text = box.isAllowed ? "+" : "-";
        for (const std::uint32_t set : box.sets) {
            text += std::to_string(set) + ' ';
        }
        texts.push_back(std::move(text));
    }
    return texts;
}

}  // namespace

Comparison::Comparison(const BoxSpace& space, std::size_t& stepsLeft)
    : space_(space), stepsLeft_(stepsLeft) {
    for (const Edit& edit :
         lineDiff(textsOf(space, space.list(0)), textsOf(space, space.list(1)))) {
        const bool isAdded = edit.kind == Edit::Kind::kAdded;
        boxes_.push_back(
            {isAdded ? space.list(1).begin + edit.newIndex : space.list(0).begin + edit.oldIndex,
             !isAdded,
             edit.kind != Edit::Kind::kRemoved});
    }
}

Differences Comparison::compare(const BoxMask& mask) {
    std::vector<ListedBox> boxes;
    std::copy_if(
        boxes_.begin(), boxes_.end(), std::back_inserter(boxes), [&](const ListedBox& listed) {
            return (mask[listed.box / kWordBits] & bitOf(listed.box)) != 0;
        });
    const Slice slice(space_, boxes);
    SliceComparison comparison(slice, stepsLeft_);
    Differences found;
    std::array<std::map<std::size_t, std::size_t>, kFreeAxes> numbers;  // of the sets in use
    for (const GroupDifference& difference : comparison.compare()) {
        Difference& added = found.list.emplace_back();
        added.isAllowedAfter = difference.isAllowedAfter;
        for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
            const std::size_t set = difference.part[axis];
            std::vector<Bits>& classes = found.classes[axis];
            const auto [entry, isNew] = numbers[axis].try_emplace(set, classes.size());
            if (isNew) {
                classes.push_back(slice.classesOf(axis, comparison.setsOn(axis)[set]));
            }
            added.part[axis] = entry->second;
        }
    }
    return found;
}

}  // namespace zamofw::analysis
