#include "command/apply/bothFamilies.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "command/apply/kernelState.h"
#include "command/apply/legacyTable.h"
#include "command/apply/programs.h"
#include "command/apply/restoreError.h"
#include "command/apply/separateProcess.h"
#include "command/apply/xtablesLock.h"
#include "command/console.h"

namespace zamofw {
namespace {

using PutBack = std::function<void()>;

PutBack putBackByProgram(int family, const TransactionLocks& locks) {
    const std::string old = SavedChains(family).input();
    return [family, old, &locks] {
        const posix::Descriptor input = memoryFile(old);
        const ProgramResult result =
            startRestore(family, {"--counters"}, input.get(), locks).finish();
        if (result.status != 0) {
            failed("the rules of one family could not be put into force, and the old ones of IPv" +
                       std::to_string(family) + " could not be put back:\n" + causeIn(result.error),
                   "find the cause, then run `zamofw reload`; `zamofw disable` opens the firewall");
        }
    };
}

// How to make a family again what it is now.
PutBack putBackOf(int family, const TransactionLocks& locks) {
    if (locks.xtables >= 0) {
        if (std::shared_ptr<LegacyTable> table = readLegacyTable(family)) {
            return [table] { table->putBack(); };
        }
    }
    return putBackByProgram(family, locks);
}

class Application {
  public:
    Application(const Restore& first,
                const Restore& second,
                const TransactionLocks& locks,
                const std::function<void()>& whenCommitted)
        : first_(first), second_(second), locks_(locks), whenCommitted_(whenCommitted) {}

    Results run() {
        if (!first_.hasOneTable() || !second_.hasOneTable() || !isDoneInOneGo()) {
            // No program of ours is there any more.
            locks_.isXtablesTaken = false;
            if (areBothTaken()) {
                commitBoth(nullptr, nullptr);
            }
        }
        return std::move(results_);
    }

  private:
    // Both programs read and test their lines and then wait for their commit, so that the lines are
    // parsed once. False when this is not possible; nothing is changed then.
    bool isDoneInOneGo() {
        WaitingRestore second(second_, locks_);
        // Two programs that know of no lock and are not known to do without one come to wait one
        // after the other.
        if (!locks_.areAllHeld() && variantOf(second_.family()) != Variant::kNft) {
            if (!comesToCommit(second)) {
                return false;
            }
            locks_.isXtablesTaken = second.holdsLock();
        }
        WaitingRestore first(first_, locks_);
        if (!comesToCommit(second) || !comesToCommit(first)) {
            return false;
        }
        commitBoth(&first, &second);
        return true;
    }

    static bool comesToCommit(WaitingRestore& waiting) {
        if (waiting.comesToCommit()) {
            return true;
        }
        // Without the lock, a test would wait just as long for nothing.
        throwIfLockIsHeld(waiting.cancel());
        return false;
    }

    // The two run at the same time. Each has its say.
    bool areBothTaken() {
        Program first = first_.startTest(locks_);
        Program second = second_.startTest(locks_);
        results_.of(first_.family()) = first.finish();
        results_.of(second_.family()) = second.finish();
        return results_.v4->status == 0 && results_.v6->status == 0;
    }

    struct Attempt {
        ProgramResult result;
        bool mayBeCommitted;
    };

    // What waits may have been ended by its own limit of time, which it keeps for the lock. If the
    // kernel refuses the lines, another program says so once more, and then without the padding.
    // Lines can be committed twice.
    Attempt commit(const Restore& restore, WaitingRestore* waiting) {
        Attempt attempt = {{0, 0, "", ""}, true};
        if (waiting == nullptr || (attempt.result = waiting->commit()).status != 0) {
            const bool isUncertain = waiting != nullptr && attempt.result.status < 0;
            attempt.result = restore.commit(locks_);
            attempt.mayBeCommitted = isUncertain || restore.mayBeCommitted(attempt.result);
        }
        results_.of(restore.family()) = attempt.result;
        return attempt;
    }

    void commitBoth(WaitingRestore* waitingFirst, WaitingRestore* waitingSecond) {
        const PutBack putBackFirst = putBackOf(first_.family(), locks_);
        PutBack putBackSecond;
        if (!second_.hasOneTable()) {
            putBackSecond = putBackOf(second_.family(), locks_);
        }
        results_ = {};
        const Unstoppable unstoppable;
        const Attempt first = commit(first_, waitingFirst);
        if (first.result.status != 0) {
            if (waitingSecond != nullptr) {
                (void)waitingSecond->cancel();
            }
            locks_.isXtablesTaken = false;
            if (first.mayBeCommitted) {
                putBackFirst();
            }
            return;
        }
        // It has the lock only while it waits.
        locks_.isXtablesTaken = false;
        const Attempt second = commit(second_, waitingSecond);
        if (second.result.status == 0) {
            whenCommitted_();
        } else {
            putBackFirst();
            if (second.mayBeCommitted && putBackSecond) {
                putBackSecond();
            }
        }
    }

    const Restore& first_;
    const Restore& second_;
    TransactionLocks locks_;
    const std::function<void()>& whenCommitted_;
    Results results_;
};

}  // namespace

Results commitBothFamilies(const Restore& v4,
                           const Restore& v6,
                           int executionLock,
                           const std::function<void()>& whenCommitted) {
    TransactionLocks locks;
    locks.execution = executionLock;
    std::optional<XtablesLock> xtablesLock;
    if (variantOf(4) == Variant::kLegacy && variantOf(6) == Variant::kLegacy) {
        xtablesLock.emplace();
        locks.xtables = xtablesLock->descriptor();
    }
    // The rules of the first are saved, which takes the longer the more they are.
    const bool isV6First = v6.text().size() < v4.text().size();
    return Application(isV6First ? v6 : v4, isV6First ? v4 : v6, locks, whenCommitted).run();
}

}  // namespace zamofw
