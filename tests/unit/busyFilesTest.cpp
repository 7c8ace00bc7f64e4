// What other processes and threads do to the files in the middle of an operation, and files that
// cannot be opened just now.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <future>
#include <iostream>
#include <memory>

#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "tests/support/systemCalls.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/zamofirewall.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* kLockFiles = "/run/lock/firewall/";
constexpr long kLockSeconds = 30;

const std::string kFirst = std::string(test::kStore) + "1.json";
const std::string kSecond = std::string(test::kStore) + "2.json";

FW::FWPROFILE named(const std::string& name, std::size_t rules = 0) {
    FW::FWPROFILE profile;
    profile.name = name;
    profile.rules["eth0"].resize(rules);
    return profile;
}

// A process that holds the lock of a data file until it is killed.
class Holder {
  public:
    explicit Holder(const std::string& path) {
        const std::string lock = FW::getLockFile(path);
        process_ = test::startProcess([&lock] {
            const int file = open(lock.c_str(), O_RDWR);
            return lockf(file, F_TLOCK, 0) == 0 ? raise(SIGSTOP) : 1;
        });
        int status = 0;
        EXPECT_EQ(waitpid(process_, &status, WUNTRACED), process_);
        EXPECT_TRUE(WIFSTOPPED(status));
    }
    ~Holder() {
        kill(process_, SIGKILL);
        EXPECT_EQ(test::waitFor(process_), -1);
    }

  private:
    pid_t process_;
};

class SharedFiles : public testing::Test {
  protected:
    SharedFiles() {
        test::clearFiles();
        test::writeProfile("1.json", named("home"));
        test::writeProfile("2.json", named("office"));
        test::writeSettings(false, "office");
    }

    // Names in the files, "" for what is no profile.
    static Lines storedNames() {
        Lines names;
        for (const std::string& file : test::namesIn(test::kStore)) {
            names.push_back(test::json(test::readFile(test::kStore + file))["name"].asString());
        }
        return names;
    }

    FW::ZAMOFW_PROFILE profiles_;
};

// Creates, changes, reads and deletes profiles: one of its own, one that all share, and one that
// all create and delete. False when anything goes wrong, with a word about it on standard error.
bool useProfiles(const std::string& own) {
    constexpr std::size_t kRules = 20;
    FW::ZAMOFW_JSON_DB database;
    const auto did = [&own](const char* step, bool done) {
        std::cerr << (done ? "" : own + ": " + step + " failed\n");
        return done;
    };
    const auto set = [&](const std::string& name) {
        return database.profileSet(name, named(name, kRules));
    };
    const auto rulesOf = [&](const std::string& name) {
        FW::FWPROFILE profile;
        return database.profileGet(name, profile) ? profile.rules["eth0"].size() : 0;
    };
    bool done = true;
    for (int round = 0; round < 15 && done; ++round) {
        (void)database.profileCreate("fleeting");
        done = did("creating its own", database.profileCreate(own)) &&
               did("changing its own", set(own)) &&
               did("changing the fleeting one", set("fleeting")) &&
               did("changing the shared one", set("shared")) &&
               did("reading its own", rulesOf(own) == kRules) &&
               did("reading the shared one", rulesOf("shared") == kRules) &&
               did("reading the fleeting one", rulesOf("fleeting") % kRules == 0) &&
               did("deleting the fleeting one", database.profileDelete("fleeting")) &&
               did("deleting its own", database.profileDelete(own)) &&
               did("missing its own", !database.profileExist(own));
    }
    return done;
}

