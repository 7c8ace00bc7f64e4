// The addresses of a rule in words: an address, ADDRESS/PREFIX, ADDRESS/MASK, FIRST-LAST or "any".
#ifndef COMMAND_WORDS_ADDRESSES_H
#define COMMAND_WORDS_ADDRESSES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zamofirewall/ruleModel.h"

namespace zamofw {

// The bytes in network order: of two addresses of one family the lower one has the lower bytes.
struct Address {
    int family = 4;                            // 4 or 6
    std::array<unsigned char, 16> bytes = {};  // of which an IPv4 address has four

    std::size_t size() const { return family == 4 ? 4 : 16; }
};

[[nodiscard]] std::optional<Address> parseAddress(const std::string& text);

struct Addresses {
    std::int32_t group = FW::FW_IP_GROUP_ALL;  // HOST, SUBNET, RANGE or ALL
    std::vector<std::string> list;             // as it was said, per group
    std::optional<int> family;                 // 4 or 6; none for "any"
};

// Wrong use, naming `word`, when the text is none of them.
[[nodiscard]] Addresses addressesFromText(const std::string& word, const std::string& text);

}  // namespace zamofw

#endif
