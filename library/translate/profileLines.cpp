#include "library/translate/profileLines.h"

#include <zamo/netsdk.h>

#include <array>
#include <set>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/translate/ipv6Router.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";
// Rules for dial-up name "pppoe" or "vpn", never the interface itself.
constexpr const char* kNeverTranslated = "ppp0";

// Router messages and redirects are accepted only from the local link. Neighbour discovery is
// accepted from anywhere, because IPv6 does not work without it.
constexpr std::array<const char*, 6> kV6Lines = {
    " -i lo -j ACCEPT",
    " -s fe80::/10 -p icmpv6 --icmpv6-type router-solicitation -j ACCEPT",
    " -s fe80::/10 -p icmpv6 --icmpv6-type router-advertisement -j ACCEPT",
    " -p icmpv6 --icmpv6-type neighbour-solicitation -j ACCEPT",
    " -p icmpv6 --icmpv6-type neighbour-advertisement -j ACCEPT",
    " -s fe80::/10 -p icmpv6 --icmpv6-type 137 -j ACCEPT",
};

bool isV4(const std::string& address) {
    return !address.empty() && BlVLIBIsIpAddr(address.c_str()) != 0;
}

bool isV6(const std::string& address) {
    return !address.empty() && BlVLIBIsv6IpAddrValid(address.c_str()) != 0;
}

// The rules decide about the established connections of the client, if there is one.
std::string establishedLine(bool exceptClient, const std::string& clientIp) {
    return (exceptClient ? " ! -s " + clientIp : "") +
           " -m state --state ESTABLISHED,RELATED -j ACCEPT";
}

void emitBuiltInLines(const ProfileRequest& request, const LineSink& sink) {
    const auto emit = [&sink](AddressFamily family, const std::string& text) {
        sink({{family, kGlobalAdapter, text, {LineOrigin::Kind::kBuiltIn, kGlobalAdapter, {}}}});
    };
    const std::string& client = request.clientIp;
    for (const char* chain : kFirewallChains) {
        const std::string prefix = std::string("-A ") + chain;
        emit(AddressFamily::kV4, prefix + " -i lo -j ACCEPT");
        if (request.established) {
            emit(AddressFamily::kV4, prefix + establishedLine(isV4(client), client));
        }
        for (const char* line : kV6Lines) {
            emit(AddressFamily::kV6, prefix + line);
        }
        if (request.established) {
            emit(AddressFamily::kV6, prefix + establishedLine(isV6(client), client));
        }
    }
}

// The rule that closes an adapter's list with its default policy.
FWRULE catchAllRule(FW_POLICY policy) {
    FWRULE rule;
    rule.policy = policy;
    rule.ipType = FW_IP_TYPE_BOTH;
    rule.ipGroup = FW_IP_GROUP_ALL;
    rule.portGroup = FW_PORT_GROUP_ALL;
    return rule;
}

bool translateRule(const std::string& adapter,
                   const FWRULE& rule,
                   const SystemAnswers& system,
                   RuleFragments& fragments) {
    if (!predefinedFragments(adapter, rule, system.interfaces, fragments.adapters)) {
        return FW_FAILURE("Failed to adapterToIptablesArg()");
    }
    if (fragments.adapters.empty()) {
        fragments.adapters.push_back(interfaceFragment(adapter, rule));
    }
    fragments.addresses = addressFragments(rule);
    if (!rulePortFragments(rule, system.catalogue, fragments.ports)) {
        return FW_FAILURE("Failed to portToIptablesArg()");
    }
    fragments.chains = chainFragments(rule);
    fragments.table = tableFragment(rule);
    if (!targetFragment(rule, fragments.target)) {
        return FW_FAILURE("Failed to policyToIptablesArg()");
    }
    return true;
}

// The lines of one rule, for its own adapter and for a tunnel.
bool emitRule(const FWRULE& rule,
              const LineOrigin& origin,
              const SystemAnswers& system,
              const LineSink& sink) {
    const std::string& adapter = origin.adapter;
    if (!rule.enable || adapter == kNeverTranslated || !isUsable(adapter, system.interfaces) ||
        rule.policy == FW_POLICY_NONE) {
        return true;
    }
    RuleFragments fragments;
    if (!translateRule(adapter, rule, system, fragments)) {
        return false;
    }
    multiply(RuleSource(fragments), {rule, adapter, origin}, sink);
    // The tunnel gets the IPv6 lines of rules for IPv4 as well.
    FWRULE v6Rule = rule;
    v6Rule.ipType = FW_IP_TYPE_V6;
    tunnelLines(adapter, v6Rule, origin, system, sink);
    return true;
}

bool emitRules(const std::string& adapter,
               const std::vector<FWRULE>& rules,
               const SystemAnswers& system,
               const LineSink& sink) {
    for (std::size_t position = 0; position < rules.size(); ++position) {
        const LineOrigin origin = {LineOrigin::Kind::kRule, adapter, position};
        if (!emitRule(rules[position], origin, system, sink)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool profileLines(const ProfileRequest& request,
                  const SystemAnswers& system,
                  const LineSink& sink) {
    const std::string& client = request.clientIp;
    if (!client.empty() && !isV4(client) && client != "127.0.0.1" && !isV6(client)) {
        return FW_FAILURE("Invalid input argument '%s' which is not an IP address.",
                          client.c_str());
    }
    emitBuiltInLines(request, sink);

    std::set<std::string> adapters;
    for (const auto& entry : request.rules) {
        adapters.insert(entry.first);
    }
    std::map<std::string, FWRULE> closingRules;
    for (const auto& [adapter, policy] : request.policies) {
        if (adapter != kNeverTranslated && isUsable(adapter, system.interfaces)) {
            adapters.insert(adapter);
            closingRules.emplace(adapter, catchAllRule(policy));
        }
    }
    for (const std::string& adapter : adapters) {
        const auto rules = request.rules.find(adapter);
        const auto closing = closingRules.find(adapter);
        if (rules != request.rules.end() && !emitRules(adapter, rules->second, system, sink)) {
            return false;
        }
        if (closing != closingRules.end() &&
            !emitRule(
                closing->second, {LineOrigin::Kind::kDefaultPolicy, adapter, {}}, system, sink)) {
            return false;
        }
    }
    return true;
}

void tunnelLines(const std::string& adapter,
                 const FWRULE& rule,
                 const LineOrigin& origin,
                 const SystemAnswers& system,
                 const LineSink& sink) {
    const std::string interface = adapter == kPppoeAdapter ? system.interfaces.pppoe : adapter;
    const std::string tunnel = ipv6RouterInterface(interface);
    if (tunnel == interface) {
        return;
    }
    RuleFragments fragments;
    if (!translateRule(tunnel, rule, system, fragments)) {
        FW_LOG(LOG_ERR, "Failed to convert rule to iptables arg in 6in4 over PPPoE.");
        return;
    }
    multiply(RuleSource(fragments), {rule, tunnel, origin}, sink);
}

}  // namespace FW
