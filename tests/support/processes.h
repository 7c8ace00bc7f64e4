// Other processes, and waiting for them.
#ifndef TESTS_SUPPORT_PROCESSES_H
#define TESTS_SUPPORT_PROCESSES_H

#include <sys/types.h>

#include <functional>
#include <string>

namespace test {

// Runs a shell command and returns its output; the test fails when the command does.
std::string shell(const std::string& command);

// Runs the action in another process. One that hangs is ended after two minutes.
pid_t startProcess(const std::function<int()>& action);

// The exit status of the process, or -1 when a signal ended it.
int waitFor(pid_t process);

int inChild(const std::function<int()>& action);

// Waits until the condition holds; false after a minute.
bool eventually(const std::function<bool()>& condition);

// False where root is the only user of its namespace.
bool canChangeOwners();

}  // namespace test

#endif
