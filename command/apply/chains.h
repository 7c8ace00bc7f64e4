// The chains that the firewall fills, the jumps into them, and the door.
#ifndef COMMAND_APPLY_CHAINS_H
#define COMMAND_APPLY_CHAINS_H

#include <string>

#include "command/apply/executionLock.h"

namespace zamofw {

enum class Door {
    // Chains without rules are closed until a transaction fills them: only loopback, established
    // connections, IPv6 neighbour discovery, router advertisements and DHCPv6 get through. Chains
    // with rules are left as they are.
    kClosedUntilFilled,
    // Nothing is filtered: the chains are empty and the policies open.
    kOpen,
    kAsItIs,
};

struct SetUp {
    bool isChanged = false;
    bool hadRules = true;  // all of the firewall's chains, in both families
    std::string problems;  // of each family that could not be set up: what is wrong, what to do
};

// Makes the missing chains and puts the two jumps in front, for each family all at once; other
// programs' chains and rules stay. A family that cannot be set up does not keep the other open.
[[nodiscard]] SetUp makeChains(Door door, const ExecutionLock& lock);

// Opens the door, whatever chains there are.
[[nodiscard]] SetUp openDoor(const ExecutionLock& lock);

}  // namespace zamofw

#endif
