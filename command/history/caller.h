// Who makes a call, and from where.
#ifndef COMMAND_HISTORY_CALLER_H
#define COMMAND_HISTORY_CALLER_H

#include <optional>
#include <string>

namespace zamofw {

struct Caller {
    std::string user;                 // who became root with sudo, or else the user
    std::optional<std::string> from;  // the address of the client of an SSH session
};

[[nodiscard]] Caller currentCaller();

}  // namespace zamofw

#endif
