#include "command/analysis/boxSpace.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace zamofw::analysis {
namespace {

constexpr const char* kLoopback = "lo";
constexpr Number kForThisMachine = 0;

SetPointer setOf(Intervals intervals) {
    return std::make_shared<const NumberSet>(
        NumberSet{normalized(std::move(intervals)), std::nullopt});
}

// What lines of one rule must have in common to become one box.
struct Shape {
    const LineMatch* line;
    std::uint8_t protocol;  // 0 for every one

    [[nodiscard]] auto key(bool withProtocol) const {
        return std::tuple(line->in,
                          line->out,
                          line->source,
                          line->destination,
                          line->sourcePort,
                          line->port,
                          withProtocol ? protocol : std::uint8_t{0},
                          line->protocol.has_value());
    }
};

unsigned hookBit(Hook hook) {
    return hook == Hook::kInput ? 1U : 2U;
}

}  // namespace

Interfaces interfacesFor(const std::set<std::string>& names) {
    Interfaces interfaces;
    for (const std::string& name : names) {
        if (name != kLoopback) {
            interfaces.in.push_back(name);
        }
        interfaces.out.push_back(name);
    }
    interfaces.in.emplace_back(Interfaces::kOther);
    interfaces.out.emplace_back(Interfaces::kOther);
    return interfaces;
}

// Collects boxes and the sets that they use.
class BoxSpace::Builder {
  public:
    explicit Builder(BoxSpace& space) : space_(space) {
        for (auto& sets : sets_) {
            sets.push_back(nullptr);
        }
    }

    void addModel(const FamilyModel& model) {
        List list = {space_.boxes_.size(), 0};
        for (std::size_t begin = 0; begin < model.lines.size();) {
            std::size_t end = begin + 1;
            while (end < model.lines.size() &&
                   haveOneOrigin(*model.lines[begin].line, *model.lines[end].line)) {
                ++end;
            }
            if (model.lines[begin].line->kind != LineKind::kBuiltIn) {
                addRule(model.lines, begin, end);
            }
            begin = end;
        }
        list.end = space_.boxes_.size();
        space_.lists_.push_back(list);
        ruleIndex_.clear();
    }

