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

// The port in a query.
struct PortCompareST {
    std::int32_t portDirect = 0;              // 0: a destination port; 1: a source port
    std::int32_t protocol = FW_PROTOCOL_TCP;  // TCP, UDP or BOTH
    std::string port;                         // one port ("22") or one range ("6000-6010")
};

// Create one object per operation. Operations return true on success, and false after a failure,
// which is in the system log. Those that run iptables need root, and the chains INPUT_FIREWALL,
// FORWARD_FIREWALL and FIREWALL_RELOADING, which zamofw-chains creates and the library never does.
//
// Time: a rule takes several program starts of about a millisecond each, so that a large profile
// takes seconds. Each lock that another process holds adds up to 30 seconds.
//
// Exceptions: boost::interprocess::interprocess_exception, when a lock file cannot be opened.
//
// Processes may call at the same time. Threads may too, each with objects of its own.
//
// Signals: while the policies are closed (see fwReload), HUP, INT, QUIT and TERM are blocked in the
// calling thread and take effect once the policies are open again. In a program with several
// threads they must be blocked in the other threads as well, or the system delivers them there.
//
// SIGCHLD: the library starts programs and waits for each of them. It may be ignored or handled,
// but nobody else may wait for the library's children: when another thread, or a handler that runs
// in another thread, reaps every child with waitpid(-1, ...), the status of the program is lost.
// That counts as a failure, and a failed line disables the firewall. Such a program should wait for
// its own children by number.
class ZAMOFW_EXPORT ZAMOFW : public ZAMOFW_IPTABLES_RULES {
  public:
    // Loads the kernel modules, stores "enabled" and reloads, between the hooks
    // net/firewall_enable. If the reload fails, the firewall stays stored as enabled, unless the
    // reload itself disabled it.
    bool fwEnable();

    // Flushes the firewall's chains, unloads the modules and stores "disabled", between the hooks
    // net/firewall_disable. Takes no lock, and leaves the policies of INPUT and FORWARD alone. The
    // result says whether "disabled" was stored.
    bool fwDisable();

    // The same as fwDisable().
    bool fwReset();

    // Rebuilds the kernel's rules from the profile in force, under a lock that it waits for up to
    // 30 seconds. Does nothing while the firewall is disabled. `blEstablished` adds the lines that
    // accept established connections.
    //
    // While the rules are rebuilt the policies of INPUT and FORWARD are DROP, and a rule in
    // FIREWALL_RELOADING accepts established connections: new connections have to wait. What a
    // failure leaves:
    //  - A line of the profile fails: the firewall is disabled and the policies are open.
    //  - The profile cannot be read or translated: the firewall stays enabled, with empty chains
    //    and open policies.
    //  - The policies cannot all be closed: nothing is undone. Those that are DROP already stay so,
    //    and the rules are the old ones.
    //  - The policies cannot be opened again: the firewall is disabled. Those that are not yet open
    //    stay DROP.
    //  - The process is killed (SIGKILL, a crash): the policies stay DROP, the chains hold what was
    //    done by then, and the rule in FIREWALL_RELOADING stays.
    // Policies that stayed DROP are opened by the next reload that gets to its end, which needs an
    // enabled firewall, or by zamofw-chains, which also removes rules left in FIREWALL_RELOADING.
    bool fwReload(bool blEstablished);

    // Repairs the service rules of every profile after the service catalogue has changed: removes
    // unknown services, removes rules that have no service left, and sets the protocols anew. Does
    // not reload.
    bool fwUpdate();

    // Fills `out` with the command list (see translator.h) of a stored profile, as a reload with
    // this `blEstablished` would run it.
    bool fwIptablesRulesEnum(std::string name, Json::Value& out, bool blEstablished);

    // The same for a trial on behalf of the client with this IPv4 or IPv6 address; "" or a null
    // pointer stands for no client.
    bool fwIptablesRulesEnum(std::string name, Json::Value& out, const std::string& clientIp);
    // Without this one, a pointer would be taken as the flag.
    bool fwIptablesRulesEnum(std::string name, Json::Value& out, const char* clientIp) {
        return fwIptablesRulesEnum(
            std::move(name), out, std::string(clientIp == nullptr ? "" : clientIp));
    }

    // Adds every adapter name that rules may use now to `adapters`.
    bool fwAdapterEnum(std::set<std::string>& adapters);

    // Makes `name`, a stored profile, the profile in force. With `reload` the firewall is reloaded;
    // if that fails, the choice stays.
    bool fwProfileConfigSet(const std::string& name, bool reload);

    // The settings are a JSON object in /usr/zamo/etc/firewall.d/firewall_settings.json.

    // Fills `out` with all settings. A missing file is created with the defaults.
    bool configGet(Json::Value& out);

    // Replaces the given top-level members and keeps the others. Not atomic: of two callers at the
    // same time, one may lose its change.
    bool configSet(const Json::Value& values);

    // Sets the defaults in `config`: "status" false, "profile" "default".
    bool initJconfig(Json::Value& config);

    // Whether the firewall is enabled. On failure `enabled` is unchanged.
    bool fwStatus(bool& enabled);

    // The name of the profile in force.
    bool fwProfileConfigGet(std::string& name);

    // Puts the trial copy of the profile `name` (see profile.h) into force, even while the firewall
    // is disabled. The settings do not change, so the next reload ends the trial. With `clientIp`,
    // an IPv4 or IPv6 address, established connections go on except those of that client, which the
    // rules judge; without it, the rules judge every connection.
    //
    // Takes no lock: do not call it beside a reload. Failures leave what they leave in fwReload().
    bool TestApplyingProfile(std::string name, const std::string& clientIp);
    bool TestApplyingProfile(std::string name);

    // Whether the profile in force lets a port, or every port of a service, through. `result` gets
    // a policy (ALLOW, DENY, NONE or PARTIAL) for `adapter`, or for every adapter that has a
    // default policy if `adapter` is empty; its entry "global" says what the rules for all adapters
    // decide. The kernel is not asked. While the firewall is disabled the answer is ALLOW for the
    // named adapter, and nothing if none is named. On failure `result` is partly filled.
    bool fwPortIsBlocked(const PortCompareST& port,
                         const std::string& adapter,
                         std::map<std::string, FW_POLICY>& result);
    bool fwServIsBlocked(const std::string& service,
                         const std::string& adapter,
                         std::map<std::string, FW_POLICY>& result);

    // The steps of the operations above. They take no lock and hold no signals back; call them only
    // when no reload can be under way.

    // Runs one command line, a program's path and its arguments separated by blanks: at most 255
    // words and 1024 bytes. There is no shell and no quoting.
    bool cmdExec(const std::string& line);

    // Runs a command list, all IPv4 lines before all IPv6 lines, up to the first that fails.
    bool fwExec(Json::Value list);

    // Sets the policies of INPUT and FORWARD to DROP and adds the rule for established connections,
    // or sets them to ACCEPT and deletes it. Stops at the first command that fails.
    bool fwDefaultDrop();
    bool fwDefaultAccept();

    // Flushes the firewall's chains, all of them even if one fails.
    bool fwClear();
};

}  // namespace FW

#endif
