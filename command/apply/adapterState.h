// What the lines of a profile depend on beside the profile: the interfaces that are up.
#ifndef COMMAND_APPLY_ADAPTERSTATE_H
#define COMMAND_APPLY_ADAPTERSTATE_H

#include <map>
#include <set>
#include <string>
#include <vector>

#include "zamofirewall/ruleModel.h"

namespace zamofw {

// By adapter, the lines that one rule for it is translated into: they name the interfaces behind
// "vpn" and "pppoe", and 6in4 tunnels. An adapter whose rules have no effect now is not in it.
using AdapterState = std::map<std::string, std::vector<std::string>>;

// Throws Failure when the system does not tell its interfaces.
[[nodiscard]] AdapterState adapterState();

// The adapters that a profile has rules or a default policy for, but "global".
[[nodiscard]] std::set<std::string> namedAdapters(const FW::FWPROFILE& profile);

// Those among `adapters` that the two differ in.
[[nodiscard]] std::set<std::string> changedAdapters(const AdapterState& before,
                                                    const AdapterState& after,
                                                    const std::set<std::string>& adapters);

}  // namespace zamofw

#endif
