// Transactions on the real packet filter.

#include "command/apply/transaction.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>
#include <zamo/core.h>

#include <csignal>
#include <random>

#include "command/apply/program.h"
#include "command/apply/programs.h"
#include "command/console.h"
#include "command/plan/plan.h"
#include "posix/descriptor.h"
#include "tests/support/files.h"
#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "zamofirewall/controller.h"

namespace zamofw {
namespace {

using test::shell;

bool isLegacy() { return shell("iptables --version").find("legacy") != std::string::npos; }

FW::FWPROFILE profileOf(unsigned seed, std::size_t rules) {
    std::mt19937 random(seed);
    FW::FWPROFILE profile;
    profile.name = "home";
    for (std::size_t i = 0; i < rules; ++i) {
        FW::FWRULE rule = test::portRule(
            random() % 2 == 0 ? FW::FW_POLICY_ALLOW : FW::FW_POLICY_DENY,
            {std::to_string(1 + random() % 60000), std::to_string(1 + random() % 60000)});
        rule.ipType = FW::FW_IP_TYPE_BOTH;
        rule.protocol = FW::FW_PROTOCOL_BOTH;
        rule.blLog = random() % 8 == 0;
        rule.name = "rule " + std::to_string(i + 1);
        profile.rules[random() % 3 == 0 ? "global" : "eth0"].push_back(rule);
    }
    profile.adapterPolicyMap = {{"eth0", FW::FW_POLICY_DENY}};
    return profile;
}

std::string listed(int family) { return shell(tool(family) + " -S"); }

std::string listed() { return listed(4) + listed(6); }

std::string failureOf(const Plan& plan) {
    try {
        return applyPlan(plan).applied ? "applied" : "refused";
    } catch (const Failure& failure) {
        return failure.what() + ("\n" + failure.remedy());
    }
}

// In front of a restore program; `run` is the real program, `once` is true in the first call. The
// variant is told from the file's name.
class Wrapper {
  public:
    Wrapper(int family, const std::string& file, const std::string& script)
        : link_("/etc/alternatives/" + name(family)) {
        real_ = shell("readlink " + link_);
        real_.pop_back();
        test::writeFile(file, "#!/bin/sh\nARGUMENTS=\"$*\"\nrun() { " + real_ + " $ARGUMENTS; }\n" +
                                  "once() { mkdir /tmp/called 2>/dev/null; }\n" + script + "\n");
        shell("rm -rf /tmp/called; chmod 755 " + file + "; ln -sfn " + file + " " + link_);
    }
    ~Wrapper() { shell("ln -sfn " + real_ + " " + link_); }
    Wrapper(const Wrapper&) = delete;
    Wrapper& operator=(const Wrapper&) = delete;

