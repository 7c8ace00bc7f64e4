// The addresses of a rule.

#include <array>
#include <boost/algorithm/string/join.hpp>
#include <optional>

#include "library/logging/log.h"
#include "zamofirewall/geoip.h"
#include "zamofirewall/translator.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";

bool wantsV4(const FWRULE& rule) {
    return rule.ipType == FW_IP_TYPE_V4 || rule.ipType == FW_IP_TYPE_BOTH;
}

bool wantsV6(const FWRULE& rule) {
    return rule.ipType == FW_IP_TYPE_V6 || rule.ipType == FW_IP_TYPE_BOTH;
}

// The same text serves both families.
void appendToWanted(const FWRULE& rule, const std::string& fragment, Json::Value& ip) {
    if (wantsV4(rule)) {
        ip["v4"].append(fragment);
    }
    if (wantsV6(rule)) {
        ip["v6"].append(fragment);
    }
}

void appendHost(const FWRULE& rule, Json::Value& ip) {
    if (!rule.ipList.empty()) {
        appendToWanted(rule, (rule.ipDirect != 0 ? "-s " : "-d ") + rule.ipList[0], ip);
    }
}

// The first two texts of the list, joined. A list that is too short says nothing that iptables
// would take, so it gives no fragment.
void appendPair(const FWRULE& rule, const char* prefix, const char* separator, Json::Value& ip) {
    if (rule.ipList.size() >= 2) {
        appendToWanted(rule, prefix + rule.ipList[0] + separator + rule.ipList[1], ip);
    }
}

// Countries without data are left out: iptables refuses a line that names one.
void appendCountries(const FWRULE& rule, bool isV6, Json::Value& fragments) {
    std::vector<std::string> usable;
    if (FW_GEOIP().geoipSanctify(rule.ipList, isV6, usable)) {
        const char* const prefix =
            rule.ipDirect != 0 ? "-m geoip --source-country " : "-m geoip --destination-country ";
        fragments.append(prefix + boost::algorithm::join(usable, ","));
    }
}

}  // namespace

bool ZAMOFW_IPTABLES_RULES::ipToIptablesArg(const FWRULE& rule, Json::Value& args) {
    const bool source = rule.ipDirect != 0;
    Json::Value& ip = args["ip"];
    switch (rule.ipGroup) {
        case FW_IP_GROUP_HOST:
            appendHost(rule, ip);
            return true;
        case FW_IP_GROUP_SUBNET:
            appendPair(rule, source ? "-s " : "-d ", "/", ip);
            return true;
        case FW_IP_GROUP_NONE:
            return true;
        case FW_IP_GROUP_COUNTRY:
            if (wantsV4(rule)) {
                appendCountries(rule, /*isV6=*/false, ip["v4"]);
            }
            if (wantsV6(rule)) {
                appendCountries(rule, /*isV6=*/true, ip["v6"]);
            }
            return true;
        case FW_IP_GROUP_RANGE:
            appendPair(
                rule, source ? "-m iprange --src-range " : "-m iprange --dst-range ", "-", ip);
            return true;
        case FW_IP_GROUP_ALL:
            ip["v4"].append("");
            ip["v6"].append("");
            return true;
    }
    FW_LOG(LOG_ERR, "Unknown ip group %d", rule.ipGroup);
    return true;
}

}  // namespace FW
