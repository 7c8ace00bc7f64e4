#include <gtest/gtest.h>

#include "tests/support/store.h"
#include "zamofirewall/translator.h"

namespace {

// Programs hand in argument sets that they have made themselves.
TEST(ArgumentSet, OfACallerHasItsFamiliesToldByTextAndItsTypesCheckedWhereTheyAreUsed) {
    FW::ZAMOFW_IPTABLES_RULES translator;
    FW::FWRULE rule;
    rule.ipType = FW::FW_IP_TYPE_BOTH;
    Json::Value args = test::json(
        "{'table': ['-t a'], 'chain': ['-A b'], 'adapter': [''], 'ip': {'v4': [''], 'v6': ['']},"
        " 'port': ['-p icmp ', '-p icmpv6 ', '-p icmp'], 'policy': ['-j C', '-j D']}");
    const Json::Value expected = test::json(
        "{'v4': {'x': ['-t a -A b -p icmp  -j C', '-t a -A b -p icmp -j C']},"
        " 'v6': {'x': ['-t a -A b -p icmpv6  -j C', '-t a -A b -p icmp -j C']}}");
    Json::Value commands;
    translator.iptablesArgToCmd("x", rule, args, commands);
    EXPECT_EQ(commands, expected);

    commands.clear();
    args["table"].append(Json::Value(Json::objectValue));
    EXPECT_THROW(translator.iptablesArgToCmd("x", rule, args, commands), Json::LogicError);
    EXPECT_EQ(commands, expected);

    // Without an address no port is looked at.
    args["table"].resize(1);
    args["ip"].clear();
    args["port"].append(Json::Value(Json::objectValue));
    translator.iptablesArgToCmd("y", rule, args, commands);
    EXPECT_EQ(commands, expected);
}

TEST(ArgumentSet, KeepsTheInterfaceThatItHas) {
    FW::ZAMOFW_IPTABLES_RULES translator;
    Json::Value args;
    for (const char* adapter : {"eth0", "eth1", "global"}) {
        EXPECT_TRUE(translator.adapterToIptablesArg(adapter, FW::FWRULE(), args));
    }
    EXPECT_EQ(args, test::json("{'adapter': ['-i eth0', '']}"));
}

}  // namespace
