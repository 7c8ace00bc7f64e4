#include <zamo/core.h>

#include <pthread.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <future>
#include <thread>
#include <utility>

#include "platform/base/childProcess.h"
#include "platform/base/export.h"
#include "platform/base/fail.h"

namespace {

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

int run(const char* path, const char* const argv[]) {
    const int status = zamo::runChild(path, argv);
    if (status < 0) return ZAMO_FAIL(ZAMO_ERR_SYSTEM);
    return status == 0 ? 0 : -1;
}

// An own thread waits for the program, so that it leaves no zombie. The thread starts it as well:
// once the program runs, nothing is left that could fail.
int startInBackground(const char* path, const char* const argv[]) {
    std::promise<int> promise;
    std::future<int> error = promise.get_future();
    {
        const AllSignalsBlocked blocked;
        std::thread([path, argv, started = std::move(promise)]() mutable {
            const pid_t child = zamo::startChild(path, argv);
            started.set_value(child < 0 ? errno : 0);
            if (child > 0) (void)zamo::waitForChild(child);
        }).detach();
    }
    errno = error.get();
    return errno == 0 ? 0 : ZAMO_FAIL(ZAMO_ERR_SYSTEM);
}

}  // namespace

ZAMO_EXPORT int VLIBCExecv(const char* path, const char* const argv[], int wait) try {
    if (!path || !argv || !argv[0]) return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    return wait != 0 ? run(path, argv) : startInBackground(path, argv);
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}
