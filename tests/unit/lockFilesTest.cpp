// Lock files in places where other users may have been first.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "zamofirewall/lockedJson.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kLocks = "/run/lock/firewall";
constexpr const char* kLock = "/run/lock/firewall/a.json.lock";
constexpr uid_t kSomebody = 1234;

struct stat statusOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

mode_t modeOf(const std::string& path) { return statusOf(path).st_mode & 07777U; }

class LockFiles : public testing::Test {
  protected:
    LockFiles() { test::clearFiles(); }

    // Neither the directory nor what is in it may be used by others.
    void expectSafeLock() {
        EXPECT_TRUE(FW::jsonFileDump(1, path_));
        EXPECT_TRUE(S_ISDIR(statusOf(kLocks).st_mode));
        EXPECT_EQ(modeOf(kLocks) & 07U, 0U);
        EXPECT_EQ(statusOf(kLocks).st_uid, 0U);
        EXPECT_TRUE(S_ISREG(statusOf(kLock).st_mode));
        EXPECT_EQ(modeOf(kLock), 0600U);
        EXPECT_EQ(statusOf(kLock).st_uid, 0U);
        EXPECT_FALSE(test::exists("/tmp/a.json.lock"));
    }

    const std::string path_ = std::string(test::kStore) + "a.json";
};

TEST_F(LockFiles, AreInADirectoryThatOthersCannotWrite) {
    expectSafeLock();
    chmod(kLocks, 0777);
    expectSafeLock();

    fs::remove_all(kLocks);
    fs::create_directory("/run/lock/elsewhere");
    fs::create_directory_symlink("/run/lock/elsewhere", kLocks);
    expectSafeLock();
    EXPECT_TRUE(fs::is_empty("/run/lock/elsewhere"));

    if (test::canChangeOwners()) {
        fs::remove_all(kLocks);
        fs::create_directory(kLocks);
        ASSERT_EQ(chown(kLocks, kSomebody, kSomebody), 0);
        expectSafeLock();
    }
}

TEST_F(LockFiles, AreReplacedWhenTheyMayBeAnothersAndPrivate) {
    expectSafeLock();
    chmod(kLock, 0666);
    expectSafeLock();

    const std::string target = "/run/lock/target";
    test::writeFile(target, "keep", 0640);
    fs::remove(kLock);
    fs::create_symlink(target, kLock);
    expectSafeLock();
    fs::remove(kLock);
    fs::create_hard_link(target, kLock);
    expectSafeLock();
    EXPECT_EQ(modeOf(target), 0640U);
    EXPECT_EQ(test::readFile(target), "keep");

    fs::remove(kLock);
    ASSERT_EQ(mkfifo(kLock, 0600), 0);
    EXPECT_EQ(FW::getLockFile(path_), "/var/lock/firewall/a.json.lock");
    EXPECT_EQ(modeOf(kLock), 0600U);
    EXPECT_TRUE(S_ISREG(statusOf(kLock).st_mode));

    if (test::canChangeOwners()) {
        ASSERT_EQ(chown(kLock, kSomebody, kSomebody), 0);
        expectSafeLock();
    }
}

}  // namespace
