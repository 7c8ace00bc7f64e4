// The fields of a rule that turn into at most one fragment each: families, table, chain, verdict.

#include "library/translate/ruleFields.h"

#include "library/logging/log.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";

}  // namespace

std::vector<AddressFamily> familiesOf(const FWRULE& rule) {
    switch (rule.ipType) {
        case FW_IP_TYPE_V4:
            return {AddressFamily::kV4};
        case FW_IP_TYPE_V6:
            return {AddressFamily::kV6};
        case FW_IP_TYPE_BOTH:
            return {AddressFamily::kV4, AddressFamily::kV6};
    }
    return {};
}

std::string tableFragment(const FWRULE& rule) {
    return "-t " + rule.table;
}

std::vector<std::string> chainFragments(const FWRULE& rule) {
    std::vector<std::string> fragments;
    for (const std::string& chain : rule.chainList) {
        fragments.push_back("-A " + chain);
    }
    return fragments;
}

bool targetFragment(const FWRULE& rule, std::string& target) {
    switch (static_cast<std::int32_t>(rule.policy)) {
        case FW_POLICY_ALLOW:
            // The rules after the jump into the chain decide whether the packet is accepted.
            target = "-j RETURN";
            return true;
        case FW_POLICY_DENY:
            target = "-j DROP";
            return true;
        case FW_POLICY_NONE:
            target.clear();
            return true;
    }
    return FW_FAILURE("Unknown policy %d", rule.policy);
}

}  // namespace FW
