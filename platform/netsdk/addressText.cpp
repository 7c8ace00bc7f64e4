#include <zamo/netsdk.h>

#include <arpa/inet.h>

#include "platform/base/export.h"

namespace {

int isAddress(int family, const char* text) {
    in6_addr address = {};
    return text != nullptr && inet_pton(family, text, &address) == 1 ? 1 : 0;
}

}  // namespace

ZAMO_EXPORT int BlVLIBIsIpAddr(const char* text) {
    return isAddress(AF_INET, text);
}

ZAMO_EXPORT int BlVLIBIsv6IpAddrValid(const char* text) {
    return isAddress(AF_INET6, text);
}
