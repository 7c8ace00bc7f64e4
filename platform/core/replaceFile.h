#ifndef PLATFORM_CORE_REPLACEFILE_H
#define PLATFORM_CORE_REPLACEFILE_H

#include <sys/stat.h>

#include <string>
#include <string_view>

namespace zamo {

// Replaces `path` by a new file with this text. It gets the mode and owner in `previous`, or mode
// 0644 without it. A reader sees the old text or the new one; which of them is there after a power
// failure is not promised. On failure it is false with errno set, the old file is unchanged and
// nothing is left over.
[[nodiscard]] bool replaceFile(const std::string& path,
                               std::string_view text,
                               const struct stat* previous);

}  // namespace zamo

#endif
