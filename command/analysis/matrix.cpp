// With everything fixed but source, protocol and port, the verdicts of one source class are a row
// of bits by port class. Most rules name either every source or few of them, so a row is made of
// the first match among the rules for every source, which all rows share, and of the few others.

#include "command/analysis/matrix.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace zamofw::analysis {
namespace {

std::vector<std::size_t> boxesIn(const BoxMask& mask) {
    std::vector<std::size_t> boxes;
    for (std::size_t word = 0; word < mask.size(); ++word) {
        for (Word bits = mask[word]; bits != 0; bits &= bits - 1) {
            boxes.push_back(word * kWordBits + firstBitOf(bits));
        }
    }
    return boxes;
}

void keep(BoxMask& mask, const Word* row) {
    for (std::size_t word = 0; word < mask.size(); ++word) {
        mask[word] &= row[word];
    }
}

// The rows of one protocol: for each source class the port classes that are allowed. A protocol
// without ports has one column.
class Rows {
  public:
    Rows(const BoxSpace& space, const BoxMask& active, bool withPorts)
        : space_(space),
          everyColumn_(withPorts ? space.axis(kPort).classesIn(0) : Bits(1, 1)),
          base_(everyColumn_),
          special_(active.size()),
          columnsOf_(space.boxes().size()) {
        // Goes through the list with the columns that no box for every source has decided about.
        Bits open = everyColumn_;
        for (const std::size_t box : boxesIn(active)) {
            Bits columns = open;
            if (withPorts) {
                columns &= space.axis(kPort).classesIn(space.boxes()[box].sets[kPort]);
            }
            if (columns.none()) {
                continue;
            }
            if (space.boxes()[box].sets[kSource] != 0) {
                special_[box / kWordBits] |= bitOf(box);
                columnsOf_[box] = std::move(columns);
                continue;
            }
            if (!space.boxes()[box].isAllowed) {
                base_ -= columns;
            }
            open -= columns;
            if (open.none()) {
                break;
            }
        }
    }

    [[nodiscard]] Bits rowOf(std::size_t source) const {
        Bits row = base_;
        Bits open = everyColumn_;
        BoxMask boxes = special_;
        keep(boxes, space_.axis(kSource).boxesAt(source));
        for (const std::size_t box : boxesIn(boxes)) {
            const Bits columns = columnsOf_[box] & open;
            if (space_.boxes()[box].isAllowed) {
                row |= columns;
            } else {
                row -= columns;
            }
            open -= columns;
            if (open.none()) {
                break;
            }
        }
        return row;
    }

  private:
    const BoxSpace& space_;
    Bits everyColumn_;
    Bits base_;                    // where only boxes for every source hold
    BoxMask special_;              // the other boxes
    std::vector<Bits> columnsOf_;  // where those come before the first for every source
};

// Source classes with the same rows.
struct RowGroup {
    Bits sources;
    std::vector<Bits> rows;  // by protocol
};

class FamilyMatrix {
  public:
    FamilyMatrix(const Model& model,
                 int family,
                 const Interfaces& interfaces,
                 const MatrixQuestion& question)
        : space_({&model.of(family)}, interfaces),
          protocols_(namedProtocols({&model}, family)),
          question_(question) {}

    void add(std::size_t in, Hook hook, std::vector<SourceClass>& classes) {
        const BoxMask active = activeFor(in, hook);
        const auto [known, isNew] = groups_.try_emplace(active);
        if (isNew) {
            known->second = groupsOf(active);
        }
        const std::size_t begin = classes.size();
        for (const RowGroup& group : known->second) {
            SourceClass entry;
            entry.in = space_.interfaces().in[in];
            entry.hook = hook;
            entry.family = space_.family();
            entry.sources = space_.axis(kSource).numbersIn(group.sources);
            entry.allowed = allowedBy(group.rows);
            classes.push_back(std::move(entry));
        }
        std::sort(classes.begin() + static_cast<std::ptrdiff_t>(begin),
                  classes.end(),
                  [](const SourceClass& one, const SourceClass& other) {
                      return one.sources.front().first < other.sources.front().first;
                  });
    }

