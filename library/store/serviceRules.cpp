#include "library/store/serviceRules.h"

#include <algorithm>

namespace FW {

bool namesServices(const FWRULE& rule) {
    return rule.portGroup == FW_PORT_GROUP_SERVICE ||
           rule.portGroup == FW_PORT_GROUP_RESERVED_SERVICE;
}

void removeService(const std::string& service, FWRULE& rule) {
    const auto found = std::find(rule.portList.begin(), rule.portList.end(), service);
    if (found != rule.portList.end()) {
        rule.portList.erase(found);
    }
}

void pruneServiceRules(std::vector<FWRULE>& rules) {
    const auto isIdle = [](const FWRULE& rule) {
        return namesServices(rule) && rule.portList.empty();
    };
    rules.erase(std::remove_if(rules.begin(), rules.end(), isIdle), rules.end());
}

}  // namespace FW
