// A whole profile as a command list.

#include <zamo/netsdk.h>

#include <array>
#include <string>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/translate/ipv6Router.h"
#include "zamofirewall/translator.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";
// Dial-up is governed by the name "pppoe", or "vpn"; the interface itself never is.
constexpr const char* kNeverTranslated = "ppp0";

// Router messages and redirects are believed only from the own link, neighbour discovery from
// anywhere: without it IPv6 does not work at all.
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

// Established connections of the client, if one is given, are left to the rules.
std::string establishedLine(bool exceptClient, const std::string& clientIp) {
    return (exceptClient ? " ! -s " + clientIp : "") +
           " -m state --state ESTABLISHED,RELATED -j ACCEPT";
}

void appendBuiltInLines(bool established, const std::string& clientIp, Json::Value& cmds) {
    for (const char* chain : kFirewallChains) {
        const std::string prefix = std::string("-A ") + chain;
        Json::Value& v4 = cmds[kIpv4.key][kGlobalAdapter];
        v4.append(prefix + " -i lo -j ACCEPT");
        if (established) {
            v4.append(prefix + establishedLine(isV4(clientIp), clientIp));
        }
        Json::Value& v6 = cmds[kIpv6.key][kGlobalAdapter];
        for (const char* line : kV6Lines) {
            v6.append(prefix + line);
        }
        if (established) {
            v6.append(prefix + establishedLine(isV6(clientIp), clientIp));
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

}  // namespace

bool ZAMOFW_IPTABLES_RULES::FwRuleToIptablesArg(const std::string& adapter,
                                                const FWRULE& rule,
                                                Json::Value& args) {
    if (!adapterToIptablesArg(adapter, rule, args)) {
        return FW_FAILURE("Failed to adapterToIptablesArg()");
    }
    if (!ipToIptablesArg(rule, args)) {
        return FW_FAILURE("Failed to ipToIptablesArg()");
    }
    if (!portToIptablesArg(rule, args)) {
        return FW_FAILURE("Failed to portToIptablesArg()");
    }
    if (!chainToIptablesArg(rule, args)) {
        return FW_FAILURE("Failed to chainToIptablesArg()");
    }
    if (!tableToIptablesArg(rule, args)) {
        return FW_FAILURE("Failed to tableToIptablesArg()");
    }
    if (!policyToIptablesArg(rule, args)) {
        return FW_FAILURE("Failed to policyToIptablesArg()");
    }
    return true;
}

bool ZAMOFW_IPTABLES_RULES::fwRulesToIptablesRules(
    const bool& blEstablished,
    const std::map<std::string, std::vector<FWRULE>>& rules,
    const std::map<std::string, FW_POLICY>& adapterPolicyMap,
    Json::Value& cmds,
    const std::string& clientIp) {
    if (!clientIp.empty() && !isV4(clientIp) && clientIp != "127.0.0.1" && !isV6(clientIp)) {
        return FW_FAILURE("Invalid input argument '%s' which is not an IP address.",
                          clientIp.c_str());
    }
    appendBuiltInLines(blEstablished, clientIp, cmds);

    std::map<std::string, std::vector<FWRULE>> working = rules;
    for (const auto& [adapter, policy] : adapterPolicyMap) {
        if (adapter != kNeverTranslated && adapterIsEnabled(adapter)) {
            working[adapter].push_back(catchAllRule(policy));
        }
    }
    for (auto& [adapter, list] : working) {
        for (FWRULE& rule : list) {
            if (!rule.enable || adapter == kNeverTranslated || !adapterIsEnabled(adapter) ||
                rule.policy == FW_POLICY_NONE) {
                continue;
            }
            Json::Value args;
            iptablesRulesInit(args);
            if (!FwRuleToIptablesArg(adapter, rule, args)) {
                return false;
            }
            iptablesArgToCmd(adapter, rule, args, cmds);
            rule.ipType = FW_IP_TYPE_V6;
            iptables6in4ToCmd(adapter, rule, cmds);
        }
    }
    return true;
}

bool ZAMOFW_IPTABLES_RULES::fwRulesToIptablesRules(
    const bool& blEstablished,
    const std::map<std::string, std::vector<FWRULE>>& rules,
    const std::map<std::string, FW_POLICY>& adapterPolicyMap,
    Json::Value& cmds) {
    return fwRulesToIptablesRules(blEstablished, rules, adapterPolicyMap, cmds, "");
}

void ZAMOFW_IPTABLES_RULES::iptables6in4ToCmd(const std::string& adapter,
                                              const FWRULE& rule,
                                              Json::Value& cmds) {
    const std::string interface = adapter == kPppoeAdapter ? pppoeAdapter : adapter;
    const std::string tunnel = ipv6RouterInterface(interface);
    if (tunnel == interface) {
        return;
    }
    Json::Value args;
    iptablesRulesInit(args);
    if (!FwRuleToIptablesArg(tunnel, rule, args)) {
        FW_LOG(LOG_ERR, "Failed to convert rule to iptables arg in 6in4 over PPPoE.");
        return;
    }
    iptablesArgToCmd(tunnel, rule, args, cmds);
}

}  // namespace FW
