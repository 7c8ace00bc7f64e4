#include "command/answers/serviceCatalogue.h"

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>

#include "command/answers/systemNames.h"
#include "command/console.h"
#include "command/document/textFile.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"

namespace zamofw {
namespace {

// The catalogue does not hold the titles. Of two files the added one counts.
std::string titleOf(const std::string& name) {
    for (const char* const directory :
         {"/usr/zamo/etc/services.d/", "/usr/zamo/etc.defaults/services.d/"}) {
        std::string text;
        Json::Value json;
        if (!readTextQuietly(directory + name + ".json", text)) {
            continue;
        }
        try {
            if (Json::Reader().parse(text, json) && json.isObject() && json["title"].isString()) {
                return json["title"].asString();
            }
        } catch (const Json::Exception&) {
            return "";
        }
        return "";
    }
    return "";
}

std::string protocolName(int protocol) {
    switch (protocol) {
        case ZAMO_FW_SERVICE_TCP:
            return "tcp";
        case ZAMO_FW_SERVICE_UDP:
            return "udp";
        case ZAMO_FW_SERVICE_BOTH:
            return "both";
        case ZAMO_FW_SERVICE_ICMP:
            return "icmp";
        case ZAMO_FW_SERVICE_IGMP:
            return "igmp";
        default:
            return std::to_string(protocol);
    }
}

std::optional<ServicePorts> portsOf(int protocol, const VLIBCSzList* list) {
    if (protocol == 0) {
        return std::nullopt;
    }
    ServicePorts ports{protocolName(protocol), {}};
    for (int i = 0; list != nullptr && i < VLIBCSzListCount(list); ++i) {
        ports.ports.emplace_back(VLIBCSzListGet(list, i));
    }
    return ports;
}

Service serviceOf(const ZAMOFwService& entry) {
    return {entry.name,
            titleOf(entry.name),
            entry.valid != 0,
            portsOf(entry.dstProtocol, entry.dstPorts),
            portsOf(entry.srcProtocol, entry.srcPorts)};
}

}  // namespace

std::vector<Service> serviceCatalogue() {
    std::vector<Service> services;
    forEachService([&services](const std::string&, const ZAMOFwService& entry) {
        services.push_back(serviceOf(entry));
    });
    return services;
}

Service requiredService(const std::string& name) {
    const ServiceCatalogue catalogue = loadServiceCatalogue();
    const ZAMOFwService* const entry =
        catalogue == nullptr ? nullptr : ZAMOFWServiceFind(catalogue.get(), name.c_str());
    if (entry != nullptr) {
        return serviceOf(*entry);
    }
    std::vector<std::string> names;
    forEachService(
        [&names](const std::string& known, const ZAMOFwService&) { names.push_back(known); });
    const std::string near = suggestion(name, names);
    wrongUse("there is no service " + shown(name) + (near.empty() ? "" : ": " + near),
             "`zamofw service list` shows them; they are described in "
             "/usr/zamo/etc/services.d/ and /usr/zamo/etc.defaults/services.d/");
}

}  // namespace zamofw
