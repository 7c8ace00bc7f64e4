// The functions for C programs that load and unload modules.

#include <string>

#include "library/logging/log.h"
#include "zamofirewall/modules.h"
#include "zamofirewall/zamofirewall_c.h"

namespace {

constexpr const char* kLogModule = "zamoIptablesModule";

int runFor(const char* service, bool (*operation)(const std::string&)) {
    if (service == nullptr) {
        FW_LOG(LOG_ERR, "servName is NULL");
        return -1;
    }
    return operation(service) ? 0 : -1;
}

}  // namespace

using FW::ZAMO_IPTABLES_MODULES;

int ZAMOIptablesCodeModeLoad(const char* service) {
    return runFor(service, ZAMO_IPTABLES_MODULES::iptablesCoreModLoad);
}

int ZAMOIptablesCoreModUnload(const char* service) {
    return runFor(service, ZAMO_IPTABLES_MODULES::iptablesCoreModUnload);
}

int ZAMOIptablesNATModLoad(const char* service) {
    return runFor(service, ZAMO_IPTABLES_MODULES::iptablesNATModLoad);
}

int ZAMOIptablesNATModUnload(const char* service) {
    return runFor(service, ZAMO_IPTABLES_MODULES::iptablesNATModUnload);
}
