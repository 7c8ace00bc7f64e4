#ifndef COMMAND_APPLY_EXECUTIONLOCK_H
#define COMMAND_APPLY_EXECUTIONLOCK_H

#include <memory>

namespace zamofw {

// The lock under which one process at a time rebuilds the kernel's rules, the library's own. Held
// until the end of the scope. Throws Failure when it is not free within 30 seconds.
class ExecutionLock {
  public:
    ExecutionLock();
    // Null when it is not free within so many seconds.
    [[nodiscard]] static std::unique_ptr<ExecutionLock> takenWithin(int seconds);
    ~ExecutionLock();
    ExecutionLock(const ExecutionLock&) = delete;
    ExecutionLock& operator=(const ExecutionLock&) = delete;

    // A program that is given this descriptor holds the lock too, until it ends.
    [[nodiscard]] int descriptor() const { return descriptor_; }

  private:
    explicit ExecutionLock(int descriptor) : descriptor_(descriptor) {}

    int descriptor_ = -1;
};

}  // namespace zamofw

#endif
