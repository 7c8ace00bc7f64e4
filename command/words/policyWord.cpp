#include "command/words/policyWord.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>

#include "command/words/suggestion.h"

namespace zamofw {
namespace {

struct PolicyWord {
    const char* word;
    FW::FW_POLICY policy;
};
constexpr std::array<PolicyWord, 3> kPolicyWords = {{
    {"allow", FW::FW_POLICY_ALLOW},
    {"deny", FW::FW_POLICY_DENY},
    {"none", FW::FW_POLICY_NONE},
}};

}  // namespace

std::optional<FW::FW_POLICY> policyFromWord(const std::string& word) {
    for (const PolicyWord& row : kPolicyWords) {
        if (word == row.word) {
            return row.policy;
        }
    }
    return std::nullopt;
}

std::string suggestedPolicy(const std::string& word) {
    const auto isOneOf = [&word](std::initializer_list<const char*> words) {
        return std::find(words.begin(), words.end(), word) != words.end();
    };
    if (isOneOf({"accept", "permit", "pass"})) {
        return suggestion("allow", {"allow"});
    }
    if (isOneOf({"drop", "reject", "block"})) {
        return suggestion("deny", {"deny"});
    }
    return suggestion(word, {"allow", "deny", "none"});
}

std::optional<std::string> wordOfPolicy(FW::FW_POLICY policy) {
    for (const PolicyWord& row : kPolicyWords) {
        if (policy == row.policy) {
            return row.word;
        }
    }
    return std::nullopt;
}

std::string policyText(FW::FW_POLICY policy) {
    return wordOfPolicy(policy).value_or(std::to_string(static_cast<std::int32_t>(policy)));
}

}  // namespace zamofw
