// Root's own directories, where nobody else may look or write.
#ifndef COMMAND_HISTORY_PRIVATEDIRECTORY_H
#define COMMAND_HISTORY_PRIVATEDIRECTORY_H

#include <initializer_list>
#include <string>

#include "posix/descriptor.h"

namespace zamofw {

// Opens the directory `base`/NAME/..., each made with mode 0700 where it is missing. Follows no
// link, and takes no directory of another user. Empty, with errno set, on failure.
[[nodiscard]] posix::Descriptor openPrivateDirectory(const char* base,
                                                     std::initializer_list<const char*> names);

// Opens root's own plain file in it, made with mode 0600 where `flags` say so. Empty, with errno
// set, on failure.
[[nodiscard]] posix::Descriptor openPrivateFile(const posix::Descriptor& directory,
                                                const std::string& name,
                                                int flags);

}  // namespace zamofw

#endif
