// What the objects of a document may hold: the members with their types and codes.
#ifndef COMMAND_DOCUMENT_MEMBERTABLE_H
#define COMMAND_DOCUMENT_MEMBERTABLE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zamofw {

enum class MemberType { kFlag, kInteger, kText, kTexts, kObject };

struct Code {
    std::int64_t value;
    const char* meaning;
};

// A member that is missing, or null, reads as false, 0, an empty text, list or object.
struct MemberRow {
    std::string name;
    MemberType type;
    std::vector<Code> codes = {};  // an integer without codes takes every value
};

using MemberTable = std::vector<MemberRow>;

// The row of a name, or the number of rows. The search begins at the guess: members mostly come in
// the order of their table, which is that of the alphabet.
[[nodiscard]] std::size_t searchedRow(const MemberTable& table,
                                      std::string_view name,
                                      std::size_t guess);
[[nodiscard]] inline std::size_t rowOf(const MemberTable& table,
                                       std::string_view name,
                                       std::size_t guess) {
    return guess < table.size() && table[guess].name == name ? guess
                                                             : searchedRow(table, name, guess);
}

// The rows of the rule table, by name.
namespace field {
enum Field : std::size_t {
    kAdapterDirect,
    kBlLog,
    kChainList,
    kEnable,
    kIpDirect,
    kIpGroup,
    kIpList,
    kIpType,
    kLabelList,
    kName,
    kPolicy,
    kPortDirect,
    kPortGroup,
    kPortList,
    kProtocol,
    kRuleId,
    kRuleIndex,
    kTable,
};
}  // namespace field

// The rows of the profile table.
namespace profileField {
enum ProfileField : std::size_t { kPolicies, kName, kRules };
}  // namespace profileField

// The rows of the tables of an export and of the settings in it.
namespace exportField {
enum ExportField : std::size_t { kSettings, kProfiles, kVersion };
}  // namespace exportField
namespace settingsField {
enum SettingsField : std::size_t { kProfile, kStatus };
}  // namespace settingsField

[[nodiscard]] const MemberTable& ruleTable();
[[nodiscard]] const MemberTable& profileTable();
[[nodiscard]] const MemberTable& exportTable();
[[nodiscard]] const MemberTable& settingsTable();

// Of rules, and of default policies.
[[nodiscard]] const std::vector<Code>& policyCodes();
// Codes of a protocol; they matter only beside ports.
[[nodiscard]] const std::vector<Code>& protocolCodes();

}  // namespace zamofw

#endif
