// Which adapter names are usable now, and the interfaces that they stand for.

#include <zamo/core.h>
#include <zamo/netsdk.h>

#include <algorithm>
#include <array>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/translate/interfaceList.h"
#include "zamofirewall/translator.h"

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

}  // namespace

bool ZAMOFW_IPTABLES_RULES::adapterToIptablesArg(const std::string& adapter,
                                                 const FWRULE& rule,
                                                 Json::Value& args) {
    const std::string prefix = rule.adapterDirect != 0 ? "-i " : "-o ";
    Json::Value& fragments = args["adapter"];
    for (const char* predefined : kPredefinedAdapters) {
        if (adapter != predefined) {
            continue;
        }
        if (adapter == kPppoeAdapter) {
            pppoeAdaterGet();
            if (pppoeAdapter.empty()) {
                return FW_FAILURE("pppoe interface is empty");
            }
            fragments.append(prefix + pppoeAdapter);
        } else if (adapter == kVpnAdapter) {
            if (!vpnAdatperEnum()) {
                return FW_FAILURE("Failed to vpnAdatperEnum()");
            }
            for (const std::string& interface : vpnAdapters) {
                fragments.append(prefix + interface);
            }
        } else if (adapter == kGlobalAdapter) {
            fragments.append("");
        } else {
            return FW_FAILURE("Failed to convert pre-defined adapter %s", predefined);
        }
    }
    if (fragments.empty()) {
        fragments.append(prefix + adapter);
    }
    return true;
}

bool ZAMOFW_IPTABLES_RULES::adapterIsEnabled(const std::string& adapter) {
    if (adapter == kGlobalAdapter) {
        return true;
    }
    if (adapter == kVpnAdapter) {
        (void)vpnAdatperEnum();
        return !vpnAdapters.empty();
    }
    if (adapter == kPppoeAdapter) {
        pppoeAdaterGet();
        return !pppoeAdapter.empty();
    }
    if (!enabledAdapterEnum()) {
        return FW_FAILURE("Failed to enabledAdapterEnum()");
    }
    return std::find(enabledAdapters.begin(), enabledAdapters.end(), adapter) !=
           enabledAdapters.end();
}

bool ZAMOFW_IPTABLES_RULES::enabledAdapterEnum() {
    if (!enabledAdapters.empty()) {
        return true;
    }
    std::vector<std::string> names;
    if (!listInterfaces(kLogModule, names)) {
        return false;
    }
    names.erase(std::unique(names.begin(), names.end()), names.end());
    enabledAdapters = std::move(names);
    return true;
}

bool ZAMOFW_IPTABLES_RULES::vpnAdatperEnum() {
    if (!vpnAdapters.empty()) {
        return true;
    }
    if (!enabledAdapterEnum()) {
        return FW_FAILURE("Failed to enabledAdapterEnum()");
    }
    pppoeAdaterGet();
    for (const std::string& interface : enabledAdapters) {
        if (isVpnInterface(interface, pppoeAdapter)) {
            vpnAdapters.push_back(interface);
        }
    }
    return true;
}

void ZAMOFW_IPTABLES_RULES::pppoeAdaterGet() {
    if (!pppoeAdapter.empty()) {
        return;
    }
    std::array<char, kInterfaceNameSize> name = {};
    if (ZAMOPPPoeIntfGet(name.data(), kInterfaceNameSize) < 0) {
        FW_LOG(LOG_DEBUG, "Failed to ZAMOPPPoeIntfGet()");
        return;
    }
    pppoeAdapter.assign(name.data(), strnlen(name.data(), name.size()));
}

}  // namespace FW
