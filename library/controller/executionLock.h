#ifndef LIBRARY_CONTROLLER_EXECUTIONLOCK_H
#define LIBRARY_CONTROLLER_EXECUTIONLOCK_H

#include <ctime>
#include <utility>

namespace FW {

// The lock that lets one process at a time rebuild the kernel's rules. Held until the end of the
// scope; other processes wait for it for at most 30 seconds.
class ExecutionLock {
  public:
    ExecutionLock() = default;
    ~ExecutionLock();
    ExecutionLock(const ExecutionLock&) = delete;
    ExecutionLock& operator=(const ExecutionLock&) = delete;

    // Logs its failure.
    [[nodiscard]] bool lock();

    // Notes, in the lock file's time, that the rules are rebuilt.
    void noteRebuild() const noexcept;

  private:
    int descriptor_ = -1;
};

// The last noteRebuild() of any process. It takes no lock, and only tells whether there has been
// another one since it was last called.
using RebuildNote = std::pair<std::time_t, long>;
[[nodiscard]] RebuildNote lastRebuild() noexcept;

}  // namespace FW

#endif
