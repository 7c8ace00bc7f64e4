// Keeping services in the profiles on behalf of the services themselves: one reserved-service rule
// per adapter, at the head of its list.

#include <algorithm>

#include "library/logging/log.h"
#include "library/store/profileStore.h"
#include "library/store/serviceRules.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/profile.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

bool isReservedRule(const FWRULE& rule) {
    return rule.portGroup == FW_PORT_GROUP_RESERVED_SERVICE && rule.ipGroup == FW_IP_GROUP_ALL;
}

FWRULE reservedRule(const std::string& service, FW_POLICY policy) {
    FWRULE rule;
    rule.policy = policy;
    rule.name = "Service";
    rule.ipType = FW_IP_TYPE_BOTH;
    rule.ipGroup = FW_IP_GROUP_ALL;
    rule.portGroup = FW_PORT_GROUP_RESERVED_SERVICE;
    rule.protocol = FW_PROTOCOL_BOTH;
    rule.portList = {service};
    return rule;
}

// Adds the service to the rule at the head, if that is an enabled reserved rule of this policy.
bool addToHead(const std::string& service, FW_POLICY policy, std::vector<FWRULE>& rules) {
    if (rules.empty()) {
        return false;
    }
    FWRULE& head = rules.front();
    if (!isReservedRule(head) || !head.enable || head.policy != policy) {
        return false;
    }
    if (std::find(head.portList.begin(), head.portList.end(), service) == head.portList.end()) {
        head.portList.push_back(service);
    }
    return true;
}

void reserve(const std::string& service, FW_POLICY policy, std::vector<FWRULE>& rules) {
    if (addToHead(service, policy, rules)) {
        return;
    }
    for (FWRULE& rule : rules) {
        if (isReservedRule(rule)) {
            removeService(service, rule);
        }
    }
    pruneServiceRules(rules);
    rules.insert(rules.begin(), reservedRule(service, policy));
}

}  // namespace

bool ZAMOFW_PROFILE::profileAddServToReserve(const std::string& adapter,
                                             const std::string& service,
                                             FW_POLICY policy,
                                             bool reload) {
    Documents documents;
    ProfileIndex index(documents);
    ProfileMap profiles;
    if (!readProfiles(index, profiles)) {
        return FW_FAILURE("Failed to profileEnum()");
    }
    for (auto& [name, profile] : profiles) {
        reserve(service, policy, profile.rules[adapter]);
        if (!rewriteProfile(index, name, profile)) {
            return FW_FAILURE("Failed to set profile");
        }
    }
    if (reload && !ZAMOFW().fwReload(/*blEstablished=*/true)) {
        return FW_FAILURE("Failed to firewall reload");
    }
    return true;
}

bool ZAMOFW_PROFILE::profileRemoveServ(const std::string& service) {
    Documents documents;
    ProfileIndex index(documents);
    ProfileMap profiles;
    if (!readProfiles(index, profiles)) {
        return FW_FAILURE("Failed to profileEnum()");
    }
    for (auto& [name, profile] : profiles) {
        for (auto& adapter : profile.rules) {
            for (FWRULE& rule : adapter.second) {
                if (namesServices(rule)) {
                    removeService(service, rule);
                }
            }
            pruneServiceRules(adapter.second);
        }
        if (!rewriteProfile(index, name, profile)) {
            return FW_FAILURE("Failed to profile set [%s]", name.c_str());
        }
    }
    return true;
}

}  // namespace FW
