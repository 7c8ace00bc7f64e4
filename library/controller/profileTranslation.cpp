// Turning a stored profile into a command list, and listing the adapters that a profile may name.

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/translate/interfaceList.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/profileDatabase.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

bool translate(ZAMOFW& controller,
               const std::string& name,
               bool established,
               const std::string& clientIp,
               Json::Value& out) {
    FWPROFILE profile;
    if (!ZAMOFW_JSON_DB().profileGet(name, profile)) {
        return FW_FAILURE("Failed to profileGet(%s)", name.c_str());
    }
    if (!controller.fwRulesToIptablesRules(
            established, profile.rules, profile.adapterPolicyMap, out, clientIp)) {
        return FW_FAILURE("Failed to fwRulesToIptablesRules()");
    }
    return true;
}

}  // namespace

bool ZAMOFW::fwIptablesRulesEnum(std::string name, Json::Value& out, bool blEstablished) {
    return translate(*this, name, blEstablished, "", out);
}

bool ZAMOFW::fwIptablesRulesEnum(std::string name, Json::Value& out, const std::string& clientIp) {
    return translate(*this, name, /*established=*/true, clientIp, out);
}

bool ZAMOFW::fwAdapterEnum(std::set<std::string>& adapters) {
    std::vector<std::string> names;
    if (!listInterfaces(kLogModule, names)) {
        return false;
    }
    adapters.insert(names.begin(), names.end());
    adapters.insert(kPredefinedAdapters.begin(), kPredefinedAdapters.end());
    return true;
}

}  // namespace FW
