// Profile records from and to the profile document:
//
//   { "name": text, "adapterPolicyMap": { adapter: policy, ... } or null,
//     "rules": { adapter: [ { "enable": true, "policy": 0, ... }, ... ], ... } or null }

#include <json/value.h>

#include <iterator>
#include <utility>

#include "zamofirewall/profileDatabase.h"

namespace FW {
namespace {

using RuleMap = std::map<std::string, std::vector<FWRULE>>;

template <typename Texts>
Json::Value textsToJson(const Texts& texts) {
    Json::Value array(Json::arrayValue);
    for (const std::string& text : texts) {
        array.append(text);
    }
    return array;
}

Json::Value ruleToJson(const FWRULE& rule, Json::Int position) {
    Json::Value json(Json::objectValue);
    json["ruleIndex"] = position;
    json["enable"] = rule.enable;
    json["adapterDirect"] = rule.adapterDirect;
    json["protocol"] = rule.protocol;
    json["policy"] = rule.policy;
    json["blLog"] = rule.blLog;
    json["name"] = rule.name;
    json["table"] = rule.table;
    json["labelList"] = textsToJson(rule.labelList);
    json["chainList"] = textsToJson(rule.chainList);
    json["ipType"] = rule.ipType;
    json["ipDirect"] = rule.ipDirect;
    json["ipGroup"] = rule.ipGroup;
    json["ipList"] = textsToJson(rule.ipList);
    json["portDirect"] = rule.portDirect;
    json["portGroup"] = rule.portGroup;
    json["portList"] = textsToJson(rule.portList);
    return json;
}

// The conversions below throw Json::Exception for a member of a wrong type: the JSON library where
// it cannot convert (a text to a number), and these two where it would see an empty list.

const Json::Value& arrayOrNull(const Json::Value& json) {
    if (!json.isArray() && !json.isNull()) {
        Json::throwLogicError("a list is expected");
    }
    return json;
}

std::vector<std::string> jsonToTexts(const Json::Value& json) {
    std::vector<std::string> texts;
    for (const Json::Value& text : arrayOrNull(json)) {
        texts.push_back(text.asString());
    }
    return texts;
}

FWRULE jsonToRule(const Json::Value& json) {
    FWRULE rule;
    rule.ruleIndex = json["ruleID"].asInt();
    rule.enable = json["enable"].asBool();
    rule.adapterDirect = json["adapterDirect"].asInt();
    rule.protocol = json["protocol"].asInt();
    rule.policy = static_cast<FW_POLICY>(json["policy"].asInt());
    rule.blLog = json["blLog"].asBool();
    rule.name = json["name"].asString();
    rule.table = json["table"].asString();
    rule.labelList = jsonToTexts(json["labelList"]);
    // A file can add chains to the two that every rule is installed in, but not take them away.
    for (std::string& chain : jsonToTexts(json["chainList"])) {
        rule.chainList.insert(std::move(chain));
    }
    rule.ipType = json["ipType"].asInt();
    rule.ipDirect = json["ipDirect"].asInt();
    rule.ipGroup = json["ipGroup"].asInt();
    rule.ipList = jsonToTexts(json["ipList"]);
    rule.portDirect = json["portDirect"].asInt();
    rule.portGroup = json["portGroup"].asInt();
    rule.portList = jsonToTexts(json["portList"]);
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
        policies[adapter] = static_cast<FW_POLICY>(json[adapter].asInt());
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
