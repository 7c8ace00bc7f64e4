#include "posix/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "posix/descriptor.h"

namespace posix {

bool writeWhole(int fd, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = write(fd, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool isFileAt(int fd, const std::string& path) noexcept {
    struct stat opened = {};
    struct stat named = {};
    return fstat(fd, &opened) == 0 && lstat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

DirectoryPtr openDirectory(const std::string& path) noexcept {
    Descriptor fd = openFile(path, O_RDONLY | O_DIRECTORY | O_NONBLOCK);
    DirectoryPtr directory(fd ? fdopendir(fd.get()) : nullptr);
    if (directory != nullptr) {
        (void)fd.release();
    }
    return directory;
}

}  // namespace posix
