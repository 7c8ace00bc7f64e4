#include "platform/core/lockFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace zamo {
namespace {

constexpr mode_t kMode = 0600;
constexpr mode_t kOthersBits = 0077;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
// Other users could make us replace their files again and again.
constexpr int kMaxAttempts = 1000;

bool isTrustedOwner(uid_t owner) {
    return owner == 0 || owner == geteuid();
}

// Whether other users can put something into the directory of the file.
bool isDirectoryShared(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    struct stat properties = {};
    return stat(directory.c_str(), &properties) != 0 || !isTrustedOwner(properties.st_uid) ||
           (properties.st_mode & kOthersWrite) != 0;
}

// In a shared directory, a link may lead anywhere, and a hard link may be to any of our files.
bool isForeign(const struct stat& properties, bool shared) {
    return !isTrustedOwner(properties.st_uid) ||
           (shared && (!S_ISREG(properties.st_mode) || properties.st_nlink != 1));
}

void removeKeepingErrno(const std::string& path) {
    const int saved = errno;
    (void)unlink(path.c_str());
    errno = saved;
}

// A new file under a random name beside the path, with an exclusive lock.
posix::Descriptor createLocked(std::string& path) {
    path += ".XXXXXX";
    posix::Descriptor fd =
        posix::aboveStandardStreams(posix::Descriptor(mkostemp(path.data(), O_CLOEXEC)));
    if (fd && !setLock(fd.get(), F_WRLCK)) {
        removeKeepingErrno(path);
        return posix::Descriptor();
    }
    return fd;
}

bool isSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Swaps the two names. If the path is gone, renames `spare` to it.
bool swap(const std::string& spare, const std::string& path) {
    const auto rename = [&](unsigned flags) {
        return renameat2(AT_FDCWD, spare.c_str(), AT_FDCWD, path.c_str(), flags) == 0;
    };
    return rename(RENAME_EXCHANGE) || (errno == ENOENT && rename(RENAME_NOREPLACE));
}

// Swaps until `spare` names a file that may be deleted: our new one, or another user's. True for
// the latter.
bool swapAgainstForeign(const std::string& spare,
                        const std::string& path,
                        bool shared,
                        const struct stat& created) {
    struct stat found = {};
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        if (!swap(spare, path) || lstat(spare.c_str(), &found) != 0) {
            return false;
        }
        if (isForeign(found, shared)) {
            return true;
        }
        if (isSameFile(found, created)) {
            errno = EAGAIN;
            return false;
        }
    }
    errno = EBUSY;
    return false;
}

// Other processes of ours may replace the file at the same time. So the new one has its lock when
// it is published, in exchange for what the path named. When that is no longer the foreign file but
// a good one, they are swapped back, and nobody could use the new one meanwhile. No process deletes
// a good file of another. Empty with EAGAIN when it is worth another try.
posix::Descriptor replaceForeign(const std::string& path, bool shared) {
    std::string spare = path;
    posix::Descriptor fd = createLocked(spare);
    struct stat created = {};
    if (!fd || fstat(fd.get(), &created) != 0) {
        return posix::Descriptor();
    }
    const bool replaced = swapAgainstForeign(spare, path, shared, created);
    const int error = errno;
    struct stat found = {};
    const bool isLeft = lstat(spare.c_str(), &found) == 0;
    if (isLeft && (isForeign(found, shared) || isSameFile(found, created)) &&
        unlink(spare.c_str()) != 0) {
        // A directory that is not empty stays under its new name.
        (void)rmdir(spare.c_str());
    }
    errno = error == ENOENT ? EAGAIN : error;
    return replaced ? std::move(fd) : posix::Descriptor();
}

bool tighten(int fd, const struct stat& properties) {
    return (properties.st_mode & kOthersBits) == 0 || fchmod(fd, kMode) == 0;
}

// O_CREAT comes second and alone with O_EXCL: in a sticky directory the kernel may refuse O_CREAT
// on another user's file.
posix::Descriptor openOrCreate(const char* path, int access) {
    const int flags = access | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    posix::Descriptor fd = posix::openFile(path, flags);
    if (fd || errno != ENOENT) {
        return fd;
    }
    return posix::openFile(path, flags | O_CREAT | O_EXCL, kMode);
}

// Empty with EAGAIN when another user's file has appeared since the check.
posix::Descriptor openOwn(const char* path, int access, bool shared) {
    posix::Descriptor fd = openOrCreate(path, access);
    struct stat properties = {};
    if (!fd || fstat(fd.get(), &properties) != 0) {
        return posix::Descriptor();
    }
    if (isForeign(properties, shared)) {
        errno = EAGAIN;
        return posix::Descriptor();
    }
    if (!S_ISREG(properties.st_mode)) {
        errno = EINVAL;
        return posix::Descriptor();
    }
    return tighten(fd.get(), properties) ? std::move(fd) : posix::Descriptor();
}

}  // namespace

bool setLock(int fd, short type) noexcept {
    struct flock request = {};
    request.l_type = type;
    request.l_whence = SEEK_SET;
    return fcntl(fd, F_OFD_SETLK, &request) == 0;
}

LockFile openLockFile(const char* path, bool exclusive) {
    const bool shared = isDirectoryShared(path);
    LockFile file;
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        // Checked before opening: opening a foreign file may block (leases) or have side effects.
        struct stat found = {};
        const bool exists = lstat(path, &found) == 0;
        file.isLocked = exists && isForeign(found, shared);
        file.fd = file.isLocked ? replaceForeign(path, shared)
                                : openOwn(path, exclusive ? O_RDWR : O_RDONLY, shared);
        if (file.fd || (errno != EAGAIN && errno != EEXIST)) {
            break;
        }
    }
    return file;
}

}  // namespace zamo
