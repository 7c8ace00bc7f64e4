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
// Blanks around a key or an unquoted value are ignored; quotes preserve the blanks inside. If a key
// appears several times, the last one wins.
namespace zamo {

[[nodiscard]] std::string_view trimBlanks(std::string_view text);

// `key` must be trimmed.
[[nodiscard]] std::optional<std::string> findValue(std::string_view text, std::string_view key);

// Whether the pair can be stored and read back unchanged.
[[nodiscard]] bool isStorable(std::string_view key, std::string_view value);

// The text with the key's first line replaced and its other lines removed. A new key is appended.
[[nodiscard]] std::string withValue(std::string_view text,
                                    std::string_view key,
                                    std::string_view value);

}  // namespace zamo

#endif
