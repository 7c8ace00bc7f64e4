#include "command/answers/jsonLine.h"

#include <json/writer.h>

#include "zamofirewall/profileDatabase.h"

namespace zamofw {

std::string jsonLine(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

Json::Value ruleRecords(const std::vector<FW::FWRULE>& rules) {
    constexpr const char* kAdapter = "adapter";
    Json::Value records;
    FW::ZAMOFW_JSON_DB().ruleListToJson({{kAdapter, rules}}, records);
    return records[kAdapter];
}

}  // namespace zamofw
