// The ports, services and the protocol of a rule.
#ifndef COMMAND_DOCUMENT_PORTCHECK_H
#define COMMAND_DOCUMENT_PORTCHECK_H

#include "command/document/check.h"
#include "command/document/findingList.h"
#include "command/document/rule.h"

namespace zamofw {

void checkPorts(const RuleUnderCheck& rule, const CheckContext& context, FindingList& findings);

}  // namespace zamofw

#endif
