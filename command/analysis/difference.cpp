#include "command/analysis/difference.h"

#include <array>
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
                known->second = changesOf(comparison_.compare(mask));
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

    // What a set of classes stands for.
    struct Numbers {
        // Null for all numbers of a dimension that a change need not say.
        SharedIntervals intervals;
        Number example;
    };

    [[nodiscard]] std::vector<Numbers> numbersOf(const std::vector<Bits>& sets, Axis axis) const {
        const Dimension& dimension = space_.axis(axis);
        const bool isOptional = axis == kDestination || axis == kSourcePort;
        std::vector<Numbers> numbers;
        numbers.reserve(sets.size());
        for (const Bits& set : sets) {
            numbers.push_back({isOptional && set.all()
                                   ? nullptr
                                   : std::make_shared<const Intervals>(dimension.numbersIn(set)),
                               dimension.numberIn(set.find_first())});
        }
        return numbers;
    }

    // Packets that go any way and have any protocol.
    [[nodiscard]] std::vector<Change> changesOf(const Differences& differences) const {
        std::array<std::vector<Numbers>, kFreeAxes> numbers;
        for (std::size_t axis = 0; axis < kFreeAxes; ++axis) {
            numbers[axis] = numbersOf(differences.classes[axis], kFree[axis]);
        }
        std::vector<Change> changes;
        changes.reserve(differences.list.size());
        for (const Difference& difference : differences.list) {
            const auto& [source, destination, sourcePort, port] = difference.part;
            const auto& [sources, destinations, sourcePorts, ports] = numbers;
            Change& change = changes.emplace_back();
            change.isAllowedAfter = difference.isAllowedAfter;
            change.family = space_.family();
            change.sources = sources[source].intervals;
            change.destinations = destinations[destination].intervals;
            change.sourcePorts = sourcePorts[sourcePort].intervals;
            change.ports = ports[port].intervals;
            change.witness.family = change.family;
            change.witness.source = sources[source].example;
            change.witness.destination = destinations[destination].example;
            change.witness.sourcePort = sourcePorts[sourcePort].example;
            change.witness.port = ports[port].example;
        }
        return changes;
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
