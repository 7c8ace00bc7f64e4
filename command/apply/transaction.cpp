#include "command/apply/transaction.h"

#include <json/value.h>

#include <chrono>

#include "command/apply/kernelState.h"
#include "command/apply/programs.h"
#include "command/apply/refusal.h"
#include "command/apply/restore.h"
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

struct Results {
    ProgramResult v4;
    std::optional<ProgramResult> v6;
};

ProgramResult commitIpv6(const Restore& v6, WaitingRestore* waiting) {
    if (waiting != nullptr && waiting->commit().status == 0) {
        return {0, 0, "", ""};
    }
    // Its own limit of time, which it keeps for the lock, may have ended the one that waited. If
    // the kernel refuses the lines, the program says so once more, and now without the padding.
    return v6.commit();
}

// From the first commit on, both families get their lines or both keep what they have.
Results commitBoth(const Restore& v4,
                   const Restore& v6,
                   WaitingRestore* waiting6,
                   const ExecutionLock& lock) {
    const SavedChains saved4(4);
    std::optional<SavedChains> saved6;
    if (!v6.hasOneTable()) {
        saved6.emplace(6);
    }
    const XtablesLock xtablesLock =
        waiting6 != nullptr && waiting6->holdsLock() ? XtablesLock::kHeldForUs : XtablesLock::kTake;
    const Unstoppable unstoppable;
    Results results = {v4.commit(xtablesLock), std::nullopt};
    if (results.v4.status != 0) {
        if (waiting6 != nullptr) {
            (void)waiting6->cancel();
        }
        if (v4.mayBeCommitted(results.v4)) {
            putBack(4, saved4, lock);
        }
        return results;
    }
    results.v6 = commitIpv6(v6, waiting6);
    if (results.v6->status != 0) {
        putBack(4, saved4, lock);
    }
    if (v6.mayBeCommitted(*results.v6) && saved6) {
        putBack(6, *saved6, lock);
    }
    return results;
}

void commit(const Restore& v4,
            const Restore& v6,
            WaitingRestore* waiting6,
            const ExecutionLock& lock,
            Outcome& outcome) {
    const Results results = commitBoth(v4, v6, waiting6, lock);
    outcome.applied = v4.isTaken(results.v4, outcome) && v6.isTaken(*results.v6, outcome);
}

// Tests IPv6 by a restore that then waits for its commit, and IPv4 by its commit itself, which
// changes nothing when a line is refused: both families are tested before anything is changed, and
// their lines are parsed once. False when this is not possible; nothing is changed then.
bool tryInOneGo(const Restore& v4, const Restore& v6, const ExecutionLock& lock, Outcome& outcome) {
    if (!v4.hasOneTable() || !v6.hasOneTable()) {
        return false;
    }
    WaitingRestore waiting6(v6);
    if (waiting6.isWaiting()) {
        commit(v4, v6, &waiting6, lock, outcome);
        return true;
    }
    // Without the lock, a test would wait just as long for nothing.
    throwIfLockIsHeld(waiting6.cancel());
    return false;
}

Outcome apply(const Restore& v4, const Restore& v6, const ExecutionLock& lock) {
    Outcome outcome;
    if (!tryInOneGo(v4, v6, lock, outcome) && areBothTaken(v4, v6, outcome)) {
        commit(v4, v6, nullptr, lock, outcome);
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

}  // namespace

Outcome applyPlan(const Plan& plan) {
    const ExecutionLock lock;
    return applyPlan(plan, lock);
}

Outcome applyPlan(const Plan& plan, const ExecutionLock& lock) {
    const Clock::time_point begin = Clock::now();
    const Restore v4(plan, 4, lock);
    const Restore v6(plan, 6, lock);
    Outcome outcome = fromJson(inSeparateProcess([&] { return toJson(apply(v4, v6, lock)); }));
    outcome.lines = plan.v4.size() + plan.v6.size();
    outcome.milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
    return outcome;
}

}  // namespace zamofw
