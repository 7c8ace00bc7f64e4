#include "command/apply/transaction.h"

#include <json/value.h>

#include <algorithm>
#include <chrono>

#include "command/apply/keptRules.h"
#include "command/apply/kernelState.h"
#include "command/apply/lastReload.h"
#include "command/apply/programs.h"
#include "command/apply/restore.h"
#include "command/apply/restoreError.h"
#include "command/apply/separateProcess.h"
#include "command/console.h"
#include "command/plan/plan.h"

namespace zamofw {
namespace {

using Clock = std::chrono::steady_clock;

// The two run at the same time. Each has had its say before one of them ends the call.
bool areBothTaken(const Restore& v4, const Restore& v6, Outcome& outcome) {
    Program test4 = v4.startTest();
    Program test6 = v6.startTest();
    const ProgramResult result4 = test4.finish();
    const ProgramResult result6 = test6.finish();
    const bool isTaken4 = v4.isTaken(result4, outcome);
    return v6.isTaken(result6, outcome) && isTaken4;
}

void putBack(int family, const SavedChains& saved, const ExecutionLock& lock) {
    const posix::Descriptor input = memoryFile(saved.input());
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

// What becomes of the input once its rules are in force.
enum class Input { kKept, kForgotten };

struct Transaction {
    const Restore& v4;
    const Restore& v6;
    const ExecutionLock& lock;
    Input input;

    [[nodiscard]] RestoreInputs inputs() const { return {v4.text(), v6.text()}; }
};

struct Results {
    ProgramResult first;
    std::optional<ProgramResult> second;
};

ProgramResult commitSecond(const Restore& second, WaitingRestore* waiting) {
    if (waiting != nullptr && waiting->commit().status == 0) {
        return {0, 0, "", ""};
    }
    // Its own limit of time, which it keeps for the lock, may have ended the one that waited. If
    // the kernel refuses the lines, the program says so once more, and now without the padding.
    return second.commit();
}

// From the first commit on, both families get their lines or both keep what they have.
Results commitBoth(const Restore& first,
                   const Restore& second,
                   WaitingRestore* waiting,
                   const Transaction& transaction) {
    const ExecutionLock& lock = transaction.lock;
    const SavedChains savedFirst(first.family());
    std::optional<SavedChains> savedSecond;
    if (!second.hasOneTable()) {
        savedSecond.emplace(second.family());
    }
    const XtablesLock xtablesLock =
        waiting != nullptr && waiting->holdsLock() ? XtablesLock::kHeldForUs : XtablesLock::kTake;
    const Unstoppable unstoppable;
    Results results = {first.commit(xtablesLock), std::nullopt};
    if (results.first.status != 0) {
        if (waiting != nullptr) {
            (void)waiting->cancel();
        }
        if (first.mayBeCommitted(results.first)) {
            putBack(first.family(), savedFirst, lock);
        }
        return results;
    }
    results.second = commitSecond(second, waiting);
    if (results.second->status != 0) {
        putBack(first.family(), savedFirst, lock);
    }
    if (second.mayBeCommitted(*results.second) && savedSecond) {
        putBack(second.family(), *savedSecond, lock);
    }
    if (results.second->status == 0 && transaction.input == Input::kKept) {
        keepRules(transaction.inputs());
    }
    return results;
}

void commit(const Restore& first,
            const Restore& second,
            WaitingRestore* waiting,
            const Transaction& transaction,
            Outcome& outcome) {
    const Results results = commitBoth(first, second, waiting, transaction);
    outcome.applied =
        first.isTaken(results.first, outcome) && second.isTaken(*results.second, outcome);
}

// Tests the second family by a restore that then waits for its commit, and the first by its commit
// itself, which changes nothing when a line is refused: both are tested before anything is changed,
// and their lines are parsed once. False when this is not possible; nothing is changed then.
bool tryInOneGo(const Restore& first,
                const Restore& second,
                const Transaction& transaction,
                Outcome& outcome) {
    if (!first.hasOneTable() || !second.hasOneTable()) {
        return false;
    }
    WaitingRestore waiting(second);
    if (waiting.isWaiting()) {
        commit(first, second, &waiting, transaction, outcome);
        return true;
    }
    // Without the lock, a test would wait just as long for nothing.
    throwIfLockIsHeld(waiting.cancel());
    return false;
}

Outcome apply(const Transaction& transaction) {
    const Restore& v4 = transaction.v4;
    const Restore& v6 = transaction.v6;
    // The rules of the first are saved, which takes the longer the more they are.
    const bool isV6First = v6.text().size() < v4.text().size();
    const Restore& first = isV6First ? v6 : v4;
    const Restore& second = isV6First ? v4 : v6;
    Outcome outcome;
    if (!tryInOneGo(first, second, transaction, outcome) && areBothTaken(v4, v6, outcome)) {
        commit(first, second, nullptr, transaction, outcome);
    }
    return outcome;
}

Json::Value toJson(const Outcome& outcome) {
    Json::Value json;
    json["applied"] = outcome.applied;
    json["refused"] = Json::arrayValue;
    for (const Refusal& refusal : outcome.refused) {
        Json::Value& entry = json["refused"].append(Json::objectValue);
        entry["family"] = refusal.family;
        entry["line"] = refusal.line;
        entry["adapter"] = refusal.adapter;
        entry["name"] = refusal.name;
        entry["message"] = refusal.message;
        if (refusal.position) {
            entry["position"] = Json::UInt64{*refusal.position};
        }
    }
    return json;
}

Outcome fromJson(const Json::Value& json) {
    Outcome outcome;
    outcome.applied = json["applied"].asBool();
    for (const Json::Value& entry : json["refused"]) {
        Refusal& refusal = outcome.refused.emplace_back();
        refusal.family = entry["family"].asInt();
        refusal.line = entry["line"].asString();
        refusal.adapter = entry["adapter"].asString();
        refusal.name = entry["name"].asString();
        refusal.message = entry["message"].asString();
        if (entry.isMember("position")) {
            refusal.position = entry["position"].asUInt64();
        }
    }
    return outcome;
}

Outcome timed(const Restore& v4, const Restore& v6, const ExecutionLock& lock, Input input) {
    const Clock::time_point begin = Clock::now();
    ReloadRecord record;
    const Transaction transaction = {v4, v6, lock, input};
    Outcome outcome = fromJson(inSeparateProcess([&] { return toJson(apply(transaction)); }));
    record.setApplied(outcome.applied);
    outcome.milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
    return outcome;
}

Outcome applied(const Plan& plan, const ExecutionLock& lock, Input input) {
    const Restore v4(restoreText(plan, 4), 4, lock);
    const Restore v6(restoreText(plan, 6), 6, lock);
    Outcome outcome = timed(v4, v6, lock, input);
    outcome.lines = plan.v4.size() + plan.v6.size();
    return outcome;
}

RestoreText withoutOrigins(const std::string& text) {
    const auto lines = std::count(text.begin(), text.end(), '\n');
    return {text, std::vector<const PlannedLine*>(static_cast<std::size_t>(lines), nullptr)};
}

}  // namespace

Outcome applyPlan(const Plan& plan) {
    const ExecutionLock lock;
    return applyPlan(plan, lock);
}

Outcome applyPlan(const Plan& plan, const ExecutionLock& lock) {
    return applied(plan, lock, Input::kKept);
}

Outcome applyForNow(const Plan& plan, const ExecutionLock& lock) {
    return applied(plan, lock, Input::kForgotten);
}

Outcome applyInputs(const RestoreInputs& inputs, const ExecutionLock& lock) {
    const Restore v4(withoutOrigins(inputs.v4), 4, lock);
    const Restore v6(withoutOrigins(inputs.v6), 6, lock);
    return timed(v4, v6, lock, Input::kForgotten);
}

}  // namespace zamofw
