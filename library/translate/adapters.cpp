#include "library/translate/adapters.h"

#include <zamo/netsdk.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/translate/interfaceList.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";
constexpr int kInterfaceNameSize = 256;

bool beginsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

// ppp interfaces belong to dial-in servers, except the one that dials out. tun1000 is the system's
// own tunnel.
bool isVpnInterface(const std::string& interface, const std::string& pppoeInterface) {
    return (beginsWith(interface, "ppp") && interface != pppoeInterface) ||
           (beginsWith(interface, "tun") && interface != "tun1000");
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isPredefined(const std::string& adapter) {
    return std::find(kPredefinedAdapters.begin(), kPredefinedAdapters.end(), adapter) !=
           kPredefinedAdapters.end();
}

}  // namespace

bool findEnabled(const Interfaces& interfaces) {
    if (!interfaces.enabled.empty()) {
        return true;
    }
    std::vector<std::string> names;
    if (!listInterfaces(kLogModule, names)) {
        return false;
    }
    names.erase(std::unique(names.begin(), names.end()), names.end());
    interfaces.enabled = std::move(names);
    return true;
}

bool findVpn(const Interfaces& interfaces) {
    if (!interfaces.vpn.empty()) {
        return true;
    }
    if (!findEnabled(interfaces)) {
        return FW_FAILURE("Failed to enabledAdapterEnum()");
    }
    findPppoe(interfaces);
    for (const std::string& interface : interfaces.enabled) {
        if (isVpnInterface(interface, interfaces.pppoe)) {
            interfaces.vpn.push_back(interface);
        }
    }
    return true;
}

void findPppoe(const Interfaces& interfaces) {
    if (!interfaces.pppoe.empty()) {
        return;
    }
    std::array<char, kInterfaceNameSize> name = {};
    if (ZAMOPPPoeIntfGet(name.data(), kInterfaceNameSize) < 0) {
        FW_LOG(LOG_DEBUG, "Failed to ZAMOPPPoeIntfGet()");
        return;
    }
    interfaces.pppoe.assign(name.data(), strnlen(name.data(), name.size()));
}

bool isUsable(const std::string& adapter, const Interfaces& interfaces) {
    if (adapter == kGlobalAdapter) {
        return true;
    }
    if (adapter == kVpnAdapter) {
        (void)findVpn(interfaces);
        return !interfaces.vpn.empty();
    }
    if (adapter == kPppoeAdapter) {
        findPppoe(interfaces);
        return !interfaces.pppoe.empty();
    }
    if (!findEnabled(interfaces)) {
        return FW_FAILURE("Failed to enabledAdapterEnum()");
    }
    return contains(interfaces.enabled, adapter);
}

std::string interfaceFragment(const std::string& interface, const FWRULE& rule) {
    return (rule.adapterDirect != 0 ? "-i " : "-o ") + interface;
}

bool predefinedFragments(const std::string& adapter,
                         const FWRULE& rule,
                         const Interfaces& interfaces,
                         std::vector<std::string>& fragments) {
    if (!isPredefined(adapter)) {
        return true;
    }
    if (adapter == kGlobalAdapter) {
        fragments.emplace_back();
        return true;
    }
    if (adapter == kPppoeAdapter) {
        findPppoe(interfaces);
        if (interfaces.pppoe.empty()) {
            return FW_FAILURE("pppoe interface is empty");
        }
        fragments.push_back(interfaceFragment(interfaces.pppoe, rule));
        return true;
    }
    if (adapter == kVpnAdapter) {
        if (!findVpn(interfaces)) {
            return FW_FAILURE("Failed to vpnAdatperEnum()");
        }
        for (const std::string& interface : interfaces.vpn) {
            fragments.push_back(interfaceFragment(interface, rule));
        }
        return true;
    }
    // A name that was added to the list, but not here.
    return FW_FAILURE("Failed to convert pre-defined adapter %s", adapter.c_str());
}

}  // namespace FW
