#include "command/apply/kernelModules.h"

#include "command/console.h"
#include "zamofirewall/modules.h"

namespace zamofw {
namespace {

using Modules = FW::ZAMO_IPTABLES_MODULES;

// Those that the library loads beside the core modules.
const std::vector<std::string>& extraModules() {
    static const std::vector<std::string> kFiles = {
        "compat_xtables.ko", "xt_geoip.ko", "xt_mac.ko"};
    return kFiles;
}

}  // namespace

void loadKernelModules() {
    if (!Modules::isModuleLoad(kModuleOwner)) {
        loadKernelModulesAgain();
    }
}

void loadKernelModulesAgain() {
    if (!Modules::iptablesCoreModLoad(kModuleOwner) ||
        !Modules::moduleInsert(kModuleOwner, extraModules())) {
        failed("the kernel modules of the packet filter could not be loaded",
               "see that /usr/zamo/etc.defaults/iptables_modules_list is there and names modules "
               "of this kernel; the system log has a line for each that failed");
    }
}

std::vector<std::string> firewallModules() {
    std::vector<std::string> files;
    if (!Modules::coreCommonModuleLoad(files)) {
        failed(
            "the list of the kernel modules, /usr/zamo/etc.defaults/iptables_modules_list, "
            "cannot be read",
            "install the package again");
    }
    files.insert(files.end(), extraModules().begin(), extraModules().end());
    return files;
}

}  // namespace zamofw
