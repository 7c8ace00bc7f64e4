#include "command/apply/kernelModules.h"

#include "command/console.h"
#include "zamofirewall/modules.h"

namespace zamofw {
namespace {

// The name in the note of loaded modules: the library's own.
constexpr const char* kOwner = "firewall";

}  // namespace

void loadKernelModules() {
    using Modules = FW::ZAMO_IPTABLES_MODULES;
    if (Modules::isModuleLoad(kOwner)) {
        return;
    }
    if (!Modules::iptablesCoreModLoad(kOwner) ||
        !Modules::moduleInsert(kOwner, {"compat_xtables.ko", "xt_geoip.ko", "xt_mac.ko"})) {
        failed("the kernel modules of the packet filter could not be loaded",
               "see that /usr/zamo/etc.defaults/iptables_modules_list is there and names modules "
               "of this kernel; the system log has a line for each that failed");
    }
}

}  // namespace zamofw
