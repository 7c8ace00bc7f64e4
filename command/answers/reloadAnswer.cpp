#include "command/answers/reloadAnswer.h"

#include <json/value.h>

#include <chrono>
#include <exception>
#include <optional>
#include <ostream>
#include <utility>
#include <vector>

#include "command/answers/meaningAnswer.h"
#include "command/answers/profileInForce.h"
#include "command/answers/refusalText.h"
#include "command/answers/trialEnd.h"
#include "command/apply/keptRules.h"
#include "command/apply/kernelDamage.h"
#include "command/apply/kernelModules.h"
#include "command/apply/kernelState.h"
#include "command/apply/lastReload.h"
#include "command/apply/startNote.h"
#include "command/apply/trial.h"
#include "command/document/profileRecord.h"
#include "command/history/change.h"
#include "command/jsonLine.h"
#include "command/plan/plan.h"
#include "zamofirewall/controller.h"

namespace zamofw {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kWhat = "putting rules into force";

struct Settings {
    std::string profile;
    bool isEnabled;
};

Settings settingsInForce() {
    try {
        Json::Value settings;
        if (FW::ZAMOFW().configGet(settings) && settings["profile"].isString() &&
            settings["status"].isBool()) {
            return {settings["profile"].asString(), settings["status"].asBool()};
        }
    } catch (const std::exception&) {
        // The lock file cannot be opened.
    }
    // These say what is wrong, or make something of it.
    std::string profile = profileNameInForce();
    return {std::move(profile), isFirewallEnabled()};
}

Plan planOf(const Target& profile) {
    Plan plan = planProfile(profileOf(profile));
    plan.profile = profile.name;
    return plan;
}

void showProgress(const Console& console, const Target& profile, std::size_t lines) {
    if (console.canAsk && !console.quiet && lines >= kManyLines) {
        console.err << "putting " << lines << " lines of `" << profile.name << "` into force...\n";
    }
}

// Rule by rule, without the records and the plan of a large profile. None for a profile that is out
// of the ordinary.
std::optional<RestoreInputs> plainInputsOf(const Target& profile) {
    const auto adapters = plainAdapters(profile.document);
    if (!adapters) {
        return std::nullopt;
    }
    std::vector<PlannedAdapter> planned;
    for (const auto& [name, adapter] : *adapters) {
        if (adapter.rules.empty() && !adapter.policy) {
            continue;
        }
        planned.push_back({name, adapter.policy, [&plain = adapter](const RuleVisitor& visit) {
                               return visitRules(plain, visit);
                           }});
    }
    return plainInputs(planned, profile.document.text.size());
}

Outcome apply(const Console& console, const Target& profile, Transaction& transaction) {
    if (const std::optional<RestoreInputs> inputs = plainInputsOf(profile)) {
        showProgress(console, profile, inputs->lines);
        return transaction.apply(*inputs, [&profile] { return planOf(profile); });
    }
    const Plan plan = planOf(profile);
    showProgress(console, profile, plan.v4.size() + plan.v6.size());
    return transaction.apply(plan);
}

Json::Value resultJson(const InForce& result) {
    Json::Value document;
    document["applied"] = result.outcome.applied;
    document["profile"] = result.profile;
    document["lines"] = Json::UInt64{result.outcome.lines};
    document["milliseconds"] = Json::Int64{result.outcome.milliseconds};
    document["refused"] = refusalsJson(result.outcome.refused);
    return document;
}

// A document that is refused is an answer, not a failure.
void checkFirst(const Console& console, const Target& profile, Errors errors) try {
    showFindings(console, profile, errors);
} catch (const Failure&) {
    if (console.json) {
        console.out << jsonLine(resultJson({profile.name, true, {}})) << "\n";
    }
    throw;
}

void showText(const Console& console, const InForce& result) {
    if (!result.isEnabled) {
        console.out << "the firewall is disabled: no rules were put into force (profile `"
                    << result.profile << "`)\n";
    } else if (result.outcome.applied) {
        console.out << "profile `" << result.profile << "` is in force: " << result.outcome.lines
                    << " lines in " << result.outcome.milliseconds << " ms\n";
    } else {
        console.err << "nothing was changed: the rules that were in force still are\n"
                    << "  mend the rule, for instance with `zamofw rule replace`\n";
    }
}

// The rules in force are those that were asked for, so a status that cannot be read changes
// nothing: taking back what is stored would leave the kernel with rules that nobody stores.
bool isDisabledNow() try { return !isFirewallEnabled(); } catch (const std::exception&) {
    return false;
}

// `disable` does not wait for a reload: it may have flushed the chains before they were filled.
void flushIfDisabledMeanwhile(InForce& result) {
    if (result.outcome.applied && isDisabledNow()) {
        (void)FW::ZAMOFW().fwClear();
        result.outcome.applied = false;
        result.isEnabled = false;
    }
}

// The library takes the lock by itself.
InForce reloadSequentially(const Console& console, Errors errors) {
    requireRoot(kWhat);
    const Target profile = readTarget({});
    InForce result = {profile.name, isFirewallEnabled(), {}};
    if (!result.isEnabled) {
        return result;
    }
    checkFirst(console, profile, errors);
    const Guards guards = requireChains();
    const Plan plan = planOf(profile);
    showProgress(console, profile, plan.v4.size() + plan.v6.size());
    const SavedRulesAside aside;
    const Clock::time_point begin = Clock::now();
    if (!FW::ZAMOFW().fwReload(/*blEstablished=*/true)) {
        endTrialUnderLock(console);
        failedLineByLine(plan,
                         isFirewallEnabled()
                             ? "the reload failed"
                             : "the reload failed, and the firewall has been switched off");
    }
    removeGuards(guards);
    keepRules(plan);
    dropStartNote();
    endTrialUnderLock(console);
    result.outcome.applied = true;
    result.outcome.lines = plan.v4.size() + plan.v6.size();
    result.outcome.milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
    return result;
}

// Without two profiles that can be read there is nothing to compare.
void showChoice(const Console& console, const Target& chosen) try {
    showMeaning(console, profileOf(readTarget({})), profileOf(chosen));
} catch (const Failure&) {
    return;
}

void choose(const std::string& name) {
    if (!FW::ZAMOFW().fwProfileConfigSet(name, /*reload=*/false)) {
        failed("the choice of the profile `" + name + "` could not be stored",
               "see that /usr/zamo/etc/firewall.d/ can be written to");
    }
}

// Takes the choice back unless the rules of the chosen profile are in force, or none are.
InForce chooseAndPutIntoForce(const Console& console, const ProfileUseRequest& request) {
    std::string previous;
    const bool hasPrevious = FW::ZAMOFW().fwProfileConfigGet(previous);
    choose(request.name);
    const auto takeBack = [&] {
        Json::Value settings;
        settings["profile"] = previous;
        if (hasPrevious && !FW::ZAMOFW().configSet(settings)) {
            console.err << "the choice of `" << request.name << "` could not be taken back\n";
        }
    };
    try {
        InForce result = putIntoForce(console, Errors::kKnown);
        if (result.isEnabled && !result.outcome.applied) {
            takeBack();
        }
        return result;
    } catch (const Failure&) {
        takeBack();
        throw;
    }
}

}  // namespace

