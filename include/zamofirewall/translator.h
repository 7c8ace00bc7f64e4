// The translation of rules into iptables and ip6tables argument lines.
//
// A command list is an object with the members "v4" (lines for /sbin/iptables) and "v6" (lines for
// /sbin/ip6tables). Each is null or an object of arrays of lines. The array "global" holds the
// lines that belong to no interface, and every other array those of the adapter that it is named
// after. A line is everything after the program's path.
#ifndef ZAMOFIREWALL_TRANSLATOR_H
#define ZAMOFIREWALL_TRANSLATOR_H

#include <json/value.h>

#include <map>
#include <string>
#include <vector>

#include "zamofirewall/export.h"
#include "zamofirewall/ruleModel.h"

struct ZAMOFwServiceList;

namespace FW {

// Ports of services, by protocol code.
struct ServPort {
    std::map<FW_PORT_PROTOCOL, std::vector<std::string>> srcPorts;  // to match as source ports
    std::map<FW_PORT_PROTOCOL, std::vector<std::string>> dstPorts;  // as destination ports
};

// Use one object per operation. It asks the system for the interfaces and the service catalogue
// when it first needs them, and keeps the answers; make a new object to get fresh ones. Two threads
// must not use an object at the same time.
//
// An argument set is the scratch data of one rule: an object with the arrays of fragments
// "adapter", "port", "chain", "table", "policy", and "ip" with "v4" and "v6". The ...ToIptablesArg
// members append to their array; false means a failure, which has been logged.
class ZAMOFW_EXPORT ZAMOFW_IPTABLES_RULES {
  public:
    ZAMOFW_IPTABLES_RULES();
    ~ZAMOFW_IPTABLES_RULES();
    ZAMOFW_IPTABLES_RULES(const ZAMOFW_IPTABLES_RULES&) = delete;
    ZAMOFW_IPTABLES_RULES& operator=(const ZAMOFW_IPTABLES_RULES&) = delete;

    // Appends the command lines of a whole profile: the built-in lines, each usable adapter's
    // enabled rules in order, and a closing line with the adapter's default policy. `blEstablished`
    // adds the lines that accept established connections. They do not accept those of
    // `clientIp`, unless it is empty. Starts the network tool once per rule. False when `clientIp`
    // is not an address (`cmds` is untouched) or a rule cannot be translated (`cmds` is partly
    // filled).
    bool fwRulesToIptablesRules(const bool& blEstablished,
                                const std::map<std::string, std::vector<FWRULE>>& rules,
                                const std::map<std::string, FW_POLICY>& adapterPolicyMap,
                                Json::Value& cmds,
                                const std::string& clientIp);
    bool fwRulesToIptablesRules(const bool& blEstablished,
                                const std::map<std::string, std::vector<FWRULE>>& rules,
                                const std::map<std::string, FW_POLICY>& adapterPolicyMap,
                                Json::Value& cmds);

    // Appends a rule's IPv6 lines for the tunnel that carries IPv6 for `adapter`, if there is one.
    void iptables6in4ToCmd(const std::string& adapter, const FWRULE& rule, Json::Value& cmds);

    // Makes an empty command list. Always true.
    bool jIptablesCmdInit(Json::Value& cmds);

    // Makes an empty argument set.
    void iptablesRulesInit(Json::Value& args);

    // Translates one rule into an argument set.
    bool FwRuleToIptablesArg(const std::string& adapter, const FWRULE& rule, Json::Value& args);

    // Multiplies an argument set into lines and appends them to the adapter's arrays.
    void iptablesArgToCmd(const std::string& adapter,
                          const FWRULE& rule,
                          const Json::Value& args,
                          Json::Value& cmds);

    bool adapterToIptablesArg(const std::string& adapter, const FWRULE& rule, Json::Value& args);
    bool ipToIptablesArg(const FWRULE& rule, Json::Value& args);
    bool portToIptablesArg(const FWRULE& rule, Json::Value& args);
    bool chainToIptablesArg(const FWRULE& rule, Json::Value& args);
    bool tableToIptablesArg(const FWRULE& rule, Json::Value& args);
    bool policyToIptablesArg(const FWRULE& rule, Json::Value& args);

    // Appends the fragments of the ports: `protocol` is an FW_PORT_PROTOCOL code, `portDirect`
    // non-zero for source ports.
    void portsToIptablesArg(int protocol,
                            int portDirect,
                            const std::vector<std::string>& ports,
                            Json::Value& args);

    // Appends the ports of the named services. Skips unknown and unusable services. False when
    // there is no service catalogue.
    bool servToPorts(const std::vector<std::string>& services, ServPort& ports);

    // Appends the port fragments of the named services to an argument set.
    bool servPortToCmd(const std::vector<std::string>& services, Json::Value& args);

    // Whether rules for the adapter take effect now.
    bool adapterIsEnabled(const std::string& adapter);

    // Fill the object's lists of interfaces; a filled list is kept.
    bool enabledAdapterEnum();
    bool vpnAdatperEnum();
    void pppoeAdaterGet();

  private:
    ZAMOFwServiceList* servList = nullptr;
    std::vector<std::string> enabledAdapters;
    std::vector<std::string> vpnAdapters;
    std::string pppoeAdapter;
};

}  // namespace FW

#endif
