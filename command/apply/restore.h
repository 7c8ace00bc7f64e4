// The lines of one family on their way into the kernel.
#ifndef COMMAND_APPLY_RESTORE_H
#define COMMAND_APPLY_RESTORE_H

#include <string>
#include <string_view>
#include <vector>

#include "command/apply/program.h"

namespace zamofw {

// The locks that the programs of a transaction keep until they end, so that one that outlives a
// killed reload never commits its old rules after the new ones of somebody else.
struct TransactionLocks {
    int execution = -1;
    // -1: the programs take it themselves.
    int xtables = -1;
    // Another program of this transaction holds it, so that waiting would never end.
    bool isXtablesTaken = false;

    [[nodiscard]] std::vector<int> descriptors() const;
    [[nodiscard]] bool areAllHeld() const { return xtables >= 0 || isXtablesTaken; }
};

// Starts the restore program of a family without flushing.
[[nodiscard]] Program startRestore(int family,
                                   const std::vector<std::string>& options,
                                   int input,
                                   const TransactionLocks& locks);

class Restore {
  public:
    // The text must outlive it.
    Restore(int family, std::string_view text) : family_(family), text_(text) {}

    [[nodiscard]] int family() const { return family_; }
    [[nodiscard]] std::string_view text() const { return text_; }

    // Each table is committed by itself.
    [[nodiscard]] bool hasOneTable() const;

    // Starts the program with all lines, to see whether it understands them.
    [[nodiscard]] Program startTest(const TransactionLocks& locks) const;

    // A program that somebody ends may or may not have committed its lines; they can be committed
    // twice.
    [[nodiscard]] ProgramResult commit(const TransactionLocks& locks) const;

    // Whether part of the lines may be in force after this result, or all of them.
    [[nodiscard]] bool mayBeCommitted(const ProgramResult& result) const;

  private:
    int family_;
    std::string_view text_;
};

// A restore that has read and understood all its lines, and waits to be told to commit them. It
// parses them once, where a test and a commit would parse them twice.
class WaitingRestore {
  public:
    // Starts the program and gives it its lines, which must be those of one table.
    WaitingRestore(const Restore& restore, const TransactionLocks& locks);
    ~WaitingRestore() { end(); }
    WaitingRestore(const WaitingRestore&) = delete;
    WaitingRestore& operator=(const WaitingRestore&) = delete;

    // Waits until the program waits; false when it ended instead.
    [[nodiscard]] bool comesToCommit() const;
    // Whether it holds the xtables lock.
    [[nodiscard]] bool holdsLock() const { return program_.holdsLock(); }

    [[nodiscard]] ProgramResult commit();
    // Ends the program. Nothing is committed.
    [[nodiscard]] ProgramResult cancel();

  private:
    void end() { (void)channel_.ours.close(); }

    Channel channel_;
    Program program_;
    bool hasLines_;
};

}  // namespace zamofw

#endif
