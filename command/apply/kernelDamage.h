// What is wrong with the firewall's place in the packet filter, and how it is mended.
#ifndef COMMAND_APPLY_KERNELDAMAGE_H
#define COMMAND_APPLY_KERNELDAMAGE_H

#include "command/apply/damage.h"
#include "command/apply/executionLock.h"
#include "command/apply/kernelState.h"
#include "command/apply/savedTable.h"
#include "command/plan/plan.h"

namespace zamofw {

// Chains and jumps that are not there: no-chain, no-jump.
[[nodiscard]] Damages placeDamages(const SavedFamilies& there);

// What a reload leaves that was killed: closed-policy, guard-left.
[[nodiscard]] Damages doorDamages(const SavedFamilies& there);

// Chains without a rule that have lines in the plan: empty-chains.
[[nodiscard]] Damages emptyChainDamages(const SavedFamilies& there, const Plan& plan);

// Makes the missing chains and puts the jumps in front of all others, each family at once. What
// others have in INPUT and FORWARD stays. Throws Failure.
void mendPlaces(const SavedFamilies& there, const ExecutionLock& lock);

// Opens the policies and takes the guard rules away, each family at once; with kEmpty the
// firewall's chains are emptied too. Throws Failure.
enum class Rules { kKeep, kEmpty };
void mendDoor(const SavedFamilies& there, Rules rules, const ExecutionLock& lock);

// After a reload line by line: takes away the guard rules that an earlier one has left. Throws
// Failure.
void removeGuards(Guards guards);

}  // namespace zamofw

#endif
