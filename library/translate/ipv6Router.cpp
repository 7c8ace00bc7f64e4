#include "library/translate/ipv6Router.h"

#include <zamo/core.h>

#include <array>
#include <cstdio>
#include <memory>

#include "library/logging/log.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";
constexpr const char* kNetworkTool = "/usr/zamo/sbin/zamonetdtool";
// More than any interface name; what the tool prints is no reason to take more memory.
constexpr std::size_t kLineSize = 256;

}  // namespace

std::string ipv6RouterInterface(const std::string& interface) {
    const std::array<const char*, 4> arguments = {
        kNetworkTool, "--get-ipv6-router-interface", interface.c_str(), nullptr};
    const std::unique_ptr<FILE, int (*)(FILE*)> stream(VLIBCPopen("r", arguments.data()),
                                                       VLIBCPclose);
    if (!stream) {
        FW_LOG(LOG_ERR, "Failed to exec zamonetdtool with VLIBCPopen().");
        return interface;
    }
    std::array<char, kLineSize> line = {};
    if (std::fgets(line.data(), static_cast<int>(line.size()), stream.get()) == nullptr) {
        FW_LOG(LOG_ERR, "Failed to getline after VLIBCPopen().");
        return interface;
    }
    return line.data();
}

}  // namespace FW
