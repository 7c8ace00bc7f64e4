// One rule of a profile.
#ifndef COMMAND_DOCUMENT_RULECHECK_H
#define COMMAND_DOCUMENT_RULECHECK_H

#include <string>

#include "command/document/check.h"
#include "command/document/findingList.h"
#include "command/document/location.h"

namespace zamofw {

void checkRule(const Node& rule,
               const Location& where,
               const std::string& adapter,
               const CheckContext& context,
               FindingList& findings);

}  // namespace zamofw

#endif
