#include "command/words/ruleWords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "command/console.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

using Words = std::vector<std::string>;

const Vocabulary kVocabulary = {{{"ssh", FW::FW_PROTOCOL_TCP},
                                 {"dns", FW::FW_PROTOCOL_UDP},
                                 {"sip", FW::FW_PROTOCOL_BOTH},
                                 {"ping", FW::FW_PROTOCOL_ICMP}},
                                {{"CN", {4, 6}}, {"DE", {4, 6}}, {"LI", {4}}}};

// What is said about wrong words; "" when they make a rule.
std::string complaint(const Words& words) {
    try {
        (void)ruleFromWords(words, kVocabulary);
        return "";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), Status::kWrongUse);
        return failure.what() + ("\n" + failure.remedy());
    }
}

TEST(RuleWords, AreRefusedWithTheirFault) {
    using namespace std::string_literals;
    const struct {
        Words words;
        const char* message;
    } rows[] = {
        {{}, "no verdict"},
        {{"--log"}, "no verdict"},
        {{"allow", "allow"}, "`allow` is said twice"},
        {{"allow", "deny"}, "one verdict"},
        {{"accept"}, "did you mean `allow`?"},
        {{"Deny"}, "did you mean `deny`?"},
        {{"allow", "from", "10.0.0.1"}, "did you mean `--from`?"},
        {{"allow", "--form", "10.0.0.1"}, "`--form` is no word of a rule: did you mean `--from`?"},
        {{"allow", "\x1b[2J"}, "`\\x1b[2J`"},
        {{"allow", "--in", "--out"}, "one direction"},
        {{"allow", "--log", "--log"}, "said twice"},
        {{"allow", "--log=yes"}, "takes no value"},
        {{"allow", "--name", "a", "--name=b"}, "said twice"},
        {{"allow", "--name"}, "missing"},
        {{"allow", "--name", "-x"}, "--name=-x"},
        {{"allow", "--name", "a\nb"}, "control character"},
        {{"allow", "--name", "a\0b"s}, "control character"},
        {{"allow", "--name", "a\xc2\x9b"}, "control character"},
        {{"allow", "--label", "caf\xe9"}, "not UTF-8"},
        {{"allow", "--label", "\xed\xa0\x80"}, "not UTF-8"},

        {{"allow", "--from", "--log"}, "`--log` follows"},
        {{"allow", "--from", ""}, "no address"},
        {{"allow", "--from", "10.0.0"}, "no address"},
        {{"allow", "--from", "010.0.0.1"}, "no address"},
        {{"allow", "--from", "10.0.0.1\0x"s}, "no address"},
        {{"allow", "--from", "fe80::1%eth0"}, "no address"},
        {{"allow", "--from", "10.0.0.1,10.0.0.2"}, "no address"},
        {{"allow", "--from", "10.0.0.0/33"}, "0 to 32"},
        {{"allow", "--from", "10.0.0.0/024"}, "0 to 32"},
        {{"allow", "--from", "10.0.0.0/-1"}, "0 to 32"},
        {{"allow", "--from", "10.0.0.0/"}, "0 to 32"},
        {{"allow", "--from", "::/129"}, "0 to 128"},
        {{"allow", "--from", "10.0.0.0/255.0.255.0"}, "nor a mask"},
        {{"allow", "--from", "::/255.0.0.0"}, "not of the address's family"},
        {{"allow", "--from", "10.0.0.9-10.0.0.5"}, "write 10.0.0.5-10.0.0.9"},
        {{"allow", "--from", "10.0.0.1-::2"}, "ends with IPv6"},
        {{"allow", "--from", "10.0.0.1-"}, "no address"},
        {{"allow", "--from", "::1", "--family", "4"}, "follows from the address"},
        {{"allow", "--family", "both", "--to", "10.0.0.1"}, "follows from the address"},
        {{"allow", "--family", "5"}, "4, 6 or both"},
        {{"allow", "--from", "::1", "--to", "::1"}, "one side"},
        {{"allow", "--from", "::1", "--to-country", "DE"}, "one side"},
        {{"allow", "--from-country", "XX"}, "no data for the country `XX`"},
        {{"allow", "--from-country", "de"}, "did you mean `DE`?"},
        {{"allow", "--from-country", "DE,,LI"}, "entry of the list is empty"},
        {{"allow", "--to-country="}, "the list is empty"},
        {{"allow", "--to-country", "DE,CN,DE,CN,DE,CN,DE,CN,DE,CN,DE,CN,DE,CN,DE,CN"},
         "16 countries"},
        {{"allow", "--from-country", "DE,LI"}, "no IPv6 data for the country `LI`"},

        {{"allow", "--proto", "tpc"}, "did you mean `tcp`?"},
        {{"allow", "--proto", "TCP,UDP"}, "no protocol"},
        {{"allow", "--port", "65536"}, "`65536` is no port"},
        {{"allow", "--port", "022"}, "no port"},
        {{"allow", "--port", "22,"}, "empty"},
        {{"allow", "--port", "90-80"}, "write 80-90"},
        {{"allow", "--port", "80:90"}, "with a dash"},
        {{"allow", "--port", "1-2-3"}, "no port"},
        {{"allow", "--port", "ssh"}, "--service"},
        {{"allow", "--port", "22", "--source-port", "22"}, "one of --port"},
        {{"allow", "--port", "22", "--service", "ssh"}, "one of --port"},
        {{"allow", "--port", "22", "--proto", "icmp"}, "ICMP: this protocol has no ports"},
        {{"allow", "--proto", "igmp", "--source-port", "1"}, "IGMP"},
        {{"allow", "--service", "sssh"}, "no service `sssh`: did you mean `ssh`?"},
        {{"allow", "--service", "ssh, dns"}, "` dns`"},
        {{"allow", "--service", "ssh", "--proto", "tcp"}, "--service with --proto"},
    };
    for (const auto& row : rows) {
        const std::string said = complaint(row.words);
        EXPECT_NE(said.find(row.message), std::string::npos) << shellQuoted(row.words) << said;
    }
}

