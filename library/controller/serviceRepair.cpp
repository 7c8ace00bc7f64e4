// Repairing the rules of every profile after the catalogue of services has changed.

#include <zamo/serviceconf.h>

#include <algorithm>
#include <memory>

#include "library/logging/log.h"
#include "library/store/profileStore.h"
#include "library/store/serviceRules.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

using Catalogue = std::unique_ptr<ZAMOFwServiceList, void (*)(ZAMOFwServiceList*)>;

void removeUnknownServices(const ZAMOFwServiceList* catalogue, FWRULE& rule) {
    const auto isUnknown = [catalogue](const std::string& name) {
        const ZAMOFwService* service = ZAMOFWServiceFind(catalogue, name.c_str());
        return service == nullptr || service->valid == 0;
    };
    rule.portList.erase(std::remove_if(rule.portList.begin(), rule.portList.end(), isUnknown),
                        rule.portList.end());
}

void setProtocol(const ZAMOFwServiceList* catalogue, FWRULE& rule) {
    bool tcp = false;
    bool udp = false;
    for (const std::string& name : rule.portList) {
        const ZAMOFwService* service = ZAMOFWServiceFind(catalogue, name.c_str());
        tcp = tcp || service->dstProtocol == FW_PROTOCOL_TCP;
        udp = udp || service->dstProtocol == FW_PROTOCOL_UDP;
    }
    if (tcp && udp) {
        rule.protocol = FW_PROTOCOL_BOTH;
    } else if (tcp) {
        rule.protocol = FW_PROTOCOL_TCP;
    } else if (udp) {
        rule.protocol = FW_PROTOCOL_UDP;
    }
}

void repair(const ZAMOFwServiceList* catalogue, std::vector<FWRULE>& rules) {
    for (FWRULE& rule : rules) {
        if (namesServices(rule)) {
            removeUnknownServices(catalogue, rule);
            setProtocol(catalogue, rule);
        }
    }
    pruneServiceRules(rules);
}

}  // namespace

bool ZAMOFW::fwUpdate() {
    Documents documents;
    ProfileIndex index(documents);
    ProfileMap profiles;
    if (!readProfiles(index, profiles)) {
        return FW_FAILURE("Failed to enum profiles to profile list");
    }
    ZAMOFwServiceList* loaded = nullptr;
    const int count = ZAMOFwServiceEnum(&loaded);
    const Catalogue catalogue(loaded, ZAMOFwServiceFree);
    if (count <= 0) {
        return FW_FAILURE("Failed to enum FW services");
    }
    for (auto& [name, profile] : profiles) {
        for (auto& adapter : profile.rules) {
            repair(catalogue.get(), adapter.second);
        }
        if (!rewriteProfile(index, name, profile)) {
            return FW_FAILURE("Failed to set profile");
        }
    }
    return true;
}

}  // namespace FW
