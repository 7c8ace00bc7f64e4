// The controller: switches the firewall on and off and puts profiles into force.
#ifndef ZAMOFIREWALL_CONTROLLER_H
#define ZAMOFIREWALL_CONTROLLER_H

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "zamofirewall/export.h"
#include "zamofirewall/ruleModel.h"
#include "zamofirewall/translator.h"

namespace FW {

// A port that is asked about.
struct PortCompareST {
    std::int32_t portDirect = 0;              // 1: a source port; 0: a destination port
    std::int32_t protocol = FW_PROTOCOL_TCP;  // TCP, UDP or BOTH
    std::string port;                         // one port ("22") or one range ("6000-6010")
};

// Make one object per operation. Operations return true on success; a failure is a false result
// and a line in the system log. Those that run iptables need root, and the chains INPUT_FIREWALL,
// FORWARD_FIREWALL and FIREWALL_RELOADING, which the library never makes.
//
// A program start takes about a millisecond, and a rule takes several, so that putting a large
// profile into force takes seconds. Lock waits add at most 30 seconds per file. Only
// boost::interprocess::interprocess_exception is thrown, when a lock file cannot be opened.
class ZAMOFW_EXPORT ZAMOFW : public ZAMOFW_IPTABLES_RULES {
  public:
    // Loads the kernel modules, stores "enabled" and puts the profile in force into the kernel,
    // between the hooks net/firewall_enable. After a failed reload the firewall stays stored as
    // enabled, unless the reload has disabled it.
    bool fwEnable();

    // Flushes the firewall's chains, unloads the modules and stores "disabled", between the hooks
    // net/firewall_disable. The result tells whether the status was stored.
    bool fwDisable();

    // The same as fwDisable().
    bool fwReset();

    // Rebuilds the kernel's rules from the profile in force, under a lock that it waits for at most
    // 30 seconds. Does nothing while the firewall is disabled. `blEstablished` adds the lines that
    // accept established connections. While the rules are rebuilt, new connections are dropped.
    // When a line fails, the firewall is disabled.
    bool fwReload(bool blEstablished);

    // Repairs the service rules of every profile after the service catalogue has changed: unknown
    // services are removed, rules without a service are removed, and the protocols are set anew.
    // Does not reload.
    bool fwUpdate();

    // The command list (translator.h) of a stored profile.
    bool fwIptablesRulesEnum(std::string name, Json::Value& out, bool blEstablished);
    bool fwIptablesRulesEnum(std::string name, Json::Value& out, const std::string& clientIp);
    // A text literal would otherwise be taken for the flag.
    template <std::size_t size>
    bool fwIptablesRulesEnum(std::string name, Json::Value& out, const char (&clientIp)[size]) {
        return fwIptablesRulesEnum(std::move(name), out, std::string(clientIp));
    }

    // Adds every adapter name that rules may use now.
    bool fwAdapterEnum(std::set<std::string>& adapters);

    // Chooses the profile in force, which must exist. With `reload` the firewall is reloaded; the
    // choice stays when that fails.
    bool fwProfileConfigSet(const std::string& name, bool reload);

    // The settings file /usr/zamo/etc/firewall.d/firewall_settings.json.

    // The whole settings object. A missing file is made, with the defaults.
    bool configGet(Json::Value& out);

    // Replaces the given top-level members and keeps the others. Not atomic: of two callers that
    // set members at once, one may lose its change.
    bool configSet(const Json::Value& values);

    // Sets the defaults: "status" false, "profile" "default".
    bool initJconfig(Json::Value& config);

    // Whether the firewall is enabled. `enabled` is untouched on failure.
    bool fwStatus(bool& enabled);

    // The name of the profile in force.
    bool fwProfileConfigGet(std::string& name);

    // Puts the trial copy of the profile `name` (profile.h) into force, without a lock and without
    // changing the settings; the next reload replaces it. With a client address, an IPv4 or IPv6
    // address text, the established connections of all but this client go on; without one, those of
    // every client are judged by the rules. When a line fails, the firewall is disabled.
    bool TestApplyingProfile(std::string name, const std::string& clientIp);
    bool TestApplyingProfile(std::string name);

    // Whether the profile in force lets a port, or every port of a service, through: one policy per
    // adapter in `result`, for the named adapter or, when `adapter` is empty, for every adapter
    // with a default policy. The answers are ALLOW, DENY, NONE and PARTIAL; the entry "global"
    // holds what the rules for all adapters say. Nothing is asked of the kernel. A disabled
    // firewall allows the named adapter, and leaves `result` as it is when none is named. On
    // failure `result` is partly filled.
    bool fwPortIsBlocked(const PortCompareST& port,
                         const std::string& adapter,
                         std::map<std::string, FW_POLICY>& result);
    bool fwServIsBlocked(const std::string& service,
                         const std::string& adapter,
                         std::map<std::string, FW_POLICY>& result);

    // The steps that the operations above are made of. They take no lock, and belong to a caller
    // that knows that no reload is under way.

    // Runs one command line, its words separated by blanks: at most 255 words and 1024 bytes.
    bool cmdExec(const std::string& line);

    // Runs a command list, all IPv4 lines before all IPv6 lines, and stops at the first that fails.
    bool fwExec(Json::Value list);

    // Drop new connections while the rules are rebuilt, and accept them again.
    bool fwDefaultDrop();
    bool fwDefaultAccept();

    // Flushes the firewall's chains, all of them whether or not one fails.
    bool fwClear();

  private:
    struct RulePorts;
    ZAMOFW_LOCAL void profilePortCheck(const FWPROFILE& profile,
                                       const PortCompareST& port,
                                       const std::string& adapter,
                                       std::map<std::string, FW_POLICY>& result);
    ZAMOFW_LOCAL void rulesPortCheck(const std::string& name,
                                     const std::vector<FWRULE>& rules,
                                     const PortCompareST& port,
                                     std::map<std::string, FW_POLICY>& result);
    ZAMOFW_LOCAL bool ruleMatches(const FWRULE& rule, const PortCompareST& port);
    ZAMOFW_LOCAL bool servicesMatch(const std::vector<std::string>& services,
                                    const PortCompareST& port,
                                    bool deny);
    ZAMOFW_LOCAL static bool portCompare(const RulePorts& rule,
                                         const PortCompareST& query,
                                         bool deny);
    ZAMOFW_LOCAL static std::pair<long, long> portRangeParse(const std::string& text);
};

}  // namespace FW

#endif
