// Which adapter names are usable now, and the interfaces that they stand for.
#ifndef LIBRARY_TRANSLATE_ADAPTERS_H
#define LIBRARY_TRANSLATE_ADAPTERS_H

#include <string>
#include <vector>

#include "zamofirewall/ruleModel.h"

namespace FW {

// The interfaces that one translator has asked the system for. An empty answer is asked for again.
struct Interfaces {
    std::vector<std::string>& enabled;
    std::vector<std::string>& vpn;
    std::string& pppoe;
};

// Ask for what is still empty. A failure is logged.
[[nodiscard]] bool findEnabled(const Interfaces& interfaces);
[[nodiscard]] bool findVpn(const Interfaces& interfaces);
void findPppoe(const Interfaces& interfaces);

// Whether rules for the adapter take effect now.
[[nodiscard]] bool isUsable(const std::string& adapter, const Interfaces& interfaces);

// "-i eth0", or "-o eth0" for a rule about packets that go out.
[[nodiscard]] std::string interfaceFragment(const std::string& interface, const FWRULE& rule);

// Appends the fragments of a predefined adapter; any other name has none. False when the interfaces
// of the adapter cannot be found, which is logged.
[[nodiscard]] bool predefinedFragments(const std::string& adapter,
                                       const FWRULE& rule,
                                       const Interfaces& interfaces,
                                       std::vector<std::string>& fragments);

}  // namespace FW

#endif
