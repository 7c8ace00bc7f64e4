#include "command/document/memberTable.h"

namespace zamofw {

std::size_t searchedRow(const MemberTable& table, std::string_view name, std::size_t guess) {
    std::size_t row = guess;
    for (std::size_t i = 0; i < table.size(); ++i, ++row) {
        row = row < table.size() ? row : 0;
        if (table[row].name == name) {
            return row;
        }
    }
    return table.size();
}

const std::vector<Code>& policyCodes() {
    static const std::vector<Code> codes = {{0, "allow"}, {1, "deny"}, {2, "none"}};
    return codes;
}

const std::vector<Code>& protocolCodes() {
    static const std::vector<Code> codes = {
        {1, "TCP"}, {2, "UDP"}, {3, "TCP and UDP"}, {4, "ICMP"}, {32, "IGMP"}};
    return codes;
}

const MemberTable& ruleTable() {
    static const MemberTable table = {
        {"adapterDirect", MemberType::kInteger},
        {"blLog", MemberType::kFlag},
        {"chainList", MemberType::kTexts},
        {"enable", MemberType::kFlag},
        {"ipDirect", MemberType::kInteger},
        {"ipGroup",
         MemberType::kInteger,
         {{0, "host"},
          {1, "subnet"},
          {2, "none"},
          {3, "country"},
          {4, "range"},
          {5, "every address"}}},
        {"ipList", MemberType::kTexts},
        {"ipType", MemberType::kInteger, {{0, "IPv4"}, {1, "IPv6"}, {2, "both"}}},
        {"labelList", MemberType::kTexts},
        {"name", MemberType::kText},
        {"policy", MemberType::kInteger, policyCodes()},
        {"portDirect", MemberType::kInteger},
        {"portGroup",
         MemberType::kInteger,
         {{0, "services"}, {1, "ports"}, {2, "reserved services"}, {3, "every port"}}},
        {"portList", MemberType::kTexts},
        {"protocol", MemberType::kInteger},
        {"ruleID", MemberType::kInteger},
        {"ruleIndex", MemberType::kInteger},
        {"table", MemberType::kText},
    };
    return table;
}

const MemberTable& profileTable() {
    static const MemberTable table = {
        {"adapterPolicyMap", MemberType::kObject},
        {"name", MemberType::kText},
        {"rules", MemberType::kObject},
    };
    return table;
}

const MemberTable& exportTable() {
    static const MemberTable table = {
        {"config_firewall_settings", MemberType::kObject},
        {"config_profiles", MemberType::kObject},
        {"config_version", MemberType::kInteger, {{1, "the only one"}}},
    };
    return table;
}

const MemberTable& settingsTable() {
    static const MemberTable table = {
        {"profile", MemberType::kText},
        {"status", MemberType::kFlag},
    };
    return table;
}

}  // namespace zamofw
