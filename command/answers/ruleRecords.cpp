#include "command/answers/ruleRecords.h"

#include "zamofirewall/profileDatabase.h"

namespace zamofw {

Json::Value ruleRecords(const std::vector<FW::FWRULE>& rules) {
    constexpr const char* kAdapter = "adapter";
    Json::Value records;
    FW::ZAMOFW_JSON_DB().ruleListToJson({{kAdapter, rules}}, records);
    return records[kAdapter];
}

}  // namespace zamofw
