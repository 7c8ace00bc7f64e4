#ifndef COMMAND_APPLY_KERNELMODULES_H
#define COMMAND_APPLY_KERNELMODULES_H

namespace zamofw {

// Loads the kernel modules that the firewall needs, unless it has loaded them already. Throws
// Failure when that is not possible.
void loadKernelModules();

}  // namespace zamofw

#endif
