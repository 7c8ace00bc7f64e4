// Addresses, against the system's own reader.

#include <arpa/inet.h>

#include "command/console.h"
#include "command/words/addresses.h"
#include "fuzz/harness.h"

void fuzz::run(const std::string& text) {
    const auto address = zamofw::parseAddress(text);
    for (const int family : {4, 6}) {
        unsigned char bytes[16] = {};
        const bool isOne = text.find('\0') == std::string::npos &&
                           inet_pton(family == 4 ? AF_INET : AF_INET6, text.c_str(), bytes) == 1;
        require(isOne == (address && address->family == family), "what is an address is read");
        require(!isOne || std::equal(bytes, bytes + address->size(), address->bytes.begin()),
                "an address is read as the system reads it");
    }
    try {
        const zamofw::Addresses addresses = zamofw::addressesFromText("--from", text);
        for (const std::string& entry : addresses.list) {
            require(entry.find_first_not_of("0123456789abcdefABCDEF.:") == std::string::npos,
                    "what becomes a word of a line has the letters of an address");
        }
        require(addresses.family || text == "any", "an address has a family");
    } catch (const zamofw::Failure& failure) {
        require(failure.status() == zamofw::Status::kWrongUse, "a wrong word is wrong use");
    }
}
