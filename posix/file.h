// What the library and the platform do with open files.
#ifndef POSIX_FILE_H
#define POSIX_FILE_H

#include <dirent.h>

#include <memory>
#include <string>
#include <string_view>

namespace posix {

// Writes the whole text; false, with errno set, when that was not possible.
[[nodiscard]] bool writeWhole(int fd, std::string_view text) noexcept;

// Whether the path still names the open file itself: not a link to it, and not a newer file.
[[nodiscard]] bool isFileAt(int fd, const std::string& path) noexcept;

struct DirectoryCloser {
    void operator()(DIR* directory) const noexcept { (void)closedir(directory); }
};
using DirectoryPtr = std::unique_ptr<DIR, DirectoryCloser>;

// opendir(), never on a standard stream's number. Null, with errno set, on failure.
[[nodiscard]] DirectoryPtr openDirectory(const std::string& path) noexcept;

}  // namespace posix

#endif
