#include "tests/support/processes.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/support/files.h"

namespace test {

std::string shell(const std::string& command) {
    std::string output;
    FILE* const stream = popen(command.c_str(), "r");
    char buffer[4096];
    while (const std::size_t count = fread(buffer, 1, sizeof buffer, stream)) {
        output.append(buffer, count);
    }
    EXPECT_EQ(pclose(stream), 0) << command << "\n" << output;
    return output;
}

pid_t startProcess(const std::function<int()>& action) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(120);
        _exit(action());
    }
    return child;
}

int waitFor(pid_t process) {
    int status = 0;
    return waitpid(process, &status, 0) == process && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int inChild(const std::function<int()>& action) { return waitFor(startProcess(action)); }

bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 60000; ++i) {
        if (condition()) {
            return true;
        }
        usleep(1000);
    }
    return false;
}

bool canChangeOwners() {
    return readFile("/proc/self/uid_map").find("4294967295") != std::string::npos;
}

}  // namespace test
