#include "command/answers/diffAnswer.h"

#include <json/value.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <ostream>
#include <set>
#include <utility>

#include "command/answers/ruleRecords.h"
#include "command/document/target.h"
#include "command/jsonLine.h"
#include "command/plan/lineDiff.h"
#include "command/plan/plan.h"
#include "command/words/policyWord.h"
#include "command/words/quoting.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

using Texts = std::vector<std::string>;

struct Side {
    Target target;
    FW::FWPROFILE profile;
    Plan plan;
};

std::vector<TargetWords> targetsOf(const DiffRequest& request) {
    std::vector<TargetWords> targets;
    for (const std::string& profile : request.profiles) {
        targets.push_back({profile, std::nullopt});
    }
    for (const std::string& file : request.files) {
        targets.push_back({std::nullopt, file});
    }
    if (targets.empty() || targets.size() > 2) {
        wrongUse(targets.empty() ? "nothing is named to compare the profile in force with"
                                 : "only two profiles can be compared",
                 "`zamofw diff B` compares the profile in force with B, `zamofw diff A B` A with "
                 "B; each is a profile or a file");
    }
    if (targets.size() == 1) {
        targets.insert(targets.begin(), TargetWords());
    }
    const auto isInput = [](const TargetWords& words) {
        return words.profile.value_or(words.file.value_or("")) == "-";
    };
    if (std::all_of(targets.begin(), targets.end(), isInput)) {
        wrongUse("standard input cannot be both sides", "name a file for one of them");
    }
    return targets;
}

Side readSide(Target target) {
    Side side;
    side.target = std::move(target);
    side.profile = profileOf(side.target);
    try {
        side.plan = planProfile(side.profile);
    } catch (const Failure& failure) {
        throw Failure(failure.status(), side.target.name + ": " + failure.what(), failure.remedy());
    }
    return side;
}

Json::Value recordOf(const FW::FWRULE& rule) {
    Json::Value record = ruleRecords({rule})[0];
    record.removeMember("ruleIndex");
    return record;
}

// A rule as it is shown.
struct ShownRule {
    Json::Value record;
    std::optional<std::string> words;

    [[nodiscard]] std::string text() const { return words ? *words : jsonLine(record); }
};

// What one side has in a section, as texts.
Texts textsOf(const std::vector<ShownRule>& rules) {
    Texts texts;
    for (const ShownRule& rule : rules) {
        texts.push_back(rule.text());
    }
    return texts;
}

Texts policyTexts(const FW::FWPROFILE& profile) {
    Texts texts;
    for (const auto& [adapter, policy] : profile.adapterPolicyMap) {
        texts.push_back(shellQuoted({adapter, policyText(policy)}));
    }
    return texts;
}

Texts lineTexts(const std::vector<PlannedLine>& lines, const FW::Family& family) {
    Texts texts;
    for (const PlannedLine& line : lines) {
        texts.push_back(std::string(family.program) + " " + line.line);
    }
    return texts;
}

// The difference, as text and as JSON.
class Comparison {
  public:
    Comparison(const Side& a, const Side& b, const DiffRequest& request)
        : a_(a), b_(b), request_(request) {
        std::set<std::string> adapters;
        for (const Side* const side : {&a_, &b_}) {
            for (const auto& [adapter, rules] : side->profile.rules) {
                adapters.insert(adapter);
            }
        }
        for (const char* const side : {"removed", "added"}) {
            json_[side] = Json::arrayValue;
            json_["rules"][side] = Json::arrayValue;
            json_["policies"][side] = Json::objectValue;
        }
        for (const std::string& adapter : adapters) {
            compareRules(adapter);
        }
        comparePolicies();
        compareLines(a_.plan.v4, b_.plan.v4, FW::kIpv4, 4);
        compareLines(a_.plan.v6, b_.plan.v6, FW::kIpv6, 6);
        json_["same"] = hunks_.empty();
    }

    [[nodiscard]] bool isSame() const { return hunks_.empty(); }
    [[nodiscard]] const Json::Value& json() const { return json_; }
    [[nodiscard]] std::string text() const {
        return isSame() ? "" : "--- " + titleOf(a_) + "\n+++ " + titleOf(b_) + "\n" + hunks_;
    }

  private:
    static std::string titleOf(const Side& side) {
        const bool isFile = side.target.name == side.target.document.file;
        return side.target.name + (isFile ? "" : "\t" + side.target.document.file);
    }

