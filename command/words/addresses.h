// The addresses of a rule in words: an address, ADDRESS/PREFIX, ADDRESS/MASK, FIRST-LAST or "any".
#ifndef COMMAND_WORDS_ADDRESSES_H
#define COMMAND_WORDS_ADDRESSES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zamofirewall/ruleModel.h"

namespace zamofw {

struct Addresses {
    std::int32_t group = FW::FW_IP_GROUP_ALL;  // HOST, SUBNET, RANGE or ALL
    std::vector<std::string> list;             // as it was said, per group
    std::optional<int> family;                 // 4 or 6; none for "any"
};

// Wrong use, naming `word`, when the text is none of them.
[[nodiscard]] Addresses addressesFromText(const std::string& word, const std::string& text);

}  // namespace zamofw

#endif
