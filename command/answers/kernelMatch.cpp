#include "command/answers/kernelMatch.h"

#include <exception>

#include "command/answers/profileInForce.h"
#include "command/answers/table.h"
#include "command/apply/executionLock.h"
#include "command/apply/lockHolders.h"
#include "command/document/target.h"
#include "library/model/names.h"

namespace zamofw {

ShouldBe shouldBe() {
    ShouldBe expected;
    expected.isEnabled = isFirewallEnabled();
    if (expected.isEnabled) {
        const Target profile = readTarget({});
        expected.plan = planProfile(profileOf(profile));
        expected.plan.profile = profile.name;
    } else {
        expected.plan.profile = profileNameInForce();
    }
    return expected;
}

KernelMatch kernelMatch(int secondsForReload) {
    KernelMatch match;
    match.expected = shouldBe();
    match.differences = differencesTo(match.expected.plan);
    if (match.differences.empty()) {
        return match;
    }
    const auto lock = ExecutionLock::takenWithin(secondsForReload);
    if (lock == nullptr) {
        match.reload =
            "another program holds the lock of a reload" + lockHolders(FW::kExecutionLockFile);
        return match;
    }
    match.expected = shouldBe();
    match.differences = differencesTo(match.expected.plan);
    return match;
}

const char* kindName(Difference::Kind kind) {
    switch (kind) {
        case Difference::Kind::kMissing:
            return "missing";
        case Difference::Kind::kExtra:
            return "extra";
        case Difference::Kind::kMoved:
            return "moved";
        case Difference::Kind::kPolicy:
            return "policy";
        case Difference::Kind::kGuard:
            return "guard";
        case Difference::Kind::kJump:
            return "jump";
        case Difference::Kind::kChain:
            return "chain";
    }
    return "";
}

// Nothing that stands in the way of the question may stand in the way of the rest of the answer.
KernelAnswer kernelAnswer() try {
    const KernelMatch match = kernelMatch(0);
    if (match.differences.empty()) {
        return {"same", match.expected.isEnabled ? "as the profile says" : "it holds no rules"};
    }
    return {"differs",
            counted(match.differences.size(), "difference") +
                (match.reload.empty() ? "; `zamofw verify` shows them" : "; " + match.reload)};
} catch (const std::exception& problem) {
    const std::string reason = problem.what();
    return {"unknown", reason.substr(0, reason.find('\n'))};
}

}  // namespace zamofw
