// The ports and protocols of a rule.

#include <algorithm>

#include "library/logging/log.h"
#include "zamofirewall/translator.h"

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

void appendPortMatches(const char* protocol,
                       bool source,
                       const std::vector<std::string>& ports,
                       Json::Value& fragments) {
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
        fragments.append(head + joinPorts(ports, first, last));
    }
}

}  // namespace

void ZAMOFW_IPTABLES_RULES::portsToIptablesArg(int protocol,
                                               int portDirect,
                                               const std::vector<std::string>& ports,
                                               Json::Value& args) {
    const bool source = portDirect != 0;
    Json::Value& fragments = args["port"];
    switch (protocol) {
        case FW_PROTOCOL_TCP:
            appendPortMatches("tcp", source, ports, fragments);
            return;
        case FW_PROTOCOL_UDP:
            appendPortMatches("udp", source, ports, fragments);
            return;
        case FW_PROTOCOL_BOTH:
            appendPortMatches("tcp", source, ports, fragments);
            appendPortMatches("udp", source, ports, fragments);
            return;
        case FW_PROTOCOL_ICMP:
            fragments.append("-p icmp ");
            fragments.append("-p icmpv6 ");
            return;
        case FW_PROTOCOL_IGMP:
            fragments.append("-p igmp ");
            return;
    }
}

bool ZAMOFW_IPTABLES_RULES::portToIptablesArg(const FWRULE& rule, Json::Value& args) {
    switch (rule.portGroup) {
        case FW_PORT_GROUP_SERVICE:
        case FW_PORT_GROUP_RESERVED_SERVICE:
            if (!servPortToCmd(rule.portList, args)) {
                return FW_FAILURE("Failed to servPortToCmd()");
            }
            return true;
        case FW_PORT_GROUP_PORT:
            portsToIptablesArg(rule.protocol, rule.portDirect, rule.portList, args);
            return true;
        case FW_PORT_GROUP_ALL:
            args["port"].append("");
            return true;
    }
    FW_LOG(LOG_ERR, "Unknown port group %d", rule.portGroup);
    return true;
}

}  // namespace FW
