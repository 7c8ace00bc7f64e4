#include "command/plan/plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "command/console.h"
#include "tests/support/fakePlatform.h"
#include "tests/support/store.h"
#include "zamofirewall/translator.h"

namespace zamofw {
namespace {

using Lines = std::vector<std::string>;

// Random profiles on random machines.
class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    FW::FWPROFILE machineAndProfile() {
        test::clearPlatform();
        test::FakePlatform& platform = test::platform();
        platform.interfaces = {"eth0", "eth1", "ppp0", "ppp1"};
        platform.interfaces.resize(number(5));
        platform.interfacesFail = oneIn(20);
        platform.pppoe = pick({"", "ppp0", "ppp1"});
        for (const char* const name : {"eth0", "ppp0", "ppp1", "vpn", "global"}) {
            if (oneIn(4)) {
                platform.routers[name] = pick({"sit1", "eth1", "a0", "global", "vpn", "pppoe"});
            }
        }
        FW::FWPROFILE profile;
        profile.name = "home";
        for (const char* const adapter :
             {"a0", "eth0", "eth1", "global", "gone", "ppp0", "pppoe", "vpn"}) {
            for (std::size_t rules = oneIn(2) ? 0 : number(4); rules > 0; --rules) {
                profile.rules[adapter].push_back(rule());
            }
            if (oneIn(2)) {
                profile.adapterPolicyMap[adapter] = policy();
            }
        }
        return profile;
    }

  private:
    std::size_t number(std::size_t below) { return random_() % below; }
    bool oneIn(std::size_t count) { return number(count) == 0; }
    std::string pick(const Lines& texts) { return texts[number(texts.size())]; }
    std::int32_t code(std::size_t count) { return static_cast<std::int32_t>(number(count)); }
    FW::FW_POLICY policy() { return static_cast<FW::FW_POLICY>(oneIn(60) ? 7 : code(3)); }
    FW::FWRULE rule() {
        FW::FWRULE rule;
        rule.enable = !oneIn(6);
        rule.adapterDirect = code(2);
        rule.policy = policy();
        rule.blLog = oneIn(3);
        rule.table = pick({"filter", "filter", "filter", "nat", ""});
        rule.chainList = {pick({"INPUT_FIREWALL", "FORWARD_FIREWALL", "OTHER"}), "INPUT_FIREWALL"};
        rule.ipType = code(4);
        rule.ipDirect = code(2);
        rule.ipGroup = code(7);
        rule.ipList = {pick({"10.0.0.1", "fd00::1", "LI"}), "24"};
        rule.portDirect = code(2);
        rule.portGroup = code(5);
        rule.protocol = std::vector<std::int32_t>{0, 1, 2, 3, 4, 32}[number(6)];
        const bool services = rule.portGroup == FW::FW_PORT_GROUP_SERVICE;
        for (std::size_t ports = number(9); ports > 0; --ports) {
            rule.portList.push_back(services ? pick({"ssh", "dhcp", "web", "vpn_server_pptp"})
                                             : pick({"22", "80-90"}));
        }
        rule.name = "rule " + std::to_string(count_++);
        return rule;
    }

