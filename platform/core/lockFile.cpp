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
constexpr int kMaxAttempts = 100;

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

// Another process of ours may replace the file at the same time. So ours is published with its lock
// held and in exchange for the old one, and withdrawn when the old one turns out to be good: nobody
// gets a lock on it meanwhile. Empty with EAGAIN when it is worth another try.
posix::Descriptor replaceForeign(const std::string& path, bool shared) {
    std::string spare = path;
    posix::Descriptor fd = createLocked(spare);
    if (!fd) {
        return fd;
    }
    if (renameat2(AT_FDCWD, spare.c_str(), AT_FDCWD, path.c_str(), RENAME_EXCHANGE) != 0) {
        removeKeepingErrno(spare);
        if (errno == ENOENT) {
            errno = EAGAIN;
        }
        return posix::Descriptor();
    }
    struct stat old = {};
    if (lstat(spare.c_str(), &old) == 0 && !isForeign(old, shared)) {
        (void)renameat2(AT_FDCWD, spare.c_str(), AT_FDCWD, path.c_str(), RENAME_EXCHANGE);
        (void)unlink(spare.c_str());
        errno = EAGAIN;
        return posix::Descriptor();
    }
    // A directory that is not empty stays under its new name.
    if (unlink(spare.c_str()) != 0) {
        (void)rmdir(spare.c_str());
    }
    return fd;
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

// Empty with EAGAIN when another user's file came between.
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
        // Looked at before it is opened: opening a foreign file may take long (leases) or do
        // things.
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
