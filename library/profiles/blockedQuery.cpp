// Whether the profile in force lets a port or a service through, without asking the kernel.

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/profiles/inForce.h"
#include "library/profiles/policyStep.h"
#include "library/profiles/portMatch.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

using Answers = std::map<std::string, FW_POLICY>;

void setAnswer(Answers& answers,
               const std::string& adapter,
               const std::map<std::string, FW_POLICY>& everyAdapter,
               FW_POLICY answer) {
    if (!adapter.empty()) {
        answers[adapter] = answer;
        return;
    }
    for (const auto& entry : everyAdapter) {
        answers[entry.first] = answer;
    }
}

bool isDecided(FW_POLICY answer) {
    return answer == FW_POLICY_ALLOW || answer == FW_POLICY_DENY || answer == FW_POLICY_PARTIAL;
}

void replaceWorkingValues(Answers& answers) {
    for (auto& entry : answers) {
        if (entry.second == FW_POLICY_PARTIAL_ALLOW || entry.second == FW_POLICY_PARTIAL_DENY) {
            entry.second = FW_POLICY_PARTIAL;
        }
    }
}

// The most severe of the answers for several ports counts.
int severityOf(std::int32_t answer) {
    switch (answer) {
        case FW_POLICY_ALLOW:
            return 1;
        case FW_POLICY_PARTIAL:
            return 2;
        case FW_POLICY_DENY:
            return 3;
    }
    return 0;
}

void mergeAnswers(const Answers& partial, Answers& merged) {
    for (const auto& [adapter, answer] : partial) {
        const auto [entry, isNew] = merged.emplace(adapter, answer);
        if (!isNew && severityOf(answer) > severityOf(entry->second)) {
            entry->second = answer;
        }
    }
}

void appendQueries(std::int32_t direction,
                   const std::map<FW_PORT_PROTOCOL, std::vector<std::string>>& portsByProtocol,
                   std::vector<PortCompareST>& queries) {
    for (const auto& [protocol, ports] : portsByProtocol) {
        for (const std::string& port : ports) {
            queries.push_back({direction, protocol, port});
        }
    }
}

// The walk of one adapter's rules.
void rulesPortCheck(const std::string& name,
                    const std::vector<FWRULE>& rules,
                    const PortQuery& port,
                    RuleMatcher& matcher,
                    Answers& result) {
    bool denySeen = false;
    for (const FWRULE& rule : rules) {
        if (!rule.enable || !matcher.matches(rule, port)) {
            continue;
        }
        denySeen = denySeen || rule.policy == FW_POLICY_DENY;
        FW_POLICY& answer = result[name];
        const PolicyStep step = policyStep(rule, answer);
        answer = step.answer;
        if (step.isLast) {
            break;
        }
    }
    // Rules for every adapter that allow some addresses leave the others to the adapters' rules.
    if (name == kGlobalAdapter && !denySeen && result[name] == FW_POLICY_PARTIAL_ALLOW) {
        result[name] = FW_POLICY_NONE;
    }
}

void profilePortCheck(const FWPROFILE& profile,
                      const PortQuery& port,
                      const std::string& adapter,
                      RuleMatcher& matcher,
                      Answers& result) {
    const auto policy = profile.adapterPolicyMap.find(adapter);
    result[kGlobalAdapter] = FW_POLICY_NONE;
    if (adapter.empty()) {
        for (const auto& [name, defaultPolicy] : profile.adapterPolicyMap) {
            result[name] = defaultPolicy;
        }
    } else if (policy != profile.adapterPolicyMap.end()) {
        result[adapter] = policy->second;
    }

    const auto global = profile.rules.find(kGlobalAdapter);
    if (global != profile.rules.end()) {
        rulesPortCheck(kGlobalAdapter, global->second, port, matcher, result);
        if (isDecided(result[kGlobalAdapter])) {
            setAnswer(result, adapter, profile.adapterPolicyMap, result[kGlobalAdapter]);
            return;
        }
    }
    if (!adapter.empty() && policy == profile.adapterPolicyMap.end()) {
        result[adapter] = FW_POLICY_ALLOW;
    }
    // The global rules are walked a second time here, from the answer that they gave.
    for (const auto& [name, rules] : profile.rules) {
        if (adapter.empty() || name == adapter) {
            rulesPortCheck(name, rules, port, matcher, result);
        }
    }
}

// A query about one or more ports. What it has parsed for one port serves the next one.
struct Query {
    const std::string& adapter;
    RuleMatcher matcher;
    InForce inForce;
};

bool portCheck(const PortCompareST& port, Query& query, Answers& result) {
    if (!query.inForce.read()) {
        return false;
    }
    if (!query.inForce.isEnabled()) {
        if (!query.adapter.empty()) {
            result[query.adapter] = FW_POLICY_ALLOW;
        }
        return true;
    }
    query.matcher.setProfile(query.inForce.profile());
    profilePortCheck(
        *query.inForce.profile(), parseQuery(port), query.adapter, query.matcher, result);
    replaceWorkingValues(result);
    return true;
}

ServiceLookup lookupIn(ZAMOFW_IPTABLES_RULES& translator) {
    return [&translator](const std::vector<std::string>& services, ServPort& ports) {
        return translator.servToPorts(services, ports);
    };
}

}  // namespace

bool ZAMOFW::fwPortIsBlocked(const PortCompareST& port,
                             const std::string& adapter,
                             Answers& result) {
    Query query = {adapter, RuleMatcher(lookupIn(*this)), {}};
    return portCheck(port, query, result);
}

bool ZAMOFW::fwServIsBlocked(const std::string& service,
                             const std::string& adapter,
                             Answers& result) {
    ServPort ports;
    if (!servToPorts({service}, ports)) {
        return FW_FAILURE("Failed to servToPorts()");
    }
    std::vector<PortCompareST> queries;
    appendQueries(kSourcePort, ports.srcPorts, queries);
    appendQueries(kDestinationPort, ports.dstPorts, queries);
    Query query = {adapter, RuleMatcher(lookupIn(*this)), {}};
    for (const PortCompareST& port : queries) {
        Answers partial;
        if (!portCheck(port, query, partial)) {
            return FW_FAILURE("Failed to fwPortIsBlocked()");
        }
        mergeAnswers(partial, result);
    }
    return true;
}

}  // namespace FW
