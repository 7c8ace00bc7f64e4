#include "command/analysis/intents.h"

#include <algorithm>
#include <set>
#include <utility>

#include "command/analysis/boxSpace.h"
#include "command/analysis/matrix.h"

namespace zamofw::analysis {
namespace {

// One family's part of the question.
class FamilyIntents {
  public:
    FamilyIntents(const Model& rules, const Model& intended, int family, Interfaces interfaces)
        : space_({&rules.of(family), &intended.of(family)}, std::move(interfaces)),
          judged_(space_.maskOf(space_.list(0))),
          protocols_(namedProtocols({&rules, &intended}, family)) {}

    [[nodiscard]] std::optional<Violation> violationOf(const Intent& intent,
                                                       std::size_t position) const {
        for (std::size_t i = space_.list(1).begin; i < space_.list(1).end; ++i) {
            const Box& box = space_.boxes()[i];
            if (space_.rules()[box.rule].position == position) {
                if (const std::optional<Cell> cell = cellIn(regionOf(box, intent), box, intent)) {
                    return violationAt(*cell, intent);
                }
            }
        }
        return std::nullopt;
    }

  private:
    [[nodiscard]] std::size_t numberOf(const std::vector<std::string>& names,
                                       const std::string& name) const {
        return static_cast<std::size_t>(std::find(names.begin(), names.end(), name) -
                                        names.begin());
    }

    [[nodiscard]] Region regionOf(const Box& box, const Intent& intent) const {
        Region region = space_.regionOf(box);
        const auto keepOne = [&region, this](Axis axis, Number number) {
            const std::size_t wanted = space_.axis(axis).classOf(number);
            const bool isThere = wanted < region[axis].size() && region[axis][wanted];
            region[axis].reset();
            if (isThere) {
                region[axis].set(wanted);
            }
        };
        if (intent.in) {
            keepOne(kIn, numberOf(space_.interfaces().in, *intent.in));
        }
        if (intent.out) {
            keepOne(kOut, numberOf(space_.interfaces().out, *intent.out) + 1);
        }
        return region;
    }

    // A cell of the region that gets the other verdict.
    [[nodiscard]] std::optional<Cell> cellIn(const Region& region,
                                             const Box& box,
                                             const Intent& intent) const {
        // What no rule holds is allowed.
        if (!intent.isAllowed) {
            if (std::optional<Cell> cell = space_.uncovered(region, judged_)) {
                return cell;
            }
        }
        BoxMask candidates = space_.boxesTouching(box);
        BoxMask earlier(candidates.size());
        for (std::size_t i = 0; i < space_.list(0).end; ++i) {
            const Word bit = Word{1} << i % kWordBits;
            const bool isOther = space_.boxes()[i].isAllowed != intent.isAllowed;
            if (isOther && (candidates[i / kWordBits] & bit) != 0) {
                if (std::optional<Region> part = space_.intersection(region, space_.boxes()[i])) {
                    if (std::optional<Cell> cell = space_.uncovered(std::move(*part), earlier)) {
                        return cell;
                    }
                }
            }
            earlier[i / kWordBits] |= bit;
        }
        return std::nullopt;
    }

    [[nodiscard]] Violation violationAt(const Cell& cell, const Intent& intent) const {
        Violation violation;
        Packet& packet = violation.witness;
        packet.family = space_.family();
        packet.in = intent.in ? *intent.in : nameAt(kIn, cell, space_.interfaces().in, 0);
        if (intent.out || space_.axis(kOut).numberIn(cell[kOut]) != 0) {
            packet.hook = Hook::kForward;
            packet.out = intent.out ? *intent.out : nameAt(kOut, cell, space_.interfaces().out, 1);
        }
        packet.protocol =
            static_cast<std::uint8_t>(space_.axis(kProtocol).numberIn(cell[kProtocol]));
        const auto named = std::find_if(
            protocols_.begin(), protocols_.end(), [&packet](const NamedProtocol& protocol) {
                return protocol.number == packet.protocol;
            });
        violation.protocol = named == protocols_.end() ? protocols_.back().name : named->name;
        packet.source = space_.axis(kSource).numberIn(cell[kSource]);
        packet.destination = space_.axis(kDestination).numberIn(cell[kDestination]);
        packet.sourcePort = space_.axis(kSourcePort).numberIn(cell[kSourcePort]);
        packet.port = space_.axis(kPort).numberIn(cell[kPort]);
        if (const std::optional<std::size_t> box = space_.firstAt(cell, judged_)) {
            violation.decider = space_.rules()[space_.boxes()[*box].rule];
        }
        return violation;
    }

    [[nodiscard]] std::string nameAt(Axis axis,
                                     const Cell& cell,
                                     const std::vector<std::string>& names,
                                     std::size_t offset) const {
        return names[static_cast<std::size_t>(space_.axis(axis).numberIn(cell[axis])) - offset];
    }

    BoxSpace space_;
    BoxMask judged_;
    std::vector<NamedProtocol> protocols_;
};

}  // namespace

std::vector<std::optional<Violation>> violations(const Model& rules,
                                                 const Model& intended,
                                                 const std::vector<Intent>& intents) {
    std::set<std::string> names = interfacesOf(rules);
    for (const Intent& intent : intents) {
        for (const auto& name : {intent.in, intent.out}) {
            if (name && *name != Interfaces::kOther) {
                names.insert(*name);
            }
        }
    }
    const Interfaces interfaces = interfacesFor(names);
    const FamilyIntents v4(rules, intended, 4, interfaces);
    const FamilyIntents v6(rules, intended, 6, interfaces);
    std::vector<std::optional<Violation>> found;
    for (std::size_t i = 0; i < intents.size(); ++i) {
        std::optional<Violation> violation = v4.violationOf(intents[i], i + 1);
        found.push_back(violation ? std::move(violation) : v6.violationOf(intents[i], i + 1));
    }
    return found;
}

}  // namespace zamofw::analysis
