// What the kernel holds, as iptables-save prints it.
#ifndef COMMAND_APPLY_SAVEDTABLE_H
#define COMMAND_APPLY_SAVEDTABLE_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zamofw {

constexpr const char* kFilterTable = "filter";

struct SavedChain {
    std::string policy;              // "-" for a chain that is not built in
    std::vector<std::string> rules;  // "-A CHAIN ..."
};

using SavedTable = std::map<std::string, SavedChain>;   // by the chain's name
using SavedTables = std::map<std::string, SavedTable>;  // by the table's name

[[nodiscard]] SavedTables parseTables(const std::string& text);

// Both families, each with the tables that are in use. Throws Failure when they cannot be listed.
struct SavedFamilies {
    SavedTables v4;
    SavedTables v6;
};
[[nodiscard]] SavedFamilies savedFamilies();

// The table of this name; an empty one when it is not there.
[[nodiscard]] const SavedTable& tableOf(const SavedTables& tables, std::string_view name);

// The rules of a chain; none when it is not there.
[[nodiscard]] const std::vector<std::string>& rulesOf(const SavedTable& table,
                                                      std::string_view chain);

// The chain that a rule's line is about: the word after "-A ".
[[nodiscard]] std::string_view chainOfRule(std::string_view rule);

// The words of a line; one that stands in quotes is one word, without them.
[[nodiscard]] std::vector<std::string> splitRule(std::string_view rule);

}  // namespace zamofw

#endif
