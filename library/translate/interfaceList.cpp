#include "library/translate/interfaceList.h"

#include <zamo/core.h>
#include <zamo/netsdk.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "library/logging/log.h"

namespace FW {
namespace {

constexpr int kCapacity = 32;
constexpr const char* kSystemInfoFile = "/etc.defaults/zamoinfo.conf";
constexpr const char* kWirelessFeature = "support_wireless";
constexpr const char* kWirelessInterface = "wlan0";

// The platform does not list a wireless interface while it is idle.
bool hasWireless() {
    return VLIBCSupportGet(kWirelessFeature) != 0 &&
           VLIBCFileCheckKeyValue(kSystemInfoFile, kWirelessFeature, "yes", 0) != 0;
}

}  // namespace

bool listInterfaces(const char* logModule, std::vector<std::string>& names) {
    const char* const kLogModule = logModule;
    std::array<VLIBNetInterface, kCapacity> records = {};
    const int count =
        VLIBNetGetInterfaceInfo(records.data(), kCapacity, VLIB_NET_INTERFACE_CONFIGURED);
    if (count < 0) {
        return FW_FAILURE("Failed to VLIBNetGetInterfaceInfo(%d) [0x%04X %s:%d]",
                          count,
                          static_cast<unsigned>(VLIBCErrGet()),
                          VLIBCErrorGetFile(),
                          VLIBCErrorGetLine());
    }
    for (int i = 0; i < std::min(count, kCapacity); ++i) {
        const char* name = records[static_cast<std::size_t>(i)].name;
        names.emplace_back(name, strnlen(name, sizeof records[0].name));
    }
    if (hasWireless()) {
        names.emplace_back(kWirelessInterface);
    }
    return true;
}

}  // namespace FW
