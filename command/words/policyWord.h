// The words for policies: allow, deny and none.
#ifndef COMMAND_WORDS_POLICYWORD_H
#define COMMAND_WORDS_POLICYWORD_H

#include <optional>
#include <string>

#include "zamofirewall/ruleModel.h"

namespace zamofw {

[[nodiscard]] std::optional<FW::FW_POLICY> policyFromWord(const std::string& word);

// For a near miss, or the word of another firewall: "did you mean `deny`?"; empty for anything
// else.
[[nodiscard]] std::string suggestedPolicy(const std::string& word);

// None for a code that no word stands for.
[[nodiscard]] std::optional<std::string> wordOfPolicy(FW::FW_POLICY policy);

// For readers: a code without a word is shown as a number.
[[nodiscard]] std::string policyText(FW::FW_POLICY policy);

}  // namespace zamofw

#endif
