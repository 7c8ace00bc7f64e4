// Documents with faults. A `^` in a text stands before what a finding points at, and is not part of
// the document; findings are named in the order of their marks.

#include <gtest/gtest.h>
#include <json/reader.h>

#include "command/document/check.h"
#include "command/document/findingText.h"
#include "command/document/lineCheck.h"

namespace zamofw {
namespace {

CheckContext context() {
    CheckContext context;
    context.services = []() -> const ServiceNames& {
        static const ServiceNames names = {{"ssh", "http", "off", "vpn_server_pptp"},
                                           {"off", "vpn_server_pptp"}};
        return names;
    };
    context.adapters = {"eth0", "eth1", "global", "ppp0"};
    context.hasCountry = [](const std::string& code, int family) {
        return code == "DE" || (code == "LI" && family == 4);
    };
    return context;
}

struct Marked {
    std::string text;
    std::vector<std::string> places;
};

Marked readMarks(const std::string& text) {
    Marked marked;
    std::size_t line = 1;
    std::size_t column = 1;
    for (const char character : text) {
        if (character == '^') {
            marked.places.push_back(std::to_string(line) + ':' + std::to_string(column));
            continue;
        }
        marked.text += character;
        const bool isNewCharacter = (static_cast<unsigned char>(character) & 0xC0U) != 0x80U;
        column = character == '\n' ? 1 : column + (isNewCharacter ? 1 : 0);
        line += character == '\n' ? 1 : 0;
    }
    return marked;
}

using Texts = std::vector<std::string>;

// Each finding as "PLACE LETTER KIND POINTER", the letter being E or W.
Texts listed(const Findings& findings) {
    Texts texts;
    for (const Finding& finding : findings) {
        texts.push_back(std::to_string(finding.line) + ':' + std::to_string(finding.column) +
                        (finding.severity == Severity::kError ? " E " : " W ") + finding.kind +
                        ' ' + finding.path);
        EXPECT_FALSE(finding.message.empty() || finding.remedy.empty()) << texts.back();
        EXPECT_EQ(finding.file, "home.json");
    }
    return texts;
}

using Check = Findings (*)(const Document&, const CheckContext&);

void expectFindings(Check check, const std::string& text, const Texts& findings) {
    const Marked marked = readMarks(text);
    ASSERT_EQ(marked.places.size(), findings.size()) << text;
    Texts expected;
    for (std::size_t i = 0; i < findings.size(); ++i) {
        expected.push_back(marked.places[i] + ' ' + findings[i]);
    }
    EXPECT_EQ(listed(check(readDocument(marked.text, "home.json"), context())), expected) << text;
}

// A profile with this rule, which is sound in what it leaves out.
std::string withRule(std::string rule) {
    for (const auto& [name, value] : {std::pair("enable", "true"), std::pair("table", "\"filter\""),
                                      std::pair("ipGroup", "5"), std::pair("portGroup", "3")}) {
        const std::string member = '"' + std::string(name) + "\": ";
        if (rule.find(member) == std::string::npos) {
            rule.insert(rule.find('{') + 1, member + value + ", ");
        }
    }
    return "{\"name\": \"\u00fc\", \"adapterPolicyMap\": {\"eth0\": 1},\n"
           " \"rules\": /* \u20ac */ {\"eth0\": [" +
           rule + "]}}";
}

struct Row {
    std::string text;
    Texts findings;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.text.substr(0, 100); }

class RuleFault : public testing::TestWithParam<Row> {};

TEST_P(RuleFault, IsFoundAtItsPlace) {
    Texts findings = GetParam().findings;
    for (std::string& finding : findings) {
        finding.insert(finding.rfind(' ') + 1, "/rules/eth0/0");
    }
    expectFindings(checkProfile, withRule(GetParam().text), findings);
}

INSTANTIATE_TEST_SUITE_P(
    Members, RuleFault,
    testing::Values(
        Row{R"({^"polcy": 1, ^"iplist": []})",
            {"W unknown-member /polcy", "W unknown-member /iplist"}},
        Row{R"({"policy": 7, ^"policy": 1})", {"E duplicate-member /policy"}},
        Row{R"({"policy": ^true, "blLog": ^1, "name": ^5, "ipDirect": ^1.0, "ruleID": ^3000000000})",
            {"E wrong-type /policy", "E wrong-type /blLog", "E wrong-type /name",
             "E wrong-type /ipDirect", "E wrong-type /ruleID"}},
        Row{R"({"ipList": ["1.2.3.4", ^5, ^null], "labelList": ^{}, "chainList": null})",
            {"E wrong-type /ipList/1", "E wrong-type /ipList/2", "E wrong-type /labelList"}},
        Row{R"({"ipGroup": ^"1", "portGroup": ^"1"})",
            {"E wrong-type /ipGroup", "E wrong-type /portGroup"}},
        Row{R"(^{"ipGroup": ^6})", {"W no-effect ", "E unknown-code /ipGroup"}},
        Row{R"(^{"ipType": ^3, "policy": ^3})",
            {"W no-effect ", "E unknown-code /ipType", "E unknown-code /policy"}},
        Row{R"(^{"portGroup": ^-1, "adapterDirect": 9, "portDirect": -9})",
            {"W no-effect ", "E unknown-code /portGroup"}},
        Row{R"(^{"portGroup": 1, "protocol": ^6, "portList": ["1"]})",
            {"W no-effect ", "E unknown-code /protocol"}},
        Row{R"(^^{"portGroup": 1, "portList": ["1"]})", {"W no-effect ", "E unknown-code "}},
        Row{R"({"portGroup": 3, "protocol": 6})", {}},
        Row{R"({"table": ^"bogus"})", {"E unknown-code /table"}},
        Row{R"(^{"table": null})", {"E missing-values "}},
        Row{R"({"table": ^"", "chainList": [^""]})",
            {"E missing-values /table", "E missing-values /chainList/0"}},
        Row{R"({"table": ^"-j", "chainList": ["A", ^"-B", ^"B C", ^"B\u0000"], "name": "-a b"})",
            {"E option-in-text /table", "E option-in-text /chainList/1",
             "E blank-in-text /chainList/2", "E blank-in-text /chainList/3"}}));

INSTANTIATE_TEST_SUITE_P(
    Addresses, RuleFault,
    testing::Values(
        Row{R"({"ipGroup": 0, "ipList": [^"192.168.1.0/24"]})", {"E bad-address /ipList/0"}},
        Row{R"(^{"ipGroup": 1, "ipList": [^"192.168.1.0/24"]})",
            {"W no-effect ", "E bad-address /ipList/0"}},
        Row{R"(^{"ipGroup": 4, "ipList": [^"10.0.0.1-10.0.0.9"]})",
            {"W no-effect ", "E bad-address /ipList/0"}},
        Row{R"({"ipGroup": 0, "ipList": [^"010.0.0.1"]})", {"E bad-address /ipList/0"}},
        Row{R"({"ipGroup": 4, "ipList": [^"nas", ^"10.0.0"]})",
            {"E bad-address /ipList/0", "E bad-address /ipList/1"}},
        Row{R"({"ipGroup": 0, "ipList": [^" 10.0.0.1"]})", {"E blank-in-text /ipList/0"}},
        Row{R"({"ipGroup": 0, "ipList": [^"-j"]})", {"E option-in-text /ipList/0"}},
        Row{R"(^^{"ipGroup": 0})", {"W no-effect ", "E missing-values "}},
        Row{R"(^{"ipGroup": 1, "ipList": ^["10.0.0.0"]})",
            {"W no-effect ", "E missing-values /ipList"}},
        Row{R"(^{"ipGroup": 3, "ipList": ^[]})", {"W no-effect ", "E missing-values /ipList"}},
        Row{R"({"ipGroup": 0, "ipList": [^"::1"]})", {"E wrong-family /ipList/0"}},
        Row{R"({"ipGroup": 0, "ipType": 2, "ipList": [^"10.0.0.1"]})",
            {"E wrong-family /ipList/0"}},
        Row{R"({"ipGroup": 4, "ipType": 2, "ipList": ["10.0.0.1", ^"::1"]})",
            {"E wrong-family /ipList/1"}},
        Row{R"({"ipGroup": 4, "ipType": 1, "ipList": ["::2", ^"::1"]})",
            {"E reversed-range /ipList/1"}},
        Row{R"({"ipGroup": 4, "ipType": 1, "ipList": ["::1", "::1"]})", {}},
        Row{R"({"ipGroup": 1, "ipList": ["10.0.0.0", ^"33"]})", {"E bad-prefix /ipList/1"}},
        Row{R"({"ipGroup": 1, "ipList": ["10.0.0.0", ^"255.255.0"]})", {"E bad-prefix /ipList/1"}},
        Row{R"({"ipGroup": 1, "ipList": ["10.0.0.0", ^"-1"]})", {"E bad-prefix /ipList/1"}},
        Row{R"({"ipGroup": 1, "ipList": ["10.0.0.0", "255.0.255.0"]})", {}},
        Row{R"({"ipGroup": 1, "ipType": 1, "ipList": ["::", ^"129"]})", {"E bad-prefix /ipList/1"}},
        Row{R"({"ipGroup": 1, "ipType": 1, "ipList": ["::", "ffff::1"]})", {}},
        Row{R"({"ipGroup": 3, "ipType": 2, "ipList": ["DE", ^"LI"]})",
            {"E no-country-data /ipList/1"}},
        Row{R"(^{"ipGroup": 3, "ipList": [^"FR", ^"de", ^"DE,LI"]})",
            {"W no-effect ", "E no-country-data /ipList/0", "E no-country-data /ipList/1",
             "E no-country-data /ipList/2"}},
        Row{R"({"ipGroup": 3, "ipList": ["DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","LI"]})",
            {}},
        Row{R"({"ipGroup": 3, "ipList": ^["DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE","DE"]})",
            {"E too-many-countries /ipList"}}));

INSTANTIATE_TEST_SUITE_P(
    Ports, RuleFault,
    testing::Values(
        Row{R"({"portGroup": 1, "protocol": 1, "portList": ["0", "65535", "1-2", "7-7", ^"65536", ^"022", ^"ssh", ^"1:2", ^"1-", ^"-1", ^""]})",
            {"E bad-port /portList/4", "E bad-port /portList/5", "E bad-port /portList/6",
             "E bad-port /portList/7", "E bad-port /portList/8", "E bad-port /portList/9",
             "E bad-port /portList/10"}},
        Row{R"({"portGroup": 1, "protocol": 1, "portList": [^"90-80", ^"2 2", ^"--dport"]})",
            {"E reversed-range /portList/0", "E blank-in-text /portList/1",
             "E option-in-text /portList/2"}},
        Row{R"(^{"portGroup": 1, "protocol": 3, "portList": ^[]})",
            {"W no-effect ", "E missing-values /portList"}},
        Row{R"({"portGroup": 1, "protocol": 4, "portList": ["x"]})", {}},
        Row{R"({"portGroup": 0, "portList": ["ssh", ^"sssh", "off"]})",
            {"E unknown-service /portList/1"}},
        Row{R"(^{"portGroup": 2, "portList": ["off"]})", {"W no-effect "}},
        Row{R"({"portGroup": 2, "portList": ["vpn_server_pptp"]})", {}},
        Row{R"(^^{"portGroup": 0})", {"W no-effect ", "E missing-values "}}));

std::string filled(std::size_t length) { return std::string(length, 'A'); }

std::string words(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += "a ";
    }
    return text;
}

// The line "/sbin/iptables -t filter -A NAME -i eth0 -j RETURN" has 47 bytes more than its chain, a
// NUL behind each word.
INSTANTIATE_TEST_SUITE_P(
    Lines, RuleFault,
    testing::Values(Row{R"(^{"policy": 2, "table": ""})", {"W no-effect "}},
                    Row{R"(^{"ipGroup": 2})", {"W no-effect "}},
                    Row{R"({"ipGroup": 2, "enable": false})", {}},
                    Row{R"({"chainList": [^")" + filled(977) + "\"]}",
                        {"E unknown-code /chainList/0"}},
                    Row{R"(^{"chainList": [")" + filled(978) + "\"]}", {"E line-too-long "}},
                    Row{R"(^{"chainList": [^")" + words(250) + "\"]}",
                        {"E too-many-words ", "E blank-in-text /chainList/0"}}));

