// One function for each field of a rule: from its codes and texts to fragments.
#ifndef LIBRARY_TRANSLATE_RULEFIELDS_H
#define LIBRARY_TRANSLATE_RULEFIELDS_H

#include <string>
#include <vector>

#include "library/translate/fragment.h"
#include "zamofirewall/ruleModel.h"

struct ZAMOFwServiceList;

namespace FW {

// The families that the rule is for; none for an unknown code.
[[nodiscard]] std::vector<AddressFamily> familiesOf(const FWRULE& rule);

[[nodiscard]] std::string tableFragment(const FWRULE& rule);
[[nodiscard]] std::vector<std::string> chainFragments(const FWRULE& rule);

// False for an unknown policy, which is logged.
[[nodiscard]] bool targetFragment(const FWRULE& rule, std::string& target);

// None when the addresses say nothing that iptables would take. An unknown group is logged.
[[nodiscard]] std::vector<AddressFragment> addressFragments(const FWRULE& rule);

// The fragments for ports of one protocol code; none for an unknown one.
[[nodiscard]] std::vector<PortFragment> portFragments(int protocol,
                                                      bool source,
                                                      const std::vector<std::string>& ports);

// The fragments of the rule's ports or services. False when there is no service catalogue. That and
// an unknown group are logged.
[[nodiscard]] bool rulePortFragments(const FWRULE& rule,
                                     ZAMOFwServiceList*& catalogue,
                                     std::vector<PortFragment>& fragments);

}  // namespace FW

#endif
