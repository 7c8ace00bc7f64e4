// The address ranges of a country, IPv6 when the first byte is odd.

#include <arpa/inet.h>
#include <json/value.h>

#include <array>

#include "fuzz/harness.h"
#include "library/model/names.h"
#include "zamofirewall/geoip.h"

namespace {

// The address as the file has it: words with the lowest byte first.
std::string bytesOf(const Json::Value& text, bool isV6) {
    std::array<char, 16> bytes = {};
    fuzz::require(inet_pton(isV6 ? AF_INET6 : AF_INET, text.asCString(), bytes.data()) == 1,
                  "a range has addresses");
    std::string words;
    for (std::size_t word = 0; word < (isV6 ? 16 : 4); word += 4) {
        words.append({bytes[word + 3], bytes[word + 2], bytes[word + 1], bytes[word]});
    }
    return words;
}

}  // namespace

void fuzz::run(const std::string& text) {
    const bool isV6 = !text.empty() && (static_cast<unsigned char>(text[0]) & 1U) != 0;
    std::string file = text.substr(text.empty() ? 0 : 1);
    writeFile(std::string(FW::kCountryDirectory) + (isV6 ? "ZZ.iv6" : "ZZ.iv4"), file);
    Json::Value ranges;
    require(FW::FW_GEOIP().countryIPGet("ZZ", isV6, ranges), "a file of any bytes is read");
    std::string again;
    for (const Json::Value& range : ranges) {
        again += bytesOf(range["ip_begin"], isV6) + bytesOf(range["ip_end"], isV6);
    }
    const std::size_t record = isV6 ? 32 : 8;
    file.resize((file.size() + record - 1) / record * record, '\0');
    require(again == file, "the ranges are the bytes of the file");
}
