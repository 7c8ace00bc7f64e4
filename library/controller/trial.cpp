// Putting the trial copy of a profile into force.

#include "library/controller/firewallModules.h"
#include "library/controller/rebuild.h"
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
    return rebuildRules(*this, [&] {
        if (!fwClear()) {
            return FW_FAILURE("Failed to fwClear()");
        }
        Json::Value list;
        const bool translated = clientIp.empty()
                                    ? fwIptablesRulesEnum(trial, list, /*blEstablished=*/false)
                                    : fwIptablesRulesEnum(trial, list, clientIp);
        if (!translated) {
            return FW_FAILURE("Failed to fwIptablesRulesEnum()");
        }
        return execOrDisable(*this, std::move(list));
    });
}

bool ZAMOFW::TestApplyingProfile(std::string name) {
    return TestApplyingProfile(name, "");
}

}  // namespace FW
