#include <zamo/core.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include "platform/base/export.h"
#include "platform/base/fail.h"
#include "posix/descriptor.h"
#include "posix/file.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kRetryInterval(1);
constexpr mode_t kLockFileMode = 0600;

enum class LockResult { kLocked, kTimedOut, kReplaced, kFailed };

// A lock bound to the open file: unlike a process's record lock it is not lost when some other
// descriptor of the same file is closed.
bool setLock(int fd, short type) {
    struct flock request = {};
    request.l_type = type;
    request.l_whence = SEEK_SET;
    return fcntl(fd, F_OFD_SETLK, &request) == 0;
}

// O_CREAT comes second and alone with O_EXCL: in a sticky directory the kernel may refuse O_CREAT
// on another user's file.
posix::Descriptor openOrCreate(const char* path, int access) {
    const int flags = access | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    for (;;) {
        posix::Descriptor fd(open(path, flags));
        if (fd || errno != ENOENT) return fd;
        fd = posix::Descriptor(open(path, flags | O_CREAT | O_EXCL, kLockFileMode));
        if (fd || errno != EEXIST) return fd;
    }
}

posix::Descriptor openLockFile(const char* path, bool exclusive) {
    posix::Descriptor fd =
        posix::aboveStandardStreams(openOrCreate(path, exclusive ? O_RDWR : O_RDONLY));
    struct stat properties = {};
    if (!fd || fstat(fd.get(), &properties) != 0) return posix::Descriptor();
    if (S_ISREG(properties.st_mode)) return fd;
    errno = EINVAL;
    return posix::Descriptor();
}

LockResult waitForLock(int fd, short type, Clock::time_point deadline) {
    while (!setLock(fd, type)) {
        if (errno != EAGAIN && errno != EACCES) return LockResult::kFailed;
        if (Clock::now() >= deadline) return LockResult::kTimedOut;
        std::this_thread::sleep_for(kRetryInterval);
    }
    return LockResult::kLocked;
}

LockResult lockOnce(const char* path,
                    bool exclusive,
                    Clock::time_point deadline,
                    posix::Descriptor& result) {
    posix::Descriptor fd = openLockFile(path, exclusive);
    if (!fd) return LockResult::kFailed;
    const LockResult waited = waitForLock(fd.get(), exclusive ? F_WRLCK : F_RDLCK, deadline);
    if (waited != LockResult::kLocked) return waited;
    // Somebody may have deleted the file while we waited; the next one to come would lock a new
    // file.
    if (!posix::isFileAt(fd.get(), path)) {
        return Clock::now() >= deadline ? LockResult::kTimedOut : LockResult::kReplaced;
    }
    result = std::move(fd);
    return LockResult::kLocked;
}

}  // namespace

ZAMO_EXPORT int VLIBCFileLockTimeByFile(const char* path, int exclusive, int seconds, int* fd) {
    if (!path || !fd) {
        errno = EINVAL;
        return 0;
    }
    const auto deadline = Clock::now() + std::chrono::seconds(seconds);
    posix::Descriptor locked;
    LockResult result = LockResult::kReplaced;
    while (result == LockResult::kReplaced) {
        result = lockOnce(path, exclusive != 0, deadline, locked);
    }
    if (result == LockResult::kTimedOut) errno = ETIMEDOUT;
    if (!locked) return 0;
    *fd = locked.release();
    return 1;
}

ZAMO_EXPORT int VLIBCFileUnlockByFile(int fd) {
    const bool unlocked = setLock(fd, F_UNLCK);
    const posix::Descriptor closed(fd);
    return unlocked ? 1 : 0;
}
