// The one list of a rule's stored fields.
#ifndef LIBRARY_MODEL_RULEFIELDS_H
#define LIBRARY_MODEL_RULEFIELDS_H

#include "zamofirewall/ruleModel.h"

namespace FW {

// Calls visit(name, field) for every field that a profile file holds, in the order of reading.
// ruleIndex is not among them: a file has the rule's position instead.
template <typename Rule, typename Visit>
void forEachField(Rule& rule, const Visit& visit) {
    visit("enable", rule.enable);
    visit("adapterDirect", rule.adapterDirect);
    visit("protocol", rule.protocol);
    visit("policy", rule.policy);
    visit("blLog", rule.blLog);
    visit("name", rule.name);
    visit("table", rule.table);
    visit("labelList", rule.labelList);
    visit("chainList", rule.chainList);
    visit("ipType", rule.ipType);
    visit("ipDirect", rule.ipDirect);
    visit("ipGroup", rule.ipGroup);
    visit("ipList", rule.ipList);
    visit("portDirect", rule.portDirect);
    visit("portGroup", rule.portGroup);
    visit("portList", rule.portList);
}

}  // namespace FW

#endif
