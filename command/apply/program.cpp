#include "command/apply/program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <new>
#include <sstream>
#include <utility>

#include "command/console.h"
#include "posix/file.h"

namespace zamofw {
namespace {

constexpr const char* kPathVariable = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
constexpr off_t kLargestOutput = off_t{64} << 20U;
constexpr int kInheritedNumber = STDERR_FILENO + 1;

[[noreturn]] void failedCall(const std::string& what) {
    failed(what + ": " + std::strerror(errno));
}

posix::Descriptor emptyMemoryFile() {
    // Kernels before 6.3 do not know that a file is not to be run, and some later ones insist.
    constexpr unsigned kNeverRun = 0x0008U;
    constexpr unsigned kFlags = MFD_CLOEXEC | MFD_ALLOW_SEALING;
    int fd = memfd_create("zamofw", kFlags | kNeverRun);
    if (fd < 0 && errno == EINVAL) {
        fd = memfd_create("zamofw", kFlags);
    }
    posix::Descriptor file = posix::aboveStandardStreams(posix::Descriptor(fd));
    if (!file) {
        failedCall("no file in memory can be made");
    }
    return file;
}

// A file that takes so much and no more; its offset tells how much was written.
posix::Descriptor outputFile() {
    posix::Descriptor file = emptyMemoryFile();
    if (ftruncate(file.get(), kLargestOutput) != 0 ||
        fcntl(file.get(), F_ADD_SEALS, F_SEAL_GROW | F_SEAL_SHRINK) != 0) {
        failedCall("a file in memory cannot be limited");
    }
    return file;
}

std::string textOf(const posix::Descriptor& file, const std::string& path) {
    const off_t size = lseek(file.get(), 0, SEEK_CUR);
    if (size < 0 || size >= kLargestOutput) {
        failed(path + " printed more than 64 MiB");
    }
    std::string text(static_cast<std::size_t>(size), '\0');
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count =
            pread(file.get(), &text[done], text.size() - done, static_cast<off_t>(done));
        if (count <= 0) {
            failedCall("the output of " + path + " cannot be read");
        }
        done += static_cast<std::size_t>(count);
    }
    return text;
}

// These calls return an error number; only memory can be short.
void require(int error) {
    if (error != 0) {
        throw std::bad_alloc();
    }
}

class FileActions {
  public:
    FileActions(int input, int output, int error, std::vector<int> inherited) {
        require(posix_spawn_file_actions_init(&actions_));
        if (input >= 0) {
            duplicate(input, STDIN_FILENO);
        } else {
            require(posix_spawn_file_actions_addopen(
                &actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
        }
        duplicate(output, STDOUT_FILENO);
        duplicate(error, STDERR_FILENO);
        int firstClosed = kInheritedNumber;
        // In ascending order none takes the number of one that comes later.
        std::sort(inherited.begin(), inherited.end());
        for (const int descriptor : inherited) {
            duplicate(descriptor, firstClosed++);
        }
        require(posix_spawn_file_actions_addclosefrom_np(&actions_, firstClosed));
    }
    ~FileActions() { (void)posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    void duplicate(int from, int to) {
        require(posix_spawn_file_actions_adddup2(&actions_, from, to));
    }

    posix_spawn_file_actions_t actions_ = {};
};

class Attributes {
  public:
    Attributes() {
        require(posix_spawnattr_init(&attributes_));
        sigset_t signals;
        // Not sigfillset(): it leaves out two that the C library uses, and the program would
        // ignore them.
        std::memset(&signals, 0xff, sizeof signals);
        require(posix_spawnattr_setsigdefault(&attributes_, &signals));
        sigemptyset(&signals);
        require(posix_spawnattr_setsigmask(&attributes_, &signals));
        require(posix_spawnattr_setpgroup(&attributes_, 0));
        require(posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP));
    }
    ~Attributes() { (void)posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_ = {};
};

[[noreturn]] void cannotStart(const std::string& path, int error) {
    const std::string package = path.find("tables") == std::string::npos ? "" : " iptables";
    failed(path + " cannot be started: " + std::strerror(error),
           error == ENOENT ? "install the package" + package + " that holds it" : "");
}

}  // namespace

posix::Descriptor memoryFile(std::string_view text) {
    posix::Descriptor file = emptyMemoryFile();
    if (!posix::writeWhole(file.get(), text)) {
        failedCall("a file in memory cannot be written");
    }
    return file;
}

Channel::Channel() {
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        failedCall("no channel to another process can be made");
    }
    posix::Descriptor first(ends[0]);
    posix::Descriptor second(ends[1]);
    ours = posix::aboveStandardStreams(std::move(first));
    theirs = posix::aboveStandardStreams(std::move(second));
    if (!ours || !theirs) {
        failedCall("no channel to another process can be made");
    }
}

void keepStatusOfChildren() {
    struct sigaction action = {};
    if (sigaction(SIGCHLD, nullptr, &action) == 0 &&
        (action.sa_handler == SIG_IGN || (action.sa_flags & SA_NOCLDWAIT) != 0)) {
        action = {};
        action.sa_handler = SIG_DFL;
        (void)sigaction(SIGCHLD, &action, nullptr);
    }
}

Program::Program(const std::vector<std::string>& command,
                 int input,
                 const std::vector<int>& inherited,
                 const char* variable)
    : path_(command.front()), output_(outputFile()), error_(outputFile()) {
    keepStatusOfChildren();
    if (input >= 0 && lseek(input, 0, SEEK_SET) != 0 && errno != ESPIPE) {
        failedCall("the input of " + path_ + " cannot be read from its begin");
    }
    // The lists are not changed, though the call takes them as if they were.
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    char* const environment[] = {
        const_cast<char*>(kPathVariable), const_cast<char*>(variable), nullptr};
    const FileActions actions(input, output_.get(), error_.get(), inherited);
    const Attributes attributes;
    const int error = posix_spawn(
        &process_, path_.c_str(), actions.get(), attributes.get(), arguments.data(), environment);
    if (error != 0) {
        process_ = -1;
        cannotStart(path_, error);
    }
}

Program::~Program() {
    wait();
}

void Program::wait() {
    while (process_ > 0 && waitpid(process_, &waitStatus_, 0) < 0) {
        if (errno != EINTR) {
            waitStatus_ = -1;
            break;
        }
    }
    process_ = -1;
}

ProgramResult Program::finish() {
    wait();
    ProgramResult result;
    if (waitStatus_ >= 0 && WIFEXITED(waitStatus_)) {
        result.status = WEXITSTATUS(waitStatus_);
    } else if (waitStatus_ >= 0 && WIFSIGNALED(waitStatus_)) {
        result.signal = WTERMSIG(waitStatus_);
    }
    result.output = textOf(output_, path_);
    result.error = textOf(error_, path_);
    return result;
}

bool Program::holdsLock() const {
    // "1: FLOCK  ADVISORY  WRITE 4711 00:18:1234 0 EOF"; one that is waited for has "->" in front.
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number;
        std::string type;
        std::string mode;
        std::string access;
        pid_t holder = 0;
        if (words >> number >> type >> mode >> access >> holder && type == "FLOCK" && holder > 0 &&
            getpgid(holder) == process_) {
            return true;
        }
    }
    return false;
}

ProgramResult runProgram(const std::vector<std::string>& command,
                         int input,
                         const std::vector<int>& inherited) {
    return Program(command, input, inherited).finish();
}

}  // namespace zamofw
