// From the words of a call to the answer that it asks for.
#ifndef COMMAND_COMMANDLINE_H
#define COMMAND_COMMANDLINE_H

#include <functional>
#include <string>
#include <vector>

#include "command/console.h"

namespace zamofw {

struct GlobalOptions {
    bool json = false;
    bool yes = false;
    bool quiet = false;
    bool noColor = false;
};

using Answer = std::function<Status(const Console&)>;

struct CommandLine {
    GlobalOptions options;
    Answer answer;
};

// The global options may stand anywhere before a lone `--`: no value can begin with a dash, so that
// they are not taken for one. Throws Failure (kWrongUse), with a suggestion for a near miss.
[[nodiscard]] CommandLine parseCommandLine(const std::vector<std::string>& words);

}  // namespace zamofw

#endif
