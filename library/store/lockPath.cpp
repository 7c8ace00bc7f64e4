#include "library/store/lockPath.h"

#include <fcntl.h>
#include <libgen.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zamo/sdk.h>

#include <array>
#include <boost/interprocess/exceptions.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "library/logging/log.h"

namespace bip = boost::interprocess;

namespace FW {
namespace {

constexpr const char* kLogModule = "utils";
constexpr const char* kLockDirectory = "/var/lock/firewall/";
constexpr const char* kLockDirectoryEntry = "/var/lock/firewall";  // a link itself, not its target
constexpr const char* kFallbackDirectory = "/tmp/";
constexpr mode_t kLockDirectoryMode = 0770;
constexpr mode_t kLockFileMode = 0600;
constexpr mode_t kOtherUsers = 0077;
constexpr std::size_t kPathBufferSize = 1024;
// Somebody may delete or replace the file each time, by accident or on purpose.
constexpr int kMaxAttempts = 100;

bool isOurs(const struct stat& status) {
    return status.st_uid == 0 || status.st_uid == geteuid();
}

// The permissions to write that users other than root and we have.
mode_t foreignWriters(const struct stat& status) {
    const bool ourGroup = status.st_gid == 0 || status.st_gid == getegid();
    return status.st_mode & (ourGroup ? S_IWOTH : S_IWGRP | S_IWOTH);
}

void moveAway(const char* path) {
    for (int number = 0; number < kMaxAttempts; ++number) {
        const std::string other = std::string(path) + ".foreign." + std::to_string(number);
        if (renameat2(AT_FDCWD, path, AT_FDCWD, other.c_str(), RENAME_NOREPLACE) == 0 ||
            errno != EEXIST) {
            return;
        }
    }
}

bool isTrustedDirectory() {
    struct stat status = {};
    if (lstat(kLockDirectoryEntry, &status) != 0) {
        return false;
    }
    if (!S_ISDIR(status.st_mode) || !isOurs(status)) {
        errno = S_ISDIR(status.st_mode) ? EPERM : ENOTDIR;
        return false;
    }
    const mode_t foreign = foreignWriters(status);
    return foreign == 0 ||
           chmod(kLockDirectoryEntry, status.st_mode & kLockDirectoryMode & ~foreign) == 0;
}

bool makeDirectory() {
    struct stat status = {};
    if (lstat(kLockDirectoryEntry, &status) == 0 && (!isOurs(status) || S_ISLNK(status.st_mode))) {
        moveAway(kLockDirectoryEntry);
    }
    return ZAMOFSMkdirP(kLockDirectory, kLockDirectoryMode) == 0 && isTrustedDirectory();
}

// More than one name means that another user may have linked some file of ours here.
bool isTrustedFile(const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_nlink <= 1 && isOurs(status);
}

bool isTrusted(int file) {
    struct stat status = {};
    return fstat(file, &status) == 0 && isTrustedFile(status) &&
           ((status.st_mode & kOtherUsers) == 0 || fchmod(file, kLockFileMode) == 0);
}

// A directory at the place of a lock file was not put there by mistake, and is left alone.
bool deleteForeign(const std::string& path) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && !isTrustedFile(status) &&
           !S_ISDIR(status.st_mode) && unlink(path.c_str()) == 0;
}

// O_CREAT comes alone with O_EXCL: nothing that is there already is opened by making a file.
posix::Descriptor openOrMake(const std::string& path) {
    constexpr int kFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    int error = 0;
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        posix::Descriptor file = posix::openFile(path, kFlags);
        error = file ? EPERM : errno;
        if (file && isTrusted(file.get())) {
            return file;
        }
        if (error == ENOENT) {
            file = posix::openFile(path, kFlags | O_CREAT | O_EXCL, kLockFileMode);
            if (file || errno != EEXIST) {
                return file;
            }
        } else if (!deleteForeign(path)) {
            break;
        }
    }
    errno = error;
    return {};
}

}  // namespace

// A directory that is there already is used even when no descriptor is left to make one: otherwise
// two processes could lock two different files.
bool isLockDirectoryUsable() {
    return (isTrustedDirectory() || makeDirectory()) && access(kLockDirectory, W_OK | X_OK) == 0;
}

std::string lockDirectory() {
    if (isLockDirectoryUsable()) {
        return kLockDirectory;
    }
    FW_LOG(LOG_DEBUG, "Failed to create path: %s", std::strerror(errno));
    return kFallbackDirectory;
}

std::string lockPathOf(const std::string& dataPath) {
    const std::string directory = lockDirectory();
    std::array<char, kPathBufferSize> buffer = {};
    (void)std::snprintf(buffer.data(), buffer.size(), "%s", dataPath.c_str());
    return directory + basename(buffer.data()) + ".lock";
}

posix::Descriptor openLockFile(const std::string& lockPath) {
    posix::Descriptor file = openOrMake(lockPath);
    if (!file) {
        throw bip::interprocess_exception(bip::error_info(errno));
    }
    return file;
}

void makeLockFile(const std::string& lockPath) noexcept {
    struct stat status = {};
    if (lstat(lockPath.c_str(), &status) != 0 || !isTrustedFile(status) ||
        (status.st_mode & kOtherUsers) != 0) {
        (void)openOrMake(lockPath);
    }
}

}  // namespace FW
