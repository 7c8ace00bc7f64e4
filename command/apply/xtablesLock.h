#ifndef COMMAND_APPLY_XTABLESLOCK_H
#define COMMAND_APPLY_XTABLESLOCK_H

#include "posix/descriptor.h"

namespace zamofw {

// The lock that the legacy programs share, until the end of the scope: nobody else changes a table
// meanwhile. Throws Failure when it is not free within kLockSeconds.
class XtablesLock {
  public:
    XtablesLock();

    // A program that is given this descriptor holds the lock too, until it ends.
    [[nodiscard]] int descriptor() const { return file_.get(); }

  private:
    posix::Descriptor file_;
};

// Ends the call, naming the holder. `words` are those of a program that waited in vain.
[[noreturn]] void xtablesLockIsHeld(const char* words);

}  // namespace zamofw

#endif
