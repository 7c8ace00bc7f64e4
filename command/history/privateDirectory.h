// Root's own directories, where nobody else may look or write.
#ifndef COMMAND_HISTORY_PRIVATEDIRECTORY_H
#define COMMAND_HISTORY_PRIVATEDIRECTORY_H

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "posix/descriptor.h"

namespace zamofw {

// Opens the directory `base`/NAME/..., each made with mode 0700 where it is missing. Follows no
// link, and takes no directory of another user. Empty, with errno set, on failure.
[[nodiscard]] posix::Descriptor openPrivateDirectory(const char* base,
                                                     std::initializer_list<const char*> names);

// /var/lib/zamofw.
[[nodiscard]] posix::Descriptor openStateDirectory();

// Opens root's own plain file in it, made with mode 0600 where `flags` say so. Empty, with errno
// set, on failure.
[[nodiscard]] posix::Descriptor openPrivateFile(const posix::Descriptor& directory,
                                                const std::string& name,
                                                int flags);

// When a text must be on the disk. One that may get there later can be empty or torn after a power
// cut, so its readers must recognise that.
enum class OnDisk { kLater, kNow };

// Puts a file with this text in the place of the one of that name, whole or not at all: a reader
// finds the old text or the new one. A kill may leave NAME.tmp, which the next call overwrites.
// False, with errno set, on failure; no temporary file is left then.
[[nodiscard]] bool replacePrivateFile(const posix::Descriptor& directory,
                                      const std::string& name,
                                      std::string_view text,
                                      OnDisk onDisk = OnDisk::kLater);

// The same over a temporary file of the caller's choice, for those who may write at the same time.
[[nodiscard]] bool replacePrivateFileVia(const posix::Descriptor& directory,
                                         const std::string& temporary,
                                         const std::string& name,
                                         std::string_view text,
                                         OnDisk onDisk = OnDisk::kLater);

// The text of root's own plain file. None, with errno set, when it is not there, cannot be read or
// is larger than any that we write.
[[nodiscard]] std::optional<std::string> readPrivateFile(const posix::Descriptor& directory,
                                                         const std::string& name);

// Whether root's own plain file is there and holds these parts, one after the other, and no more.
[[nodiscard]] bool privateFileHolds(const posix::Descriptor& directory,
                                    const std::string& name,
                                    std::initializer_list<std::string_view> parts);

// False, with errno set, unless it is gone afterwards.
[[nodiscard]] bool removePrivateFile(const posix::Descriptor& directory, const std::string& name);

}  // namespace zamofw

#endif
