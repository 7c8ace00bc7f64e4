// The library with the real platform, the real iptables, the shipped data and real packets.

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <future>
#include <random>

#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/zamofirewall.h"

namespace {

using namespace FW;

class RealFirewall : public testing::Test {
  protected:
    RealFirewall() {
        test::shell(
            "/usr/zamo/sbin/zamofw-chains; ip netns add neighbour;"
            "ip link add eth0 type veth peer name eth0 netns neighbour;"
            "ip addr add 10.1.0.1/24 dev eth0; ip -n neighbour addr add 10.1.0.2/24 dev eth0;"
            "ip link set eth0 up; ip -n neighbour link set eth0 up");
        test::shell(std::string("rm -r ") + test::kStore + "*");
        store({}, FW_POLICY_ALLOW);
        test::writeSettings(false, "home");
    }
    ~RealFirewall() override {
        EXPECT_TRUE(ZAMOFW().fwDisable());
        test::shell("ip link del eth0; ip netns del neighbour");
    }

    static void store(const std::vector<FWRULE>& rules, FW_POLICY policy) {
        FWPROFILE profile;
        profile.name = "home";
        profile.rules["eth0"] = rules;
        profile.adapterPolicyMap["eth0"] = policy;
        test::writeProfile("1.json", profile);
    }

    static std::string listed() { return test::shell("/sbin/iptables -S; /sbin/ip6tables -S"); }

    static bool isEnabled() {
        bool enabled = false;
        EXPECT_TRUE(ZAMOFW().fwStatus(enabled));
        return enabled;
    }

    // The ports from 20 to 59, one a line, where this host answers another one's connection, even
    // if it refuses it. All are tried at the same time.
    static std::string answeringPorts() {
        return test::shell(
            "for port in $(seq 20 59); do ("
            "  timeout 4 ip netns exec neighbour bash -c \": >/dev/tcp/10.1.0.1/$port\" 2>/dev/null;"
            "  [ $? = 124 ] || echo $port) & done | sort");
    }

    // Runs all of them at the same time, in processes of their own.
    static void expectSuccess(const std::vector<std::function<bool()>>& actions) {
        std::vector<pid_t> processes;
        processes.reserve(actions.size());
        for (const auto& action : actions) {
            processes.push_back(test::startProcess([&action] { return action() ? 0 : 1; }));
        }
        for (const pid_t process : processes) {
            EXPECT_EQ(test::waitFor(process), 0);
        }
    }

