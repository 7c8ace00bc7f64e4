#include <dirent.h>
#include <sys/stat.h>

#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "zamofirewall/geoip.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwGeoip";
constexpr const char* kV4Extension = ".iv4";
constexpr const char* kV6Extension = ".iv6";
constexpr std::size_t kV4RecordSize = 8;
constexpr std::size_t kV6RecordSize = 32;
constexpr std::size_t kChunkSize = 4096;
constexpr std::size_t kAddressTextSize = 64;
constexpr std::size_t kPathSize = 1024;
constexpr off_t kMinUsableSize = 8;
constexpr std::size_t kCountryCodeLength = 2;

using FileHandle = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
using DirectoryHandle = std::unique_ptr<DIR, int (*)(DIR*)>;
using AddressText = std::array<char, kAddressTextSize>;

const char* extensionOf(bool isV6) {
    return isV6 ? kV6Extension : kV4Extension;
}

// Position 0 is the most significant byte.
unsigned byteAt(std::uint32_t word, unsigned position) {
    return (word >> (24U - 8U * position)) & 0xFFU;
}

// The files are little-endian, whatever the machine is.
std::uint32_t wordAt(const unsigned char* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8U |
           static_cast<std::uint32_t>(bytes[2]) << 16U |
           static_cast<std::uint32_t>(bytes[3]) << 24U;
}

std::array<std::uint32_t, 4> v6AddressAt(const unsigned char* bytes) {
    return {wordAt(bytes), wordAt(bytes + 4), wordAt(bytes + 8), wordAt(bytes + 12)};
}

void parseRecord(FW_GEOIP& geoip, const unsigned char* record, bool isV6, Json::Value& range) {
    if (isV6) {
        geoip.ParseV6(v6AddressAt(record).data(), v6AddressAt(record + 16).data(), range);
    } else {
        geoip.ParseV4(wordAt(record), wordAt(record + 4), range);
    }
}

}  // namespace

int FW_GEOIP::Ipv4ToString(std::uint32_t address, char* buffer, std::size_t size) {
    return std::snprintf(buffer,
                         size,
                         "%u.%u.%u.%u",
                         byteAt(address, 0),
                         byteAt(address, 1),
                         byteAt(address, 2),
                         byteAt(address, 3));
}

int FW_GEOIP::Ipv6ToString(const std::uint32_t* address, char* buffer, std::size_t size) {
    return std::snprintf(buffer,
                         size,
                         "%04" PRIx32 ":%04" PRIx32 ":%04" PRIx32 ":%04" PRIx32 ":%04" PRIx32
                         ":%04" PRIx32 ":%04" PRIx32 ":%04" PRIx32,
                         address[0] >> 16U,
                         address[0] & 0xFFFFU,
                         address[1] >> 16U,
                         address[1] & 0xFFFFU,
                         address[2] >> 16U,
                         address[2] & 0xFFFFU,
                         address[3] >> 16U,
                         address[3] & 0xFFFFU);
}

void FW_GEOIP::ParseV4(std::uint32_t first, std::uint32_t last, Json::Value& range) {
    AddressText text = {};
    (void)Ipv4ToString(first, text.data(), text.size());
    range["ip_begin"] = text.data();
    (void)Ipv4ToString(last, text.data(), text.size());
    range["ip_end"] = text.data();
}

void FW_GEOIP::ParseV6(const std::uint32_t* first, const std::uint32_t* last, Json::Value& range) {
    AddressText text = {};
    (void)Ipv6ToString(first, text.data(), text.size());
    range["ip_begin"] = text.data();
    (void)Ipv6ToString(last, text.data(), text.size());
    range["ip_end"] = text.data();
}

int FW_GEOIP::geoipFileRead(const std::string& country,
                            Json::Value& item,
                            Json::Value& out,
                            bool isV6) {
    const std::string path = kCountryDirectory + country + extensionOf(isV6);
    const FileHandle file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (!file) {
        FW_LOG(LOG_ERR, "Failed to open file %s\n", path.c_str());
        return -1;
    }
    const std::size_t recordSize = isV6 ? kV6RecordSize : kV4RecordSize;
    for (;;) {
        std::array<unsigned char, kChunkSize> chunk = {};
        const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), file.get());
        if (count == 0) {
            return 0;
        }
        // The zero bytes after a truncated record complete it.
        for (std::size_t offset = 0; offset < count; offset += recordSize) {
            item = Json::Value();
            parseRecord(*this, chunk.data() + offset, isV6, item);
            out.append(item);
        }
    }
}

bool FW_GEOIP::countryIPGet(const std::string& country, const bool& isV6, Json::Value& out) {
    Json::Value item;
    if (geoipFileRead(country, item, out, isV6) < 0) {
        return FW_FAILURE("Failed to read geoip database");
    }
    return true;
}

bool FW_GEOIP::geoipSanctify(const std::vector<std::string>& countries,
                             const bool& isV6,
                             std::vector<std::string>& usable) {
    if (countries.empty()) {
        return FW_FAILURE("There are no country");
    }
    for (const std::string& country : countries) {
        std::array<char, kPathSize> path = {};
        (void)std::snprintf(path.data(),
                            path.size(),
                            "%s%s%s",
                            kCountryDirectory,
                            country.c_str(),
                            extensionOf(isV6));
        struct stat status = {};
        if (stat(path.data(), &status) == 0 && status.st_size >= kMinUsableSize) {
            usable.push_back(country);
        }
    }
    return !usable.empty();
}

bool FW_GEOIP::countryEnum(std::vector<std::string>& countries) {
    const DirectoryHandle directory(opendir(kCountryDirectory), closedir);
    if (!directory) {
        return FW_FAILURE("Failed to opendir %s", kCountryDirectory);
    }
    while (const dirent* entry = readdir(directory.get())) {
        const std::string name = entry->d_name;
        if (name.find(kV4Extension) != std::string::npos) {
            countries.push_back(name.substr(0, kCountryCodeLength));
        }
    }
    return true;
}

}  // namespace FW
