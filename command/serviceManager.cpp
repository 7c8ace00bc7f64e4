#include "command/serviceManager.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "posix/descriptor.h"

namespace zamofw {

// systemd's library would do the same, but it brings six others with it, which would double the
// time that every call of the command takes to start.
void tellServiceManager(const std::string& lines) {
    const char* const path = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::size_t length = path == nullptr ? 0 : std::strlen(path);
    if (length < 2 || length >= sizeof address.sun_path || (*path != '/' && *path != '@')) {
        return;
    }
    std::memcpy(address.sun_path, path, length);
    if (*path == '@') {
        address.sun_path[0] = '\0';  // an abstract name
    }
    const posix::Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (socket) {
        (void)sendto(socket.get(),
                     lines.data(),
                     lines.size(),
                     MSG_NOSIGNAL,
                     reinterpret_cast<const sockaddr*>(&address),
                     static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
    }
}

}  // namespace zamofw