TEST(LineLimit, CountsAsTheLibraryDoes) {
    const std::vector<std::pair<std::string, LineLimit>> rows = {
        {filled(1023), LineLimit::kNone},         {filled(1024), LineLimit::kBytes},
        {filled(1021) + " a", LineLimit::kNone},  {filled(1022) + " a", LineLimit::kBytes},
        {filled(1022) + "  ", LineLimit::kBytes}, {filled(1022) + ' ', LineLimit::kNone},
        {words(255), LineLimit::kNone},           {words(255) + ' ', LineLimit::kWords},
        {words(256), LineLimit::kWords},
    };
    for (const auto& [line, limit] : rows) {
        EXPECT_EQ(limitPassedBy(line), limit) << line.size();
    }
}

TEST(ProfileFault, IsFoundAtItsPlace) {
    const std::vector<Row> rows = {
        {R"({"name": "a", ^})", {"E syntax "}},
        {R"({"name": "a", "rules": n^il})", {"E syntax "}},
        {R"(^[])", {"E wrong-type "}},
        {R"(^{"rules": null})", {"E missing-name "}},
        {R"({"name": ^"", "rules": ^[], ^"adapterPolicymap": 1})",
         {"E missing-name /name", "E wrong-type /rules", "W unknown-member /adapterPolicymap"}},
        {R"({"name": "a", "rules": {"eth0": [^5]}, "adapterPolicyMap": {"eth0": 1}})",
         {"E wrong-type /rules/eth0/0"}},
        {R"({"name": "a", "rules": {"eth0": 1, ^"eth0": ^{}}})",
         {"E duplicate-member /rules/eth0", "E wrong-type /rules/eth0"}},
        {R"({"name": "a", "rules": {^"eth9": [], ^"a b": [], "eth1": []},
             "adapterPolicyMap": {"eth9": 0, ^"~/\"\\": 1, ^"-x": 1}})",
         {"W absent-adapter /rules/eth9", "E blank-in-text /rules/a b",
          R"(W absent-adapter /adapterPolicyMap/~0~1"\)", "E option-in-text /adapterPolicyMap/-x"}},
        {R"({"name": "a", "rules": {^"eth0": [{}]}, "adapterPolicyMap": {"eth0": null}})",
         {"W no-policy /rules/eth0"}},
        {R"({"name": "a", "adapterPolicyMap": {"eth0": ^2, "eth1": ^0, "global": 0, "ppp0": ^3},
             "rules": {"eth0": [{}], "eth1": [{}], "global": [{}]}})",
         {"W open-by-default /adapterPolicyMap/eth0", "W open-by-default /adapterPolicyMap/eth1",
          "E unknown-code /adapterPolicyMap/ppp0"}},
        {R"({"name": "a", "adapterPolicyMap": ^1, "rules": {"eth0": [{}]}})",
         {"E wrong-type /adapterPolicyMap"}},
        {R"({"name": "a", "adapterPolicyMap": {"ppp0": 1},
             "rules": {"ppp0": [^{"enable": true, "ipGroup": 5, "portGroup": 3, "table": "filter"}]}})",
         {"W no-effect /rules/ppp0/0"}},
    };
    for (const Row& row : rows) {
        Row sound = row;
        // An empty rule is off, and has no addresses and services.
        for (std::size_t at = 0; (at = sound.text.find("[{}]", at)) != std::string::npos; ++at) {
            sound.text.replace(at, 4, R"([{"ipGroup": 5, "portGroup": 3, "table": "filter"}])");
        }
        expectFindings(checkProfile, sound.text, sound.findings);
    }
}

