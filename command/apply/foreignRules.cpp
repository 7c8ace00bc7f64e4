#include "command/apply/foreignRules.h"

#include <algorithm>
#include <array>
#include <functional>
#include <set>

#include "command/apply/jumps.h"

namespace zamofw {
namespace {

using Lines = std::vector<std::string>;

// The word behind "-j" or "-g"; empty for a rule that only counts.
std::string targetOf(const std::string& rule) {
    const Lines words = splitRule(rule);
    const auto option = std::find_if(words.begin(), words.end(), [](const std::string& word) {
        return word == "-j" || word == "-g";
    });
    return option == words.end() || option + 1 == words.end() ? "" : *(option + 1);
}

// Packets go on to the next rule.
bool goesOn(const std::string& target) {
    static const std::set<std::string> kTargets = {
        "AUDIT", "CHECKSUM", "CLASSIFY", "CONNMARK",  "CONNSECMARK", "CT",     "DSCP",
        "ECN",   "HL",       "HMARK",    "IDLETIMER", "LED",         "LOG",    "MARK",
        "NFLOG", "NOTRACK",  "RATEEST",  "SECMARK",   "SET",         "TCPMSS", "TCPOPTSTRIP",
        "TEE",   "TOS",      "TRACE",    "TTL",       "ULOG"};
    return target.empty() || kTargets.count(target) != 0;
}

using Decides = std::function<bool(const std::string& target)>;

// Whether the rule, or one in a chain that it leads to, has a target that decides.
bool leadsToDecision(const std::string& rule,
                     const SavedTable& table,
                     const Decides& decides,
                     std::set<std::string>& seen) {
    const std::string target = targetOf(rule);
    const auto chain = table.find(target);
    if (chain == table.end()) {
        return decides(target);
    }
    if (!seen.insert(target).second) {
        return false;
    }
    return std::any_of(
        chain->second.rules.begin(), chain->second.rules.end(), [&](const std::string& next) {
            return targetOf(next) != "RETURN" && leadsToDecision(next, table, decides, seen);
        });
}

Lines decidingRules(const Lines& rules, const SavedTable& table, const Decides& decides) {
    Lines deciding;
    for (const std::string& rule : rules) {
        std::set<std::string> seen;
        if (leadsToDecision(rule, table, decides, seen)) {
            deciding.push_back(rule);
        }
    }
    return deciding;
}

void addDamage(int family,
               const std::string& place,
               const Lines& rules,
               const std::string& effect,
               Damages& damages) {
    constexpr std::size_t kMostShown = 10;
    if (rules.empty()) {
        return;
    }
    std::string message =
        "IPv" + std::to_string(family) + ": rules of another program in " + place + effect + ":";
    for (std::size_t i = 0; i < std::min(rules.size(), kMostShown); ++i) {
        message += "\n" + rules[i];
    }
    if (rules.size() > kMostShown) {
        message += "\nand " + std::to_string(rules.size() - kMostShown) + " more";
    }
    damages.push_back({"foreign-before",
                       message,
                       "if that is not meant, let the other program put them behind the "
                       "firewall's jumps, or remove them"});
}

// The rules in front of the jump to the firewall's chain.
Lines rulesBefore(const Hook& hook, const SavedTable& filter) {
    const Lines& rules = rulesOf(filter, hook.name);
    const Lines jumps = jumpsOf(hook);
    const auto end = std::find(rules.begin(), rules.end(), jumps.back());
    Lines before;
    if (end != rules.end()) {
        std::copy_if(rules.begin(), end, std::back_inserter(before), [&](const std::string& rule) {
            return rule != jumps.front();
        });
    }
    return before;
}

void addFromFilter(int family, const SavedTable& filter, Damages& damages) {
    const Decides decides = [](const std::string& target) { return !goesOn(target); };
    for (const Hook& hook : kHooks) {
        addDamage(family,
                  hook.name,
                  decidingRules(rulesBefore(hook, filter), filter, decides),
                  " decide before the firewall's do",
                  damages);
    }
}

// Only what drops a packet keeps it from the filter table.
void addFromEarlier(int family, const SavedTables& tables, Damages& damages) {
    const Decides decides = [](const std::string& target) { return target == "DROP"; };
    for (const char* const name : {"raw", "mangle"}) {
        const SavedTable& table = tableOf(tables, name);
        for (const char* const chain : {"PREROUTING", "INPUT", "FORWARD"}) {
            Lines rules = decidingRules(rulesOf(table, chain), table, decides);
            const auto state = table.find(chain);
            if (state != table.end() && state->second.policy == "DROP") {
                rules.push_back(std::string("-P ") + chain + " DROP");
            }
            addDamage(family,
                      std::string("the table ") + name,
                      rules,
                      " drop packets before the firewall sees them",
                      damages);
        }
    }
}

}  // namespace

Damages foreignDamages(const SavedFamilies& there) {
    Damages damages;
    addFromFilter(4, tableOf(there.v4, kFilterTable), damages);
    addFromEarlier(4, there.v4, damages);
    addFromFilter(6, tableOf(there.v6, kFilterTable), damages);
    addFromEarlier(6, there.v6, damages);
    return damages;
}

}  // namespace zamofw
