// The ports of named services, from the platform's catalogue.

#include "library/translate/servicePorts.h"

#include <zamo/core.h>
#include <zamo/serviceconf.h>

#include <array>
#include <string_view>
#include <utility>

#include "library/logging/log.h"
#include "library/translate/ruleFields.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";

// Services that use IP protocols of their own besides their ports.
struct BareProtocols {
    std::string_view service;
    std::array<int, 5> protocols;  // 0 ends the list
};
constexpr std::array<BareProtocols, 2> kBareProtocols = {{
    {"vpn_server_pptp", {47}},
    {"vpn_server_ipsec", {50, 51}},
}};

void appendPorts(int protocol,
                 const VLIBCSzList* list,
                 std::map<FW_PORT_PROTOCOL, std::vector<std::string>>& ports) {
    if (list == nullptr) {
        return;
    }
    for (int i = 0; i < VLIBCSzListCount(list); ++i) {
        ports[static_cast<FW_PORT_PROTOCOL>(protocol)].emplace_back(VLIBCSzListGet(list, i));
    }
}

void appendBareProtocols(const std::string& service, std::vector<PortFragment>& fragments) {
    for (const BareProtocols& row : kBareProtocols) {
        if (row.service != service) {
            continue;
        }
        for (const int protocol : row.protocols) {
            if (protocol == 0) {
                break;
            }
            fragments.push_back({"-p " + std::to_string(protocol) + " "});
        }
    }
}

}  // namespace

void releaseCatalogue(ZAMOFwServiceList*& catalogue) {
    if (catalogue != nullptr) {
        ZAMOFwServiceFree(catalogue);
        catalogue = nullptr;
    }
}

bool findServicePorts(const std::vector<std::string>& services,
                      ZAMOFwServiceList*& catalogue,
                      ServPort& ports) {
    if (catalogue == nullptr && ZAMOFwServiceEnum(&catalogue) <= 0) {
        releaseCatalogue(catalogue);
        return FW_FAILURE("Failed to enum services");
    }
    for (const std::string& name : services) {
        const ZAMOFwService* service = ZAMOFWServiceFind(catalogue, name.c_str());
        if (service == nullptr || service->valid == 0) {
            continue;
        }
        appendPorts(service->srcProtocol, service->srcPorts, ports.srcPorts);
        appendPorts(service->dstProtocol, service->dstPorts, ports.dstPorts);
    }
    return true;
}

bool serviceFragments(const std::vector<std::string>& services,
                      ZAMOFwServiceList*& catalogue,
                      std::vector<PortFragment>& fragments) {
    ServPort ports;
    if (!findServicePorts(services, catalogue, ports)) {
        return FW_FAILURE("Failed to servToPorts()");
    }
    for (const bool source : {true, false}) {
        for (const auto& [protocol, list] : source ? ports.srcPorts : ports.dstPorts) {
            for (PortFragment& fragment : portFragments(protocol, source, list)) {
                fragments.push_back(std::move(fragment));
            }
        }
    }
    for (const std::string& service : services) {
        appendBareProtocols(service, fragments);
    }
    return true;
}

}  // namespace FW
