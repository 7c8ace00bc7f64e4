#ifndef COMMAND_APPLY_EXECUTIONLOCK_H
#define COMMAND_APPLY_EXECUTIONLOCK_H

namespace zamofw {

// The lock under which one process at a time rebuilds the kernel's rules, the library's own. Held
// until the end of the scope. Throws Failure when it is not free within 30 seconds.
class ExecutionLock {
  public:
    ExecutionLock();
    ~ExecutionLock();
    ExecutionLock(const ExecutionLock&) = delete;
    ExecutionLock& operator=(const ExecutionLock&) = delete;

    // A program that is given this descriptor holds the lock too, until it ends.
    [[nodiscard]] int descriptor() const { return descriptor_; }

  private:
    int descriptor_ = -1;
};

}  // namespace zamofw

#endif
