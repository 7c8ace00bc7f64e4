#include <gtest/gtest.h>

#include <cctype>

#include "tests/support/store.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/controller.h"

namespace {

using Answers = std::map<std::string, FW::FW_POLICY>;

const std::string kTables = GOLDEN_DIRECTORY "/blockedQuery/";

// Rules for every port. A, D, N and U have the policies ALLOW, DENY, NONE and 7; a small letter is
// a rule for some addresses only.
std::vector<FW::FWRULE> rules(const std::string& letters) {
    std::vector<FW::FWRULE> list;
    for (const char letter : letters) {
        const std::size_t policy = std::string("adn....u").find(letter | 0x20);
        list.push_back(test::portRule(static_cast<FW::FW_POLICY>(policy), {}));
        list.back().portGroup = FW::FW_PORT_GROUP_ALL;
        list.back().ipGroup = std::islower(letter) ? FW::FW_IP_GROUP_HOST : FW::FW_IP_GROUP_ALL;
    }
    return list;
}

// A cell is what a rule leads to alone, before U and before A. Where the walk stops, the three are
// equal; the rules that follow tell the working values, which no answer shows, from each other.
TEST(BlockedQuery, WalksByTheTransitionTables) {
    const struct {
        std::string letters;
        std::string defaultPolicies;
        std::string cells;
    } rows[] = {{"ADNU", "012", "000 111 222 777 "}, {"ADNU", "4", "000 333 000 000 "},
                {"ADNU", "5", "333 111 000 000 "},   {"ADNU", "36", "000 000 000 000 "},
                {"adnu", "0", "070 303 070 070 "},   {"adnu", "1", "300 070 070 070 "},
                {"adnu", "2", "300 303 070 070 "},   {"adnu", "4", "070 333 000 000 "},
                {"adnu", "5", "333 070 000 000 "},   {"adnu", "36", "000 000 000 000 "}};
    test::clearFiles();
    test::writeSettings(true, "home");
    FW::FWPROFILE profile;
    profile.name = "home";
    for (const auto& row : rows) {
        for (const char policy : row.defaultPolicies) {
            profile.adapterPolicyMap["eth0"] = static_cast<FW::FW_POLICY>(policy - '0');
            std::string cells;
            for (const char letter : row.letters) {
                for (const char* next : {"", "U", "A"}) {
                    profile.rules["eth0"] = rules(letter + std::string(next));
                    test::writeProfile("1.json", profile);
                    Answers answers;
                    EXPECT_TRUE(FW::ZAMOFW().fwPortIsBlocked({0, 1, "22"}, "eth0", answers));
                    cells += std::to_string(answers["eth0"]);
                }
                cells += " ";
            }
            EXPECT_EQ(cells, row.cells) << row.letters << " from " << policy;
        }
    }
}

class BlockedQueryTable : public testing::TestWithParam<std::string> {};

// A row holds the adapters' "rules" and "policies", what is asked ("port": direction, protocol,
// text; or "service"; and "adapter"), and the "answers", without which the query fails. "settings",
// no "catalogue" and the answers "before" are the exception.
TEST_P(BlockedQueryTable, HasTheAnswersAndTheLog) {
    for (const Json::Value& row : test::json(test::readFile(kTables + GetParam()))) {
        test::clearFiles();
        if (row.get("catalogue", true).asBool()) {
            test::writeServices();
        }
        Json::Value profile;
        profile["name"] = "home";
        profile["rules"] = row["rules"];
        profile["adapterPolicyMap"] = row["policies"];
        test::writeFile(test::kStore + std::string("1.json"), profile.toStyledString());
        test::writeSettings(true, "home");
        if (row.isMember("settings")) {
            test::writeFile(test::kSettings, row["settings"].asString());
        }
        Answers answers;
        for (const std::string& name : row["before"].getMemberNames()) {
            answers[name] = static_cast<FW::FW_POLICY>(row["before"][name].asInt());
        }

        test::SystemLog log;
        FW::ZAMOFW controller;
        const std::string adapter = row["adapter"].asString();
        const Json::Value& port = row["port"];
        const bool done =
            port.isNull()
                ? controller.fwServIsBlocked(row["service"].asString(), adapter, answers)
                : controller.fwPortIsBlocked({port[0].asInt(), port[1].asInt(), port[2].asString()},
                                             adapter, answers);

        Json::Value actual = row;
        actual.removeMember("log");
        actual.removeMember("answers");
        if (done) {
            actual["answers"] = Json::objectValue;
        }
        for (const auto& [name, answer] : done ? answers : Answers()) {
            actual["answers"][name] = answer;
        }
        for (const std::string& line : log.take()) {
            actual["log"].append(line);
        }
        EXPECT_EQ(actual, row);
    }
}

INSTANTIATE_TEST_SUITE_P(Golden, BlockedQueryTable, testing::ValuesIn(test::namesIn(kTables)),
                         [](const auto& row) { return row.param.substr(0, row.param.find('.')); });

}  // namespace
