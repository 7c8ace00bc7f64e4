#include "command/answers/examination.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ostream>
#include <utility>

#include "command/answers/fileDamage.h"
#include "command/answers/kernelMatch.h"
#include "command/answers/refusalText.h"
#include "command/apply/backends.h"
#include "command/apply/foreignRules.h"
#include "command/apply/kernelDamage.h"
#include "command/apply/kernelModules.h"
#include "command/apply/lockHolders.h"
#include "command/apply/moduleNote.h"
#include "command/apply/transaction.h"
#include "command/apply/trial.h"
#include "command/apply/trialState.h"
#include "library/model/names.h"
#include "zamofirewall/profile.h"

namespace zamofw {
namespace {

// A management program's trial may take so long until somebody confirms it.
constexpr long kSecondsOfTrial = 3600;

void append(Damages& damages, Damages more) {
    std::move(more.begin(), more.end(), std::back_inserter(damages));
}

enum class Trial { kNone, kUnderWay, kStale };

Trial trialNow(std::string& words) try {
    const std::optional<TrialState> trial = readTrial();
    if (!trial) {
        return Trial::kNone;
    }
    words = "the trial of `" + trial->profile + "` that began at " + trial->began +
            " was never ended: the process that would take it back is gone";
    return isStale(*trial) ? Trial::kStale : Trial::kUnderWay;
} catch (const Failure& failure) {
    words = failure.what();
    return Trial::kStale;
}

Trial trialNow() {
    std::string words;
    return trialNow(words);
}

// The copies that belong to no trial any more.
std::vector<std::string> staleCopies() {
    switch (trialNow()) {
        case Trial::kUnderWay:
            return {};
        case Trial::kStale:
            return trialCopies(0);
        case Trial::kNone:
            break;
    }
    return trialCopies(kSecondsOfTrial);
}

Damages trialDamages() {
    Damages damages;
    std::string words;
    if (trialNow(words) == Trial::kStale) {
        damages.push_back({"stale-trial", words, kRepairRemedy});
    }
    for (const std::string& copy : staleCopies()) {
        damages.push_back({"stale-trial",
                           "the profile `" + copy + "`, which a trial worked on, was left behind",
                           kRepairRemedy});
    }
    return damages;
}

Damages temporaryDamages() {
    Damages damages;
    for (const std::string& path : temporaryFiles()) {
        damages.push_back({"temporary-file",
                           path + " was left by a write that did not come to its end",
                           kRepairRemedy});
    }
    return damages;
}

// None when it cannot be told.
std::optional<ShouldBe> expectedNow() try { return shouldBe(); } catch (const Failure&) {
    return std::nullopt;
}

bool holdsRules(const SavedFamilies& there) {
    return !rulesOf(tableOf(there.v4, kFilterTable), FW::kInputChain).empty();
}

void examineKernel(const ExecutionLock* lock, Damages& damages) {
    const SavedFamilies there = savedFamilies();
    const std::optional<ShouldBe> expected = expectedNow();
    const bool isEnabled = expected && expected->isEnabled;
    append(damages, placeDamages(there));
    if (lock != nullptr) {
        append(damages, doorDamages(there));
        if (isEnabled && trialNow() != Trial::kUnderWay) {
            append(damages, emptyChainDamages(there, expected->plan));
        }
        append(damages, moduleNoteDamages(isEnabled && holdsRules(there)));
    }
    append(damages, foreignDamages(there));
    append(damages, backendDamages());
}

// Where a service catalogue or a rule cannot be used, no file has a fault that would say so.
void addUntranslatable(Damages& damages) {
    if (!damages.empty()) {
        return;
    }
    try {
        (void)shouldBe();
    } catch (const Failure& failure) {
        damages.push_back({"bad-file", failure.what(), failure.remedy()});
    }
}

void unlinkFiles(const Console& console, const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        if (unlink(path.c_str()) != 0) {
            console.err << "cannot remove " << path << ": " << std::strerror(errno) << "\n";
        }
    }
}

// Whether the stored rules are in force now.
bool putBackRules(const Console& console, const Plan& plan, const ExecutionLock& lock) try {
    loadKernelModules();
    const Outcome outcome = applyPlan(plan, lock);
    console.err << refusalsText(outcome.refused);
    return outcome.applied;
} catch (const Failure& failure) {
    console.err << "the rules of `" << plan.profile
                << "` could not be put into force: " << failure.what() << "\n";
    return false;
}

// Whether the kernel holds no rules of a trial any more.
bool repairRules(const Console& console, const ExecutionLock& lock, bool isStaleTrial) {
    const SavedFamilies before = savedFamilies();
    const bool hadChains = placeDamages(before).empty();
    mendPlaces(before, lock);
    const SavedFamilies there = savedFamilies();
    const std::optional<ShouldBe> expected = expectedNow();
    const bool isEnabled = expected && expected->isEnabled;
    const bool isTrial = trialNow() == Trial::kUnderWay;
    const bool lacksRules =
        isEnabled && !isTrial && !emptyChainDamages(there, expected->plan).empty();
    if (hadChains && !isStaleTrial && !lacksRules && doorDamages(there).empty()) {
        return true;
    }
    // A killed reload may have left half of the rules.
    if (isEnabled && !isTrial && putBackRules(console, expected->plan, lock)) {
        return true;
    }
    const bool mustBeEmpty = expected && !isEnabled && isStaleTrial;
    mendDoor(there, mustBeEmpty ? Rules::kEmpty : Rules::kKeep, lock);
    return mustBeEmpty;
}

// None as well for a record that nobody can read.
std::optional<TrialState> readableTrial() try { return readTrial(); } catch (const Failure&) {
    return std::nullopt;
}

void endStaleTrial(const Console& console) {
    constexpr std::size_t kPrefixLength = sizeof ".test_" - 1;
    for (const std::string& copy : staleCopies()) {
        if (!FW::ZAMOFW_PROFILE().RemoveTestProfile(copy.substr(kPrefixLength))) {
            console.err << "the profile `" << copy << "` could not be deleted\n";
        }
    }
    if (trialNow() == Trial::kStale) {
        forgetTrial(readableTrial());
    }
}

}  // namespace