TEST(ExportFault, IsFoundAtItsPlace) {
    const std::string sound = R"("config_version": 1, "config_firewall_settings": {"more": 1})";
    const std::string longKey(247, 'k');
    const std::vector<Row> rows = {
        {R"({"config_profiles": {"1.json": {"name": "a"}}, )" + sound + '}', {}},
        {R"(^{"config_version": ^2, ^"config_profile": {}})",
         {"E missing-values ", "E unknown-code /config_version",
          "W unknown-member /config_profile"}},
        {R"({"config_profiles": ^[], "config_firewall_settings": {"status": ^"on", "profile": ^1}})",
         {"E wrong-type /config_profiles", "E wrong-type /config_firewall_settings/status",
          "E wrong-type /config_firewall_settings/profile"}},
        {R"({"config_firewall_settings": {"status": true, "profile": ^"b"},
             "config_profiles": {"2.json": {"name": ^"a"}, "1.json": {"name": "a"}}})",
         {"E missing-values /config_firewall_settings/profile",
          "W duplicate-name /config_profiles/2.json/name"}},
        {R"({"config_firewall_settings": {"profile": "b"}, "config_profiles": {
             ^"a/b.json": {"name": "a"}, ^"c\u0000.json": ^{}, ^"d": ^5, ^".json": {"name": "e"},
             ^"firewall_settings.json": {"name": "f"}, ^")" +
             longKey + R"(.json": {"name": "g", ^"polcy": 1}}})",
         {"E missing-name /config_profiles/a~1b.json",
          std::string("E blank-in-text /config_profiles/c") + '\0' + ".json",
          std::string("E missing-name /config_profiles/c") + '\0' + ".json",
          "E missing-name /config_profiles/d", "E wrong-type /config_profiles/d",
          "E missing-name /config_profiles/.json",
          "E missing-name /config_profiles/firewall_settings.json",
          "E missing-name /config_profiles/" + longKey + ".json",
          "W unknown-member /config_profiles/" + longKey + ".json/polcy"}},
    };
    for (const Row& row : rows) {
        expectFindings(checkExport, row.text, row.findings);
    }
}

