#include "command/history/privateDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "posix/file.h"

namespace zamofw {
namespace {

constexpr mode_t kDirectoryMode = 0700;
constexpr mode_t kFileMode = 0600;
constexpr off_t kLargestFile = off_t{64} << 20U;

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

posix::Descriptor openStateDirectory() {
    return openPrivateDirectory("/var/lib", {"zamofw"});
}

posix::Descriptor openPrivateFile(const posix::Descriptor& directory,
                                  const std::string& name,
                                  int flags) {
    // Without blocking, so that a pipe of that name cannot hold the call up.
    return openAt(directory.get(), name.c_str(), flags | O_NONBLOCK | O_NOCTTY, kFileMode, S_IFREG);
}

bool replacePrivateFile(const posix::Descriptor& directory,
                        const std::string& name,
                        std::string_view text,
                        OnDisk onDisk) {
    return replacePrivateFileVia(directory, name + ".tmp", name, text, onDisk);
}

bool replacePrivateFileVia(const posix::Descriptor& directory,
                           const std::string& temporary,
                           const std::string& name,
                           std::string_view text,
                           OnDisk onDisk) {
    posix::Descriptor file = openPrivateFile(directory, temporary, O_WRONLY | O_CREAT | O_TRUNC);
    if (!file) {
        return false;
    }
    const bool isWritten =
        posix::writeWhole(file.get(), text) && (onDisk == OnDisk::kLater || fsync(file.get()) == 0);
    if (isWritten && file.close() &&
        renameat(directory.get(), temporary.c_str(), directory.get(), name.c_str()) == 0) {
        return true;
    }
    // It would keep a full disk full.
    const int error = errno;
    (void)unlinkat(directory.get(), temporary.c_str(), 0);
    errno = error;
    return false;
}

std::optional<std::string> readPrivateFile(const posix::Descriptor& directory,
                                           const std::string& name) {
    const posix::Descriptor file = openPrivateFile(directory, name, O_RDONLY);
    struct stat status = {};
    if (!file || fstat(file.get(), &status) != 0) {
        return std::nullopt;
    }
    if (status.st_size > kLargestFile) {
        errno = EFBIG;
        return std::nullopt;
    }
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count = read(file.get(), &text[done], text.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            errno = count == 0 ? EIO : errno;
            return std::nullopt;
        }
        done += static_cast<std::size_t>(count);
    }
    return text;
}

bool privateFileHolds(const posix::Descriptor& directory,
                      const std::string& name,
                      std::initializer_list<std::string_view> parts) {
    const posix::Descriptor file = openPrivateFile(directory, name, O_RDONLY);
    std::array<char, std::size_t{16} << 10U> bytes;
    for (std::string_view part : parts) {
        while (!part.empty()) {
            const std::size_t wanted = std::min(part.size(), bytes.size());
            const ssize_t count = file ? read(file.get(), bytes.data(), wanted) : 0;
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0 ||
                std::memcmp(part.data(), bytes.data(), static_cast<std::size_t>(count)) != 0) {
                return false;
            }
            part.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    return file && read(file.get(), bytes.data(), 1) == 0;
}

bool removePrivateFile(const posix::Descriptor& directory, const std::string& name) {
    return unlinkat(directory.get(), name.c_str(), 0) == 0 || errno == ENOENT;
}

}  // namespace zamofw
