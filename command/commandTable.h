// The commands that there are.
#ifndef COMMAND_COMMANDTABLE_H
#define COMMAND_COMMANDTABLE_H

#include <string>
#include <vector>

#include "command/answers/call.h"
#include "command/commandLine.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library's
class App;
}

namespace zamofw {

using Words = std::vector<std::string>;

// Declares the operands and options of a command, and gives back what is to be done once they are
// parsed. `given` is the whole call, for the change log.
using Declare = Answer (*)(CLI::App& app, const Words& given);
// A command that takes its words as they are.
using TakeWords = Status (*)(const Console& console, const Call& call);

struct Command {
    const char* name;      // "profile list"
    const char* operands;  // "NAME FILE [--force]"
    const char* summary;
    Declare declare;
    TakeWords takeWords;
};

using Commands = std::vector<Command>;

[[nodiscard]] Commands firewallCommands();
[[nodiscard]] Commands profileCommands();
[[nodiscard]] Commands ruleCommands();
[[nodiscard]] Commands catalogueCommands();
[[nodiscard]] Commands inspectionCommands();
[[nodiscard]] Commands kernelCommands();
[[nodiscard]] Commands historyCommands();
[[nodiscard]] Commands reportCommands();
[[nodiscard]] Commands trialCommands();
[[nodiscard]] Commands watchCommands();

}  // namespace zamofw

#endif
