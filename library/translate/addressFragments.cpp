// The addresses of a rule.

#include <boost/algorithm/string/join.hpp>

#include "library/logging/log.h"
#include "library/translate/ruleFields.h"
#include "zamofirewall/geoip.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";

// The same text serves every family of the rule.
std::vector<AddressFragment> forFamiliesOf(const FWRULE& rule, const std::string& text) {
    std::vector<AddressFragment> fragments;
    for (const AddressFamily family : familiesOf(rule)) {
        fragments.push_back({family, text});
    }
    return fragments;
}

std::vector<AddressFragment> hostFragments(const FWRULE& rule, const char* prefix) {
    if (rule.ipList.empty()) {
        return {};
    }
    return forFamiliesOf(rule, prefix + rule.ipList[0]);
}

// A pair of which one is missing gives no fragment: iptables would refuse the line.
std::vector<AddressFragment> pairFragments(const FWRULE& rule,
                                           const char* prefix,
                                           const char* separator) {
    if (rule.ipList.size() < 2) {
        return {};
    }
    return forFamiliesOf(rule, prefix + rule.ipList[0] + separator + rule.ipList[1]);
}

// Countries without data are left out: iptables refuses a line that names one.
std::vector<AddressFragment> countryFragments(const FWRULE& rule, const std::string& prefix) {
    std::vector<AddressFragment> fragments;
    for (const AddressFamily family : familiesOf(rule)) {
        std::vector<std::string> usable;
        if (FW_GEOIP().geoipSanctify(rule.ipList, family == AddressFamily::kV6, usable)) {
            fragments.push_back({family, prefix + boost::algorithm::join(usable, ",")});
        }
    }
    return fragments;
}

}  // namespace

std::vector<AddressFragment> addressFragments(const FWRULE& rule) {
    const bool source = rule.ipDirect != 0;
    switch (rule.ipGroup) {
        case FW_IP_GROUP_HOST:
            return hostFragments(rule, source ? "-s " : "-d ");
        case FW_IP_GROUP_SUBNET:
            return pairFragments(rule, source ? "-s " : "-d ", "/");
        case FW_IP_GROUP_NONE:
            return {};
        case FW_IP_GROUP_COUNTRY:
            return countryFragments(
                rule, source ? "-m geoip --source-country " : "-m geoip --destination-country ");
        case FW_IP_GROUP_RANGE:
            return pairFragments(
                rule, source ? "-m iprange --src-range " : "-m iprange --dst-range ", "-");
        case FW_IP_GROUP_ALL:
            return {{AddressFamily::kV4, ""}, {AddressFamily::kV6, ""}};
    }
    FW_LOG(LOG_ERR, "Unknown ip group %d", rule.ipGroup);
    return {};
}

}  // namespace FW
