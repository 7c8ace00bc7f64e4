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

    // Runs the action once: before an access() of the path, the next one being number 1, or before
    // the next fsync(). A new action replaces one that has not run.
    void beforeAccess(const std::string& path, int number, std::function<void()> action);
    void beforeSync(const std::function<void()>& action) { beforeAccess("fsync()", 1, action); }

    // Seconds since the last call that were not really slept. Every sleep counts as one second.
    long takeSleep();
};

}  // namespace test

#endif
