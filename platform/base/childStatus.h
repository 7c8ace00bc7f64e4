#ifndef PLATFORM_BASE_CHILDSTATUS_H
#define PLATFORM_BASE_CHILDSTATUS_H

#include <csignal>

namespace zamo {

// Blocks SIGCHLD in this thread, so that a handler that reaps every child runs only after ours has
// been waited for. A handler that runs in another thread is out of reach: the status is lost then.
class BlockedSigchld {
  public:
    BlockedSigchld() noexcept;
    ~BlockedSigchld();
    BlockedSigchld(const BlockedSigchld&) = delete;
    BlockedSigchld& operator=(const BlockedSigchld&) = delete;

  private:
    sigset_t previous_;
};

// While one of these lives, an ended child waits for its parent even when the process ignores
// SIGCHLD. The first one changes the process's disposition and the last one restores it, unless
// somebody else has changed it meanwhile. Every library that links this counts its own ones.
class KeptChildStatus {
  public:
    KeptChildStatus();
    ~KeptChildStatus();
    KeptChildStatus(const KeptChildStatus&) = delete;
    KeptChildStatus& operator=(const KeptChildStatus&) = delete;
};

}  // namespace zamo

#endif
