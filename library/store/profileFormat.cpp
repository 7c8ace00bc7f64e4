// Profile records from and to the profile document:
//
//   { "name": string, "adapterPolicyMap": { adapter: policy, ... } or null,
//     "rules": { adapter: [ { "enable": true, "policy": 0, ... }, ... ], ... } or null }

#include <json/value.h>

#include <iterator>
#include <utility>

#include "library/model/ruleFields.h"
#include "zamofirewall/profileDatabase.h"

namespace FW {
namespace {

using RuleMap = std::map<std::string, std::vector<FWRULE>>;

template <typename Field>
Json::Value toJson(const Field& field) {
    return field;
}

template <typename Texts>
Json::Value listToJson(const Texts& texts) {
    Json::Value array(Json::arrayValue);
    for (const std::string& text : texts) {
        array.append(text);
    }
    return array;
}

Json::Value toJson(const std::vector<std::string>& texts) {
    return listToJson(texts);
}

Json::Value toJson(const std::set<std::string>& texts) {
    return listToJson(texts);
}

Json::Value ruleToJson(const FWRULE& rule, Json::Int position) {
    Json::Value json(Json::objectValue);
    json["ruleIndex"] = position;
    forEachField(rule,
                 [&json](const char* name, const auto& field) { json[name] = toJson(field); });
    return json;
}

// The conversions below throw Json::Exception for a member of a wrong type: the JSON library where
// it cannot convert (a string to a number), and arrayOrNull() where it would see an empty list.

const Json::Value& arrayOrNull(const Json::Value& json) {
    if (!json.isArray() && !json.isNull()) {
        Json::throwLogicError("a list is expected");
    }
    return json;
}

void fromJson(const Json::Value& json, bool& flag) {
    flag = json.asBool();
}

void fromJson(const Json::Value& json, std::int32_t& number) {
    number = json.asInt();
}

void fromJson(const Json::Value& json, FW_POLICY& policy) {
    policy = static_cast<FW_POLICY>(json.asInt());
}

void fromJson(const Json::Value& json, std::string& text) {
    text = json.asString();
}

void fromJson(const Json::Value& json, std::vector<std::string>& texts) {
    texts.clear();
    for (const Json::Value& text : arrayOrNull(json)) {
        texts.push_back(text.asString());
    }
}

// A file can add chains to the two that every rule is installed in, but not take them away.
void fromJson(const Json::Value& json, std::set<std::string>& chains) {
    for (const Json::Value& chain : arrayOrNull(json)) {
        chains.insert(chain.asString());
    }
}

FWRULE jsonToRule(const Json::Value& json) {
    FWRULE rule;
    fromJson(json["ruleID"], rule.ruleIndex);
    forEachField(rule, [&json](const char* name, auto& field) { fromJson(json[name], field); });
    return rule;
}

RuleMap jsonToRules(const Json::Value& json) {
    RuleMap rules;
    for (const std::string& adapter : json.getMemberNames()) {
        std::vector<FWRULE>& list = rules[adapter];
        for (const Json::Value& rule : arrayOrNull(json[adapter])) {
            list.push_back(jsonToRule(rule));
        }
    }
    return rules;
}

std::map<std::string, FW_POLICY> jsonToPolicies(const Json::Value& json) {
    std::map<std::string, FW_POLICY> policies;
    for (const std::string& adapter : json.getMemberNames()) {
        fromJson(json[adapter], policies[adapter]);
    }
    return policies;
}

void appendRules(RuleMap&& read, RuleMap& rules) {
    for (auto& [adapter, list] : read) {
        if (list.empty()) {
            continue;
        }
        std::vector<FWRULE>& target = rules[adapter];
        target.insert(target.end(),
                      std::make_move_iterator(list.begin()),
                      std::make_move_iterator(list.end()));
    }
}

}  // namespace

void ZAMOFW_JSON_DB::ruleListToJson(const RuleMap& rules, Json::Value& out) {
    for (const auto& [adapter, list] : rules) {
        Json::Int position = 0;
        for (const FWRULE& rule : list) {
            out[adapter].append(ruleToJson(rule, position));
            ++position;
        }
    }
}

void ZAMOFW_JSON_DB::profileToJson(const FWPROFILE& profile, Json::Value& out) {
    out["name"] = profile.name;
    ruleListToJson(profile.rules, out["rules"]);
    Json::Value policies;
    for (const auto& [adapter, policy] : profile.adapterPolicyMap) {
        policies[adapter] = policy;
    }
    out["adapterPolicyMap"] = std::move(policies);
}

bool ZAMOFW_JSON_DB::jsonToRuleList(Json::Value json, RuleMap& rules) {
    try {
        appendRules(jsonToRules(json), rules);
        return true;
    } catch (const Json::Exception&) {
        return false;
    }
}

bool ZAMOFW_JSON_DB::jsonToProfile(const Json::Value& json, FWPROFILE& profile) {
    try {
        std::string name = json["name"].asString();
        RuleMap rules = jsonToRules(json["rules"]);
        for (const auto& [adapter, policy] : jsonToPolicies(json["adapterPolicyMap"])) {
            profile.adapterPolicyMap[adapter] = policy;
        }
        profile.name = std::move(name);
        appendRules(std::move(rules), profile.rules);
        return true;
    } catch (const Json::Exception&) {
        return false;
    }
}

}  // namespace FW
