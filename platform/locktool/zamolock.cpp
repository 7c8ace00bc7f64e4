// zamolock FILE SECONDS COMMAND [ARGUMENT]...
//
// Runs a command while it holds the exclusive lock that the platform's programs take on the file,
// and waits at most so many seconds for it. For shell scripts: flock(1) takes another kind of lock,
// which does not exclude these.

#include <fcntl.h>
#include <unistd.h>
#include <zamo/core.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

constexpr int kExclusive = 1;
constexpr int kUsageStatus = 2;
constexpr int kNoLockStatus = 75;  // EX_TEMPFAIL
constexpr int kNoCommandStatus = 126;
// The command can tell its own children not to keep the lock: 9>&- in a shell script.
constexpr int kLockDescriptor = 9;

constexpr const char* kUsage =
    "usage: zamolock FILE SECONDS COMMAND [ARGUMENT]...\n"
    "\n"
    "Runs the command while holding an exclusive lock on FILE; waits at most SECONDS for the lock.\n"
    "The command inherits the lock as descriptor 9. The lock ends with the last process that has\n"
    "the descriptor. Exit status: the command's, or 75 when the lock is not acquired.\n";

int parseSeconds(std::string_view text) {
    int seconds = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    return error == std::errc() && end == text.data() + text.size() ? seconds : -1;
}

int fail(int status, const char* subject) {
    (void)std::fprintf(stderr, "zamolock: %s: %s\n", subject, std::strerror(errno));
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--help") {
        (void)std::fputs(kUsage, stdout);
        return 0;
    }
    const int seconds = argc > 3 ? parseSeconds(argv[2]) : -1;
    if (seconds < 0) {
        (void)std::fputs(kUsage, stderr);
        return kUsageStatus;
    }
    int lock = -1;
    if (VLIBCFileLockTimeByFile(argv[1], kExclusive, seconds, &lock) != 1) {
        if (errno == ETIMEDOUT) {
            (void)std::fprintf(stderr, "zamolock: %s: another process holds the lock\n", argv[1]);
            return kNoLockStatus;
        }
        return fail(kNoLockStatus, argv[1]);
    }
    // The copy is inherited, unlike the lock itself when that has this number already.
    const int inherited =
        lock == kLockDescriptor ? fcntl(lock, F_SETFD, 0) : dup2(lock, kLockDescriptor);
    if (inherited < 0) {
        return fail(kNoLockStatus, argv[1]);
    }
    (void)execvp(argv[3], argv + 3);
    return fail(kNoCommandStatus, argv[3]);
}
