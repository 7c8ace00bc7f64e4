// JSON for standard output.
#ifndef COMMAND_ANSWERS_JSONLINE_H
#define COMMAND_ANSWERS_JSONLINE_H

#include <json/value.h>

#include <string>

#include "zamofirewall/ruleModel.h"

namespace zamofw {

// The value on one line, without a line feed at the end. Characters beyond ASCII are escaped.
[[nodiscard]] std::string jsonLine(const Json::Value& value);

// The records of an adapter's rules, as a profile document holds them.
[[nodiscard]] Json::Value ruleRecords(const std::vector<FW::FWRULE>& rules);

}  // namespace zamofw

#endif
