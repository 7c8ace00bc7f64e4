#include "command/answers/meaningAnswer.h"

#include <limits>
#include <ostream>

#include "command/answers/jsonLine.h"
#include "command/answers/meaning.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

using analysis::Change;
using analysis::Hook;

Json::Value toJson(const Change& change) {
    Json::Value json;
    json["from"] = verdictName(!change.isAllowedAfter);
    json["to"] = verdictName(change.isAllowedAfter);
    json["adapter"] = change.in;
    json["hook"] = hookName(change.hook);
    if (change.hook == Hook::kForward) {
        json["out"] = change.out;
    }
    json["family"] = change.family;
    json["protocol"] = change.protocol;
    json["sources"] = addressesJson(change.sources, change.family);
    if (change.destinations) {
        json["destinations"] = addressesJson(*change.destinations, change.family);
    }
    if (change.sourcePorts) {
        json["source_ports"] = portsJson(*change.sourcePorts);
    }
    if (change.ports) {
        json["ports"] = portsJson(*change.ports);
    }
    json["witness"] = packetJson(change.witness, change.protocol);
    return json;
}

std::string wayText(const Change& change) {
    const auto name = [](const std::string& interface) {
        return interface == analysis::Interfaces::kOther ? "other interfaces" : shown(interface);
    };
    return "in " + name(change.in) +
           (change.hook == Hook::kForward ? " out " + name(change.out) : "");
}

std::string toText(const Change& change) {
    std::string text =
        std::string(change.isAllowedAfter ? "+ allowed: " : "- denied: ") + change.protocol;
    const analysis::Intervals everyPort = {{0, 65535}};
    if (change.ports && *change.ports != everyPort) {
        text += " " + portsText(*change.ports);
    }
    if (change.sourcePorts) {
        text += " source-port " + portsText(*change.sourcePorts);
    }
    text += " from " + addressesText(change.sources, change.family);
    if (change.destinations) {
        text += " to " + addressesText(*change.destinations, change.family);
    }
    return text + " " + wayText(change) + " (IPv" + std::to_string(change.family) + ")\n";
}

}  // namespace

std::string changesText(const std::vector<Change>& changes, std::size_t most) {
    std::string text;
    for (std::size_t i = 0; i < changes.size(); ++i) {
        if (i == most) {
            return text + "and " + std::to_string(changes.size() - most) + " more\n";
        }
        text += toText(changes[i]);
    }
    return text;
}

std::vector<Change> changesInMeaning(const FW::FWPROFILE& before, const FW::FWPROFILE& after) {
    analysis::ModelReader reader(countryRanges());
    const auto one = meaningOf(before, before.name, reader);
    const auto other = meaningOf(after, after.name, reader);
    requireKnown(*one);
    requireKnown(*other);
    return analysis::difference(one->model, other->model);
}

Status meaningAnswer(const Console& console, const DiffRequest& request) {
    const std::vector<Target> targets = diffTargets(request);
    const std::vector<Change> changes =
        changesInMeaning(profileOf(targets[0]), profileOf(targets[1]));
    if (console.json) {
        Json::Value json;
        json["changes"] = Json::arrayValue;
        for (const Change& change : changes) {
            json["changes"].append(toJson(change));
        }
        console.out << jsonLine(json) << "\n";
    } else {
        console.out << changesText(changes, std::numeric_limits<std::size_t>::max());
    }
    return changes.empty() ? Status::kDone : Status::kNo;
}

}  // namespace zamofw
