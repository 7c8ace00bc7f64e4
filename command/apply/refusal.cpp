#include "command/apply/refusal.h"

#include <boost/algorithm/string/predicate.hpp>
#include <sstream>

#include "command/apply/programs.h"
#include "command/apply/refusedLine.h"
#include "command/apply/restoreError.h"

namespace zamofw {
namespace {

using boost::algorithm::starts_with;

// The legacy programs name a line without a cause when its chain is not there; then the program
// that takes one line says more.
std::string causeOfLine(int family,
                        const std::vector<std::string>& lines,
                        std::size_t index,
                        const ProgramResult& result) {
    std::size_t table = index;
    while (table > 0 && !starts_with(lines[table], "*")) {
        --table;
    }
    const std::string words = causeIn(result.error);
    const std::string more =
        boost::ends_with(words, "failed") ? wordsAboutLine(family, lines[table], lines[index]) : "";
    return more.empty() ? words : more;
}

}  // namespace

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

Refusal refusalAt(int family,
                  const RestoreText& input,
                  const std::vector<std::string>& lines,
                  std::size_t index,
                  const std::string& words) {
    Refusal refusal;
    refusal.family = family;
    refusal.line = lines[index];
    refusal.message = words;
    // A table that is not there is refused at the line that opens it.
    const bool opensTable = starts_with(lines[index], "*") && index + 1 < input.origins.size();
    const PlannedLine* const origin = input.origins[index + (opensTable ? 1 : 0)];
    if (origin != nullptr) {
        refusal.line = origin->line;
        refusal.adapter = origin->adapter;
        refusal.position = origin->position;
        refusal.name = origin->name;
    }
    return refusal;
}

Refusal refusalOf(int family, const RestoreText& input, const ProgramResult& result) {
    const std::string program = restoreProgram(family);
    const std::vector<std::string> lines = linesOf(input.text);
    if (const auto table = missingTable(lines, result.error)) {
        return refusalAt(family, input, lines, *table, causeIn(result.error));
    }
    throwUnlessAboutLine(family, program, result);
    const std::size_t number = namedLine(result.error);
    if (number > 0 && number <= lines.size() && lines[number - 1] != "COMMIT") {
        throwIfChainIsMissing(family, lines[number - 1]);
        return refusalAt(
            family, input, lines, number - 1, causeOfLine(family, lines, number - 1, result));
    }
    const RefusedLine refused = findRefusedLine(family, lines);
    if (refused.search == RefusedLine::Search::kNothingRefused) {
        failedProgram(family, program, result);
    }
    const std::string words = refused.words.empty() ? causeIn(result.error) : refused.words;
    if (refused.search == RefusedLine::Search::kFound) {
        return refusalAt(family, input, lines, refused.index, words);
    }
    Refusal refusal;
    refusal.family = family;
    refusal.message = words;
    return refusal;
}

}  // namespace zamofw
