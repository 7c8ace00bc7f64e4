// Reading the groups of modules from the module list file.

#include <zamo/core.h>

#include <array>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

#include "library/logging/log.h"
#include "zamofirewall/modules.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoIptablesModule";
constexpr const char* kModuleListFile = "/usr/zamo/etc.defaults/iptables_modules_list";
constexpr int kValueSize = 4096;

bool groupGet(const std::string& key, std::string& names) {
    std::array<char, kValueSize> value = {};
    if (VLIBCFileGetKeyValue(kModuleListFile, key.c_str(), value.data(), kValueSize, 0) <= 0) {
        return FW_FAILURE("Failed to get key %s from %s", key.c_str(), kModuleListFile);
    }
    names = value.data();
    return true;
}

// Every blank separates: between two in a row is an empty name, which the platform gets too.
void splitNames(const std::string& names, std::vector<std::string>& modules) {
    boost::algorithm::split(modules, names, boost::algorithm::is_any_of(" "));
}

}  // namespace

bool ZAMO_IPTABLES_MODULES::coreCommonModuleLoad(std::vector<std::string>& modules) {
    std::string joined;
    for (const char* key : {"KERNEL_MODULES_CORE", "KERNEL_MODULES_COMMON", "IPV6_MODULES"}) {
        std::string names;
        if (!groupGet(key, names)) {
            return false;
        }
        joined += (joined.empty() ? "" : " ") + names;
    }
    splitNames(joined, modules);
    return true;
}

bool ZAMO_IPTABLES_MODULES::natModuleLoad(std::vector<std::string>& modules) {
    return iptablesModListGet("KERNEL_MODULES_NAT", modules);
}

bool ZAMO_IPTABLES_MODULES::iptablesModListGet(const std::string& key,
                                               std::vector<std::string>& modules) {
    std::string names;
    if (!groupGet(key, names)) {
        return false;
    }
    splitNames(names, modules);
    return true;
}

}  // namespace FW
