// The ports and protocols of a rule.

#include <algorithm>

#include "library/logging/log.h"
#include "library/translate/ruleFields.h"
#include "library/translate/servicePorts.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";

// A multiport match takes 15 ports, and a range counts as two.
constexpr std::size_t kMaxEntriesPerMatch = 7;

// "80-80" is the one port 80.
std::string withoutEmptyRange(const std::string& port) {
    const std::size_t dash = port.find('-');
    if (dash == std::string::npos) {
        return port;
    }
    const std::string low = port.substr(0, dash);
    return low == port.substr(dash + 1) ? low : port;
}

// {"22", "6000-6010"}, from 0 to 2 -> "22,6000:6010"
std::string joinPorts(const std::vector<std::string>& ports, std::size_t first, std::size_t last) {
    std::string joined;
    for (std::size_t i = first; i < last; ++i) {
        joined += (i == first ? "" : ",") + withoutEmptyRange(ports[i]);
    }
    std::replace(joined.begin(), joined.end(), '-', ':');
    return joined;
}

void appendMatches(const char* protocol,
                   bool source,
                   const std::vector<std::string>& ports,
                   std::vector<PortFragment>& fragments) {
    if (ports.empty()) {
        return;
    }
    std::string head = std::string("-p ") + protocol + " ";
    if (ports.size() == 1 && ports[0].find('-') == std::string::npos) {
        head += source ? "--sport " : "--dport ";
    } else {
        head += source ? "-m multiport --sports " : "-m multiport --dports ";
    }
    for (std::size_t first = 0; first < ports.size(); first += kMaxEntriesPerMatch) {
        const std::size_t last = std::min(ports.size(), first + kMaxEntriesPerMatch);
        fragments.push_back({head + joinPorts(ports, first, last)});
    }
}

}  // namespace

std::vector<PortFragment> portFragments(int protocol,
                                        bool source,
                                        const std::vector<std::string>& ports) {
    std::vector<PortFragment> fragments;
    switch (protocol) {
        case FW_PROTOCOL_TCP:
            appendMatches("tcp", source, ports, fragments);
            break;
        case FW_PROTOCOL_UDP:
            appendMatches("udp", source, ports, fragments);
            break;
        case FW_PROTOCOL_BOTH:
            appendMatches("tcp", source, ports, fragments);
            appendMatches("udp", source, ports, fragments);
            break;
        case FW_PROTOCOL_ICMP:
            fragments.push_back({kIcmpMatch, AddressFamily::kV4});
            fragments.push_back({kIcmpv6Match, AddressFamily::kV6});
            break;
        case FW_PROTOCOL_IGMP:
            fragments.push_back({"-p igmp "});
            break;
    }
    return fragments;
}

bool rulePortFragments(const FWRULE& rule,
                       ZAMOFwServiceList*& catalogue,
                       std::vector<PortFragment>& fragments) {
    switch (rule.portGroup) {
        case FW_PORT_GROUP_SERVICE:
        case FW_PORT_GROUP_RESERVED_SERVICE:
            if (!serviceFragments(rule.portList, catalogue, fragments)) {
                return FW_FAILURE("Failed to servPortToCmd()");
            }
            return true;
        case FW_PORT_GROUP_PORT:
            fragments = portFragments(rule.protocol, rule.portDirect != 0, rule.portList);
            return true;
        case FW_PORT_GROUP_ALL:
            fragments = {{""}};
            return true;
    }
    FW_LOG(LOG_ERR, "Unknown port group %d", rule.portGroup);
    return true;
}

}  // namespace FW
