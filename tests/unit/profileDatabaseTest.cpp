#include "zamofirewall/profileDatabase.h"

#include <gtest/gtest.h>

#include "tests/support/store.h"

namespace {

using FW::FWPROFILE;
using FW::FWRULE;

class ProfileDatabase : public testing::Test {
  protected:
    ProfileDatabase() { test::clearFiles(); }

    FW::ZAMOFW_JSON_DB db_;
};

TEST_F(ProfileDatabase, WritesARuleWithAllItsMembers) {
    FWRULE rule;
    rule.ruleIndex = 7;
    rule.policy = static_cast<FW::FW_POLICY>(9);
    rule.labelList = {"z", "a"};
    rule.name = "Service";
    rule.chainList.insert("A");
    rule.ipType = 77;
    rule.ipList = {"10.0.0.1"};
    Json::Value out;
    db_.ruleListToJson({{"eth0", {FWRULE(), rule}}, {"eth1", {}}}, out);
    EXPECT_EQ(out.getMemberNames(), std::vector<std::string>{"eth0"});
    EXPECT_EQ(out["eth0"][1],
              test::json("{'adapterDirect': 1, 'blLog': false, 'chainList': ['A', "
                         "'FORWARD_FIREWALL', 'INPUT_FIREWALL'], 'enable': true, 'ipDirect': 1, "
                         "'ipGroup': 0, 'ipList': ['10.0.0.1'], 'ipType': 77, 'labelList': ['z', "
                         "'a'], 'name': 'Service', 'policy': 9, 'portDirect': 0, 'portGroup': 0, "
                         "'portList': [], 'protocol': 1, 'ruleIndex': 1, 'table': 'filter'}"));

    FWPROFILE empty;
    empty.rules["eth0"];
    Json::Value document;
    db_.profileToJson(empty, document);
    EXPECT_EQ(document, test::json("{'name': '', 'rules': null, 'adapterPolicyMap': null}"));
}

TEST_F(ProfileDatabase, ReadsMissingMembersAsZeroAndKeepsBothChains) {
    const Json::Value document = test::json(
        "{'name': 'p', 'rules': {'eth0': [{'policy': 1, 'ruleID': 5, 'chainList': "
        "['X']}, null], 'eth1': []}, 'adapterPolicyMap': {'eth0': true}}");
    FWPROFILE profile;
    profile.adapterPolicyMap["eth1"] = FW::FW_POLICY_DENY;
    EXPECT_TRUE(db_.jsonToProfile(document, profile));
    EXPECT_TRUE(db_.jsonToProfile(document, profile));
    ASSERT_EQ(profile.rules.size(), 1U);
    ASSERT_EQ(profile.rules["eth0"].size(), 4U) << "reading twice appends twice";
    const FWRULE& rule = profile.rules["eth0"][2];
    EXPECT_EQ(rule.ruleIndex, 5);
    EXPECT_FALSE(rule.enable);
    EXPECT_EQ(rule.adapterDirect + rule.protocol + rule.ipDirect, 0);
    EXPECT_EQ(rule.table, "");
    EXPECT_EQ(rule.chainList, (std::set<std::string>{"FORWARD_FIREWALL", "INPUT_FIREWALL", "X"}));
    EXPECT_EQ(profile.adapterPolicyMap,
              (std::map<std::string, FW::FW_POLICY>{{"eth0", FW::FW_POLICY_DENY},
                                                    {"eth1", FW::FW_POLICY_DENY}}));
}

TEST_F(ProfileDatabase, DrawsFileNamesThatAreFree) {
    const long now = time(nullptr);
    Json::Value meta;
    // All but one of the hundred names of the coming seconds are taken.
    for (long number = now; number < now + 103; ++number) {
        if (number != now + 50) {
            meta["p" + std::to_string(number)]["fileName"] = std::to_string(number);
        }
    }
    EXPECT_EQ(db_.profilePathNameGen(meta), std::to_string(now + 50));

    std::srand(1);
    const int first = std::rand();
    std::srand(1);
    (void)db_.profilePathNameGen(meta);
    EXPECT_EQ(std::rand(), first) << "the caller's own sequence is not disturbed";
}

}  // namespace
