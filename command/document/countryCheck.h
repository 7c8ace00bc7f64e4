// The countries of a rule.
#ifndef COMMAND_DOCUMENT_COUNTRYCHECK_H
#define COMMAND_DOCUMENT_COUNTRYCHECK_H

#include "command/document/check.h"
#include "command/document/findingList.h"
#include "command/document/rule.h"

namespace zamofw {

void checkCountries(const RuleUnderCheck& rule, const CheckContext& context, FindingList& findings);

}  // namespace zamofw

#endif
