// Sessions of the command: each line that begins with "$ " is a shell command, below it what it
// prints on both streams, and "-> N" when its exit status is not 0.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/files.h"

namespace {

std::string run(const std::string& command) {
    FILE* const pipe = popen(("exec 2>&1; " + command).c_str(), "re");
    if (pipe == nullptr) {
        return "the shell cannot be started\n";
    }
    std::string output;
    std::array<char, 4096> buffer = {};
    for (std::size_t count = 0; (count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
        output.append(buffer.data(), count);
    }
    const int status = pclose(pipe);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        output += "-> " + std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1) + "\n";
    }
    return output;
}

std::string played(const std::string& path) {
    std::ifstream file(path);
    std::string text;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("$ ", 0) == 0) {
            text += line + "\n" + run(line.substr(2));
        } else if (line.empty() || line[0] == '#') {
            text += line + "\n";
        }
    }
    return text;
}

class CommandSession : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        for (const char* const directory :
             {"/usr/zamo/etc/firewall.d", "/var/lib/zamofw", "/var/log/zamofw"}) {
            std::filesystem::remove_all(directory);
        }
        std::filesystem::create_directories("/usr/zamo/etc/firewall.d");
        // Sessions run the program as another user too, and the checkout may be in here.
        using std::filesystem::perms;
        std::filesystem::permissions("/root", perms::group_exec | perms::others_exec,
                                     std::filesystem::perm_options::add);
        for (const char* const variable : {"SUDO_USER", "VISUAL", "EDITOR"}) {
            (void)unsetenv(variable);
        }
        // Who calls from afar is looked for in the processes above, too; the empty text ends that.
        (void)setenv("SSH_CONNECTION", "", 1);
        (void)setenv("COMPLETION", COMPLETION_DIRECTORY, 1);
        (void)setenv("TESTS", TEST_DIRECTORY, 1);
        const char* const path = std::getenv("PATH");
        (void)setenv("PATH",
                     (PROGRAM_DIRECTORY ":" + std::string(path == nullptr ? "" : path)).c_str(), 1);
    }
};

TEST_P(CommandSession, goesAsWritten) {
    const std::string path = std::string(SESSION_DIRECTORY "/") + GetParam() + ".txt";
    EXPECT_EQ(played(path), test::readFile(path));
}

INSTANTIATE_TEST_SUITE_P(All, CommandSession,
                         testing::Values("wrongWords", "profiles", "history", "catalogue", "check",
                                         "meaning", "completion", "watch"),
                         [](const auto& session) { return std::string(session.param); });

// Those that look at the kernel run with both variants of iptables.
INSTANTIATE_TEST_SUITE_P(Kernel, CommandSession,
                         testing::Values("rehearse", "verify", "start", "trial", "doctor",
                                         "hostile"),
                         [](const auto& session) { return std::string(session.param); });

}  // namespace
