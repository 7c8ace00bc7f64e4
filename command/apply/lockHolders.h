// Who has a file open, and who holds a lock on it.
#ifndef COMMAND_APPLY_LOCKHOLDERS_H
#define COMMAND_APPLY_LOCKHOLDERS_H

#include <string>

namespace zamofw {

// " (held by ip6tables, process 4711)", or an empty text when the kernel does not tell.
[[nodiscard]] std::string lockHolders(const std::string& path);

// Whether another process has the file open.
[[nodiscard]] bool isOpenElsewhere(const std::string& path);

}  // namespace zamofw

#endif
