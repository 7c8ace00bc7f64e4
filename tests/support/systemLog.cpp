#include "tests/support/systemLog.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <regex>

namespace test {
namespace {

constexpr const char* kSocket = "/dev/log";

// "<11>Nov 21 10:00:00 unit_tests: fwDB:120 Failed" -> "fwDB: Failed"
std::string readable(const std::string& datagram) {
    static const std::regex form("<(\\d+)>.{15} [^:]*: (\\w+):(?:\\d+)? ([^]*)");
    std::smatch parts;
    if (!std::regex_match(datagram, parts, form)) {
        return "unexpected form: " + datagram;
    }
    const int priority = LOG_PRI(std::atoi(parts[1].str().c_str()));
    return (priority == LOG_ERR     ? ""
            : priority == LOG_DEBUG ? "debug "
                                    : "priority " + std::to_string(priority) + " ") +
           parts[2].str() + ": " + parts[3].str();
}

// With the usual queue of ten datagrams, the code under test would wait for this process.
int openSocket() {
    std::ofstream("/proc/sys/net/unix/max_dgram_qlen") << 1000 << std::flush;
    return socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

}  // namespace

SystemLog::SystemLog() : socket_(openSocket()) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, kSocket);
    (void)unlink(kSocket);
    EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
        << std::strerror(errno);
    const int size = 1 << 20;
    (void)setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    closelog();
}

SystemLog::~SystemLog() {
    closelog();
    (void)close(socket_);
    (void)unlink(kSocket);
}

std::vector<std::string> SystemLog::take() {
    std::vector<std::string> lines;
    std::array<char, 8192> buffer = {};
    for (;;) {
        const ssize_t size = recv(socket_, buffer.data(), buffer.size(), 0);
        if (size < 0) {
            return lines;
        }
        lines.push_back(readable(std::string(buffer.data(), static_cast<std::size_t>(size))));
    }
}

}  // namespace test
