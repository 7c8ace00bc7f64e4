#include "tests/support/systemCalls.h"

#include <dlfcn.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <utility>

#include "platform/base/export.h"

namespace test {
namespace {

SystemCalls* current = nullptr;
std::atomic<long> slept = 0;
long taken = 0;

template <typename Function>
Function* real(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

SystemCalls::SystemCalls() {
    (void)takeSleep();
    current = this;
}

SystemCalls::~SystemCalls() { current = nullptr; }

long SystemCalls::takeSleep() { return slept - std::exchange(taken, slept); }

}  // namespace test

ZAMO_EXPORT int nanosleep(const timespec* duration, timespec* remaining) {
    static auto* const call = test::real(nanosleep, "nanosleep");
    test::slept += test::current != nullptr ? 1 : 0;
    return test::current != nullptr ? 0 : call(duration, remaining);
}

ZAMO_EXPORT int clock_gettime(clockid_t clock, timespec* now) noexcept {
    static auto* const call = test::real(clock_gettime, "clock_gettime");
    const int result = call(clock, now);
    now->tv_sec += test::slept;
    return result;
}

ZAMO_EXPORT int access(const char* path, int mode) noexcept {
    static auto* const call = test::real(access, "access");
    if (test::current != nullptr && test::current->onAccess) {
        test::current->onAccess(path);
    }
    return call(path, mode);
}

ZAMO_EXPORT int fsync(int file) {
    static auto* const call = test::real(fsync, "fsync");
    if (test::current != nullptr && test::current->onSync) {
        test::current->onSync();
    }
    return call(file);
}
