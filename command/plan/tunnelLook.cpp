#include "command/plan/tunnelLook.h"

#include <ifaddrs.h>
#include <net/if_arp.h>
#include <netpacket/packet.h>

#include <memory>

namespace zamofw {
namespace {

bool isTunnel(const ifaddrs& entry) {
    return entry.ifa_addr != nullptr && entry.ifa_addr->sa_family == AF_PACKET &&
           reinterpret_cast<const sockaddr_ll*>(entry.ifa_addr)->sll_hatype == ARPHRD_SIT;
}

}  // namespace

// The kernel is asked rather than /sys, which may show the interfaces of another network namespace.
bool mayHaveTunnel() {
    ifaddrs* entries = nullptr;
    if (getifaddrs(&entries) != 0) {
        return true;
    }
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> guard(entries, freeifaddrs);
    for (const ifaddrs* entry = entries; entry != nullptr; entry = entry->ifa_next) {
        if (isTunnel(*entry)) {
            return true;
        }
    }
    return false;
}

}  // namespace zamofw
