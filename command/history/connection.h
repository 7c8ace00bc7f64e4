// The connection or terminal that a call comes through.
#ifndef COMMAND_HISTORY_CONNECTION_H
#define COMMAND_HISTORY_CONNECTION_H

#include <cstdint>
#include <optional>
#include <string>

namespace zamofw {

struct Connection {
    std::optional<std::string> ssh;  // SSH_CONNECTION: "CLIENT PORT SERVER PORT"
    std::uint64_t began = 0;         // when its session began, in clock ticks since the boot

    // The address of the client, without the interface of a link-local one.
    [[nodiscard]] std::optional<std::string> client() const;
};

// sudo and its kin hide the variable and make sessions of their own, so that the processes above
// them are asked. A variable that is set and empty stands for no connection.
[[nodiscard]] Connection currentConnection();

}  // namespace zamofw

#endif
