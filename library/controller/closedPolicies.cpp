#include "library/controller/closedPolicies.h"

#include <string>
#include <vector>

#include "library/controller/commandExecution.h"
#include "library/controller/deferredSignals.h"
#include "library/controller/switching.h"
#include "library/logging/log.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

// Sets the policies, and adds ("-A") or deletes ("-D") the guard rule. That rule keeps established
// connections alive while the firewall's own chains are empty.
std::vector<CommandLine> guardLines(const char* policy, const char* edit) {
    std::vector<CommandLine> lines;
    for (const Family& family : kFamilies) {
        lines.push_back({family, std::string("--policy INPUT ") + policy});
        lines.push_back({family, std::string("--policy FORWARD ") + policy});
        lines.push_back({family,
                         std::string(edit) + " " + kReloadingChain +
                             " -m state --state ESTABLISHED,RELATED -j ACCEPT"});
    }
    return lines;
}

bool closePolicies() {
    if (!runLines(guardLines("DROP", "-A"))) {
        return FW_FAILURE("Failed to fwExec() to set default drop.");
    }
    return true;
}

bool openPolicies() {
    if (!runLines(guardLines("ACCEPT", "-D"))) {
        return FW_FAILURE("Failed to fwExec() to set default accept.");
    }
    return true;
}

bool openOrDisable() {
    if (!openPolicies()) {
        (void)disableFirewall();
        return false;
    }
    return true;
}

}  // namespace

bool behindClosedPolicies(const std::function<bool()>& rebuild) {
    // A program that is ended in between would leave the host unreachable.
    const DeferredSignals deferred;
    if (!closePolicies()) {
        return false;
    }
    bool result = false;
    try {
        result = rebuild();
    } catch (...) {
        try {
            (void)openOrDisable();
        } catch (...) {
            // The first exception tells the caller what went wrong.
        }
        throw;
    }
    return openOrDisable() && result;
}

bool ZAMOFW::fwDefaultDrop() {
    return closePolicies();
}

bool ZAMOFW::fwDefaultAccept() {
    return openPolicies();
}

}  // namespace FW
