#include "tests/support/systemCalls.h"

#include <dlfcn.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <utility>

#include "platform/base/export.h"

namespace test {
namespace {

bool inForce = false;
std::string plannedPath;
int callsLeft = 0;
std::function<void()> plannedAction;
std::atomic<long> slept = 0;
long taken = 0;

void beforeCall(const char* path) {
    if (inForce && path == plannedPath && --callsLeft == 0) {
        std::exchange(plannedAction, nullptr)();
    }
}

}  // namespace

SystemCalls::SystemCalls() {
    (void)takeSleep();
    inForce = true;
}

SystemCalls::~SystemCalls() {
    inForce = false;
    callsLeft = 0;
}

void SystemCalls::beforeAccess(const std::string& path, int number, std::function<void()> action) {
    plannedPath = path;
    callsLeft = number;
    plannedAction = std::move(action);
}

long SystemCalls::takeSleep() { return slept - std::exchange(taken, slept); }

}  // namespace test

// Where `long` has 32 bits, the calls have other names than the ones that we write, and the C++
// library still uses the old clock on some systems.
#if defined(__USE_TIME_BITS64) && __WORDSIZE == 32
constexpr const char* kSleep = "__nanosleep64";
constexpr const char* kClock = "__clock_gettime64";

struct ShortTime {
    std::int32_t seconds;
    std::int32_t nanoseconds;
};
ZAMO_EXPORT int shortClock(clockid_t clock, ShortTime* now) noexcept __asm__("clock_gettime");
int shortClock(clockid_t clock, ShortTime* now) noexcept {
    static auto* const real =
        reinterpret_cast<decltype(&shortClock)>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int result = real(clock, now);
    now->seconds += static_cast<std::int32_t>(test::slept);
    return result;
}
#else
constexpr const char* kSleep = "nanosleep";
constexpr const char* kClock = "clock_gettime";
#endif

ZAMO_EXPORT int nanosleep(const timespec* duration, timespec* remaining) {
    static auto* const real = reinterpret_cast<decltype(&nanosleep)>(dlsym(RTLD_NEXT, kSleep));
    test::slept += test::inForce ? 1 : 0;
    return test::inForce ? 0 : real(duration, remaining);
}

ZAMO_EXPORT int clock_gettime(clockid_t clock, timespec* now) noexcept {
    static auto* const real = reinterpret_cast<decltype(&clock_gettime)>(dlsym(RTLD_NEXT, kClock));
    const int result = real(clock, now);
    now->tv_sec += test::slept;
    return result;
}

ZAMO_EXPORT int access(const char* path, int mode) noexcept {
    static auto* const real = reinterpret_cast<decltype(&access)>(dlsym(RTLD_NEXT, "access"));
    test::beforeCall(path);
    return real(path, mode);
}

ZAMO_EXPORT int fsync(int file) {
    static auto* const real = reinterpret_cast<decltype(&fsync)>(dlsym(RTLD_NEXT, "fsync"));
    test::beforeCall("fsync()");
    return real(file);
}
