// The words of the commands that switch the firewall and put rules into force.

#include "command/answers/metricsAnswer.h"
#include "command/answers/reloadAnswer.h"
#include "command/answers/statusAnswer.h"
#include "command/answers/switchAnswers.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

Answer status(CLI::App& app, const Words&) {
    struct Options {
        bool metrics = false;
        std::optional<std::string> output;
    };
    const auto options = std::make_shared<Options>();
    app.add_flag("--metrics", options->metrics, "the figures for the node exporter of Prometheus");
    addOptional(app, "--output", options->output, "the file to write them into");
    return [options](const Console& console) {
        if (options->output && !options->metrics) {
            wrongUse("`--output` goes with `--metrics`");
        }
        return options->metrics ? metricsAnswer(console, options->output) : statusAnswer(console);
    };
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
        {"status",
         "[--metrics [--output FILE]]",
         "whether the firewall is enabled, and with what",
         status,
         nullptr},
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
