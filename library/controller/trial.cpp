// Putting the trial copy of a profile into force.

#include "library/controller/closedPolicies.h"
#include "library/controller/commandExecution.h"
#include "library/controller/firewallModules.h"
#include "library/controller/switching.h"
#include "library/logging/log.h"
#include "library/store/trialName.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

}  // namespace

bool ZAMOFW::TestApplyingProfile(std::string name, const std::string& clientIp) {
    const std::string trial = trialName(name);
    if (!firewallModLoad()) {
        return FW_FAILURE("Failed to firewallModLoad()");
    }
    return behindClosedPolicies([&] {
        if (!flushChains()) {
            return FW_FAILURE("Failed to fwClear()");
        }
        Json::Value list;
        const bool translated = clientIp.empty()
                                    ? fwIptablesRulesEnum(trial, list, /*blEstablished=*/false)
                                    : fwIptablesRulesEnum(trial, list, clientIp);
        if (!translated) {
            return FW_FAILURE("Failed to fwIptablesRulesEnum()");
        }
        return runListOrDisable(list);
    });
}

bool ZAMOFW::TestApplyingProfile(std::string name) {
    return TestApplyingProfile(name, "");
}

}  // namespace FW
