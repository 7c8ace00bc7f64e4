// The files that locks are taken on, safe from other users.
#ifndef PLATFORM_CORE_LOCKFILE_H
#define PLATFORM_CORE_LOCKFILE_H

#include "posix/descriptor.h"

namespace zamo {

// Places a lock of the type (F_RDLCK, F_WRLCK, F_UNLCK) without waiting; false with errno set. It
// is bound to the open file: unlike a process's record lock it is not lost when some other
// descriptor of the same file is closed.
[[nodiscard]] bool setLock(int fd, short type) noexcept;

struct LockFile {
    posix::Descriptor fd;   // empty, with errno set, on failure
    bool isLocked = false;  // a file that had to be replaced comes with an exclusive lock
};

// Opens or creates the lock file. It belongs to root or the effective user and has mode 0600, so
// that nobody else can hold a lock on it. What another user has put at the path is replaced, or
// fails at once where that is not allowed. No symbolic link is followed.
[[nodiscard]] LockFile openLockFile(const char* path, bool exclusive);

}  // namespace zamo

#endif