Examination examine(const ExecutionLock* lock) {
    Examination result;
    Damages& damages = result.damages;
    append(damages, storedDamages());
    addUntranslatable(damages);
    append(damages, trialDamages());
    append(damages, temporaryDamages());
    append(damages, lockDamages());
    const Damages tools = toolDamages();
    append(damages, tools);
    try {
        if (tools.empty()) {
            examineKernel(lock, damages);
        }
    } catch (const Failure& failure) {
        result.problem = failure;
    }
    return result;
}

void repairDamages(const Console& console, const ExecutionLock& lock) {
    unlinkFiles(console, temporaryFiles());
    const bool isStaleTrial = trialNow() == Trial::kStale;
    try {
        const bool isOver = !toolDamages().empty() || repairRules(console, lock, isStaleTrial);
        if (isOver || !isStaleTrial) {
            endStaleTrial(console);
        }
        const std::optional<ShouldBe> expected = expectedNow();
        const bool isInForce = expected && expected->isEnabled && holdsRules(savedFamilies());
        if (!moduleNoteDamages(isInForce).empty()) {
            loadKernelModulesAgain();
        }
    } catch (const Failure& failure) {
        console.err << failure.what() << "\n" << failure.remedy() << "\n";
    }
}

Damage reloadLockDamage() {
    const std::string file = FW::kExecutionLockFile;
    return {"lock-held",
            "the lock of a reload, " + file + ", is not free" + lockHolders(file) +
                ": policies, guard rules and empty chains are not judged meanwhile",
            "wait until the reload has ended, or end the process if it hangs, and ask again"};
}

}  // namespace zamofw
