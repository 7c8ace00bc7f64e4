// The `rule` commands that change a profile.

#include <algorithm>
#include <iterator>

#include "command/answers/operands.h"
#include "command/answers/profileChange.h"
#include "command/answers/ruleAnswers.h"
#include "command/answers/systemNames.h"
#include "command/words/policyWord.h"
#include "command/words/quoting.h"
#include "command/words/ruleWords.h"
#include "command/words/suggestion.h"
#include "command/words/values.h"

namespace zamofw {
namespace {

using RuleList = std::vector<FW::FWRULE>;

struct Operands {
    bool force = false;
    std::vector<std::string> words;  // PROFILE, ADAPTER and what follows them

    const std::string& profile() const { return words[0]; }
    const std::string& adapter() const { return words[1]; }
};

Operands operandsOf(const Call& call, const std::string& usage) {
    Operands operands;
    operands.words = call.words;
    operands.force = takeFlag("--force", operands.words);
    checkOperands(operands.words, usage, {"--force"});
    return operands;
}

FW::FWRULE ruleOf(const Operands& operands, std::size_t begin) {
    return ruleFromWords({operands.words.begin() + static_cast<long>(begin), operands.words.end()},
                         systemVocabulary());
}

// A verdict in the place of an operand means that an operand before it was left out.
Operands ruleOperandsOf(const Call& call, const std::string& usage, std::size_t count) {
    Operands operands = operandsOf(call, usage);
    for (std::size_t i = 1; i < count; ++i) {
        if (policyFromWord(operands.words[i])) {
            wrongUse("a word is missing before " + shown(operands.words[i]),
                     "usage: zamofw " + usage);
        }
    }
    return operands;
}

// The rules of an adapter that has some.
RuleList& rulesOf(const std::string& adapter, FW::FWPROFILE& profile) {
    const auto found = profile.rules.find(adapter);
    if (found != profile.rules.end() && !found->second.empty()) {
        return found->second;
    }
    std::vector<std::string> others;
    for (const auto& [name, rules] : profile.rules) {
        others.push_back(name);
    }
    const std::string near = suggestion(adapter, others);
    wrongUse("the profile " + shown(profile.name) + " has no rule for the adapter " +
                 shown(adapter) + (near.empty() ? "" : ": " + near),
             "`zamofw rule list " + shellQuoted({profile.name}) + "` shows its rules");
}

std::string nameOfList(const std::string& adapter) {
    return "the rules of " + shown(adapter);
}

// Position 1 is the begin of the list.
RuleList::iterator at(RuleList& rules, std::size_t position) {
    return std::next(rules.begin(), static_cast<long>(position) - 1);
}

std::string ruleText(std::size_t position, const Operands& operands) {
    return "rule " + std::to_string(position) + " of " + operands.adapter() + " in " +
           operands.profile();
}

// What a command does to the rule at a position, and the word for it: "replaced", "removed".
using Edit = std::function<void(RuleList& rules, RuleList::iterator rule)>;

Status changeAtPosition(const Console& console,
                        const Call& call,
                        const Operands& operands,
                        const std::string& done,
                        const Edit& edit) {
    const auto apply = [&](FW::FWPROFILE& profile) {
        RuleList& rules = rulesOf(operands.adapter(), profile);
        const std::size_t position =
            positionFromText(operands.words[2], rules.size(), nameOfList(operands.adapter()));
        edit(rules, at(rules, position));
        if (rules.empty()) {
            profile.rules.erase(operands.adapter());
        }
        return ruleText(position, operands) + " is " + done;
    };
    return changeProfile(console, call, {operands.profile(), operands.force, apply});
}

Status setEnabled(const Console& console, const Call& call, bool enabled) {
    const std::string name = enabled ? "enable" : "disable";
    const Operands operands = operandsOf(call, "rule " + name + " PROFILE ADAPTER POSITION");
    return changeAtPosition(
        console, call, operands, name + "d", [enabled](RuleList&, RuleList::iterator rule) {
            rule->enable = enabled;
        });
}

}  // namespace

Status ruleAdd(const Console& console, const Call& call) {
    const Operands operands = ruleOperandsOf(call, "rule add PROFILE ADAPTER WORDS", 2);
    checkAdapterName(operands.adapter());
    const FW::FWRULE rule = ruleOf(operands, 2);
    const auto apply = [&](FW::FWPROFILE& profile) {
        RuleList& rules = profile.rules[operands.adapter()];
        rules.push_back(rule);
        return ruleText(rules.size(), operands) + " is added";
    };
    return changeProfile(console, call, {operands.profile(), operands.force, apply});
}

Status ruleInsert(const Console& console, const Call& call) {
    const Operands operands = ruleOperandsOf(call, "rule insert PROFILE ADAPTER POSITION WORDS", 3);
    const FW::FWRULE rule = ruleOf(operands, 3);
    return changeAtPosition(
        console, call, operands, "inserted", [&](RuleList& rules, RuleList::iterator before) {
            rules.insert(before, rule);
        });
}

Status ruleReplace(const Console& console, const Call& call) {
    const Operands operands =
        ruleOperandsOf(call, "rule replace PROFILE ADAPTER POSITION WORDS", 3);
    const FW::FWRULE rule = ruleOf(operands, 3);
    return changeAtPosition(
        console, call, operands, "replaced", [&](RuleList&, RuleList::iterator old) {
            *old = rule;
        });
}

Status ruleRemove(const Console& console, const Call& call) {
    const Operands operands = operandsOf(call, "rule remove PROFILE ADAPTER POSITION");
    return changeAtPosition(
        console, call, operands, "removed", [](RuleList& rules, RuleList::iterator rule) {
            rules.erase(rule);
        });
}

Status ruleEnable(const Console& console, const Call& call) {
    return setEnabled(console, call, true);
}

Status ruleDisable(const Console& console, const Call& call) {
    return setEnabled(console, call, false);
}

Status ruleMove(const Console& console, const Call& call) {
    const Operands operands = operandsOf(call, "rule move PROFILE ADAPTER FROM TO");
    const auto apply = [&](FW::FWPROFILE& profile) {
        RuleList& rules = rulesOf(operands.adapter(), profile);
        const std::string list = nameOfList(operands.adapter());
        const std::size_t from = positionFromText(operands.words[2], rules.size(), list);
        const std::size_t to = positionFromText(operands.words[3], rules.size(), list);
        if (from < to) {
            std::rotate(at(rules, from), at(rules, from) + 1, at(rules, to) + 1);
        } else {
            std::rotate(at(rules, to), at(rules, from), at(rules, from) + 1);
        }
        return ruleText(from, operands) + " is now rule " + std::to_string(to);
    };
    return changeProfile(console, call, {operands.profile(), operands.force, apply});
}

}  // namespace zamofw
