// The steps of a translation that programs call themselves, with argument sets of their own: a
// missing array is made when its field is translated, and a value of a wrong type throws when it is
// used.

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/translate/adapters.h"
#include "library/translate/commandList.h"
#include "library/translate/lines.h"
#include "library/translate/ruleFields.h"
#include "library/translate/servicePorts.h"
#include "zamofirewall/translator.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";

// An argument set has only texts, so the text of a fragment tells its family.
class ArgumentSource {
  public:
    explicit ArgumentSource(const Json::Value& args)
        : tables_(args["table"]),
          chains_(args["chain"]),
          adapters_(args["adapter"]),
          ip_(args["ip"]),
          ports_(args["port"]),
          policies_(args["policy"]) {}

    const Json::Value& tables() const { return tables_; }
    const Json::Value& chains() const { return chains_; }
    const Json::Value& adapters() const { return adapters_; }
    const Json::Value& addresses(AddressFamily family) const { return ip_[namesOf(family).key]; }
    const Json::Value& ports() const { return ports_; }
    std::string target() const { return policies_.empty() ? "" : policies_[0].asString(); }

    static std::string text(const Json::Value& fragment) { return fragment.asString(); }
    static bool isFor(const Json::Value& port, AddressFamily family) {
        return text(port) != (family == AddressFamily::kV4 ? kIcmpv6Match : kIcmpMatch);
    }

  private:
    const Json::Value& tables_;
    const Json::Value& chains_;
    const Json::Value& adapters_;
    const Json::Value& ip_;
    const Json::Value& ports_;
    const Json::Value& policies_;
};

// Whether the rule makes the array "port" even when it gives no fragment.
bool namesPorts(const FWRULE& rule) {
    switch (rule.portGroup) {
        case FW_PORT_GROUP_SERVICE:
        case FW_PORT_GROUP_RESERVED_SERVICE:
            return !rule.portList.empty();
        case FW_PORT_GROUP_PORT:
        case FW_PORT_GROUP_ALL:
            return true;
    }
    return false;
}

void appendPorts(const std::vector<PortFragment>& ports, Json::Value& fragments) {
    for (const PortFragment& port : ports) {
        fragments.append(port.text);
    }
}

}  // namespace

bool ZAMOFW_IPTABLES_RULES::jIptablesCmdInit(Json::Value& cmds) {
    cmds[kIpv4.key] = Json::nullValue;
    cmds[kIpv6.key] = Json::nullValue;
    return true;
}

void ZAMOFW_IPTABLES_RULES::iptablesRulesInit(Json::Value& args) {
    for (const char* member : {"adapter", "port", "chain", "table", "policy"}) {
        args[member] = Json::arrayValue;
    }
    args["ip"] = Json::nullValue;
    args["ip"][kIpv4.key] = Json::arrayValue;
    args["ip"][kIpv6.key] = Json::arrayValue;
}

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

bool ZAMOFW_IPTABLES_RULES::adapterToIptablesArg(const std::string& adapter,
                                                 const FWRULE& rule,
                                                 Json::Value& args) {
    Json::Value& list = args["adapter"];
    std::vector<std::string> fragments;
    if (!predefinedFragments(
            adapter, rule, {enabledAdapters, vpnAdapters, pppoeAdapter}, fragments)) {
        return false;
    }
    for (const std::string& fragment : fragments) {
        list.append(fragment);
    }
    if (list.empty()) {
        list.append(interfaceFragment(adapter, rule));
    }
    return true;
}

bool ZAMOFW_IPTABLES_RULES::ipToIptablesArg(const FWRULE& rule, Json::Value& args) {
    Json::Value& ip = args["ip"];
    // Countries make the array of a family even when none of them has data.
    if (rule.ipGroup == FW_IP_GROUP_COUNTRY) {
        for (const AddressFamily family : familiesOf(rule)) {
            (void)ip[namesOf(family).key];
        }
    }
    for (const AddressFragment& address : addressFragments(rule)) {
        ip[namesOf(address.family).key].append(address.text);
    }
    return true;
}

bool ZAMOFW_IPTABLES_RULES::portToIptablesArg(const FWRULE& rule, Json::Value& args) {
    std::vector<PortFragment> ports;
    if (!rulePortFragments(rule, servList, ports)) {
        return false;
    }
    if (namesPorts(rule)) {
        appendPorts(ports, args["port"]);
    }
    return true;
}

void ZAMOFW_IPTABLES_RULES::portsToIptablesArg(int protocol,
                                               int portDirect,
                                               const std::vector<std::string>& ports,
                                               Json::Value& args) {
    appendPorts(portFragments(protocol, portDirect != 0, ports), args["port"]);
}

bool ZAMOFW_IPTABLES_RULES::servPortToCmd(const std::vector<std::string>& services,
                                          Json::Value& args) {
    std::vector<PortFragment> ports;
    if (!serviceFragments(services, servList, ports)) {
        return false;
    }
    if (!services.empty()) {
        appendPorts(ports, args["port"]);
    }
    return true;
}

bool ZAMOFW_IPTABLES_RULES::chainToIptablesArg(const FWRULE& rule, Json::Value& args) {
    for (const std::string& fragment : chainFragments(rule)) {
        args["chain"].append(fragment);
    }
    return true;
}

bool ZAMOFW_IPTABLES_RULES::tableToIptablesArg(const FWRULE& rule, Json::Value& args) {
    args["table"].append(tableFragment(rule));
    return true;
}

bool ZAMOFW_IPTABLES_RULES::policyToIptablesArg(const FWRULE& rule, Json::Value& args) {
    std::string target;
    if (!targetFragment(rule, target)) {
        return false;
    }
    if (!target.empty()) {
        args["policy"].append(target);
    }
    return true;
}

void ZAMOFW_IPTABLES_RULES::iptablesArgToCmd(const std::string& adapter,
                                             const FWRULE& rule,
                                             const Json::Value& args,
                                             Json::Value& cmds) {
    const LineOrigin origin = {LineOrigin::Kind::kRule, adapter, {}};
    multiply(ArgumentSource(args), {rule, adapter, origin}, commandList(cmds));
}

}  // namespace FW
