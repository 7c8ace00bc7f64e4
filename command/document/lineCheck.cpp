#include "command/document/lineCheck.h"

#include <json/value.h>

#include <algorithm>
#include <string_view>

#include "library/model/names.h"
#include "zamofirewall/ruleModel.h"
#include "zamofirewall/translator.h"

namespace zamofw {
namespace {

// The buffer of a command line. No word may begin when all but the last two bytes are used.
constexpr std::size_t kMaxBytes = 1024;
constexpr std::size_t kMaxUsedBefore = 1022;
constexpr std::size_t kMaxWords = 255;

// Services whose lines do not come from the catalogue alone.
bool hasLinesOfItsOwn(std::string_view service) {
    return service == "vpn_server_pptp" || service == "vpn_server_ipsec";
}

bool hasUsableCountry(const RuleUnderCheck& rule, const CheckContext& context) {
    const Span<Node> countries = rule.members.items(field::kIpList);
    return std::any_of(countries.begin(), countries.end(), [&](const Node& country) {
        return (rule.wants(4) && context.hasCountry(std::string(country.text()), 4)) ||
               (rule.wants(6) && context.hasCountry(std::string(country.text()), 6));
    });
}

const char* noAddressReason(const RuleUnderCheck& rule, const CheckContext& context) {
    const std::size_t entries = rule.members.items(field::kIpList).size();
    switch (*rule.members.integer(field::kIpGroup)) {
        case FW::FW_IP_GROUP_HOST:
            return entries >= 1 ? nullptr : "it names no address";
        case FW::FW_IP_GROUP_SUBNET:
        case FW::FW_IP_GROUP_RANGE:
            return entries >= 2 ? nullptr : "its addresses are not complete";
        case FW::FW_IP_GROUP_COUNTRY:
            return hasUsableCountry(rule, context) ? nullptr : "none of its countries has data";
        case FW::FW_IP_GROUP_ALL:
            return nullptr;
        case FW::FW_IP_GROUP_NONE:
            return "its `ipGroup` is 2 (no address)";
        default:
            return "its `ipGroup` is unknown";
    }
}

const char* noServiceReason(const RuleUnderCheck& rule, const CheckContext& context) {
    const Span<Node> services = rule.members.items(field::kPortList);
    const bool hasLine = std::any_of(services.begin(), services.end(), [&](const Node& service) {
        const std::string name(service.text());
        return hasLinesOfItsOwn(name) || (context.services().known.count(name) != 0 &&
                                          context.services().idle.count(name) == 0);
    });
    if (hasLine) {
        return nullptr;
    }
    return services.empty() ? "it names no service"
                            : "each of its services is unknown, switched off or without ports";
}

const char* noPortReason(const RuleUnderCheck& rule, const CheckContext& context) {
    const auto protocol = *rule.members.integer(field::kProtocol);
    switch (*rule.members.integer(field::kPortGroup)) {
        case FW::FW_PORT_GROUP_SERVICE:
        case FW::FW_PORT_GROUP_RESERVED_SERVICE:
            return noServiceReason(rule, context);
        case FW::FW_PORT_GROUP_PORT:
            if (!isCode(protocol, protocolCodes())) {
                return "its `protocol` is unknown";
            }
            return protocol == FW::FW_PROTOCOL_ICMP || protocol == FW::FW_PROTOCOL_IGMP ||
                           !rule.members.items(field::kPortList).empty()
                       ? nullptr
                       : "it names no port";
        case FW::FW_PORT_GROUP_ALL:
            return nullptr;
        default:
            return "its `portGroup` is unknown";
    }
}

// Why the rule gives no line; null when it gives one.
const char* noLineReason(const RuleUnderCheck& rule, const CheckContext& context) {
    if (rule.adapter == kNeverTranslated) {
        return "rules of ppp0 are passed over; those of `pppoe` and `vpn` are not";
    }
    if (*rule.members.integer(field::kPolicy) == FW::FW_POLICY_NONE) {
        return "its `policy` is 2 (none)";
    }
    if (!rule.wants(4) && !rule.wants(6)) {
        return "its `ipType` is unknown";
    }
    const char* const reason = noAddressReason(rule, context);
    return reason != nullptr ? reason : noPortReason(rule, context);
}

std::vector<std::string> textsOf(Span<Node> items) {
    std::vector<std::string> texts;
    texts.reserve(items.size());
    for (const Node& item : items) {
        texts.emplace_back(item.text());
    }
    return texts;
}

FW::FWRULE recordOf(const Members& members) {
    const auto code = [&members](std::size_t row) {
        return static_cast<std::int32_t>(*members.integer(row));
    };
    FW::FWRULE record;
    record.adapterDirect = code(field::kAdapterDirect);
    record.policy = static_cast<FW::FW_POLICY>(code(field::kPolicy));
    record.blLog = members.flag(field::kBlLog);
    record.table = members.text(field::kTable);
    for (const std::string& chain : textsOf(members.items(field::kChainList))) {
        record.chainList.insert(chain);
    }
    record.ipType = code(field::kIpType);
    record.ipDirect = code(field::kIpDirect);
    record.ipGroup = code(field::kIpGroup);
    record.ipList = textsOf(members.items(field::kIpList));
    record.portDirect = code(field::kPortDirect);
    record.portGroup = code(field::kPortGroup);
    record.protocol = code(field::kProtocol);
    record.portList = textsOf(members.items(field::kPortList));
    return record;
}

// As if the adapter were there.
Json::Value linesOf(const std::string& adapter, const FW::FWRULE& record) {
    FW::ZAMOFW_IPTABLES_RULES translator;
    Json::Value args;
    translator.iptablesRulesInit(args);
    if (!translator.adapterToIptablesArg(adapter, record, args)) {
        args["adapter"].append("-i " + adapter);
    }
    (void)translator.ipToIptablesArg(record, args);
    (void)translator.portToIptablesArg(record, args);
    (void)translator.chainToIptablesArg(record, args);
    (void)translator.tableToIptablesArg(record, args);
    (void)translator.policyToIptablesArg(record, args);
    Json::Value lines;
    (void)translator.jIptablesCmdInit(lines);
    translator.iptablesArgToCmd(adapter, record, args, lines);
    return lines;
}

struct TextSizes {
    std::size_t sum = 0;
    std::size_t longest = 0;
    bool hasBlank = false;
};

void measure(std::string_view text, TextSizes& sizes) {
    sizes.sum += text.size();
    sizes.longest = std::max(sizes.longest, text.size());
    sizes.hasBlank = sizes.hasBlank || text.find(' ') != std::string_view::npos;
}

// Whether the rule's texts are too short for any limit. Nearly all are, and making the lines costs
// more than the rest of the check.
bool isShort(const RuleUnderCheck& rule) {
    constexpr std::size_t kFixedWords = 128;  // with the program's path and an interface
    constexpr std::size_t kServicePorts = 7 * 12;
    constexpr std::size_t kPortsPerLine = 7;
    TextSizes table;
    TextSizes chains;
    TextSizes addresses;
    TextSizes ports;
    measure(rule.members.text(field::kTable), table);
    measure(rule.adapter, table);
    for (const Node& chain : rule.members.items(field::kChainList)) {
        measure(chain.text(), chains);
    }
    for (const Node& address : rule.members.items(field::kIpList)) {
        measure(address.text(), addresses);
    }
    for (const Node& port : rule.members.items(field::kPortList)) {
        measure(port.text(), ports);
    }
    const bool hasBlank = table.hasBlank || chains.hasBlank || addresses.hasBlank || ports.hasBlank;
    const std::size_t entries = rule.members.items(field::kIpList).size();
    return !hasBlank && kFixedWords + kServicePorts + table.sum + chains.longest + addresses.sum +
                                entries + kPortsPerLine * (ports.longest + 1) <
                            kMaxUsedBefore;
}

void reportLimit(const RuleUnderCheck& rule,
                 LineLimit limit,
                 const std::string& line,
                 FindingList& findings) {
    if (limit == LineLimit::kWords) {
        findings.error(rule.node.offset,
                       rule.where,
                       {"too-many-words",
                        "the rule makes a line of more than " + std::to_string(kMaxWords) +
                            " words, " + quoted(line),
                        "Take the blanks out of its texts."});
    } else {
        findings.error(rule.node.offset,
                       rule.where,
                       {"line-too-long",
                        "the rule makes a line of more than " + std::to_string(kMaxBytes) +
                            " bytes, " + quoted(line),
                        "Shorten its texts, or make several rules of it."});
    }
}

// Reports each limit once, with the first line that passes it.
bool checkLimits(const RuleUnderCheck& rule, FindingList& findings) {
    const Json::Value lines = linesOf(rule.adapter, recordOf(rule.members));
    bool words = false;
    bool bytes = false;
    for (const FW::Family& family : FW::kFamilies) {
        for (const Json::Value& arguments : lines[family.key][rule.adapter]) {
            const std::string line = std::string(family.program) + ' ' + arguments.asString();
            const LineLimit limit = limitPassedBy(line);
            bool& reported = limit == LineLimit::kWords ? words : bytes;
            if (limit != LineLimit::kNone && !reported) {
                reported = true;
                reportLimit(rule, limit, line, findings);
            }
        }
    }
    return !words && !bytes;
}

}  // namespace

LineLimit limitPassedBy(const std::string& line) {
    std::size_t count = 0;
    std::size_t used = 0;
    for (std::size_t begin = 0; begin < line.size();) {
        const std::size_t end = std::min(line.find(' ', begin), line.size());
        const std::string_view word = std::string_view(line).substr(begin, end - begin);
        begin = end + 1;
        // A limit that is reached counts when anything follows, even one more blank.
        if (count >= kMaxWords) {
            return LineLimit::kWords;
        }
        if (used > kMaxUsedBefore) {
            return LineLimit::kBytes;
        }
        if (!word.empty()) {
            ++count;
            used += std::min(word.find('\0'), word.size()) + 1;
        }
    }
    return used > kMaxBytes ? LineLimit::kBytes : LineLimit::kNone;
}

bool checkLines(const RuleUnderCheck& rule, const CheckContext& context, FindingList& findings) {
    if (!rule.members.areSound()) {
        return true;
    }
    const bool isInUse =
        rule.members.flag(field::kEnable) && context.adapters.count(rule.adapter) != 0;
    const char* const reason = isInUse ? noLineReason(rule, context) : nullptr;
    if (reason != nullptr) {
        findings.warning(rule.node.offset,
                         rule.where,
                         {"no-effect",
                          std::string("the rule makes no line: ") + reason,
                          "Complete it, or take it out."});
    }
    return rule.members.integer(field::kPolicy) == FW::FW_POLICY_NONE || isShort(rule) ||
           checkLimits(rule, findings);
}

}  // namespace zamofw
