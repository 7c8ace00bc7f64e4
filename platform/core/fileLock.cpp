#include <zamo/core.h>

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <exception>
#include <thread>
#include <utility>

#include "platform/base/export.h"
#include "platform/core/lockFile.h"
#include "posix/descriptor.h"
#include "posix/file.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kRetryInterval(1);

enum class LockResult { kLocked, kTimedOut, kReplaced, kFailed };

LockResult waitForLock(int fd, short type, Clock::time_point deadline) {
    while (!zamo::setLock(fd, type)) {
        if (errno != EAGAIN && errno != EACCES) {
            return LockResult::kFailed;
        }
        if (Clock::now() >= deadline) {
            return LockResult::kTimedOut;
        }
        std::this_thread::sleep_for(kRetryInterval);
    }
    return LockResult::kLocked;
}

LockResult lockOnce(const char* path,
                    bool exclusive,
                    Clock::time_point deadline,
                    posix::Descriptor& result) {
    zamo::LockFile file = zamo::openLockFile(path, exclusive);
    if (!file.fd) {
        return LockResult::kFailed;
    }
    if (!file.isLocked || !exclusive) {
        const short type = exclusive ? F_WRLCK : F_RDLCK;
        const LockResult waited = waitForLock(file.fd.get(), type, deadline);
        if (waited != LockResult::kLocked) {
            return waited;
        }
    }
    // If the file was deleted while we waited, the next process would lock a new one.
    if (!posix::isFileAt(file.fd.get(), path)) {
        return Clock::now() >= deadline ? LockResult::kTimedOut : LockResult::kReplaced;
    }
    result = std::move(file.fd);
    return LockResult::kLocked;
}

}  // namespace

ZAMO_EXPORT int VLIBCFileLockTimeByFile(const char* path, int exclusive, int seconds, int* fd) try {
    if (path == nullptr || fd == nullptr) {
        errno = EINVAL;
        return 0;
    }
    const auto deadline = Clock::now() + std::chrono::seconds(seconds);
    posix::Descriptor locked;
    LockResult result = LockResult::kReplaced;
    while (result == LockResult::kReplaced) {
        result = lockOnce(path, exclusive != 0, deadline, locked);
    }
    if (result == LockResult::kTimedOut) {
        errno = ETIMEDOUT;
    }
    if (!locked) {
        return 0;
    }
    *fd = locked.release();
    return 1;
} catch (const std::exception&) {
    errno = ENOMEM;
    return 0;
}

ZAMO_EXPORT int VLIBCFileUnlockByFile(int fd) {
    const bool unlocked = zamo::setLock(fd, F_UNLCK);
    const posix::Descriptor closed(fd);
    return unlocked ? 1 : 0;
}
