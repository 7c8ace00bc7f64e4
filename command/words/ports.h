// The ports of a rule in words: "22,6000-6010".
#ifndef COMMAND_WORDS_PORTS_H
#define COMMAND_WORDS_PORTS_H

#include <string>
#include <vector>

namespace zamofw {

// Every port there is, as a range.
constexpr const char* kEveryPort = "0-65535";
constexpr unsigned long kHighestPort = 65535;

// Ports and ranges, each as it was said. Wrong use, naming `word`, for anything else.
[[nodiscard]] std::vector<std::string> portsFromText(const std::string& word,
                                                     const std::string& text);

}  // namespace zamofw

#endif
