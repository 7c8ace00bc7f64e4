#include "platform/base/childProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>

#include "platform/base/watchedChild.h"
#include "posix/descriptor.h"
#include "posix/groupSignal.h"

namespace zamo {
namespace {

constexpr const char* kDefaultEnvironment[] = {kPathVariable, nullptr};

// The calls of this family return an error number; only memory can be short.
void require(int error) {
    if (error != 0) {
        throw std::bad_alloc();
    }
}

// What the child does with its descriptors before the program starts.
class FileActions {
  public:
    FileActions() { require(posix_spawn_file_actions_init(&actions_)); }
    ~FileActions() { (void)posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void openNull(int fd, int flags) {
        require(posix_spawn_file_actions_addopen(&actions_, fd, "/dev/null", flags, 0));
    }
    void duplicate(int from, int to) {
        require(posix_spawn_file_actions_adddup2(&actions_, from, to));
    }
    void closeFrom(int first) {
        require(posix_spawn_file_actions_addclosefrom_np(&actions_, first));
    }
    const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_;
};

// Default signals, and a process group or session of its own.
class Attributes {
  public:
    explicit Attributes(short group) {
        require(posix_spawnattr_init(&attributes_));
        sigset_t signals;
        // sigfillset() would leave out two signals that the C library uses; the program would then
        // ignore them.
        memset(&signals, 0xff, sizeof signals);
        require(posix_spawnattr_setsigdefault(&attributes_, &signals));
        sigemptyset(&signals);
        require(posix_spawnattr_setsigmask(&attributes_, &signals));
        require(posix_spawnattr_setpgroup(&attributes_, 0));
        require(posix_spawnattr_setflags(
            &attributes_,
            static_cast<short>(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | group)));
    }
    ~Attributes() { (void)posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const posix_spawnattr_t* get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_;
};

bool hasControllingTerminal() {
    const auto terminal = posix::openFile("/dev/tty", O_RDONLY | O_NOCTTY | O_NONBLOCK);
    return terminal || errno != ENXIO;
}

// In a group of its own, a program does not get what the terminal sends to the caller's group: a
// hangup or Ctrl-C would otherwise end it in the middle of its work. But the terminal stops a
// background group that reads from it (or writes to it after `stty tostop`), and the caller would
// wait for it without end. There, the program gets a session without a terminal. A session is not
// the rule because the kernel schedules each one apart (autogroup), which delays starts on a busy
// machine.
const posix_spawnattr_t* chooseAttributes() {
    static const Attributes ownGroup(POSIX_SPAWN_SETPGROUP);
    static const Attributes ownSession(POSIX_SPAWN_SETSID);
    return hasControllingTerminal() ? ownSession.get() : ownGroup.get();
}

// A close-on-exec descriptor with this number is some file of the caller, not a standard stream.
bool isInheritable(int fd) {
    const int flags = fcntl(fd, F_GETFD);
    return flags >= 0 && (flags & FD_CLOEXEC) == 0;
}

void fill(FileActions& actions, const ChildSetup& setup) {
    if (setup.input >= 0) {
        actions.duplicate(setup.input, STDIN_FILENO);
    } else {
        actions.openNull(STDIN_FILENO, O_RDONLY);
    }
    if (setup.output >= 0) {
        actions.duplicate(setup.output, STDOUT_FILENO);
    } else if (!isInheritable(STDOUT_FILENO)) {
        actions.openNull(STDOUT_FILENO, O_WRONLY);
    }
    // Without it, the program would print its errors into the next file that it opens.
    if (!isInheritable(STDERR_FILENO)) {
        actions.openNull(STDERR_FILENO, O_WRONLY);
    }
    actions.closeFrom(STDERR_FILENO + 1);
}

// Input from /dev/null, both outputs inherited: used by nearly every start, so it is built once.
class UsualActions : public FileActions {
  public:
    UsualActions() {
        openNull(STDIN_FILENO, O_RDONLY);
        closeFrom(STDERR_FILENO + 1);
    }
    static bool suit(const ChildSetup& setup) {
        return setup.input < 0 && setup.output < 0 && isInheritable(STDOUT_FILENO) &&
               isInheritable(STDERR_FILENO);
    }
};

}  // namespace

pid_t startChild(const char* path, const char* const argv[], const ChildSetup& setup) try {
    static const UsualActions usualActions;
    const bool isUsual = UsualActions::suit(setup);
    FileActions ownActions;
    if (!isUsual) {
        fill(ownActions, setup);
    }
    const auto* const actions = isUsual ? usualActions.get() : ownActions.get();

    const char* const* environment =
        setup.environment != nullptr ? setup.environment : kDefaultEnvironment;
    pid_t child = -1;
    // posix_spawn takes the lists as non-const and does not change them.
    const int error = posix_spawn(&child,
                                  path,
                                  actions,
                                  chooseAttributes(),
                                  const_cast<char* const*>(argv),
                                  const_cast<char* const*>(environment));
    if (error == 0) {
        return child;
    }
    errno = error;
    return -1;
} catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return -1;
}

int waitForChild(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return status;
}

int runChild(const char* path, const char* const argv[], const char* const* environment) {
    ChildSetup setup;
    setup.environment = environment;
    for (int start = 1;; ++start) {
        WatchedChild child;
        const int status = child.start(path, argv, setup) ? child.wait() : -1;
        if (status < 0 || start == posix::kMaxStarts || !posix::endedByParentsSignal(status)) {
            return status;
        }
    }
}

}  // namespace zamo
