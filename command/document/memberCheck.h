// Members of objects: duplicates, unknown names, wrong types, unknown codes.
#ifndef COMMAND_DOCUMENT_MEMBERCHECK_H
#define COMMAND_DOCUMENT_MEMBERCHECK_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "command/document/document.h"
#include "command/document/findingList.h"
#include "command/document/location.h"
#include "command/document/memberTable.h"

namespace zamofw {

// The values of an object that a reader sees, by the rows of its table.
class Members {
  public:
    // The value, null when the member is missing or of a wrong type.
    [[nodiscard]] const Node* find(std::size_t row) const { return values_[row]; }
    // False when the member, or an element of its list, has a wrong type: the document cannot be
    // read then.
    [[nodiscard]] bool isSound(std::size_t row) const { return sound_[row]; }
    [[nodiscard]] bool areSound() const;

    // As the library reads it: 0, false or empty when it is missing. Without a value when the type
    // is wrong.
    [[nodiscard]] std::optional<std::int64_t> integer(std::size_t row) const;
    [[nodiscard]] bool flag(std::size_t row) const;
    [[nodiscard]] std::string_view text(std::size_t row) const;
    [[nodiscard]] Span<Node> items(std::size_t row) const;

    static constexpr std::size_t kMaxRows = 18;

  private:
    friend Members checkMembers(
        const Node&, const Location&, const MemberTable&, const char*, bool, FindingList&);
    std::array<const Node*, kMaxRows> values_ = {};
    std::array<bool, kMaxRows> sound_ = {};
};

// Checks an object against its table. `owner` names it in messages: "a rule". Unknown members are
// reported only when `closed`.
[[nodiscard]] Members checkMembers(const Node& object,
                                   const Location& where,
                                   const MemberTable& table,
                                   const char* owner,
                                   bool closed,
                                   FindingList& findings);

// Members with names of the user's own, adapters for instance: those that a reader sees, in the
// order of the text. Reports the duplicates.
[[nodiscard]] std::vector<const Member*> checkFreeMembers(const Node& object,
                                                          const Location& where,
                                                          FindingList& findings);

// Whether the value, and each element of it, has the type.
[[nodiscard]] bool hasType(const Node& value, MemberType type);

// Reports a value, or the elements of it, of a wrong type. `what` names it in the message.
[[nodiscard]] bool checkType(const Node& value,
                             const Location& where,
                             const std::string& what,
                             MemberType type,
                             FindingList& findings);

[[nodiscard]] bool isCode(std::int64_t value, const std::vector<Code>& codes);
[[nodiscard]] Fault codeFault(const std::string& what,
                              std::int64_t value,
                              const std::vector<Code>& codes);

}  // namespace zamofw

#endif
