#include "command/apply/restore.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "command/apply/programs.h"
#include "command/apply/refusal.h"
#include "command/console.h"
#include "posix/file.h"

namespace zamofw {
namespace {

constexpr std::string_view kCommit = "COMMIT\n";

// Comment lines that are more than the pipe and the program's buffer can hold. Once they have been
// written, the program has come to the first of them.
std::string padding(int pipe) {
    // The programs read lines of up to 10 KiB.
    constexpr std::size_t kLine = 1024;
    constexpr std::size_t kLargestBuffer = std::size_t{64} << 10U;
    const int capacity = fcntl(pipe, F_GETPIPE_SZ);
    if (capacity < 0) {
        failed(std::string("the size of a pipe is unknown: ") + std::strerror(errno));
    }
    const std::size_t size = static_cast<std::size_t>(capacity) + kLargestBuffer;
    std::string text;
    text.reserve(size + kLine);
    while (text.size() <= size) {
        text.append(kLine - 1, '#').append("\n");
    }
    return text;
}

}  // namespace

Restore::Restore(RestoreText text, int family, const ExecutionLock& lock)
    : family_(family), lock_(lock), text_(std::move(text)) {}

bool Restore::hasOneTable() const {
    return text().find("\nCOMMIT\n") + sizeof "\nCOMMIT" == text().size();
}

Program Restore::start(const std::vector<std::string>& options, int input, XtablesLock lock) const {
    std::vector<std::string> command = {restoreProgram(family_), "--noflush", "-w", kLockSeconds};
    command.insert(command.end(), options.begin(), options.end());
    // Any file that nobody else knows serves as the lock: the program's own output is one.
    const char* const variable =
        lock == XtablesLock::kTake ? nullptr : "XTABLES_LOCKFILE=/proc/self/fd/1";
    // A program that outlives a killed reload keeps the execution lock until it ends, so that it
    // never commits its old rules after the new ones of somebody else.
    return Program(command, input, lock_.descriptor(), variable);
}

Program Restore::startTest() const {
    return start({"--test"}, memoryFile(text()).get());
}

ProgramResult Restore::commit(XtablesLock lock) const {
    const posix::Descriptor input = memoryFile(text());
    ProgramResult result = start({}, input.get(), lock).finish();
    return result.status < 0 ? start({}, input.get(), lock).finish() : result;
}

bool Restore::mayBeCommitted(const ProgramResult& result) const {
    return result.status < 0 || (result.status != 0 && !hasOneTable());
}

bool Restore::isTaken(const ProgramResult& result, Outcome& outcome) const {
    if (result.status == 0) {
        return true;
    }
    outcome.refused.push_back(refusalOf(family_, text_, result));
    return false;
}

WaitingRestore::WaitingRestore(const Restore& restore)
    : program_(restore.start({}, pipe_.readEnd.get())) {
    (void)pipe_.readEnd.close();
    const std::string_view lines =
        std::string_view(restore.text()).substr(0, restore.text().size() - kCommit.size());
    isWaiting_ = posix::writeWhole(pipe_.writeEnd.get(), lines) &&
                 posix::writeWhole(pipe_.writeEnd.get(), padding(pipe_.writeEnd.get()));
}

ProgramResult WaitingRestore::commit() {
    // Whether it is still there to read this, its result tells.
    (void)posix::writeWhole(pipe_.writeEnd.get(), kCommit);
    return cancel();
}

ProgramResult WaitingRestore::cancel() {
    end();
    return program_.finish();
}

}  // namespace zamofw
