#include <chrono>
#include <memory>
#include <random>
#include <thread>

#include "tests/platform/host.h"

namespace {

// Set: every look at a path may take a while, so that processes come between each other's steps.
std::unique_ptr<std::minstd_rand> slowLookUps;

}  // namespace

extern "C" __attribute__((visibility("default"))) int lstat(const char* path,
                                                            struct stat* properties) noexcept {
    const int result = fstatat(AT_FDCWD, path, properties, AT_SYMLINK_NOFOLLOW);
    if (slowLookUps != nullptr) {
        usleep((*slowLookUps)() % 2000);
    }
    return result;
}

namespace {

constexpr const char* kLock = "/tmp/locks/lock";

class FileLock : public testing::Test {
  protected:
    static int lock(int exclusive, int seconds) {
        int fd = -1;
        const bool locked = VLIBCFileLockTimeByFile(kLock, exclusive, seconds, &fd) == 1;
        EXPECT_TRUE(locked ? fd >= 0 : fd == -1 && errno == ETIMEDOUT);
        return fd;
    }
    // Whether another process gets the lock at once.
    static bool isFree(int exclusive) {
        return inChild([exclusive] { return lock(exclusive, 0) < 0; }) == 0;
    }

    const Directory place_{"/tmp/locks"};
};

TEST_F(FileLock, ExcludesOtherProcessesUntilItIsReleased) {
    for (const int held : {0, 1}) {
        const int fd = lock(held, 0);
        close(open(kLock, O_RDWR));  // would drop a record lock of the whole process
        EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
        EXPECT_EQ(isFree(0), held == 0) << held;
        EXPECT_FALSE(isFree(1)) << held;
        EXPECT_NE(VLIBCFileUnlockByFile(fd), 0);
        EXPECT_EQ(fcntl(fd, F_GETFD), -1) << "closed";
        EXPECT_TRUE(isFree(1)) << held;
    }
    EXPECT_EQ(VLIBCFileUnlockByFile(-1), 0);
}

TEST_F(FileLock, WaitsForTheHolderButNotLonger) {
    const int first = lock(1, 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(lock(0, 1), -1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));

    std::thread release([first] { VLIBCFileUnlockByFile(first); });
    const int second = lock(1, 60);
    EXPECT_GE(second, 0);
    release.join();
    VLIBCFileUnlockByFile(second);
}

TEST_F(FileLock, HoldsTheFileThatThePathNames) {
    const auto hasTwoOpen = [] {
        return shell("ls -l /proc/$PPID/fd | grep -c ' /tmp/locks/lock$'; :") == "2\n";
    };
    const int first = lock(1, 0);
    int third = -1;
    std::thread waiting([&third] { third = lock(1, 60); });
    EXPECT_TRUE(eventually(hasTwoOpen));
    ASSERT_EQ(unlink(kLock), 0);
    const int second = lock(1, 0);
    VLIBCFileUnlockByFile(first);
    EXPECT_TRUE(eventually(hasTwoOpen)) << "the waiting one takes the new file";
    VLIBCFileUnlockByFile(second);
    waiting.join();
    EXPECT_FALSE(isFree(0));
    VLIBCFileUnlockByFile(third);
}

TEST_F(FileLock, TakesNothingButARegularFile) {
    shell("cd /tmp/locks; : >target; ln -s target link; ln -s nothing dangling; mkfifo fifo");
    for (const char* name : {"link", "dangling", "fifo", ".", "missing/lock"}) {
        for (const int exclusive : {0, 1}) {
            int fd = -7;
            errno = ETIMEDOUT;
            EXPECT_EQ(VLIBCFileLockTimeByFile((place_ / name).c_str(), exclusive, 0, &fd), 0);
            EXPECT_NE(errno, ETIMEDOUT) << name;
            EXPECT_EQ(fd, -7) << name;
        }
    }
    EXPECT_EQ(VLIBCFileExist((place_ / "nothing").c_str()), 0);
}

// Other users' ways to hold a lock, or to keep its file's name from us.
TEST_F(FileLock, CannotBeHeldOrBlockedByOtherUsers) {
    shell("chmod 1777 /tmp/locks");
    std::vector<std::string> plants = {":",
                                       ": >lock; chmod 666 lock",
                                       "mkfifo lock",
                                       "mkdir lock",
                                       "mkdir -p lock/full",
                                       "ln -s target lock",
                                       ": >lock.hard; ln lock.hard lock"};
    if (canChangeOwners()) {
        plants.insert(plants.end(), {": >lock; chown 4711 lock", "mkdir lock; chown 4711 lock",
                                     "mkfifo lock; chown 4711 lock"});
    }
    for (const std::string& plant : plants) {
        for (const int exclusive : {0, 1}) {
            shell("cd /tmp/locks; rm -rf lock*; " + plant);
            const int fd = lock(exclusive, 0);
            EXPECT_EQ(isFree(0), exclusive == 0) << plant;
            EXPECT_FALSE(isFree(1)) << plant;
            VLIBCFileUnlockByFile(fd);
            EXPECT_EQ(shell("stat -c '%u %a %h %F' /tmp/locks/lock"),
                      "0 600 1 regular empty file\n")
                << plant;
        }
    }
    EXPECT_EQ(shell("ls /tmp/locks | sed '/^lock/d'"), "") << "no link was followed";
}

TEST_F(FileLock, ReplacesAFileThatAnotherUserHolds) {
    if (!canChangeOwners()) {
        GTEST_SKIP() << "this root has no other users";
    }
    shell("chmod 1777 /tmp/locks");
    for (unsigned round = 0; round < 40; ++round) {
        unlink(kLock);
        const int foreign = open(kLock, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        struct flock all = {};
        all.l_type = F_WRLCK;
        ASSERT_TRUE(fcntl(foreign, F_OFD_SETLK, &all) == 0 && fchown(foreign, 4711, 4711) == 0);
        // Several of us find it at the same time, and only one at a time may have the lock.
        std::vector<pid_t> processes;
        for (unsigned i = 0; i < 4; ++i) {
            processes.push_back(startProcess([&] {
                slowLookUps = std::make_unique<std::minstd_rand>(round * 4 + i + 1);
                const int fd = lock(1, 60);
                const bool isAlone = mkdir("/tmp/locks/held", 0700) == 0 && usleep(1000) == 0 &&
                                     rmdir("/tmp/locks/held") == 0;
                return fd >= 0 && isAlone && VLIBCFileUnlockByFile(fd) != 0 ? 0 : 1;
            }));
        }
        for (const pid_t process : processes) {
            EXPECT_EQ(waitFor(process), 0);
        }
        close(foreign);
    }
    EXPECT_EQ(namesIn("/tmp/locks"), std::vector<std::string>{"lock"});
    // Another user may not replace root's file, and must not wait for it.
    const auto isRefused = [] {
        int fd = -1;
        return setuid(4712) == 0 && VLIBCFileLockTimeByFile(kLock, 1, 60, &fd) == 0 &&
               errno == EACCES;
    };
    EXPECT_EQ(inChild(isRefused), 1);
}

}  // namespace
