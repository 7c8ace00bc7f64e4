// A list of rules as text: lines for programs, a table for readers.
#ifndef COMMAND_ANSWERS_RULETEXT_H
#define COMMAND_ANSWERS_RULETEXT_H

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "command/answers/ruleHits.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

struct ListedRule {
    std::size_t position = 1;
    FW::FWRULE rule;
    std::optional<std::vector<std::string>> words;  // none when no words say it
    std::string record;                             // as JSON, on one line
    std::optional<Hits> hits;
};

// The position, the counters when they were asked for, and the words as a shell takes them or the
// record.
[[nodiscard]] std::string ruleLine(const ListedRule& rule);

// The same in aligned columns.
void printRuleTable(std::ostream& out, const std::vector<ListedRule>& rules, bool color);

}  // namespace zamofw

#endif
