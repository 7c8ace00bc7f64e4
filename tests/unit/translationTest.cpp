// What sessions cannot ask of the translator.

#include <gtest/gtest.h>

#include "tests/support/ruleText.h"
#include "tests/support/session.h"
#include "tests/support/store.h"
#include "zamofirewall/translator.h"

namespace {

TEST(Translator, KeepsTheAnswersThatItHasAndAsksAgainForOthers) {
    test::Session session;
    FW::ZAMOFW_IPTABLES_RULES translator;
    FW::ServPort ports;
    const auto hasAll = [&](const std::string& host, bool expected) {
        session.run(host);
        for (const char* adapter : {"eth0", "vpn", "pppoe"}) {
            EXPECT_EQ(translator.adapterIsEnabled(adapter), expected) << adapter << host;
        }
        EXPECT_EQ(translator.servToPorts({"ssh"}, ports), expected) << host;
    };
    hasAll("anew; rm /usr/zamo/etc.defaults/services.d; interfacesFail", false);
    hasAll("anew eth0 tun0; pppoe ppp0", true);
    hasAll("anew eth1; rm /usr/zamo/etc.defaults/services.d", true);
    EXPECT_EQ(ports.dstPorts, (decltype(ports.dstPorts){{FW::FW_PROTOCOL_TCP, {"22", "22"}}}));
}

TEST(Translator, MakesNoLineWithoutAChainAndNoTargetWithoutAVerdict) {
    FW::ZAMOFW_IPTABLES_RULES translator;
    FW::FWRULE rule = test::parseRule("none ports 22");
    rule.chainList = {"INPUT_FIREWALL"};
    Json::Value args;
    Json::Value commands;
    translator.iptablesRulesInit(args);
    translator.jIptablesCmdInit(commands);
    EXPECT_TRUE(translator.FwRuleToIptablesArg("global", rule, args));
    EXPECT_EQ(args["ip"], test::json("{'v4': [''], 'v6': ['']}"));
    translator.iptablesArgToCmd("eth0", rule, args, commands);
    args["chain"].clear();
    translator.iptablesArgToCmd("eth1", rule, args, commands);
    EXPECT_EQ(commands,
              test::json("{'v4': {'eth0': ['-t filter -A INPUT_FIREWALL -p tcp --dport 22 ']},"
                         " 'v6': null}"));
}

}  // namespace
