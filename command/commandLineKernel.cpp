// The words of the commands that compare the kernel with what is stored.

#include "command/answers/rehearseAnswer.h"
#include "command/answers/verifyAnswer.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

using Words = std::vector<std::string>;

Answer rehearse(CLI::App& app, const Words&) {
    const auto target = std::make_shared<TargetWords>();
    addTarget(app, *target);
    return [target](const Console& console) { return rehearseAnswer(console, *target); };
}

Answer verify(CLI::App&, const Words&) {
    return verifyAnswer;
}

}  // namespace

Commands kernelCommands() {
    return {
        {"rehearse",
         "[PROFILE] [--file FILE]",
         "what this kernel would refuse of a profile",
         rehearse,
         nullptr},
        {"verify", "", "whether the kernel holds what the profile says", verify, nullptr},
    };
}

}  // namespace zamofw
