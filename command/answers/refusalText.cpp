#include "command/answers/refusalText.h"

#include "command/apply/rehearsal.h"
#include "command/console.h"
#include "command/plan/plan.h"

namespace zamofw {
namespace {

std::string originOf(const Refusal& refusal) {
    PlannedLine origin = {
        refusal.line, refusal.adapter, LineKind::kRule, refusal.position, refusal.name};
    if (!refusal.position) {
        origin.kind = refusal.adapter.empty() ? LineKind::kBuiltIn : LineKind::kDefault;
    }
    return originText(origin);
}

Json::Value toJson(const Refusal& refusal) {
    Json::Value entry;
    entry["family"] = refusal.family;
    entry["line"] = refusal.line;
    entry["adapter"] = refusal.adapter;
    entry["position"] =
        refusal.position ? Json::Value(Json::UInt64{*refusal.position}) : Json::Value();
    entry["name"] = refusal.name;
    entry["message"] = refusal.message;
    return entry;
}

// All of them; none where they cannot be tried.
std::string refusedLines(const Plan& plan) try {
    return refusalsText(rehearse(plan));
} catch (const Failure&) {
    return "";
}

}  // namespace

std::string refusalsText(const std::vector<Refusal>& refused) {
    std::string text;
    for (const Refusal& refusal : refused) {
        text +=
            "IPv" + std::to_string(refusal.family) + ": " +
            (refusal.line.empty() ? "a line was refused, and it is not known which"
                                  : "refused: " + refusal.line + "\n  from " + originOf(refusal)) +
            "\n  " + refusal.message + "\n";
    }
    return text;
}

void failedLineByLine(const Plan& plan, const std::string& what) {
    const std::string refused = refusedLines(plan);
    failed(refused + what,
           refused.empty() ? "the lines of the system log say which command failed"
                           : "mend the rule, for instance with `zamofw rule replace`");
}

Json::Value refusalsJson(const std::vector<Refusal>& refused) {
    Json::Value list(Json::arrayValue);
    for (const Refusal& refusal : refused) {
        list.append(toJson(refusal));
    }
    return list;
}

}  // namespace zamofw
