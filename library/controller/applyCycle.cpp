// Switching the firewall on and off, and rebuilding the kernel's rules.

#include "library/controller/closedPolicies.h"
#include "library/controller/commandExecution.h"
#include "library/controller/executionLock.h"
#include "library/controller/firewallModules.h"
#include "library/controller/switching.h"
#include "library/logging/log.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

}  // namespace

bool ZAMOFW::fwEnable() {
    return enableFirewall([this] { return fwReload(/*blEstablished=*/true); });
}

bool ZAMOFW::fwDisable() {
    return disableFirewall();
}

bool ZAMOFW::fwReset() {
    return fwDisable();
}

bool ZAMOFW::fwReload(bool blEstablished) {
    ExecutionLock executionLock;
    if (!executionLock.lock()) {
        return false;
    }
    bool enabled = false;
    if (!fwStatus(enabled)) {
        return FW_FAILURE("Failed to check status");
    }
    if (!enabled) {
        return true;
    }
    if (!firewallModLoad()) {
        return FW_FAILURE("Failed to firewallModLoad()");
    }
    return behindClosedPolicies([this, blEstablished] {
        (void)flushChains();
        std::string name;
        if (!fwProfileConfigGet(name)) {
            return FW_FAILURE("Failed to fwProfileConfigGet()");
        }
        Json::Value list;
        if (!fwIptablesRulesEnum(name, list, blEstablished)) {
            return FW_FAILURE("Failed to fwIptablesRulesEnum()");
        }
        return runListOrDisable(list);
    });
}

}  // namespace FW
