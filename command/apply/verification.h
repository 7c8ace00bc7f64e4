// Whether the kernel holds what it should.
#ifndef COMMAND_APPLY_VERIFICATION_H
#define COMMAND_APPLY_VERIFICATION_H

#include <optional>
#include <string>
#include <vector>

#include "command/plan/plan.h"

namespace zamofw {

struct Difference {
    enum class Kind {
        kMissing,
        kExtra,
        kMoved,   // it is there, at another place
        kPolicy,  // it is not ACCEPT
        kGuard,   // a rule in the reloading chain
        kJump,    // a jump to one of the firewall's chains that is missing, too many or misplaced
        kChain,   // one of the firewall's chains is not there
    };
    int family = 4;
    Kind kind = Kind::kMissing;
    std::string chain;
    std::string line;  // as the kernel would list it; as planned when the kernel refuses it
    std::optional<PlannedLine> origin;  // of a line that is missing or moved
};

// What must change to make the kernel hold exactly the lines of this plan in the firewall's chains,
// the jumps to these, no guard rule, and open policies. Of a chain that is not the firewall's the
// plan's lines must be there in this order; what others have in it makes no difference, nor do
// counters. The lines are put into a network namespace that nobody else sees, so that both sides
// are compared as the same program lists them. Throws Failure when the kernel cannot be asked.
[[nodiscard]] std::vector<Difference> differencesTo(const Plan& plan);

}  // namespace zamofw

#endif