// The fields that words set, in one line.
std::string fields(const FW::FWRULE& rule) {
    std::string text = std::to_string(rule.policy) + " in" + std::to_string(rule.adapterDirect) +
                       " ip" + std::to_string(rule.ipType) + std::to_string(rule.ipDirect) +
                       std::to_string(rule.ipGroup);
    for (const std::string& address : rule.ipList) {
        text += " " + address;
    }
    text += " port" + std::to_string(rule.portDirect) + std::to_string(rule.portGroup) + "/" +
            std::to_string(rule.protocol);
    for (const std::string& port : rule.portList) {
        text += " " + port;
    }
    return text;
}

TEST(RuleWords, SetTheFieldsOfARuleThatCanBeSaid) {
    const struct {
        Words words;
        const char* fields;
    } rows[] = {
        {{"allow"}, "0 in1 ip215 port03/3"},
        {{"--out", "deny", "--to", "any", "--family", "6"}, "1 in0 ip105 port03/3"},
        {{"none", "--from", "10.0.0.1"}, "2 in1 ip010 10.0.0.1 port03/3"},
        {{"allow", "--to=fd00::/8"}, "0 in1 ip101 fd00:: 8 port03/3"},
        {{"allow", "--from", "10.0.0.0/255.0.0.0"}, "0 in1 ip011 10.0.0.0 255.0.0.0 port03/3"},
        {{"allow", "--from", "9.0.0.0-10.0.0.0"}, "0 in1 ip014 9.0.0.0 10.0.0.0 port03/3"},
        {{"allow", "--to-country", "DE,CN"}, "0 in1 ip203 DE CN port03/3"},
        {{"allow", "--from-country", "LI", "--family", "4"}, "0 in1 ip013 LI port03/3"},
        {{"allow", "--port", "22,0-65535"}, "0 in1 ip215 port01/3 22 0-65535"},
        {{"allow", "--proto", "udp"}, "0 in1 ip215 port01/2 0-65535"},
        {{"allow", "--proto", "igmp"}, "0 in1 ip215 port01/32"},
        {{"allow", "--source-port", "68", "--proto", "udp"}, "0 in1 ip215 port11/2 68"},
        {{"allow", "--source-port", "0-65535"}, "0 in1 ip215 port11/3 0-65535"},
        {{"allow", "--service", "ssh,sip"}, "0 in1 ip215 port00/1 ssh sip"},
        {{"allow", "--service", "ssh,dns"}, "0 in1 ip215 port00/3 ssh dns"},
        {{"allow", "--service", "ping"}, "0 in1 ip215 port00/3 ping"},
    };
    for (const auto& row : rows) {
        const FW::FWRULE rule = ruleFromWords(row.words, kVocabulary);
        EXPECT_EQ(fields(rule), row.fields) << shellQuoted(row.words);
        EXPECT_TRUE(wordsOfRule(rule, kVocabulary)) << shellQuoted(row.words);
    }
}