    void finish() {
        const std::array<Number, kAxes> last = {space_.interfaces_.in.size() - 1,
                                                space_.interfaces_.out.size(),
                                                255,
                                                lastAddress(space_.family_),
                                                lastAddress(space_.family_),
                                                65535,
                                                65535};
        const Intervals hosts = hostAddresses(space_.family_);
        const Intervals ports = clientPorts();
        const std::array<Intervals, kAxes> preferred = {
            Intervals(), Intervals(), Intervals(), hosts, hosts, ports, ports};
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            std::vector<std::uint32_t> setOfBox;
            setOfBox.reserve(space_.boxes_.size());
            for (const Box& box : space_.boxes_) {
                setOfBox.push_back(box.sets[axis]);
            }
            space_.axes_.emplace_back(
                last[axis], std::move(sets_[axis]), setOfBox, preferred[axis]);
            if (space_.axes_.back().size() > 1) {
                space_.cutAxes_.push_back(axis);
            }
        }
    }

  private:
    // Lines for both chains and for TCP and UDP say one thing.
    void addRule(const std::vector<LineMatch>& lines, std::size_t begin, std::size_t end) {
        std::map<decltype(Shape().key(true)), std::pair<Shape, unsigned>> hooks;
        for (std::size_t i = begin; i < end; ++i) {
            if (lines[i].effect != Effect::kLog) {
                const Shape shape = {&lines[i], lines[i].protocol.value_or(0)};
                auto& entry = hooks.try_emplace(shape.key(true), shape, 0U).first->second;
                entry.second |= hookBit(lines[i].hook);
            }
        }
        std::map<std::pair<decltype(Shape().key(true)), unsigned>, std::vector<Shape>> merged;
        for (const auto& [key, entry] : hooks) {
            merged[{entry.first.key(false), entry.second}].push_back(entry.first);
        }
        // In the order of the lines.
        std::map<const LineMatch*, std::pair<std::vector<Shape>, unsigned>> ordered;
        for (auto& [key, shapes] : merged) {
            const LineMatch* const first = shapes.front().line;
            ordered.try_emplace(first, std::move(shapes), key.second);
        }
        const std::size_t rule = indexOf(*lines[begin].line);
        for (const auto& [line, entry] : ordered) {
            addBox(entry.first, entry.second, rule);
        }
    }

    void addBox(const std::vector<Shape>& shapes, unsigned hooks, std::size_t rule) {
        const LineMatch& line = *shapes.front().line;
        Intervals protocols;
        for (const Shape& shape : shapes) {
            protocols.push_back({shape.protocol, shape.protocol});
        }
        const std::array<std::optional<std::uint32_t>, kAxes> sets = {
            inSet(line.in),
            outSet(line.out, hooks),
            line.protocol ? numbered(kProtocol, std::move(protocols)) : 0U,
            shared(kSource, line.source),
            shared(kDestination, line.destination),
            shared(kSourcePort, line.sourcePort),
            shared(kPort, line.port)};
        Box box;
        box.isAllowed = line.effect == Effect::kAllow;
        box.rule = rule;
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            if (!sets[axis]) {
                return;
            }
            box.sets[axis] = *sets[axis];
        }
        space_.boxes_.push_back(box);
    }

    std::size_t indexOf(const PlannedLine& line) {
        const auto key = std::tuple(line.kind, line.adapter, line.position.value_or(0));
        const auto [entry, isNew] = ruleIndex_.try_emplace(key, space_.rules_.size());
        if (isNew) {
            space_.rules_.push_back(originOf(line));
        }
        return entry->second;
    }

    // The index of a set on its axis; none when it is empty.
    std::optional<std::uint32_t> numbered(Axis axis, Intervals intervals) {
        if (intervals.empty()) {
            return std::nullopt;
        }
        std::string key;
        for (const Interval& interval : intervals) {
            key += std::to_string(static_cast<unsigned>(interval.first)) + ' ';
        }
        SetPointer& set = made_[axis][key];
        if (set == nullptr) {
            set = setOf(std::move(intervals));
        }
        return shared(axis, set);
    }

    std::optional<std::uint32_t> shared(Axis axis, const SetPointer& set) {
        if (set == nullptr) {
            return 0U;
        }
        if (set->intervals.empty() && !set->pattern) {
            return std::nullopt;
        }
        const auto [entry, isNew] =
            index_[axis].try_emplace(set.get(), static_cast<std::uint32_t>(sets_[axis].size()));
        if (isNew) {
            sets_[axis].push_back(set);
        }
        return entry->second;
    }

    static Intervals named(const std::vector<std::string>& names,
                           const std::string& pattern,
                           Number offset) {
        Intervals numbers;
        // `+` alone stands for every interface, those that no line names as well.
        const bool isEvery = pattern.empty() || pattern == "+";
        for (std::size_t i = 0; i < names.size(); ++i) {
            const bool isOther = i + 1 == names.size();
            if (isEvery || (!isOther && namesInterface(pattern, names[i]))) {
                numbers.push_back({i + offset, i + offset});
            }
        }
        return numbers;
    }

    std::optional<std::uint32_t> inSet(const std::string& pattern) {
        return pattern.empty() ? 0U : numbered(kIn, named(space_.interfaces_.in, pattern, 0));
    }

    std::optional<std::uint32_t> outSet(const std::string& pattern, unsigned hooks) {
        constexpr unsigned kBoth = 3;
        if (pattern.empty() && hooks == kBoth) {
            return 0U;
        }
        Intervals numbers;
        // A packet for this machine goes out on no interface, so that naming one never matches.
        if ((hooks & hookBit(Hook::kInput)) != 0 && pattern.empty()) {
            numbers.push_back({kForThisMachine, kForThisMachine});
        }
        if ((hooks & hookBit(Hook::kForward)) != 0) {
            const Intervals out = named(space_.interfaces_.out, pattern, 1);
            numbers.reserve(numbers.size() + out.size());
            std::copy(out.begin(), out.end(), std::back_inserter(numbers));
        }
        return numbered(kOut, std::move(numbers));
    }

    BoxSpace& space_;
    std::array<std::vector<SetPointer>, kAxes> sets_;
    std::array<std::unordered_map<const NumberSet*, std::uint32_t>, kAxes> index_;
    std::array<std::map<std::string, SetPointer>, kAxes> made_;
    std::map<std::tuple<LineKind, std::string, std::size_t>, std::size_t> ruleIndex_;
};

BoxSpace::BoxSpace(const std::vector<const FamilyModel*>& models, Interfaces interfaces)
    : family_(models.front()->family), interfaces_(std::move(interfaces)) {
    Builder builder(*this);
    for (const FamilyModel* const model : models) {
        builder.addModel(*model);
    }
    builder.finish();
}

std::vector<std::size_t> BoxSpace::boxesOf(std::size_t rule) const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < boxes_.size(); ++i) {
        if (boxes_[i].rule == rule) {
            found.push_back(i);
        }
    }
    return found;
}

Region BoxSpace::everything() const {
    Region region;
    for (std::size_t axis = 0; axis < kAxes; ++axis) {
        region[axis] = axes_[axis].classesIn(0);
    }
    return region;
}

Region BoxSpace::regionOf(const Box& box) const {
    Region region;
    for (std::size_t axis = 0; axis < kAxes; ++axis) {
        region[axis] = axes_[axis].classesIn(box.sets[axis]);
    }
    return region;
}