InForce putIntoForce(const Console& console, Errors errors) {
    requireRoot(kWhat);
    // All of it under the lock, so that of two reloads the later one has the later profile.
    const ExecutionLock lock;
    return putIntoForce(console, errors, lock);
}

InForce putIntoForce(const Console& console, Errors errors, const ExecutionLock& lock) {
    const auto [name, isEnabled] = settingsInForce();
    InForce result = {name, isEnabled, {}};
    std::optional<Transaction> transaction;
    if (isEnabled) {
        transaction.emplace(lock);
    }
    const Target profile = targetInForce(name);
    if (!isEnabled) {
        return result;
    }
    // What comes before the transaction belongs to the reload as well.
    ReloadRecord record;
    loadKernelModules();
    checkFirst(console, profile, errors);
    const SavedRulesAside aside;
    result.outcome = apply(console, profile, *transaction);
    record.setApplied(result.outcome.applied);
    if (result.outcome.applied) {
        dropStartNote();
        endTrial(console);
    }
    flushIfDisabledMeanwhile(result);
    return result;
}

Status showInForce(const Console& console, const InForce& result) {
    console.err << refusalsText(result.outcome.refused);
    if (console.json) {
        console.out << jsonLine(resultJson(result)) << "\n";
    } else {
        showText(console, result);
    }
    return result.outcome.refused.empty() ? Status::kDone : Status::kFailed;
}

Status reloadAnswer(const Console& console, const ReloadRequest& request) {
    return showInForce(console,
                       request.sequential ? reloadSequentially(console, request.errors)
                                          : putIntoForce(console, request.errors));
}

Status profileUseAnswer(const Console& console, const ProfileUseRequest& request) {
    requireRoot("choosing the profile in force");
    if (isPath(request.name)) {
        wrongUse("`" + request.name + "` is a file, and only a stored profile can be in force",
                 "store it first with `zamofw profile set NAME FILE`");
    }
    const Target profile = readTarget({request.name, {}});
    checkFirst(console, profile, request.errors);
    showChoice(console, profile);
    return recordedChange(request.given, [&] {
        if (request.reload) {
            return showInForce(console, chooseAndPutIntoForce(console, request));
        }
        choose(request.name);
        if (console.json) {
            console.out << jsonLine(resultJson({request.name, true, {}})) << "\n";
        } else {
            console.out << "profile `" << request.name << "` is chosen; `zamofw reload` puts it "
                        << "into force\n";
        }
        return Status::kDone;
    });
}

}  // namespace zamofw
