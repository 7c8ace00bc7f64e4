// The jumps from the kernel's own chains to the firewall's.
#ifndef COMMAND_APPLY_JUMPS_H
#define COMMAND_APPLY_JUMPS_H

#include <array>
#include <string>
#include <vector>

#include "command/apply/savedTable.h"
#include "library/model/names.h"

namespace zamofw {

struct Hook {
    const char* name;
    const char* chain;  // the firewall's, behind the reloading chain
};
constexpr std::array<Hook, 2> kHooks = {
    {{"INPUT", FW::kInputChain}, {"FORWARD", FW::kForwardChain}}};

// The lines of both, in order.
[[nodiscard]] std::vector<std::string> jumpsOf(const Hook& hook);

// Which of the hook's rules are jumps to these chains, whatever their number and order: their
// places, from 0.
[[nodiscard]] std::vector<std::size_t> jumpsThere(const Hook& hook, const SavedTable& table);

}  // namespace zamofw

#endif