    test::SystemLog log_;
};

TEST_F(RealFirewall, AnswersQueriesAsTheKernelDecides) {
    std::mt19937 random(20240607);
    const auto oneOf = [&](std::vector<std::string> texts) {
        return texts[random() % texts.size()];
    };
    for (int round = 0; round < 4; ++round) {
        // Rules for every address, so that the query has no third answer.
        std::vector<FWRULE> rules;
        for (int i = 0; i < 12; ++i) {
            const FW_POLICY policy = random() % 2 == 0 ? FW_POLICY_ALLOW : FW_POLICY_DENY;
            const auto ports = {oneOf({"20", "21", "22-25", "30-39", "33", "40-45", "44-59", "53"}),
                                oneOf({"57", "28", "50-51"})};
            FWRULE rule = test::portRule(policy, ports);
            if (random() % 3 == 0) {
                rule = test::serviceRule(policy, {oneOf({"ssh", "smtp", "telnet"})});
            }
            rule.protocol = random() % 4 == 0 ? FW_PROTOCOL_BOTH : FW_PROTOCOL_TCP;
            rule.enable = random() % 5 != 0;
            rules.push_back(rule);
        }
        store(rules, random() % 2 == 0 ? FW_POLICY_ALLOW : FW_POLICY_DENY);
        ASSERT_TRUE(ZAMOFW().fwEnable());

        std::string allowed;
        for (int port = 20; port < 60; ++port) {
            std::map<std::string, FW_POLICY> result;
            PortCompareST query;
            query.port = std::to_string(port);
            ASSERT_TRUE(ZAMOFW().fwPortIsBlocked(query, "eth0", result));
            allowed += result["eth0"] == FW_POLICY_ALLOW ? std::to_string(port) + '\n' : "";
        }
        EXPECT_EQ(answeringPorts(), allowed) << listed();
    }
}

TEST_F(RealFirewall, ServesSeveralProcessesAtOnce) {
    store({test::portRule(FW_POLICY_ALLOW, {"22"})}, FW_POLICY_DENY);
    ASSERT_TRUE(ZAMOFW().fwEnable());
    const std::string rules = listed();
    const auto reload = [] { return ZAMOFW().fwReload(true) && ZAMOFW().fwReload(true); };
    // Queries read the files, so a running reload does not change the answers.
    const auto query = [] {
        int wrong = 0;
        for (int i = 0; i < 50; ++i) {
            wrong += ZAMOFwPortsCheckAllowByAdapter("eth0", "ssh") == 1 ? 0 : 1;
            wrong += ZAMOFwPortsCheckAllowByAdapter("eth0", "http") == 0 ? 0 : 1;
        }
        return wrong == 0;
    };
    expectSuccess({reload, query, reload, query, reload, query});
    EXPECT_EQ(listed(), rules) << "no line of one reload among those of another";

    const auto reserve = [](const char* service) {
        bool good = true;
        for (int i = 0; i < 20; ++i) {
            good = good && VLIBFwRuleReserveServInsert(service, i % 2, 0) == 0;
        }
        return good;
    };
    expectSuccess({[&] { return reserve("ssh"); }, [&] { return reserve("http"); },
                   [&] { return reserve("ftp"); }});
    FWPROFILE profile;
    EXPECT_TRUE(ZAMOFW_PROFILE().profileGet("home", profile)) << "every file is whole";
    EXPECT_EQ(log_.take(), std::vector<std::string>());
}

// Each with objects of its own.
TEST_F(RealFirewall, ServesSeveralThreadsAtOnce) {
    store({test::portRule(FW_POLICY_ALLOW, {"22"}), test::serviceRule(FW_POLICY_ALLOW, {"http"})},
          FW_POLICY_DENY);
    ASSERT_TRUE(ZAMOFW().fwEnable());
    const std::function<bool()> actions[] = {
        [] { return ZAMOFW().fwReload(true); },
        [] { return ZAMOFwPortsCheckAllowByAdapter("eth0", "ssh") == 1; },
        [] {
            std::map<std::string, FW_POLICY> result;
            return ZAMOFW().fwServIsBlocked("http", "eth0", result);
        },
        [] {
            Json::Value list;
            return ZAMOFW().fwIptablesRulesEnum("home", list, true);
        },
        [] {
            Json::Value document;
            return ZAMOFW_JSON_DB().exportConfig(document);
        },
        [] {
            ZAMOFW_PROFILE profiles;
            FWPROFILE profile;
            return profiles.profileGet("home", profile) && profiles.profileSet("home", profile);
        },
        [] { return ZAMO_IPTABLES_MODULES::iptablesCoreModLoad("thread"); },
        [] { return VLIBFwRuleReserveServInsert("ftp", 1, 0) == 0; },
        [] {
            Json::Value settings;
            return ZAMOFW().configGet(settings);
        }};
    std::vector<std::future<bool>> threads;
    for (std::size_t first = 0; first < 4; ++first) {
        threads.push_back(std::async(std::launch::async, [&actions, first] {
            bool done = true;
            for (std::size_t i = 0; i < 2 * std::size(actions); ++i) {
                done = actions[(first * 3 + i) % std::size(actions)]() && done;
            }
            return done;
        }));
    }
    for (std::future<bool>& thread : threads) {
        EXPECT_TRUE(thread.get());
    }
    EXPECT_EQ(log_.take(), std::vector<std::string>());
    EXPECT_TRUE(isEnabled()) << "a failed line would have switched it off";
}

TEST_F(RealFirewall, OpensThePoliciesBeforeASignalEndsAReload) {
    store(std::vector<FWRULE>(40, test::portRule(FW_POLICY_ALLOW, {"22"})), FW_POLICY_DENY);
    ASSERT_TRUE(ZAMOFW().fwEnable());
    // Nearly all of a reload's time is spent behind closed policies, so most signals meet them.
    for (const useconds_t delay : {100000U, 137000U, 211000U, 283000U}) {
        (void)std::signal(SIGINT, SIG_DFL);
        const pid_t reloader = test::startProcess([] {
            (void)setpgid(0, 0);
            while (ZAMOFW().fwReload(true)) {
            }
            return 1;
        });
        (void)usleep(delay);
        (void)kill(-reloader, SIGINT);  // the whole group, as a terminal does
        EXPECT_EQ(test::waitFor(reloader), -1) << "ended by the signal";
        const std::string rules = listed();
        for (const char* left : {"-P INPUT DROP", "-P FORWARD DROP", "-A FIREWALL_RELOADING"}) {
            EXPECT_EQ(rules.find(left), std::string::npos) << rules;
        }
        EXPECT_TRUE(isEnabled());
    }
    EXPECT_EQ(log_.take(), std::vector<std::string>());
}

TEST_F(RealFirewall, SwitchesItselfOffWhenIptablesRefusesALine) {
    store({test::portRule(FW_POLICY_DENY, {"no-such-port"})}, FW_POLICY_DENY);
    EXPECT_FALSE(ZAMOFW().fwEnable());
    EXPECT_FALSE(isEnabled());
    EXPECT_EQ(answeringPorts(), test::shell("seq 20 59"));
    EXPECT_EQ(listed().find("ESTABLISHED"), std::string::npos) << listed();
}

}  // namespace
