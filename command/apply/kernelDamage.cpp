#include "command/apply/kernelDamage.h"

#include <algorithm>

#include "command/apply/filterChange.h"
#include "command/apply/jumps.h"
#include "command/apply/programs.h"
#include "command/plan/plan.h"

namespace zamofw {
namespace {

using Lines = std::vector<std::string>;

const SavedTable& filterOf(const SavedFamilies& there, int family) {
    return tableOf(family == 4 ? there.v4 : there.v6, kFilterTable);
}

std::string familyText(int family) {
    return "IPv" + std::to_string(family) + ": ";
}

bool hasChain(const SavedTable& filter, const char* chain) {
    return filter.find(chain) != filter.end();
}

bool isClosed(const SavedTable& filter, const Hook& hook) {
    const auto chain = filter.find(hook.name);
    return chain != filter.end() && chain->second.policy != "ACCEPT";
}

Lines jumpTexts(const SavedTable& filter, const Hook& hook) {
    Lines texts;
    for (const std::size_t place : jumpsThere(hook, filter)) {
        texts.push_back(rulesOf(filter, hook.name)[place]);
    }
    return texts;
}

// The new pair of jumps comes in front before the old ones go.
void appendJumps(const SavedTable& filter, const Hook& hook, Lines& lines) {
    const Lines wanted = jumpsOf(hook);
    if (jumpTexts(filter, hook) == wanted) {
        return;
    }
    const std::string append = std::string("-A ") + hook.name;
    for (auto jump = wanted.rbegin(); jump != wanted.rend(); ++jump) {
        lines.push_back(std::string("-I ") + hook.name + " 1" + jump->substr(append.size()));
    }
    const std::vector<std::size_t> old = jumpsThere(hook, filter);
    for (auto place = old.rbegin(); place != old.rend(); ++place) {
        lines.push_back(std::string("-D ") + hook.name + " " +
                        std::to_string(*place + 1 + wanted.size()));
    }
}

Lines placeLines(const SavedTable& filter) {
    Lines lines;
    for (const char* const chain : kOurChains) {
        if (!hasChain(filter, chain)) {
            lines.push_back(std::string("-N ") + chain);
        }
    }
    for (const Hook& hook : kHooks) {
        appendJumps(filter, hook, lines);
    }
    return lines;
}

// The policies first: closed, they would cut the connections that the guard rules let through.
Lines doorLines(const SavedTable& filter, Rules rules) {
    Lines lines;
    for (const Hook& hook : kHooks) {
        if (isClosed(filter, hook)) {
            lines.push_back(std::string("-P ") + hook.name + " ACCEPT");
        }
    }
    for (const char* const chain : kOurChains) {
        const bool mustBeEmpty = rules == Rules::kEmpty || chain == FW::kReloadingChain;
        if (mustBeEmpty && !rulesOf(filter, chain).empty()) {
            lines.push_back(std::string("-F ") + chain);
        }
    }
    return lines;
}

bool hasLinesFor(const std::vector<PlannedLine>& lines, const char* chain) {
    const std::string part = std::string("-A ") + chain + " ";
    return std::any_of(lines.begin(), lines.end(), [&part](const PlannedLine& line) {
        return line.line.find(part) != std::string::npos;
    });
}

}  // namespace

Damages placeDamages(const SavedFamilies& there) {
    Damages damages;
    for (const int family : {4, 6}) {
        const SavedTable& filter = filterOf(there, family);
        for (const char* const chain : kOurChains) {
            if (!hasChain(filter, chain)) {
                damages.push_back({"no-chain",
                                   familyText(family) + "there is no chain " + chain +
                                       ", so that no rules can be put into force",
                                   kRepairRemedy});
            }
        }
        for (const Hook& hook : kHooks) {
            if (jumpTexts(filter, hook) != jumpsOf(hook)) {
                damages.push_back({"no-jump",
                                   familyText(family) + hook.name + " does not jump to " +
                                       FW::kReloadingChain + " and then to " + hook.chain +
                                       ", once each: packets get around the rules",
                                   kRepairRemedy});
            }
        }
    }
    return damages;
}

Damages doorDamages(const SavedFamilies& there) {
    Damages damages;
    for (const int family : {4, 6}) {
        const SavedTable& filter = filterOf(there, family);
        for (const Hook& hook : kHooks) {
            if (isClosed(filter, hook)) {
                damages.push_back(
                    {"closed-policy",
                     familyText(family) + "the policy of " + hook.name + " is " +
                         filter.at(hook.name).policy + ", so that nothing new that a rule allows " +
                         (std::string(hook.name) == "INPUT" ? "gets in" : "is forwarded") +
                         ", and no reload is under way: one was killed, or another "
                         "program did it",
                     kRepairRemedy});
            }
        }
        for (const std::string& rule : rulesOf(filter, FW::kReloadingChain)) {
            damages.push_back({"guard-left",
                               familyText(family) + "a killed reload has left the guard rule " +
                                   rule + ", which decides before the rules do",
                               kRepairRemedy});
        }
    }
    return damages;
}

Damages emptyChainDamages(const SavedFamilies& there, const Plan& plan) {
    Damages damages;
    for (const int family : {4, 6}) {
        for (const char* const chain : FW::kFirewallChains) {
            if (rulesOf(filterOf(there, family), chain).empty() &&
                hasLinesFor(family == 4 ? plan.v4 : plan.v6, chain)) {
                damages.push_back({"empty-chains",
                                   familyText(family) + "the firewall is enabled, but " + chain +
                                       " holds no rule, and the profile `" + plan.profile +
                                       "` has some: everything is let in",
                                   kRepairRemedy});
            }
        }
    }
    return damages;
}

void mendPlaces(const SavedFamilies& there, const ExecutionLock& lock) {
    for (const int family : {4, 6}) {
        (void)changeFilter(family, placeLines(filterOf(there, family)), lock);
    }
}

void mendDoor(const SavedFamilies& there, Rules rules, const ExecutionLock& lock) {
    for (const int family : {4, 6}) {
        (void)changeFilter(family, doorLines(filterOf(there, family), rules), lock);
    }
}

void removeGuards(Guards guards) {
    if (guards == Guards::kLeft) {
        const ExecutionLock lock;
        mendDoor(savedFamilies(), Rules::kKeep, lock);
    }
}

}  // namespace zamofw
