#include "command/answers/changeFindings.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <boost/algorithm/string/split.hpp>
#include <ostream>
#include <vector>

#include "command/words/quoting.h"
#include "command/words/values.h"

namespace zamofw {
namespace {

constexpr unsigned long kMostRules = 1000000;

// A member's name in a JSON pointer has ~1 for a slash and ~0 for a tilde.
std::string memberName(std::string token) {
    boost::replace_all(token, "~1", "/");
    boost::replace_all(token, "~0", "~");
    return token;
}

}  // namespace

std::string placeInProfile(const std::string& pointer) {
    std::vector<std::string> tokens;
    boost::split(tokens, pointer, boost::is_any_of("/"));
    if (tokens.size() >= 3 && tokens[1] == "adapterPolicyMap") {
        return "the default of " + shown(memberName(tokens[2]));
    }
    if (tokens.size() < 3 || tokens[1] != "rules") {
        return pointer.empty() ? "the profile" : shown(pointer);
    }
    const std::string adapter = shown(memberName(tokens[2]));
    const auto index = tokens.size() > 3 ? numberFromText(tokens[3], kMostRules) : std::nullopt;
    return index ? "rule " + std::to_string(*index + 1) + " of " + adapter
                 : "the rules of " + adapter;
}

void printFinding(std::ostream& out, const Finding& finding) {
    out << (finding.severity == Severity::kError ? "error: " : "warning: ")
        << placeInProfile(finding.path) << ": " << finding.message << "\n";
    if (!finding.remedy.empty()) {
        out << "  " << finding.remedy << "\n";
    }
}

}  // namespace zamofw
