#include "command/answers/planAnswer.h"

#include <ostream>

#include "command/plan/plan.h"
#include "command/words/suggestion.h"

namespace zamofw {
namespace {

enum class Format { kLines, kLinesWithOrigins, kRestore, kJson };

Format formatOf(const Console& console, const std::optional<std::string>& word) {
    if (!word) {
        const Format lines = console.isTerminal ? Format::kLinesWithOrigins : Format::kLines;
        return console.json ? Format::kJson : lines;
    }
    if (*word == "json") {
        return Format::kJson;
    }
    if (*word != "lines" && *word != "restore") {
        const std::string nearMiss = suggestion(*word, {"lines", "restore", "json"});
        wrongUse("`" + *word + "` is no format of a plan",
                 nearMiss.empty() ? "formats are lines, restore and json" : nearMiss);
    }
    if (console.json) {
        wrongUse("--json and --format " + *word + " contradict each other",
                 "leave one of them out");
    }
    return *word == "lines" ? Format::kLines : Format::kRestore;
}

std::string textOf(const Plan& plan, Format format) {
    switch (format) {
        case Format::kLines:
            return planLines(plan);
        case Format::kLinesWithOrigins:
            return planLinesWithOrigins(plan);
        case Format::kRestore:
            return restoreInput(plan, 4) + restoreInput(plan, 6);
        case Format::kJson:
            return planJson(plan);
    }
    return "";
}

}  // namespace

Status planAnswer(const Console& console, const PlanRequest& request) {
    const Format format = formatOf(console, request.format);
    const Target target = readTarget(request.target);
    Plan plan = planProfile(profileOf(target));
    plan.profile = target.name;
    console.out << textOf(plan, format);
    return Status::kDone;
}

}  // namespace zamofw
