#include "tests/support/ruleText.h"

#include <boost/algorithm/string.hpp>
#include <sstream>
#include <stdexcept>

namespace test {
namespace {

using FW::FWRULE;
using List = std::vector<std::string>;
using Words = std::map<std::string, std::int32_t>;

struct Field {
    const char* name;
    std::int32_t FWRULE::*code;
    Words words;
    // What follows the words, except the one that needs none.
    List FWRULE::*list = nullptr;
    const char* wordWithoutList = "";
};

const Words kPolicies = {{"allow", 0}, {"deny", 1}, {"none", 2}, {"partial", 3}};
const std::vector<Field> kFields = {
    {"portGroup",
     &FWRULE::portGroup,
     {{"services", 0}, {"ports", 1}, {"reserved", 2}, {"any", 3}},
     &FWRULE::portList,
     "any"},
    {"protocol",
     &FWRULE::protocol,
     {{"tcp", 1}, {"udp", 2}, {"both", 3}, {"icmp", 4}, {"igmp", 32}}},
    {"portDirect", &FWRULE::portDirect, {{"destination", 0}, {"source", 1}}},
    {"ipGroup",
     &FWRULE::ipGroup,
     {{"host", 0}, {"subnet", 1}, {"nowhere", 2}, {"country", 3}, {"range", 4}, {"everywhere", 5}},
     &FWRULE::ipList,
     "everywhere"},
    {"ipDirect", &FWRULE::ipDirect, {{"to", 0}, {"from", 1}}},
    {"ipType", &FWRULE::ipType, {{"v4", 0}, {"v6", 1}, {"v46", 2}}},
    {"adapterDirect", &FWRULE::adapterDirect, {{"out", 0}, {"in", 1}}},
};

FWRULE newRule() {
    FWRULE rule;
    rule.ipGroup = FW::FW_IP_GROUP_ALL;
    return rule;
}

// "~" is a blank, and '' an empty text.
List listOf(const std::string& text) {
    const std::string plain = boost::erase_all_copy(boost::replace_all_copy(text, "~", " "), "''");
    return text == "-" ? List() : split(plain, ",");
}

template <typename Texts>
std::string listText(const Texts& list) {
    return list.empty() ? "-" : boost::join(list, ",");
}

std::string wordOf(const Words& words, std::int32_t code) {
    for (const auto& [word, wordCode] : words) {
        if (wordCode == code) {
            return word;
        }
    }
    return "";
}

const Field& fieldNamed(const std::string& name) {
    for (const Field& field : kFields) {
        if (name == field.name) {
            return field;
        }
    }
    throw std::invalid_argument(name);
}

// "table=mangle" and the like.
void setNamed(const std::string& name, const std::string& value, FWRULE& rule) {
    if (name == "table") {
        rule.table = value;
    } else if (name == "name") {
        rule.name = value;
    } else if (name == "labels") {
        rule.labelList = listOf(value);
    } else if (name == "chains") {
        const List chains = listOf(value);
        rule.chainList.insert(chains.begin(), chains.end());
    } else {
        rule.*fieldNamed(name).code = std::stoi(value);
    }
}

void setWord(const std::string& word, std::istream& rest, FWRULE& rule) {
    for (const Field& field : kFields) {
        const auto found = field.words.find(word);
        if (found == field.words.end()) {
            continue;
        }
        rule.*field.code = found->second;
        if (std::string list; field.list != nullptr && word != field.wordWithoutList) {
            rest >> list;
            rule.*field.list = listOf(list);
        }
        return;
    }
    throw std::invalid_argument(word);
}

std::string fieldText(const Field& field, const FWRULE& rule) {
    std::string text = wordOf(field.words, rule.*field.code);
    if (text.empty()) {
        text = std::string(field.name) + "=" + std::to_string(rule.*field.code);
    }
    if (field.list != nullptr && (text != field.wordWithoutList || !(rule.*field.list).empty())) {
        text += " " + listText(rule.*field.list);
    }
    return text;
}

}  // namespace

List split(const std::string& text, const std::string& separator) {
    List parts;
    boost::iter_split(parts, text, boost::first_finder(separator));
    return parts;
}

FW::FW_POLICY parsePolicy(const std::string& word) {
    const auto found = kPolicies.find(word);
    return static_cast<FW::FW_POLICY>(found == kPolicies.end() ? std::stoi(word) : found->second);
}

std::string policyText(FW::FW_POLICY policy) {
    const std::string word = wordOf(kPolicies, policy);
    return word.empty() ? std::to_string(policy) : word;
}

bool isFirstWordOfRule(const std::string& word) {
    return word == "off" || kPolicies.count(word) != 0;
}

FWRULE parseRule(const std::string& text) {
    FWRULE rule = newRule();
    std::istringstream words(boost::replace_all_copy(text, " some", " host 10.0.0.9"));
    std::string word;
    words >> word;
    if (word == "off") {
        rule.enable = false;
        words >> word;
    }
    rule.policy = parsePolicy(word);
    while (words >> word) {
        const std::size_t equals = word.find('=');
        if (equals != std::string::npos) {
            setNamed(word.substr(0, equals), word.substr(equals + 1), rule);
        } else if (word == "log") {
            rule.blLog = true;
        } else {
            setWord(word, words, rule);
        }
    }
    return rule;
}

std::string ruleText(const FWRULE& rule) {
    const FWRULE usual = newRule();
    std::string text = (rule.enable ? "" : "off ") + policyText(rule.policy);
    for (const Field& field : kFields) {
        const std::string said = fieldText(field, rule);
        text += said == fieldText(field, usual) ? "" : " " + said;
    }
    text += rule.blLog ? " log" : "";
    text += rule.table == usual.table ? "" : " table=" + rule.table;
    text += rule.chainList == usual.chainList ? "" : " chains=" + listText(rule.chainList);
    text += rule.name.empty() ? "" : " name=" + rule.name;
    text += rule.labelList.empty() ? "" : " labels=" + listText(rule.labelList);
    return text;
}

}  // namespace test
