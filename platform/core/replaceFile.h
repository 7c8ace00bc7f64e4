#ifndef PLATFORM_CORE_REPLACEFILE_H
#define PLATFORM_CORE_REPLACEFILE_H

#include <sys/stat.h>

#include <string>
#include <string_view>

namespace zamo {

// Puts a whole new file in the place of `path`. With `previous` it gets that file's mode and owner,
// else it is an ordinary one that everybody may read. Whoever opens the path sees the old text or
// the new one; whether the new one survives a power failure is not promised. False with errno set;
// then the old file is untouched and no other file is left behind.
[[nodiscard]] bool replaceFile(const std::string& path,
                               std::string_view text,
                               const struct stat* previous);

}  // namespace zamo

#endif
