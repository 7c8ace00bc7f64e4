// Eight processes use the firewall at the same time, as long as SOAK_SECONDS says: they read,
// write, rename and delete profiles, reload, try, query and kill each other's helpers in the
// middle.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/file.h>
#include <unistd.h>
#include <zamo/core.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <random>
#include <regex>
#include <sstream>

#include "library/model/names.h"
#include "posix/descriptor.h"
#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "zamofirewall/zamofirewall.h"

namespace {

using Clock = std::chrono::steady_clock;
using Ports = std::vector<int>;

constexpr int kProcesses = 8;
constexpr std::size_t kRules = 12;
constexpr const char* kProgram = PROGRAM;
// A call waits for one lock for 30 seconds at most, and for few of them.
constexpr unsigned kMostSecondsOfACall = 150;
constexpr std::size_t kMostGrowth = 256U << 10U;

int seconds() {
    const char* const given = std::getenv("SOAK_SECONDS");
    return given == nullptr ? 60 : std::atoi(given);
}

// All rules say the same generation, so that a profile that is put together from two shows.
FW::FWPROFILE profileOf(const std::string& name, int generation) {
    FW::FWPROFILE profile;
    profile.name = name;
    for (std::size_t i = 0; i < kRules; ++i) {
        FW::FWRULE rule = test::portRule(FW::FW_POLICY_ALLOW,
                                         {std::to_string(generation * 100 + static_cast<int>(i))});
        rule.ipType = FW::FW_IP_TYPE_BOTH;
        rule.name = std::to_string(generation);
        profile.rules["eth0"].push_back(rule);
    }
    profile.adapterPolicyMap["eth0"] = FW::FW_POLICY_DENY;
    return profile;
}

bool isWhole(const FW::FWPROFILE& profile) {
    const auto rules = profile.rules.find("eth0");
    if (rules == profile.rules.end() || rules->second.size() != kRules) {
        return false;
    }
    const std::vector<FW::FWRULE>& all = rules->second;
    return std::all_of(all.begin(), all.end(),
                       [&](const FW::FWRULE& rule) { return rule.name == all[0].name; });
}

// The destination ports that the lines of a family name, in their order.
Ports portsInForce(const std::string& listed) {
    static const std::regex form("--dport (\\d+)");
    Ports ports;
    for (std::sregex_iterator match(listed.begin(), listed.end(), form), end; match != end;
         ++match) {
        ports.push_back(std::stoi((*match)[1]));
    }
    return ports;
}

std::string listed(int family) {
    return test::shell(family == 4 ? "/sbin/iptables -w 20 -S" : "/sbin/ip6tables -w 20 -S");
}

std::string join(const Ports& ports) {
    std::ostringstream text;
    for (const int port : ports) {
        text << port << " ";
    }
    return text.str();
}

// One of the eight.
class User {
  public:
    User(unsigned number, const std::vector<Ports>& expected)
        : random_(number),
          own_("own" + std::to_string(number)),
          number_(number),
          expected_(expected) {}

    // The number of faults, each of which is on standard error.
    int run(Clock::time_point end) {
        need("making its own", profiles_.profileCreate(own_) && write(own_));
        std::size_t descriptors = 0;
        std::size_t memory = 0;
        int rounds = 0;
        const Clock::time_point half = Clock::now() + (end - Clock::now()) / 2;
        while (Clock::now() < end && faults_ == 0) {
            act();
            ++rounds;
            if (descriptors == 0 && Clock::now() > half) {
                descriptors = openDescriptors();
                memory = mallinfo2().uordblks;
            }
        }
        (void)alarm(kMostSecondsOfACall);
        need("reading its own at the end", reads(own_));
        if (faults_ > 0) {
            return faults_;
        }
        need("keeping no descriptor open", openDescriptors() <= descriptors);
        need("giving memory back", mallinfo2().uordblks < memory + kMostGrowth);
        std::cout << "user " << number_ << ": " << rounds << " calls\n" << std::flush;
        return faults_;
    }

  private:
    void act() {
        using Action = void (User::*)();
        static constexpr Action kActions[] = {
            &User::readOwn,       &User::writeShared, &User::readShared,  &User::rename,
            &User::deleteAndMake, &User::query,       &User::reload,      &User::reloadByProgram,
            &User::choose,        &User::tryOne,      &User::killAHolder, &User::killAWriter,
            &User::killAReload,   &User::lookAtKernel};
        // A call that hangs ends this process.
        (void)alarm(kMostSecondsOfACall);
        (this->*kActions[random_() % std::size(kActions)])();
    }

    void need(const std::string& what, bool done) {
        if (!done) {
            std::cerr << "user " + std::to_string(number_) + ": " + what + " failed\n";
            ++faults_;
        }
    }

    bool write(const std::string& name) {
        return profiles_.profileSet(name, profileOf(name, 30 + static_cast<int>(random_() % 60)));
    }
    bool reads(const std::string& name) {
        FW::FWPROFILE profile;
        return profiles_.profileGet(name, profile) && isWhole(profile);
    }

