// Two lists of rules can differ in their verdicts only where a rule holds that is in one of them
// alone. So each step cuts the region down to those rules, drops what has no part in it, and then
// splits the dimension with the fewest classes that the rest tells apart. Where the lists have
// become the same, nothing is looked at any more.

#include "command/analysis/difference.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "command/analysis/matrix.h"
#include "command/plan/lineDiff.h"

namespace zamofw::analysis {
namespace {

constexpr std::size_t kFreeAxes = 4;
constexpr std::array<Axis, kFreeAxes> kFree = {kSource, kDestination, kSourcePort, kPort};

// Classes of the dimensions that are not fixed.
using Part = std::array<Bits, kFreeAxes>;

struct Difference {
    Part part;
    bool isAllowedAfter;
};

// A list of boxes, and the verdict where none of them holds.
struct Verdicts {
    std::vector<std::size_t> boxes;
    bool isAllowedAtEnd = true;
};

// Compares the two lists of a space.
class Comparison {
  public:
    explicit Comparison(const BoxSpace& space) : space_(space), twin_(space.boxes().size(), kNone) {
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
    [[nodiscard]] std::vector<Difference> compare(const BoxMask& mask) const {
        Part everything;
        for (std::size_t i = 0; i < kFreeAxes; ++i) {
            everything[i] = space_.axis(kFree[i]).classesIn(0);
        }
        return compare(std::move(everything),
                       {boxesIn(mask, space_.list(0)), true},
                       {boxesIn(mask, space_.list(1)), true});
    }

  private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    static std::vector<std::size_t> boxesIn(const BoxMask& mask, const BoxSpace::List& list) {
        std::vector<std::size_t> boxes;
        for (std::size_t box = list.begin; box < list.end; ++box) {
            if ((mask[box / kWordBits] >> box % kWordBits & 1) != 0) {
                boxes.push_back(box);
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
    [[nodiscard]] bool isEvery(std::size_t box, std::size_t axis) const {
        return space_.boxes()[box].sets[kFree[axis]] == 0;
    }

    // Keeps the boxes that have a share in the part, up to the first that holds all of it, less
    // those at the end that say what the end says.
    void trim(const Part& part, Verdicts& verdicts) const {
        std::vector<std::size_t> kept;
        for (const std::size_t box : verdicts.boxes) {
            bool isWhole = true;
            bool isApart = false;
            for (std::size_t axis = 0; axis < kFreeAxes && !isApart; ++axis) {
                if (!isEvery(box, axis)) {
                    const Bits& classes = classesOf(box, axis);
                    isApart = !part[axis].intersects(classes);
                    isWhole = isWhole && !isApart && part[axis].is_subset_of(classes);
                }
            }
            if (isApart) {
                continue;
            }
            if (isWhole) {
                verdicts.isAllowedAtEnd = space_.boxes()[box].isAllowed;
                break;
            }
            kept.push_back(box);
        }
        while (!kept.empty() && space_.boxes()[kept.back()].isAllowed == verdicts.isAllowedAtEnd) {
            kept.pop_back();
        }
        verdicts.boxes = std::move(kept);
    }

    // The boxes that only one of the lists has.
    [[nodiscard]] std::vector<std::size_t> changedBoxes(const Verdicts& before,
                                                        const Verdicts& after) const {
        std::vector<std::size_t> changed;
        const auto collect = [&](const Verdicts& own, const Verdicts& others) {
            for (const std::size_t box : own.boxes) {
                if (!std::binary_search(others.boxes.begin(), others.boxes.end(), twin_[box])) {
                    changed.push_back(box);
                }
            }
        };
        collect(before, after);
        collect(after, before);
        return changed;
    }

    // Cuts the part down to those boxes. False when nothing is cut off.
    bool cutDown(Part& part, const std::vector<std::size_t>& changed) const {
        bool isCut = false;
        for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
            Bits hull(part[axis].size());
            for (const std::size_t box : changed) {
                hull |= classesOf(box, axis);
            }
            hull &= part[axis];
            isCut = isCut || hull != part[axis];
            part[axis] = std::move(hull);
        }
        return isCut;
    }

    [[nodiscard]] std::vector<Difference> compare(Part part,
                                                  Verdicts before,
                                                  Verdicts after) const {
        for (;;) {
            trim(part, before);
            trim(part, after);
            if (before.boxes.empty() && after.boxes.empty()) {
                return before.isAllowedAtEnd == after.isAllowedAtEnd
                           ? std::vector<Difference>()
                           : std::vector<Difference>{{part, after.isAllowedAtEnd}};
            }
            if (before.isAllowedAtEnd != after.isAllowedAtEnd) {
                break;
            }
            const std::vector<std::size_t> changed = changedBoxes(before, after);
            if (changed.empty()) {
                return {};
            }
            if (!cutDown(part, changed)) {
                break;
            }
        }
        return split(part, before, after);
    }

    using Groups = std::vector<Bits>;

    // The classes of the part on an axis, by the boxes that they are in.
    [[nodiscard]] Groups groupsOn(std::size_t axis,
                                  const Part& part,
                                  const Verdicts& before,
                                  const Verdicts& after) const {
        BoxMask mask((space_.boxes().size() + kWordBits - 1) / kWordBits);
        for (const Verdicts* const list : {&before, &after}) {
            for (const std::size_t box : list->boxes) {
                if (!isEvery(box, axis)) {
                    mask[box / kWordBits] |= Word{1} << box % kWordBits;
                }
            }
        }
        std::map<BoxMask, std::size_t> known;
        Groups groups;
        for (auto i = part[axis].find_first(); i != Bits::npos; i = part[axis].find_next(i)) {
            BoxMask boxes = mask;
            const Word* const row = space_.axis(kFree[axis]).boxesAt(i);
            for (std::size_t word = 0; word < boxes.size(); ++word) {
                boxes[word] &= row[word];
            }
            const auto [entry, isNew] = known.try_emplace(std::move(boxes), groups.size());
            if (isNew) {
                groups.emplace_back(part[axis].size());
            }
            groups[entry->second].set(i);
        }
        return groups;
    }

    [[nodiscard]] std::vector<Difference> split(const Part& part,
                                                const Verdicts& before,
                                                const Verdicts& after) const {
        Groups fewest;
        std::size_t axis = 0;
        for (std::size_t i = 0; i < kFreeAxes; ++i) {
            Groups groups = groupsOn(i, part, before, after);
            if (groups.size() > 1 && (fewest.empty() || groups.size() < fewest.size())) {
                fewest = std::move(groups);
                axis = i;
            }
        }
        // Groups with the same differences in the other dimensions are one.
        std::map<std::pair<Part, bool>, std::size_t> known;
        std::vector<Difference> found;
        for (const Bits& group : fewest) {
            Part smaller = part;
            smaller[axis] = group;
            for (Difference& difference : compare(std::move(smaller), before, after)) {
                Bits share = std::exchange(difference.part[axis], Bits());
                std::pair<Part, bool> key(difference.part, difference.isAllowedAfter);
                const auto [entry, isNew] = known.try_emplace(std::move(key), found.size());
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
    std::vector<std::size_t> twin_;  // of a box that both lists have: the other's
};

// One family's changes.
class FamilyDifference {
  public:
    FamilyDifference(const Model& before, const Model& after, int family, Interfaces interfaces)
        : space_({&before.of(family), &after.of(family)}, std::move(interfaces)),
          comparison_(space_),
          protocols_(namedProtocols({&before, &after}, family)) {}

    void add(std::size_t in, std::size_t out, std::vector<Change>& changes) {
        for (const NamedProtocol& protocol : protocols_) {
            BoxMask mask = space_.maskOf({0, space_.boxes().size()});
            keepAt(kIn, in, mask);
            keepAt(kOut, out, mask);
            keepAt(kProtocol, protocol.number, mask);
            const auto [known, isNew] = differences_.try_emplace(mask);
            if (isNew) {
                known->second = comparison_.compare(mask);
            }
            for (const Difference& difference : known->second) {
                changes.push_back(changeOf(difference, in, out, protocol));
            }
        }
    }

  private:
    void keepAt(Axis axis, Number number, BoxMask& mask) const {
        const Dimension& dimension = space_.axis(axis);
        const Word* const row = dimension.boxesAt(dimension.classOf(number));
        for (std::size_t word = 0; word < mask.size(); ++word) {
            mask[word] &= row[word];
        }
    }

    [[nodiscard]] std::optional<Intervals> numbersUnlessAll(const Bits& classes, Axis axis) const {
        return classes.all() ? std::nullopt : std::optional(space_.axis(axis).numbersIn(classes));
    }

    [[nodiscard]] Change changeOf(const Difference& difference,
                                  std::size_t in,
                                  std::size_t out,
                                  const NamedProtocol& protocol) const {
        Change change;
        change.isAllowedAfter = difference.isAllowedAfter;
        change.in = space_.interfaces().in[in];
        change.hook = out == 0 ? Hook::kInput : Hook::kForward;
        change.out = out == 0 ? "" : space_.interfaces().out[out - 1];
        change.family = space_.family();
        change.protocol = protocol.name;
        const auto& [sources, destinations, sourcePorts, ports] = difference.part;
        change.sources = space_.axis(kSource).numbersIn(sources);
        change.destinations = numbersUnlessAll(destinations, kDestination);
        if (hasPorts(protocol.number)) {
            change.sourcePorts = numbersUnlessAll(sourcePorts, kSourcePort);
            change.ports = space_.axis(kPort).numbersIn(ports);
        }
        Packet& witness = change.witness;
        witness.family = change.family;
        witness.hook = change.hook;
        witness.in = change.in;
        witness.out = change.out;
        witness.protocol = protocol.number;
        witness.source = space_.axis(kSource).numberIn(sources.find_first());
        witness.destination = space_.axis(kDestination).numberIn(destinations.find_first());
        witness.sourcePort = space_.axis(kSourcePort).numberIn(sourcePorts.find_first());
        witness.port = space_.axis(kPort).numberIn(ports.find_first());
        return change;
    }

    BoxSpace space_;
    Comparison comparison_;
    std::vector<NamedProtocol> protocols_;
    std::map<BoxMask, std::vector<Difference>> differences_;
};

}  // namespace

std::vector<Change> difference(const Model& before, const Model& after) {
    std::set<std::string> names = interfacesOf(before);
    const std::set<std::string> more = interfacesOf(after);
    names.insert(more.begin(), more.end());
    const Interfaces interfaces = interfacesFor(names);
    FamilyDifference v4(before, after, 4, interfaces);
    FamilyDifference v6(before, after, 6, interfaces);
    std::vector<Change> changes;
    for (std::size_t in = 0; in < interfaces.in.size(); ++in) {
        // 0 is a packet for this machine.
        for (std::size_t out = 0; out <= interfaces.out.size(); ++out) {
            v4.add(in, out, changes);
            v6.add(in, out, changes);
        }
    }
    return changes;
}

}  // namespace zamofw::analysis
