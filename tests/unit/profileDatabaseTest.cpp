#include "zamofirewall/profileDatabase.h"

#include <gtest/gtest.h>

#include "tests/support/ruleText.h"
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

TEST_F(ProfileDatabase, ReadsAndWritesEveryFieldOfARule) {
    const Json::Value document = test::json(
        "{'eth0': [{'adapterDirect': 11, 'blLog': true, 'chainList': ['A', 'FORWARD_FIREWALL',"
        " 'INPUT_FIREWALL'], 'enable': false, 'ipDirect': 14, 'ipGroup': 15, 'ipList': ['10.0.0.2',"
        " '10.0.0.1'], 'ipType': 13, 'labelList': ['z', 'a'], 'name': 'N', 'policy': 12,"
        " 'portDirect': 16, 'portGroup': 17, 'portList': ['22', '90-99'], 'protocol': 18,"
        " 'ruleIndex': 0, 'table': 'mangle'}]}");
    std::map<std::string, std::vector<FWRULE>> rules;
    ASSERT_TRUE(db_.jsonToRuleList(document, rules));
    EXPECT_EQ(test::ruleText(rules["eth0"].at(0)),
              "off 12 portGroup=17 22,90-99 protocol=18 portDirect=16 ipGroup=15 10.0.0.2,10.0.0.1"
              " ipDirect=14 ipType=13 adapterDirect=11 log table=mangle"
              " chains=A,FORWARD_FIREWALL,INPUT_FIREWALL name=N labels=z,a");
    // Does not compile when the rule gets another field.
    auto& [index, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q] = rules["eth0"].at(0);
    index = 7;
    rules["eth1"] = {};
    Json::Value written;
    db_.ruleListToJson(rules, written);
    EXPECT_EQ(written, document);
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
    // Neither a settings file with a name nor one without room for a lock file is a profile.
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
