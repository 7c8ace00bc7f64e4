// The lines of one family on their way into the kernel.
#ifndef COMMAND_APPLY_RESTORE_H
#define COMMAND_APPLY_RESTORE_H

#include <string>
#include <vector>

#include "command/apply/executionLock.h"
#include "command/apply/program.h"
#include "command/apply/transaction.h"
#include "command/plan/plan.h"

namespace zamofw {

enum class XtablesLock {
    kTake,
    kHeldForUs,  // by another program of this transaction, so that waiting would never end
};

class Restore {
  public:
    Restore(RestoreText text, int family, const ExecutionLock& lock);

    [[nodiscard]] int family() const { return family_; }
    [[nodiscard]] const std::string& text() const { return text_.text; }

    // Each table is committed by itself.
    [[nodiscard]] bool hasOneTable() const;

    // Starts the program with this input.
    [[nodiscard]] Program start(const std::vector<std::string>& options,
                                int input,
                                XtablesLock lock = XtablesLock::kTake) const;

    // Starts the program with all lines, to see whether it understands them.
    [[nodiscard]] Program startTest() const;

    // A program that somebody ends may or may not have committed its lines; they can be committed
    // twice.
    [[nodiscard]] ProgramResult commit(XtablesLock lock = XtablesLock::kTake) const;

    // Whether part of the lines may be in force after this result, or all of them.
    [[nodiscard]] bool mayBeCommitted(const ProgramResult& result) const;

    // Whether the program took the lines; if not, the refusal is noted. Throws Failure when it
    // failed for another reason.
    [[nodiscard]] bool isTaken(const ProgramResult& result, Outcome& outcome) const;

  private:
    int family_;
    const ExecutionLock& lock_;
    RestoreText text_;
};

// A restore that has read and understood all its lines, and waits to be told to commit them. It
// parses them once, where a test and a commit would parse them twice.
class WaitingRestore {
  public:
    // The lines must be those of one table.
    explicit WaitingRestore(const Restore& restore);
    ~WaitingRestore() { end(); }
    WaitingRestore(const WaitingRestore&) = delete;
    WaitingRestore& operator=(const WaitingRestore&) = delete;

    // False when the program ended instead.
    [[nodiscard]] bool isWaiting() const { return isWaiting_; }
    // Whether it holds the xtables lock, which the legacy programs do.
    [[nodiscard]] bool holdsLock() const { return program_.holdsLock(); }

    [[nodiscard]] ProgramResult commit();
    // Ends the program. Nothing is committed.
    [[nodiscard]] ProgramResult cancel();

  private:
    void end() { (void)pipe_.writeEnd.close(); }

    Pipe pipe_;
    Program program_;
    bool isWaiting_;
};

}  // namespace zamofw

#endif
