// Time since the system started, which no change of the clock moves and which goes on in standby.
#ifndef COMMAND_APPLY_BOOTTIME_H
#define COMMAND_APPLY_BOOTTIME_H

#include <cstdint>
#include <string>

namespace zamofw {

// Names the start of the system; another one has another name. Empty when the kernel does not tell.
[[nodiscard]] std::string bootId();

[[nodiscard]] std::int64_t nanosecondsSinceBoot();

// The unit in which /proc tells when a process began.
[[nodiscard]] std::uint64_t ticksSinceBoot();

}  // namespace zamofw

#endif
