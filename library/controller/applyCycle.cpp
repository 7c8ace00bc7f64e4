// Switching the firewall on and off, and rebuilding the kernel's rules.

#include <boost/interprocess/exceptions.hpp>

#include "library/controller/closedPolicies.h"
#include "library/controller/commandExecution.h"
#include "library/controller/executionLock.h"
#include "library/controller/firewallModules.h"
#include "library/controller/profileTranslation.h"
#include "library/controller/switching.h"
#include "library/logging/log.h"
#include "library/store/settings.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

// fwDisable() takes no lock: it may have flushed the chains in the middle of the rebuild, and the
// lines that ran later would stay in a firewall that is stored as disabled.
//
// The note comes before the question. A disable that stores its status after the question finds the
// note and flushes the chains again, see disableFirewall().
bool flushIfDisabledMeanwhile(const ExecutionLock& executionLock, Documents& documents) {
    executionLock.noteRebuild();
    bool enabled = true;
    try {
        // The rules are those that were asked for, so a status that cannot be read changes nothing.
        (void)settingsStatus(documents, enabled);
    } catch (const boost::interprocess::interprocess_exception&) {
        return true;
    }
    return enabled || flushChains();
}

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
    Documents documents;
    bool enabled = false;
    if (!settingsStatus(documents, enabled)) {
        return FW_FAILURE("Failed to check status");
    }
    if (!enabled) {
        return true;
    }
    if (!firewallModLoad()) {
        return FW_FAILURE("Failed to firewallModLoad()");
    }
    return behindClosedPolicies([&, this] {
        (void)flushChains();
        std::string name;
        if (!settingsProfile(documents, name)) {
            return FW_FAILURE("Failed to fwProfileConfigGet()");
        }
        Json::Value list;
        if (!translateProfile(*this, documents, name, blEstablished, "", list)) {
            return FW_FAILURE("Failed to fwIptablesRulesEnum()");
        }
        return runListOrDisable(list) && flushIfDisabledMeanwhile(executionLock, documents);
    });
}

}  // namespace FW
