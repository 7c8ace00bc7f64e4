#include "command/answers/statusAnswer.h"

#include <json/value.h>
#include <unistd.h>

#include <ostream>
#include <string>

#include "command/answers/kernelMatch.h"
#include "command/apply/bootTime.h"
#include "command/apply/kernelState.h"
#include "command/apply/startNote.h"
#include "command/apply/trialState.h"
#include "command/document/storedProfile.h"
#include "command/document/storedSettings.h"
#include "command/jsonLine.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

// Those of a profile as its document has them, so that one with faults can be counted too.
std::size_t countRules(const std::string& profile) {
    const std::optional<Document> document = findStored(profile);
    const Member* const adapters = document ? document->root.find("rules") : nullptr;
    std::size_t count = 0;
    if (adapters != nullptr) {
        for (const Member& adapter : adapters->value.members()) {
            count += adapter.value.items().size();
        }
    }
    return count;
}

Json::Value policiesJson(const Policies& policies) {
    Json::Value json;
    json["INPUT"] = policies.input;
    json["FORWARD"] = policies.forward;
    return json;
}

bool isClosed(const Policies& policies) {
    return policies.input == "DROP" || policies.forward == "DROP";
}

std::string policiesText(const Policies& policies) {
    return "INPUT " + policies.input + ", FORWARD " + policies.forward;
}

// What only root may read is not said to others.
std::optional<TrialState> currentTrial(const Console& console) {
    try {
        std::optional<TrialState> trial = readTrial();
        return trial && trial->boot == bootId() ? trial : std::nullopt;
    } catch (const Failure& failure) {
        if (failure.status() != Status::kNotPermitted) {
            console.err << failure.what() << "\n  " << failure.remedy() << "\n";
        }
        return std::nullopt;
    }
}

Json::Value trialJson(const std::optional<TrialState>& trial) {
    Json::Value json;
    if (trial) {
        json["profile"] = trial->profile;
        json["client"] = trial->client ? Json::Value(*trial->client) : Json::Value();
        json["until"] = trial->until;
    }
    return json;
}

std::string trialText(const std::optional<TrialState>& trial) {
    if (!trial) {
        return "none";
    }
    return shown(trial->profile) + (trial->client ? " for " + *trial->client : "") + ", until " +
           trial->until +
           (isStale(*trial) ? "; NOBODY TAKES IT BACK any more: say `zamofw revert`" : "");
}

std::string startText(const StartNote& start) {
    return (start.hasLastRules
                ? "LAST RULES: the start at " + start.time +
                      " could not put the stored rules into force; the last ones that were in force "
                      "still are"
                : "OPEN: the start at " + start.time +
                      " could not put the stored rules into force, and no others took their place") +
           "\n  " + start.cause + "\n  find the cause, then run `zamofw reload`\n";
}

}  // namespace

Status statusAnswer(const Console& console) {
    const StoredSettings settings = storedSettings();
    const std::size_t rules = countRules(settings.profile);
    const bool mayAsk = geteuid() == 0;
    const KernelAnswer kernel =
        mayAsk ? kernelAnswer() : KernelAnswer{"unknown", "only root may ask it"};
    const Policies v4 = mayAsk ? kernelPolicies(4) : Policies();
    const Policies v6 = mayAsk ? kernelPolicies(6) : Policies();
    const std::optional<StartNote> start = readStartNote();
    const std::optional<TrialState> trial = currentTrial(console);
    if (console.json) {
        Json::Value document;
        document["enabled"] = settings.isEnabled;
        document["profile"] = settings.profile;
        document["rules"] = Json::UInt64{rules};
        document["kernel"] = kernel.answer;
        document["policies"]["v4"] = policiesJson(v4);
        document["policies"]["v6"] = policiesJson(v6);
        document["trial"] = trialJson(trial);
        if (start) {
            document["start"]["time"] = start->time;
            document["start"]["in_force"] = start->hasLastRules ? "last" : "none";
            document["start"]["cause"] = start->cause;
        }
        console.out << jsonLine(document) << "\n";
        return Status::kDone;
    }
    console.out << "firewall  " << (settings.isEnabled ? "enabled" : "disabled") << "\n"
                << "profile   " << settings.profile << " (" << rules
                << (rules == 1 ? " rule)\n" : " rules)\n") << "policies  IPv4: " << policiesText(v4)
                << "; IPv6: " << policiesText(v6) << "\n"
                << "kernel    " << kernel.answer << " (" << kernel.reason << ")\n"
                << "trial     " << trialText(trial) << "\n";
    if (isClosed(v4) || isClosed(v6)) {
        console.out
            << "the door is closed: a reload is under way, or one was killed; `zamofw reload` "
               "opens it\n";
    }
    if (start) {
        console.out << startText(*start);
    }
    return Status::kDone;
}

}  // namespace zamofw
