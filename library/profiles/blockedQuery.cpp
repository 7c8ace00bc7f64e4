// Whether the profile in force lets a port or a service through, without asking the kernel.

#include <cstdlib>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/profiles/policyStep.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/profileDatabase.h"

namespace FW {

// The ports that a rule speaks of.
struct ZAMOFW::RulePorts {
    std::int32_t portDirect;
    std::int32_t protocol;
    const std::vector<std::string>& ports;
};

namespace {

constexpr const char* kLogModule = "zamoFW";
constexpr std::int32_t kSource = 1;
constexpr std::int32_t kDestination = 0;

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

// Of the answers for several ports the most severe one counts.
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

}  // namespace

std::pair<long, long> ZAMOFW::portRangeParse(const std::string& text) {
    const auto number = [](const std::string& digits) {
        return std::strtol(digits.c_str(), nullptr, 10);
    };
    const std::size_t dash = text.find('-');
    if (dash == std::string::npos) {
        return {number(text), number(text)};
    }
    return {number(text.substr(0, dash)), number(text.substr(dash + 1))};
}

// A deny rule blocks the query if it covers a bit of it, another rule must cover all of it.
bool ZAMOFW::portCompare(const RulePorts& rule, const PortCompareST& query, bool deny) {
    const bool sameProtocol = rule.protocol == FW_PROTOCOL_BOTH ||
                              rule.protocol == query.protocol ||
                              (deny && query.protocol == FW_PROTOCOL_BOTH);
    if (!sameProtocol || rule.portDirect != query.portDirect) {
        return false;
    }
    const auto [queryLow, queryHigh] = portRangeParse(query.port);
    for (const std::string& port : rule.ports) {
        const auto [low, high] = portRangeParse(port);
        if (deny ? high >= queryLow && low <= queryHigh : low <= queryLow && high >= queryHigh) {
            return true;
        }
    }
    return false;
}

bool ZAMOFW::ruleMatches(const FWRULE& rule, const PortCompareST& port) {
    const bool deny = rule.policy == FW_POLICY_DENY;
    switch (rule.portGroup) {
        case FW_PORT_GROUP_SERVICE:
        case FW_PORT_GROUP_RESERVED_SERVICE:
            return servicesMatch(rule.portList, port, deny);
        case FW_PORT_GROUP_PORT:
            return portCompare({rule.portDirect, rule.protocol, rule.portList}, port, deny);
        case FW_PORT_GROUP_ALL:
            return true;
    }
    return false;
}

bool ZAMOFW::servicesMatch(const std::vector<std::string>& services,
                           const PortCompareST& port,
                           bool deny) {
    ServPort servicePorts;
    if (!servToPorts(services, servicePorts)) {
        return FW_FAILURE("Failed to servToPorts()");
    }
    const bool source = port.portDirect == kSource;
    for (const auto& [protocol, ports] : source ? servicePorts.srcPorts : servicePorts.dstPorts) {
        if (portCompare({source ? kSource : kDestination, protocol, ports}, port, deny)) {
            return true;
        }
    }
    return false;
}

void ZAMOFW::rulesPortCheck(const std::string& name,
                            const std::vector<FWRULE>& rules,
                            const PortCompareST& port,
                            Answers& result) {
    bool denySeen = false;
    for (const FWRULE& rule : rules) {
        if (!rule.enable || !ruleMatches(rule, port)) {
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

void ZAMOFW::profilePortCheck(const FWPROFILE& profile,
                              const PortCompareST& port,
                              const std::string& adapter,
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
        rulesPortCheck(kGlobalAdapter, global->second, port, result);
        if (isDecided(result[kGlobalAdapter])) {
            setAnswer(result, adapter, profile.adapterPolicyMap, result[kGlobalAdapter]);
            return;
        }
    }
    if (!adapter.empty() && policy == profile.adapterPolicyMap.end()) {
        result[adapter] = FW_POLICY_ALLOW;
    }
    for (const auto& [name, rules] : profile.rules) {
        if (adapter.empty() || name == adapter) {
            rulesPortCheck(name, rules, port, result);
        }
    }
}

bool ZAMOFW::fwPortIsBlocked(const PortCompareST& port,
                             const std::string& adapter,
                             Answers& result) {
    bool enabled = false;
    if (!fwStatus(enabled)) {
        return FW_FAILURE("Failed to check firewall status");
    }
    if (!enabled) {
        if (!adapter.empty()) {
            result[adapter] = FW_POLICY_ALLOW;
        }
        return true;
    }
    std::string name;
    if (!fwProfileConfigGet(name)) {
        return FW_FAILURE("Failed to fwProfileConfigGet()");
    }
    FWPROFILE profile;
    if (!ZAMOFW_JSON_DB().profileGet(name, profile)) {
        return FW_FAILURE("Failed to profileGet(%s)", name.c_str());
    }
    profilePortCheck(profile, port, adapter, result);
    replaceWorkingValues(result);
    return true;
}

bool ZAMOFW::fwServIsBlocked(const std::string& service,
                             const std::string& adapter,
                             Answers& result) {
    ServPort ports;
    if (!servToPorts({service}, ports)) {
        return FW_FAILURE("Failed to servToPorts()");
    }
    std::vector<PortCompareST> queries;
    appendQueries(kSource, ports.srcPorts, queries);
    appendQueries(kDestination, ports.dstPorts, queries);
    for (const PortCompareST& query : queries) {
        Answers partial;
        if (!fwPortIsBlocked(query, adapter, partial)) {
            return FW_FAILURE("Failed to fwPortIsBlocked()");
        }
        mergeAnswers(partial, result);
    }
    return true;
}

}  // namespace FW
