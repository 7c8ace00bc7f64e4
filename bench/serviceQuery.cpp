// A query of a service with many ports against one of a service with half as many. The profile in
// force has the same ports, as those of a service that its rules name or in the rules themselves.

#include <json/value.h>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "zamofirewall/zamofirewall.h"

namespace {

constexpr int kPorts = 1000;
constexpr int kServiceRules = 20;
constexpr int kRounds = 5;

std::vector<std::string> portList(int ports) {
    std::vector<std::string> list;
    for (int port = 1; port <= ports; ++port) {
        list.push_back(std::to_string(port));
    }
    return list;
}

std::string serviceWith(int ports) {
    return "bench" + std::to_string(ports);
}

void makeService(int ports) {
    Json::Value service;
    service["destination"]["protocol"] = "tcp";
    for (const std::string& port : portList(ports)) {
        service["destination"]["ports"].append(port);
    }
    const std::string path = "/usr/zamo/etc.defaults/services.d/" + serviceWith(ports) + ".json";
    bench::require(FW::jsonFileDump(service, path), "storing a service");
}

// Each rule is for one address, so that no rule ends the walk.
FW::FWPROFILE namingServices(int ports) {
    FW::FWPROFILE profile = bench::profileWith(0);
    FW::FWRULE rule;
    rule.ipList = {"10.9.0.1"};
    rule.portGroup = FW::FW_PORT_GROUP_SERVICE;
    rule.portList = {serviceWith(ports)};
    profile.rules["eth0"].assign(kServiceRules, rule);
    return profile;
}

FW::FWPROFILE namingPorts(int ports) {
    FW::FWPROFILE profile = bench::profileWith(1);
    profile.rules["eth0"][0].portList = portList(ports);
    return profile;
}

double query(int ports, const FW::FWPROFILE& profile) {
    bench::store({profile});
    std::map<std::string, FW::FW_POLICY> answers;
    return bench::costOf([&] {
               bench::require(FW::ZAMOFW().fwServIsBlocked(serviceWith(ports), "eth0", answers),
                              "the query");
           })
        .processor;
}

void compare(const std::string& what, FW::FWPROFILE (*profileNaming)(int ports)) {
    bench::Samples half;
    bench::Samples whole;
    for (int round = 0; round < kRounds; ++round) {
        half.push_back(query(kPorts, profileNaming(kPorts)));
        whole.push_back(query(2 * kPorts, profileNaming(2 * kPorts)));
    }
    bench::printRow("query of 2,000 ports, " + what, whole, "1,000 ports", half, 2.3);
}

}  // namespace

int main() {
    makeService(kPorts);
    makeService(2 * kPorts);
    compare("services", namingServices);
    compare("port lists", namingPorts);
}
