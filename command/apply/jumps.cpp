#include "command/apply/jumps.h"

#include <algorithm>

namespace zamofw {

std::vector<std::string> jumpsOf(const Hook& hook) {
    const std::string start = std::string("-A ") + hook.name + " -j ";
    return {start + FW::kReloadingChain, start + hook.chain};
}

std::vector<std::size_t> jumpsThere(const Hook& hook, const SavedTable& table) {
    const std::vector<std::string> jumps = jumpsOf(hook);
    const std::vector<std::string>& rules = rulesOf(table, hook.name);
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < rules.size(); ++i) {
        if (std::find(jumps.begin(), jumps.end(), rules[i]) != jumps.end()) {
            places.push_back(i);
        }
    }
    return places;
}

}  // namespace zamofw
