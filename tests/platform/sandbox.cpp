#include "sandbox.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

static std::vector<std::string> logLines;

void writeFile(const std::string& path, const std::string& text, unsigned mode) {
    std::ofstream(path) << text;
    ASSERT_EQ(0, chmod(path.c_str(), mode)) << path;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

Directory::Directory(std::string path) : path_(std::move(path)) {
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
}

Directory::~Directory() { std::filesystem::remove_all(path_); }

void shell(const std::string& command) { ASSERT_EQ(0, system(command.c_str())) << command; }

bool canChangeOwners() {
    const std::string map = readFile("/proc/self/uid_map");
    return map.find("4294967295") != std::string::npos;
}

int inChild(const std::function<int()>& action) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        _exit(action());
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 60000; ++i) {
        if (condition()) return true;
        usleep(1000);
    }
    return false;
}

std::vector<std::string> takeLog() { return std::exchange(logLines, {}); }

// <syslog.h> is not included: fortified, it defines the first one inline and calls the second.
// NOLINTBEGIN(clang-analyzer-valist.Uninitialized): the checker does not see va_start()
extern "C" __attribute__((visibility("default"))) void syslog(int, const char* format, ...) {
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    (void)vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    logLines.emplace_back(line);
}

// NOLINTNEXTLINE(bugprone-reserved-identifier): the C library's name
extern "C" __attribute__((visibility("default"))) void __syslog_chk(int priority, int,
                                                                    const char* format, ...) {
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    (void)vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    syslog(priority, "%s", line);
}
// NOLINTEND(clang-analyzer-valist.Uninitialized)
