#include "tests/integration/neighbour.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>

#include "tests/support/processes.h"

namespace test {
namespace {

struct Address {
    sockaddr_storage storage = {};
    socklen_t size = 0;
};

Address parseAddress(const std::string& text, int port) {
    Address address;
    auto* const v4 = reinterpret_cast<sockaddr_in*>(&address.storage);
    auto* const v6 = reinterpret_cast<sockaddr_in6*>(&address.storage);
    if (inet_pton(AF_INET, text.c_str(), &v4->sin_addr) == 1) {
        v4->sin_family = AF_INET;
        v4->sin_port = htons(static_cast<std::uint16_t>(port));
        address.size = sizeof *v4;
    } else if (inet_pton(AF_INET6, text.c_str(), &v6->sin6_addr) == 1) {
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(static_cast<std::uint16_t>(port));
        address.size = sizeof *v6;
    }
    return address;
}

int startConnection(const std::string& source, const std::string& target, int port) {
    const Address from = parseAddress(source, 0);
    const Address to = parseAddress(target, port);
    const int descriptor =
        socket(from.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (bind(descriptor, reinterpret_cast<const sockaddr*>(&from.storage), from.size) != 0) {
        std::perror("bind");
    }
    (void)connect(descriptor, reinterpret_cast<const sockaddr*>(&to.storage), to.size);
    return descriptor;
}

std::set<int> answering(const std::string& source, const std::string& target,
                        const std::vector<int>& ports, int seconds) {
    using Clock = std::chrono::steady_clock;
    std::vector<pollfd> waiting;
    for (const int port : ports) {
        waiting.push_back({startConnection(source, target, port), POLLOUT, 0});
    }
    std::set<int> answered;
    const auto deadline = Clock::now() + std::chrono::seconds(seconds);
    while (Clock::now() < deadline && answered.size() < ports.size()) {
        (void)poll(waiting.data(), waiting.size(), 50);
        for (std::size_t i = 0; i < waiting.size(); ++i) {
            if (waiting[i].revents != 0) {
                answered.insert(ports[i]);
                close(waiting[i].fd);
                waiting[i].fd = -1;
            }
        }
    }
    for (const pollfd& entry : waiting) {
        close(entry.fd);
    }
    return answered;
}

void enterNetworkOf(pid_t process) {
    const int descriptor =
        open(("/proc/" + std::to_string(process) + "/ns/net").c_str(), O_RDONLY | O_CLOEXEC);
    if (setns(descriptor, CLONE_NEWNET) != 0) {
        std::perror("setns");
        _exit(1);
    }
    close(descriptor);
}

}  // namespace

Neighbour::Neighbour() {
    int ready[2];
    EXPECT_EQ(pipe2(ready, O_CLOEXEC), 0);
    process_ = fork();
    if (process_ == 0) {
        const bool separated = unshare(CLONE_NEWNET) == 0;
        (void)(write(ready[1], separated ? "y" : "n", 1) == 1);
        pause();
        _exit(0);
    }
    char answer = 0;
    EXPECT_EQ(read(ready[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    close(ready[0]);
    close(ready[1]);

    const std::string there = "nsenter -t " + std::to_string(process_) + " -n ip ";
    for (const std::string number : {"0", "1"}) {
        const std::string name = "eth" + number;
        const std::string net = number == "0" ? "10.1.0." : "10.2.0.";
        shell("ip link add " + name + " type veth peer name " + name + " netns " +
              std::to_string(process_));
        shell("ip addr add " + net + "1/24 dev " + name + " && ip link set " + name + " up");
        for (const char* host : {"2", "20", "150"}) {
            shell(there + "addr add " + net + host + "/24 dev " + name);
        }
        shell(there + "link set " + name + " up");
    }
    shell("ip addr add fd01::1/64 dev eth0 nodad");
    shell(there + "addr add fd01::2/64 dev eth0 nodad");
}

Neighbour::~Neighbour() {
    kill(process_, SIGKILL);
    (void)waitpid(process_, nullptr, 0);
    shell("ip link del eth0 2>/dev/null; ip link del eth1 2>/dev/null; true");
}

std::set<int> Neighbour::answeringPorts(const std::string& source, const std::string& target,
                                        const std::vector<int>& ports, int seconds) const {
    int result[2];
    EXPECT_EQ(pipe2(result, O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        enterNetworkOf(process_);
        for (const int port : answering(source, target, ports, seconds)) {
            (void)(write(result[1], &port, sizeof port) == sizeof port);
        }
        _exit(0);
    }
    close(result[1]);
    std::set<int> answered;
    int port = 0;
    while (read(result[0], &port, sizeof port) == sizeof port) {
        answered.insert(port);
    }
    close(result[0]);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    return answered;
}

}  // namespace test
