#include "library/controller/firewallModules.h"

#include <string>
#include <vector>

#include "library/logging/log.h"
#include "zamofirewall/modules.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";
constexpr const char* kOwner = "firewall";

const std::vector<std::string>& extraModules() {
    static const std::vector<std::string> modules = {
        "compat_xtables.ko", "xt_geoip.ko", "xt_mac.ko"};
    return modules;
}

}  // namespace

bool firewallModLoad() {
    if (ZAMO_IPTABLES_MODULES::isModuleLoad(kOwner)) {
        return true;
    }
    if (!ZAMO_IPTABLES_MODULES::iptablesCoreModLoad(kOwner)) {
        return FW_FAILURE("Failed to iptablesCoreModLoad");
    }
    if (!ZAMO_IPTABLES_MODULES::moduleInsert(kOwner, extraModules())) {
        return FW_FAILURE("Failed to moduleInsert()");
    }
    return true;
}

// fixed texts: the messages of a removal are those of an insertion
bool firewallModUnload() {
    if (!ZAMO_IPTABLES_MODULES::isModuleLoad(kOwner)) {
        return true;
    }
    const std::vector<std::string> reversed(extraModules().rbegin(), extraModules().rend());
    if (!ZAMO_IPTABLES_MODULES::moduleRemove(kOwner, reversed)) {
        return FW_FAILURE("Failed to moduleInsert()");
    }
    if (!ZAMO_IPTABLES_MODULES::iptablesCoreModUnload(kOwner)) {
        return FW_FAILURE("Failed to iptablesCoreModLoad");
    }
    return true;
}

}  // namespace FW
