#include "zamofirewall/profileDatabase.h"

#include <gtest/gtest.h>

#include "tests/support/store.h"
#include "zamofirewall/profile.h"

namespace {

using FW::FWPROFILE;
using FW::FWRULE;

class ProfileDatabase : public testing::Test {
  protected:
    ProfileDatabase() { test::clearFiles(); }

    FW::ZAMOFW_JSON_DB db_;
};

TEST_F(ProfileDatabase, WritesAndReadsEveryFieldOfARule) {
    const FWRULE rule = {7,
                         false,
                         11,
                         static_cast<FW::FW_POLICY>(12),
                         true,
                         {"z", "a"},
                         "Service",
                         "mangle",
                         {"A", "FORWARD_FIREWALL", "INPUT_FIREWALL"},
                         13,
                         14,
                         15,
                         {"10.0.0.2", "10.0.0.1"},
                         16,
                         17,
                         18,
                         {"22", "6000-6010"}};
    // Does not compile when the rule gets another field.
    [[maybe_unused]] const auto& [a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q] = rule;
    Json::Value written;
    db_.ruleListToJson({{"eth0", {FWRULE(), rule}}, {"eth1", {}}}, written);
    EXPECT_EQ(written.getMemberNames(), std::vector<std::string>{"eth0"});
    EXPECT_EQ(written["eth0"][1],
              test::json("{'adapterDirect': 11, 'blLog': true, 'chainList': ['A', "
                         "'FORWARD_FIREWALL', 'INPUT_FIREWALL'], 'enable': false, 'ipDirect': "
                         "14, "
                         "'ipGroup': 15, 'ipList': ['10.0.0.2', '10.0.0.1'], 'ipType': 13, "
                         "'labelList': ['z', 'a'], 'name': 'Service', 'policy': 12, "
                         "'portDirect': "
                         "16, 'portGroup': 17, 'portList': ['22', '6000-6010'], 'protocol': "
                         "18, "
                         "'ruleIndex': 1, 'table': 'mangle'}"));

    std::map<std::string, std::vector<FWRULE>> read;
    ASSERT_TRUE(db_.jsonToRuleList(written, read));
    Json::Value again;
    db_.ruleListToJson(read, again);
    EXPECT_EQ(again, written);
}

TEST_F(ProfileDatabase, AddsWhatADocumentHasToTheProfile) {
    const Json::Value document = test::json(
        "{'name': 'p', 'rules': {'eth0': [{'ruleID': 5}], 'eth1': []},"
        " 'adapterPolicyMap': {'eth0': true}}");
    FWPROFILE profile;
    profile.adapterPolicyMap["eth1"] = FW::FW_POLICY_DENY;
    EXPECT_TRUE(db_.jsonToProfile(document, profile));
    EXPECT_TRUE(db_.jsonToProfile(document, profile));
    ASSERT_EQ(profile.rules.size(), 1U);
    ASSERT_EQ(profile.rules["eth0"].size(), 2U) << "reading twice appends twice";
    EXPECT_EQ(profile.rules["eth0"][1].ruleIndex, 5);
    Json::Value written;
    profile.rules = {{"eth0", {}}};
    db_.profileToJson(profile, written);
    EXPECT_EQ(written, test::json("{'name': 'p', 'rules': null,"
                                  " 'adapterPolicyMap': {'eth0': 1, 'eth1': 1}}"));
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

TEST_F(ProfileDatabase, TakesOnlyNamesThatCanBeReadBack) {
    FWPROFILE profile;
    profile.name = "home";
    test::writeProfile("1.json", profile);
    // Neither a settings file with a name nor one without room for a lock file is
    // a profile.
    test::writeFile(test::kSettings, "{\"name\": \"settings\", \"profile\": \"home\"}");
    test::writeProfile(std::string(246, 'd') + ".json", profile);
    const auto names = [this] {
        std::vector<std::string> found;
        EXPECT_TRUE(db_.profileEnum(found));
        return found;
    };
    EXPECT_EQ(names(), std::vector<std::string>{"home"});
    EXPECT_TRUE(FW::ZAMOFW_PROFILE().profileRemoveServ("ssh"));
    EXPECT_EQ(test::json(test::readFile(test::kSettings)).size(), 2U);

    const auto imports = [this](const std::string& fileName) {
        Json::Value document;
        document["config_profiles"][fileName]["name"] = "x";
        return db_.importConfig(document);
    };
    for (const std::string wrong :
         {"\xff", "a\xc3", "\xed\xa0\x80", "\xc0\xaf", "\xf4\x90\x80\x80"}) {
        EXPECT_FALSE(db_.profileCreate(wrong)) << testing::PrintToString(wrong);
        EXPECT_FALSE(db_.profileRename("home", wrong));
        profile.name = wrong;
        EXPECT_FALSE(db_.profileSet("home", profile));
        EXPECT_FALSE(imports(wrong + ".json"));
    }
    for (const std::string& wrong : {std::string(), std::string("."), std::string(".."),
                                     std::string("a\0b", 3), std::string(251, 'd')}) {
        EXPECT_FALSE(imports(wrong)) << testing::PrintToString(wrong);
    }
    EXPECT_TRUE(db_.profileRename("home", "\xc3\xa9t\xc3\xa9 \xf0\x9f\x98\x80"));
    EXPECT_EQ(names(), std::vector<std::string>{"\xc3\xa9t\xc3\xa9 \xf0\x9f\x98\x80"});
}

}  // namespace
