#include <json/value.h>

#include <ostream>
#include <set>

#include "command/answers/adapterAnswers.h"
#include "command/answers/table.h"
#include "command/document/target.h"
#include "command/jsonLine.h"
#include "command/words/policyWord.h"
#include "zamofirewall/controller.h"

namespace zamofw {
namespace {

struct ListedAdapter {
    bool present = false;
    std::size_t rules = 0;
    std::optional<std::string> policy;
};

std::map<std::string, ListedAdapter> listedAdapters() {
    const FW::FWPROFILE profile = profileOf(readTarget({}));
    std::map<std::string, ListedAdapter> adapters;
    for (const auto& [name, rules] : profile.rules) {
        adapters[name].rules = rules.size();
    }
    for (const auto& [name, policy] : profile.adapterPolicyMap) {
        adapters[name].policy = policyText(policy);
    }
    std::set<std::string> usable;
    if (!FW::ZAMOFW().fwAdapterEnum(usable)) {
        failed("the network interfaces cannot be listed");
    }
    for (const std::string& name : usable) {
        adapters[name].present = true;
    }
    return adapters;
}

}  // namespace

Status adapterList(const Console& console) {
    Json::Value json(Json::objectValue);
    json["adapters"] = Json::Value(Json::arrayValue);
    std::vector<Row> rows;
    for (const auto& [name, adapter] : listedAdapters()) {
        Json::Value entry(Json::objectValue);
        entry["name"] = name;
        entry["present"] = adapter.present;
        entry["rules"] = static_cast<Json::UInt64>(adapter.rules);
        entry["policy"] = adapter.policy ? Json::Value(*adapter.policy) : Json::Value();
        json["adapters"].append(entry);
        rows.push_back({name,
                        adapter.present ? "present" : "absent",
                        std::to_string(adapter.rules),
                        adapter.policy.value_or("-")});
    }
    if (console.json) {
        console.out << jsonLine(json) << "\n";
    } else {
        printTable(console, {"ADAPTER", "STATE", "RULES", "DEFAULT"}, rows);
    }
    return Status::kDone;
}

}  // namespace zamofw
