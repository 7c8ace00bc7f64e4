#include "command/report/rulePhrase.h"

#include <cstddef>
#include <vector>

namespace zamofw::report {
namespace {

constexpr std::size_t kMostEntries = 15;

std::string listed(const std::vector<std::string>& entries) {
    std::string text;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i == kMostEntries) {
            return text + " and " + std::to_string(entries.size() - i) + " more";
        }
        text += (i == 0 ? "" : ", ") + entries[i];
    }
    return text;
}

std::string pairOf(const std::vector<std::string>& entries, const char* between) {
    return entries.size() > 1 ? entries[0] + between + entries[1] : "?";
}

std::string familyPhrase(const FW::FWRULE& rule) {
    switch (rule.ipType) {
        case FW::FW_IP_TYPE_V4:
            return ", IPv4 only";
        case FW::FW_IP_TYPE_V6:
            return ", IPv6 only";
        default:
            return "";
    }
}

std::string protocolPhrase(std::int32_t protocol) {
    switch (protocol) {
        case FW::FW_PROTOCOL_TCP:
            return "tcp";
        case FW::FW_PROTOCOL_UDP:
            return "udp";
        case FW::FW_PROTOCOL_BOTH:
            return "tcp and udp";
        case FW::FW_PROTOCOL_ICMP:
            return "icmp";
        case FW::FW_PROTOCOL_IGMP:
            return "igmp";
        default:
            return "protocol code " + std::to_string(protocol);
    }
}

std::string portPhrase(const FW::FWRULE& rule) {
    std::string protocol = protocolPhrase(rule.protocol);
    if (rule.protocol == FW::FW_PROTOCOL_ICMP || rule.protocol == FW::FW_PROTOCOL_IGMP) {
        return protocol;
    }
    if (rule.portList.empty()) {
        return protocol + ", no port";
    }
    return protocol + (rule.portDirect != 0 ? " from port " : " ") + listed(rule.portList);
}

void addNote(std::string& text, const std::string& note) {
    text += (text.empty() ? "" : ", ") + note;
}

}  // namespace

std::string addressPhrase(const FW::FWRULE& rule) {
    const bool isSource = rule.ipDirect != 0;
    const std::string side = isSource ? "from " : "to ";
    switch (rule.ipGroup) {
        case FW::FW_IP_GROUP_HOST:
            return side + (rule.ipList.empty() ? "?" : rule.ipList[0]);
        case FW::FW_IP_GROUP_SUBNET:
            return side + pairOf(rule.ipList, "/");
        case FW::FW_IP_GROUP_RANGE:
            return side + pairOf(rule.ipList, "-");
        case FW::FW_IP_GROUP_COUNTRY:
            return side + "the countries " + listed(rule.ipList) + familyPhrase(rule);
        case FW::FW_IP_GROUP_ALL:
            return (isSource ? "from anywhere" : "to anywhere") + familyPhrase(rule);
        case FW::FW_IP_GROUP_NONE:
            return side + "nobody";
        default:
            return side + "group code " + std::to_string(rule.ipGroup);
    }
}

std::string servicePhrase(const FW::FWRULE& rule) {
    switch (rule.portGroup) {
        case FW::FW_PORT_GROUP_SERVICE:
        case FW::FW_PORT_GROUP_RESERVED_SERVICE:
            return rule.portList.empty() ? "no service" : listed(rule.portList);
        case FW::FW_PORT_GROUP_PORT:
            return portPhrase(rule);
        case FW::FW_PORT_GROUP_ALL:
            return "everything";
        default:
            return "port group code " + std::to_string(rule.portGroup);
    }
}

std::string notePhrase(const FW::FWRULE& rule) {
    std::string text;
    if (rule.adapterDirect == 0) {
        addNote(text, "going out");
    }
    if (rule.blLog) {
        addNote(text, "logged");
    }
    if (rule.portGroup == FW::FW_PORT_GROUP_RESERVED_SERVICE) {
        addNote(text, "kept for services");
    }
    if (rule.table != "filter") {
        addNote(text, "table " + rule.table);
    }
    for (const std::string& chain : rule.chainList) {
        if (FW::FWRULE().chainList.count(chain) == 0) {
            addNote(text, "also in the chain " + chain);
        }
    }
    for (const std::string& label : rule.labelList) {
        addNote(text, "#" + label);
    }
    return text;
}

}  // namespace zamofw::report
