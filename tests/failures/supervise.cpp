// Runs a program and stops it, or one of its calls, at a chosen place.
//
//   supervise LOG ACTION ROLE NUMBER PROGRAM [ARGUMENT]...
//
// The kernel asks before each call that changes a file or starts a program, in the program and in
// every process that it starts, so that the place is exact. Between two such calls nothing changes
// that outlives a process. Calls are counted for each process of the program by its name (ROLE).
//
//   count       writes "ROLE NUMBER CALL OBJECT" for each call into LOG
//   kill        kills the process before the call
//   kill-all    kills it with all the processes that it has started
//   fail        the call fails: no space is left, or an error of the disk
//   no-program  the call starts a program, which is not there
//   end-program the program that the call starts is killed at its begin
//   lose-result the program that the call starts is killed at its end
//
// Exits with 0 once all processes have ended, and with 3 if they have not after a minute and a
// half.

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr int kSecondsToEnd = 90;

// Where a call names its file: an argument that is a path or a descriptor.
enum class Names { kPath, kDescriptor, kProgram, kTable, kEnd };

struct Call {
    long number;
    const char* name;
    Names names;
    unsigned argument;
};

constexpr Call kCalls[] = {
    {SYS_openat, "open", Names::kPath, 1},
    {SYS_renameat2, "rename", Names::kPath, 1},
    {SYS_renameat, "rename", Names::kPath, 1},
    {SYS_unlinkat, "unlink", Names::kPath, 1},
    {SYS_mkdirat, "mkdir", Names::kPath, 1},
    {SYS_linkat, "link", Names::kPath, 3},
    {SYS_symlinkat, "symlink", Names::kPath, 2},
#ifdef SYS_open
    {SYS_open, "open", Names::kPath, 0},
    {SYS_rename, "rename", Names::kPath, 0},
    {SYS_unlink, "unlink", Names::kPath, 0},
    {SYS_mkdir, "mkdir", Names::kPath, 0},
    {SYS_rmdir, "rmdir", Names::kPath, 0},
    {SYS_link, "link", Names::kPath, 1},
#endif
    {SYS_write, "write", Names::kDescriptor, 0},
    {SYS_pwrite64, "write", Names::kDescriptor, 0},
    {SYS_writev, "write", Names::kDescriptor, 0},
    {SYS_ftruncate, "truncate", Names::kDescriptor, 0},
    {SYS_fsync, "fsync", Names::kDescriptor, 0},
    {SYS_fdatasync, "fsync", Names::kDescriptor, 0},
    {SYS_fchmod, "chmod", Names::kDescriptor, 0},
    {SYS_fchown, "chown", Names::kDescriptor, 0},
    {SYS_utimensat, "utimens", Names::kDescriptor, 0},
    {SYS_execve, "start", Names::kProgram, 0},
    {SYS_setsockopt, "replace-table", Names::kTable, 1},
    {SYS_exit_group, "exit", Names::kEnd, 0},
};

std::vector<sock_filter> filter() {
    constexpr auto kNumber = static_cast<std::uint32_t>(offsetof(seccomp_data, nr));
    const auto argument = [](unsigned index) {
        return static_cast<std::uint32_t>(offsetof(seccomp_data, args) + index * 8);
    };
    std::vector<sock_filter> code;
    for (const Call& call : kCalls) {
        code.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kNumber));
        if (std::string(call.name) == "open") {
            const auto flags = static_cast<std::uint32_t>(O_WRONLY | O_RDWR | O_CREAT | O_TRUNC);
            code.push_back(
                BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call.number), 0, 3));
            code.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, argument(call.argument + 1)));
            code.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, flags, 0, 1));
        } else {
            code.push_back(
                BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call.number), 0, 1));
        }
        code.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    }
    code.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    return code;
}

[[noreturn]] void die(const char* what) {
    std::perror(what);
    std::_Exit(4);
}

std::string linkTarget(const std::string& path) {
    std::error_code error;
    return std::filesystem::read_symlink(path, error);
}

std::string procDirectory(pid_t process) { return "/proc/" + std::to_string(process) + "/"; }

