#include "command/words/addresses.h"

#include <arpa/inet.h>

#include <array>
#include <cstring>

#include "command/words/quoting.h"
#include "command/words/values.h"

namespace zamofw {
namespace {

constexpr const char* kAddressForms =
    "an address is written as 192.168.1.5, 192.168.1.0/24, 192.168.1.0/255.255.255.0, "
    "192.168.1.5-192.168.1.9 or any; IPv6 in the same forms";

Address addressFromText(const std::string& word, const std::string& text, const std::string& part) {
    const std::optional<Address> address = parseAddress(part);
    if (!address) {
        wrongValue(word, text, shown(part) + " is no address", kAddressForms);
    }
    return *address;
}

std::string familyName(int family) {
    return family == 4 ? "IPv4" : "IPv6";
}

// A mask is ones, then zeros.
bool isMask(const Address& address) {
    bool hasEnded = false;
    for (std::size_t bit = 0; bit < address.size() * 8; ++bit) {
        const bool isSet = (address.bytes[bit / 8] & (0x80U >> (bit % 8))) != 0;
        if (isSet && hasEnded) {
            return false;
        }
        hasEnded = hasEnded || !isSet;
    }
    return true;
}

void checkPrefix(const std::string& word,
                 const std::string& text,
                 const std::string& prefix,
                 int family) {
    const unsigned long longest = family == 4 ? 32 : 128;
    if (numberFromText(prefix, longest)) {
        return;
    }
    const std::optional<Address> mask = parseAddress(prefix);
    if (mask && mask->family != family) {
        wrongValue(word,
                   text,
                   "the mask " + shown(prefix) + " is not of the address's family",
                   "use a mask of the same family, or a prefix length");
    }
    if (mask && isMask(*mask)) {
        return;
    }
    wrongValue(word,
               text,
               shown(prefix) + " is neither a prefix length of " + familyName(family) + " (0 to " +
                   std::to_string(longest) + ") nor a mask",
               kAddressForms);
}

Addresses subnetFromText(const std::string& word, const std::string& text, std::size_t slash) {
    const std::string base = text.substr(0, slash);
    const std::string prefix = text.substr(slash + 1);
    const Address address = addressFromText(word, text, base);
    checkPrefix(word, text, prefix, address.family);
    return {FW::FW_IP_GROUP_SUBNET, {base, prefix}, address.family};
}

Addresses rangeFromText(const std::string& word, const std::string& text, std::size_t dash) {
    const std::string firstText = text.substr(0, dash);
    const std::string lastText = text.substr(dash + 1);
    const Address first = addressFromText(word, text, firstText);
    const Address last = addressFromText(word, text, lastText);
    if (first.family != last.family) {
        wrongValue(word,
                   text,
                   "the range begins with " + familyName(first.family) + " and ends with " +
                       familyName(last.family),
                   "use two addresses of one family");
    }
    if (first.bytes > last.bytes) {
        wrongValue(word, text, "the range is reversed", "write " + lastText + "-" + firstText);
    }
    return {FW::FW_IP_GROUP_RANGE, {firstText, lastText}, first.family};
}

}  // namespace

std::optional<Address> parseAddress(const std::string& text) {
    // inet_pton() reads to the first NUL.
    if (text.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    Address address;
    if (inet_pton(AF_INET, text.c_str(), address.bytes.data()) == 1) {
        return address;
    }
    address.family = 6;
    if (inet_pton(AF_INET6, text.c_str(), address.bytes.data()) == 1) {
        return address;
    }
    return std::nullopt;
}

Addresses addressesFromText(const std::string& word, const std::string& text) {
    if (text == "any") {
        return {};
    }
    const std::size_t slash = text.find('/');
    if (slash != std::string::npos) {
        return subnetFromText(word, text, slash);
    }
    const std::size_t dash = text.find('-');
    if (dash != std::string::npos) {
        return rangeFromText(word, text, dash);
    }
    return {FW::FW_IP_GROUP_HOST, {text}, addressFromText(word, text, text).family};
}

}  // namespace zamofw
