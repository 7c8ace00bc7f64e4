// Running the packet filter's programs. Nothing here takes a lock.
#ifndef LIBRARY_CONTROLLER_COMMANDEXECUTION_H
#define LIBRARY_CONTROLLER_COMMANDEXECUTION_H

#include <json/value.h>

#include <string>
#include <vector>

#include "library/model/names.h"

namespace FW {

// The arguments for one family's program, separated by blanks.
struct CommandLine {
    Family family;
    std::string arguments;
};

// All of these log their failures.

// Runs one program, given with its path.
[[nodiscard]] bool runCommand(const std::string& line);

// Stops at the first line that fails.
[[nodiscard]] bool runLines(const std::vector<CommandLine>& lines);

// Runs a command list as the translator builds it: IPv4 before IPv6, "global" before the adapters.
[[nodiscard]] bool runCommandList(const Json::Value& list);

// Empties the firewall's chains, all of them even if one fails.
bool flushChains();

}  // namespace FW

#endif
