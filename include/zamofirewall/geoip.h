// The address ranges of countries, read from the files of the kernel's geoip match.
//
// /usr/share/xt_geoip/ holds a file CC.iv4 and CC.iv6 per country code CC. A file has no header,
// only ranges: first and last address, 4 bytes each in .iv4 and 16 bytes each in .iv6. An address
// is one or four little-endian 32-bit words, the most significant word first.
#ifndef ZAMOFIREWALL_GEOIP_H
#define ZAMOFIREWALL_GEOIP_H

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zamofirewall/export.h"

namespace FW {

// `isV6` selects the family everywhere. Failures are logged; nothing is thrown.
class ZAMOFW_EXPORT FW_GEOIP {
  public:
    // Appends the country's ranges to `out` in file order, as objects with the strings "ip_begin"
    // and "ip_end". False when the country has no file.
    bool countryIPGet(const std::string& country, const bool& isV6, Json::Value& out);

    // Appends the codes that have a file with data. False when none has.
    bool geoipSanctify(const std::vector<std::string>& countries,
                       const bool& isV6,
                       std::vector<std::string>& usable);

    // Appends the code of every country with an IPv4 file, in directory order. False when the
    // directory cannot be read.
    bool countryEnum(std::vector<std::string>& countries);

    // Print an address into `buffer`, IPv6 at full width. The result is the number of characters.
    int Ipv4ToString(std::uint32_t address, char* buffer, std::size_t size);
    int Ipv6ToString(const std::uint32_t* address, char* buffer, std::size_t size);

    // Set "ip_begin" and "ip_end". An IPv6 address is four words, the most significant first.
    void ParseV4(std::uint32_t first, std::uint32_t last, Json::Value& range);
    void ParseV6(const std::uint32_t* first, const std::uint32_t* last, Json::Value& range);

    // Does the work of countryIPGet(): 0, or -1 when the file cannot be opened. `item` is scratch.
    int geoipFileRead(const std::string& country, Json::Value& item, Json::Value& out, bool isV6);
};

}  // namespace FW

#endif
