// A rule said in words.

#include <boost/algorithm/string/join.hpp>
#include <tuple>

#include "command/console.h"
#include "command/words/policyWord.h"
#include "command/words/ports.h"
#include "command/words/ruleWords.h"

namespace zamofw {
namespace {

using Words = std::vector<std::string>;

// A value that begins with a dash would be taken for a word.
void addValue(const std::string& word, const std::string& value, Words& words) {
    if (!value.empty() && value.front() == '-') {
        words.push_back(word + "=" + value);
        return;
    }
    words.push_back(word);
    words.push_back(value);
}

void addFamily(const FW::FWRULE& rule, Words& words) {
    if (rule.ipType == FW::FW_IP_TYPE_V4) {
        addValue("--family", "4", words);
    } else if (rule.ipType == FW::FW_IP_TYPE_V6) {
        addValue("--family", "6", words);
    }
}

void addAddresses(const FW::FWRULE& rule, Words& words) {
    const std::string side = rule.ipDirect != 0 ? "--from" : "--to";
    switch (rule.ipGroup) {
        case FW::FW_IP_GROUP_HOST:
            addValue(side, boost::algorithm::join(rule.ipList, ","), words);
            return;
        case FW::FW_IP_GROUP_SUBNET:
            addValue(side, boost::algorithm::join(rule.ipList, "/"), words);
            return;
        case FW::FW_IP_GROUP_RANGE:
            addValue(side, boost::algorithm::join(rule.ipList, "-"), words);
            return;
        case FW::FW_IP_GROUP_COUNTRY:
            addValue(side + "-country", boost::algorithm::join(rule.ipList, ","), words);
            addFamily(rule, words);
            return;
        default:
            if (rule.ipDirect == 0) {
                addValue(side, "any", words);
            }
            addFamily(rule, words);
    }
}

const char* protocolWord(std::int32_t protocol) {
    switch (protocol) {
        case FW::FW_PROTOCOL_TCP:
            return "tcp";
        case FW::FW_PROTOCOL_UDP:
            return "udp";
        case FW::FW_PROTOCOL_ICMP:
            return "icmp";
        case FW::FW_PROTOCOL_IGMP:
            return "igmp";
        default:
            return "both";
    }
}

void addPorts(const FW::FWRULE& rule, Words& words) {
    const std::string ports = boost::algorithm::join(rule.portList, ",");
    if (rule.portGroup == FW::FW_PORT_GROUP_SERVICE) {
        addValue("--service", ports, words);
        return;
    }
    if (rule.portGroup != FW::FW_PORT_GROUP_PORT) {
        return;
    }
    const bool isEveryPort = ports.empty() || (ports == kEveryPort && rule.portDirect == 0);
    if (isEveryPort || rule.protocol != FW::FW_PROTOCOL_BOTH) {
        addValue("--proto", protocolWord(rule.protocol), words);
    }
    if (!isEveryPort) {
        addValue(rule.portDirect != 0 ? "--source-port" : "--port", ports, words);
    }
}

// The words for what the rule's fields hold, whether or not they say all of it.
Words nearestWords(const FW::FWRULE& rule) {
    Words words = {wordOfPolicy(rule.policy).value_or("none")};
    if (rule.adapterDirect == 0) {
        words.emplace_back("--out");
    }
    addAddresses(rule, words);
    addPorts(rule, words);
    if (rule.blLog) {
        words.emplace_back("--log");
    }
    if (!rule.enable) {
        words.emplace_back("--disabled");
    }
    if (!rule.name.empty()) {
        addValue("--name", rule.name, words);
    }
    for (const std::string& label : rule.labelList) {
        addValue("--label", label, words);
    }
    return words;
}

auto fieldsOf(const FW::FWRULE& rule) {
    return std::tie(rule.enable,
                    rule.adapterDirect,
                    rule.policy,
                    rule.blLog,
                    rule.labelList,
                    rule.name,
                    rule.table,
                    rule.chainList,
                    rule.ipType,
                    rule.ipDirect,
                    rule.ipGroup,
                    rule.ipList,
                    rule.portDirect,
                    rule.portGroup,
                    rule.protocol,
                    rule.portList);
}

}  // namespace

std::optional<std::vector<std::string>> wordsOfRule(const FW::FWRULE& rule,
                                                    const Vocabulary& vocabulary) {
    Words words = nearestWords(rule);
    try {
        // Fields have values that no words stand for, also where they are not used, so that only
        // reading the words tells whether they say the rule.
        if (fieldsOf(ruleFromWords(words, vocabulary)) == fieldsOf(rule)) {
            return words;
        }
    } catch (const Failure&) {
        // A value that no word takes.
    }
    return std::nullopt;
}

}  // namespace zamofw
