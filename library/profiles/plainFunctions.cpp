// The functions for C programs, except those about kernel modules.

#include <zamo/core.h>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <string>
#include <vector>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/profile.h"
#include "zamofirewall/zamofirewall_c.h"

using FW::FW_POLICY;
using FW::ZAMOFW;
using FW::ZAMOFW_PROFILE;

namespace {

constexpr const char* kLogModule = "zamofirewall_c";
constexpr int kReload = 1;

int status(bool success) {
    return success ? 0 : -1;
}

std::string textOrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

bool letsThrough(FW_POLICY answer) {
    return answer == FW::FW_POLICY_ALLOW || answer == FW::FW_POLICY_NONE;
}

}  // namespace

int ZAMOFwRuleHup(void) {
    ZAMOFW firewall;
    return status(firewall.fwUpdate() && firewall.fwReload(/*blEstablished=*/true));
}

void ZAMOFwReset(void) {
    (void)ZAMOFW().fwReset();
}

int VLIBFwServRemoveRec(const char* service) {
    return status(ZAMOFW_PROFILE().profileRemoveServ(textOrEmpty(service)));
}

int VLIBFwChangeAdatper(const char* oldAdapter, const char* newAdapter, int reload) {
    return status(ZAMOFW_PROFILE().profileChangeAdapter(
        textOrEmpty(oldAdapter), textOrEmpty(newAdapter), reload == kReload));
}

int ZAMOFwPortsCheckAllowByAdapter(const char* adapter, const char* service) {
    if (service == nullptr) {
        VLIBCErrSetEx(ZAMO_ERR_BAD_PARAMETERS, __FILE__, __LINE__);
        FW_LOG(LOG_ERR,
               "Bad parameters[0x%04X %s:%d]",
               static_cast<unsigned>(VLIBCErrGet()),
               VLIBCErrorGetFile(),
               VLIBCErrorGetLine());
        return -1;
    }
    std::map<std::string, FW_POLICY> result;
    if (!ZAMOFW().fwServIsBlocked(service, textOrEmpty(adapter), result)) {
        FW_LOG(LOG_ERR, "Failed to check %s is block or not", service);
        return -1;
    }
    for (const auto& entry : result) {
        if (!letsThrough(entry.second)) {
            return 0;
        }
    }
    return 1;
}

int VLIBFwRuleReserveServInsert(const char* services, int allow, int reload) {
    if (services == nullptr || *services == '\0') {
        VLIBCErrSetEx(ZAMO_ERR_BAD_PARAMETERS, __FILE__, __LINE__);
        return -1;
    }
    const FW_POLICY policy = allow != 0 ? FW::FW_POLICY_ALLOW : FW::FW_POLICY_DENY;
    const std::string list = services;
    std::vector<std::string> names;
    boost::algorithm::split(names, list, boost::algorithm::is_any_of(","));
    for (const std::string& name : names) {
        if (!ZAMOFW_PROFILE().profileAddServToReserve(
                FW::kGlobalAdapter, name, policy, /*reload=*/false)) {
            FW_LOG(LOG_ERR, "Failed to assign serv [%s]", name.c_str());
            return -1;
        }
    }
    if (reload == kReload && !ZAMOFW().fwReload(/*blEstablished=*/true)) {
        FW_LOG(LOG_ERR, "Failed to reload firewall");
        return -1;
    }
    return 0;
}
