// The fields of a rule that turn into one fragment each: verdict, chain and table.

#include "library/logging/log.h"
#include "zamofirewall/translator.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";

}  // namespace

bool ZAMOFW_IPTABLES_RULES::policyToIptablesArg(const FWRULE& rule, Json::Value& args) {
    switch (static_cast<std::int32_t>(rule.policy)) {
        case FW_POLICY_ALLOW:
            // What follows the jump into the chain decides whether the packet is accepted.
            args["policy"].append("-j RETURN");
            return true;
        case FW_POLICY_DENY:
            args["policy"].append("-j DROP");
            return true;
        case FW_POLICY_NONE:
            return true;
    }
    return FW_FAILURE("Unknown policy %d", rule.policy);
}

bool ZAMOFW_IPTABLES_RULES::chainToIptablesArg(const FWRULE& rule, Json::Value& args) {
    for (const std::string& chain : rule.chainList) {
        args["chain"].append("-A " + chain);
    }
    return true;
}

bool ZAMOFW_IPTABLES_RULES::tableToIptablesArg(const FWRULE& rule, Json::Value& args) {
    args["table"].append("-t " + rule.table);
    return true;
}

}  // namespace FW
