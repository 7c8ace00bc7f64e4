#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <zamo/core.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/processes.h"

namespace {

using namespace test;

// A list by the shell itself, which opens nothing for it.
constexpr const char* kListDescriptors =
    "i=0; while [ $i -lt 400 ]; do [ -e /proc/$$/fd/$i ] && printf '%s ' $i; i=$((i+1)); done; :";

int runShell(const char* command) {
    const char* const argv[] = {"/bin/sh", "-c", command, nullptr};
    return VLIBCExecv(argv[0], argv, 1);
}

FILE* openShell(const char* mode, const char* command) {
    const char* const argv[] = {"/bin/sh", "-c", command, nullptr};
    return VLIBCPopen(mode, argv);
}

std::string outputOf(const char* command) {
    FILE* stream = openShell("r", command);
    char text[512];
    const size_t length = stream != nullptr ? fread(text, 1, sizeof text, stream) : 0;
    return stream != nullptr && VLIBCPclose(stream) == 0 ? std::string(text, length) : "failed";
}

void reapEverything(int) {
    const int saved = errno;
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
        continue;
    }
    errno = saved;
}

TEST(Program, GivesMinusOneUnlessItRanAndExitedWithZero) {
    const Directory place("/tmp/program");
    writeFile(place / "plain", "exit 0\n", 0644);
    writeFile(place / "noProgram", "exit 0\n", 0755);
    EXPECT_EQ(runShell("exit 0"), 0);
    EXPECT_EQ(runShell("exit 3"), -1);
    EXPECT_EQ(runShell("kill -9 $$"), -1);
    for (const char* name : {"missing", "plain", "noProgram", "."}) {
        const std::string path = place / name;
        const char* const argv[] = {path.c_str(), nullptr};
        for (const int wait : {0, 1}) {
            EXPECT_EQ(VLIBCExecv(argv[0], argv, wait), -1) << name;
        }
        EXPECT_EQ(VLIBCPopen("r", argv), nullptr) << name;
    }
}