class Dice {
  public:
    explicit Dice(unsigned seed) : engine_(seed) {}
    template <typename Values>
    typename Values::value_type of(const Values& values) {
        return values[engine_() % values.size()];
    }
    bool coin() { return engine_() % 2 == 0; }

  private:
    std::mt19937 engine_;
};

struct AddressFields {
    std::int32_t type;
    std::int32_t group;
    Words list;
};
struct PortFields {
    std::int32_t group;
    std::int32_t protocol;
    Words list;
};

// Values that words have, and some that they have not.
FW::FWRULE randomRule(Dice& dice) {
    using Numbers = std::vector<std::int32_t>;
    const auto addresses = dice.of(std::vector<AddressFields>{{0, 0, {"10.0.0.1"}},
                                                              {1, 1, {"::", "64"}},
                                                              {0, 1, {"10.0.0.0", "255.0.0.0"}},
                                                              {1, 4, {"::1", "::2"}},
                                                              {0, 3, {"DE"}},
                                                              {2, 3, {"DE", "CN"}},
                                                              {1, 5, {}},
                                                              {2, 5, {}},
                                                              {2, 0, {"10.0.0.1"}},
                                                              {0, 2, {}},
                                                              {0, 0, {}},
                                                              {0, 4, {"10.0.0.1"}},
                                                              {2, 5, {"any"}}});
    const auto ports = dice.of(std::vector<PortFields>{{0, 1, {"ssh"}},
                                                       {0, 3, {"dns", "ssh"}},
                                                       {0, 3, {"ping"}},
                                                       {1, 1, {"0-65535"}},
                                                       {1, 3, {"0-65535"}},
                                                       {1, 2, {"80-80", "1"}},
                                                       {1, 3, {"22"}},
                                                       {1, 4, {}},
                                                       {1, 32, {}},
                                                       {3, 3, {}},
                                                       {0, 2, {"ssh"}},
                                                       {0, 1, {"nosuch"}},
                                                       {2, 3, {"ssh"}},
                                                       {1, 0, {"22"}},
                                                       {1, 1, {}},
                                                       {3, 1, {}}});
    FW::FWRULE rule;
    rule.enable = dice.coin();
    rule.blLog = dice.coin();
    rule.adapterDirect = dice.of(Numbers{0, 1, 1, 2});
    rule.policy = static_cast<FW::FW_POLICY>(dice.of(Numbers{0, 1, 2, 3}));
    rule.name = dice.of(Words{"", "", "Büro 'EG'", "-x", "--from", "=a", "a\tb"});
    rule.labelList =
        dice.of(std::vector<Words>{{}, {}, {""}, {"b", "a", "b"}, {"-", "$HOME"}, {"\xff"}});
    rule.table = dice.of(Words{"filter", "filter", "filter", ""});
    rule.ipDirect = dice.of(Numbers{0, 1});
    rule.ipType = addresses.type;
    rule.ipGroup = addresses.group;
    rule.ipList = addresses.list;
    rule.portDirect = dice.of(Numbers{0, 0, 1});
    rule.portGroup = ports.group;
    rule.protocol = ports.protocol;
    rule.portList = ports.list;
    return rule;
}

TEST(RuleWords, MakeTheRuleThatTheyWereMadeOf) {
    Dice dice(1);
    int said = 0;
    for (int i = 0; i < 5000; ++i) {
        FW::FWRULE rule = randomRule(dice);
        const auto words = wordsOfRule(rule, kVocabulary);
        if (!words) {
            continue;
        }
        ++said;
        const FW::FWRULE again = ruleFromWords(*words, kVocabulary);
        EXPECT_EQ(fields(again), fields(rule));
        EXPECT_EQ(again.name, rule.name);
        EXPECT_EQ(again.labelList, rule.labelList);
        EXPECT_EQ(again.blLog, rule.blLog);
        EXPECT_EQ(again.enable, rule.enable);
        EXPECT_EQ(again.table, rule.table);
        // In any order of the words, labels among each other excepted.
        if (words->size() > 1 && words->at(1) == "--out") {
            Words turned = *words;
            std::rotate(turned.begin(), turned.begin() + 1, turned.end());
            EXPECT_EQ(wordsOfRule(ruleFromWords(turned, kVocabulary), kVocabulary), words);
        }
    }
    EXPECT_GT(said, 400);
}

}  // namespace
}  // namespace zamofw
