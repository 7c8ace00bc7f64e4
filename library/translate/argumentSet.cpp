// The argument set of one rule, and its multiplication into command lines.

#include <string_view>
#include <utility>

#include "zamofirewall/translator.h"

namespace FW {
namespace {

std::vector<const char*> familiesOf(const FWRULE& rule) {
    switch (rule.ipType) {
        case FW_IP_TYPE_V4:
            return {"v4"};
        case FW_IP_TYPE_V6:
            return {"v6"};
        case FW_IP_TYPE_BOTH:
            return {"v4", "v6"};
    }
    return {};
}

bool isIcmpOfOtherFamily(std::string_view port, std::string_view family) {
    return (port == "-p icmpv6 " && family == "v4") || (port == "-p icmp " && family == "v6");
}

void appendPart(std::string& line, const std::string& part) {
    if (!part.empty()) {
        line += ' ';
        line += part;
    }
}

// The lines of one family, after "-t table -A chain".
void appendMatches(const std::string& head,
                   const std::string& target,
                   const char* family,
                   const FWRULE& rule,
                   const Json::Value& args,
                   Json::Value& lines) {
    for (const Json::Value& adapter : args["adapter"]) {
        for (const Json::Value& address : args["ip"][family]) {
            for (const Json::Value& port : args["port"]) {
                if (isIcmpOfOtherFamily(port.asString(), family)) {
                    continue;
                }
                std::string line = head;
                appendPart(line, adapter.asString());
                appendPart(line, address.asString());
                appendPart(line, port.asString());
                if (rule.blLog) {
                    lines.append(line + " -j LOG");
                }
                line += ' ';
                line += target;
                lines.append(std::move(line));
            }
        }
    }
}

}  // namespace

bool ZAMOFW_IPTABLES_RULES::jIptablesCmdInit(Json::Value& cmds) {
    cmds["v4"] = Json::nullValue;
    cmds["v6"] = Json::nullValue;
    return true;
}

void ZAMOFW_IPTABLES_RULES::iptablesRulesInit(Json::Value& args) {
    for (const char* member : {"adapter", "port", "chain", "table", "policy"}) {
        args[member] = Json::arrayValue;
    }
    args["ip"] = Json::nullValue;
    args["ip"]["v4"] = Json::arrayValue;
    args["ip"]["v6"] = Json::arrayValue;
}

void ZAMOFW_IPTABLES_RULES::iptablesArgToCmd(const std::string& adapter,
                                             const FWRULE& rule,
                                             const Json::Value& args,
                                             Json::Value& cmds) {
    // A rule without a verdict has no target; its lines end in the blank before it.
    const std::string target = args["policy"].empty() ? "" : args["policy"][0].asString();
    for (const Json::Value& table : args["table"]) {
        for (const Json::Value& chain : args["chain"]) {
            const std::string head = table.asString() + " " + chain.asString();
            for (const char* family : familiesOf(rule)) {
                Json::Value lines(Json::arrayValue);
                appendMatches(head, target, family, rule, args, lines);
                for (Json::Value& line : lines) {
                    cmds[family][adapter].append(std::move(line));
                }
            }
        }
    }
}

}  // namespace FW
