// Other programs' rules that see a packet before the firewall's do.
#ifndef COMMAND_APPLY_FOREIGNRULES_H
#define COMMAND_APPLY_FOREIGNRULES_H

#include "command/apply/damage.h"
#include "command/apply/savedTable.h"

namespace zamofw {

// foreign-before: those in front of the firewall's jumps that decide, or jump to a chain with a
// rule that does; in the tables that come before, those that drop.
[[nodiscard]] Damages foreignDamages(const SavedFamilies& there);

}  // namespace zamofw

#endif
