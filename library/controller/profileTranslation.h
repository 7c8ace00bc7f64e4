// From a stored profile to its command list.
#ifndef LIBRARY_CONTROLLER_PROFILETRANSLATION_H
#define LIBRARY_CONTROLLER_PROFILETRANSLATION_H

#include <json/value.h>

#include <string>

#include "library/store/documents.h"

namespace FW {

class ZAMOFW_IPTABLES_RULES;

// ZAMOFW::fwIptablesRulesEnum() as a step of an operation that shares its documents. Logs its
// failures.
[[nodiscard]] bool translateProfile(ZAMOFW_IPTABLES_RULES& translator,
                                    Documents& documents,
                                    const std::string& name,
                                    bool established,
                                    const std::string& clientIp,
                                    Json::Value& list);

}  // namespace FW

#endif