std::optional<Region> BoxSpace::intersection(Region region, const Box& box) const {
    for (std::size_t axis = 0; axis < kAxes; ++axis) {
        if (box.sets[axis] != 0) {
            region[axis] &= axes_[axis].classesIn(box.sets[axis]);
        }
        if (region[axis].none()) {
            return std::nullopt;
        }
    }
    return region;
}

BoxMask BoxSpace::maskOf(List list) const {
    BoxMask mask((boxes_.size() + kWordBits - 1) / kWordBits);
    for (std::size_t box = list.begin; box < list.end; ++box) {
        mask[box / kWordBits] |= bitOf(box);
    }
    return mask;
}

BoxMask BoxSpace::boxesTouching(const Box& box) const {
    BoxMask mask((boxes_.size() + kWordBits - 1) / kWordBits, ~Word{0});
    for (const std::size_t axis : cutAxes_) {
        if (box.sets[axis] != 0) {
            const Word* const touching = axes_[axis].boxesTouching(box.sets[axis]);
            for (std::size_t word = 0; word < mask.size(); ++word) {
                mask[word] &= touching[word];
            }
        }
    }
    return mask;
}

std::optional<std::size_t> BoxSpace::firstAt(const Cell& cell,
                                             const BoxMask& mask,
                                             std::size_t end) const {
    std::array<const Word*, kAxes> rows;
    std::size_t count = 0;
    for (const std::size_t axis : cutAxes_) {
        rows[count++] = axes_[axis].boxesAt(cell[axis]);
    }
    const std::size_t words =
        end == kNoEnd ? mask.size() : std::min(end / kWordBits + 1, mask.size());
    for (std::size_t word = 0; word < words; ++word) {
        Word hits = mask[word];
        for (std::size_t i = 0; i < count; ++i) {
            hits &= rows[i][word];
        }
        if (hits != 0) {
            const std::size_t box = word * kWordBits + firstBitOf(hits);
            return box < end ? std::optional(box) : std::nullopt;
        }
    }
    return std::nullopt;
}

// Looks at one cell, and takes away the box that holds it. Where the box cuts the region in one
// dimension only, what is left is a region again; else it is two, of which the first is tried
// first. The cell that is looked at is one of the least covered, so that a rule that any packet
// reaches is mostly settled at the first look.
std::optional<Cell> BoxSpace::uncovered(Region region, const BoxMask& mask, std::size_t end) const {
    for (;;) {
        Cell cell;
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            cell[axis] = region[axis].find_first();
            if (cell[axis] == Bits::npos) {
                return std::nullopt;
            }
        }
        const std::optional<std::size_t> covering = firstAt(cell, mask, end);
        if (!covering) {
            return cell;
        }
        std::size_t cuts = 0;
        std::size_t cutAxis = 0;
        double smallestShare = 2;
        const Box& box = boxes_[*covering];
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            const std::uint32_t set = box.sets[axis];
            if (set == 0 || region[axis].is_subset_of(axes_[axis].classesIn(set))) {
                continue;
            }
            ++cuts;
            if (axes_[axis].shareOf(set) < smallestShare) {
                smallestShare = axes_[axis].shareOf(set);
                cutAxis = axis;
            }
        }
        if (cuts == 0) {
            return std::nullopt;
        }
        const Bits& inside = axes_[cutAxis].classesIn(box.sets[cutAxis]);
        if (cuts == 1) {
            region[cutAxis] -= inside;
            continue;
        }
        Region rest = region;
        rest[cutAxis] -= inside;
        if (std::optional<Cell> found = uncovered(std::move(rest), mask, end)) {
            return found;
        }
        region[cutAxis] &= inside;
    }
}

bool BoxSpace::showsUncovered(const Box& one,
                              const Box& other,
                              const BoxMask& mask,
                              std::size_t end) const {
    const std::optional<Cell> first = firstCommonCell(one, other);
    return first && !firstAt(*first, mask, end);
}

// Mostly the first cell settles it, and no region needs to be made.
std::optional<Cell> BoxSpace::uncovered(const Box& one,
                                        const Box& other,
                                        const BoxMask& mask,
                                        std::size_t end) const {
    const std::optional<Cell> first = firstCommonCell(one, other);
    if (!first || !firstAt(*first, mask, end)) {
        return first;
    }
    std::optional<Region> common = intersection(regionOf(one), other);
    return common ? uncovered(std::move(*common), mask, end) : std::nullopt;
}

std::optional<Cell> BoxSpace::firstCommonCell(const Box& one, const Box& other) const {
    Cell cell = {};
    for (const std::size_t axis : cutAxes_) {
        cell[axis] = axes_[axis].firstClassInBoth(one.sets[axis], other.sets[axis]);
        if (cell[axis] == Bits::npos) {
            return std::nullopt;
        }
    }
    return cell;
}

}  // namespace zamofw::analysis
