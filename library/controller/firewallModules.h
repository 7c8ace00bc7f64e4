// The kernel modules that the firewall itself needs.
#ifndef LIBRARY_CONTROLLER_FIREWALLMODULES_H
#define LIBRARY_CONTROLLER_FIREWALLMODULES_H

namespace FW {

// Loads them unless they are loaded already. Logs its failure.
[[nodiscard]] bool firewallModLoad();

// Unloads them if they are loaded. Logs its failure.
bool firewallModUnload();

}  // namespace FW

#endif
