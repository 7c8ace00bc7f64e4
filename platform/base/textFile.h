#ifndef PLATFORM_BASE_TEXTFILE_H
#define PLATFORM_BASE_TEXTFILE_H

#include <sys/stat.h>

#include <cstddef>
#include <string>

namespace zamo {

constexpr std::size_t kTextFileLimit = 1024 * 1024;

// A whole file, and its properties for a replacement that keeps mode and owner.
struct TextFile {
    std::string text;
    struct stat properties = {};
};

enum class ReadResult {
    kDone,
    kMissing,
    kUntrusted,  // a symbolic link or another user's file in a world-writable directory
    kFailed,     // with errno: EFBIG over the limit, EINVAL if it is not a regular file
};

// Reads a regular file up to the limit; `file` is set when the result is kDone.
[[nodiscard]] ReadResult readTextFile(const std::string& path, TextFile& file);

// Whether any user may put a symbolic link into the open directory. True if that is unknown.
[[nodiscard]] bool isWritableByAll(int directory);

}  // namespace zamo

#endif
