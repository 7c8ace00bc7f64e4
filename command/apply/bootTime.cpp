#include "command/apply/bootTime.h"

#include <ctime>
#include <fstream>

namespace zamofw {

std::string bootId() {
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string id;
    std::getline(file, id);
    return id;
}

std::int64_t nanosecondsSinceBoot() {
    constexpr std::int64_t kPerSecond = 1'000'000'000;
    timespec now = {};
    (void)clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec * kPerSecond + now.tv_nsec;
}

}  // namespace zamofw
