// The two variants of iptables, which keep their rules in different places of the kernel.
#ifndef COMMAND_APPLY_BACKENDS_H
#define COMMAND_APPLY_BACKENDS_H

#include "command/apply/damage.h"

namespace zamofw {

// two-backends: both hold rules, and a packet must get past both. No module is loaded by asking.
[[nodiscard]] Damages backendDamages();

}  // namespace zamofw

#endif
