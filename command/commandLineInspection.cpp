// The words of the commands that look at profiles.

#include "command/answers/assertAnswer.h"
#include "command/answers/checkAnswer.h"
#include "command/answers/diffAnswer.h"
#include "command/answers/explainAnswer.h"
#include "command/answers/matrixAnswer.h"
#include "command/answers/meaningAnswer.h"
#include "command/answers/planAnswer.h"
#include "command/answers/systemNames.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

Answer plan(CLI::App& app, const Words&) {
    const auto request = std::make_shared<PlanRequest>();
    addTarget(app, request->target);
    addOptional(app, "--format", request->format, "lines, restore or json");
    return [request](const Console& console) { return planAnswer(console, *request); };
}

Answer check(CLI::App& app, const Words&) {
    const auto request = std::make_shared<CheckRequest>();
    addTarget(app, request->target);
    app.add_flag("--all", request->all, "every stored profile");
    addOptional(app, "--client", request->client, "an address that must not be locked out");
    addOptional(app, "--port", request->port, "the port that it must reach; 22");
    return [request](const Console& console) { return checkAnswer(console, *request); };
}

Answer explain(CLI::App& app, const Words&) {
    const auto request = std::make_shared<ExplainRequest>();
    addTarget(app, request->target);
    app.add_option("--in", request->in, "the interface that the packet comes in on")->required();
    addOptional(app, "--out", request->out, "the one it goes out on; then it is forwarded");
    addOptional(app, "--from", request->from, "its source; one that no rule names when not said");
    addOptional(app, "--to", request->to, "its destination, likewise");
    addOptional(app, "--family", request->family, "4 or 6, where no address says it; 4");
    app.add_option("--proto", request->protocol, "tcp, udp, icmp, igmp, a number or other")
        ->required();
    addOptional(app, "--port", request->port, "its destination port");
    addOptional(app, "--source-port", request->sourcePort, "its source port");
    addOptional(app, "--state", request->state, "new or established; new");
    return [request](const Console& console) { return explainAnswer(console, *request); };
}

Answer matrix(CLI::App& app, const Words&) {
    const auto request = std::make_shared<MatrixRequest>();
    addTarget(app, request->target);
    addOptional(app, "--in", request->in, "one interface; all that rules name, and all others");
    addOptional(app, "--to", request->to, "the destination; one that no rule names when not said");
    return [request](const Console& console) { return matrixAnswer(console, *request); };
}

Answer diff(CLI::App& app, const Words&) {
    const auto request = std::make_shared<DiffRequest>();
    app.add_option("PROFILE", request->profiles)->expected(0, 2);
    app.add_option("--file", request->files, "a document that is not stored; - is standard input")
        ->allow_extra_args(false);
    app.add_flag("--meaning", request->isAboutMeaning, "the packets whose verdict changes");
    return [request](const Console& console) {
        if (request->isAboutMeaning) {
            return meaningAnswer(console, *request);
        }
        request->wordsOf = [vocabulary = systemVocabulary()](const FW::FWRULE& rule) {
            return wordsOfRule(rule, vocabulary);
        };
        return diffAnswer(console, *request);
    };
}

Answer assertIntents(CLI::App& app, const Words&) {
    const auto request = std::make_shared<AssertRequest>();
    addOperand(app, "FILE", request->file);
    addTarget(app, request->target);
    return [request](const Console& console) { return assertAnswer(console, *request); };
}

}  // namespace

Commands inspectionCommands() {
    return {
        {"check",
         "[PROFILE] [--file FILE] [--all] [--client ADDRESS [--port N]]",
         "what is wrong with a profile, and what looks wrong",
         check,
         nullptr},
        {"plan",
         "[PROFILE] [--file FILE] [--format lines|restore|json]",
         "the lines of a profile, with their rules",
         plan,
         nullptr},
        {"explain",
         "[PROFILE] [--file FILE] --in INTERFACE --proto P [--out INTERFACE] [--from ADDRESS] [--to "
         "ADDRESS] [--family 4|6] [--port N] [--source-port N] [--state new|established]",
         "what happens to a packet, and why",
         explain,
         nullptr},
        {"matrix",
         "[PROFILE] [--file FILE] [--in INTERFACE] [--to ADDRESS]",
         "which sources may reach what",
         matrix,
         nullptr},
        {"diff",
         "[A] [B] [--file FILE] [--meaning]",
         "what differs between two profiles",
         diff,
         nullptr},
        {"assert",
         "FILE [PROFILE] [--file FILE]",
         "whether intents hold for every packet",
         assertIntents,
         nullptr},
    };
}

}  // namespace zamofw
