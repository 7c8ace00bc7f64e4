// The addresses and countries of a rule.
#ifndef COMMAND_DOCUMENT_ADDRESSCHECK_H
#define COMMAND_DOCUMENT_ADDRESSCHECK_H

#include "command/document/check.h"
#include "command/document/findingList.h"
#include "command/document/rule.h"

namespace zamofw {

void checkAddresses(const RuleUnderCheck& rule, const CheckContext& context, FindingList& findings);

// What can stand after "ADDRESS/" in a line to iptables; of either family when `family` is 0. It
// reads numbers as C does and takes every mask, those with gaps too.
[[nodiscard]] bool isPrefixOrMask(const std::string& text, int family);

}  // namespace zamofw

#endif
