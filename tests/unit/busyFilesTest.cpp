// Files that cannot be used just now: locked by another process, or no descriptor is left.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <syslog.h>
#include <unistd.h>

#include <csignal>
#include <memory>

#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "tests/support/systemCalls.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/zamofirewall.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* kLocks = "/run/lock/firewall/";
constexpr long kLockSeconds = 30;

const std::string kFirst = std::string(test::kStore) + "1.json";
const std::string kSecond = std::string(test::kStore) + "2.json";

FW::FWPROFILE named(const std::string& name) {
    FW::FWPROFILE profile;
    profile.name = name;
    return profile;
}

// A process that holds the lock of a data file.
class Holder {
  public:
    explicit Holder(const std::string& path) {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        process_ = test::startProcess([&] {
            const int lock = open(FW::getLockFile(path).c_str(), O_RDWR);
            struct flock whole = {};
            whole.l_type = F_WRLCK;
            const bool locked = fcntl(lock, F_SETLK, &whole) == 0;
            (void)!write(ready[1], locked ? "y" : "n", 1);
            pause();
            return 0;
        });
        char answer = 0;
        EXPECT_EQ(read(ready[0], &answer, 1), 1);
        EXPECT_EQ(answer, 'y');
        close(ready[0]);
        close(ready[1]);
    }
    ~Holder() {
        kill(process_, SIGKILL);
        EXPECT_EQ(test::waitFor(process_), -1);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

  private:
    pid_t process_;
};

class BusyFiles : public testing::Test {
  protected:
    BusyFiles() {
        test::clearFiles();
        test::writeProfile("1.json", named("home"));
        test::writeProfile("2.json", named("office"));
        test::writeSettings(false, "office");
    }

    // What every look through the directory says about the locked file.
    Lines timeouts(std::size_t looks) {
        Lines lines;
        for (std::size_t i = 0; i < looks; ++i) {
            lines.push_back("utils: Failed to get lock timeout");
            lines.push_back("fwDB: Failed to load json from " + kFirst);
        }
        return lines;
    }

