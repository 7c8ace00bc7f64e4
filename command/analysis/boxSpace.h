// Rules as boxes in the space of packets.
//
// A box is the product of one set per dimension. Each dimension is cut into classes of numbers that
// lie in the same boxes' sets, so that a packet is seven small numbers, and the boxes that hold it
// are the intersection of seven rows of bits.
//
// A decision diagram of the packets was tried first. Rules about sources beside rules about
// destinations make it grow with their product: 341 rules took BuDDy 900,000 nodes and two seconds,
// and 630 rules more than a minute. With boxes the whole check of 1,000 such rules takes 15 ms.
#ifndef COMMAND_ANALYSIS_BOXSPACE_H
#define COMMAND_ANALYSIS_BOXSPACE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "command/analysis/dimension.h"
#include "command/analysis/model.h"

namespace zamofw::analysis {

enum Axis : std::size_t { kIn, kOut, kProtocol, kSource, kDestination, kSourcePort, kPort };
constexpr std::size_t kAxes = 7;

struct Box {
    std::array<std::uint32_t, kAxes> sets = {};  // 0 is every number
    bool isAllowed = false;
    std::size_t rule = 0;  // whose box it is
};

using Cell = std::array<std::size_t, kAxes>;  // a class of each dimension
using Region = std::array<Bits, kAxes>;       // classes of each dimension

// The interfaces of a space, each a number: those that lines name, then all others. On the axis of
// outgoing interfaces 0 is a packet for this machine, and the others are one higher.
struct Interfaces {
    std::vector<std::string> in;
    std::vector<std::string> out;

    static constexpr const char* kOther = "global";
};
[[nodiscard]] Interfaces interfacesFor(const std::set<std::string>& names);

class BoxSpace {
  public:
    // A list of boxes in the order of evaluation.
    struct List {
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    // The boxes of all models, one list each. The models come from one reader.
    BoxSpace(const std::vector<const FamilyModel*>& models, Interfaces interfaces);

    [[nodiscard]] int family() const { return family_; }
    [[nodiscard]] const Interfaces& interfaces() const { return interfaces_; }
    [[nodiscard]] const std::vector<Box>& boxes() const { return boxes_; }
    [[nodiscard]] const List& list(std::size_t model) const { return lists_[model]; }
    [[nodiscard]] const Dimension& axis(std::size_t axis) const { return axes_[axis]; }
    // By Box::rule. Rules of which no packet can be a match have no box.
    [[nodiscard]] const std::vector<Origin>& rules() const { return rules_; }
    [[nodiscard]] std::vector<std::size_t> boxesOf(std::size_t rule) const;

    [[nodiscard]] Region everything() const;
    [[nodiscard]] Region regionOf(const Box& box) const;
    // None when they have nothing in common.
    [[nodiscard]] std::optional<Region> intersection(Region region, const Box& box) const;

    // Masks of boxes.
    [[nodiscard]] BoxMask maskOf(List list) const;
    [[nodiscard]] BoxMask boxesTouching(const Box& box) const;
    void remove(std::size_t rule, BoxMask& mask) const;

    static constexpr std::size_t kNoEnd = static_cast<std::size_t>(-1);

    // The first box of the mask, before the box `end`, that holds the cell.
    [[nodiscard]] std::optional<std::size_t> firstAt(const Cell& cell,
                                                     const BoxMask& mask,
                                                     std::size_t end = kNoEnd) const;

    // A cell of the region that no box of the mask holds, of those before the box `end`.
    [[nodiscard]] std::optional<Cell> uncovered(Region region,
                                                const BoxMask& mask,
                                                std::size_t end = kNoEnd) const;

    // The same for what two boxes have in common.
    [[nodiscard]] std::optional<Cell> uncovered(const Box& one,
                                                const Box& other,
                                                const BoxMask& mask,
                                                std::size_t end = kNoEnd) const;

    // Whether the first cell at hand is such a one. Quick, but false says nothing.
    [[nodiscard]] bool showsUncovered(const Box& one,
                                      const Box& other,
                                      const BoxMask& mask,
                                      std::size_t end) const;

  private:
    class Builder;

    [[nodiscard]] std::optional<Cell> firstCommonCell(const Box& one, const Box& other) const;

    int family_;
    Interfaces interfaces_;
    std::vector<Box> boxes_;
    std::vector<List> lists_;
    std::vector<Origin> rules_;
    std::vector<Dimension> axes_;
    std::vector<std::size_t> cutAxes_;  // those that some set cuts
};

}  // namespace zamofw::analysis

#endif