std::string nameOf(pid_t process) {
    std::ifstream file(procDirectory(process) + "comm");
    std::string name;
    std::getline(file, name);
    return name;
}

pid_t parentOf(pid_t process) {
    std::ifstream file(procDirectory(process) + "stat");
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    const std::size_t end = text.rfind(')');
    return end == std::string::npos ? 0 : std::atoi(text.c_str() + end + 4);
}

bool isAlive(pid_t process) {
    std::ifstream file(procDirectory(process) + "stat");
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    const std::size_t end = text.rfind(')');
    return end != std::string::npos && text.size() > end + 2 && text[end + 2] != 'Z' &&
           text[end + 2] != 'X';
}

std::string textAt(pid_t process, std::uint64_t address) {
    std::string text(PATH_MAX, '\0');
    const int memory = open((procDirectory(process) + "mem").c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t count = pread(memory, text.data(), text.size(), static_cast<off_t>(address));
    close(memory);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text.substr(0, text.find('\0'));
}

void killDescendants() {
    for (bool found = true; found;) {
        found = false;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const pid_t process = std::atoi(entry.path().filename().c_str());
            pid_t above = process;
            while (above > 1 && above != getpid()) {
                above = parentOf(above);
            }
            if (process > 1 && process != getpid() && above == getpid()) {
                found = (isAlive(process) && kill(process, SIGKILL) == 0) || found;
            }
        }
    }
}

class Supervisor {
  public:
    Supervisor(int listener, pid_t child, char** words)
        : listener_(listener),
          child_(child),
          log_(words[1]),
          action_(words[2]),
          role_(words[3]),
          number_(std::atol(words[4])),
          program_(std::filesystem::canonical(words[5])) {}

    int run() {
        const std::time_t end = std::time(nullptr) + kSecondsToEnd;
        for (;;) {
            pollfd wait = {listener_, POLLIN, 0};
            const int ready = poll(&wait, 1, 1000);
            reap();
            if (ready > 0 && (wait.revents & POLLIN) != 0) {
                answer();
            } else if (ready > 0) {
                // The last one has closed its files, and is about to be gone.
                if (!isReaped_) {
                    (void)waitpid(child_, &status_, 0);
                }
                log_ << "status " << (WIFEXITED(status_) ? WEXITSTATUS(status_) : -1) << std::endl;
                return 0;
            }
            if (std::time(nullptr) > end) {
                killDescendants();
                return 3;
            }
        }
    }

  private:
    void reap() {
        int status = 0;
        for (pid_t ended = 0; (ended = waitpid(-1, &status, WNOHANG)) > 0;) {
            if (ended == child_) {
                status_ = status;
                isReaped_ = true;
            }
        }
    }

    void answer() {
        seccomp_notif request = {};
        if (ioctl(listener_, SECCOMP_IOCTL_NOTIF_RECV, &request) != 0) {
            return;
        }
        seccomp_notif_resp response = {};
        response.id = request.id;
        response.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
        const auto process = static_cast<pid_t>(request.pid);
        if (marked_.count(process) != 0 && request.data.nr == SYS_exit_group) {
            (void)kill(process, SIGKILL);
        } else if (linkTarget(procDirectory(process) + "exe") == program_) {
            judge(request, response);
        }
        (void)ioctl(listener_, SECCOMP_IOCTL_NOTIF_SEND, &response);
    }

