#include "command/apply/savedTable.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "command/apply/program.h"
#include "command/apply/programs.h"
#include "command/apply/restoreError.h"
#include "command/console.h"
#include "command/startsWith.h"

namespace zamofw {
namespace {

constexpr std::string_view kAppend = "-A ";

// ":INPUT ACCEPT [0:0]"
void addChain(const std::string& line, SavedTable& table) {
    const std::size_t name = line.find(' ');
    if (name != std::string::npos) {
        table[line.substr(1, name - 1)].policy =
            line.substr(name + 1, line.find(' ', name + 1) - name - 1);
    }
}

SavedTables tablesIn(int family, const ProgramResult& result) {
    constexpr const char* kForeign = "# Table `filter' is incompatible, use 'nft' tool.";
    if (result.output.find(kForeign) != std::string::npos) {
        failed(
            saveProgram(family) +
                " cannot list the filter table: somebody has put rules into it "
                "that only the program nft understands",
            "`nft list table " + std::string(family == 4 ? "ip" : "ip6") + " filter` shows them");
    }
    if (result.status != 0) {
        failedProgram(family, saveProgram(family), result);
    }
    return parseTables(result.output);
}

}  // namespace

SavedFamilies savedFamilies() {
    Program first({saveProgram(4)});
    Program second({saveProgram(6)});
    const ProgramResult v4 = first.finish();
    const ProgramResult v6 = second.finish();
    return {tablesIn(4, v4), tablesIn(6, v6)};
}

const SavedTable& tableOf(const SavedTables& tables, std::string_view name) {
    static const SavedTable kNone;
    const auto found = tables.find(std::string(name));
    return found == tables.end() ? kNone : found->second;
}

SavedTables parseTables(const std::string& text) {
    SavedTables tables;
    SavedTable* table = nullptr;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (startsWith(line, "*")) {
            table = &tables[line.substr(1)];
        } else if (table != nullptr && startsWith(line, ":")) {
            addChain(line, *table);
        } else if (table != nullptr && startsWith(line, kAppend)) {
            (*table)[std::string(chainOfRule(line))].rules.push_back(line);
        }
    }
    return tables;
}

const std::vector<std::string>& rulesOf(const SavedTable& table, std::string_view chain) {
    static const std::vector<std::string> kNone;
    const auto found = table.find(std::string(chain));
    return found == table.end() ? kNone : found->second.rules;
}

std::string_view chainOfRule(std::string_view rule) {
    rule.remove_prefix(std::min(rule.size(), kAppend.size()));
    return rule.substr(0, rule.find(' '));
}

std::vector<std::string> splitRule(std::string_view rule) {
    std::vector<std::string> words;
    std::string word;
    bool isQuoted = false;
    bool isWord = false;
    for (std::size_t i = 0; i < rule.size(); ++i) {
        if (rule[i] == '"') {
            isQuoted = !isQuoted;
            isWord = true;
        } else if (rule[i] == ' ' && !isQuoted) {
            if (isWord) {
                words.push_back(word);
            }
            word.clear();
            isWord = false;
        } else {
            i += isQuoted && rule[i] == '\\' && i + 1 < rule.size() ? 1U : 0U;
            word += rule[i];
            isWord = true;
        }
    }
    if (isWord) {
        words.push_back(word);
    }
    return words;
}

}  // namespace zamofw
