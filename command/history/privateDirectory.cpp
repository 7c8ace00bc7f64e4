#include "command/history/privateDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace zamofw {
namespace {

constexpr mode_t kDirectoryMode = 0700;
constexpr mode_t kFileMode = 0600;

// Whether it is root's own, and of the type.
bool isOurs(int fd, mode_t type) {
    struct stat status = {};
    if (fstat(fd, &status) != 0) {
        return false;
    }
    const bool ours = status.st_uid == 0 && (status.st_mode & S_IFMT) == type &&
                      (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    if (!ours) {
        errno = EPERM;
    }
    return ours;
}

posix::Descriptor openAt(int directory, const char* name, int flags, mode_t mode, mode_t type) {
    posix::Descriptor file = posix::aboveStandardStreams(
        posix::Descriptor(openat(directory, name, flags | O_NOFOLLOW | O_CLOEXEC, mode)));
    return file && isOurs(file.get(), type) ? std::move(file) : posix::Descriptor();
}

}  // namespace

posix::Descriptor openPrivateDirectory(const char* base, std::initializer_list<const char*> names) {
    posix::Descriptor directory = posix::openFile(base, O_RDONLY | O_DIRECTORY);
    for (const char* const name : names) {
        if (!directory ||
            (mkdirat(directory.get(), name, kDirectoryMode) != 0 && errno != EEXIST)) {
            return {};
        }
        directory = openAt(directory.get(), name, O_RDONLY | O_DIRECTORY, 0, S_IFDIR);
    }
    return directory;
}

posix::Descriptor openPrivateFile(const posix::Descriptor& directory,
                                  const std::string& name,
                                  int flags) {
    // Without blocking, so that a pipe of that name cannot hold the call up.
    return openAt(directory.get(), name.c_str(), flags | O_NONBLOCK | O_NOCTTY, kFileMode, S_IFREG);
}

}  // namespace zamofw