TEST_F(SharedFiles, StayWholeAmongProcessesAndThreadsThatLeaveNothingBehind) {
    ASSERT_TRUE(profiles_.profileCreate("shared"));
    const pid_t first = test::startProcess([] { return useProfiles("a") ? 0 : 1; });
    const pid_t second = test::startProcess([] { return useProfiles("b") ? 0 : 1; });
    auto thread = std::async(std::launch::async, useProfiles, "c");
    EXPECT_TRUE(useProfiles("d"));
    EXPECT_TRUE(thread.get());
    EXPECT_EQ(test::waitFor(first), 0);
    EXPECT_EQ(test::waitFor(second), 0);

    while (profiles_.profileExist("fleeting")) {
        ASSERT_TRUE(profiles_.profileDelete("fleeting"));
    }
    Lines names = storedNames();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Lines{"", "home", "office", "shared"}));
    EXPECT_EQ(test::namesIn(kLockFiles).size(), names.size());
}

TEST_F(SharedFiles, AreReadAndWrittenByOneThreadAtATime) {
    const auto use = [] {
        const std::string text(20000, 'x');
        bool done = true;
        for (int round = 0; round < 100 && done; ++round) {
            Json::Value value;
            done = FW::jsonFileDump(text, kFirst) && FW::jsonFileLoad(value, kFirst) &&
                   value.asString() == text;
        }
        return done;
    };
    auto first = std::async(std::launch::async, use);
    auto second = std::async(std::launch::async, use);
    EXPECT_TRUE(use());
    EXPECT_TRUE(first.get());
    EXPECT_TRUE(second.get());
}

class BusyFiles : public SharedFiles {
  protected:
    // What every look through the directory says about the locked file, and more.
    static Lines timeouts(std::size_t looks, const Lines& more = {}) {
        Lines lines;
        for (std::size_t i = 0; i < looks; ++i) {
            lines.push_back("utils: Failed to get lock timeout");
            lines.push_back("fwDB: Failed to load json from " + kFirst);
        }
        lines.insert(lines.end(), more.begin(), more.end());
        return lines;
    }

    test::SystemLog log_;
    test::SystemCalls calls_;
};

TEST_F(BusyFiles, KeepAStatusThatIsStoredDuringARenameOrAChoice) {
    calls_.beforeSync([] { test::writeSettings(true, "office"); });
    EXPECT_TRUE(profiles_.profileRename("office", "cabin"));
    EXPECT_EQ(test::json(test::readFile(test::kSettings)),
              test::json("{'profile': 'cabin', 'status': true}"));

    // Between the first look at the settings and the second.
    test::writeSettings(false, "cabin");
    calls_.beforeAccess(test::kSettings, 3, [] { test::writeSettings(true, "cabin"); });
    EXPECT_TRUE(FW::ZAMOFW().fwProfileConfigSet("home", /*reload=*/false));
    EXPECT_EQ(test::json(test::readFile(test::kSettings)),
              test::json("{'profile': 'home', 'status': true}"));
}

TEST_F(BusyFiles, KeepAProfileThatWasRenamedAfterTheLookup) {
    const auto rename = [] { test::writeProfile("1.json", named("cabin")); };
    // Once the index is made.
    calls_.beforeAccess(kFirst, 2, rename);
    FW::FWPROFILE profile;
    EXPECT_FALSE(profiles_.profileGet("home", profile));
    test::writeProfile("1.json", named("home"));
    calls_.beforeAccess(kFirst, 2, rename);
    EXPECT_FALSE(profiles_.profileRemoveServ("ssh"));
    EXPECT_EQ(storedNames(), (Lines{"cabin", "office", ""}));

    // Its file was deleted, and a new profile got the same one.
    test::writeProfile("1.json", named("home"));
    calls_.beforeAccess("/var/lock/firewall/", 5, rename);
    EXPECT_TRUE(profiles_.profileDelete("home"));
    EXPECT_EQ(storedNames(), (Lines{"cabin", "office", ""}));

    // Between reading all of them and writing the second.
    calls_.beforeSync([] { test::writeProfile("2.json", named("desk")); });
    EXPECT_FALSE(profiles_.profileRemoveServ("ssh"));
    EXPECT_EQ(storedNames(), (Lines{"cabin", "desk", ""}));
}

