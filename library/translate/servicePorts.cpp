// The ports of named services, from the platform's catalogue.

#include <zamo/core.h>
#include <zamo/serviceconf.h>

#include <array>
#include <string_view>

#include "library/logging/log.h"
#include "zamofirewall/translator.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";
constexpr int kSource = 1;
constexpr int kDestination = 0;

// Services that are carried by IP protocols of their own beside their ports.
struct BareProtocols {
    std::string_view service;
    std::array<int, 5> protocols;  // 0 ends the list
};
constexpr std::array<BareProtocols, 2> kBareProtocols = {{
    {"vpn_server_pptp", {47}},
    {"vpn_server_ipsec", {50, 51}},
}};

void release(ZAMOFwServiceList*& catalogue) {
    if (catalogue != nullptr) {
        ZAMOFwServiceFree(catalogue);
        catalogue = nullptr;
    }
}

void appendPorts(int protocol,
                 const VLIBCSzList* list,
                 std::map<FW_PORT_PROTOCOL, std::vector<std::string>>& ports) {
    if (list == nullptr) {
        return;
    }
    for (int i = 0; const char* port = VLIBCSzListGet(list, i); ++i) {
        ports[static_cast<FW_PORT_PROTOCOL>(protocol)].emplace_back(port);
    }
}

void appendBareProtocols(const std::string& service, Json::Value& fragments) {
    for (const BareProtocols& row : kBareProtocols) {
        if (row.service != service) {
            continue;
        }
        for (const int protocol : row.protocols) {
            if (protocol == 0) {
                break;
            }
            fragments.append("-p " + std::to_string(protocol) + " ");
        }
    }
}

}  // namespace

ZAMOFW_IPTABLES_RULES::ZAMOFW_IPTABLES_RULES() = default;

ZAMOFW_IPTABLES_RULES::~ZAMOFW_IPTABLES_RULES() {
    release(servList);
}

bool ZAMOFW_IPTABLES_RULES::servToPorts(const std::vector<std::string>& services, ServPort& ports) {
    if (servList == nullptr && ZAMOFwServiceEnum(&servList) <= 0) {
        release(servList);
        return FW_FAILURE("Failed to enum services");
    }
    for (const std::string& name : services) {
        const ZAMOFwService* service = ZAMOFWServiceFind(servList, name.c_str());
        if (service == nullptr || service->valid == 0) {
            continue;
        }
        appendPorts(service->srcProtocol, service->srcPorts, ports.srcPorts);
        appendPorts(service->dstProtocol, service->dstPorts, ports.dstPorts);
    }
    return true;
}

bool ZAMOFW_IPTABLES_RULES::servPortToCmd(const std::vector<std::string>& services,
                                          Json::Value& args) {
    ServPort ports;
    if (!servToPorts(services, ports)) {
        return FW_FAILURE("Failed to servToPorts()");
    }
    for (const auto& [protocol, list] : ports.srcPorts) {
        portsToIptablesArg(protocol, kSource, list, args);
    }
    for (const auto& [protocol, list] : ports.dstPorts) {
        portsToIptablesArg(protocol, kDestination, list, args);
    }
    for (const std::string& service : services) {
        appendBareProtocols(service, args["port"]);
    }
    return true;
}

}  // namespace FW