TEST(StoredNames, TheFirstFileKeepsTheName) {
    const Document second = readDocument(R"({"name": "a"})", "d/2.json");
    const Document first = readDocument("{\n\"name\": \"a\"}", "d/1.json");
    const Document other = readDocument(R"({"name": "b"})", "d/3.json");
    const Findings findings = checkStoredNames({&second, &other, &first});
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].file, "d/2.json");
    EXPECT_EQ(findings[0].kind, "duplicate-name");
    EXPECT_EQ(findings[0].column, 10U);
    EXPECT_FALSE(hasError(findings));
}

TEST(FindingText, ReadsLikeACompiler) {
    const Findings findings = checkProfile(
        readDocument("{\"name\": \"a\", \"ru\\nes\": 1, \"rules\": 1}", "x"), context());
    EXPECT_EQ(findingsText(findings),
              "x:1:15: warning: `ru\\x0aes` is no member of a profile, so that nobody reads it "
              "[unknown-member]\n"
              "    Correct the name: did you mean `rules`?\n"
              "x:1:37: error: `rules` must be an object, not an integer [wrong-type]\n"
              "    Write an object: { \"NAME\": VALUE, ... }.\n");
    Json::Value json;
    ASSERT_TRUE(Json::Reader().parse(findingsJson(findings), json));
    EXPECT_EQ(json["ok"], false);
    EXPECT_EQ(json["findings"][0].getMemberNames(),
              (Texts{"column", "file", "kind", "line", "message", "path", "remedy", "severity"}));
    EXPECT_EQ(findingsJson({}), R"({"findings":[],"ok":true})");
}

}  // namespace
}  // namespace zamofw
