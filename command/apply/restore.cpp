#include "command/apply/restore.h"

#include <sys/socket.h>

#include <algorithm>
#include <string_view>

#include "command/apply/programs.h"
#include "posix/file.h"

namespace zamofw {
namespace {

constexpr std::string_view kCommit = "COMMIT\n";

// What a channel is asked to hold before its writer has to wait. The kernel doubles it, and lets
// the writer go beyond by half of that.
constexpr int kLargeChannel = 4 << 20;
constexpr int kSmallChannel = 8 << 10;
// Of the program's reader; the usual one is 4 KiB.
constexpr std::size_t kLargestBuffer = std::size_t{16} << 10U;

// The writer of a channel that takes much goes on at once, and its reader is not interrupted for
// each page. A system that does not allow it makes us wait.
void setSize(int channel, int size) {
    if (setsockopt(channel, SOL_SOCKET, SO_SNDBUFFORCE, &size, sizeof size) != 0) {
        (void)setsockopt(channel, SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
    }
}

// Comment lines that are more than a small channel and the program's buffer can hold. Once they
// have been written, the program has come to the first of them.
const std::string& padding() {
    // The programs read lines of up to 10 KiB.
    constexpr std::size_t kLine = 1024;
    static const std::string text = [] {
        std::string lines;
        while (lines.size() <= kSmallChannel * 3 + kLargestBuffer) {
            lines.append(kLine - 1, '#').append("\n");
        }
        return lines;
    }();
    return text;
}

}  // namespace

std::vector<int> TransactionLocks::descriptors() const {
    return xtables < 0 ? std::vector<int>{execution} : std::vector<int>{execution, xtables};
}

Program startRestore(int family,
                     const std::vector<std::string>& options,
                     int input,
                     const TransactionLocks& locks) {
    std::vector<std::string> command = {restoreProgram(family), "--noflush", "-w", kLockSeconds};
    command.insert(command.end(), options.begin(), options.end());
    // Any file that nobody else knows serves as the lock: the program's own output is one.
    const char* const variable = locks.areAllHeld() ? "XTABLES_LOCKFILE=/proc/self/fd/1" : nullptr;
    return Program(command, input, locks.descriptors(), variable);
}

bool Restore::hasOneTable() const {
    return text().find("\nCOMMIT\n") + sizeof "\nCOMMIT" == text().size();
}

Program Restore::startTest(const TransactionLocks& locks) const {
    return startRestore(family_, {"--test"}, memoryFile(text()).get(), locks);
}

ProgramResult Restore::commit(const TransactionLocks& locks) const {
    const posix::Descriptor input = memoryFile(text());
    ProgramResult result = startRestore(family_, {}, input.get(), locks).finish();
    return result.status < 0 ? startRestore(family_, {}, input.get(), locks).finish() : result;
}

bool Restore::mayBeCommitted(const ProgramResult& result) const {
    return result.status < 0 || (result.status != 0 && !hasOneTable());
}

WaitingRestore::WaitingRestore(const Restore& restore, const TransactionLocks& locks)
    : program_(startRestore(restore.family(), {}, channel_.theirs.get(), locks)) {
    (void)channel_.theirs.close();
    setSize(channel_.ours.get(), kLargeChannel);
    const std::string_view lines = restore.text().substr(0, restore.text().size() - kCommit.size());
    hasLines_ = posix::writeWhole(channel_.ours.get(), lines);
}

bool WaitingRestore::comesToCommit() const {
    setSize(channel_.ours.get(), kSmallChannel);
    return hasLines_ && posix::writeWhole(channel_.ours.get(), padding());
}

ProgramResult WaitingRestore::commit() {
    // Whether it is still there to read this, its result tells.
    (void)posix::writeWhole(channel_.ours.get(), kCommit);
    return cancel();
}

ProgramResult WaitingRestore::cancel() {
    end();
    return program_.finish();
}

}  // namespace zamofw
