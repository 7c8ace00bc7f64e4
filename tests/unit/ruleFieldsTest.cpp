#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/store.h"
#include "zamofirewall/profileDatabase.h"

namespace {

using FW::FWRULE;

// Does not compile when the rule gets another field.
auto fieldsOf(const FWRULE& rule) {
    const auto& [index, enable, adapterDirect, policy, log, labels, name, table, chains, ipType,
                 ipDirect, ipGroup, ips, portDirect, portGroup, protocol, ports] = rule;
    return std::tie(index, enable, adapterDirect, policy, log, labels, name, table, chains, ipType,
                    ipDirect, ipGroup, ips, portDirect, portGroup, protocol, ports);
}

TEST(RuleFields, AreTheSameAfterWritingAndReading) {
    FWRULE rule;
    rule.enable = false;
    rule.adapterDirect = 11;
    rule.policy = static_cast<FW::FW_POLICY>(12);
    rule.blLog = true;
    rule.labelList = {"z", "a"};
    rule.name = "name";
    rule.table = "mangle";
    rule.chainList.insert("A");
    rule.ipType = 13;
    rule.ipDirect = 14;
    rule.ipGroup = 15;
    rule.ipList = {"10.0.0.2", "10.0.0.1"};
    rule.portDirect = 16;
    rule.portGroup = 17;
    rule.protocol = 18;
    rule.portList = {"22", "6000-6010"};

    FW::ZAMOFW_JSON_DB db;
    Json::Value written;
    db.ruleListToJson({{"eth0", {rule}}}, written);
    std::map<std::string, std::vector<FWRULE>> read;
    ASSERT_TRUE(db.jsonToRuleList(test::json(written.toStyledString()), read));
    ASSERT_EQ(read["eth0"].size(), 1U);
    EXPECT_EQ(fieldsOf(read["eth0"][0]), fieldsOf(rule));
}

}  // namespace
