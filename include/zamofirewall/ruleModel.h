// Rules and profiles, and the codes of their fields.
//
// The codes are the numbers in the profile files. Code fields are plain 32-bit integers, so that an
// unknown code survives reading and writing a file.
#ifndef ZAMOFIREWALL_RULEMODEL_H
#define ZAMOFIREWALL_RULEMODEL_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace FW {

// What a matching packet gets, and the default policy of an adapter.
enum FW_POLICY : std::int32_t {
    FW_POLICY_ALLOW = 0,  // leaves the firewall's chain and is not dropped by it
    FW_POLICY_DENY = 1,   // dropped
    FW_POLICY_NONE = 2,   // no verdict

    // Answers of the blocked queries (controller.h); never part of a rule or a profile.
    FW_POLICY_PARTIAL = 3,        // allowed from some addresses, blocked from others
    FW_POLICY_PARTIAL_ALLOW = 4,  // working value of the query
    FW_POLICY_PARTIAL_DENY = 5,   // working value of the query
};

// FWRULE::ipType
enum FW_IP_TYPE : std::int32_t {
    FW_IP_TYPE_V4 = 0,
    FW_IP_TYPE_V6 = 1,
    FW_IP_TYPE_BOTH = 2,
};

// FWRULE::ipGroup: how ipList is to be read.
enum FW_IP_GROUP : std::int32_t {
    FW_IP_GROUP_HOST = 0,     // one address
    FW_IP_GROUP_SUBNET = 1,   // an address, then its mask or prefix length
    FW_IP_GROUP_NONE = 2,     // nothing: the rule has no effect
    FW_IP_GROUP_COUNTRY = 3,  // country codes, as the files in /usr/share/xt_geoip/ are named
    FW_IP_GROUP_RANGE = 4,    // the first and the last address
    FW_IP_GROUP_ALL = 5,      // every address; ipList is not used
};

// FWRULE::portGroup: how portList is to be read.
enum FW_PORT_GROUP : std::int32_t {
    FW_PORT_GROUP_SERVICE = 0,           // service names
    FW_PORT_GROUP_PORT = 1,              // ports ("22") and ranges ("6000-6010")
    FW_PORT_GROUP_RESERVED_SERVICE = 2,  // service names that the system keeps itself
    FW_PORT_GROUP_ALL = 3,               // every port; portList is not used
};

// FWRULE::protocol, PortCompareST::protocol and the keys of ServPort.
enum FW_PORT_PROTOCOL : std::int32_t {
    FW_PROTOCOL_TCP = 1,
    FW_PROTOCOL_UDP = 2,
    FW_PROTOCOL_BOTH = 3,  // TCP and UDP
    FW_PROTOCOL_ICMP = 4,  // ICMP for IPv4, ICMPv6 for IPv6; ports are not used
    FW_PROTOCOL_IGMP = 32,
};

// One filtering rule. A rule made here holds the values of a rule that is being built.
struct FWRULE {
    std::int32_t ruleIndex = 0;
    bool enable = true;
    std::int32_t adapterDirect = 1;  // non-zero: the packet comes in on the adapter; 0: it goes out
    FW_POLICY policy = FW_POLICY_ALLOW;
    bool blLog = false;
    std::vector<std::string> labelList;  // free labels, kept with the rule
    std::string name;
    std::string table = "filter";
    std::set<std::string> chainList = {"FORWARD_FIREWALL", "INPUT_FIREWALL"};
    std::int32_t ipType = FW_IP_TYPE_V4;
    std::int32_t ipDirect = 1;  // non-zero: ipList holds source addresses; 0: destinations
    std::int32_t ipGroup = FW_IP_GROUP_HOST;
    std::vector<std::string> ipList;
    std::int32_t portDirect = 0;  // non-zero: portList holds source ports; 0: destination ports
    std::int32_t portGroup = FW_PORT_GROUP_SERVICE;
    std::int32_t protocol = FW_PROTOCOL_TCP;  // used with FW_PORT_GROUP_PORT
    std::vector<std::string> portList;
};

// A named set of rules. An adapter is a network interface (eth0), or one of "global" (no interface
// match), "pppoe" (the PPPoE interface) and "vpn" (the interfaces of the VPN servers).
struct FWPROFILE {
    std::string name;
    std::map<std::string, std::vector<FWRULE>> rules;   // by adapter, in the order of evaluation
    std::map<std::string, FW_POLICY> adapterPolicyMap;  // default policy of each adapter
};

}  // namespace FW

#endif
