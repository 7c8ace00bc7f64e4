// What the readers of single values share.
#ifndef COMMAND_WORDS_VALUES_H
#define COMMAND_WORDS_VALUES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zamofw {

// Wrong use that names the word and its value: "`--port 70000`: PROBLEM".
[[noreturn]] void wrongValue(const std::string& word,
                             const std::string& value,
                             const std::string& problem,
                             const std::string& remedy = "");

// "a,b" -> {"a", "b"}. Wrong use when the list or one of its entries is empty.
[[nodiscard]] std::vector<std::string> listFromText(const std::string& word,
                                                    const std::string& text);

// A decimal number without sign and leading zeros, none when it is something else or larger.
[[nodiscard]] std::optional<std::uint64_t> numberFromText(const std::string& text,
                                                          std::uint64_t largest);

// A position as lists print them, counted from 1. Wrong use for anything but 1 to `count`; `what`
// names the list: "the rules of `eth0`".
[[nodiscard]] std::size_t positionFromText(const std::string& text,
                                           std::size_t count,
                                           const std::string& what);

}  // namespace zamofw

#endif
