// A packet filter that nobody else sees.
#ifndef COMMAND_APPLY_SCRATCHNETWORK_H
#define COMMAND_APPLY_SCRATCHNETWORK_H

#include "posix/descriptor.h"

namespace zamofw {

// While this lives, the process and what it starts are in a network namespace of their own, where
// the packet filter is empty and no packet comes along. One may be made within another.
class ScratchNetwork {
  public:
    ScratchNetwork();
    ~ScratchNetwork();
    ScratchNetwork(const ScratchNetwork&) = delete;
    ScratchNetwork& operator=(const ScratchNetwork&) = delete;

    // False where the system allows none; errno says why.
    [[nodiscard]] bool isEntered() const { return entered_; }

  private:
    posix::Descriptor own_;
    bool entered_ = false;
};

}  // namespace zamofw

#endif
