#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zamo/core.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "tests/support/files.h"
#include "tests/support/processes.h"

namespace {

using namespace test;

constexpr const char* kLock = "/tmp/locks/lock";

class FileLock : public testing::Test {
  protected:
    static int lock(int exclusive, int seconds) {
        int fd = -1;
        const int result = VLIBCFileLockTimeByFile(kLock, exclusive, seconds, &fd);
        EXPECT_EQ(result == 1, fd >= 0);
        EXPECT_TRUE(result == 1 || errno == ETIMEDOUT);
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
        EXPECT_NE(0, fcntl(fd, F_GETFD) & FD_CLOEXEC);
        EXPECT_EQ(held == 0, isFree(0)) << held;
        EXPECT_FALSE(isFree(1)) << held;
        EXPECT_NE(0, VLIBCFileUnlockByFile(fd));
        EXPECT_EQ(-1, fcntl(fd, F_GETFD)) << "closed";
        EXPECT_TRUE(isFree(1)) << held;
    }
    EXPECT_EQ(0, VLIBCFileUnlockByFile(-1));
}

TEST_F(FileLock, WaitsForTheHolderButNotLonger) {
    const int first = lock(1, 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(-1, lock(0, 1));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));

    std::thread release([first] { VLIBCFileUnlockByFile(first); });
    const int second = lock(1, 60);
    EXPECT_LE(0, second);
    release.join();
    VLIBCFileUnlockByFile(second);
}

TEST_F(FileLock, HoldsTheFileThatThePathNames) {
    const auto hasTwoOpen = [] {
        return system("[ $(ls -l /proc/$PPID/fd | grep -c ' /tmp/locks/lock$') = 2 ]") == 0;
    };
    const int first = lock(1, 0);
    int third = -1;
    std::thread waiting([&third] { third = lock(1, 60); });
    EXPECT_TRUE(eventually(hasTwoOpen));
    ASSERT_EQ(0, unlink(kLock));
    const int second = lock(1, 0);
    VLIBCFileUnlockByFile(first);
    EXPECT_TRUE(eventually(hasTwoOpen)) << "the waiting one takes the new file";
    VLIBCFileUnlockByFile(second);
    waiting.join();
    EXPECT_LE(0, third);
    EXPECT_FALSE(isFree(0));
    VLIBCFileUnlockByFile(third);
}

TEST_F(FileLock, TakesNothingButARegularFile) {
    shell(
        "cd /tmp/locks; : >target; ln -s target link; ln -s nothing dangling; mkfifo fifo; mkdir dir");
    for (const char* name : {"link", "dangling", "fifo", "dir", "missing/lock"}) {
        for (const int exclusive : {0, 1}) {
            int fd = -7;
            errno = ETIMEDOUT;
            EXPECT_EQ(0, VLIBCFileLockTimeByFile((place_ / name).c_str(), exclusive, 0, &fd))
                << name;
            EXPECT_NE(ETIMEDOUT, errno) << name;
            EXPECT_EQ(-7, fd) << name;
        }
    }
    EXPECT_EQ(0, VLIBCFileExist((place_ / "nothing").c_str()));
}

}  // namespace
