// The library with the real platform, the real iptables, the shipped data and real packets.

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <random>

#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/zamofirewall.h"

namespace {

using FW::FW_POLICY_ALLOW;
using FW::FW_POLICY_DENY;
using FW::FWPROFILE;
using FW::FWRULE;
using Lines = std::vector<std::string>;

class RealFirewall : public testing::Test {
  protected:
    RealFirewall() {
        test::shell(
            "/usr/zamo/sbin/zamofw-chains; ip netns add neighbour;"
            "ip link add eth0 type veth peer name eth0 netns neighbour;"
            "ip addr add 10.1.0.1/24 dev eth0; ip -n neighbour addr add 10.1.0.2/24 dev eth0;"
            "ip link set eth0 up; ip -n neighbour link set eth0 up");
        for (const auto& entry : std::filesystem::directory_iterator(test::kStore)) {
            std::filesystem::remove_all(entry.path());
        }
        store({{"eth0", {}}}, {{"eth0", FW_POLICY_ALLOW}});
        test::writeSettings(false, "home");
    }
    ~RealFirewall() override {
        EXPECT_TRUE(FW::ZAMOFW().fwDisable());
        test::shell("ip link del eth0; ip netns del neighbour");
    }

    static void store(std::map<std::string, std::vector<FWRULE>> rules,
                      std::map<std::string, FW::FW_POLICY> policies) {
        FWPROFILE profile;
        profile.name = "home";
        profile.rules = std::move(rules);
        profile.adapterPolicyMap = std::move(policies);
        test::writeProfile("1.json", profile);
    }

    static std::string listed() { return test::shell("/sbin/iptables -S; /sbin/ip6tables -S"); }

    static bool isEnabled() {
        bool enabled = false;
        EXPECT_TRUE(FW::ZAMOFW().fwStatus(enabled));
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

    // Expects that all of them succeed.
    static void expectSuccess(std::vector<pid_t>& processes) {
        for (const pid_t process : processes) {
            EXPECT_EQ(test::waitFor(process), 0);
        }
        processes.clear();
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
        std::map<std::string, std::vector<FWRULE>> rules;
        for (int i = 0; i < 12; ++i) {
            const FW::FW_POLICY policy = random() % 2 == 0 ? FW_POLICY_ALLOW : FW_POLICY_DENY;
            const std::string port =
                oneOf({"21", "22-25", "30-39", "33", "53", "40-45", "44-59", "20"});
            FWRULE rule = random() % 3 == 0
                              ? test::serviceRule(policy, {oneOf({"ssh", "smtp", "telnet"})})
                              : test::portRule(policy, {port, oneOf({"57", "28", "50-51"})});
            rule.protocol = random() % 4 == 0 ? FW::FW_PROTOCOL_BOTH : FW::FW_PROTOCOL_TCP;
            rule.enable = random() % 5 != 0;
            rules["eth0"].push_back(rule);
        }
        store(rules, {{"eth0", random() % 2 == 0 ? FW_POLICY_ALLOW : FW_POLICY_DENY}});
        ASSERT_TRUE(FW::ZAMOFW().fwEnable());

        std::string allowed;
        for (int port = 20; port < 60; ++port) {
            std::map<std::string, FW::FW_POLICY> result;
            FW::PortCompareST query;
            query.port = std::to_string(port);
            ASSERT_TRUE(FW::ZAMOFW().fwPortIsBlocked(query, "eth0", result));
            allowed += result["eth0"] == FW_POLICY_ALLOW ? std::to_string(port) + '\n' : "";
        }
        EXPECT_EQ(answeringPorts(), allowed) << listed();
    }
}

TEST_F(RealFirewall, ServesSeveralProcessesAtOnce) {
    store({{"eth0", {test::portRule(FW_POLICY_ALLOW, {"22"})}}}, {{"eth0", FW_POLICY_DENY}});
    ASSERT_TRUE(FW::ZAMOFW().fwEnable());
    const std::string rules = listed();
    std::vector<pid_t> children;
    for (int process = 0; process < 3; ++process) {
        children.push_back(test::startProcess(
            [] { return FW::ZAMOFW().fwReload(true) && FW::ZAMOFW().fwReload(true) ? 0 : 1; }));
        // Queries read the files, so a running reload does not change the answers.
        children.push_back(test::startProcess([] {
            for (int i = 0; i < 50; ++i) {
                if (ZAMOFwPortsCheckAllowByAdapter("eth0", "ssh") != 1 ||
                    ZAMOFwPortsCheckAllowByAdapter("eth0", "http") != 0) {
                    return 1;
                }
            }
            return 0;
        }));
    }
    expectSuccess(children);
    EXPECT_EQ(listed(), rules) << "no line of one reload among those of another";

    for (const std::string service : {"ssh", "http", "ftp"}) {
        children.push_back(test::startProcess([service] {
            for (int i = 0; i < 20; ++i) {
                if (VLIBFwRuleReserveServInsert(service.c_str(), i % 2, 0) != 0) {
                    return 1;
                }
            }
            return 0;
        }));
    }
    expectSuccess(children);
    FWPROFILE profile;
    EXPECT_TRUE(FW::ZAMOFW_PROFILE().profileGet("home", profile)) << "every file is whole";
    EXPECT_EQ(log_.take(), Lines{});
}

TEST_F(RealFirewall, OpensThePoliciesBeforeASignalEndsAReload) {
    store({{"eth0", std::vector<FWRULE>(40, test::portRule(FW_POLICY_ALLOW, {"22"}))}},
          {{"eth0", FW_POLICY_DENY}});
    ASSERT_TRUE(FW::ZAMOFW().fwEnable());
    // Nearly all of a reload's time is spent behind closed policies, so most signals meet them.
    for (const useconds_t delay : {100000U, 137000U, 211000U, 283000U}) {
        (void)std::signal(SIGINT, SIG_DFL);
        const pid_t reloader = test::startProcess([] {
            (void)setpgid(0, 0);
            while (FW::ZAMOFW().fwReload(true)) {
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
    EXPECT_EQ(log_.take(), Lines{});
}

TEST_F(RealFirewall, SwitchesItselfOffWhenIptablesRefusesALine) {
    store({{"eth0", {test::portRule(FW_POLICY_DENY, {"no-such-port"})}}},
          {{"eth0", FW_POLICY_DENY}});
    EXPECT_FALSE(FW::ZAMOFW().fwEnable());
    EXPECT_FALSE(isEnabled());
    EXPECT_EQ(answeringPorts(), test::shell("seq 20 59"));
    EXPECT_EQ(listed().find("ESTABLISHED"), std::string::npos) << listed();
}

}  // namespace
