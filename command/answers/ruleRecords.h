// Records of rules, as a profile document holds them.
#ifndef COMMAND_ANSWERS_RULERECORDS_H
#define COMMAND_ANSWERS_RULERECORDS_H

#include <json/value.h>

#include <vector>

#include "zamofirewall/ruleModel.h"

namespace zamofw {

// Those of an adapter's rules.
[[nodiscard]] Json::Value ruleRecords(const std::vector<FW::FWRULE>& rules);

}  // namespace zamofw

#endif
