#include "library/controller/deferredSignals.h"

#include <array>

namespace FW {
namespace {

constexpr std::array<int, 4> kDeferred = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

}  // namespace

DeferredSignals::DeferredSignals() noexcept {
    sigset_t signals = {};
    sigemptyset(&signals);
    for (const int signal : kDeferred) {
        sigaddset(&signals, signal);
    }
    // Neither this call nor the one below can fail: their arguments are valid.
    (void)pthread_sigmask(SIG_BLOCK, &signals, &previous_);
}

DeferredSignals::~DeferredSignals() {
    (void)pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

}  // namespace FW
