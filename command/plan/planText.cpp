// A plan for readers: text and JSON.

#include <json/value.h>

#include "command/jsonLine.h"
#include "command/plan/plan.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

const char* kindName(LineKind kind) {
    switch (kind) {
        case LineKind::kBuiltIn:
            return "built-in";
        case LineKind::kRule:
            return "rule";
        case LineKind::kDefault:
            return "default";
    }
    return "";
}

bool haveOneOrigin(const PlannedLine& one, const PlannedLine& other) {
    return one.kind == other.kind && one.adapter == other.adapter && one.position == other.position;
}

// A name may hold what would end the comment.
std::string commentOf(const PlannedLine& line) {
    std::string comment = "# " + originText(line);
    for (char& byte : comment) {
        byte = static_cast<unsigned char>(byte) < ' ' || byte == '\x7f' ? '?' : byte;
    }
    return comment + "\n";
}

void appendLines(const std::vector<PlannedLine>& lines,
                 const char* program,
                 bool withOrigins,
                 std::string& text) {
    const PlannedLine* previous = nullptr;
    for (const PlannedLine& line : lines) {
        if (withOrigins && (previous == nullptr || !haveOneOrigin(*previous, line))) {
            text += commentOf(line);
        }
        previous = &line;
        text.append(program).append(" ").append(line.line).append("\n");
    }
}

std::string linesOf(const Plan& plan, bool withOrigins) {
    std::string text;
    appendLines(plan.v4, FW::kIpv4.program, withOrigins, text);
    appendLines(plan.v6, FW::kIpv6.program, withOrigins, text);
    return text;
}

Json::Value linesToJson(const std::vector<PlannedLine>& lines) {
    Json::Value array(Json::arrayValue);
    for (const PlannedLine& line : lines) {
        array.append(lineJson(line));
    }
    return array;
}

}  // namespace

std::string originText(const PlannedLine& line) {
    switch (line.kind) {
        case LineKind::kBuiltIn:
            return "built-in";
        case LineKind::kDefault:
            return "the default policy of " + line.adapter;
        case LineKind::kRule:
            break;
    }
    const std::string rule = "rule " + std::to_string(line.position.value_or(0)) + " of ";
    return rule + line.adapter + (line.name.empty() ? "" : " (" + line.name + ")");
}

std::string planLines(const Plan& plan) {
    return linesOf(plan, /*withOrigins=*/false);
}

std::string planLinesWithOrigins(const Plan& plan) {
    return linesOf(plan, /*withOrigins=*/true);
}

Json::Value lineJson(const PlannedLine& line) {
    Json::Value entry;
    entry["line"] = line.line;
    entry["adapter"] = line.adapter;
    entry["kind"] = kindName(line.kind);
    entry["position"] = line.position ? Json::Value(Json::UInt64{*line.position}) : Json::Value();
    entry["name"] = line.name;
    return entry;
}

std::string planJson(const Plan& plan) {
    Json::Value document;
    document["profile"] = plan.profile;
    document["v4"] = linesToJson(plan.v4);
    document["v6"] = linesToJson(plan.v6);
    return jsonLine(document) + "\n";
}

}  // namespace zamofw
