#ifndef LIBRARY_CONTROLLER_EXECUTIONLOCK_H
#define LIBRARY_CONTROLLER_EXECUTIONLOCK_H

namespace FW {

// The lock under which one process at a time rebuilds the kernel's rules. Held until the end of the
// scope; other processes wait at most 30 seconds for it.
class ExecutionLock {
  public:
    ExecutionLock() = default;
    ~ExecutionLock();
    ExecutionLock(const ExecutionLock&) = delete;
    ExecutionLock& operator=(const ExecutionLock&) = delete;

    // Logs its failure.
    [[nodiscard]] bool lock();

  private:
    int descriptor_ = -1;
};

}  // namespace FW

#endif
