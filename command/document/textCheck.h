// Texts that become words of a command line.
#ifndef COMMAND_DOCUMENT_TEXTCHECK_H
#define COMMAND_DOCUMENT_TEXTCHECK_H

#include <optional>
#include <string>
#include <string_view>

#include "command/document/findingList.h"

namespace zamofw {

[[nodiscard]] bool isDigits(std::string_view text);
[[nodiscard]] bool hasControl(std::string_view text);

// Whether the text surely is one word. Of the rest wordFault() knows more; asking it for each of
// some thousand names takes longer than all other checks.
[[nodiscard]] bool isWord(std::string_view text);

// A text that iptables would not see as the one word that it is: with a blank or a control
// character in it, or taken as an option. `what` names it: "the table".
[[nodiscard]] std::optional<Fault> wordFault(const std::string& what, std::string_view text);

// The same for an address, a port or a country. A dash before digits is a bad number there, not an
// option.
[[nodiscard]] std::optional<Fault> entryFault(const std::string& what, std::string_view text);

}  // namespace zamofw

#endif
