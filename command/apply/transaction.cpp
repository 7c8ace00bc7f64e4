#include "command/apply/transaction.h"

#include <array>
#include <chrono>
#include <csignal>

#include "command/apply/kernelState.h"
#include "command/apply/programs.h"
#include "command/apply/refusal.h"
#include "command/console.h"
#include "command/plan/plan.h"

namespace zamofw {
namespace {

using Clock = std::chrono::steady_clock;

// An interrupt from the terminal waits until both families have the same rules.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) {
            sigaddset(&signals, signal);
        }
        (void)pthread_sigmask(SIG_BLOCK, &signals, &previous_);
    }
    ~SignalsBlocked() { (void)pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t previous_ = {};
};

class Restore {
  public:
    Restore(const Plan& plan, int family, const ExecutionLock& lock)
        : family_(family),
          lock_(lock),
          text_(restoreText(plan, family)),
          input_(memoryFile(text_.text)) {}

    [[nodiscard]] Program start(const std::vector<std::string>& options) const {
        std::vector<std::string> command = {
            restoreProgram(family_), "--noflush", "-w", kLockSeconds};
        command.insert(command.end(), options.begin(), options.end());
        // A program that outlives a killed reload keeps the lock until it ends, so that it never
        // commits its old rules after the new ones of somebody else.
        return Program(command, input_.get(), lock_.descriptor());
    }

    // Each table is committed by itself.
    [[nodiscard]] bool hasOneTable() const {
        return text_.text.find("\nCOMMIT\n") + sizeof "\nCOMMIT" == text_.text.size();
    }

    // Whether part of the lines may be in force after this result, or all of them.
    [[nodiscard]] bool mayBeCommitted(const ProgramResult& result) const {
        return result.status < 0 || (result.status != 0 && !hasOneTable());
    }

    // A program that somebody ends may or may not have committed its lines; they can be committed
    // twice.
    [[nodiscard]] ProgramResult commit() const {
        ProgramResult result = start({}).finish();
        return result.status < 0 ? start({}).finish() : result;
    }

    // Whether the program took the lines; if not, the refusal is noted. Throws Failure when it
    // failed for another reason.
    [[nodiscard]] bool isTaken(const ProgramResult& result, Outcome& outcome) const {
        if (result.status == 0) {
            return true;
        }
        outcome.refused.push_back(refusalOf(family_, text_, result));
        return false;
    }

  private:
    int family_;
    const ExecutionLock& lock_;
    RestoreText text_;
    posix::Descriptor input_;
};

// The two run at the same time. Each has had its say before one of them ends the call.
bool areBothTaken(const Restore& v4, const Restore& v6, Outcome& outcome) {
    Program test4 = v4.start({"--test"});
    Program test6 = v6.start({"--test"});
    const ProgramResult result4 = test4.finish();
    const ProgramResult result6 = test6.finish();
    const bool isTaken4 = v4.isTaken(result4, outcome);
    return v6.isTaken(result6, outcome) && isTaken4;
}

void putBack(int family, const std::string& saved, const ExecutionLock& lock) {
    const posix::Descriptor input = memoryFile(saved);
    const ProgramResult result =
        runProgram({restoreProgram(family), "--noflush", "--counters", "-w", kLockSeconds},
                   input.get(),
                   lock.descriptor());
    if (result.status != 0) {
        failed("the rules of one family could not be put into force, and the old ones of IPv" +
                   std::to_string(family) + " could not be put back:\n" + causeIn(result.error),
               "find the cause, then run `zamofw reload`; `zamofw disable` opens the firewall");
    }
}

void commit(const Restore& v4, const Restore& v6, const ExecutionLock& lock, Outcome& outcome) {
    const std::string saved4 = savedChains(4);
    const std::string saved6 = v6.hasOneTable() ? "" : savedChains(6);
    const SignalsBlocked blocked;
    const ProgramResult result4 = v4.commit();
    if (v4.mayBeCommitted(result4)) {
        putBack(4, saved4, lock);
    }
    if (!v4.isTaken(result4, outcome)) {
        return;
    }
    const ProgramResult result6 = v6.commit();
    if (result6.status != 0) {
        putBack(4, saved4, lock);
    }
    if (v6.mayBeCommitted(result6) && !saved6.empty()) {
        putBack(6, saved6, lock);
    }
    outcome.applied = v6.isTaken(result6, outcome);
}

}  // namespace

Outcome applyPlan(const Plan& plan) {
    const ExecutionLock lock;
    return applyPlan(plan, lock);
}

Outcome applyPlan(const Plan& plan, const ExecutionLock& lock) {
    const Clock::time_point begin = Clock::now();
    Outcome outcome;
    outcome.lines = plan.v4.size() + plan.v6.size();
    const Restore v4(plan, 4, lock);
    const Restore v6(plan, 6, lock);
    if (areBothTaken(v4, v6, outcome)) {
        commit(v4, v6, lock, outcome);
    }
    outcome.milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
    return outcome;
}

}  // namespace zamofw
