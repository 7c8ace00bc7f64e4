#include "command/answers/ruleText.h"

#include <algorithm>
#include <ostream>

#include "command/answers/table.h"
#include "command/words/quoting.h"
#include "command/words/ruleWords.h"

namespace zamofw {
namespace {

constexpr const char* kPlain = "\x1b[0m";
constexpr const char* kDim = "\x1b[2m";
constexpr const char* kRed = "\x1b[31m";
constexpr const char* kGreen = "\x1b[32m";

// A row holds the position, the counters, then the words by column, or the record alone.

Row leadingCells(const ListedRule& rule) {
    Row cells = {std::to_string(rule.position)};
    if (rule.hits) {
        cells.push_back(std::to_string(rule.hits->packets));
        cells.push_back(std::to_string(rule.hits->bytes));
    }
    return cells;
}

Row wordCells(const std::vector<std::string>& words) {
    std::vector<std::vector<std::string>> columns(kWordColumns);
    std::size_t column = 0;
    for (std::size_t i = 0; i < words.size(); ++i) {
        column = static_cast<std::size_t>(columnOf(words[i]));
        columns[column].push_back(words[i]);
        if (takesValue(words[i])) {
            columns[column].push_back(words[++i]);
        }
    }
    Row cells;
    for (const std::vector<std::string>& list : columns) {
        cells.push_back(shellQuoted(list));
    }
    return cells;
}

Row rowOf(const ListedRule& rule) {
    Row row = leadingCells(rule);
    const Row rest = rule.words ? wordCells(*rule.words) : Row{rule.record};
    row.insert(row.end(), rest.begin(), rest.end());
    return row;
}

const char* colorOf(const FW::FWRULE& rule) {
    if (!rule.enable) {
        return kDim;
    }
    if (rule.policy == FW::FW_POLICY_ALLOW) {
        return kGreen;
    }
    return rule.policy == FW::FW_POLICY_DENY ? kRed : kPlain;
}

void printRow(std::ostream& out, const Row& row, const std::vector<std::size_t>& widths) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string padding(widths[i] - std::min(widths[i], shownWidth(row[i])), ' ');
        // Numbers to the right, words to the left.
        const bool isNumber = i + kWordColumns < widths.size();
        line += (i == 0 ? "" : "  ") + (isNumber ? padding + row[i] : row[i] + padding);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line;
}

}  // namespace

std::string ruleLine(const ListedRule& rule) {
    std::string line;
    for (const std::string& cell : leadingCells(rule)) {
        line += cell + " ";
    }
    return line + (rule.words ? shellQuoted(*rule.words) : rule.record);
}

void printRuleTable(std::ostream& out, const std::vector<ListedRule>& rules, bool color) {
    std::vector<std::size_t> widths;
    for (const ListedRule& rule : rules) {
        widths.resize(leadingCells(rule).size() + kWordColumns);
        const Row row = rowOf(rule);
        for (std::size_t i = 0; rule.words && i < row.size(); ++i) {
            widths[i] = std::max(widths[i], shownWidth(row[i]));
        }
    }
    for (const ListedRule& rule : rules) {
        out << (color ? colorOf(rule.rule) : "");
        printRow(out, rowOf(rule), widths);
        out << (color ? kPlain : "") << "\n";
    }
}

}  // namespace zamofw
