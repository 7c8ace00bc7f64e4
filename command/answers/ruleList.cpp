// `rule list`

#include <ostream>
#include <set>

#include "command/answers/operands.h"
#include "command/answers/profileStore.h"
#include "command/answers/ruleAnswers.h"
#include "command/answers/ruleHits.h"
#include "command/answers/ruleRecords.h"
#include "command/answers/ruleText.h"
#include "command/answers/systemNames.h"
#include "command/jsonLine.h"
#include "command/plan/plan.h"
#include "command/words/policyWord.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"
#include "zamofirewall/controller.h"

namespace zamofw {
namespace {

struct Request {
    bool hits = false;
    std::optional<std::string> file;
    std::optional<std::string> profile;
    std::optional<std::string> adapter;
};

Request requestOf(const Call& call) {
    std::vector<std::string> words = call.words;
    Request request;
    request.hits = takeFlag("--hits", words);
    request.file = takeValue("--file", words);
    checkOperands(
        words,
        request.file ? "rule list [ADAPTER] --file FILE" : "rule list [PROFILE] [ADAPTER] [--hits]",
        {"--hits", "--file"});
    if (!words.empty() && !request.file) {
        request.profile = words.front();
        words.erase(words.begin());
    }
    if (!words.empty()) {
        request.adapter = words.front();
    }
    return request;
}

// Those that have rules or a default, or the one that was asked for.
std::set<std::string> adaptersOf(const FW::FWPROFILE& profile,
                                 const std::optional<std::string>& wanted) {
    std::set<std::string> adapters;
    for (const auto& [adapter, rules] : profile.rules) {
        adapters.insert(adapter);
    }
    for (const auto& [adapter, policy] : profile.adapterPolicyMap) {
        adapters.insert(adapter);
    }
    if (!wanted) {
        return adapters;
    }
    if (adapters.count(*wanted) == 0) {
        std::set<std::string> present;
        (void)FW::ZAMOFW().fwAdapterEnum(present);
        if (present.count(*wanted) == 0) {
            const std::string near = suggestion(*wanted, {adapters.begin(), adapters.end()});
            wrongUse("the profile " + shown(profile.name) + " has nothing for an adapter " +
                         shown(*wanted) + (near.empty() ? "" : ": " + near),
                     "`zamofw rule list " + shellQuoted({profile.name}) +
                         "` shows the rules of all adapters");
        }
    }
    return {*wanted};
}

RuleHits hitsInForce(const FW::FWPROFILE& profile, const Request& request) {
    const std::string inForce = profileNameInForce();
    if (request.file || request.profile.value_or(inForce) != inForce) {
        wrongUse("--hits counts the rules in force, which are those of " + shown(inForce),
                 "say `zamofw rule list --hits`");
    }
    requireRoot("reading the kernel's counters");
    const std::optional<RuleHits> hits = hitsOf(planProfile(profile), kernelChain);
    if (!hits) {
        failed("the kernel does not hold the rules of " + shown(inForce) +
                   ", so their packets are not known",
               "put them into force with `zamofw reload` (`zamofw enable` when the firewall is "
               "disabled)");
    }
    return *hits;
}

std::vector<ListedRule> listedRules(const std::string& adapter,
                                    const std::vector<FW::FWRULE>& rules,
                                    const Vocabulary& vocabulary,
                                    const std::optional<RuleHits>& hits) {
    const Json::Value records = ruleRecords(rules);
    std::vector<ListedRule> list;
    for (const FW::FWRULE& rule : rules) {
        ListedRule listed;
        listed.position = list.size() + 1;
        listed.rule = rule;
        listed.words = wordsOfRule(rule, vocabulary);
        listed.record = jsonLine(records[static_cast<Json::ArrayIndex>(list.size())]);
        if (hits) {
            const auto counted = hits->find({adapter, listed.position});
            listed.hits = counted == hits->end() ? Hits{} : counted->second;
        }
        list.push_back(std::move(listed));
    }
    return list;
}

using Listing = std::map<std::string, std::vector<ListedRule>>;

Listing listingOf(const FW::FWPROFILE& profile, const Request& request) {
    const std::set<std::string> adapters = adaptersOf(profile, request.adapter);
    std::optional<RuleHits> hits;
    if (request.hits) {
        hits = hitsInForce(profile, request);
    }
    const Vocabulary vocabulary = systemVocabulary();
    Listing listing;
    for (const std::string& adapter : adapters) {
        const auto rules = profile.rules.find(adapter);
        listing[adapter] = rules == profile.rules.end()
                               ? std::vector<ListedRule>()
                               : listedRules(adapter, rules->second, vocabulary, hits);
    }
    return listing;
}

Json::Value jsonOfRule(const std::string& adapter, const ListedRule& listed, Json::Value record) {
    Json::Value json(Json::objectValue);
    json["adapter"] = adapter;
    json["position"] = static_cast<Json::UInt64>(listed.position);
    json["words"] = listed.words ? Json::Value(shellQuoted(*listed.words)) : Json::Value();
    json["rule"] = std::move(record);
    if (listed.hits) {
        json["packets"] = static_cast<Json::UInt64>(listed.hits->packets);
        json["bytes"] = static_cast<Json::UInt64>(listed.hits->bytes);
    }
    return json;
}

void printJson(std::ostream& out, const FW::FWPROFILE& profile, const Listing& listing) {
    Json::Value json(Json::objectValue);
    json["profile"] = profile.name;
    json["rules"] = Json::Value(Json::arrayValue);
    json["policies"] = Json::Value(Json::objectValue);
    for (const auto& [adapter, rules] : listing) {
        const auto stored = profile.rules.find(adapter);
        const Json::Value records =
            stored == profile.rules.end() ? Json::Value() : ruleRecords(stored->second);
        for (const ListedRule& rule : rules) {
            json["rules"].append(jsonOfRule(
                adapter, rule, records[static_cast<Json::ArrayIndex>(rule.position - 1)]));
        }
        const auto policy = profile.adapterPolicyMap.find(adapter);
        if (policy != profile.adapterPolicyMap.end()) {
            json["policies"][adapter] = policyText(policy->second);
        }
    }
    out << jsonLine(json) << "\n";
}

std::string heading(const FW::FWPROFILE& profile, const std::string& adapter) {
    const auto policy = profile.adapterPolicyMap.find(adapter);
    return adapter + (policy == profile.adapterPolicyMap.end()
                          ? " (no default)"
                          : " (default " + policyText(policy->second) + ")");
}

}  // namespace

Status ruleList(const Console& console, const Call& call) {
    const Request request = requestOf(call);
    const FW::FWPROFILE profile = readableProfile(readTarget({request.profile, request.file}));
    const Listing listing = listingOf(profile, request);
    if (console.json) {
        printJson(console.out, profile, listing);
        return Status::kDone;
    }
    for (const auto& [adapter, rules] : listing) {
        // The lines of one adapter are for programs, and need no heading.
        if (console.isTerminal || !request.adapter) {
            console.out << heading(profile, adapter) << "\n";
        }
        if (console.isTerminal) {
            printRuleTable(console.out, rules, console.color);
            continue;
        }
        for (const ListedRule& rule : rules) {
            console.out << ruleLine(rule) << "\n";
        }
    }
    return Status::kDone;
}

}  // namespace zamofw
