// The fixed names: adapters, chains, families and paths.
#ifndef LIBRARY_MODEL_NAMES_H
#define LIBRARY_MODEL_NAMES_H

#include <array>

namespace FW {

// The adapters that are not interfaces, in the order of lookup.
constexpr const char* kGlobalAdapter = "global";  // every interface
constexpr const char* kPppoeAdapter = "pppoe";    // the interface that dials out
constexpr const char* kVpnAdapter = "vpn";        // the interfaces of the VPN servers
constexpr std::array<const char*, 3> kPredefinedAdapters = {
    kGlobalAdapter, kPppoeAdapter, kVpnAdapter};

// The chains that the firewall fills and flushes, in the order of the built-in lines. The system
// makes them and jumps to them.
constexpr const char* kInputChain = "INPUT_FIREWALL";
constexpr const char* kForwardChain = "FORWARD_FIREWALL";
constexpr std::array<const char*, 2> kFirewallChains = {kInputChain, kForwardChain};
// Holds the guard rule while the rules are rebuilt.
constexpr const char* kReloadingChain = "FIREWALL_RELOADING";

// An address family: its member in a command list, and the program that takes its lines.
struct Family {
    const char* key;
    const char* program;
};
constexpr Family kIpv4 = {"v4", "/sbin/iptables"};
constexpr Family kIpv6 = {"v6", "/sbin/ip6tables"};
// In the order of execution.
constexpr std::array<Family, 2> kFamilies = {kIpv4, kIpv6};

constexpr const char* kProfileDirectory = "/usr/zamo/etc/firewall.d/";
constexpr const char* kProfileExtension = ".json";
constexpr const char* kSettingsFile = "/usr/zamo/etc/firewall.d/firewall_settings.json";
constexpr const char* kExecutionLockFile = "/tmp/firewall_iptables_exec.lock";
constexpr const char* kModuleNoteFile = "/tmp/iptables_serv_mod_list";
constexpr const char* kCountryDirectory = "/usr/share/xt_geoip/";

}  // namespace FW

#endif
