#ifndef COMMAND_APPLY_KERNELMODULES_H
#define COMMAND_APPLY_KERNELMODULES_H

#include <string>
#include <vector>

namespace zamofw {

// The name in the note of loaded modules: the library's own.
constexpr const char* kModuleOwner = "firewall";

// Loads the kernel modules that the firewall needs, unless it has loaded them already. Throws
// Failure when that is not possible.
void loadKernelModules();

// The same whatever the note says; it is right afterwards.
void loadKernelModulesAgain();

// Their files. Throws Failure when their list cannot be read.
[[nodiscard]] std::vector<std::string> firewallModules();

}  // namespace zamofw

#endif
