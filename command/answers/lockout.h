// Whether a profile keeps out the person who tries it.
#ifndef COMMAND_ANSWERS_LOCKOUT_H
#define COMMAND_ANSWERS_LOCKOUT_H

#include <optional>
#include <string>

#include "command/document/document.h"
#include "command/document/finding.h"
#include "command/history/connection.h"

namespace zamofw {

// What would keep new packets of the client from the port that its connection goes to, or 22.
// Nothing without a client.
[[nodiscard]] Findings lockout(const Document& profile,
                               const std::optional<std::string>& client,
                               const Connection& connection);

}  // namespace zamofw

#endif
