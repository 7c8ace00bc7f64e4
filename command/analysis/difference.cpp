#include "command/analysis/difference.h"

#include <map>
#include <set>
#include <utility>

#include "command/analysis/comparison.h"
#include "command/analysis/matrix.h"

namespace zamofw::analysis {
namespace {

// One family's changes.
class FamilyDifference {
  public:
    FamilyDifference(const Model& before,
                     const Model& after,
                     int family,
                     Interfaces interfaces,
                     std::size_t& stepsLeft)
        : space_({&before.of(family), &after.of(family)}, std::move(interfaces)),
          comparison_(space_, stepsLeft),
          protocols_(namedProtocols({&before, &after}, family)) {}

    void add(std::size_t in, std::size_t out, std::vector<Change>& changes) {
        for (const NamedProtocol& protocol : protocols_) {
            BoxMask mask = space_.maskOf({0, space_.boxes().size()});
            keepAt(kIn, in, mask);
            keepAt(kOut, out, mask);
            keepAt(kProtocol, protocol.number, mask);
            const auto [known, isNew] = changes_.try_emplace(mask);
            if (isNew) {
                for (const Difference& difference : comparison_.compare(mask)) {
                    known->second.push_back(changeOf(difference));
                }
            }
            for (const Change& change : known->second) {
                changes.push_back(change);
                place(in, out, protocol, changes.back());
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

    // Packets that go any way and have any protocol.
    [[nodiscard]] Change changeOf(const Difference& difference) const {
        Change change;
        change.isAllowedAfter = difference.isAllowedAfter;
        change.family = space_.family();
        const auto& [sources, destinations, sourcePorts, ports] = difference.part;
        change.sources = space_.axis(kSource).numbersIn(sources);
        change.destinations = numbersUnlessAll(destinations, kDestination);
        change.sourcePorts = numbersUnlessAll(sourcePorts, kSourcePort);
        change.ports = space_.axis(kPort).numbersIn(ports);
        Packet& witness = change.witness;
        witness.family = change.family;
        witness.source = space_.axis(kSource).numberIn(sources.find_first());
        witness.destination = space_.axis(kDestination).numberIn(destinations.find_first());
        witness.sourcePort = space_.axis(kSourcePort).numberIn(sourcePorts.find_first());
        witness.port = space_.axis(kPort).numberIn(ports.find_first());
        return change;
    }

    void place(std::size_t in,
               std::size_t out,
               const NamedProtocol& protocol,
               Change& change) const {
        change.in = space_.interfaces().in[in];
        change.hook = out == 0 ? Hook::kInput : Hook::kForward;
        change.out = out == 0 ? "" : space_.interfaces().out[out - 1];
        change.protocol = protocol.name;
        change.witness.hook = change.hook;
        change.witness.in = change.in;
        change.witness.out = change.out;
        change.witness.protocol = protocol.number;
        if (!hasPorts(protocol.number)) {
            change.sourcePorts.reset();
            change.ports.reset();
        }
    }

    BoxSpace space_;
    Comparison comparison_;
    std::vector<NamedProtocol> protocols_;
    std::map<BoxMask, std::vector<Change>> changes_;
};

}  // namespace

std::vector<Change> difference(const Model& before, const Model& after, std::size_t mostSteps) {
    std::set<std::string> names = interfacesOf(before);
    const std::set<std::string> more = interfacesOf(after);
    names.insert(more.begin(), more.end());
    const Interfaces interfaces = interfacesFor(names);
    FamilyDifference v4(before, after, 4, interfaces, mostSteps);
    FamilyDifference v6(before, after, 6, interfaces, mostSteps);
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
