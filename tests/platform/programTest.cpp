#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <utmp.h>

#include <csignal>
#include <cstdlib>
#include <thread>

#include "tests/platform/host.h"

namespace {

// A list by the shell itself, which opens nothing for it.
const std::string kListDescriptors =
    "i=0; while [ $i -lt 400 ]; do [ -e /proc/$$/fd/$i ] && printf '%s ' $i; i=$((i+1)); done; ";

int run(const std::string& command) {
    const char* const argv[] = {"/bin/sh", "-c", command.c_str(), nullptr};
    return VLIBCExecv(argv[0], argv, 1);
}

FILE* open(const char* mode, const std::string& command) {
    const char* const argv[] = {"/bin/sh", "-c", command.c_str(), nullptr};
    return VLIBCPopen(mode, argv);
}

std::string outputOf(const std::string& command) {
    FILE* stream = open("r", command);
    char text[512];
    const size_t length = stream != nullptr ? fread(text, 1, sizeof text, stream) : 0;
    return stream != nullptr && VLIBCPclose(stream) == 0 ? std::string(text, length) : "failed";
}

TEST(Program, TellsHowItEnded) {
    const Directory place("/tmp/program");
    writeFile(place / "plain", "exit 0\n", 0644);
    writeFile(place / "noProgram", "exit 0\n", 0755);
    EXPECT_EQ(run("exit 0"), 0);
    EXPECT_EQ(run("exit 3"), -1);
    EXPECT_EQ(run("kill -9 $$"), -1);
    EXPECT_EQ(WTERMSIG(VLIBCPclose(open("r", "kill -9 $$"))), SIGKILL);
    EXPECT_EQ(open("rw", "exit 0"), nullptr);
    for (const char* name : {"missing", "plain", "noProgram", "."}) {
        const std::string path = place / name;
        const char* const argv[] = {path.c_str(), nullptr};
        for (const int wait : {0, 1}) {
            EXPECT_EQ(VLIBCExecv(argv[0], argv, wait), -1) << name;
        }
        EXPECT_EQ(VLIBCPopen("r", argv), nullptr) << name;
    }
    FILE* foreign = fopen("/dev/null", "r");
    EXPECT_EQ(VLIBCPclose(foreign), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(fclose(foreign), 0) << "a stream of somebody else's is left alone";
}

TEST(Program, SeesNothingOfTheCallerButItsStandardOutputs) {
    const Directory place("/tmp/streams");
    const std::string looks =
        kListDescriptors + "readlink /proc/$$/fd/0; tr '\\0' '\\n' </proc/$$/environ";
    const std::string nothing = "0 1 2 /dev/null\nPATH=/usr/sbin:/usr/bin:/sbin:/bin\n";
    tryInChild("a caller with files, signals and variables", [&] {
        for (int i = 0; i < 300; ++i) {
            (void)(::open("/", O_RDONLY) >= 0);
        }
        FILE* other = open("w", "cat >/dev/null");
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, nullptr);
        signal(SIGHUP, SIG_IGN);
        setenv("SECRET", "1", 1);
        EXPECT_EQ(outputOf(looks), nothing);
        EXPECT_EQ(run("exec >/tmp/streams/seen; " + looks), 0);
        EXPECT_EQ(readFile(place / "seen"), nothing);
        // The first program of all: a shell that has run another one has changed its signals.
        EXPECT_EQ(outputOf("exec grep '^Sig[BI]' /proc/self/status"),
                  "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
        EXPECT_EQ(VLIBCPclose(other), 0);
    });
    for (const std::string closed : {"0", "1", "2", "012"}) {
        tryInChild("a caller without stream " + closed, [&] {
            for (const char fd : closed) {
                close(fd - '0');
            }
            EXPECT_EQ(outputOf(kListDescriptors), "0 1 2 ");
            FILE* sink = open("w", "cat >/tmp/streams/text; exit 5");
            EXPECT_GT(fileno(sink), 2);
            EXPECT_GE(fputs("text", sink), 0);
            EXPECT_EQ(WEXITSTATUS(VLIBCPclose(sink)), 5);
            EXPECT_EQ(readFile(place / "text"), "text");
            EXPECT_EQ(run("cd /proc/$$/fd; [ -e 0 -a -e 1 -a -e 2 ]"), 0);
        });
    }
}

void reapEverything(int) {
    const int saved = errno;
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
        continue;
    }
    errno = saved;
}

// Whatever takes the status of the caller's children: a handler, an ignored signal, a thread.
TEST(Program, KeepsItsStatusWhateverTheCallerDoesWithItsChildren) {
    const struct {
        const char* name;
        void (*handler)(int);
        int flags;
        bool reaps;
    } rows[] = {{"thread", SIG_DFL, 0, true},
                {"no zombies", SIG_DFL, SA_NOCLDWAIT, false},
                {"ignored", SIG_IGN, 0, false},
                {"handler", reapEverything, 0, false},
                {"handler and thread", reapEverything, 0, true}};
    for (const auto& row : rows) {
        tryInChild(row.name, [&row] {
            struct sigaction action = {};
            action.sa_handler = row.handler;
            action.sa_flags = row.flags;
            sigaction(SIGCHLD, &action, nullptr);
            if (row.reaps) {
                std::thread([] {
                    for (;;) {
                        (void)waitpid(-1, nullptr, 0);
                    }
                }).detach();
            }
            for (int i = 0; i < 50; ++i) {
                EXPECT_EQ(run("exit 0"), 0);
                EXPECT_EQ(run("exit 1"), -1);
            }
            FILE* stream = open("w", "cat; exit 7");
            const pid_t ended = startProcess([] { return 0; });
            siginfo_t info;
            (void)waitid(P_PID, static_cast<id_t>(ended), &info, WEXITED | WNOWAIT);
            sigaction(SIGCHLD, nullptr, &action);
            EXPECT_EQ(action.sa_handler, row.handler);
            EXPECT_EQ(action.sa_flags & SA_NOCLDWAIT, row.flags);
            EXPECT_EQ(WEXITSTATUS(VLIBCPclose(stream)), 7);
        });
    }
}

TEST(Program, LeavesNothingBehindAndHoldsNothingOpen) {
    const Directory place("/tmp/left");
    tryInChild("with several threads", [&place] {
        std::thread([] {}).join();
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
        FILE* stream = open("w", "cat >/tmp/left/text");
        close(ends[1]);
        char end = 0;
        // Once the program runs, nobody else has a copy of the pipe's other end.
        EXPECT_TRUE(eventually([&] { return read(ends[0], &end, 1) == 0; }));
        EXPECT_GE(fputs("text", stream), 0);
        EXPECT_EQ(VLIBCPclose(stream), 0);
        EXPECT_EQ(readFile(place / "text"), "text");
        const char* const missing[] = {"/tmp/left/missing", nullptr};
        EXPECT_EQ(VLIBCExecv(missing[0], missing, 1), -1);
        EXPECT_EQ(VLIBCPopen("r", missing), nullptr);
        EXPECT_EQ(waitpid(-1, nullptr, __WALL | WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    });
}

// The caller has a terminal that stops background writers, or a session without one.
TEST(Program, IsOutOfReachOfTheCallersTerminal) {
    for (const bool interactive : {true, false}) {
        tryInChild(interactive ? "terminal" : "no terminal", [interactive] {
            int master = -1;
            int terminal = -1;
            struct termios settings = {};
            EXPECT_EQ(openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
            EXPECT_EQ(tcgetattr(terminal, &settings), 0);
            settings.c_lflag |= TOSTOP;
            EXPECT_EQ(tcsetattr(terminal, TCSANOW, &settings), 0);
            EXPECT_GE(interactive ? login_tty(terminal) : setsid(), 0);
            signal(SIGHUP, SIG_IGN);
            EXPECT_EQ(run("kill -s HUP -- -" + std::to_string(getpid()) + " && echo text"), 0);
            EXPECT_EQ(run("exec 2>&-; read -r line </dev/tty"), -1);
        });
    }
}

TEST(Program, RunsInTheBackgroundAndIsReaped) {
    const Directory place("/tmp/background");
    shell("mkfifo /tmp/background/gate");
    // The program waits at the FIFO until we read it.
    const char* const argv[] = {"/bin/sh", "-c", "echo $$ >/tmp/background/gate", nullptr};
    ASSERT_EQ(VLIBCExecv(argv[0], argv, 0), 0);
    const pid_t child = std::stoi(readFile(place / "gate"));
    EXPECT_TRUE(eventually([child] { return kill(child, 0) != 0; }));
}

}  // namespace
