// What sessions cannot ask of the translation.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "tests/support/fakePlatform.h"
#include "tests/support/ruleText.h"
#include "tests/support/session.h"
#include "tests/support/store.h"
#include "zamofirewall/zamofirewall.h"

namespace {

class Translation : public testing::Test {
  protected:
    test::Session session_;
    FW::ZAMOFW_IPTABLES_RULES translator_;
    Json::Value args_;
    Json::Value commands_;
};

TEST_F(Translation, KeepsTheAnswersThatItHasAndAsksAgainForOthers) {
    FW::ServPort ports;
    const auto hasAll = [&](const std::string& host, bool expected) {
        session_.run(host);
        for (const char* adapter : {"eth0", "vpn", "pppoe"}) {
            EXPECT_EQ(translator_.adapterIsEnabled(adapter), expected) << adapter << host;
        }
        EXPECT_EQ(translator_.servToPorts({"ssh"}, ports), expected) << host;
    };
    hasAll("anew; rm /usr/zamo/etc.defaults/services.d; interfacesFail", false);
    hasAll("anew eth0 tun0; pppoe ppp0", true);
    hasAll("anew eth1; rm /usr/zamo/etc.defaults/services.d", true);
    EXPECT_EQ(ports.dstPorts, (decltype(ports.dstPorts){{FW::FW_PROTOCOL_TCP, {"22", "22"}}}));
}

TEST_F(Translation, MakesNoLineWithoutAChainAndNoTargetWithoutAVerdict) {
    FW::FWRULE rule = test::parseRule("none ports 22");
    rule.chainList = {"INPUT_FIREWALL"};
    translator_.iptablesRulesInit(args_);
    // The set keeps the interface that it has.
    EXPECT_TRUE(translator_.adapterToIptablesArg("eth0", rule, args_));
    EXPECT_TRUE(translator_.adapterToIptablesArg("eth1", rule, args_));
    EXPECT_EQ(args_["adapter"], test::json("['-i eth0']"));
    args_["adapter"].clear();
    translator_.jIptablesCmdInit(commands_);
    EXPECT_TRUE(translator_.FwRuleToIptablesArg("global", rule, args_));
    EXPECT_EQ(args_["ip"], test::json("{'v4': [''], 'v6': ['']}"));
    translator_.iptablesArgToCmd("eth0", rule, args_, commands_);
    args_["chain"].clear();
    translator_.iptablesArgToCmd("eth1", rule, args_, commands_);
    EXPECT_EQ(commands_,
              test::json("{'v4': {'eth0': ['-t filter -A INPUT_FIREWALL -p tcp --dport 22 ']},"
                         " 'v6': null}"));
}

// Programs hand in argument sets that they have made themselves.
TEST_F(Translation, TellsFamiliesByTextAndChecksTypesWhereTheyAreUsed) {
    const FW::FWRULE rule = test::parseRule("allow any v46");
    args_ = test::json(
        "{'table': ['-t a'], 'chain': ['-A b'], 'adapter': [''], 'ip': {'v4': [''], 'v6': ['']},"
        " 'port': ['-p icmp ', '-p icmpv6 ', '-p icmp'], 'policy': ['-j C', '-j D']}");
    const Json::Value expected = test::json(
        "{'v4': {'x': ['-t a -A b -p icmp  -j C', '-t a -A b -p icmp -j C']},"
        " 'v6': {'x': ['-t a -A b -p icmpv6  -j C', '-t a -A b -p icmp -j C']}}");
    translator_.iptablesArgToCmd("x", rule, args_, commands_);
    EXPECT_EQ(commands_, expected);

    commands_.clear();
    args_["table"].append(Json::Value(Json::objectValue));
    EXPECT_THROW(translator_.iptablesArgToCmd("x", rule, args_, commands_), Json::LogicError);
    EXPECT_EQ(commands_, expected);

    // Without an address no port is looked at.
    args_["table"].resize(1);
    args_["ip"].clear();
    args_["port"].append(Json::Value(Json::objectValue));
    translator_.iptablesArgToCmd("y", rule, args_, commands_);
    EXPECT_EQ(commands_, expected);
}

TEST_F(Translation, TakesEveryKindOfTextAsAClientAndOnlyABoolAsTheFlag) {
    session_.run("profile 1 home eth0=deny");
    const auto listFor = [](auto argument) {
        Json::Value list;
        EXPECT_TRUE(FW::ZAMOFW().fwIptablesRulesEnum("home", list, argument));
        return list;
    };
    std::string client = "10.0.0.9";
    const char* const nobody = nullptr;
    const Json::Value forClient = listFor(client);
    const Json::Value forNobody = listFor(std::string());
    EXPECT_NE(forClient, forNobody);
    EXPECT_EQ(listFor(client.data()), forClient);
    EXPECT_EQ(listFor(client.c_str()), forClient);
    EXPECT_EQ(listFor(nobody), forNobody);
    EXPECT_EQ(listFor(true), forNobody);
    EXPECT_NE(listFor(false), forNobody);
    // Not through a parameter, which would turn the array into a pointer.
    EXPECT_TRUE(FW::ZAMOFW().fwIptablesRulesEnum("home", commands_, "10.0.0.9"));
    EXPECT_EQ(commands_, forClient);
}

// Prints a character at a time. Before each of them, and before the end, a signal interrupts the
// read, as one does whose handler was installed without SA_RESTART.
struct InterruptedText {
    std::string text;
    int error;
    std::size_t read = 0;
    bool interrupt = true;
};

FILE* openInterrupted(InterruptedText& source) {
    cookie_io_functions_t functions = {};
    functions.read = [](void* cookie, char* buffer, std::size_t) -> ssize_t {
        auto& state = *static_cast<InterruptedText*>(cookie);
        state.interrupt = !state.interrupt;
        if (!state.interrupt) {
            errno = state.error;
            return -1;
        }
        return static_cast<ssize_t>(state.text.copy(buffer, 1, state.read++));
    };
    return fopencookie(&source, "r", functions);
}

TEST_F(Translation, ReadsTheNetworkToolAcrossSignalsAndPastNoOtherError) {
    const std::string usual = "true | eth0 / 6: -i eth0 -j RETURN";
    const std::string failure = usual + " ! fwIptables: Failed to getline after VLIBCPopen().";
    const std::tuple<std::string, int, std::string> rows[] = {
        {"tun6", EINTR, usual + " | tun6 / 6: -i tun6 -j RETURN"},
        {"a\nb", EINTR, "true | a\\n / 6: -i a\\n -j RETURN" + usual.substr(4)},
        {"", EINTR, failure},
        {"tun6", EIO, failure}};
    for (const auto& [text, error, outcome] : rows) {
        InterruptedText source = {text, error};
        session_.run("anew eth0");
        test::platform().openAnswer = [&](const std::string&) { return openInterrupted(source); };
        EXPECT_EQ(session_.run("translate , eth0 allow any v6"), outcome) << text;
    }
}

// A short record is completed by zeros, not by what the chunk before it left.
TEST_F(Translation, ReadsCountryRangesAcrossChunks) {
    const std::string content = std::string(4096, '\xFF') + std::string("\2\0\0\0\3", 5);
    test::writeFile("/usr/share/xt_geoip/XX.iv4", content);
    test::writeFile("/usr/share/xt_geoip/XX.iv6", content);
    std::string v4 = "true";
    for (int i = 0; i < 512; ++i) {
        v4 += " | 255.255.255.255-255.255.255.255";
    }
    EXPECT_EQ(session_.run("countryIPGet XX 4"), v4 + " | 0.0.0.2-0.0.0.3");
    const std::string v6 = session_.run("countryIPGet XX 6");
    EXPECT_EQ(v6.substr(v6.rfind('|')),
              "| 0000:0002:0000:0003:0000:0000:0000:0000-0000:0000:0000:0000:0000:0000:0000:0000");
}

}  // namespace
