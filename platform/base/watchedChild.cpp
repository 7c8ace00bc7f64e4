#include "platform/base/watchedChild.h"

#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/single_threaded.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>

// The C library's clone(). The thread sanitizer replaces the other name and takes a call for a fork
// of the whole program.
extern "C" int __clone(  // NOLINT(bugprone-reserved-identifier): the C library's own name
    int (*function)(void*),
    void* stack,
    int flags,
    void* argument,
    ...) noexcept;

namespace zamo {

struct WatchedChild::Run {
    Run(const char* programPath, const char* const programArgv[], const ChildSetup& childSetup)
        : path(programPath), argv(programArgv), setup(childSetup) {
        (void)sem_init(&started, /*pshared=*/0, 0);
    }
    ~Run() { (void)sem_destroy(&started); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    // Valid until `started` is posted.
    const char* path;
    const char* const* argv;
    ChildSetup setup;

    sem_t started = {};
    int startError = 0;
    int status = -1;
    int waitError = 0;

    void execute(bool isOwnProcess) noexcept;
};

namespace {

constexpr std::size_t kStackSize = std::size_t{128} * 1024;
constexpr int kHighestDescriptor = 65536;

// Keeps the process's signals away from a thread that is started meanwhile.
class AllSignalsBlocked {
  public:
    AllSignalsBlocked() noexcept : previous_() {
        sigset_t all;
        sigfillset(&all);
        (void)pthread_sigmask(SIG_SETMASK, &all, &previous_);
    }
    ~AllSignalsBlocked() { (void)pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

  private:
    sigset_t previous_;
};

// A cancelled thread must not leave a thread behind that nobody joins.
class CancellationDisabled {
  public:
    CancellationDisabled() noexcept {
        (void)pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous_);
    }
    ~CancellationDisabled() { (void)pthread_setcancelstate(previous_, nullptr); }
    CancellationDisabled(const CancellationDisabled&) = delete;
    CancellationDisabled& operator=(const CancellationDisabled&) = delete;

  private:
    int previous_ = PTHREAD_CANCEL_ENABLE;
};

bool losesStatus(const struct sigaction& action) {
    return action.sa_handler == SIG_IGN || (action.sa_flags & SA_NOCLDWAIT) != 0;
}

bool mayLoseStatus() {
    struct sigaction action = {};
    return __libc_single_threaded == 0 || sigaction(SIGCHLD, nullptr, &action) != 0 ||
           action.sa_handler != SIG_DFL || losesStatus(action);
}

// For the other process: its dispositions are its own, unlike its memory. Handlers do not matter,
// because all signals are blocked there.
void keepStatus() {
    struct sigaction action = {};
    if (sigaction(SIGCHLD, nullptr, &action) == 0 && losesStatus(action)) {
        (void)signal(SIGCHLD, SIG_DFL);
    }
}

// A long run must not keep the caller's pipes, locks and sockets open.
void closeEverything() {
    if (close_range(0, ~0U, 0) == 0) {
        return;
    }
    // Kernels before 5.9.
    for (int fd = 0; fd < kHighestDescriptor; ++fd) {
        (void)close(fd);
    }
}

}  // namespace

void WatchedChild::Run::execute(bool isOwnProcess) noexcept {
    if (isOwnProcess) {
        keepStatus();
    }
    const pid_t child = startChild(path, argv, setup);
    startError = child < 0 ? errno : 0;
    (void)sem_post(&started);
    if (child < 0) {
        return;
    }
    if (isOwnProcess) {
        closeEverything();
    }
    status = waitForChild(child);
    waitError = status < 0 ? errno : 0;
}

bool WatchedChild::start(const char* path, const char* const argv[], const ChildSetup& setup) {
    if (mayLoseStatus()) {
        return startWithThread(path, argv, setup);
    }
    child_ = startChild(path, argv, setup);
    return child_ >= 0;
}

bool WatchedChild::startWithThread(const char* path,
                                   const char* const argv[],
                                   const ChildSetup& setup) {
    const CancellationDisabled uncancelled;
    run_ = std::make_shared<Run>(path, argv, setup);
    {
        const AllSignalsBlocked blocked;
        thread_ = std::thread([run = run_] {
            // While the other process runs it uses this thread's stack and thread-local data, and
            // this thread sleeps (CLONE_VFORK). No exit signal makes it invisible to waitpid(-1).
            alignas(std::max_align_t) std::array<std::byte, kStackSize> stack;
            const auto execute = [](void* argument) {
                static_cast<Run*>(argument)->execute(/*isOwnProcess=*/true);
                return 0;
            };
            const pid_t other =
                __clone(execute, stack.data() + stack.size(), CLONE_VM | CLONE_VFORK, run.get());
            if (other < 0) {
                // User-mode emulators cannot do this; then the status may be lost.
                run->execute(/*isOwnProcess=*/false);
                return;
            }
            while (waitpid(other, nullptr, static_cast<int>(__WCLONE)) < 0 && errno == EINTR) {
                continue;
            }
        });
    }
    while (sem_wait(&run_->started) != 0) {
        continue;  // a signal handler has run
    }
    if (run_->startError == 0) {
        return true;
    }
    thread_.join();
    errno = run_->startError;
    return false;
}

int WatchedChild::wait() {
    if (run_ == nullptr) {
        return waitForChild(child_);
    }
    const CancellationDisabled uncancelled;
    thread_.join();
    errno = run_->waitError;
    return run_->status;
}

void WatchedChild::detach() {
    thread_.detach();
}

}  // namespace zamo
