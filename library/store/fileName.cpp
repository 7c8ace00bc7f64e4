#include "library/store/fileName.h"

#include <sys/random.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <ctime>

#include "library/model/utf8.h"

namespace FW {
namespace {

constexpr unsigned kSpread = 100;
constexpr const char* kLongestEnding = ".lock";

// rand() would repeat its numbers in every process, and belongs to the program.
unsigned drawRandom() {
    unsigned drawn = 0;
    if (getrandom(&drawn, sizeof drawn, GRND_NONBLOCK) == sizeof drawn) {
        return drawn;
    }
    timespec now = {};
    (void)clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<unsigned>(now.tv_nsec) + static_cast<unsigned>(getpid());
}

}  // namespace

bool fitsFileName(const std::string& name) {
    return name.size() + std::strlen(kLongestEnding) <= NAME_MAX;
}

bool isFileName(const std::string& name) {
    const bool staysHere = !name.empty() && name != "." && name != ".." &&
                           name.find('/') == std::string::npos &&
                           name.find('\0') == std::string::npos;
    return staysHere && fitsFileName(name) && isUtf8(name);
}

std::string drawFileName(const std::function<bool(const std::string&)>& isTaken) {
    for (;;) {
        const auto number = static_cast<std::int32_t>(drawRandom() % kSpread + time(nullptr));
        std::string name = std::to_string(number);
        if (!isTaken(name)) {
            return name;
        }
    }
}

}  // namespace FW
