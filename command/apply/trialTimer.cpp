#include "command/apply/trialTimer.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <vector>

#include "command/apply/bootTime.h"
#include "command/apply/program.h"
#include "command/console.h"
#include "posix/descriptor.h"

namespace zamofw {
namespace {

constexpr const char* kProcessName = "fw-trial";
constexpr const char* kSystemdRun = "/usr/bin/systemd-run";
constexpr const char* kSystemctl = "/usr/bin/systemctl";
// There when systemd is the first process of the system.
constexpr const char* kSystemdMark = "/run/systemd/system";

std::string ownProgram() {
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        failed("the program of this process is unknown: " + error.message());
    }
    return path;
}

bool isSystemdRunning() {
    struct stat status = {};
    return lstat(kSystemdMark, &status) == 0 && S_ISDIR(status.st_mode) &&
           access(kSystemdRun, X_OK) == 0;
}

pid_t mainProcessOf(const std::string& unit) {
    const ProgramResult shown =
        runProgram({kSystemctl, "show", "--property=MainPID", "--value", unit});
    return shown.status == 0 ? static_cast<pid_t>(std::atoi(shown.output.c_str())) : 0;
}

// The end of a session takes its processes along, those of a unit not.
bool startAsUnit(const std::string& trialId, pid_t& process) try {
    const std::string unit = "zamofw-trial-" + trialId + ".service";
    const ProgramResult result = runProgram({kSystemdRun,
                                             "--quiet",
                                             "--collect",
                                             "--no-ask-password",
                                             "--unit=" + unit,
                                             "--description=Takes back a trial of the firewall",
                                             "--service-type=exec",
                                             "--property=Restart=on-failure",
                                             "--property=StartLimitIntervalSec=0",
                                             "--",
                                             ownProgram(),
                                             "--quiet",
                                             "revert",
                                             "--when-due"});
    process = result.status == 0 ? mainProcessOf(unit) : 0;
    return result.status == 0;
} catch (const Failure&) {
    return false;
}

void throwOn(int error) {
    if (error != 0) {
        failed(std::string("the timer of the trial cannot be started: ") + std::strerror(error));
    }
}

// Everything that ties a process to its caller: streams, directory, signals, session.
class Detachment {
  public:
    Detachment() {
        throwOn(posix_spawn_file_actions_init(&actions_));
        throwOn(posix_spawnattr_init(&attributes_));
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            throwOn(posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", O_RDWR, 0));
        }
        throwOn(posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1));
        throwOn(posix_spawn_file_actions_addchdir_np(&actions_, "/"));
        sigset_t signals;
        // Not sigfillset(): it leaves out two that the C library uses.
        std::memset(&signals, 0xff, sizeof signals);
        throwOn(posix_spawnattr_setsigdefault(&attributes_, &signals));
        sigemptyset(&signals);
        throwOn(posix_spawnattr_setsigmask(&attributes_, &signals));
        throwOn(posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSID));
    }
    ~Detachment() {
        (void)posix_spawn_file_actions_destroy(&actions_);
        (void)posix_spawnattr_destroy(&attributes_);
    }
    Detachment(const Detachment&) = delete;
    Detachment& operator=(const Detachment&) = delete;

    [[nodiscard]] pid_t spawn(const std::string& path, std::vector<std::string> words) const {
        std::vector<char*> arguments;
        arguments.reserve(words.size() + 1);
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        std::string pathVariable = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
        const std::array<char*, 2> environment = {pathVariable.data(), nullptr};
        pid_t process = 0;
        throwOn(posix_spawn(
            &process, path.c_str(), &actions_, &attributes_, arguments.data(), environment.data()));
        return process;
    }

  private:
    posix_spawn_file_actions_t actions_ = {};
    posix_spawnattr_t attributes_ = {};
};

}  // namespace

pid_t startTrialTimer(const std::string& trialId) {
    pid_t process = 0;
    if (isSystemdRunning() && startAsUnit(trialId, process)) {
        return process;
    }
    return Detachment().spawn(ownProgram(), {kProcessName, "--quiet", "revert", "--when-due"});
}

void endTrialTimer(const TrialState& trial) {
    if (trial.timer <= 1 || trial.timer == getpid() || trial.boot != bootId()) {
        return;
    }
    // The number may have gone to another process; from here on it cannot.
    const posix::Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, trial.timer, 0)));
    if (process && startOfProcess(trial.timer) == trial.timerStart) {
        (void)syscall(SYS_pidfd_send_signal, process.get(), SIGTERM, nullptr, 0);
    }
}

void becomeTrialTimer() {
    (void)prctl(PR_SET_NAME, kProcessName);
    // systemd passes it on from a session that has lost its terminal.
    (void)std::signal(SIGHUP, SIG_IGN);
}

void waitUntil(std::int64_t deadline) {
    constexpr std::int64_t kPerSecond = 1'000'000'000;
    const posix::Descriptor timer(timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC));
    itimerspec at = {};
    at.it_value.tv_sec = deadline / kPerSecond;
    at.it_value.tv_nsec = deadline % kPerSecond;
    if (!timer || timerfd_settime(timer.get(), TFD_TIMER_ABSTIME, &at, nullptr) != 0) {
        failed(std::string("the time cannot be waited for: ") + std::strerror(errno));
    }
    std::uint64_t count = 0;
    while (read(timer.get(), &count, sizeof count) < 0 && errno == EINTR) {
    }
}

}  // namespace zamofw
