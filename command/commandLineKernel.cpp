// The words of the commands that compare the kernel with what is stored.

#include "command/answers/doctorAnswer.h"
#include "command/answers/rehearseAnswer.h"
#include "command/answers/verifyAnswer.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

Answer rehearse(CLI::App& app, const Words&) {
    const auto target = std::make_shared<TargetWords>();
    addTarget(app, *target);
    return [target](const Console& console) { return rehearseAnswer(console, *target); };
}

Answer verify(CLI::App&, const Words&) {
    return verifyAnswer;
}

Answer doctor(CLI::App& app, const Words&) {
    const auto repair = std::make_shared<bool>(false);
    app.add_flag("--repair", *repair, "mend what needs nobody's decision");
    return [repair](const Console& console) { return doctorAnswer(console, *repair); };
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
        {"doctor",
         "[--repair]",
         "what a crash or another program has left behind",
         doctor,
         nullptr},
    };
}

}  // namespace zamofw