  private:
    static std::string name(int family) {
        return family == 4 ? "iptables-restore" : "ip6tables-restore";
    }
    std::string link_;
    std::string real_;
};

// A program that is not known, and one of the variant.
std::vector<std::string> wrapperFiles() {
    return {"/tmp/wrapper", isLegacy() ? "/tmp/xtables-legacy-multi" : "/tmp/xtables-nft-multi"};
}

class Transaction : public testing::Test {
  protected:
    Transaction() {
        shell(
            "ip link add eth0 type veth peer name peer0; ip link set eth0 up; ip addr add 10.1.0.1/24 dev eth0; /usr/zamo/sbin/zamofw-chains");
    }
    ~Transaction() override {
        shell(
            "ip link del eth0; for i in iptables ip6tables; do $i -P INPUT ACCEPT; "
            "$i -P FORWARD ACCEPT; done; /usr/zamo/sbin/zamofw-chains remove");
    }
};

TEST_F(Transaction, EndsInTheRulesOfTheLibrarysReload) {
    for (unsigned seed = 0; seed < 4; ++seed) {
        const FW::FWPROFILE profile = profileOf(seed, 10);
        test::writeProfile("1.json", profile);
        test::writeSettings(true, "home");
        ASSERT_TRUE(FW::ZAMOFW().fwReload(true));
        const std::string expected = listed();
        // What a reload leaves behind that is killed half-way.
        ASSERT_TRUE(FW::ZAMOFW().fwDefaultDrop());
        shell("iptables -F INPUT_FIREWALL; ip6tables -A FIREWALL_RELOADING -j ACCEPT");
        const Plan plan = planProfile(profile);
        const Outcome outcome = applyPlan(plan);
        EXPECT_TRUE(outcome.applied);
        EXPECT_EQ(outcome.lines, plan.v4.size() + plan.v6.size());
        EXPECT_NE(expected.find("-i eth0"), std::string::npos);
        EXPECT_EQ(listed(), expected) << seed;
    }
}

TEST_F(Transaction, LeavesEverythingWhenALineIsRefused) {
    struct Row {
        const char* line;
        const char* words;
    };
    constexpr Row kRows[] = {
        {"-t filter -A INPUT_FIREWALL -p tcp --dport no-such -j RETURN", "no-such"},
        {"-A INPUT_FIREWALL -m nosuch -j RETURN", "nosuch"},
        {"-A INPUT_FIREWALL -j NOSUCH", "NOSUCH"},
        {"-A NOSUCH -j RETURN", "No chain"},
        // Only the kernel knows that this belongs to another table.
        {"-A FORWARD_FIREWALL -j CHECKSUM --checksum-fill", "Invalid argument"},
        // Only the kernel knows what calls the chain.
        {"-A INPUT_FIREWALL -m owner --uid-owner 0 -j RETURN", "Invalid argument"},
        {"-t mangle -A NOSUCH -j RETURN", "No chain"},
        {"-t raw -A PREROUTING -j CHECKSUM --checksum-fill", "Invalid argument"},
        {"-t nosuch -A INPUT -j RETURN", "nosuch"},
    };
    ASSERT_TRUE(applyPlan(planProfile(profileOf(1, 5))).applied);
    shell("iptables -P INPUT DROP; ip6tables -A FIREWALL_RELOADING -j RETURN");
    const std::string before = listed();
    for (const Row& row : kRows) {
        for (const int family : {4, 6}) {
            Plan plan = planProfile(profileOf(2, 8));
            std::vector<PlannedLine>& lines = family == 4 ? plan.v4 : plan.v6;
            PlannedLine& bad = lines[lines.size() - 3];
            bad = {row.line, "eth0", LineKind::kRule, 7, "the bad one"};
            const Outcome outcome = applyPlan(plan);
            EXPECT_FALSE(outcome.applied) << row.line;
            EXPECT_EQ(listed(), before) << row.line;
            ASSERT_EQ(outcome.refused.size(), 1U) << row.line;
            const Refusal& refusal = outcome.refused[0];
            EXPECT_EQ(refusal.family, family) << row.line;
            EXPECT_EQ(refusal.line, row.line);
            EXPECT_EQ(refusal.adapter + "/" + refusal.name, "eth0/the bad one") << row.line;
            EXPECT_EQ(refusal.position, std::optional<std::size_t>(7)) << row.line;
            EXPECT_NE(refusal.message.find(row.words), std::string::npos) << refusal.message;
        }
    }
}

TEST_F(Transaction, NamesTheReasonThatIsNoLine) {
    const Plan plan = planProfile(profileOf(3, 5));
    shell("ip6tables -D FORWARD -j FORWARD_FIREWALL; ip6tables -X FORWARD_FIREWALL");
    const std::string before = listed();
    std::string failure = failureOf(plan);
    EXPECT_NE(failure.find("FORWARD_FIREWALL is missing for IPv6"), std::string::npos) << failure;
    EXPECT_NE(failure.find("zamofw-chains"), std::string::npos) << failure;
    EXPECT_EQ(listed(), before);
    shell("/usr/zamo/sbin/zamofw-chains");

    const posix::Descriptor lock = posix::openFile(kXtablesLock, O_RDWR | O_CREAT, 0600);
    ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
    const pid_t process = test::startProcess([&] {
        const std::string words = failureOf(plan);
        const std::string holder = "process " + std::to_string(getppid());
        const bool isNamed = words.find("xtables lock") != std::string::npos &&
                             words.find(holder) != std::string::npos;
        return words == "applied" ? 1 : isNamed ? 2 : 3;
    });
    // The nft programs take no lock.
    EXPECT_EQ(test::waitFor(process), isLegacy() ? 2 : 1);
}

TEST_F(Transaction, WaitsForALockThatIsHeldForAWhile) {
    const posix::Descriptor lock = posix::openFile(kXtablesLock, O_RDWR | O_CREAT, 0600);
    ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
    const Plan plan = planProfile(profileOf(4, 5));
    const pid_t process = test::startProcess([&] { return failureOf(plan) == "applied" ? 0 : 1; });
    usleep(300000);
    ASSERT_EQ(flock(lock.get(), LOCK_UN), 0);
    EXPECT_EQ(test::waitFor(process), 0);
}

TEST_F(Transaction, HoldsTheExecutionLockUntilItsProgramsHaveEnded) {
    const Wrapper wrapper(4, "/tmp/wrapper",
                          "touch /tmp/started; until test -e /tmp/go; do sleep 0.01; done");
    const Plan plan = planProfile(profileOf(4, 5));
    const pid_t process = test::startProcess([&] { return failureOf(plan).empty() ? 0 : 1; });
    ASSERT_TRUE(test::eventually([] { return access("/tmp/started", F_OK) == 0; }));
    ASSERT_EQ(kill(process, SIGKILL), 0);
    (void)test::waitFor(process);
    int descriptor = -1;
    EXPECT_EQ(VLIBCFileLockTimeByFile(FW::kExecutionLockFile, 1, 0, &descriptor), 0);
    test::writeFile("/tmp/go", "");
    const ExecutionLock executionLock;
}

TEST_F(Transaction, LeavesOldOrNewRulesWhereverItIsKilled) {
    const Plan plans[] = {planProfile(profileOf(5, 40)), planProfile(profileOf(6, 60))};
    std::string states[2][2];
    for (std::size_t i = 0; i < 2; ++i) {
        ASSERT_TRUE(applyPlan(plans[i]).applied);
        states[i][0] = listed(4);
        states[i][1] = listed(6);
    }
    std::mt19937 random(20240611);
    for (std::size_t round = 0; round < 24; ++round) {
        const pid_t process =
            test::startProcess([&] { return failureOf(plans[round % 2]) == "applied" ? 0 : 1; });
        usleep(static_cast<useconds_t>(random() % 60000));
        ASSERT_EQ(kill(process, SIGKILL), 0);
        (void)test::waitFor(process);
        // A restore that has outlived it holds the lock.
        const ExecutionLock lock;
        for (const int family : {4, 6}) {
            const std::size_t index = family == 4 ? 0 : 1;
            const std::string now = listed(family);
            EXPECT_TRUE(now == states[0][index] || now == states[1][index]) << now;
        }
    }
    EXPECT_TRUE(applyPlan(plans[0]).applied);
    EXPECT_EQ(listed(), states[0][0] + states[0][1]);
}

TEST_F(Transaction, GivesBothFamiliesTheSameWhateverBecomesOfAProgram) {
    struct Row {
        int family;
        const char* script;
        const char* answer;  // empty when the caller is killed
        bool isNew;
    };
    constexpr Row kRows[] = {
        {4, "run; once && kill -9 $(sed -n 's/^PPid:\t//p' /proc/$PPID/status); true", "", true},
        {4, "run; once && kill -9 $PPID; true", "applied", true},
        {4, "once && kill -9 $$; run", "applied", true},
        {4, "exit 1", "refused", false},
        {6, "cat >/tmp/input; run </tmp/input", "applied", true},
        {6, "once && kill -9 $$; run", "applied", true},
        {6, "once && cat >/dev/null && exit 1; run", "applied", true},
        {6, "exit 1", "refused", false},
        {6, "cat >/dev/null; exit 1", "refused", false},
        {6, "cat >/dev/null; kill -9 $$", "ended by signal 9", false},
    };
    const Plan plans[] = {planProfile(profileOf(7, 8)), planProfile(profileOf(8, 9))};
    std::string states[2];
    for (std::size_t i = 0; i < 2; ++i) {
        ASSERT_TRUE(applyPlan(plans[i]).applied);
        states[i] = listed();
    }
    for (const std::string& file : wrapperFiles()) {
        for (const Row& row : kRows) {
            ASSERT_TRUE(applyPlan(plans[0]).applied);
            const Wrapper wrapper(row.family, file, row.script);
            const pid_t process = test::startProcess(
                [&] { return failureOf(plans[1]).find(row.answer) != std::string::npos ? 0 : 1; });
            EXPECT_EQ(test::waitFor(process), *row.answer == '\0' ? -1 : 0) << row.script;
            const ExecutionLock lock;
            EXPECT_EQ(listed(), states[row.isNew ? 1 : 0]) << file << ": " << row.script;
        }
    }
}

// Many rules of one family alone, so that the other one is committed first.
FW::FWPROFILE profileMostlyOf(int family) {
    FW::FWPROFILE profile = profileOf(9, 20);
    for (auto& [adapter, rules] : profile.rules) {
        for (std::size_t i = 1; i < rules.size(); ++i) {
            rules[i].ipType = family == 4 ? FW::FW_IP_TYPE_V4 : FW::FW_IP_TYPE_V6;
        }
    }
    return profile;
}

TEST_F(Transaction, PutsTheFirstFamilyBackWithItsCounters) {
    ASSERT_TRUE(applyPlan(planProfile(profileOf(1, 5))).applied);
    shell(
        "iptables -P FORWARD DROP; ip6tables -P FORWARD DROP; iptables -t filter -N OTHER; "
        "iptables -A OTHER -m limit --limit 3/min -j LOG; ping -c 3 -i 0.01 127.0.0.1; "
        "ping -c 2 -i 0.01 ::1");
    const auto counted = [] { return shell("iptables -vS; ip6tables -vS"); };
    ASSERT_NE(counted().find("-c 6 "), std::string::npos) << counted();
    for (const std::string& file : wrapperFiles()) {
        for (const int second : {4, 6}) {
            const std::string before = listed();
            const std::string countedBefore = counted();
            const Wrapper wrapper(second, file, "cat >/dev/null; exit 1");
            EXPECT_NE(failureOf(planProfile(profileMostlyOf(second))), "applied");
            EXPECT_TRUE(listed() == before) << file << second << listed();
            // Programs that put rules back begin some counters at 0.
            EXPECT_TRUE(file != "/tmp/xtables-legacy-multi" || counted() == countedBefore)
                << second << counted();
        }
    }
    shell("iptables -F OTHER; iptables -X OTHER");
}

TEST(ProgramTest, GivesWhatAProgramSays) {
    // As a careless daemon starts us.
    const auto previous = signal(SIGCHLD, SIG_IGN);
    const posix::Descriptor input = memoryFile("a text\n");
    for (int round = 0; round < 2; ++round) {
        const ProgramResult result = runProgram(
            {"/bin/sh", "-c", "cat; env >&2; ls /proc/self/fd | wc -l >&2; exit 7"}, input.get());
        EXPECT_EQ(result.status, 7);
        EXPECT_EQ(result.output, "a text\n");
        EXPECT_EQ(result.error.find("HOME"), std::string::npos) << result.error;
        EXPECT_EQ(result.error.substr(result.error.size() - 2), "4\n")
            << "three streams, and the directory itself: " << result.error;
    }
    EXPECT_EQ(runProgram({"/bin/sh", "-c", "kill -9 $$"}).signal, SIGKILL);
    EXPECT_THROW((void)runProgram({"/sbin/no-such"}), Failure);
    EXPECT_THROW((void)runProgram({"/bin/sh", "-c", "cat /dev/zero"}), Failure);
    (void)signal(SIGCHLD, previous);
}

}  // namespace
}  // namespace zamofw
