#include "command/answers/lockout.h"

namespace zamofw {

Findings lockout(const Document&, const std::optional<std::string>&, const Connection&) {
    return {};
}

}  // namespace zamofw
