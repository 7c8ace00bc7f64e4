#include "command/answers/explainAnswer.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <utility>

#include "command/analysis/boxSpace.h"
#include "command/answers/meaning.h"
#include "command/answers/systemNames.h"
#include "command/jsonLine.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"
#include "command/words/values.h"

namespace zamofw {
namespace {

using analysis::Explanation;
using analysis::Origin;
using analysis::PacketQuestion;

void readAddresses(const ExplainRequest& request, PacketQuestion& question) {
    std::optional<int> family;
    const auto read = [&family](const std::string& option, const std::string& text) {
        const Address address = addressOption(option, text);
        if (family && *family != address.family) {
            wrongValue(option, text, "the addresses are of two families", "name two of one family");
        }
        family = address.family;
        return analysis::numberOf(address);
    };
    if (request.family) {
        if (*request.family != "4" && *request.family != "6") {
            wrongValue("--family", *request.family, "this is no family", "a family is 4 or 6");
        }
        family = *request.family == "4" ? 4 : 6;
    }
    if (request.from) {
        question.source = read("--from", *request.from);
    }
    if (request.to) {
        question.destination = read("--to", *request.to);
    }
    question.packet.family = family.value_or(4);
}

void readProtocol(const ExplainRequest& request, PacketQuestion& question) {
    const std::string& word = request.protocol;
    const std::map<std::string, std::uint8_t> names = {
        {"tcp", analysis::kTcp},
        {"udp", analysis::kUdp},
        {"igmp", analysis::kIgmp},
        {"icmp", analysis::icmpOf(question.packet.family)}};
    question.isProtocolKnown = word != "other";
    if (!question.isProtocolKnown) {
        question.packet.protocol = 0;
        return;
    }
    const auto name = names.find(word);
    const auto number = numberFromText(word, 255);
    if (name == names.end() && !number) {
        const std::string near = suggestion(word, {"tcp", "udp", "icmp", "igmp", "other"});
        wrongValue("--proto",
                   word,
                   "a packet has no such protocol" + (near.empty() ? "" : ": " + near),
                   "say tcp, udp, icmp, igmp, a protocol's number, or other");
    }
    question.packet.protocol =
        name != names.end() ? name->second : static_cast<std::uint8_t>(*number);
}

void readPorts(const ExplainRequest& request, PacketQuestion& question) {
    const bool isKnown = question.isProtocolKnown;
    const bool canHave = isKnown && analysis::hasPorts(question.packet.protocol);
    const auto read = [&](const char* option, const std::optional<std::string>& text) {
        if (text && !canHave) {
            wrongValue(
                option, *text, "this protocol has no ports", "leave it out, or say tcp or udp");
        }
        return text ? std::optional(portOption(option, *text)) : std::nullopt;
    };
    question.port = read("--port", request.port);
    question.sourcePort = read("--source-port", request.sourcePort);
}

std::optional<std::string> interfaceOf(const char* option, const std::string& word) {
    if (word.empty()) {
        wrongUse("the value of " + shown(option) + " is empty", "name an interface");
    }
    return word == analysis::Interfaces::kOther ? std::nullopt : std::optional(word);
}

PacketQuestion questionOf(const ExplainRequest& request) {
    PacketQuestion question;
    question.packet.in = interfaceOf("--in", request.in);
    if (request.out) {
        question.packet.hook = analysis::Hook::kForward;
        question.packet.out = interfaceOf("--out", *request.out);
    }
    readAddresses(request, question);
    readProtocol(request, question);
    readPorts(request, question);
    const std::string state = request.state.value_or("new");
    if (state != "new" && state != "established") {
        wrongValue("--state", state, "this is no state", "say new or established");
    }
    question.packet.isEstablished = state == "established";
    return question;
}

// The rules that name countries without data, as if they were for every address. What they have
// instead of countries is not known, so that they may decide about any packet.
class CountryGaps {
  public:
    CountryGaps(FW::FWPROFILE profile, int family) {
        const Vocabulary vocabulary = systemVocabulary();
        for (auto& [adapter, rules] : profile.rules) {
            for (std::size_t i = 0; i < rules.size(); ++i) {
                const std::string missing = missingIn(rules[i], vocabulary, family);
                if (!missing.empty()) {
                    missing_[{adapter, i + 1}] = missing;
                    rules[i].ipGroup = FW::FW_IP_GROUP_ALL;
                }
            }
        }
        profile_ = std::move(profile);
    }

