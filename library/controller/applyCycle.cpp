// Switching the firewall on and off, and rebuilding the kernel's rules.

#include <functional>

#include "library/controller/executionLock.h"
#include "library/controller/firewallModules.h"
#include "library/controller/rebuild.h"
#include "library/logging/log.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/hook.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

struct Hooks {
    bool (ZamoFwHook::*before)();
    bool (ZamoFwHook::*after)(bool);
    const char* beforeFailure;
    const char* afterFailure;
};
constexpr Hooks kEnableHooks = {&ZamoFwHook::RunFwEnablePreHook,
                                &ZamoFwHook::RunFwEnablePostHook,
                                "Failed to run firewall enable pre-hook.",
                                "Failed to run firewall enable post-hook."};
constexpr Hooks kDisableHooks = {&ZamoFwHook::RunFwDisablePreHook,
                                 &ZamoFwHook::RunFwDisablePostHook,
                                 "Failed to run firewall disable pre-hook.",
                                 "Failed to run firewall disable post-hook."};

// A hook that fails is logged and changes nothing. The one after the change runs in any case: what
// the one before it has prepared must be brought to an end.
bool runBetween(const Hooks& hooks, const std::function<bool()>& change) {
    ZamoFwHook hook;
    const auto runAfter = [&](bool result) {
        if (!(hook.*hooks.after)(result)) {
            FW_LOG(LOG_ERR, "%s", hooks.afterFailure);
        }
    };
    bool result = false;
    try {
        if (!(hook.*hooks.before)()) {
            FW_LOG(LOG_ERR, "%s", hooks.beforeFailure);
        }
        result = change();
    } catch (...) {
        runAfter(false);
        throw;
    }
    runAfter(result);
    return result;
}

bool storeStatus(ZAMOFW& controller, bool enabled) {
    Json::Value values;
    values["status"] = enabled;
    if (!controller.configSet(values)) {
        return FW_FAILURE("Falied to configSet()");
    }
    return true;
}

}  // namespace

bool ZAMOFW::fwEnable() {
    if (!firewallModLoad()) {
        return FW_FAILURE("Failed to firewallModLoad()");
    }
    return runBetween(kEnableHooks, [this] {
        if (!storeStatus(*this, true)) {
            return false;
        }
        if (!fwReload(/*blEstablished=*/true)) {
            return FW_FAILURE("Failed to apply firewall rules");
        }
        return true;
    });
}

bool ZAMOFW::fwDisable() {
    return runBetween(kDisableHooks, [this] {
        (void)fwClear();
        (void)firewallModUnload();
        return storeStatus(*this, false);
    });
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
    return rebuildRules(*this, [this, blEstablished] {
        (void)fwClear();
        std::string name;
        if (!fwProfileConfigGet(name)) {
            return FW_FAILURE("Failed to fwProfileConfigGet()");
        }
        Json::Value list;
        if (!fwIptablesRulesEnum(name, list, blEstablished)) {
            return FW_FAILURE("Failed to fwIptablesRulesEnum()");
        }
        return execOrDisable(*this, std::move(list));
    });
}

}  // namespace FW
