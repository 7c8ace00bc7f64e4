#include "command/words/ruleWords.h"

#include "command/console.h"
#include "command/startsWith.h"
#include "command/words/policyWord.h"
#include "command/words/ports.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"
#include "command/words/values.h"
#include "command/words/wordForms.h"

namespace zamofw {
namespace {

// What the word was meant to be, as a question; empty when nothing is near.
std::string meantBy(const std::string& word, const Vocabulary& vocabulary) {
    if (vocabulary.services.count(word) != 0) {
        return "did you mean `--service " + word + "`?";
    }
    if (numberFromText(word, kHighestPort)) {
        return "did you mean `--port " + word + "`?";
    }
    const std::string policy = suggestedPolicy(word);
    return policy.empty() ? suggestion(word, ruleWordList()) : policy;
}

[[noreturn]] void refuseWord(const std::string& word, const Vocabulary& vocabulary) {
    const std::string near = meantBy(word, vocabulary);
    wrongUse(shown(word) + " is no word of a rule" + (near.empty() ? "" : ": " + near),
             "a rule is a verdict (allow, deny or none) and any of --from, --to, --from-country, "
             "--to-country, --proto, --port, --source-port, --service, --in, --out, --log, "
             "--disabled, --name, --label and --family");
}

[[noreturn]] void refuseSecond(Group group, const std::string& word, const std::string& earlier) {
    if (word == earlier) {
        wrongUse(shown(word) + " is said twice", "say it once");
    }
    const std::string both = shown(word) + " after " + shown(earlier) + ": ";
    if (group == Group::kVerdict) {
        wrongUse(both + "a rule has one verdict", "say allow, deny or none");
    }
    if (group == Group::kDirection) {
        wrongUse(both + "a rule is for one direction", "say --in or --out");
    }
    if (group == Group::kSide) {
        wrongUse(both + "a rule names one side of addresses", "leave one of them out");
    }
    wrongUse(both + "a rule names one of --port, --source-port and --service", "write two rules");
}

// The words with "--word=value" taken apart.
struct SplitWord {
    std::string word;
    std::optional<std::string> value;
};

SplitWord split(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (!startsWith(text, "--") || equals == std::string::npos) {
        return {text, std::nullopt};
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

std::string valueAfter(const std::string& word,
                       const std::vector<std::string>& words,
                       std::size_t& index) {
    if (index + 1 == words.size()) {
        wrongUse("the value of " + shown(word) + " is missing", "say it after the word");
    }
    const std::string& next = words[index + 1];
    if (!next.empty() && next.front() == '-') {
        wrongUse("the value of " + shown(word) + " is missing: " + shown(next) + " follows",
                 "say it after the word; one that begins with a dash is given as " + word + "=-x");
    }
    ++index;
    return next;
}

void readWord(const std::vector<std::string>& words, std::size_t& index, Reading& reading) {
    const SplitWord given = split(words[index]);
    const Form* const form = findForm(given.word);
    if (form == nullptr) {
        refuseWord(given.word, reading.vocabulary);
    }
    const auto said = reading.said.find(form->group);
    if (said != reading.said.end()) {
        refuseSecond(form->group, given.word, said->second);
    }
    if (form->group != Group::kLabel) {
        reading.said[form->group] = given.word;
    }
    if (!form->hasValue && given.value) {
        wrongUse(shown(given.word) + " takes no value, but is given " + shown(*given.value),
                 "say " + given.word + " alone");
    }
    std::string value;
    if (form->hasValue) {
        value = given.value ? *given.value : valueAfter(given.word, words, index);
    }
    form->take(reading, given.word, value);
}

// Once all words are known: what one of them means beside another.

void settleFamily(Reading& reading) {
    if (!reading.addressFamily) {
        return;
    }
    const std::int32_t ofAddress =
        *reading.addressFamily == 4 ? FW::FW_IP_TYPE_V4 : FW::FW_IP_TYPE_V6;
    if (reading.said.count(Group::kFamily) != 0 && reading.rule.ipType != ofAddress) {
        wrongUse(shown(reading.address) + " is IPv" + std::to_string(*reading.addressFamily) +
                     ", but --family says otherwise",
                 "leave --family away: it follows from the address");
    }
    reading.rule.ipType = ofAddress;
}

void settleCountries(const Reading& reading) {
    if (reading.rule.ipGroup != FW::FW_IP_GROUP_COUNTRY) {
        return;
    }
    for (const std::string& code : reading.rule.ipList) {
        const std::set<int>& families = reading.vocabulary.countries.at(code);
        for (const int family : {4, 6}) {
            const std::int32_t other = family == 4 ? FW::FW_IP_TYPE_V6 : FW::FW_IP_TYPE_V4;
            if (reading.rule.ipType != other && families.count(family) == 0) {
                wrongUse("there is no IPv" + std::to_string(family) + " data for the country " +
                             shown(code) + " on this machine",
                         "leave it out, or make the rule for the other family alone: --family " +
                             std::to_string(10 - family));
            }
        }
    }
}

// As the library's update of service rules sets it: for services that are neither TCP alone nor UDP
// alone it stays as it was.
std::int32_t protocolOf(const std::vector<std::string>& services, const Vocabulary& vocabulary) {
    bool tcp = false;
    bool udp = false;
    for (const std::string& service : services) {
        const std::int32_t protocol = vocabulary.services.at(service);
        tcp = tcp || protocol == FW::FW_PROTOCOL_TCP;
        udp = udp || protocol == FW::FW_PROTOCOL_UDP;
    }
    if (tcp == udp) {
        return FW::FW_PROTOCOL_BOTH;
    }
    return tcp ? FW::FW_PROTOCOL_TCP : FW::FW_PROTOCOL_UDP;
}

void settlePorts(Reading& reading) {
    FW::FWRULE& rule = reading.rule;
    const bool hasProtocol = reading.said.count(Group::kProtocol) != 0;
    if (rule.portGroup == FW::FW_PORT_GROUP_SERVICE) {
        if (hasProtocol) {
            wrongUse("--service with --proto: a service brings its own protocol",
                     "leave --proto away, or name the ports with --port");
        }
        rule.protocol = protocolOf(rule.portList, reading.vocabulary);
        return;
    }
    if (!hasProtocol) {
        return;
    }
    const bool hasPorts = rule.portGroup == FW::FW_PORT_GROUP_PORT;
    rule.portGroup = FW::FW_PORT_GROUP_PORT;
    if (rule.protocol == FW::FW_PROTOCOL_ICMP || rule.protocol == FW::FW_PROTOCOL_IGMP) {
        if (hasPorts) {
            wrongUse(shown(reading.said.at(Group::kPorts)) + " beside " +
                         (rule.protocol == FW::FW_PROTOCOL_ICMP ? "ICMP" : "IGMP") +
                         ": this protocol has no ports",
                     "say --proto tcp, udp or both, or leave the ports away");
        }
    } else if (!hasPorts) {
        rule.portList = {kEveryPort};
    }
}

FW::FWRULE ruleForEverything() {
    FW::FWRULE rule;
    rule.ipType = FW::FW_IP_TYPE_BOTH;
    rule.ipGroup = FW::FW_IP_GROUP_ALL;
    rule.portGroup = FW::FW_PORT_GROUP_ALL;
    rule.protocol = FW::FW_PROTOCOL_BOTH;
    return rule;
}

}  // namespace

FW::FWRULE ruleFromWords(const std::vector<std::string>& words, const Vocabulary& vocabulary) {
    Reading reading = {vocabulary, ruleForEverything(), {}, std::nullopt, ""};
    for (std::size_t index = 0; index < words.size(); ++index) {
        readWord(words, index, reading);
    }
    if (reading.said.count(Group::kVerdict) == 0) {
        wrongUse("the rule has no verdict", "say allow, deny or none");
    }
    settleFamily(reading);
    settleCountries(reading);
    settlePorts(reading);
    return reading.rule;
}

WordColumn columnOf(const std::string& word) {
    const Form* const form = findForm(split(word).word);
    if (form == nullptr) {
        return WordColumn::kRest;
    }
    switch (form->group) {
        case Group::kVerdict:
            return WordColumn::kVerdict;
        case Group::kDirection:
        case Group::kSide:
        case Group::kFamily:
            return WordColumn::kAddresses;
        case Group::kProtocol:
        case Group::kPorts:
            return WordColumn::kPorts;
        case Group::kLog:
        case Group::kDisabled:
        case Group::kName:
        case Group::kLabel:
            return WordColumn::kRest;
    }
    return WordColumn::kRest;
}

bool takesValue(const std::string& word) {
    const Form* const form = findForm(word);
    return form != nullptr && form->hasValue;
}

}  // namespace zamofw
