// The rules that name services instead of ports.
#ifndef LIBRARY_STORE_SERVICERULES_H
#define LIBRARY_STORE_SERVICERULES_H

#include <string>
#include <vector>

#include "zamofirewall/ruleModel.h"

namespace FW {

[[nodiscard]] bool namesServices(const FWRULE& rule);

// Removes the first mention of the service from the rule's list.
void removeService(const std::string& service, FWRULE& rule);

// Removes the service rules whose list is empty: they would have no effect.
void pruneServiceRules(std::vector<FWRULE>& rules);

}  // namespace FW

#endif
