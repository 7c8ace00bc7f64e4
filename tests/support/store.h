// The store and the catalogue that the code under test reads and writes.
#ifndef TESTS_SUPPORT_STORE_H
#define TESTS_SUPPORT_STORE_H

#include <json/value.h>

#include <string>
#include <vector>

#include "tests/support/files.h"
#include "zamofirewall/ruleModel.h"

namespace test {

constexpr const char* kStore = "/usr/zamo/etc/firewall.d/";
constexpr const char* kSettings = "/usr/zamo/etc/firewall.d/firewall_settings.json";

// Empties the library's paths and makes their directories.
void clearFiles();

// Parses JSON that has ' in place of ".
Json::Value json(std::string text);

// Writes settings that have this profile in force.
void writeSettings(bool enabled, const std::string& profile);

// Writes the profile to this file of the store.
void writeProfile(const std::string& fileName, const FW::FWPROFILE& profile);

// Writes a service catalogue: "ssh" (tcp 22), "dns" (udp 53), "web" (tcp 80 and 443), "sip" (tcp
// and udp 5060), "dhcp" (udp 67, source 68), "off" (switched off), "vpn_server_pptp" (tcp 1723).
void writeServices();

// Writes a module list: c1.ko c2.ko | m1.ko | v1.ko | n1.ko n2.ko.
void writeModuleList();

// A rule about ports, for every address.
FW::FWRULE portRule(FW::FW_POLICY policy, const std::vector<std::string>& ports);

// A rule about services, for every address.
FW::FWRULE serviceRule(FW::FW_POLICY policy, const std::vector<std::string>& services);

}  // namespace test

#endif
