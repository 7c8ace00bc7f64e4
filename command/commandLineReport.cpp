// The words of the report.

#include "command/answers/reportAnswer.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

Answer report(CLI::App& app, const std::vector<std::string>&) {
    const auto file = std::make_shared<std::string>();
    addOperand(app, "FILE", *file);
    return [file](const Console& console) { return reportAnswer(console, *file); };
}

}  // namespace

Commands reportCommands() {
    return {{"report",
             "FILE.html",
             "one page about the firewall, to read or to print",
             report,
             nullptr}};
}

}  // namespace zamofw
