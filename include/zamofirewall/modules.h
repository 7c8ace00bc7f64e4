// The netfilter kernel modules, loaded and unloaded for a named service.
#ifndef ZAMOFIREWALL_MODULES_H
#define ZAMOFIREWALL_MODULES_H

#include <string>
#include <vector>

#include "zamofirewall/export.h"

namespace FW {

// Each key of /usr/zamo/etc.defaults/iptables_modules_list is a group: module file names separated
// by single blanks. /tmp/iptables_serv_mod_list says for each service whether its modules are
// loaded; it is a flag, not a count.
//
// Operations return true on success, otherwise false with lines in the system log. Nothing is
// rolled back. A load or unload waits up to 30 seconds for the lock of the second file, and then
// goes on without it. No exceptions.
class ZAMOFW_EXPORT ZAMO_IPTABLES_MODULES {
  public:
    // Load or unload modules in the given order, then store the service's flag.
    static bool moduleInsert(const std::string& service, const std::vector<std::string>& modules);
    static bool moduleRemove(const std::string& service, const std::vector<std::string>& modules);

    static bool isModuleLoad(const std::string& service);

    // Replace `modules` by the names in a group: core, common and IPv6 together; NAT; any key.
    // Despite their names they load nothing.
    static bool coreCommonModuleLoad(std::vector<std::string>& modules);
    static bool natModuleLoad(std::vector<std::string>& modules);
    static bool iptablesModListGet(const std::string& key, std::vector<std::string>& modules);

    // Load or unload the core, common and IPv6 modules; the NAT versions also the NAT modules.
    static bool iptablesCoreModLoad(const std::string& service);
    static bool iptablesCoreModUnload(const std::string& service);
    static bool iptablesNATModLoad(const std::string& service);
    static bool iptablesNATModUnload(const std::string& service);
};

}  // namespace FW

#endif
