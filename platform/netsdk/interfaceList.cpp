#include <zamo/netsdk.h>

#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/socket.h>

#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <string>

#include "platform/base/export.h"
#include "platform/base/fail.h"

namespace {

static_assert(sizeof(VLIBNetInterface) == 64, "callers allocate the records");

struct AddressesReleaser {
    void operator()(ifaddrs* addresses) const { freeifaddrs(addresses); }
};
using AddressesPtr = std::unique_ptr<ifaddrs, AddressesReleaser>;

using NamesByIndex = std::map<int, std::string>;
using IndexesByName = std::map<std::string, int>;

// For an IPv4 address this may be a label such as "eth0:1" instead of the interface's name.
std::string interfaceOf(const ifaddrs& address) {
    const std::string label = address.ifa_name;
    return label.substr(0, label.find(':'));
}

bool hasFamily(const ifaddrs& address, int family) {
    return address.ifa_addr != nullptr && address.ifa_addr->sa_family == family;
}

IndexesByName findUsableLinks(const ifaddrs* first) {
    IndexesByName indexes;
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        const bool usable = (entry->ifa_flags & (IFF_UP | IFF_LOOPBACK)) == IFF_UP;
        if (!usable || !hasFamily(*entry, AF_PACKET)) {
            continue;
        }
        sockaddr_ll link = {};
        memcpy(&link, entry->ifa_addr, sizeof link);
        indexes[entry->ifa_name] = link.sll_ifindex;
    }
    return indexes;
}

NamesByIndex findConfigured(const ifaddrs* first) {
    const IndexesByName links = findUsableLinks(first);
    NamesByIndex configured;
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        if (!hasFamily(*entry, AF_INET) && !hasFamily(*entry, AF_INET6)) {
            continue;
        }
        const auto link = links.find(interfaceOf(*entry));
        if (link != links.end()) {
            configured[link->second] = link->first;
        }
    }
    return configured;
}

int fillRecords(const NamesByIndex& interfaces, VLIBNetInterface* records, int capacity) {
    int count = 0;
    for (const auto& [index, name] : interfaces) {
        if (count == capacity) {
            break;
        }
        VLIBNetInterface& record = records[count++];
        record = {};
        name.copy(record.name, sizeof record.name - 1);
    }
    return count;
}

}  // namespace

ZAMO_EXPORT int VLIBNetGetInterfaceInfo(VLIBNetInterface* records, int capacity, int kind) try {
    const bool fits = capacity == 0 || (capacity > 0 && records != nullptr);
    if (!fits || kind != VLIB_NET_INTERFACE_CONFIGURED) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }

    ifaddrs* found = nullptr;
    if (getifaddrs(&found) != 0) {
        return ZAMO_FAIL(ZAMO_ERR_SYSTEM);
    }
    const AddressesPtr addresses(found);
    return fillRecords(findConfigured(addresses.get()), records, capacity);
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}
