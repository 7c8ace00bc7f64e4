// Something that a crash, a power cut or another program has left behind.
#ifndef COMMAND_APPLY_DAMAGE_H
#define COMMAND_APPLY_DAMAGE_H

#include <string>
#include <vector>

namespace zamofw {

struct Damage {
    const char* kind;
    std::string message;
    std::string remedy;
    bool isRepaired = false;
};
using Damages = std::vector<Damage>;

constexpr const char* kRepairRemedy = "`zamofw doctor --repair` mends it";

}  // namespace zamofw

#endif
