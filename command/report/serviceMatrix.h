// Who reaches which service: the partition of the sources, cut down to what a picture can show.
#ifndef COMMAND_REPORT_SERVICEMATRIX_H
#define COMMAND_REPORT_SERVICEMATRIX_H

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "command/analysis/matrix.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw::report {

// Packets by protocol ("tcp", "icmp", "47"): destination ports, or {0, 0} for a protocol without.
using Traffic = std::map<std::string, analysis::Intervals>;

struct Service {
    std::string name;
    Traffic traffic;
    std::size_t uses = 1;  // how many rules name it
};

// "22" or "6000-6010"; none for anything else.
[[nodiscard]] std::optional<analysis::Interval> portRange(const std::string& entry);

// What the enabled rules of a profile name: services of the catalogue (by name), ports, protocols.
// Two names for the same packets are one service. In the order of their ports.
[[nodiscard]] std::vector<Service> servicesOf(const FW::FWPROFILE& profile,
                                              const std::map<std::string, Traffic>& catalogue);

enum class Reach { kDenied, kPartly, kAllowed };

// Whether a row has every address of a family, or every one that the other rows do not have.
enum class Rest { kNone, kOther, kEvery };

// Sources that reach the same of what the picture shows.
struct MatrixRow {
    std::vector<std::string> addresses;  // "192.168.1.0/24"; the first ones
    std::size_t moreAddresses = 0;       // ranges that are not in the list
    std::size_t folded = 0;              // not 0: it stands for so many rows that are left out
    Rest v4 = Rest::kNone;
    Rest v6 = Rest::kNone;
    std::vector<Reach> cells;  // by column
};

// Interfaces with the same rows.
struct MatrixGroup {
    std::vector<std::string> interfaces;
    bool toMachine = true;       // packets for this machine
    bool throughMachine = true;  // forwarded ones
    std::vector<MatrixRow> rows;
};

struct ServiceMatrix {
    std::vector<std::string> columns;  // the last one is everything that no other column has
    std::size_t folded = 0;            // not 0: the column before it stands for so many services
    std::vector<MatrixGroup> groups;
    std::vector<std::string> leftOut;  // interfaces without a group
};

// Shows the services that most rules name, and of the rows those with most addresses. `protocols`
// are the names that the classes tell apart.
[[nodiscard]] ServiceMatrix serviceMatrix(const std::vector<analysis::SourceClass>& classes,
                                          std::vector<Service> services,
                                          const std::vector<std::string>& protocols);

// "192.168.1.0/24", "10.0.0.1", "10.0.0.1-10.0.0.9"
[[nodiscard]] std::string rangeText(const analysis::Interval& range, int family);

}  // namespace zamofw::report

#endif
