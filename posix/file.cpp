#include "posix/file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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

}  // namespace posix
