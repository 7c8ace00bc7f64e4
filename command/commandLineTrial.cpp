// The words of the commands that try rules, and of those that the system calls.

#include "command/answers/bootAnswers.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

using Words = std::vector<std::string>;

Answer start(CLI::App&, const Words&) {
    return startAnswer;
}

Answer stop(CLI::App&, const Words&) {
    return stopAnswer;
}

}  // namespace

Commands trialCommands() {
    return {
        {"start", "", "what the system calls at its start: chains, then rules", start, nullptr},
        {"stop", "", "open the door until `start`; nothing stored changes", stop, nullptr},
    };
}

}  // namespace zamofw
