#include "command/answers/configurationExchange.h"

#include <exception>
#include <ostream>

#include "command/answers/meaningAnswer.h"
#include "command/answers/refusalText.h"
#include "command/answers/trialEnd.h"
#include "command/apply/keptRules.h"
#include "command/apply/trial.h"
#include "command/history/configuration.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/hook.h"
#include "zamofirewall/profileDatabase.h"

namespace zamofw {
namespace {

bool isEnabled() {
    bool enabled = false;
    return FW::ZAMOFW().fwStatus(enabled) && enabled;
}

void putRulesIntoForce(const Console& console, Errors errors) {
    const InForce result = putIntoForce(console, errors);
    if (result.outcome.refused.empty()) {
        return;
    }
    failed(refusalsText(result.outcome.refused) +
               "the rules could not be put into force, and everything is as it was before",
           "mend the rule, or disable the firewall first: zamofw disable");
}

// The hooks tell other packages when the firewall is switched on.
void switchOn(const Console& console, Errors errors) {
    FW::ZamoFwHook hook;
    (void)hook.RunFwEnablePreHook();
    try {
        putRulesIntoForce(console, errors);
    } catch (...) {
        (void)hook.RunFwEnablePostHook(false);
        throw;
    }
    (void)hook.RunFwEnablePostHook(true);
}

void followInKernel(const Console& console, bool wasEnabled, Errors errors) {
    if (!isEnabled()) {
        if (!wasEnabled) {
            return;
        }
        const SavedRulesAside aside;
        const bool isSwitchedOff = FW::ZAMOFW().fwDisable();
        endTrialUnderLock(console);
        if (!isSwitchedOff) {
            failed("the firewall could not be switched off", "try `zamofw disable`");
        }
        dropKeptRules();
    } else if (wasEnabled) {
        putRulesIntoForce(console, errors);
    } else {
        switchOn(console, errors);
    }
}

void takeBack(const Console& console, const Json::Value& before) {
    try {
        restoreConfiguration(before);
    } catch (const std::exception& problem) {
        console.err << "what was stored before could not be brought back: " << problem.what()
                    << "\n";
    }
}

// Where memory ran out, nobody knows whether the rules were put into force before.
void takeBackInKernel(const Console& console, Errors errors) {
    try {
        followInKernel(console, /*wasEnabled=*/true, errors);
    } catch (const std::exception& problem) {
        console.err << "the rules of before could not be put back: " << problem.what()
                    << "\n  run `zamofw reload`\n";
    }
}

}  // namespace

void exchangeConfiguration(const Console& console,
                           const Json::Value& configuration,
                           Errors errors) {
    const Json::Value before = readableConfiguration();
    const bool wasEnabled = isEnabled();
    try {
        restoreConfiguration(configuration);
        followInKernel(console, wasEnabled, errors);
    } catch (const Failure&) {
        takeBack(console, before);
        throw;
    } catch (const std::exception&) {
        takeBack(console, before);
        takeBackInKernel(console, errors);
        throw;
    }
}

std::optional<FW::FWPROFILE> profileInForceOf(const Json::Value& configuration) {
    const Json::Value& name = configuration[kExportedSettings]["profile"];
    FW::FWPROFILE profile;
    for (const Json::Value& document : configuration[kExportedProfiles]) {
        // Of two files with the same name the first one is the profile.
        if (name.isString() && document.isObject() && document["name"] == name) {
            return FW::ZAMOFW_JSON_DB().jsonToProfile(document, profile) ? std::optional(profile)
                                                                         : std::nullopt;
        }
    }
    return std::nullopt;
}

void showExchange(const Console& console, const Json::Value& before, const Json::Value& after) {
    const std::optional<FW::FWPROFILE> one = profileInForceOf(before);
    const std::optional<FW::FWPROFILE> other = profileInForceOf(after);
    if (one && other && !console.json && !console.quiet) {
        console.err << meaningText(*one, *other);
    }
}

}  // namespace zamofw
