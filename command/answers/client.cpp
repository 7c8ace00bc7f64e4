// The administrator's own connection.

#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>
#include <memory>
#include <sstream>

#include "command/answers/meaning.h"
#include "command/answers/meaningFindings.h"
#include "command/console.h"
#include "command/history/connection.h"
#include "posix/descriptor.h"

namespace zamofw {
namespace {

constexpr unsigned kSshPort = 22;
constexpr const char* kLoopback = "lo";

sockaddr_storage socketAddress(const Address& address, socklen_t& size) {
    sockaddr_storage storage = {};
    if (address.family == 4) {
        auto& v4 = reinterpret_cast<sockaddr_in&>(storage);
        v4.sin_family = AF_INET;
        v4.sin_port = htons(kSshPort);
        std::memcpy(&v4.sin_addr, address.bytes.data(), sizeof(v4.sin_addr));
        size = sizeof(v4);
    } else {
        auto& v6 = reinterpret_cast<sockaddr_in6&>(storage);
        v6.sin6_family = AF_INET6;
        v6.sin6_port = htons(kSshPort);
        std::memcpy(&v6.sin6_addr, address.bytes.data(), sizeof(v6.sin6_addr));
        size = sizeof(v6);
    }
    return storage;
}

std::optional<Address> addressOf(const sockaddr* socketAddress) {
    Address address;
    if (socketAddress != nullptr && socketAddress->sa_family == AF_INET) {
        address.family = 4;
        const auto* const v4 = reinterpret_cast<const sockaddr_in*>(socketAddress);
        std::memcpy(address.bytes.data(), &v4->sin_addr, sizeof(v4->sin_addr));
        return address;
    }
    if (socketAddress != nullptr && socketAddress->sa_family == AF_INET6) {
        address.family = 6;
        const auto* const v6 = reinterpret_cast<const sockaddr_in6*>(socketAddress);
        std::memcpy(address.bytes.data(), &v6->sin6_addr, sizeof(v6->sin6_addr));
        return address;
    }
    return std::nullopt;
}

// This machine's address for packets to the client, as its routes say. Nothing is sent.
std::optional<Address> ownAddressFor(const Address& client) {
    socklen_t size = 0;
    const sockaddr_storage target = socketAddress(client, size);
    const posix::Descriptor socket(::socket(target.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket || connect(socket.get(), reinterpret_cast<const sockaddr*>(&target), size) != 0) {
        return std::nullopt;
    }
    sockaddr_storage own = {};
    size = sizeof(own);
    if (getsockname(socket.get(), reinterpret_cast<sockaddr*>(&own), &size) != 0) {
        return std::nullopt;
    }
    return addressOf(reinterpret_cast<const sockaddr*>(&own));
}

std::vector<std::string> interfacesWith(const Address& own) {
    std::vector<std::string> names;
    ifaddrs* entries = nullptr;
    if (getifaddrs(&entries) != 0) {
        return names;
    }
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> guard(entries, freeifaddrs);
    for (const ifaddrs* entry = entries; entry != nullptr; entry = entry->ifa_next) {
        const std::optional<Address> address = addressOf(entry->ifa_addr);
        if (address && address->family == own.family && address->bytes == own.bytes) {
            names.emplace_back(entry->ifa_name);
        }
    }
    return names;
}

// "CLIENT PORT SERVER PORT"
struct SshConnection {
    std::string client;
    std::string clientPort;
    std::string server;
    std::string serverPort;
};

SshConnection sshConnection() {
    SshConnection connection;
    std::istringstream(currentConnection().ssh.value_or("")) >> connection.client >>
        connection.clientPort >> connection.server >> connection.serverPort;
    return connection;
}

Client clientFrom(const Address& address,
                  const std::string& text,
                  const std::optional<Address>& server,
                  analysis::Number port) {
    Client client;
    client.address = text;
    client.question.packet.family = address.family;
    client.question.source = analysis::numberOf(address);
    client.question.port = port;
    const std::optional<Address> own = server ? server : ownAddressFor(address);
    if (own && own->family == address.family) {
        client.question.destination = analysis::numberOf(*own);
        client.interfaces = own->bytes == address.bytes ? std::vector<std::string>{kLoopback}
                                                        : interfacesWith(*own);
    }
    return client;
}

}  // namespace

std::optional<Client> clientOf(const std::optional<std::string>& address,
                               const std::optional<std::string>& port) {
    const SshConnection ssh = sshConnection();
    const std::optional<Address> caller = parseAddress(ssh.client);
    if (!address && !caller) {
        if (port) {
            wrongUse("`--port` without a client", "say its address: --client 192.0.2.7");
        }
        return std::nullopt;
    }
    analysis::Number wanted = kSshPort;
    if (port) {
        wanted = portOption("--port", *port);
    } else if (caller && !ssh.serverPort.empty() && (!address || *address == ssh.client)) {
        wanted = portOption("SSH_CONNECTION", ssh.serverPort);
    }
    if (caller && (!address || *address == ssh.client)) {
        return clientFrom(*caller, ssh.client, parseAddress(ssh.server), wanted);
    }
    return clientFrom(addressOption("--client", *address), *address, std::nullopt, wanted);
}

}  // namespace zamofw
