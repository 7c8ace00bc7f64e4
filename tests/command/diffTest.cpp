#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "command/answers/diffAnswer.h"
#include "command/answers/planAnswer.h"
#include "command/plan/lineDiff.h"
#include "tests/support/fakePlatform.h"
#include "tests/support/store.h"

namespace zamofw {
namespace {

using Texts = std::vector<std::string>;

// By the textbook, over all pairs.
std::size_t commonLength(const Texts& a, const Texts& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (const std::string& text : a) {
        std::size_t diagonal = 0;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t above = row[j + 1];
            row[j + 1] = text == b[j] ? diagonal + 1 : std::max(above, row[j]);
            diagonal = above;
        }
    }
    return row.back();
}

TEST(LineDiff, LeadsFromOneListToTheOtherInAsFewStepsAsPossible) {
    std::mt19937 random(3);
    const auto texts = [&random] {
        Texts list(random() % 12);
        for (std::string& text : list) {
            text = std::string(1, static_cast<char>('a' + random() % 5));
        }
        return list;
    };
    for (int i = 0; i < 500; ++i) {
        const Texts a = texts();
        const Texts b = texts();
        Texts fromA;
        Texts fromB;
        std::size_t same = 0;
        for (const Edit& edit : lineDiff(a, b)) {
            if (edit.kind != Edit::Kind::kAdded) {
                fromA.push_back(a.at(edit.oldIndex));
            }
            if (edit.kind != Edit::Kind::kRemoved) {
                fromB.push_back(b.at(edit.newIndex));
            }
            if (edit.kind == Edit::Kind::kSame) {
                EXPECT_EQ(a.at(edit.oldIndex), b.at(edit.newIndex));
                ++same;
            }
        }
        EXPECT_EQ(fromA, a);
        EXPECT_EQ(fromB, b);
        EXPECT_EQ(same, commonLength(a, b));
        EXPECT_EQ(isSame(lineDiff(a, b)), a == b);
    }
}

TEST(LineDiff, PrintsHunksWithThreeTextsAround) {
    const Texts a = {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "13", "14"};
    Texts b = a;
    b[4] = "x";
    b.erase(b.begin() + 12);
    b.insert(b.begin(), "0");
    EXPECT_EQ(unifiedHunks(a, b, lineDiff(a, b), "t"),
              "@@ -1,8 +1,9 @@ t\n+0\n 1\n 2\n 3\n 4\n-5\n+x\n 6\n 7\n 8\n"
              "@@ -10,5 +11,4 @@ t\n 10\n 11\n 12\n-13\n 14\n");
    EXPECT_EQ(unifiedHunks({}, {"1"}, lineDiff({}, {"1"}), "t"), "@@ -0,0 +1 @@ t\n+1\n");
    EXPECT_EQ(unifiedHunks(a, a, lineDiff(a, a), "t"), "");
}

struct Answered {
    int status;
    std::string out;
};

template <typename Answer>
Answered answered(Answer answer, bool json = false) {
    std::ostringstream out;
    Console console = {json, false, false, false, false, false, out, out};
    try {
        const Status status = answer(console);
        return {static_cast<int>(status), out.str()};
    } catch (const Failure& failure) {
        return {static_cast<int>(failure.status()), failure.what()};
    }
}

class Answers : public testing::Test {
  protected:
    Answers() {
        test::clearFiles();
        test::clearPlatform();
        FW::FWPROFILE profile;
        profile.name = "home";
        profile.rules["eth0"] = {test::portRule(FW::FW_POLICY_ALLOW, {"22"})};
        test::writeProfile("1.json", profile);
        profile.name = "copy";
        test::writeProfile("2.json", profile);
        profile.name = "other";
        profile.rules["eth0"][0].portList = {"23"};
        profile.adapterPolicyMap["eth0"] = FW::FW_POLICY_NONE;
        test::writeProfile("3.json", profile);
        test::writeSettings(true, "home");
    }

    static Answered diff(const Texts& profiles, const Texts& files = {}, bool json = false) {
        const DiffRequest request = {profiles, files, [](const FW::FWRULE& rule) {
                                         return Texts{"allow", "--port", rule.portList.at(0)};
                                     }};
        return answered([&](Console& console) { return diffAnswer(console, request); }, json);
    }
    static Answered plan(const std::optional<std::string>& format, bool json = false) {
        PlanRequest request;
        request.target.profile = "home";
        request.format = format;
        return answered([&](Console& console) { return planAnswer(console, request); }, json);
    }
};

TEST_F(Answers, ShowWhatDiffers) {
    const std::string store = test::kStore;
    EXPECT_EQ(diff({"copy"}).status, 0);
    EXPECT_EQ(diff({"copy"}).out, "");
    const std::string text = diff({"other"}).out;
    const std::string head = "--- home\t" + store + "1.json\n+++ other\t" + store +
                             "3.json\n@@ -1 +1 @@ rules of eth0\n-allow --port 22\n"
                             "+allow --port 23\n@@ -0,0 +1 @@ default policies\n+eth0 none\n";
    EXPECT_EQ(text.substr(0, head.size()), head);
    const std::string line = "/sbin/iptables -t filter -A FORWARD_FIREWALL -i eth0 -p tcp --dport ";
    EXPECT_NE(text.find("\n-" + line + "22 -j RETURN\n"), std::string::npos) << text;
    EXPECT_EQ(diff({"other"}, {store + "1.json"}).status, 1);
    EXPECT_EQ(diff({}, {store + "2.json"}).status, 0);

    const Answered json = diff({"other", "home"}, {}, true);
    EXPECT_EQ(json.status, 1);
    const Json::Value answer = test::json(json.out);
    EXPECT_EQ(answer["same"], false);
    EXPECT_EQ(answer["policies"], test::json("{'removed': {'eth0': 'none'}, 'added': {}}"));
    EXPECT_EQ(answer["rules"]["added"][0]["words"], "allow --port 22");
    EXPECT_EQ(answer["rules"]["added"][0]["rule"]["portList"], test::json("['22']"));
    EXPECT_EQ(answer["removed"][0]["line"],
              "-t filter -A FORWARD_FIREWALL -i eth0 -p tcp --dport 23 -j RETURN");
    EXPECT_EQ(answer["removed"][0]["position"], 1);
}

TEST_F(Answers, RefuseWhatMakesNoSense) {
    EXPECT_EQ(diff({}).status, 2);
    EXPECT_EQ(diff({"home", "copy"}, {"/tmp/x"}).status, 2);
    EXPECT_EQ(diff({"-"}, {"-"}).status, 2);
    EXPECT_EQ(diff({"homr"}).out, "there is no profile `homr`: did you mean `home`?");
    EXPECT_EQ(plan("line").out, "`line` is no format of a plan");
    EXPECT_EQ(plan("restore", true).status, 2);
}

TEST_F(Answers, ShowThePlanInEachFormat) {
    const std::string lines = plan("lines").out;
    EXPECT_EQ(lines.rfind("/sbin/iptables -A INPUT_FIREWALL -i lo -j ACCEPT\n", 0), 0U);
    EXPECT_EQ(plan({}).out, lines);
    EXPECT_EQ(test::json(plan({}, true).out)["profile"], "home");
    EXPECT_EQ(plan({}, true).out, plan("json").out);
    const std::string restore = plan("restore").out;
    EXPECT_EQ(restore.rfind("# IPv4\n", 0), 0U);
    EXPECT_NE(restore.find("\nCOMMIT\n# IPv6\n"), std::string::npos);
}

}  // namespace
}  // namespace zamofw
