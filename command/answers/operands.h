// Taking the words of a call apart: options first, then operands.
#ifndef COMMAND_ANSWERS_OPERANDS_H
#define COMMAND_ANSWERS_OPERANDS_H

#include <optional>
#include <string>
#include <vector>

namespace zamofw {

// Takes an option out of the words. Wrong use when it is there twice or has a value.
[[nodiscard]] bool takeFlag(const std::string& option, std::vector<std::string>& words);

// Takes an option with its value, `--option V` or `--option=V`. Wrong use when it is there twice or
// the value is missing.
[[nodiscard]] std::optional<std::string> takeValue(const std::string& option,
                                                   std::vector<std::string>& words);

// Wrong use unless the words are the operands that `usage` names between the command and its
// options; those in brackets may be missing: "rule list [PROFILE] [ADAPTER] [--hits]". From an
// operand WORDS on the words are free. `options` are suggested for an unknown option.
void checkOperands(const std::vector<std::string>& words,
                   const std::string& usage,
                   const std::vector<std::string>& options);

}  // namespace zamofw

#endif
