// The words of the commands about the whole configuration and its changes.

#include "command/answers/historyAnswers.h"
#include "command/answers/transferAnswers.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"
#include "command/words/quoting.h"
#include "command/words/values.h"

namespace zamofw {
namespace {

constexpr unsigned long kMostEntries = 1000000000;

Answer exportAll(CLI::App& app, const Words&) {
    const auto file = std::make_shared<std::optional<std::string>>();
    addOptional(app, "FILE", *file);
    return [file](const Console& console) { return exportAnswer(console, *file); };
}

Answer import(CLI::App& app, const Words& given) {
    const auto request = std::make_shared<ImportRequest>();
    addOperand(app, "FILE", request->file);
    app.add_flag("--plan", request->planOnly, "show what would change, and change nothing");
    addForce(app, request->force);
    return
        [request, given](const Console& console) { return importAnswer(console, given, *request); };
}

Answer log(CLI::App& app, const Words&) {
    const auto text = std::make_shared<std::optional<std::string>>();
    addOptional(app, "-n", *text, "only the last N changes");
    return [text](const Console& console) {
        std::optional<std::size_t> count;
        if (*text) {
            count = numberFromText(**text, kMostEntries);
            if (!count) {
                wrongUse(shown(**text) + " is no number of changes", "say a number: -n 10");
            }
        }
        return logAnswer(console, count);
    };
}

Answer undo(CLI::App&, const Words& given) {
    return [given](const Console& console) { return undoAnswer(console, given); };
}

}  // namespace

Commands historyCommands() {
    return {
        {"export", "[FILE]", "the whole configuration as one document", exportAll, nullptr},
        {"import", "FILE [--plan] [--force]", "replace the whole configuration", import, nullptr},
        {"log", "[-n N]", "who changed what", log, nullptr},
        {"undo", "", "take the last change back", undo, nullptr},
    };
}

}  // namespace zamofw
