#include "command/apply/bootTime.h"

#include <unistd.h>

#include <ctime>
#include <fstream>

namespace zamofw {
namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

}  // namespace

std::string bootId() {
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string id;
    std::getline(file, id);
    return id;
}

std::int64_t nanosecondsSinceBoot() {
    timespec now = {};
    (void)clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

std::uint64_t ticksSinceBoot() {
    const auto ticksPerSecond = static_cast<std::int64_t>(sysconf(_SC_CLK_TCK));
    return static_cast<std::uint64_t>(nanosecondsSinceBoot() /
                                      (kNanosecondsPerSecond / ticksPerSecond));
}

}  // namespace zamofw
