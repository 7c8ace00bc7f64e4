#include "command/answers/verifyAnswer.h"

#include <json/value.h>

#include <algorithm>
#include <ostream>

#include "command/answers/kernelMatch.h"
#include "command/answers/table.h"
#include "command/apply/trialState.h"
#include "command/jsonLine.h"

namespace zamofw {
namespace {

using Kind = Difference::Kind;

constexpr int kSecondsForReload = 5;

Json::Value toJson(const Difference& difference) {
    const PlannedLine origin = difference.origin.value_or(PlannedLine());
    Json::Value json;
    json["family"] = difference.family;
    json["kind"] = kindName(difference.kind);
    json["chain"] = difference.chain;
    json["line"] = difference.line;
    json["adapter"] = origin.adapter;
    json["position"] =
        origin.position ? Json::Value(Json::UInt64{*origin.position}) : Json::Value();
    json["name"] = origin.name;
    return json;
}

void showJson(const Console& console, const std::vector<Difference>& differences) {
    Json::Value document;
    document["ok"] = differences.empty();
    document["differences"] = Json::arrayValue;
    for (const Difference& difference : differences) {
        document["differences"].append(toJson(difference));
    }
    console.out << jsonLine(document) << "\n";
}

void showDifference(const Console& console, const Difference& difference) {
    console.out << "IPv" << difference.family << " " << difference.chain << ": "
                << kindName(difference.kind) << ": " << difference.line << "\n";
    if (difference.origin) {
        console.out << "  from " << originText(*difference.origin) << "\n";
    }
}

const char* remedyFor(const KernelMatch& match) {
    const std::vector<Difference>& differences = match.differences;
    const bool lacksChain =
        std::any_of(differences.begin(), differences.end(), [](const Difference& difference) {
            return difference.kind == Kind::kChain || difference.kind == Kind::kJump;
        });
    if (lacksChain) {
        return "`zamofw doctor --repair` makes the chains and jumps, and puts the rules into them";
    }
    return match.expected.isEnabled
               ? "`zamofw reload` makes the kernel what is stored; `zamofw doctor` looks for the "
                 "cause"
               : "`zamofw disable` empties the firewall's chains; `zamofw doctor` looks for the "
                 "cause";
}

void showText(const Console& console, const KernelMatch& match) {
    for (const Difference& difference : match.differences) {
        showDifference(console, difference);
    }
    const ShouldBe& expected = match.expected;
    const std::size_t lines = expected.plan.v4.size() + expected.plan.v6.size();
    const std::string profile = "profile `" + expected.plan.profile + "`";
    if (match.differences.empty()) {
        console.out << (expected.isEnabled
                            ? "the kernel holds the " + counted(lines, "line") + " of the " +
                                  profile + ", and nothing else\n"
                            : "the firewall is disabled, and the kernel holds nothing of it\n");
        return;
    }
    console.out << counted(match.differences.size(), "difference") << " between the kernel and "
                << (expected.isEnabled ? "the " + profile : "a firewall that is disabled") << "\n  "
                << remedyFor(match) << "\n";
}

// What explains the differences, for JSON on standard error.
void showReasons(const Console& console, const KernelMatch& match) {
    if (!match.reload.empty()) {
        console.err << match.reload << "; a reload explains differences\n";
    }
    try {
        const std::optional<TrialState> trial = readTrial();
        if (trial && !isStale(*trial)) {
            console.err << "a trial is under way until " << trial->until
                        << ": the kernel holds its rules instead\n";
        }
    } catch (const Failure& failure) {
        console.err << failure.what() << "\n";
    }
}

}  // namespace

Status verifyAnswer(const Console& console) {
    requireRoot("asking the kernel for its rules");
    const KernelMatch match = kernelMatch(kSecondsForReload);
    if (console.json) {
        showJson(console, match.differences);
    } else {
        showText(console, match);
    }
    if (!match.differences.empty()) {
        showReasons(console, match);
    }
    return match.differences.empty() ? Status::kDone : Status::kNo;
}

}  // namespace zamofw
