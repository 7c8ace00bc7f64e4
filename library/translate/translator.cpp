// The translator: the answers of the system that it keeps, and whole profiles.

#include "zamofirewall/translator.h"

#include "library/translate/commandList.h"
#include "library/translate/profileLines.h"
#include "library/translate/servicePorts.h"

namespace FW {

ZAMOFW_IPTABLES_RULES::ZAMOFW_IPTABLES_RULES() = default;

ZAMOFW_IPTABLES_RULES::~ZAMOFW_IPTABLES_RULES() {
    releaseCatalogue(servList);
}

bool ZAMOFW_IPTABLES_RULES::fwRulesToIptablesRules(
    const bool& blEstablished,
    const std::map<std::string, std::vector<FWRULE>>& rules,
    const std::map<std::string, FW_POLICY>& adapterPolicyMap,
    Json::Value& cmds,
    const std::string& clientIp) {
    return profileLines({rules, adapterPolicyMap, blEstablished, clientIp},
                        {{enabledAdapters, vpnAdapters, pppoeAdapter}, servList},
                        commandList(cmds));
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
    tunnelLines(adapter,
                rule,
                {LineOrigin::Kind::kRule, adapter, {}},
                {{enabledAdapters, vpnAdapters, pppoeAdapter}, servList},
                commandList(cmds));
}

bool ZAMOFW_IPTABLES_RULES::servToPorts(const std::vector<std::string>& services, ServPort& ports) {
    return findServicePorts(services, servList, ports);
}

bool ZAMOFW_IPTABLES_RULES::adapterIsEnabled(const std::string& adapter) {
    return isUsable(adapter, {enabledAdapters, vpnAdapters, pppoeAdapter});
}

bool ZAMOFW_IPTABLES_RULES::enabledAdapterEnum() {
    return findEnabled({enabledAdapters, vpnAdapters, pppoeAdapter});
}

bool ZAMOFW_IPTABLES_RULES::vpnAdatperEnum() {
    return findVpn({enabledAdapters, vpnAdapters, pppoeAdapter});
}

void ZAMOFW_IPTABLES_RULES::pppoeAdaterGet() {
    findPppoe({enabledAdapters, vpnAdapters, pppoeAdapter});
}

}  // namespace FW
