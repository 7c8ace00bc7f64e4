#include "command/document/findingText.h"

#include <json/value.h>

#include "command/document/check.h"
#include "command/jsonLine.h"

namespace zamofw {
namespace {

constexpr const char* kShadowed = "shadowed";

const char* wordOf(Severity severity) {
    return severity == Severity::kError ? "error" : "warning";
}

Json::Value toJson(const Finding& finding) {
    Json::Value json(Json::objectValue);
    json["severity"] = wordOf(finding.severity);
    json["kind"] = finding.kind;
    json["file"] = finding.file;
    json["line"] = static_cast<Json::UInt64>(finding.line);
    json["column"] = static_cast<Json::UInt64>(finding.column);
    json["path"] = finding.path;
    json["message"] = finding.message;
    json["remedy"] = finding.remedy;
    if (finding.kind == kShadowed) {
        json["by"] = Json::arrayValue;
        for (const FindingPlace& place : finding.by) {
            Json::Value entry;
            entry["adapter"] = place.adapter;
            entry["position"] =
                place.position ? Json::Value(Json::UInt64{*place.position}) : Json::Value();
            json["by"].append(entry);
        }
    }
    return json;
}

}  // namespace

std::string findingsJson(const Findings& findings) {
    Json::Value answer(Json::objectValue);
    answer["ok"] = !hasError(findings);
    answer["findings"] = Json::arrayValue;
    for (const Finding& finding : findings) {
        answer["findings"].append(toJson(finding));
    }
    return jsonLine(answer);
}

std::string findingsText(const Findings& findings) {
    std::string text;
    for (const Finding& finding : findings) {
        text += finding.file + ':' + std::to_string(finding.line) + ':' +
                std::to_string(finding.column) + ": " + wordOf(finding.severity) + ": " +
                finding.message + " [" + finding.kind + "]\n";
        if (!finding.remedy.empty()) {
            text += "    " + finding.remedy + '\n';
        }
    }
    return text;
}

}  // namespace zamofw
