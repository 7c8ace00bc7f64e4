#include "library/profiles/portMatch.h"

#include <algorithm>
#include <cstdlib>

#include "library/logging/log.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

long number(const std::string& digits) {
    return std::strtol(digits.c_str(), nullptr, 10);
}

template <typename PortsByProtocol>
void appendPorts(std::int32_t direction,
                 const PortsByProtocol& portsByProtocol,
                 std::vector<RulePorts>& rulePorts) {
    for (const auto& [protocol, ports] : portsByProtocol) {
        rulePorts.push_back({direction, protocol, PortRanges(ports)});
    }
}

}  // namespace

PortRange portRangeParse(const std::string& text) {
    const std::size_t dash = text.find('-');
    if (dash == std::string::npos) {
        return {number(text), number(text)};
    }
    return {number(text.substr(0, dash)), number(text.substr(dash + 1))};
}

PortQuery parseQuery(const PortCompareST& port) {
    return {port.portDirect, port.protocol, portRangeParse(port.port)};
}

PortRanges::PortRanges(const std::vector<std::string>& ports) {
    ranges_.reserve(ports.size());
    for (const std::string& port : ports) {
        ranges_.push_back(portRangeParse(port));
    }
    std::sort(ranges_.begin(), ranges_.end(), [](const PortRange& a, const PortRange& b) {
        return a.low < b.low;
    });
    for (std::size_t i = 1; i < ranges_.size(); ++i) {
        ranges_[i].high = std::max(ranges_[i].high, ranges_[i - 1].high);
    }
}

bool PortRanges::reach(long low, long high) const {
    const auto end = std::upper_bound(
        ranges_.begin(), ranges_.end(), low, [](long value, const PortRange& range) {
            return value < range.low;
        });
    return end != ranges_.begin() && std::prev(end)->high >= high;
}

bool portCompare(const RulePorts& rule, const PortQuery& query, bool deny) {
    const bool sameProtocol = rule.protocol == FW_PROTOCOL_BOTH ||
                              rule.protocol == query.protocol ||
                              (deny && query.protocol == FW_PROTOCOL_BOTH);
    if (!sameProtocol || rule.portDirect != query.portDirect) {
        return false;
    }
    return deny ? rule.ranges.overlap(query.range) : rule.ranges.contain(query.range);
}

bool RuleMatcher::matches(const FWRULE& rule, const PortQuery& query) {
    if (rule.portGroup == FW_PORT_GROUP_ALL) {
        return true;
    }
    const Ports* ports = portsOf(rule);
    if (ports == nullptr) {
        return false;
    }
    const bool deny = rule.policy == FW_POLICY_DENY;
    return std::any_of(ports->begin(), ports->end(), [&](const RulePorts& rulePorts) {
        return portCompare(rulePorts, query, deny);
    });
}

void RuleMatcher::setProfile(std::shared_ptr<const FWPROFILE> profile) {
    if (profile != profile_) {
        ports_.clear();
        profile_ = std::move(profile);
    }
}

const RuleMatcher::Ports* RuleMatcher::portsOf(const FWRULE& rule) {
    switch (rule.portGroup) {
        case FW_PORT_GROUP_SERVICE:
        case FW_PORT_GROUP_RESERVED_SERVICE:
            return portsOfServices(rule.portList);
        case FW_PORT_GROUP_PORT: {
            const auto [entry, isNew] = ports_.try_emplace(&rule);
            if (isNew) {
                entry->second.push_back(
                    {rule.portDirect, rule.protocol, PortRanges(rule.portList)});
            }
            return &entry->second;
        }
    }
    return nullptr;
}

// A failed lookup is not kept: it is tried, and logged, for every rule that needs it.
const RuleMatcher::Ports* RuleMatcher::portsOfServices(const std::vector<std::string>& services) {
    const auto known = services_.find(services);
    if (known != services_.end()) {
        return &known->second;
    }
    ServPort servicePorts;
    if (!lookup_(services, servicePorts)) {
        FW_LOG(LOG_ERR, "Failed to servToPorts()");
        return nullptr;
    }
    Ports& ports = services_[services];
    appendPorts(kSourcePort, servicePorts.srcPorts, ports);
    appendPorts(kDestinationPort, servicePorts.dstPorts, ports);
    return &ports;
}

}  // namespace FW