    // Appends the hunks of a section, and hands each change to `note`: whether it is an addition,
    // and the index on its side.
    template <typename Note>
    void compare(const Texts& a, const Texts& b, const std::string& title, Note note) {
        const std::vector<Edit> edits = lineDiff(a, b);
        hunks_ += unifiedHunks(a, b, edits, title);
        for (const Edit& edit : edits) {
            if (edit.kind != Edit::Kind::kSame) {
                const bool isAdded = edit.kind == Edit::Kind::kAdded;
                note(isAdded, isAdded ? edit.newIndex : edit.oldIndex);
            }
        }
    }

    [[nodiscard]] std::vector<ShownRule> shownRules(const FW::FWPROFILE& profile,
                                                    const std::string& adapter) const {
        std::vector<ShownRule> shown;
        const auto rules = profile.rules.find(adapter);
        for (const FW::FWRULE& rule :
             rules == profile.rules.end() ? std::vector<FW::FWRULE>() : rules->second) {
            const std::optional<Texts> words = request_.wordsOf(rule);
            shown.push_back(
                {recordOf(rule), words ? std::optional(shellQuoted(*words)) : std::nullopt});
        }
        return shown;
    }

    void compareRules(const std::string& adapter) {
        const std::vector<ShownRule> a = shownRules(a_.profile, adapter);
        const std::vector<ShownRule> b = shownRules(b_.profile, adapter);
        const auto note = [&](bool isAdded, std::size_t index) {
            const ShownRule& rule = (isAdded ? b : a)[index];
            Json::Value entry;
            entry["adapter"] = adapter;
            entry["position"] = Json::UInt64{index + 1};
            entry["words"] = rule.words ? Json::Value(*rule.words) : Json::Value();
            entry["rule"] = rule.record;
            json_["rules"][isAdded ? "added" : "removed"].append(entry);
        };
        compare(textsOf(a), textsOf(b), "rules of " + adapter, note);
    }

    void comparePolicies() {
        compare(policyTexts(a_.profile),
                policyTexts(b_.profile),
                "default policies",
                [this](bool isAdded, std::size_t index) {
                    const auto& policies = (isAdded ? b_ : a_).profile.adapterPolicyMap;
                    const auto entry =
                        std::next(policies.begin(), static_cast<std::ptrdiff_t>(index));
                    json_["policies"][isAdded ? "added" : "removed"][entry->first] =
                        policyText(entry->second);
                });
    }

    void compareLines(const std::vector<PlannedLine>& a,
                      const std::vector<PlannedLine>& b,
                      const FW::Family& family,
                      int number) {
        compare(lineTexts(a, family),
                lineTexts(b, family),
                "lines of IPv" + std::to_string(number),
                [&](bool isAdded, std::size_t index) {
                    Json::Value entry = lineJson((isAdded ? b : a)[index]);
                    entry["family"] = number;
                    json_[isAdded ? "added" : "removed"].append(entry);
                });
    }

    const Side& a_;
    const Side& b_;
    const DiffRequest& request_;
    std::string hunks_;
    Json::Value json_;
};

std::string colored(const std::string& text) {
    std::string result;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin);
        const char* const color = text[begin] == '-'   ? "\033[31m"
                                  : text[begin] == '+' ? "\033[32m"
                                  : text[begin] == '@' ? "\033[36m"
                                                       : "";
        result += color + text.substr(begin, end - begin) + (*color == '\0' ? "" : "\033[0m");
        result += '\n';
        begin = end + 1;
    }
    return result;
}

}  // namespace

std::vector<Target> diffTargets(const DiffRequest& request) {
    std::vector<Target> targets;
    for (const TargetWords& words : targetsOf(request)) {
        targets.push_back(readTarget(words));
    }
    return targets;
}

Status diffAnswer(const Console& console, const DiffRequest& request) {
    std::vector<Target> targets = diffTargets(request);
    const Side a = readSide(std::move(targets[0]));
    const Side b = readSide(std::move(targets[1]));
    const Comparison comparison(a, b, request);
    if (console.json) {
        console.out << jsonLine(comparison.json()) << "\n";
    } else {
        console.out << (console.color ? colored(comparison.text()) : comparison.text());
    }
    return comparison.isSame() ? Status::kDone : Status::kNo;
}

}  // namespace zamofw
