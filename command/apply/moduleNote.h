// The note of the kernel modules that the firewall has loaded.
#ifndef COMMAND_APPLY_MODULENOTE_H
#define COMMAND_APPLY_MODULENOTE_H

#include "command/apply/damage.h"

namespace zamofw {

// modules-note: it says that the modules are loaded, and the kernel has not all of them; or it says
// that they are not, while the firewall is in force.
[[nodiscard]] Damages moduleNoteDamages(bool isInForce);

}  // namespace zamofw

#endif