    void readOwn() {
        need("reading its own", reads(own_));
        need("writing its own", write(own_));
    }
    void writeShared() { need("writing the shared one", write("shared")); }
    void readShared() { need("reading the shared one", reads("shared")); }
    void rename() {
        const std::string other = own_ + "b";
        need("renaming its own", profiles_.profileRename(own_, other));
        need("reading the renamed one", reads(other));
        need("renaming it back", profiles_.profileRename(other, own_));
    }
    // Everybody does this, so that it may be there already or gone.
    void deleteAndMake() {
        (void)profiles_.profileCreate("fleeting");
        need("setting the fleeting one", write("fleeting"));
        need("deleting the fleeting one", profiles_.profileDelete("fleeting"));
    }
    // The profiles in force let these ports in, whichever of the two it is.
    void query() {
        std::map<std::string, FW::FW_POLICY> result;
        FW::PortCompareST port;
        port.port = "7";
        need("asking for a port", FW::ZAMOFW().fwPortIsBlocked(port, "eth0", result) &&
                                      result["eth0"] == FW::FW_POLICY_DENY);
        need("the program's status", program("--json status") == 0);
    }
    void reload() { need("the library's reload", FW::ZAMOFW().fwReload(true)); }
    void reloadByProgram() { need("the program's reload", program("reload") == 0); }
    void choose() {
        const std::string name = random_() % 2 == 0 ? "one" : "two";
        need("choosing " + name, FW::ZAMOFW().fwProfileConfigSet(name, /*reload=*/true));
    }
    // Of two trials, the second is refused.
    void tryOne() {
        const int status = program(random_() % 2 == 0 ? "try one --allow-lockout --seconds 1"
                                                      : "try two --allow-lockout --seconds 1");
        need("a trial", status == 0 || status == 1);
        const int end = program("revert");
        need("taking a trial back", end == 0 || end == 1);
    }
    void killAHolder() {
        killed([] {
            const posix::Descriptor lock =
                posix::openFile("/var/lock/firewall/1.json.lock", O_RDWR | O_CREAT, 0600);
            int descriptor = -1;
            (void)VLIBCFileLockTimeByFile(FW::kExecutionLockFile, 1, 30, &descriptor);
            (void)lockf(lock.get(), F_LOCK, 0);
            return pause();
        });
    }
    void killAWriter() {
        killed([this] {
            while (write("victim")) {
            }
            return 1;
        });
        need("reading what a killed process wrote", reads("victim"));
    }
    // It may have begun, and may go on to its end without the process that was killed.
    void killAReload() {
        killed([] { return execl(kProgram, kProgram, "--quiet", "reload", nullptr); });
    }

    void killed(const std::function<int()>& work) {
        const pid_t process = test::startProcess(work);
        (void)usleep(static_cast<useconds_t>(random_() % 60000));
        (void)kill(process, SIGKILL);
        (void)test::waitFor(process);
    }

    // Between two reloads the kernel has all rules of one profile and none of another.
    void lookAtKernel() {
        int descriptor = -1;
        if (VLIBCFileLockTimeByFile(FW::kExecutionLockFile, 1, 60, &descriptor) != 1) {
            need("waiting for the execution lock", false);
            return;
        }
        for (const int family : {4, 6}) {
            const std::string text = listed(family);
            const Ports ports = portsInForce(text);
            const bool isOneProfile =
                std::find(expected_.begin(), expected_.end(), ports) != expected_.end();
            need("rules of one profile: " + join(ports), isOneProfile);
            need("open policies without guards: " + text,
                 text.find(" DROP\n-P") == std::string::npos &&
                     text.find("-A FIREWALL_RELOADING") == std::string::npos);
        }
        (void)VLIBCFileUnlockByFile(descriptor);
    }

    static int program(const std::string& words) {
        const std::string command =
            std::string(kProgram) + " --yes --quiet " + words + " >/dev/null 2>>/tmp/soak.said";
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    static std::size_t openDescriptors() {
        const std::filesystem::directory_iterator begin("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin, {}));
    }

    std::mt19937 random_;
    FW::ZAMOFW_PROFILE profiles_;
    std::string own_;
    unsigned number_;
    const std::vector<Ports>& expected_;
    int faults_ = 0;
};

TEST(Soak, NothingIsTornLostMixedOrLeaked) {
    test::shell(
        "ip link add eth0 type veth peer name peer0; ip link set eth0 up; ip link set peer0 up; "
        "ip addr add 10.1.0.1/24 dev eth0; /usr/zamo/sbin/zamofw-chains; rm -f /usr/zamo/etc/"
        "firewall.d/*");
    int file = 0;
    for (const auto& [name, generation] :
         {std::pair("one", 10), {"two", 20}, {"shared", 30}, {"victim", 40}}) {
        test::writeProfile(std::to_string(++file) + ".json", profileOf(name, generation));
    }
    std::vector<Ports> expected;
    for (const char* const name : {"two", "one"}) {
        test::writeSettings(true, name);
        ASSERT_TRUE(FW::ZAMOFW().fwReload(true));
        for (const int family : {4, 6}) {
            expected.push_back(portsInForce(listed(family)));
            ASSERT_GE(expected.back().size(), kRules);
        }
    }
    ASSERT_NE(expected[0], expected[2]);

    std::vector<pid_t> users;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds());
    for (unsigned number = 1; number <= kProcesses; ++number) {
        users.push_back(test::startProcess([&] { return User(number, expected).run(end); }));
    }
    for (const pid_t user : users) {
        EXPECT_EQ(test::waitFor(user), 0) << test::readFile("/tmp/soak.said");
    }

    std::vector<std::string> names;
    ASSERT_TRUE(FW::ZAMOFW_PROFILE().profileEnum(names));
    std::sort(names.begin(), names.end());
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const std::string& name) { return name == "fleeting"; }),
                names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"one", "own1", "own2", "own3", "own4", "own5",
                                               "own6", "own7", "own8", "shared", "two", "victim"}));
    const std::string program = std::string(kProgram) + " --quiet ";
    test::shell("sleep 2; " + program + "reload && " + program + "verify && (" + program +
                "doctor --repair || " + program + "doctor)");
}

}  // namespace
