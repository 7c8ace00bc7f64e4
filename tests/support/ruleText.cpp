#include "tests/support/ruleText.h"

#include <boost/algorithm/string.hpp>
#include <sstream>

namespace test {
namespace {

using Words = std::map<std::string, int>;

const Words kPolicies = {{"allow", FW::FW_POLICY_ALLOW},
                         {"deny", FW::FW_POLICY_DENY},
                         {"none", FW::FW_POLICY_NONE},
                         {"partial", FW::FW_POLICY_PARTIAL}};
const Words kGroups = {{"services", FW::FW_PORT_GROUP_SERVICE},
                       {"ports", FW::FW_PORT_GROUP_PORT},
                       {"reserved", FW::FW_PORT_GROUP_RESERVED_SERVICE},
                       {"any", FW::FW_PORT_GROUP_ALL}};
const Words kProtocols = {
    {"tcp", FW::FW_PROTOCOL_TCP}, {"udp", FW::FW_PROTOCOL_UDP}, {"both", FW::FW_PROTOCOL_BOTH}};

int codeOf(const Words& words, const std::string& word) {
    const auto found = words.find(word);
    return found == words.end() ? std::stoi(word) : found->second;
}

std::string wordOf(const Words& words, int code) {
    for (const auto& [word, wordCode] : words) {
        if (wordCode == code) {
            return word;
        }
    }
    return std::to_string(code);
}

}  // namespace

FW::FW_POLICY parsePolicy(const std::string& word) {
    return static_cast<FW::FW_POLICY>(codeOf(kPolicies, word));
}

std::string policyText(FW::FW_POLICY policy) { return wordOf(kPolicies, policy); }

FW::FWRULE parseRule(const std::string& text) {
    FW::FWRULE rule;
    rule.ipGroup = FW::FW_IP_GROUP_ALL;
    std::istringstream words(text);
    std::string word;
    words >> word;
    if (word == "off") {
        rule.enable = false;
        words >> word;
    }
    rule.policy = parsePolicy(word);
    words >> word;
    rule.portGroup = codeOf(kGroups, word);
    if (rule.portGroup != FW::FW_PORT_GROUP_ALL) {
        words >> word;
        boost::split(rule.portList, word, boost::is_any_of(","));
    }
    while (words >> word) {
        if (word == "some") {
            rule.ipGroup = FW::FW_IP_GROUP_HOST;
            rule.ipList = {"10.0.0.9"};
        } else if (word == "source") {
            rule.portDirect = 1;
        } else {
            rule.protocol = codeOf(kProtocols, word);
        }
    }
    if (rule.portList == std::vector<std::string>{"-"}) {
        rule.portList.clear();
    }
    return rule;
}

std::string ruleText(const FW::FWRULE& rule) {
    return (rule.enable ? "" : "off ") + policyText(rule.policy) + " " +
           wordOf(kGroups, rule.portGroup) + " " + boost::join(rule.portList, ",") +
           (rule.ipGroup == FW::FW_IP_GROUP_ALL ? "" : " some") +
           (rule.portDirect == 0 ? " " : " source ") + wordOf(kProtocols, rule.protocol);
}

}  // namespace test
