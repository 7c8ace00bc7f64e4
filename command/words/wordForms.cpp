#include "command/words/wordForms.h"

#include <algorithm>
#include <array>

#include "command/words/addresses.h"
#include "command/words/plainText.h"
#include "command/words/policyWord.h"
#include "command/words/ports.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"
#include "command/words/values.h"

namespace zamofw {
namespace {

// What a match of the kernel takes.
constexpr std::size_t kMostCountries = 15;

template <typename Value>
std::vector<std::string> names(const std::map<std::string, Value>& known) {
    std::vector<std::string> list;
    list.reserve(known.size());
    for (const auto& entry : known) {
        list.push_back(entry.first);
    }
    return list;
}

[[noreturn]] void refuseCountry(const Vocabulary& vocabulary,
                                const std::string& word,
                                const std::string& value,
                                const std::string& code) {
    if (vocabulary.countries.empty()) {
        wrongValue(word,
                   value,
                   "there is no country data on this machine",
                   "install the files of the geoip match in /usr/share/xt_geoip/");
    }
    const std::string near = suggestion(code, names(vocabulary.countries));
    wrongValue(
        word,
        value,
        "there is no data for the country " + shown(code) + (near.empty() ? "" : ": " + near),
        "`zamofw country list` shows the countries with data on this machine");
}

[[noreturn]] void refuseService(const Vocabulary& vocabulary,
                                const std::string& word,
                                const std::string& value,
                                const std::string& service) {
    if (vocabulary.services.empty()) {
        wrongValue(word,
                   value,
                   "there are no services on this machine",
                   "install their files in /usr/zamo/etc.defaults/services.d/, or name the ports "
                   "with --port");
    }
    const std::string near = suggestion(service, names(vocabulary.services));
    wrongValue(word,
               value,
               "there is no service " + shown(service) + (near.empty() ? "" : ": " + near),
               "`zamofw service list` shows the services; --port takes numbers");
}

void takeVerdict(Reading& reading, const std::string& word, const std::string&) {
    reading.rule.policy = *policyFromWord(word);
}

void takeDirection(Reading& reading, const std::string& word, const std::string&) {
    reading.rule.adapterDirect = word == "--in" ? 1 : 0;
}

void takeAddresses(Reading& reading, const std::string& word, const std::string& value) {
    const Addresses addresses = addressesFromText(word, value);
    reading.rule.ipDirect = word == "--from" ? 1 : 0;
    reading.rule.ipGroup = addresses.group;
    reading.rule.ipList = addresses.list;
    reading.addressFamily = addresses.family;
    reading.address = word + " " + value;
}

void takeCountries(Reading& reading, const std::string& word, const std::string& value) {
    const std::vector<std::string> codes = listFromText(word, value);
    if (codes.size() > kMostCountries) {
        wrongValue(word,
                   value,
                   "these are " + std::to_string(codes.size()) + " countries, and a rule takes " +
                       std::to_string(kMostCountries),
                   "write several rules");
    }
    for (const std::string& code : codes) {
        if (reading.vocabulary.countries.count(code) == 0) {
            refuseCountry(reading.vocabulary, word, value, code);
        }
    }
    reading.rule.ipDirect = word == "--from-country" ? 1 : 0;
    reading.rule.ipGroup = FW::FW_IP_GROUP_COUNTRY;
    reading.rule.ipList = codes;
}

void takeFamily(Reading& reading, const std::string& word, const std::string& value) {
    if (value == "4") {
        reading.rule.ipType = FW::FW_IP_TYPE_V4;
    } else if (value == "6") {
        reading.rule.ipType = FW::FW_IP_TYPE_V6;
    } else if (value == "both") {
        reading.rule.ipType = FW::FW_IP_TYPE_BOTH;
    } else {
        wrongValue(word, value, "this is no address family", "say 4, 6 or both");
    }
}

struct Protocol {
    const char* word;
    std::int32_t code;
};
constexpr std::array<Protocol, 5> kProtocols = {{
    {"tcp", FW::FW_PROTOCOL_TCP},
    {"udp", FW::FW_PROTOCOL_UDP},
    {"both", FW::FW_PROTOCOL_BOTH},
    {"icmp", FW::FW_PROTOCOL_ICMP},
    {"igmp", FW::FW_PROTOCOL_IGMP},
}};

void takeProtocol(Reading& reading, const std::string& word, const std::string& value) {
    std::vector<std::string> known;
    known.reserve(kProtocols.size());
    for (const Protocol& protocol : kProtocols) {
        if (value == protocol.word) {
            reading.rule.protocol = protocol.code;
            return;
        }
        known.emplace_back(protocol.word);
    }
    const std::string near = suggestion(value, known);
    wrongValue(word,
               value,
               "this is no protocol of a rule" + (near.empty() ? "" : ": " + near),
               "say tcp, udp, both (of these two), icmp or igmp");
}

void takePorts(Reading& reading, const std::string& word, const std::string& value) {
    reading.rule.portList = portsFromText(word, value);
    reading.rule.portGroup = FW::FW_PORT_GROUP_PORT;
    reading.rule.portDirect = word == "--source-port" ? 1 : 0;
}

void takeServices(Reading& reading, const std::string& word, const std::string& value) {
    const std::vector<std::string> services = listFromText(word, value);
    for (const std::string& service : services) {
        if (reading.vocabulary.services.count(service) == 0) {
            refuseService(reading.vocabulary, word, value, service);
        }
    }
    reading.rule.portList = services;
    reading.rule.portGroup = FW::FW_PORT_GROUP_SERVICE;
}

void takeLog(Reading& reading, const std::string&, const std::string&) {
    reading.rule.blLog = true;
}

void takeDisabled(Reading& reading, const std::string&, const std::string&) {
    reading.rule.enable = false;
}

void checkText(const std::string& word, const std::string& value) {
    if (!isPlainText(value)) {
        wrongValue(word,
                   value,
                   "the text has a control character or is not UTF-8",
                   "use a text of printable characters, in UTF-8");
    }
}

void takeName(Reading& reading, const std::string& word, const std::string& value) {
    checkText(word, value);
    reading.rule.name = value;
}

void takeLabel(Reading& reading, const std::string& word, const std::string& value) {
    checkText(word, value);
    reading.rule.labelList.push_back(value);
}

constexpr std::array<Form, 18> kForms = {{
    {"allow", Group::kVerdict, false, takeVerdict},
    {"deny", Group::kVerdict, false, takeVerdict},
    {"none", Group::kVerdict, false, takeVerdict},
    {"--in", Group::kDirection, false, takeDirection},
    {"--out", Group::kDirection, false, takeDirection},
    {"--from", Group::kSide, true, takeAddresses},
    {"--to", Group::kSide, true, takeAddresses},
    {"--from-country", Group::kSide, true, takeCountries},
    {"--to-country", Group::kSide, true, takeCountries},
    {"--family", Group::kFamily, true, takeFamily},
    {"--proto", Group::kProtocol, true, takeProtocol},
    {"--port", Group::kPorts, true, takePorts},
    {"--source-port", Group::kPorts, true, takePorts},
    {"--service", Group::kPorts, true, takeServices},
    {"--log", Group::kLog, false, takeLog},
    {"--disabled", Group::kDisabled, false, takeDisabled},
    {"--name", Group::kName, true, takeName},
    {"--label", Group::kLabel, true, takeLabel},
}};

}  // namespace

const Form* findForm(const std::string& word) {
    const auto* const found = std::find_if(
        kForms.begin(), kForms.end(), [&word](const Form& form) { return word == form.word; });
    return found == kForms.end() ? nullptr : found;
}

std::vector<std::string> ruleWordList() {
    std::vector<std::string> words;
    words.reserve(kForms.size());
    for (const Form& form : kForms) {
        words.emplace_back(form.word);
    }
    return words;
}

}  // namespace zamofw
