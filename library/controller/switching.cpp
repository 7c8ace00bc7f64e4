#include "library/controller/switching.h"

#include "library/controller/commandExecution.h"
#include "library/controller/executionLock.h"
#include "library/controller/firewallModules.h"
#include "library/logging/log.h"
#include "library/store/settings.h"
#include "zamofirewall/hook.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

struct Hooks {
    bool (*before)();
    bool (*after)(bool result);
    const char* beforeFailure;
    const char* afterFailure;
};
constexpr Hooks kEnableHooks = {
    [] { return ZamoFwHook().RunFwEnablePreHook(); },
    [](bool result) { return ZamoFwHook().RunFwEnablePostHook(result); },
    "Failed to run firewall enable pre-hook.",
    "Failed to run firewall enable post-hook."};
constexpr Hooks kDisableHooks = {
    [] { return ZamoFwHook().RunFwDisablePreHook(); },
    [](bool result) { return ZamoFwHook().RunFwDisablePostHook(result); },
    "Failed to run firewall disable pre-hook.",
    "Failed to run firewall disable post-hook."};

void runAfter(const Hooks& hooks, bool result) {
    if (!hooks.after(result)) {
        FW_LOG(LOG_ERR, "%s", hooks.afterFailure);
    }
}

// A failed hook is logged and changes nothing. The second hook always runs, because packages undo
// there what they prepared in the first.
bool changeBetween(const Hooks& hooks, const std::function<bool()>& change) {
    bool result = false;
    try {
        if (!hooks.before()) {
            FW_LOG(LOG_ERR, "%s", hooks.beforeFailure);
        }
        result = change();
    } catch (...) {
        runAfter(hooks, false);
        throw;
    }
    runAfter(hooks, result);
    return result;
}

bool storeStatus(Documents& documents, bool enabled) {
    Json::Value values;
    values["status"] = enabled;
    if (!settingsSet(documents, values)) {
        return FW_FAILURE("Falied to configSet()");
    }
    return true;
}

// A reload that began while the firewall was enabled may have run most of its lines after the first
// flush, and have asked for the status before it was stored.
void flushAgainUnlessEnabled(Documents& documents) {
    bool enabled = false;
    (void)settingsStatus(documents, enabled);
    if (!enabled) {
        (void)flushChains();
    }
}

}  // namespace

bool enableFirewall(const std::function<bool()>& reload) {
    if (!firewallModLoad()) {
        return FW_FAILURE("Failed to firewallModLoad()");
    }
    return changeBetween(kEnableHooks, [&reload] {
        Documents documents;
        if (!storeStatus(documents, true)) {
            return false;
        }
        if (!reload()) {
            return FW_FAILURE("Failed to apply firewall rules");
        }
        return true;
    });
}

bool disableFirewall() {
    return changeBetween(kDisableHooks, [] {
        const RebuildNote before = lastRebuild();
        (void)flushChains();
        (void)firewallModUnload();
        Documents documents;
        if (!storeStatus(documents, false)) {
            return false;
        }
        if (lastRebuild() != before) {
            flushAgainUnlessEnabled(documents);
        }
        return true;
    });
}

bool runListOrDisable(const Json::Value& list) {
    if (!runCommandList(list)) {
        (void)disableFirewall();
        return FW_FAILURE("Failed to fwExec() so disable firewall");
    }
    return true;
}

}  // namespace FW
