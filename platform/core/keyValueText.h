#ifndef PLATFORM_CORE_KEYVALUETEXT_H
#define PLATFORM_CORE_KEYVALUETEXT_H

#include <optional>
#include <string>
#include <string_view>

// The text of a key/value file:
//
//     # a comment
//     status="yes"
//     title=" a b "
//     name = plain text
//
// Blanks around a key and around a value without quotes do not count; the quotes keep those inside
// them. Of several equal keys the last one wins.
namespace zamo {

[[nodiscard]] std::string_view trimBlanks(std::string_view text);

// `key` must be trimmed.
[[nodiscard]] std::optional<std::string> findValue(std::string_view text, std::string_view key);

// Whether the pair can be written to such a file and read back.
[[nodiscard]] bool isStorable(std::string_view key, std::string_view value);

// The text with the key's lines replaced by one, at the place of the first; it is appended when
// there is none.
[[nodiscard]] std::string withValue(std::string_view text,
                                    std::string_view key,
                                    std::string_view value);

}  // namespace zamo

#endif
