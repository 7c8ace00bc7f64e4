// Whether a rule speaks of a port.
#ifndef LIBRARY_PROFILES_PORTMATCH_H
#define LIBRARY_PROFILES_PORTMATCH_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zamofirewall/controller.h"

namespace FW {

struct PortRange {
    long low;
    long high;
};

// "22" or "6000-6010". Text that is no number counts as 0, and a range may be backwards.
[[nodiscard]] PortRange portRangeParse(const std::string& text);

// The kinds of port that a query and the lists of services tell apart.
constexpr std::int32_t kDestinationPort = 0;
constexpr std::int32_t kSourcePort = 1;

// The port that a query asks about.
struct PortQuery {
    std::int32_t portDirect;
    std::int32_t protocol;
    PortRange range;
};

[[nodiscard]] PortQuery parseQuery(const PortCompareST& port);

// Ranges that are searched in logarithmic time: services may have thousands of ports.
class PortRanges {
  public:
    explicit PortRanges(const std::vector<std::string>& ports);

    // Whether one of them holds the whole of `range`, or at least a part of it.
    [[nodiscard]] bool contain(PortRange range) const { return reach(range.low, range.high); }
    [[nodiscard]] bool overlap(PortRange range) const { return reach(range.high, range.low); }

  private:
    // Whether a range begins at `low` or before it and ends at `high` or after it.
    [[nodiscard]] bool reach(long low, long high) const;

    // In the order of `low`; `high` is the greatest up to there.
    std::vector<PortRange> ranges_;
};

// Ports of one protocol and direction that a rule speaks of.
struct RulePorts {
    std::int32_t portDirect;
    std::int32_t protocol;
    PortRanges ranges;
};

// A deny rule matches a query that it covers in part, any other rule one that it covers whole.
[[nodiscard]] bool portCompare(const RulePorts& rule, const PortQuery& query, bool deny);

// Looks up the ports of services; false is a failure that is logged.
using ServiceLookup = std::function<bool(const std::vector<std::string>&, ServPort&)>;

// Matches the rules of one query. Each rule's ports are parsed once, and each service is looked up
// once.
class RuleMatcher {
  public:
    explicit RuleMatcher(ServiceLookup lookup) : lookup_(std::move(lookup)) {}

    // `rule` belongs to the profile that was passed to setProfile() last.
    [[nodiscard]] bool matches(const FWRULE& rule, const PortQuery& query);

    // Forgets the rules of the profile before it, unless it is the same one.
    void setProfile(std::shared_ptr<const FWPROFILE> profile);

  private:
    using Ports = std::vector<RulePorts>;

    [[nodiscard]] const Ports* portsOf(const FWRULE& rule);
    [[nodiscard]] const Ports* portsOfServices(const std::vector<std::string>& services);

    ServiceLookup lookup_;
    std::shared_ptr<const FWPROFILE> profile_;
    std::map<const FWRULE*, Ports> ports_;
    std::map<std::vector<std::string>, Ports> services_;
};

}  // namespace FW

#endif
