#include "posix/groupSignal.h"

#include <sys/wait.h>

#include <csignal>

namespace posix {

bool endedByParentsSignal(int waitStatus) noexcept {
    sigset_t pending = {};
    return WIFSIGNALED(waitStatus) && sigpending(&pending) == 0 &&
           sigismember(&pending, WTERMSIG(waitStatus)) == 1;
}

}  // namespace posix
