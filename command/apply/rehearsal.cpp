#include "command/apply/rehearsal.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <cerrno>
#include <cstring>
#include <utility>

#include "command/apply/jumps.h"
#include "command/apply/programs.h"
#include "command/apply/refusal.h"
#include "command/apply/restoreError.h"
#include "command/console.h"

namespace zamofw {
namespace {

using boost::algorithm::starts_with;

// The legacy programs share one lock for all network namespaces, and nothing here needs it: any
// file that nobody else knows serves instead. The program's own output is one.
constexpr const char* kNoLock = "XTABLES_LOCKFILE=/proc/self/fd/1";

std::string chainLine(const std::string& chain) {
    return ":" + chain + " - [0:0]\n";
}

// An input that makes the chains that programs have made in a table. They are empty, but those of
// the firewall are called: some rules are refused for what calls their chain.
std::string chainsInput(const std::string& table, const SavedTable& there) {
    std::string chains;
    for (const auto& [chain, state] : there) {
        const bool isOurs =
            std::find(kOurChains.begin(), kOurChains.end(), chain) != kOurChains.end();
        chains += state.policy == "-" && !(isOurs && table == kFilterTable) ? chainLine(chain) : "";
    }
    if (table == kFilterTable) {
        for (const char* const chain : kOurChains) {
            chains += chainLine(chain);
        }
        for (const Hook& hook : kHooks) {
            for (const std::string& jump : jumpsOf(hook)) {
                chains += jump + "\n";
            }
        }
    }
    return "*" + table + "\n" + chains + "COMMIT\n";
}

// Of lists of addresses the programs make a rule for each combination.
std::size_t rulesMadeOf(const std::string& line) {
    std::size_t count = 1;
    if (line.find(',') != std::string::npos) {
        const std::vector<std::string> words = splitRule(line);
        for (std::size_t i = 1; i < words.size(); ++i) {
            if (words[i - 1] == "-s" || words[i - 1] == "-d") {
                count *=
                    static_cast<std::size_t>(std::count(words[i].begin(), words[i].end(), ',')) + 1;
            }
        }
    }
    return count;
}

}  // namespace

Rehearsal::Rehearsal(const Plan& plan, int family, const SavedTables& there) : family_(family) {
    takeOutUnsayable(plan);
    text_ = restoreText(plan_, family);
    lines_ = linesOf(text_.text);
    isOut_.resize(lines_.size());
    for (const std::string& line : lines_) {
        if (starts_with(line, "*")) {
            tables_.push_back(line.substr(1));
            chainInputs_.push_back(chainsInput(tables_.back(), tableOf(there, tables_.back())));
        }
    }
}

void Rehearsal::takeOutUnsayable(const Plan& plan) {
    std::vector<PlannedLine>& lines = family_ == 4 ? plan_.v4 : plan_.v6;
    lines = family_ == 4 ? plan.v4 : plan.v6;
    try {
        (void)restoreText(plan_, family_);
        return;
    } catch (const UnsayableLine&) {
    }
    const auto isUnsayable = [this](const PlannedLine& line) {
        try {
            requireSayable(line, family_);
            return false;
        } catch (const UnsayableLine& problem) {
            unsayable_.push_back(
                {family_, line.line, line.adapter, line.position, line.name, problem.why()});
            return true;
        }
    };
    lines.erase(std::remove_if(lines.begin(), lines.end(), isUnsayable), lines.end());
}

std::vector<const PlannedLine*> Rehearsal::plannedIn(const std::string& table,
                                                     const std::string& chain) const {
    std::vector<const PlannedLine*> lines;
    bool isInTable = false;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        if (starts_with(lines_[i], "*")) {
            isInTable = lines_[i].substr(1) == table;
        } else if (isInTable && isRule(i) && !isOut_[i] && chainOfRule(lines_[i]) == chain) {
            lines.insert(lines.end(), rulesMadeOf(lines_[i]), text_.origins[i]);
        }
    }
    return lines;
}

void Rehearsal::prepare() const {
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        const posix::Descriptor input = memoryFile(chainInputs_[i]);
        const ProgramResult result =
            Program({restoreProgram(family_), "-w", kLockSeconds}, input.get(), {}, kNoLock)
                .finish();
        if (result.status != 0 && tables_[i] == kFilterTable) {
            failedProgram(family_, restoreProgram(family_), result);
        }
    }
}

// The lines from `begin` to `end` that have not been refused. A table of which no line is left is
// left out, since it may be the table that the kernel does not have.
Rehearsal::Attempt Rehearsal::attempt(std::size_t begin, std::size_t end) const {
    Attempt result;
    Attempt table;
    bool isNeeded = false;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        if (isRule(i) && (isOut_[i] || i < begin || i >= end)) {
            continue;
        }
        table.text += lines_[i] + "\n";
        table.indices.push_back(i);
        isNeeded = isNeeded || isRule(i) || lines_[i] == "*filter";
        if (lines_[i] == "COMMIT") {
            if (isNeeded) {
                result.text += table.text;
                result.indices.insert(
                    result.indices.end(), table.indices.begin(), table.indices.end());
            }
            table = {};
            isNeeded = false;
        }
    }
    return result;
}

Program Rehearsal::start(const Attempt& attempt) const {
    std::vector<std::string> command = {restoreProgram(family_), "--noflush", "-w", kLockSeconds};
    const posix::Descriptor input = memoryFile(attempt.text);
    return Program(command, input.get(), {}, kNoLock);
}

Program Rehearsal::start() const {
    return start(attempt(0, lines_.size()));
}

void Rehearsal::refuse(std::size_t index, const std::string& words) {
    isOut_[index] = true;
    refused_[index] = refusalAt(family_, text_, lines_, index, words);
}