    FW::ZAMOFW_PROFILE profiles_;
    test::SystemLog log_;
    test::SystemCalls calls_;
};

TEST_F(BusyFiles, AreNotTakenForMissingProfiles) {
    const Lines before = test::namesIn(test::kStore);
    const Holder holder(kFirst);
    EXPECT_FALSE(profiles_.profileSet("home", named("home")));
    EXPECT_EQ(log_.take(),
              (Lines{timeouts(1)[0], timeouts(1)[1], "fwDB: Failed to profileDbDump()"}));
    EXPECT_FALSE(profiles_.profileCreate("new"));
    EXPECT_FALSE(profiles_.profileDbDump("home", test::json("{'name': 'home'}")));
    EXPECT_FALSE(profiles_.profileRename("office", "home"));
    EXPECT_TRUE(profiles_.profileSet("office", named("office")));
    EXPECT_EQ(test::namesIn(test::kStore), before);
    EXPECT_EQ(test::json(test::readFile(kSecond))["name"], "office");
}

TEST_F(BusyFiles, AreWaitedForOncePerOperation) {
    const Holder holder(kFirst);
    FW::FWPROFILE profile;
    EXPECT_TRUE(profiles_.profileGet("office", profile));
    EXPECT_EQ(log_.take(), timeouts(2));
    EXPECT_LE(calls_.takeSleep(), kLockSeconds);

    test::writeProfile("3.json", named("third"));
    EXPECT_TRUE(profiles_.profileRemoveServ("ssh"));
    EXPECT_EQ(log_.take(), timeouts(1 + 2 * 2 + 2 * 2));
    EXPECT_LE(calls_.takeSleep(), kLockSeconds);

    // The copy may be in the locked file.
    EXPECT_FALSE(profiles_.CreateTestProfile("office", profile));
    Lines lines = timeouts(3);
    lines.insert(lines.end(), {"fwDB: Failed to profileDbDump()", "fwDB: Failed to profileSet",
                               "zamoFW: failed to profileCreate()"});
    EXPECT_EQ(log_.take(), lines);
    EXPECT_LE(calls_.takeSleep(), kLockSeconds);
}

// What happens before the given use of a lock, the first one being number 1.
void beforeLock(test::SystemCalls& calls, int number, const std::function<void()>& action) {
    calls.onAccess = [&calls, number, action, used = 0](const std::string& path) mutable {
        if (path == "/var/lock/firewall/" && ++used == number) {
            calls.onAccess = nullptr;
            action();
        }
    };
}

TEST_F(BusyFiles, AreDeletedWithoutTheLockThatAnotherProcessHolds) {
    std::unique_ptr<Holder> holder;
    // After the three files have been looked into.
    beforeLock(calls_, 4, [&] { holder = std::make_unique<Holder>(kFirst); });
    EXPECT_TRUE(FW::ZAMOFW_JSON_DB().profileDbRemove("home"));
    EXPECT_EQ(calls_.takeSleep(), kLockSeconds);
    EXPECT_FALSE(test::exists(kFirst));
    EXPECT_EQ(test::namesIn(kLocks),
              (Lines{"1.json.lock", "2.json.lock", "firewall_settings.json.lock"}));
    EXPECT_EQ(log_.take(), Lines{});
}

TEST_F(BusyFiles, LeaveNoLockFileWhenTheyAreGone) {
    EXPECT_TRUE(FW::ZAMOFW_JSON_DB().profileDbRemove("nobody"));
    EXPECT_TRUE(FW::ZAMOFW_JSON_DB().profileDbRemove("office"));
    const Lines locks = {"1.json.lock", "firewall_settings.json.lock"};
    EXPECT_EQ(test::namesIn(kLocks), locks);

    Json::Value value;
    const std::string path = std::string(test::kStore) + "9.json";
    test::writeFile(path, "{}");
    beforeLock(calls_, 1, [&] { unlink(path.c_str()); });
    EXPECT_FALSE(FW::jsonFileLoad(value, path));
    EXPECT_EQ(log_.take(), Lines{"utils: Failed to open json file " + path});
    EXPECT_FALSE(FW::jsonFileDump(value, path + "/no/directory.json"));
    EXPECT_EQ(test::namesIn(kLocks), locks);
}

TEST_F(BusyFiles, AreNotTakenForMissingWithoutADescriptor) {
    test::writeProfile("2.json", named("home"));
    unlink(kFirst.c_str());
    syslog(LOG_ERR, "utils:1 the log is open now");
    (void)log_.take();
    EXPECT_EQ(test::inChild([&] {
                  const int lowest = dup(0);
                  close(lowest);
                  (void)FW::getLockFile(kSecond);
                  // One descriptor is left: for the lock, but not for the file.
                  const auto limit = static_cast<rlim_t>(lowest + 1);
                  const rlimit descriptors = {limit, limit};
                  return setrlimit(RLIMIT_NOFILE, &descriptors) == 0 &&
                                 !profiles_.profileSet("home", named("home")) &&
                                 !profiles_.profileCreate("new")
                             ? 0
                             : 1;
              }),
              0);
    EXPECT_EQ(test::namesIn(test::kStore), (Lines{"2.json", "firewall_settings.json"}));
    EXPECT_FALSE(test::exists("/tmp/2.json.lock")) << "lock files stay where they are";
}

TEST_F(BusyFiles, DoNotMakeACreationSpin) {
    const auto creationFails = [this] {
        return test::inChild([this] { return profiles_.profileCreate("new") ? 1 : 0; }) == 0;
    };
    test::writeFile(kFirst, "{");
    test::writeFile(kSecond, "{");
    EXPECT_TRUE(creationFails());
    unlink(test::kSettings);
    EXPECT_TRUE(creationFails());
    unlink(kFirst.c_str());
    unlink(kSecond.c_str());
    test::writeFile(test::kSettings, "{");
    EXPECT_TRUE(creationFails());
}

}  // namespace
