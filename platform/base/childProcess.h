#ifndef PLATFORM_BASE_CHILDPROCESS_H
#define PLATFORM_BASE_CHILDPROCESS_H

#include <sys/types.h>

namespace zamo {

// A program's whole environment, unless the caller sets another.
constexpr const char* kPathVariable = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";

struct ChildSetup {
    const char* const* environment = nullptr;  // null: PATH alone
    int input = -1;                            // -1: /dev/null
    int output = -1;                           // -1: the caller's standard output
};

// Starts the program `path` without a shell, with no other descriptor than 0, 1 and 2, an empty
// signal mask, the default dispositions and a process group of its own. If the caller has a
// controlling terminal, the program also gets a session of its own and so has none. The cost does
// not grow with the caller's memory. `input` and `output` must be above 2. -1 with errno set when
// it cannot be started.
[[nodiscard]] pid_t startChild(const char* path,
                               const char* const argv[],
                               const ChildSetup& setup = {});

// The wait status, or -1 with errno set.
[[nodiscard]] int waitForChild(pid_t child);

// Starts the program and waits for it: the wait status, or -1 with errno set. No other part of the
// process can take the status. Throws when there is no memory or thread.
[[nodiscard]] int runChild(const char* path,
                           const char* const argv[],
                           const char* const* environment = nullptr);

}  // namespace zamo

#endif
