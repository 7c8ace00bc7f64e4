#ifndef LIBRARY_CONTROLLER_DEFERREDSIGNALS_H
#define LIBRARY_CONTROLLER_DEFERREDSIGNALS_H

#include <csignal>

namespace FW {

// Holds back the signals that usually end a program (HUP, INT, QUIT and TERM) from the calling
// thread. Those that arrive meanwhile take effect at the end of the scope.
class DeferredSignals {
  public:
    DeferredSignals() noexcept;
    ~DeferredSignals();
    DeferredSignals(const DeferredSignals&) = delete;
    DeferredSignals& operator=(const DeferredSignals&) = delete;

  private:
    sigset_t previous_ = {};
};

}  // namespace FW

#endif
