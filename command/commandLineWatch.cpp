// The words of the command that keeps the rules right while interfaces come and go.

#include "command/answers/watchAnswer.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

Answer watch(CLI::App&, const std::vector<std::string>&) {
    return watchAnswer;
}

}  // namespace

Commands watchCommands() {
    return {
        {"watch", "", "reload whenever adapters come or go; what the unit calls", watch, nullptr},
    };
}

}  // namespace zamofw