    // What is not known of a packet that `decider` decides about.
    [[nodiscard]] std::vector<std::string> unknownFor(const Explanation& known,
                                                      analysis::ModelReader& reader) const {
        std::vector<std::string> texts;
        if (missing_.empty()) {
            return texts;
        }
        const auto widened = meaningOf(profile_, "", reader);
        for (const Origin& origin : analysis::matchesOf(widened->model, known.packet)) {
            if (origin == known.decider) {
                break;
            }
            const auto gap = missing_.find({origin.adapter, origin.position.value_or(0)});
            if (gap != missing_.end()) {
                texts.push_back(originText(origin) + " names " + gap->second +
                                ", of which there is " + "no IPv" +
                                std::to_string(known.packet.family) + " data on this machine");
            }
        }
        return texts;
    }

  private:
    static std::string missingIn(const FW::FWRULE& rule, const Vocabulary& vocabulary, int family) {
        std::string missing;
        if (rule.ipGroup == FW::FW_IP_GROUP_COUNTRY) {
            for (const std::string& code : rule.ipList) {
                const auto known = vocabulary.countries.find(code);
                if (known == vocabulary.countries.end() || known->second.count(family) == 0) {
                    missing += (missing.empty() ? "" : ", ") + code;
                }
            }
        }
        return missing;
    }

    FW::FWPROFILE profile_;
    std::map<std::pair<std::string, std::size_t>, std::string> missing_;
};

Json::Value placesJson(const std::vector<Origin>& origins) {
    Json::Value list(Json::arrayValue);
    for (const Origin& origin : origins) {
        list.append(placeJson(origin));
    }
    return list;
}

Json::Value textsJson(const std::vector<std::string>& texts) {
    Json::Value list(Json::arrayValue);
    for (const std::string& text : texts) {
        list.append(text);
    }
    return list;
}

Json::Value toJson(const Explanation& answer, const std::vector<std::string>& unknown) {
    Json::Value json = placeJson(answer.decider);
    json["verdict"] = verdictName(answer.isAllowed);
    json["kind"] = kindName(answer.decider.kind);
    json["name"] = answer.decider.name;
    json["lines"] = textsJson(answer.lines);
    json["log"] = placesJson(answer.log);
    json["next"] = placesJson(answer.next);
    json["unknown"] = textsJson(unknown);
    return json;
}

std::string joined(const std::vector<Origin>& origins) {
    std::string text;
    for (const Origin& origin : origins) {
        text += (text.empty() ? "" : ", ") + originText(origin);
    }
    return text;
}

std::string toText(const Explanation& answer, const std::vector<std::string>& unknown) {
    std::string text = std::string(answer.isAllowed ? "allowed" : "denied") + " by " +
                       originText(answer.decider) + "\n";
    if (answer.decider.kind == Origin::Kind::kEnd) {
        text = "allowed: no rule is about it, and there is no default policy\n";
    }
    for (const std::string& line : answer.lines) {
        text += "  " + line + "\n";
    }
    if (!answer.log.empty()) {
        text += "logged by " + joined(answer.log) + "\n";
    }
    if (!answer.next.empty()) {
        text += "would be " + std::string(answer.isAllowed ? "denied" : "allowed") + " by " +
                joined(answer.next) + ", if it came so far\n";
    }
    for (const std::string& gap : unknown) {
        text += "not known: " + gap + "\n";
    }
    return text;
}

}  // namespace

Status explainAnswer(const Console& console, const ExplainRequest& request) {
    const PacketQuestion question = questionOf(request);
    const Target target = readTarget(request.target);
    const FW::FWPROFILE profile = profileOf(target);
    analysis::ModelReader reader(countryRanges());
    const auto meaning = meaningOf(profile, target.name, reader);
    const Explanation answer = analysis::explain(meaning->model, question);
    std::vector<std::string> unknown =
        CountryGaps(profile, question.packet.family).unknownFor(answer, reader);
    for (const analysis::UnknownLine& line : meaning->model.unknown) {
        if (line.family == question.packet.family) {
            unknown.push_back(unknownText(line));
        }
    }
    if (console.json) {
        console.out << jsonLine(toJson(answer, unknown)) << "\n";
    } else {
        console.out << toText(answer, unknown);
    }
    return answer.isAllowed ? Status::kDone : Status::kNo;
}

}  // namespace zamofw