  private:
    // The boxes for packets of one way that have the destination and a source port that no line
    // names.
    [[nodiscard]] BoxMask activeFor(std::size_t in, Hook hook) const {
        const std::size_t out = hook == Hook::kInput ? 0 : space_.interfaces().out.size();
        const Dimension& destinations = space_.axis(kDestination);
        const std::size_t destination =
            question_.destination ? destinations.classOf(*question_.destination) : 0;
        BoxMask active = space_.maskOf(space_.list(0));
        keep(active, space_.axis(kIn).boxesAt(space_.axis(kIn).classOf(in)));
        keep(active, space_.axis(kOut).boxesAt(space_.axis(kOut).classOf(out)));
        keep(active, destinations.boxesAt(destination));
        keep(active, space_.axis(kSourcePort).boxesAt(0));
        return active;
    }

    [[nodiscard]] std::vector<RowGroup> groupsOf(const BoxMask& active) const {
        std::vector<Rows> protocols;
        for (const NamedProtocol& protocol : protocols_) {
            BoxMask boxes = active;
            const Dimension& axis = space_.axis(kProtocol);
            keep(boxes, axis.boxesAt(axis.classOf(protocol.number)));
            protocols.emplace_back(space_, boxes, hasPorts(protocol.number));
        }
        const std::size_t count = space_.axis(kSource).size();
        std::map<std::vector<Bits>, Bits> groups;
        for (std::size_t source = 0; source < count; ++source) {
            std::vector<Bits> rows;
            rows.reserve(protocols.size());
            for (const Rows& protocol : protocols) {
                rows.push_back(protocol.rowOf(source));
            }
            groups.try_emplace(std::move(rows), Bits(count)).first->second.set(source);
        }
        std::vector<RowGroup> found;
        found.reserve(groups.size());
        for (auto& [rows, sources] : groups) {
            found.push_back({std::move(sources), rows});
        }
        return found;
    }

    [[nodiscard]] std::vector<AllowedProtocol> allowedBy(const std::vector<Bits>& rows) const {
        std::vector<AllowedProtocol> allowed;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (rows[i].none()) {
                continue;
            }
            allowed.push_back({protocols_[i].name, std::nullopt});
            if (hasPorts(protocols_[i].number)) {
                allowed.back().ports = space_.axis(kPort).numbersIn(rows[i]);
            }
        }
        return allowed;
    }

    BoxSpace space_;
    std::vector<NamedProtocol> protocols_;
    MatrixQuestion question_;
    std::map<BoxMask, std::vector<RowGroup>> groups_;
};

}  // namespace

std::vector<NamedProtocol> namedProtocols(const std::vector<const Model*>& models, int family) {
    std::set<std::uint8_t> others;
    for (const Model* const model : models) {
        for (const int of : {4, 6}) {
            for (const LineMatch& line : model->of(of).lines) {
                if (line.protocol &&
                    protocolName(*line.protocol, of) == std::to_string(unsigned{*line.protocol})) {
                    others.insert(*line.protocol);
                }
            }
        }
    }
    std::vector<NamedProtocol> protocols = {
        {"tcp", kTcp}, {"udp", kUdp}, {"icmp", icmpOf(family)}, {"igmp", kIgmp}};
    std::set<std::uint8_t> known = {kTcp, kUdp, kIgmp, icmpOf(family)};
    for (const std::uint8_t other : others) {
        if (known.insert(other).second) {
            protocols.push_back({std::to_string(unsigned{other}), other});
        }
    }
    std::uint8_t free = 253;
    while (known.count(free) != 0) {
        --free;
    }
    protocols.push_back({"other", free});
    return protocols;
}

std::vector<SourceClass> matrix(const Model& model, const MatrixQuestion& question) {
    std::set<std::string> names = interfacesOf(model);
    if (question.in && *question.in != Interfaces::kOther) {
        names.insert(*question.in);
    }
    const Interfaces interfaces = interfacesFor(names);
    std::vector<FamilyMatrix> families;
    for (const int family : {4, 6}) {
        if (question.family.value_or(family) == family) {
            families.emplace_back(model, family, interfaces, question);
        }
    }
    std::vector<SourceClass> classes;
    for (std::size_t in = 0; in < interfaces.in.size(); ++in) {
        if (question.in && *question.in != interfaces.in[in]) {
            continue;
        }
        for (const Hook hook : {Hook::kInput, Hook::kForward}) {
            for (FamilyMatrix& family : families) {
                family.add(in, hook, classes);
            }
        }
    }
    return classes;
}

}  // namespace zamofw::analysis
