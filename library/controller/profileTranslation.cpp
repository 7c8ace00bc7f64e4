#include "library/controller/profileTranslation.h"

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/store/profileStore.h"
#include "library/translate/interfaceList.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

}  // namespace

bool translateProfile(ZAMOFW_IPTABLES_RULES& translator,
                      Documents& documents,
                      const std::string& name,
                      bool established,
                      const std::string& clientIp,
                      Json::Value& list) {
    FWPROFILE profile;
    if (!readProfile(documents, name, profile)) {
        return FW_FAILURE("Failed to profileGet(%s)", name.c_str());
    }
    if (!translator.fwRulesToIptablesRules(
            established, profile.rules, profile.adapterPolicyMap, list, clientIp)) {
        return FW_FAILURE("Failed to fwRulesToIptablesRules()");
    }
    return true;
}

bool ZAMOFW::fwIptablesRulesEnum(std::string name, Json::Value& out, bool blEstablished) {
    Documents documents;
    return translateProfile(*this, documents, name, blEstablished, "", out);
}

bool ZAMOFW::fwIptablesRulesEnum(std::string name, Json::Value& out, const std::string& clientIp) {
    Documents documents;
    return translateProfile(*this, documents, name, /*established=*/true, clientIp, out);
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