TEST(Program, SeesNothingOfTheCallerButItsStandardOutputs) {
    const int result = inChild([] {
        for (int i = 0; i < 300; ++i) {
            (void)(open("/", O_RDONLY) >= 0);
        }
        FILE* other = openShell("w", "cat >/dev/null");
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, nullptr);
        signal(SIGHUP, SIG_IGN);
        setenv("SECRET", "1", 1);
        EXPECT_EQ(outputOf(kListDescriptors), "0 1 2 ");
        EXPECT_EQ(outputOf("readlink /proc/$$/fd/0"), "/dev/null\n");
        EXPECT_EQ(outputOf("tr '\\0' '\\n' </proc/$$/environ"),
                  "PATH=/usr/sbin:/usr/bin:/sbin:/bin\n");
        EXPECT_EQ(outputOf("exec grep '^Sig[BI]' /proc/self/status"),
                  "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
        EXPECT_EQ(VLIBCPclose(other), 0);
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(result, 0);
}

TEST(Program, WorksWhenTheCallerHasNoStandardStreams) {
    const Directory place("/tmp/streams");
    for (const std::vector<int>& closed : {std::vector{0}, {1}, {2}, {0, 1, 2}}) {
        const int result = inChild([&] {
            for (const int fd : closed) {
                close(fd);
            }
            if (outputOf(kListDescriptors) != "0 1 2 ") {
                return 1;
            }
            FILE* sink = openShell("w", "cat >/tmp/streams/text; exit 5");
            if (sink == nullptr || fileno(sink) <= 2 || fputs("text", sink) < 0) {
                return 2;
            }
            if (WEXITSTATUS(VLIBCPclose(sink)) != 5 || readFile(place / "text") != "text") {
                return 3;
            }
            // A lock file that got such a number would become the program's output.
            int lock = -1;
            if (!VLIBCFileLockTimeByFile("/tmp/streams/lock", 1, 0, &lock) || lock <= 2) {
                return 4;
            }
            return runShell("cd /proc/$$/fd; [ -e 0 -a -e 1 -a -e 2 ]") == 0 ? 0 : 5;
        });
        EXPECT_EQ(result, 0) << closed.size() << " closed from " << closed.front();
    }
}

// Whatever takes the status of the caller's children: a handler, an ignored signal, a thread.
TEST(Program, KeepsItsStatusWhateverTheCallerDoesWithItsChildren) {
    struct Row {
        void (*handler)(int);
        int flags;
        bool reaps;
    };
    const Row rows[] = {{SIG_DFL, 0, true},
                        {SIG_DFL, SA_NOCLDWAIT, false},
                        {SIG_IGN, 0, false},
                        {reapEverything, 0, false},
                        {reapEverything, 0, true}};
    for (const Row& row : rows) {
        const int result = inChild([&row] {
            struct sigaction action = {};
            action.sa_handler = row.handler;
            action.sa_flags = row.flags;
            sigaction(SIGCHLD, &action, nullptr);
            std::atomic<bool> done = false;
            std::thread reaper;
            if (row.reaps) {
                reaper = std::thread([&done] {
                    while (!done) {
                        (void)waitpid(-1, nullptr, 0);
                    }
                });
            }
            const auto finish = [&](int status) {
                done = true;
                if (row.reaps) {
                    reaper.join();
                }
                return status;
            };
            for (int i = 0; i < 50; ++i) {
                if (runShell("exit 0") != 0 || runShell("exit 1") != -1) {
                    return finish(1);
                }
            }
            FILE* stream = openShell("w", "cat; exit 7");
            const pid_t ended = fork();
            if (ended == 0) {
                _exit(0);
            }
            siginfo_t info;
            (void)waitid(P_PID, static_cast<id_t>(ended), &info, WEXITED | WNOWAIT);
            sigaction(SIGCHLD, nullptr, &action);
            const bool kept = action.sa_handler == row.handler &&
                              (action.sa_flags & SA_NOCLDWAIT) == (row.flags & SA_NOCLDWAIT);
            if (WEXITSTATUS(VLIBCPclose(stream)) != 7) {
                return finish(2);
            }
            if (!kept) {
                return finish(3);
            }
            return finish(outputOf("echo text") == "text\n" ? 0 : 4);
        });
        EXPECT_EQ(result, 0) << "row " << &row - rows;
    }
}

TEST(Program, LeavesNothingBehindAndHoldsNothingOpen) {
    const Directory place("/tmp/left");
    const int result = inChild([] {
        std::thread([] {}).join();  // several threads
        int ends[2];
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
            return 1;
        }
        FILE* stream = openShell("w", "cat >/tmp/left/text");
        close(ends[1]);
        char end = 0;
        // Once the program runs, nobody else has a copy of the pipe's other end.
        if (!eventually([&] { return read(ends[0], &end, 1) == 0; })) {
            return 2;
        }
        if (fputs("text", stream) < 0 || VLIBCPclose(stream) != 0) {
            return 3;
        }
        const char* const missing[] = {"/tmp/left/missing", nullptr};
        if (VLIBCExecv(missing[0], missing, 1) != -1 || VLIBCPopen("r", missing) != nullptr) {
            return 4;
        }
        return waitpid(-1, nullptr, __WALL | WNOHANG) == -1 && errno == ECHILD ? 0 : 5;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(readFile(place / "text"), "text");
}

// A new pseudo-terminal that stops background writers. It becomes the controlling terminal of the
// calling process, and its output too.
int takeTerminal() {
    const int master = open("/tmp/terminals/ptmx", O_RDWR | O_NOCTTY);
    int number = -1;
    int unlocked = 0;
    if (ioctl(master, TIOCSPTLCK, &unlocked) != 0 || ioctl(master, TIOCGPTN, &number) != 0 ||
        setsid() < 0) {
        return -1;
    }
    const int terminal = open(("/tmp/terminals/" + std::to_string(number)).c_str(), O_RDWR);
    struct termios settings = {};
    tcgetattr(terminal, &settings);
    settings.c_lflag |= TOSTOP;
    return tcsetattr(terminal, TCSANOW, &settings) == 0 ? dup2(terminal, 1) : -1;
}

TEST(Program, IsOutOfReachOfTheCallersTerminal) {
    const Directory place("/tmp/terminals");
    shell("mount -t devpts -o ptmxmode=0666 devpts /tmp/terminals");
    for (const bool interactive : {true, false}) {
        const int result = inChild([interactive] {
            if ((interactive ? takeTerminal() : setsid()) < 0) {
                return 1;
            }
            signal(SIGHUP, SIG_IGN);
            const std::string hangUp = "kill -s HUP -- -" + std::to_string(getpid());
            if (runShell((hangUp + " && echo text").c_str()) != 0) {
                return 2;
            }
            return runShell("exec 2>&-; read -r line </dev/tty") == -1 ? 0 : 3;
        });
        EXPECT_EQ(result, 0) << interactive;
    }
    shell("umount /tmp/terminals");
}

TEST(Program, RunsInTheBackgroundAndIsReaped) {
    const Directory place("/tmp/background");
    shell("mkfifo /tmp/background/gate");
    const char* const argv[] = {"/bin/sh", "-c", "cd /tmp/background; echo $$ >pid; : >gate",
                                nullptr};
    // The program waits at the FIFO until we read it.
    ASSERT_EQ(VLIBCExecv(argv[0], argv, 0), 0);
    ASSERT_TRUE(
        eventually([&] { return readFile(place / "pid").find('\n') != std::string::npos; }));
    const pid_t child = std::stoi(readFile(place / "pid"));
    EXPECT_EQ(kill(child, 0), 0);
    EXPECT_EQ(readFile(place / "gate"), "");
    EXPECT_TRUE(eventually([child] { return kill(child, 0) != 0; }));
}

TEST(Program, StreamsGiveTheWaitStatusAndForeignOnesAreLeftAlone) {
    EXPECT_EQ(WTERMSIG(VLIBCPclose(openShell("r", "kill -9 $$"))), SIGKILL);
    EXPECT_EQ(openShell("rw", "exit 0"), nullptr);
    FILE* foreign = fopen("/dev/null", "r");
    EXPECT_EQ(VLIBCPclose(foreign), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(fclose(foreign), 0);
}

}  // namespace
