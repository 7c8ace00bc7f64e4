#include "command/apply/xtablesLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/time.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

#include "command/apply/lockHolders.h"
#include "command/apply/programs.h"
#include "command/console.h"

namespace zamofw {
namespace {

volatile std::sig_atomic_t secondsPassed = 0;

void countSecond(int) {
    secondsPassed = secondsPassed + 1;
}

// Interrupts what waits in the kernel once a second: the kernel wakes whoever waits for a lock in
// turn, and one that asks again and again may never get it.
class Ticker {
  public:
    Ticker() {
        secondsPassed = 0;
        struct sigaction action = {};
        action.sa_handler = countSecond;
        (void)sigaction(SIGALRM, &action, &previous_);
        sigset_t alarm;
        sigemptyset(&alarm);
        sigaddset(&alarm, SIGALRM);
        (void)pthread_sigmask(SIG_UNBLOCK, &alarm, &previousMask_);
        const itimerval everySecond = {{1, 0}, {1, 0}};
        (void)setitimer(ITIMER_REAL, &everySecond, nullptr);
    }
    ~Ticker() {
        const itimerval never = {};
        (void)setitimer(ITIMER_REAL, &never, nullptr);
        (void)pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
        (void)sigaction(SIGALRM, &previous_, nullptr);
    }
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

  private:
    struct sigaction previous_ = {};
    sigset_t previousMask_ = {};
};

bool waitForLock(int file) {
    const Ticker ticker;
    while (flock(file, LOCK_EX) != 0) {
        if (errno != EINTR || secondsPassed >= std::atoi(kLockSeconds)) {
            return false;
        }
    }
    return true;
}

}  // namespace

XtablesLock::XtablesLock() : file_(posix::openFile(kXtablesLock, O_RDONLY | O_CREAT, 0600)) {
    if (!file_) {
        failed(std::string("the xtables lock ") + kXtablesLock +
               " cannot be opened: " + std::strerror(errno));
    }
    if (flock(file_.get(), LOCK_EX | LOCK_NB) == 0 || waitForLock(file_.get())) {
        return;
    }
    if (errno != EINTR) {
        failed(std::string("the xtables lock ") + kXtablesLock +
               " cannot be taken: " + std::strerror(errno));
    }
    xtablesLockIsHeld("");
}

void xtablesLockIsHeld(const char* words) {
    failed("the xtables lock " + std::string(kXtablesLock) + " was not free within " +
               kLockSeconds + " seconds" + lockHolders(kXtablesLock) +
               (*words == '\0' ? "" : "\n") + words,
           "another program is changing the packet filter; try again when it has ended");
}

}  // namespace zamofw