TEST_F(BusyFiles, AreNotTakenForMissingProfiles) {
    const Holder holder(kFirst);
    EXPECT_FALSE(profiles_.profileSet("home", named("home")));
    EXPECT_EQ(log_.take(), timeouts(1, {"fwDB: Failed to profileDbDump()"}));
    EXPECT_FALSE(profiles_.profileCreate("new"));
    EXPECT_FALSE(profiles_.profileDbDump("home", test::json("{'name': 'home'}")));
    EXPECT_FALSE(profiles_.profileRename("office", "home"));
    EXPECT_TRUE(profiles_.profileSet("office", named("office")));
    EXPECT_EQ(storedNames(), (Lines{"home", "office", ""}));
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
    EXPECT_EQ(log_.take(),
              timeouts(3, {"fwDB: Failed to profileDbDump()", "fwDB: Failed to profileSet",
                           "zamoFW: failed to profileCreate()"}));
    EXPECT_LE(calls_.takeSleep(), kLockSeconds);
}

TEST_F(BusyFiles, LoseTheirLockFileWithThemUnlessAnotherProcessHoldsIt) {
    std::unique_ptr<Holder> holder;
    // After the three files have been looked into.
    calls_.beforeAccess("/var/lock/firewall/", 4,
                        [&] { holder = std::make_unique<Holder>(kFirst); });
    FW::ZAMOFW_JSON_DB database;
    EXPECT_TRUE(database.profileDbRemove("home"));
    EXPECT_EQ(calls_.takeSleep(), kLockSeconds);
    EXPECT_FALSE(test::exists(kFirst));
    EXPECT_TRUE(database.profileDbRemove("nobody"));
    EXPECT_TRUE(database.profileDbRemove("office"));
    EXPECT_EQ(log_.take(), Lines{});

    Json::Value value;
    test::writeFile(kSecond, "{}");
    calls_.beforeAccess("/var/lock/firewall/", 1, [] { unlink(kSecond.c_str()); });
    EXPECT_FALSE(FW::jsonFileLoad(value, kSecond));
    EXPECT_EQ(log_.take(), Lines{"utils: Failed to open json file " + kSecond});
    EXPECT_FALSE(FW::jsonFileDump(value, kSecond + "/no/directory.json"));
    EXPECT_EQ(test::namesIn(kLockFiles), (Lines{"1.json.lock", "firewall_settings.json.lock"}));
}

TEST_F(BusyFiles, AreNotTakenForMissingWithoutADescriptor) {
    test::writeProfile("2.json", named("home"));
    unlink(kFirst.c_str());
    syslog(LOG_ERR, "utils:1 the log is open now");
    const auto setAndCreateFail = [this] {
        const int lowest = dup(0);
        close(lowest);
        (void)FW::getLockFile(kSecond);
        // One descriptor is left: for the lock, but not for the file.
        const auto limit = static_cast<rlim_t>(lowest) + 1;
        const rlimit descriptors = {limit, limit};
        return setrlimit(RLIMIT_NOFILE, &descriptors) == 0 &&
               !profiles_.profileSet("home", named("home")) && !profiles_.profileCreate("new");
    };
    EXPECT_EQ(test::inChild([&] { return setAndCreateFail() ? 0 : 1; }), 0);
    EXPECT_EQ(storedNames(), (Lines{"home", ""}));
    EXPECT_FALSE(test::exists("/tmp/2.json.lock")) << "lock files stay where they are";
}

TEST_F(BusyFiles, DoNotMakeACreationSpinWhenNoneCanBeRead) {
    test::writeFile(kFirst, "{");
    test::writeFile(kSecond, "{");
    EXPECT_FALSE(profiles_.profileCreate("new"));
    unlink(test::kSettings);
    EXPECT_FALSE(profiles_.profileCreate("new"));
    unlink(kFirst.c_str());
    unlink(kSecond.c_str());
    test::writeFile(test::kSettings, "{");
    EXPECT_FALSE(profiles_.profileCreate("new"));
}

}  // namespace