    std::mt19937 random_;
    int count_ = 0;
};

// The library's list in the order of execution; none when the profile cannot be translated.
std::optional<Lines> libraryLines(const FW::FWPROFILE& profile, const std::string& family,
                                  bool established = true, const std::string& client = "") {
    Json::Value list;
    if (!FW::ZAMOFW_IPTABLES_RULES().fwRulesToIptablesRules(
            established, profile.rules, profile.adapterPolicyMap, list, client)) {
        return std::nullopt;
    }
    std::vector<std::string> keys = list[family].getMemberNames();
    std::stable_partition(keys.begin(), keys.end(),
                          [](const auto& key) { return key == "global"; });
    Lines lines;
    for (const std::string& key : keys) {
        for (const Json::Value& line : list[family][key]) {
            lines.push_back(line.asString());
        }
    }
    return lines;
}

Lines textsOf(const std::vector<PlannedLine>& planned) {
    Lines lines;
    for (const PlannedLine& line : planned) {
        lines.push_back(line.line);
    }
    return lines;
}

// The lines of a profile that has this rule alone.
Lines libraryLinesOfRule(const std::string& adapter, const FW::FWRULE& rule,
                         const std::string& family) {
    FW::FWPROFILE profile;
    const std::size_t builtIn = libraryLines(profile, family)->size();
    profile.rules[adapter] = {rule};
    Lines lines = *libraryLines(profile, family);
    const auto begin = lines.begin() + static_cast<std::ptrdiff_t>(builtIn);
    return {begin, lines.end()};
}

void expectOrigins(const FW::FWPROFILE& profile, const std::vector<PlannedLine>& planned,
                   const std::string& family) {
    for (const auto& [adapter, rules] : profile.rules) {
        for (std::size_t i = 0; i < rules.size(); ++i) {
            Lines own;
            for (const PlannedLine& line : planned) {
                if (line.kind == LineKind::kRule && line.adapter == adapter &&
                    line.position == i + 1 && line.name == rules[i].name) {
                    own.push_back(line.line);
                }
            }
            EXPECT_EQ(own, libraryLinesOfRule(adapter, rules[i], family));
        }
    }
    for (const PlannedLine& line : planned) {
        const bool isRule = line.kind == LineKind::kRule;
        EXPECT_EQ(isRule, line.position.has_value()) << line.line;
        EXPECT_EQ(line.kind == LineKind::kBuiltIn, line.line.rfind("-A ", 0) == 0) << line.line;
    }
}

TEST(Plan, HoldsTheLibrarysLinesWithTheirOrigins) {
    test::clearFiles();
    test::writeServices();
    Generator generator(7);
    int translated = 0;
    for (int i = 0; i < 200; ++i) {
        const FW::FWPROFILE profile = generator.machineAndProfile();
        const std::optional<Lines> v4 = libraryLines(profile, "v4");
        const std::optional<Lines> v6 = libraryLines(profile, "v6");
        test::platform().events.clear();
        if (!v4) {
            EXPECT_THROW((void)planProfile(profile, true), Failure);
            continue;
        }
        const Plan plan = planProfile(profile, true);
        std::vector<std::string>& asked = test::platform().events;
        EXPECT_EQ(std::set<std::string>(asked.begin(), asked.end()).size(), asked.size());
        EXPECT_EQ(textsOf(plan.v4), *v4);
        EXPECT_EQ(textsOf(plan.v6), *v6);
        expectOrigins(profile, plan.v4, "v4");
        expectOrigins(profile, plan.v6, "v6");
        ++translated;

        asked.clear();
        EXPECT_EQ(textsOf(planProfile(profile, false).v4), *v4);
        EXPECT_TRUE(asked.empty());
    }
    EXPECT_GT(translated, 100);
}

TEST(Plan, JudgesTheClientOfATrialByTheRules) {
    test::clearFiles();
    test::clearPlatform();
    const FW::FWPROFILE profile;
    EXPECT_EQ(textsOf(planTrial(profile, std::nullopt).v4), *libraryLines(profile, "v4", false));
    for (const char* const client : {"10.1.0.2", "fd01::2"}) {
        const Plan plan = planTrial(profile, client);
        EXPECT_EQ(textsOf(plan.v4), *libraryLines(profile, "v4", true, client));
        EXPECT_EQ(textsOf(plan.v6), *libraryLines(profile, "v6", true, client));
    }
}

TEST(Plan, IsNotNeededForPlainTexts) {
    test::clearFiles();
    test::writeServices();
    Generator generator(8);
    int plain = 0;
    for (int i = 0; i < 300; ++i) {
        FW::FWPROFILE profile = generator.machineAndProfile();
        for (auto& [adapter, rules] : profile.rules) {
            for (FW::FWRULE& rule : rules) {
                rule.table = i % 10 == 0 ? rule.table : "filter";
            }
        }
        const bool isTranslated = libraryLines(profile, "v4").has_value();
        const auto texts = plainInputs(adaptersOf(profile), 100);
        EXPECT_TRUE(isTranslated || !texts);
        if (texts) {
            const Plan plan = planProfile(profile, false);
            EXPECT_EQ(texts->v4, restoreInput(plan, 4));
            EXPECT_EQ(texts->v6, restoreInput(plan, 6));
            EXPECT_EQ(texts->lines, plan.v4.size() + plan.v6.size());
            ++plain;
        }
    }
    EXPECT_GT(plain, 100);
}

TEST(Plan, NamesTheRuleThatCannotBeTranslated) {
    test::clearFiles();
    test::clearPlatform();
    FW::FWPROFILE profile;
    profile.rules["eth0"] = {test::portRule(FW::FW_POLICY_ALLOW, {"22"}),
                             test::serviceRule(FW::FW_POLICY_ALLOW, {"ssh"})};
    profile.rules["eth0"][1].name = "shell";
    const auto messageOf = [&profile] {
        try {
            return std::to_string(planProfile(profile, false).v4.size());
        } catch (const Failure& failure) {
            return std::string(failure.what());
        }
    };
    EXPECT_EQ(messageOf(),
              "cannot translate rule 2 of eth0 (shell): the service catalogue cannot be read");
    profile.rules.clear();
    profile.adapterPolicyMap["eth0"] = static_cast<FW::FW_POLICY>(9);
    EXPECT_EQ(messageOf(), "cannot translate the default policy of eth0: the policy 9 is unknown");
}

PlannedLine lineOf(const std::string& text) { return {text, "eth0", LineKind::kRule, 2, "shell"}; }

TEST(RestoreInput, SaysEachWordToTheProgramAsItIs) {
    const std::string head =
        "# IPv6\n*filter\n-P INPUT ACCEPT\n-P FORWARD ACCEPT\n-F INPUT_FIREWALL\n"
        "-F FORWARD_FIREWALL\n-F FIREWALL_RELOADING\n";
    const Plan plan = {
        "home",
        {},
        {lineOf("-A INPUT_FIREWALL -i lo -j ACCEPT"), lineOf("-t nat -A X -j RETURN"),
         lineOf("-t filter -A INPUT_FIREWALL -p icmp  -j DROP"),
         lineOf("-t filter -A A\"\\ -i a\tb -s " + std::string("x\0y", 3)),
         lineOf("-t filter  -A B -i " + std::string("\0", 1) + " " + std::string(600, 'x'))}};
    const RestoreText restore = restoreText(plan, 6);
    EXPECT_EQ(restore.text, head +
                                "-A INPUT_FIREWALL -i lo -j ACCEPT\n"
                                "-A INPUT_FIREWALL -p icmp  -j DROP\n"
                                "-A \"A\\\"\\\\\" -i \"a\tb\" -s x\n"
                                "-A B -i \"\" " +
                                std::string(600, 'x') + "\nCOMMIT\n*nat\n-A X -j RETURN\nCOMMIT\n");
    ASSERT_EQ(restore.origins.size(), 15U);
    EXPECT_EQ(restore.origins[6], nullptr);
    EXPECT_EQ(restore.origins[8], &plan.v6[2]);
    EXPECT_EQ(restore.origins[13], &plan.v6[1]);
    EXPECT_EQ(restoreInput({"home", {}, {lineOf("-A A -j B")}}, 4).find("-A"), std::string::npos);
}

TEST(RestoreInput, RefusesWhatOnlyLooksLikeALine) {
    const std::string program = "/sbin/iptables";
    // The blank after the program and the NUL at the end count.
    const std::string longest = "-A " + std::string(1024 - program.size() - 5, 'x');
    std::string most = "-A";
    for (int words = 2; words < 255; ++words) {
        most += " x";
    }
    for (const std::string& line : {longest, most}) {
        EXPECT_NO_THROW((void)restoreInput({"home", {lineOf(line)}, {}}, 4));
    }
    for (const std::string& line : Lines{
             "-t  -A X -j DROP", "-t *nat -A X", "-t filter # -A X", "-t filter :X -A X", "-t nat",
             "-A X -i a\n-F X", "", longest + "x", longest.substr(0, 1007) + "  x", most + " x"}) {
        try {
            (void)restoreInput({"home", {lineOf(line)}, {}}, 4);
            ADD_FAILURE() << line;
        } catch (const Failure& failure) {
            EXPECT_NE(std::string(failure.what()).find("rule 2 of eth0 (shell)"), std::string::npos)
                << failure.what();
        }
    }
}

TEST(PlanText, HasEachLineWithItsProgramAndItsOrigin) {
    Plan plan = {"home", {lineOf("-A X"), lineOf("-A Y ")}, {lineOf("-A Z")}};
    plan.v4[1] = {"-A Y ", "eth1", LineKind::kDefault, std::nullopt, ""};
    EXPECT_EQ(planLines(plan), "/sbin/iptables -A X\n/sbin/iptables -A Y \n/sbin/ip6tables -A Z\n");
    plan.v6[0].name = "a\nb";
    EXPECT_EQ(planLinesWithOrigins(plan),
              "# rule 2 of eth0 (shell)\n/sbin/iptables -A X\n"
              "# the default policy of eth1\n/sbin/iptables -A Y \n"
              "# rule 2 of eth0 (a?b)\n/sbin/ip6tables -A Z\n");
    EXPECT_EQ(test::json(planJson(plan)),
              test::json("{'profile': 'home',"
                         " 'v4': [{'line': '-A X', 'adapter': 'eth0', 'kind': 'rule',"
                         "         'position': 2, 'name': 'shell'},"
                         "        {'line': '-A Y ', 'adapter': 'eth1', 'kind': 'default',"
                         "         'position': null, 'name': ''}],"
                         " 'v6': [{'line': '-A Z', 'adapter': 'eth0', 'kind': 'rule',"
                         "         'position': 2, 'name': 'a\\nb'}]}"));
}

}  // namespace
}  // namespace zamofw
