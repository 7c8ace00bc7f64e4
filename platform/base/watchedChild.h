// A started program whose status is not lost, whatever else the process does with its children.
#ifndef PLATFORM_BASE_WATCHEDCHILD_H
#define PLATFORM_BASE_WATCHEDCHILD_H

#include <sys/types.h>

#include <memory>
#include <thread>

#include "platform/base/childProcess.h"

namespace zamo {

// Another thread or a SIGCHLD handler may wait for any child and so take the status of ours, and a
// process that ignores SIGCHLD gets none. Where this is possible, a thread starts the program
// through a process that shares our memory and is no ordinary child: waitpid(-1) does not see it,
// and its own children are out of everybody's reach. It costs about 0.1 ms, so it is not the rule.
class WatchedChild {
  public:
    WatchedChild() = default;
    WatchedChild(WatchedChild&&) = default;
    WatchedChild& operator=(WatchedChild&&) = delete;
    // Must have been waited for, or detached, when it was started.
    ~WatchedChild() = default;

    // False, with errno set, when the program cannot be started. Throws when there is no memory.
    [[nodiscard]] bool start(const char* path, const char* const argv[], const ChildSetup& setup);
    [[nodiscard]] bool startWithThread(const char* path,
                                       const char* const argv[],
                                       const ChildSetup& setup);

    // The wait status, or -1 with errno set.
    [[nodiscard]] int wait();

    // Lets the thread go on alone.
    void detach();

  private:
    struct Run;

    std::shared_ptr<Run> run_;  // null when the program is a direct child
    std::thread thread_;
    pid_t child_ = -1;
};

}  // namespace zamo

#endif
