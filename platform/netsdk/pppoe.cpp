#include <zamo/netsdk.h>

#include <net/if.h>
#include <zamo/core.h>

#include <cstdio>
#include <cstring>

#include "platform/base/export.h"
#include "platform/base/fail.h"

namespace {

constexpr const char* kPppoeFile = "/run/zamo/pppoe.conf";

// The kernel also accepts alternative names and address labels ("ppp0:1"), which the packet filter
// cannot use.
bool isInterface(const char* name) {
    char properName[IF_NAMESIZE] = "";
    const unsigned index = if_nametoindex(name);
    return index != 0 && if_indextoname(index, properName) != nullptr &&
           strcmp(name, properName) == 0;
}

}  // namespace

ZAMO_EXPORT int ZAMOPPPoeIntfGet(char* buffer, int size) {
    if (buffer == nullptr || size <= 0) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    char name[2 * IF_NAMESIZE] = "";
    const int length = VLIBCFileGetKeyValue(kPppoeFile, "interface", name, sizeof name, 0);
    if (length < 0) {
        return -1;  // the last error is set already
    }

    const bool exists = length > 0 && isInterface(name);
    if (exists && length >= size) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    (void)snprintf(buffer, static_cast<size_t>(size), "%s", exists ? name : "");
    return 0;
}
