// A rule under check.
#ifndef COMMAND_DOCUMENT_RULE_H
#define COMMAND_DOCUMENT_RULE_H

#include <string>

#include "command/document/document.h"
#include "command/document/location.h"
#include "command/document/memberCheck.h"

namespace zamofw {

struct RuleUnderCheck {
    const Node& node;
    const Location& where;
    const std::string& adapter;
    Members members;

    // Where a fault of a member is shown: at its value, or at the rule when it has none.
    [[nodiscard]] std::size_t offsetOf(std::size_t row) const {
        const Node* const value = members.find(row);
        return value == nullptr ? node.offset : value->offset;
    }
    [[nodiscard]] Location whereOf(std::size_t row) const {
        return members.find(row) == nullptr ? where : Location(where, ruleTable()[row].name);
    }
    // Whether the rule has lines for the family (4 or 6).
    [[nodiscard]] bool wants(int family) const {
        const auto type = members.integer(field::kIpType);
        return type && (*type == (family == 4 ? 0 : 1) || *type == 2);
    }
};

}  // namespace zamofw

#endif
