// The words of the commands that switch the firewall and put rules into force.

#include "command/answers/reloadAnswer.h"
#include "command/answers/statusAnswer.h"
#include "command/answers/switchAnswers.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

using Words = std::vector<std::string>;

Answer status(CLI::App&, const Words&) {
    return statusAnswer;
}

Answer enable(CLI::App& app, const Words& given) {
    const auto force = std::make_shared<bool>(false);
    addForce(app, *force);
    return [force, given](const Console& console) {
        return enableAnswer(console, given, *force ? Errors::kShow : Errors::kRefuse);
    };
}

Answer disable(CLI::App&, const Words& given) {
    return [given](const Console& console) { return disableAnswer(console, given); };
}

Answer reload(CLI::App& app, const Words&) {
    struct Options {
        bool sequential = false;
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    app.add_flag("--sequential", options->sequential, "line by line, as the library does it");
    addForce(app, options->force);
    return [options](const Console& console) {
        return reloadAnswer(
            console, {options->sequential, options->force ? Errors::kShow : Errors::kRefuse});
    };
}

Answer update(CLI::App&, const Words& given) {
    return [given](const Console& console) { return updateAnswer(console, given); };
}

}  // namespace

Commands firewallCommands() {
    return {
        {"status", "", "whether the firewall is enabled, and with what", status, nullptr},
        {"enable", "[--force]", "switch the firewall on", enable, nullptr},
        {"disable", "", "switch the firewall off", disable, nullptr},
        {"reload",
         "[--sequential] [--force]",
         "put the profile in force into the kernel",
         reload,
         nullptr},
        {"update", "", "repair the service rules after the catalogue has changed", update, nullptr},
    };
}

}  // namespace zamofw
