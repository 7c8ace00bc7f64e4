// The library with the real platform, the real iptables, the shipped data and real packets.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <random>

#include "tests/integration/neighbour.h"
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
using Ports = std::set<int>;

class RealFirewall : public testing::Test {
  protected:
    RealFirewall() {
        test::shell("/usr/zamo/sbin/zamofw-chains");
        for (const auto& entry : std::filesystem::directory_iterator(test::kStore)) {
            std::filesystem::remove_all(entry.path());
        }
        store({{"eth0", {}}}, {{"eth0", FW_POLICY_ALLOW}});
        test::writeSettings(false, "home");
    }
    ~RealFirewall() override { EXPECT_TRUE(FW::ZAMOFW().fwDisable()); }

    static void store(std::map<std::string, std::vector<FWRULE>> rules,
                      std::map<std::string, FW::FW_POLICY> policies) {
        FWPROFILE profile;
        profile.name = "home";
        profile.rules = std::move(rules);
        profile.adapterPolicyMap = std::move(policies);
        test::writeProfile("1.json", profile);
    }

    static std::string listed() { return test::shell("/sbin/iptables -S; /sbin/ip6tables -S"); }

    test::Neighbour neighbour_;
    test::SystemLog log_;
};

TEST_F(RealFirewall, AnswersQueriesAsTheKernelDecides) {
    std::mt19937 random(20240607);
    const auto oneOf = [&](std::vector<std::string> texts) {
        return texts[random() % texts.size()];
    };
    std::vector<int> ports;
    for (int port = 20; port < 60; ++port) {
        ports.push_back(port);
    }
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

        Ports allowed;
        for (const int port : ports) {
            std::map<std::string, FW::FW_POLICY> result;
            FW::PortCompareST query;
            query.port = std::to_string(port);
            ASSERT_TRUE(FW::ZAMOFW().fwPortIsBlocked(query, "eth0", result));
            if (result["eth0"] == FW_POLICY_ALLOW) {
                allowed.insert(port);
            }
        }
        EXPECT_EQ(neighbour_.answeringPorts("10.1.0.2", "10.1.0.1", ports), allowed) << listed();
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
    for (const pid_t child : children) {
        EXPECT_EQ(test::waitFor(child), 0);
    }
    EXPECT_EQ(listed(), rules) << "no line of one reload among those of another";

    children.clear();
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
    for (const pid_t child : children) {
        EXPECT_EQ(test::waitFor(child), 0);
    }
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
        EXPECT_EQ(listed().find("-P INPUT DROP"), std::string::npos) << listed();
        EXPECT_EQ(listed().find("-P FORWARD DROP"), std::string::npos) << listed();
        EXPECT_EQ(listed().find("-A FIREWALL_RELOADING"), std::string::npos) << listed();
        bool enabled = false;
        EXPECT_TRUE(FW::ZAMOFW().fwStatus(enabled));
        EXPECT_TRUE(enabled);
    }
    EXPECT_EQ(log_.take(), Lines{});
}

TEST_F(RealFirewall, SwitchesItselfOffWhenIptablesRefusesALine) {
    store({{"eth0", {test::portRule(FW_POLICY_DENY, {"no-such-port"})}}},
          {{"eth0", FW_POLICY_DENY}});
    EXPECT_FALSE(FW::ZAMOFW().fwEnable());
    bool enabled = true;
    EXPECT_TRUE(FW::ZAMOFW().fwStatus(enabled));
    EXPECT_FALSE(enabled);
    EXPECT_EQ(neighbour_.answeringPorts("10.1.0.2", "10.1.0.1", {22, 80}), (Ports{22, 80}));
    EXPECT_EQ(listed().find("ESTABLISHED"), std::string::npos) << listed();
}

}  // namespace
