// The description of a service.

#include <stdexcept>

#include "fuzz/harness.h"
#include "platform/serviceconf/serviceFile.h"

namespace {

void check(const zamo::ServicePorts& side) {
    fuzz::require((side.protocol == 0) == (side.ports == nullptr), "ports come with a protocol");
    const int count = side.ports == nullptr ? 0 : VLIBCSzListCount(side.ports.get());
    for (int i = 0; i < count; ++i) {
        const std::string port = VLIBCSzListGet(side.ports.get(), i);
        fuzz::require(port.size() <= 11 && port[0] != '-' && port[0] != '0' &&
                          port.find_first_not_of("0123456789-") == std::string::npos,
                      "what becomes a word of a line is a port or a range");
    }
}

}  // namespace

void fuzz::run(const std::string& text) {
    const std::string path = "/tmp/service.json";
    writeFile(path, text);
    try {
        const zamo::Service service = zamo::readServiceFile(path);
        check(service.destination);
        check(service.source);
    } catch (const std::runtime_error& problem) {
        require(*problem.what() != '\0', "a file that cannot be used has a reason");
    }
}
