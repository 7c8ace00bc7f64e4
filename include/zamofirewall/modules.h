// The netfilter kernel modules, loaded and unloaded for a named service.
#ifndef ZAMOFIREWALL_MODULES_H
#define ZAMOFIREWALL_MODULES_H

#include <string>
#include <vector>

#include "zamofirewall/export.h"

namespace FW {

// The groups of modules are the keys of /usr/zamo/etc.defaults/iptables_modules_list, file names
// separated by single blanks. /tmp/iptables_serv_mod_list notes for each service whether its
// modules are loaded: a plain flag, no count. Operations return true on success, else false with
// lines in the system log; nothing is rolled back. A load or unload waits at most 30 seconds for
// the lock of the note, and goes on without it. Nothing is thrown.
class ZAMOFW_EXPORT ZAMO_IPTABLES_MODULES {
  public:
    // Load or unload modules in the order given, then note it.
    static bool moduleInsert(const std::string& service, const std::vector<std::string>& modules);
    static bool moduleRemove(const std::string& service, const std::vector<std::string>& modules);

    static bool isModuleLoad(const std::string& service);

    // Replace `modules` by the names of a group: core, common and IPv6; NAT; any key. They load
    // nothing.
    static bool coreCommonModuleLoad(std::vector<std::string>& modules);
    static bool natModuleLoad(std::vector<std::string>& modules);
    static bool iptablesModListGet(const std::string& key, std::vector<std::string>& modules);

    // Load or unload the core, common and IPv6 group; with NAT, that group and the NAT group.
    static bool iptablesCoreModLoad(const std::string& service);
    static bool iptablesCoreModUnload(const std::string& service);
    static bool iptablesNATModLoad(const std::string& service);
    static bool iptablesNATModUnload(const std::string& service);
};

}  // namespace FW

#endif
