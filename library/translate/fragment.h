// The parts that the lines of a rule are made of.
#ifndef LIBRARY_TRANSLATE_FRAGMENT_H
#define LIBRARY_TRANSLATE_FRAGMENT_H

#include <optional>
#include <string>
#include <vector>

#include "library/model/line.h"

namespace FW {

struct AddressFragment {
    AddressFamily family;
    std::string text;  // "-s 10.0.0.1", or empty for every address
};

struct PortFragment {
    std::string text;  // "-p tcp --dport 22", or empty for every port
    std::optional<AddressFamily> onlyFor = std::nullopt;
};

// The only matches that one family alone takes.
constexpr const char* kIcmpMatch = "-p icmp ";
constexpr const char* kIcmpv6Match = "-p icmpv6 ";

struct RuleFragments {
    std::string table;                  // "-t filter"
    std::vector<std::string> chains;    // "-A INPUT_FIREWALL"
    std::vector<std::string> adapters;  // "-i eth0", or empty for every interface
    std::vector<AddressFragment> addresses;
    std::vector<PortFragment> ports;
    std::string target;  // "-j DROP", or empty for a rule without a verdict
};

}  // namespace FW

#endif
