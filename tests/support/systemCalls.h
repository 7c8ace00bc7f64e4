// Some system calls of the code under test: what happens just before them, and a clock that is put
// forward instead of slept for.
#ifndef TESTS_SUPPORT_SYSTEMCALLS_H
#define TESTS_SUPPORT_SYSTEMCALLS_H

#include <functional>
#include <string>

namespace test {

// In force while an object of this class lives.
class SystemCalls {
  public:
    SystemCalls();
    ~SystemCalls();
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    // Called before access() of a path, and before fsync().
    std::function<void(const std::string& path)> onAccess;
    std::function<void()> onSync;

    // Seconds since the last call that were not really slept. Every sleep counts as one second.
    long takeSleep();
};

}  // namespace test

#endif