    // What the call is about; empty for one that does not count.
    static std::string objectOf(const Call& call, const seccomp_notif& request) {
        const auto process = static_cast<pid_t>(request.pid);
        const std::uint64_t value = request.data.args[call.argument];
        switch (call.names) {
            case Names::kPath:
            case Names::kProgram: {
                const std::string path = textAt(process, value);
                return path.rfind("/dev/", 0) == 0 || path.rfind("/proc/", 0) == 0 ? "" : path;
            }
            case Names::kDescriptor: {
                if (value == STDOUT_FILENO || value == STDERR_FILENO) {
                    return "";
                }
                const std::string file = linkTarget(procDirectory(process) + "fd/" +
                                                    std::to_string(static_cast<int>(value)));
                // What waits for its commit reads it from a pipe.
                if (file.rfind("pipe:", 0) == 0 || file.rfind("socket:", 0) == 0) {
                    return nameOf(process) == "fw-transaction" ? "to-program" : "";
                }
                const bool isFile = file.rfind('/', 0) == 0 && file.rfind("/dev/", 0) != 0 &&
                                    file.rfind("/memfd:", 0) != 0 && file.rfind("/proc/", 0) != 0;
                return isFile ? file : "";
            }
            case Names::kTable: {
                constexpr std::uint64_t kReplace = 64;
                const std::uint64_t level = request.data.args[1];
                return request.data.args[2] == kReplace ? (level == 0 ? "IPv4" : "IPv6") : "";
            }
            case Names::kEnd:
                break;
        }
        return "";
    }

    void judge(const seccomp_notif& request, seccomp_notif_resp& response) {
        for (const Call& call : kCalls) {
            if (call.number == request.data.nr) {
                const std::string object = objectOf(call, request);
                if (!object.empty()) {
                    count(call, object, request, response);
                }
            }
        }
    }

    void count(const Call& call, const std::string& object, const seccomp_notif& request,
               seccomp_notif_resp& response) {
        const auto process = static_cast<pid_t>(request.pid);
        const std::string role = nameOf(process);
        const long number = ++counted_[role];
        if (action_ == "count") {
            log_ << role << " " << number << " " << call.name << " " << object << std::endl;
        }
        if (role != role_ || number != number_) {
            return;
        }
        log_ << "there " << call.name << " " << object << std::endl;
        const bool isStart = call.names == Names::kProgram;
        // An answer could still be quicker than the signal, so it must not let the call through.
        if (action_ != "lose-result" && action_ != "count" && !(action_ == "kill" && isStart)) {
            response.flags = 0;
            response.error = isStart ? -ENOENT : std::string(call.name) == "fsync" ? -EIO : -ENOSPC;
        }
        if (action_ == "kill") {
            // Between fork and start, the parent waits; what it has begun to start goes on.
            (void)kill(isStart ? parentOf(process) : process, SIGKILL);
        } else if (action_ == "kill-all") {
            killDescendants();
        } else if (action_ == "end-program") {
            (void)kill(process, SIGKILL);
        } else if (action_ == "lose-result") {
            marked_.insert(process);
        }
    }

    int listener_;
    pid_t child_;
    int status_ = 0;
    bool isReaped_ = false;
    std::ofstream log_;
    std::string action_;
    std::string role_;
    long number_;
    std::string program_;
    std::map<std::string, long> counted_;
    std::set<pid_t> marked_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 6) {
        die("usage: supervise LOG ACTION ROLE NUMBER PROGRAM [ARGUMENT]...");
    }
    // Whoever loses its parent becomes a child of this process.
    if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0) {
        die("prctl");
    }
    auto* const listener = static_cast<std::atomic<int>*>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    *listener = -1;
    // The two share their descriptors until the program begins.
    const long child = syscall(SYS_clone, CLONE_FILES | SIGCHLD, 0, 0, 0, 0);
    if (child == 0) {
        std::vector<sock_filter> code = filter();
        const sock_fprog program = {static_cast<unsigned short>(code.size()), code.data()};
        (void)prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
        const long descriptor = syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER,
                                        SECCOMP_FILTER_FLAG_NEW_LISTENER, &program);
        *listener = descriptor < 0 ? -errno - 1 : static_cast<int>(descriptor);
        if (descriptor >= 0) {
            if (const char* const library = std::getenv("FAULT_LIBRARY")) {
                (void)setenv("LD_PRELOAD", library, 1);
            }
            (void)execv(argv[5], argv + 5);
        }
        std::_Exit(127);
    }
    while (*listener == -1) {
        sched_yield();
    }
    if (child < 0 || *listener < 0) {
        errno = child < 0 ? errno : -*listener - 1;
        die("no filter of system calls can be installed");
    }
    return Supervisor(*listener, static_cast<pid_t>(child), argv).run();
}
