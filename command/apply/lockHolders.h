// Who holds a lock, for messages.
#ifndef COMMAND_APPLY_LOCKHOLDERS_H
#define COMMAND_APPLY_LOCKHOLDERS_H

#include <string>

namespace zamofw {

// " (held by ip6tables, process 4711)", or an empty text when the kernel does not tell.
[[nodiscard]] std::string lockHolders(const std::string& path);

}  // namespace zamofw

#endif
