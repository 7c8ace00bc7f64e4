// The words of the commands that try rules, and of those that the system calls.

#include "command/answers/bootAnswers.h"
#include "command/answers/trialAnswers.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

Answer tryProfile(CLI::App& app, const Words&) {
    struct Options {
        TryRequest request;
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    TryRequest& request = options->request;
    addTarget(app, request.target);
    addOptional(app, "--client", request.client, "the address that must still get in");
    addOptional(app, "--seconds", request.seconds, "how long to wait for `confirm`; else 60");
    app.add_flag("--allow-lockout",
                 request.allowsLockout,
                 "try it even though the client would be locked out");
    addForce(app, options->force);
    return [options](const Console& console) {
        if (!options->request.target.profile && !options->request.target.file) {
            wrongUse("PROFILE is missing", "say which profile or file to try");
        }
        options->request.errors = options->force ? Errors::kShow : Errors::kRefuse;
        return tryAnswer(console, options->request);
    };
}

Answer confirm(CLI::App&, const Words& given) {
    return [given](const Console& console) { return confirmAnswer(console, given); };
}

Answer revert(CLI::App& app, const Words&) {
    const auto whenDue = std::make_shared<bool>(false);
    app.add_flag("--when-due", *whenDue, "wait until its time is over; this is the trial's timer");
    return [whenDue](const Console& console) {
        return *whenDue ? revertWhenDue(console) : revertAnswer(console);
    };
}

Answer start(CLI::App&, const Words&) {
    return startAnswer;
}

Answer stop(CLI::App&, const Words&) {
    return stopAnswer;
}

}  // namespace

Commands trialCommands() {
    return {
        {"try",
         "PROFILE [--file FILE] [--client ADDRESS] [--seconds N] [--allow-lockout] [--force]",
         "put a profile into force until it is confirmed in time or taken back",
         tryProfile,
         nullptr},
        {"confirm", "", "keep what is on trial", confirm, nullptr},
        {"revert", "[--when-due]", "take the trial back now", revert, nullptr},
        {"start", "", "what the system calls at its start: chains, then rules", start, nullptr},
        {"stop", "", "open the door until `start`; nothing stored changes", stop, nullptr},
    };
}

}  // namespace zamofw
