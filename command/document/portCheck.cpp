#include "command/document/portCheck.h"

#include "command/document/textCheck.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {
namespace {

constexpr int kHighestPort = 65535;
constexpr std::size_t kLongestPort = 5;

// -1 when the text is no port. iptables reads a number that begins with 0 as an octal one.
int portIn(std::string_view text) {
    if (!isDigits(text) || text.size() > kLongestPort || (text.size() > 1 && text[0] == '0')) {
        return -1;
    }
    int port = 0;
    for (const char digit : text) {
        port = port * 10 + (digit - '0');
    }
    return port <= kHighestPort ? port : -1;
}

std::optional<Fault> portFault(std::string_view text) {
    const std::size_t dash = text.find('-');
    const int low = portIn(text.substr(0, dash));
    const int high = dash == std::string_view::npos ? low : portIn(text.substr(dash + 1));
    if (low < 0 || high < 0) {
        if (std::optional<Fault> fault = entryFault("the port", text)) {
            return fault;
        }
        return Fault{"bad-port",
                     quoted(text) + " is neither a port nor a range of ports",
                     "Write a number from 0 to 65535 without a leading 0, or a range such as "
                     "6000-6010, one an entry; a service by its name needs `portGroup` 0."};
    }
    if (high < low) {
        return Fault{"reversed-range",
                     "the range " + quoted(text) + " ends before it begins",
                     "Put the lower port first."};
    }
    return std::nullopt;
}

void reportMissing(const RuleUnderCheck& rule, const char* wanted, FindingList& findings) {
    findings.error(rule.offsetOf(field::kPortList),
                   rule.whereOf(field::kPortList),
                   {"missing-values",
                    std::string("`portList` needs ") + wanted + ", but has no entry",
                    "Add what is missing, or set `portGroup` to 3 (every port)."});
}

void checkServices(const RuleUnderCheck& rule, const CheckContext& context, FindingList& findings) {
    const Span<Node> items = rule.members.items(field::kPortList);
    if (items.empty()) {
        reportMissing(rule, "a service", findings);
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string name(items[i].text());
        if (context.services().known.count(name) != 0) {
            continue;
        }
        const std::string& near = findings.suggestionFor("a service", name, [&context] {
            const std::set<std::string>& known = context.services().known;
            return std::vector<std::string>(known.begin(), known.end());
        });
        const Location list = rule.whereOf(field::kPortList);
        findings.error(items[i].offset,
                       {list, i},
                       {"unknown-service",
                        "there is no service " + quoted(name) +
                            ", so that it drops out of the rule without a word",
                        near.empty() ? "`zamofw service list` shows the services."
                                     : "Correct the name: " + near});
    }
}

// Reports a protocol that gives no line. Whether the ports matter for it.
bool checkProtocol(const RuleUnderCheck& rule, FindingList& findings) {
    const auto protocol = rule.members.integer(field::kProtocol);
    if (!protocol) {
        return true;
    }
    if (isCode(*protocol, protocolCodes())) {
        return *protocol != FW::FW_PROTOCOL_ICMP && *protocol != FW::FW_PROTOCOL_IGMP;
    }
    Fault fault = codeFault("`protocol`", *protocol, protocolCodes());
    if (rule.members.find(field::kProtocol) == nullptr) {
        fault.message = "the rule has ports and no `protocol`, which reads as 0";
    }
    findings.error(rule.offsetOf(field::kProtocol), rule.whereOf(field::kProtocol), fault);
    return true;
}

void checkPortEntries(const RuleUnderCheck& rule, FindingList& findings) {
    const Span<Node> items = rule.members.items(field::kPortList);
    if (items.empty()) {
        reportMissing(rule, "a port", findings);
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (std::optional<Fault> fault = portFault(items[i].text())) {
            const Location list = rule.whereOf(field::kPortList);
            findings.error(items[i].offset, {list, i}, std::move(*fault));
        }
    }
}

}  // namespace

void checkPorts(const RuleUnderCheck& rule, const CheckContext& context, FindingList& findings) {
    const bool isReadable = rule.members.isSound(field::kPortList);
    switch (rule.members.integer(field::kPortGroup).value_or(FW::FW_PORT_GROUP_ALL)) {
        case FW::FW_PORT_GROUP_SERVICE:
        case FW::FW_PORT_GROUP_RESERVED_SERVICE:
            if (isReadable) {
                checkServices(rule, context, findings);
            }
            return;
        case FW::FW_PORT_GROUP_PORT:
            if (checkProtocol(rule, findings) && isReadable) {
                checkPortEntries(rule, findings);
            }
            return;
        default:
            return;
    }
}

}  // namespace zamofw
