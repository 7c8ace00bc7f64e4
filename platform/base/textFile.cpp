#include "platform/base/textFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "posix/descriptor.h"

namespace zamo {
namespace {

bool isTrusted(const struct stat& properties) {
    const uid_t owner = properties.st_uid;
    return !S_ISLNK(properties.st_mode) && (owner == 0 || owner == geteuid());
}

ReadResult failedToFind() {
    return errno == ENOENT ? ReadResult::kMissing : ReadResult::kFailed;
}

bool readAll(int fd, std::string& text) {
    std::array<char, 16384> buffer;
    for (;;) {
        const ssize_t got = read(fd, buffer.data(), buffer.size());
        if (got == 0) {
            return true;
        }
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return false;
        }
        text.append(buffer.data(), static_cast<std::size_t>(got));
        if (text.size() > kTextFileLimit) {
            errno = EFBIG;
            return false;
        }
    }
}

ReadResult readFrom(int fd, bool shared, TextFile& file) {
    TextFile found;
    if (fstat(fd, &found.properties) != 0) {
        return ReadResult::kFailed;
    }
    if (shared && !isTrusted(found.properties)) {
        return ReadResult::kUntrusted;
    }
    if (!S_ISREG(found.properties.st_mode)) {
        errno = EINVAL;
        return ReadResult::kFailed;
    }
    if (!readAll(fd, found.text)) {
        return ReadResult::kFailed;
    }
    file = std::move(found);
    return ReadResult::kDone;
}

posix::Descriptor openDirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string directory =
        slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
    return posix::openFile(directory, O_PATH | O_DIRECTORY);
}

}  // namespace

ReadResult readTextFile(const std::string& path, TextFile& file) {
    const posix::Descriptor directory = openDirectoryOf(path);
    if (!directory) {
        return failedToFind();
    }
    const std::string name = path.substr(path.rfind('/') + 1);
    const bool shared = isWritableByAll(directory.get());

    // Checked before opening as well: opening a foreign socket or FIFO may fail or block.
    struct stat seen = {};
    if (fstatat(directory.get(), name.c_str(), &seen, shared ? AT_SYMLINK_NOFOLLOW : 0) != 0) {
        return failedToFind();
    }
    if (shared && !isTrusted(seen)) {
        return ReadResult::kUntrusted;
    }

    const int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | (shared ? O_NOFOLLOW : 0);
    const posix::Descriptor fd = posix::openFileAt(directory.get(), name.c_str(), flags);
    if (!fd) {
        return failedToFind();
    }
    return readFrom(fd.get(), shared, file);
}

bool isWritableByAll(int directory) {
    struct stat properties = {};
    return fstat(directory, &properties) != 0 || (properties.st_mode & S_IWOTH) != 0;
}

}  // namespace zamo
