#include "tests/support/store.h"

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <filesystem>

#include "zamofirewall/profileDatabase.h"

namespace fs = std::filesystem;

namespace test {
namespace {

constexpr const char* kServices = "/usr/zamo/etc.defaults/services.d/";

void writeService(const std::string& name, const std::string& text) {
    writeFile(kServices + name + ".json", json(text).toStyledString());
}

}  // namespace

void clearFiles() {
    for (const char* directory :
         {"/usr/zamo", "/etc.defaults", "/run/lock", "/run/zamo", "/usr/share/xt_geoip"}) {
        fs::create_directories(directory);
        for (const auto& entry : fs::directory_iterator(directory)) {
            fs::remove_all(entry.path());
        }
    }
    // A directory in /tmp may be the checkout, which the private host shares with the real one.
    for (const auto& entry : fs::directory_iterator("/tmp")) {
        if (!fs::is_directory(entry.symlink_status())) {
            fs::remove(entry.path());
        }
    }
    fs::remove_all("/tmp/iptables_serv_mod_list");
    fs::create_directories(kStore);
    fs::create_directories(kServices);
}

Json::Value json(std::string text) {
    std::replace(text.begin(), text.end(), '\'', '"');
    Json::Value value;
    EXPECT_TRUE(Json::Reader().parse(text, value)) << text;
    return value;
}

void writeSettings(bool enabled, const std::string& profile) {
    Json::Value settings;
    settings["status"] = enabled;
    settings["profile"] = profile;
    writeFile(kSettings, settings.toStyledString());
}

void writeProfile(const std::string& fileName, const FW::FWPROFILE& profile) {
    Json::Value document;
    FW::ZAMOFW_JSON_DB().profileToJson(profile, document);
    writeFile(kStore + fileName, Json::StyledWriter().write(document));
}

void writeServices() {
    writeService("ssh", "{'destination': {'protocol': 'tcp', 'ports': ['22']}}");
    writeService("dns", "{'destination': {'protocol': 'udp', 'ports': ['53']}}");
    writeService("web", "{'destination': {'protocol': 'tcp', 'ports': ['80', '443']}}");
    writeService("sip", "{'destination': {'protocol': 'both', 'ports': ['5060']}}");
    writeService("dhcp",
                 "{'destination': {'protocol': 'udp', 'ports': ['67']},"
                 " 'source': {'protocol': 'udp', 'ports': ['68']}}");
    writeService("off", "{'destination': {'protocol': 'tcp', 'ports': ['23']}, 'enabled': false}");
    writeService("vpn_server_pptp", "{'destination': {'protocol': 'tcp', 'ports': ['1723']}}");
}

void writeModuleList() {
    writeFile("/usr/zamo/etc.defaults/iptables_modules_list",
              "KERNEL_MODULES_CORE=\"c1.ko c2.ko\"\n"
              "KERNEL_MODULES_COMMON=\"m1.ko\"\n"
              "IPV6_MODULES=\"v1.ko\"\n"
              "KERNEL_MODULES_NAT=\"n1.ko n2.ko\"\n");
}

FW::FWRULE portRule(FW::FW_POLICY policy, const std::vector<std::string>& ports) {
    FW::FWRULE rule;
    rule.policy = policy;
    rule.ipGroup = FW::FW_IP_GROUP_ALL;
    rule.portGroup = FW::FW_PORT_GROUP_PORT;
    rule.portList = ports;
    return rule;
}

FW::FWRULE serviceRule(FW::FW_POLICY policy, const std::vector<std::string>& services) {
    FW::FWRULE rule = portRule(policy, services);
    rule.portGroup = FW::FW_PORT_GROUP_SERVICE;
    return rule;
}

}  // namespace test
