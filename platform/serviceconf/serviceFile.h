#ifndef PLATFORM_SERVICECONF_SERVICEFILE_H
#define PLATFORM_SERVICECONF_SERVICEFILE_H

#include <zamo/serviceconf.h>

#include <memory>
#include <string>

namespace zamo {

struct StringListReleaser {
    void operator()(VLIBCSzList* list) const { VLIBCSzListFree(list); }
};
using StringListPtr = std::unique_ptr<VLIBCSzList, StringListReleaser>;

struct ServicePorts {
    int protocol = 0;
    StringListPtr ports;
};

struct Service {
    ServicePorts destination;
    ServicePorts source;
    bool enabled = true;
};

// Reads the description of one service, a JSON document:
//
//     { "title": "Boot server",
//       "destination": { "protocol": "udp", "ports": ["67", "4011-4012"] },
//       "source": { "protocol": "udp", "ports": ["68"] },
//       "enabled": true }
//
// Every member may be missing; unknown ones are ignored. Throws std::runtime_error with the reason
// when the file cannot be used.
[[nodiscard]] Service readServiceFile(const std::string& path);

}  // namespace zamo

#endif
