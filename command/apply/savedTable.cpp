#include "command/apply/savedTable.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <utility>

namespace zamofw {
namespace {

constexpr std::string_view kAppend = "-A ";

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

// ":INPUT ACCEPT [0:0]"
void addChain(const std::string& line, SavedTable& table) {
    const std::size_t name = line.find(' ');
    if (name != std::string::npos) {
        table[line.substr(1, name - 1)].policy =
            line.substr(name + 1, line.find(' ', name + 1) - name - 1);
    }
}

// "-A INPUT ..." or "[1:60] -A INPUT ..."
void addRule(const std::string& line, SavedTable& table) {
    SavedRule rule;
    std::size_t begin = 0;
    if (startsWith(line, "[")) {
        rule.packets = std::strtoull(line.c_str() + 1, nullptr, 10);
        begin = line.find("] ");
        begin = begin == std::string::npos ? line.size() : begin + 2;
    }
    rule.text = line.substr(begin);
    if (startsWith(rule.text, kAppend)) {
        table[std::string(chainOfRule(rule.text))].rules.push_back(std::move(rule));
    }
}

}  // namespace

SavedTables parseTables(const std::string& text) {
    SavedTables tables;
    SavedTable* table = nullptr;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (startsWith(line, "*")) {
            table = &tables[line.substr(1)];
        } else if (table != nullptr && startsWith(line, ":")) {
            addChain(line, *table);
        } else if (table != nullptr) {
            addRule(line, *table);
        }
    }
    return tables;
}

const std::vector<SavedRule>& rulesOf(const SavedTable& table, const std::string& chain) {
    static const std::vector<SavedRule> kNone;
    const auto found = table.find(chain);
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
