#include "command/answers/matrixAnswer.h"

#include <ostream>

#include "command/analysis/matrix.h"
#include "command/answers/meaning.h"
#include "command/jsonLine.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

using analysis::AllowedProtocol;
using analysis::SourceClass;

Json::Value toJson(const SourceClass& entry) {
    Json::Value json;
    json["adapter"] = entry.in;
    json["hook"] = hookName(entry.hook);
    json["family"] = entry.family;
    json["sources"] = addressesJson(entry.sources, entry.family);
    json["allow"] = Json::arrayValue;
    for (const AllowedProtocol& protocol : entry.allowed) {
        Json::Value& allowed = json["allow"].append(Json::objectValue);
        allowed["protocol"] = protocol.name;
        if (protocol.ports) {
            allowed["ports"] = portsJson(*protocol.ports);
        }
    }
    return json;
}

std::string allowedText(const SourceClass& entry) {
    const analysis::Intervals everyPort = {{0, 65535}};
    std::string text;
    for (const AllowedProtocol& protocol : entry.allowed) {
        text += (text.empty() ? "" : "; ") + protocol.name;
        if (protocol.ports && *protocol.ports != everyPort) {
            text += " " + portsText(*protocol.ports);
        }
    }
    return text.empty() ? "nothing" : text;
}

// One heading for the classes of a way.
std::string toText(const std::vector<SourceClass>& classes) {
    std::string text;
    std::string heading;
    for (const SourceClass& entry : classes) {
        const std::string way =
            (entry.in == analysis::Interfaces::kOther ? "other interfaces" : shown(entry.in)) +
            ", " + hookName(entry.hook) + ", IPv" + std::to_string(entry.family) + "\n";
        if (way != heading) {
            heading = way;
            text += way;
        }
        text += "  from " + addressesText(entry.sources, entry.family) + "\n    " +
                allowedText(entry) + "\n";
    }
    return text;
}

}  // namespace

Status matrixAnswer(const Console& console, const MatrixRequest& request) {
    analysis::MatrixQuestion question;
    question.in = request.in;
    if (request.to) {
        const Address address = addressOption("--to", *request.to);
        question.family = address.family;
        question.destination = analysis::numberOf(address);
    }
    const Target target = readTarget(request.target);
    analysis::ModelReader reader(countryRanges());
    const auto meaning = meaningOf(profileOf(target), target.name, reader);
    requireKnown(*meaning);
    const std::vector<SourceClass> classes = analysis::matrix(meaning->model, question);
    if (!console.json) {
        console.out << toText(classes);
        return Status::kDone;
    }
    Json::Value json;
    json["profile"] = target.name;
    json["classes"] = Json::arrayValue;
    for (const SourceClass& entry : classes) {
        json["classes"].append(toJson(entry));
    }
    console.out << jsonLine(json) << "\n";
    return Status::kDone;
}

}  // namespace zamofw
