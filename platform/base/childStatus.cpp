#include "platform/base/childStatus.h"

#include <pthread.h>
#include <sys/wait.h>

#include <cerrno>
#include <mutex>

namespace zamo {
namespace {

struct Disposition {
    std::mutex mutex;
    int users = 0;
    bool replaced = false;
    struct sigaction previous = {};
};

// Never destroyed: a stream may still be open when the process's static objects go.
Disposition& disposition() {
    static Disposition& instance = *new Disposition;
    return instance;
}

bool losesChildren(const struct sigaction& action) {
    return action.sa_handler == SIG_IGN || (action.sa_flags & SA_NOCLDWAIT) != 0;
}

void replaceIgnoring(Disposition& state) {
    struct sigaction current = {};
    if (sigaction(SIGCHLD, nullptr, &current) != 0 || !losesChildren(current)) return;

    state.previous = current;
    if (current.sa_handler == SIG_IGN) current.sa_handler = SIG_DFL;
    current.sa_flags &= ~SA_NOCLDWAIT;
    state.replaced = sigaction(SIGCHLD, &current, nullptr) == 0;
}

bool isAsReplaced(const Disposition& state) {
    const auto expected =
        state.previous.sa_handler == SIG_IGN ? SIG_DFL : state.previous.sa_handler;
    struct sigaction current = {};
    return sigaction(SIGCHLD, nullptr, &current) == 0 && current.sa_handler == expected;
}

void restoreIgnoring(Disposition& state) {
    state.replaced = false;
    if (!isAsReplaced(state) || sigaction(SIGCHLD, &state.previous, nullptr) != 0) return;

    // Children of the process that ended meanwhile were meant to vanish by themselves.
    while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
}

}  // namespace

BlockedSigchld::BlockedSigchld() noexcept : previous_() {
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGCHLD);
    (void)pthread_sigmask(SIG_BLOCK, &blocked, &previous_);
}

BlockedSigchld::~BlockedSigchld() {
    (void)pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

KeptChildStatus::KeptChildStatus() {
    Disposition& state = disposition();
    const std::lock_guard lock(state.mutex);
    ++state.users;
    if (!state.replaced) replaceIgnoring(state);
}

KeptChildStatus::~KeptChildStatus() {
    const int saved = errno;
    Disposition& state = disposition();
    const std::lock_guard lock(state.mutex);
    if (--state.users == 0 && state.replaced) restoreIgnoring(state);
    errno = saved;
}

}  // namespace zamo
