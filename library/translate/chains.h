#ifndef LIBRARY_TRANSLATE_CHAINS_H
#define LIBRARY_TRANSLATE_CHAINS_H

#include <array>

namespace FW {

// The chains that the firewall fills and flushes. They are the system's to make and to jump to.
constexpr std::array<const char*, 2> kFirewallChains = {"INPUT_FIREWALL", "FORWARD_FIREWALL"};

}  // namespace FW

#endif
