#include "command/answers/assertAnswer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ostream>

#include "command/answers/meaning.h"
#include "command/answers/systemNames.h"
#include "command/document/textFile.h"
#include "command/jsonLine.h"
#include "command/words/quoting.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

using analysis::Violation;
using Violations = std::vector<std::optional<Violation>>;

// A profile that says what the intents are about.
FW::FWPROFILE profileOfIntents(const std::vector<IntentLine>& intents) {
    FW::FWPROFILE profile;
    for (const IntentLine& line : intents) {
        profile.rules[FW::kGlobalAdapter].push_back(line.rule);
    }
    return profile;
}

Json::Value toJson(const IntentLine& line, const std::optional<Violation>& violation) {
    Json::Value json;
    json["line"] = Json::UInt64{line.line};
    json["holds"] = !violation.has_value();
    json["witness"] = Json::Value();
    json["decided"] = Json::Value();
    if (violation) {
        json["witness"] = placedPacketJson(violation->witness, violation->protocol);
        json["decided"] = placeJson(violation->decider);
        json["decided"]["kind"] = kindName(violation->decider.kind);
    }
    return json;
}

std::string packetText(const Violation& violation) {
    const analysis::Packet& packet = violation.witness;
    const auto number = [](analysis::Number port) {
        return std::to_string(static_cast<unsigned>(port));
    };
    std::string text = violation.protocol;
    if (analysis::hasPorts(packet.protocol)) {
        text += " " + number(packet.port) + " from port " + number(packet.sourcePort) + " of ";
    } else {
        text += " from ";
    }
    text += analysis::addressText(packet.source, packet.family) + " to " +
            analysis::addressText(packet.destination, packet.family) + ", in " +
            packet.in.value_or("");
    return text +
           (packet.hook == analysis::Hook::kForward ? ", out " + packet.out.value_or("") : "");
}

std::string toText(const std::string& file, const IntentLine& line, const Violation& violation) {
    return file + ":" + std::to_string(line.line) + ": does not hold: " + line.text + "\n    " +
           packetText(violation) + ": " + (line.intent.isAllowed ? "denied" : "allowed") + " by " +
           originText(violation.decider) + "\n";
}

}  // namespace

Violations violationsOf(const std::vector<IntentLine>& intents, const FW::FWPROFILE& profile) {
    analysis::ModelReader reader(countryRanges());
    const auto judged = meaningOf(profile, profile.name, reader);
    requireKnown(*judged);
    const auto intended = meaningOf(profileOfIntents(intents), "the intents", reader);
    requireKnown(*intended);
    std::vector<analysis::Intent> wanted;
    wanted.reserve(intents.size());
    for (const IntentLine& line : intents) {
        wanted.push_back(line.intent);
    }
    return analysis::violations(judged->model, intended->model, wanted);
}

void refuseBrokenIntents(const std::function<FW::FWPROFILE()>& profileOfCaller) {
    std::string text;
    if (!readTextQuietly(kIntentsFile, text)) {
        if (errno == ENOENT) {
            return;
        }
        failed(std::string("cannot read ") + kIntentsFile + ": " + std::strerror(errno),
               "mend the file, or delete it; without it nothing is asserted");
    }
    const std::vector<IntentLine> intents = intentsFromText(text, kIntentsFile, systemVocabulary());
    const FW::FWPROFILE profile = profileOfCaller();
    const Violations found = violationsOf(intents, profile);
    std::string broken;
    for (std::size_t i = 0; i < found.size(); ++i) {
        broken += found[i] ? toText(kIntentsFile, intents[i], *found[i]) : "";
    }
    if (!broken.empty()) {
        broken.pop_back();
        throw Failure(Status::kNo,
                      "the profile `" + profile.name + "` breaks what is asserted:\n" + broken,
                      "change the profile, or the intents");
    }
}

Status assertAnswer(const Console& console, const AssertRequest& request) {
    const std::vector<IntentLine> intents =
        intentsFromText(readText(request.file), request.file, systemVocabulary());
    const Target target = readTarget(request.target);
    const Violations found = violationsOf(intents, profileOf(target));
    const bool holds = std::none_of(
        found.begin(), found.end(), [](const auto& violation) { return violation.has_value(); });
    if (console.json) {
        Json::Value json;
        json["ok"] = holds;
        json["intents"] = Json::arrayValue;
        for (std::size_t i = 0; i < found.size(); ++i) {
            json["intents"].append(toJson(intents[i], found[i]));
        }
        console.out << jsonLine(json) << "\n";
    } else {
        for (std::size_t i = 0; i < found.size(); ++i) {
            console.out << (found[i] ? toText(request.file, intents[i], *found[i]) : "");
        }
        if (holds && console.isTerminal && !console.quiet) {
            console.out << "all of them hold\n";
        }
    }
    return holds ? Status::kDone : Status::kNo;
}

}  // namespace zamofw
