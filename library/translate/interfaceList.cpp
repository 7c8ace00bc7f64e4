#include "library/translate/interfaceList.h"

#include <zamo/core.h>
#include <zamo/netsdk.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace FW {
namespace {

constexpr int kCapacity = 32;
constexpr const char* kSystemInfoFile = "/etc.defaults/zamoinfo.conf";
constexpr const char* kWirelessFeature = "support_wireless";

}  // namespace

int interfaceNames(std::vector<std::string>& names) {
    std::array<VLIBNetInterface, kCapacity> records = {};
    const int count =
        VLIBNetGetInterfaceInfo(records.data(), kCapacity, VLIB_NET_INTERFACE_CONFIGURED);
    for (int i = 0; i < std::min(count, kCapacity); ++i) {
        const char* name = records[static_cast<std::size_t>(i)].name;
        names.emplace_back(name, strnlen(name, sizeof records[0].name));
    }
    return count;
}

bool hasWireless() {
    return VLIBCSupportGet(kWirelessFeature) != 0 &&
           VLIBCFileCheckKeyValue(kSystemInfoFile, kWirelessFeature, "yes", 0) != 0;
}

}  // namespace FW
