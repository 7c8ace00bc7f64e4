// The interfaces that rules can name, as the platform reports them.
#ifndef LIBRARY_TRANSLATE_INTERFACELIST_H
#define LIBRARY_TRANSLATE_INTERFACELIST_H

#include <string>
#include <vector>

namespace FW {

// Appends the names of the interfaces that are up and configured, at most 32. The platform's
// result, negative on failure; the platform's last error tells more.
[[nodiscard]] int interfaceNames(std::vector<std::string>& names);

// Whether the machine has a wireless interface, which the platform does not list while it is idle.
[[nodiscard]] bool hasWireless();

constexpr const char* kWirelessInterface = "wlan0";

}  // namespace FW

#endif
