#ifndef PLATFORM_BASE_TEXTFILE_H
#define PLATFORM_BASE_TEXTFILE_H

#include <sys/stat.h>

#include <cstddef>
#include <string>

namespace zamo {

constexpr std::size_t kTextFileLimit = 1024 * 1024;

// A whole file with the properties that a replacement has to keep.
struct TextFile {
    std::string text;
    struct stat properties = {};
};

enum class ReadResult {
    kDone,
    kMissing,
    kUntrusted,  // in a directory that everybody may write to: a symbolic link, or a foreign owner
    kFailed,     // errno tells why; EFBIG over the limit, EINVAL for what is no regular file
};

// Reads a regular file up to the limit; `file` is set when the result is kDone.
[[nodiscard]] ReadResult readTextFile(const std::string& path, TextFile& file);

// Whether anybody may put a symbolic link into the open directory. True when it cannot be told.
[[nodiscard]] bool isWritableByAll(int directory);

}  // namespace zamo

#endif
