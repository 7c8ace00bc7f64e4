#include "command/apply/refusal.h"

#include <sys/stat.h>

#include <array>
#include <boost/algorithm/string/predicate.hpp>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string_view>

#include "command/apply/kernelState.h"
#include "command/apply/lockHolders.h"
#include "command/apply/programs.h"
#include "command/apply/refusedLine.h"
#include "command/console.h"

namespace zamofw {
namespace {

using boost::algorithm::contains;
using boost::algorithm::starts_with;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The number of the line that the program names, from 1; 0 when it names none.
std::size_t namedLine(const std::string& error) {
    constexpr std::array<const char*, 2> kStarts = {"Error occurred at line: ", ": line "};
    for (const char* const start : kStarts) {
        const std::size_t found = error.find(start);
        if (found != std::string::npos) {
            return std::strtoul(
                error.c_str() + found + std::string_view(start).size(), nullptr, 10);
        }
    }
    return 0;
}

// The line that opens a table of a rule's own which the kernel does not have; nothing when the
// words are about something else.
std::optional<std::size_t> missingTable(const std::vector<std::string>& lines,
                                        const std::string& error) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (starts_with(lines[i], "*") && lines[i] != "*filter" &&
            contains(error, "table '" + lines[i].substr(1) + "'")) {
            return i;
        }
    }
    return std::nullopt;
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

std::string remedyFor(int family, const std::string& words) {
    struct stat status = {};
    if (family == 6 && stat("/proc/net/if_inet6", &status) != 0) {
        return "this kernel has no IPv6, but the firewall covers both families: start it without "
               "ipv6.disable=1, or load its module";
    }
    if (contains(words, "Permission denied") || contains(words, "Operation not permitted")) {
        return "it takes root with the capability CAP_NET_ADMIN; a container may have to be given "
               "it";
    }
    if (contains(words, "initialize") || contains(words, "Table does not exist") ||
        contains(words, "generation id")) {
        return "load the module of the packet filter (modprobe ip_tables iptable_filter, "
               "ip6_tables ip6table_filter or nf_tables), or choose the other variant with "
               "update-alternatives --config iptables";
    }
    return "";
}

void throwUnlessAboutLine(int family, const std::string& program, const ProgramResult& result) {
    if (result.status < 0) {
        failed(program + " was ended by signal " + std::to_string(result.signal));
    }
    throwIfLockIsHeld(result);
    constexpr std::array<const char*, 5> kNotALine = {"you must be root",
                                                      "Operation not permitted",
                                                      "initialize",
                                                      "Table does not exist",
                                                      "generation id"};
    for (const char* const words : kNotALine) {
        if (contains(result.error, words)) {
            failedProgram(family, program, result);
        }
    }
}

// "-F CHAIN" and ":CHAIN - [0:0]" are about one of the firewall's chains.
void throwIfChainIsMissing(int family, const std::string& line) {
    if (starts_with(line, "-F ")) {
        chainIsMissing(family, line.substr(3));
    }
    if (starts_with(line, ":")) {
        chainIsMissing(family, line.substr(1, line.find(' ') - 1));
    }
}

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

std::vector<Refusal> refusedLines(const Plan& plan) {
    std::vector<Refusal> refusals;
    for (const int family : {4, 6}) {
        const RestoreText input = restoreText(plan, family);
        const std::vector<std::string> lines = linesOf(input.text);
        const RefusedLine refused = findRefusedLine(family, lines);
        if (refused.search == RefusedLine::Search::kFound) {
            refusals.push_back(refusalAt(family, input, lines, refused.index, refused.words));
        }
    }
    return refusals;
}

void throwIfLockIsHeld(const ProgramResult& result) {
    if (result.status > 0 && contains(result.error, "xtables lock")) {
        failed("the xtables lock " + std::string(kXtablesLock) + " was not free within " +
                   kLockSeconds + " seconds" + lockHolders(kXtablesLock) + "\n" +
                   causeIn(result.error),
               "another program is changing the packet filter; try again when it has ended");
    }
}

void failedProgram(int family, const std::string& program, const ProgramResult& result) {
    const std::string words = causeIn(result.error);
    failed(program + " failed with status " + std::to_string(result.status) +
               (words.empty() ? "" : ":\n" + words),
           remedyFor(family, words));
}

}  // namespace zamofw