// What the program that takes one rule says. Only the input's parser takes quotes apart.
std::string Rehearsal::wordsAbout(std::size_t index) const {
    if (lines_[index].find('"') != std::string::npos) {
        return "";
    }
    std::size_t table = index;
    while (!starts_with(lines_[table], "*")) {
        --table;
    }
    std::vector<std::string> command = {
        tool(family_), "-w", kLockSeconds, "-t", lines_[table].substr(1)};
    const std::vector<std::string> words = splitRule(lines_[index]);
    command.insert(command.end(), words.begin(), words.end());
    return causeIn(Program(command, -1, {}, kNoLock).finish().error);
}

void Rehearsal::refuseTable(const Attempt& attempt,
                            std::size_t opening,
                            const ProgramResult& failure) {
    for (std::size_t i = opening; i < attempt.indices.size(); ++i) {
        const std::size_t index = attempt.indices[i];
        if (lines_[index] == "COMMIT") {
            return;
        }
        if (isRule(index)) {
            refuse(index, causeIn(failure.error));
        }
    }
}

// Takes out the line that the program does not understand, and gives back where to go on. 0 when it
// understands all; the lines that it names when the kernel refuses some are more than those.
std::size_t Rehearsal::refuseNamed(const Attempt& attempt, const ProgramResult& failure) {
    const std::size_t number = namedLine(failure.error);
    if (number == 0 || number > attempt.indices.size()) {
        return 0;
    }
    const std::size_t index = attempt.indices[number - 1];
    if (!isRule(index)) {
        return 0;
    }
    const std::string words = causeIn(failure.error);
    // Numbers of lines are of no use here, and sometimes all that the program says.
    const std::string more = boost::contains(words, ": line ") ? wordsAbout(index) : "";
    refuse(index, more.empty() ? words : more);
    return index + 1;
}

// The kernel refuses a whole table: parts of it are tried.
void Rehearsal::refuseWithin(const std::vector<std::size_t>& rules, const NoteRefused& note) {
    if (rules.empty()) {
        return;
    }
    const ProgramResult result = start(attempt(rules.front(), rules.back() + 1)).finish();
    if (result.status == 0) {
        return;
    }
    if (rules.size() == 1) {
        const std::string words = wordsAbout(rules.front());
        refuse(rules.front(), words.empty() ? causeIn(result.error) : words);
        if (note != nullptr) {
            note(unsayable_.size() + refused_.size());
        }
        return;
    }
    const auto middle = rules.begin() + static_cast<std::ptrdiff_t>(rules.size() / 2);
    refuseWithin({rules.begin(), middle}, note);
    refuseWithin({middle, rules.end()}, note);
}

// At least one line. `begin` is then where to go on.
void Rehearsal::refuseSome(const Attempt& tried,
                           const ProgramResult& failure,
                           const NoteRefused& note,
                           std::size_t& begin) {
    const std::size_t before = refused_.size();
    std::vector<std::string> lines;
    std::vector<std::size_t> rules;
    for (const std::size_t index : tried.indices) {
        lines.push_back(lines_[index]);
        if (isRule(index)) {
            rules.push_back(index);
        }
    }
    if (const auto table = missingTable(lines, failure.error)) {
        refuseTable(tried, *table, failure);
    } else {
        throwUnlessAboutLine(family_, restoreProgram(family_), failure);
        begin = refuseNamed(tried, failure);
    }
    if (refused_.size() == before) {
        refuseWithin(rules, note);
    }
    if (refused_.size() == before) {
        failedProgram(family_, restoreProgram(family_), failure);
    }
}

// What is behind a refused line is tried without what is before it, so that the work stays in
// proportion to the lines; at the end all lines that are left are tried together.
void Rehearsal::findRefused(const ProgramResult& failure, const NoteRefused& note) {
    Attempt tried = attempt(0, lines_.size());
    ProgramResult result = failure;
    std::size_t begin = 0;
    while (result.status != 0 || begin != 0) {
        if (result.status == 0) {
            begin = 0;
        } else {
            refuseSome(tried, result, note, begin);
            if (note != nullptr) {
                note(unsayable_.size() + refused_.size());
            }
        }
        tried = attempt(begin, lines_.size());
        result = start(tried).finish();
    }
}

std::vector<Refusal> Rehearsal::refused() const {
    std::vector<Refusal> all = unsayable_;
    for (const auto& [index, refusal] : refused_) {
        all.push_back(refusal);
    }
    return all;
}

void requireEntered(const ScratchNetwork& network) {
    if (!network.isEntered()) {
        failed(
            std::string("there is no place to try the lines: no network namespace can be made: ") +
                std::strerror(errno),
            "it takes root with the capability CAP_SYS_ADMIN; a container may have to be given "
            "it");
    }
}

std::vector<Refusal> rehearse(const Plan& plan, const NoteRefused& note) {
    const SavedFamilies there = savedFamilies();
    Rehearsal v4(plan, 4, there.v4);
    Rehearsal v6(plan, 6, there.v6);
    const ScratchNetwork network;
    requireEntered(network);
    v4.prepare();
    v6.prepare();
    Program first = v4.start();
    Program second = v6.start();
    const ProgramResult result4 = first.finish();
    const ProgramResult result6 = second.finish();
    v4.findRefused(result4, note);
    const std::size_t refused4 = v4.refused().size();
    v6.findRefused(result6, [&note, refused4](std::size_t count) {
        if (note != nullptr) {
            note(refused4 + count);
        }
    });
    std::vector<Refusal> refused = v4.refused();
    for (const Refusal& refusal : v6.refused()) {
        refused.push_back(refusal);
    }
    return refused;
}

}  // namespace zamofw
