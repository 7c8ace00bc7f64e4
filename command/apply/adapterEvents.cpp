#include "command/apply/adapterEvents.h"

#include <fcntl.h>
#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <string>

#include "command/console.h"

namespace zamofw {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kQuiet{500};
constexpr milliseconds kLongestStorm{5000};
// Where pppd's hooks put the name of the PPPoE interface.
constexpr const char* kPppoeDirectory = "/run/zamo";

[[noreturn]] void cannotListen(const char* what) {
    const int error = errno;
    failed(std::string("cannot ") + what + ": " + std::strerror(error));
}

mnl_socket* openLinks() {
    mnl_socket* const socket = mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket == nullptr) {
        cannotListen("ask the kernel about network interfaces");
    }
    constexpr unsigned kGroups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
    if (mnl_socket_bind(socket, kGroups, MNL_SOCKET_AUTOPID) != 0) {
        const int error = errno;
        (void)mnl_socket_close(socket);
        errno = error;
        cannotListen("listen for changes of network interfaces");
    }
    return socket;
}

posix::Descriptor watchFiles() {
    if (mkdir(kPppoeDirectory, 0755) != 0 && errno != EEXIST) {
        cannotListen("make /run/zamo");
    }
    posix::Descriptor files =
        posix::aboveStandardStreams(posix::Descriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)));
    constexpr unsigned kEvents = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
    if (!files || inotify_add_watch(files.get(), kPppoeDirectory, kEvents | IN_ONLYDIR) < 0) {
        cannotListen("watch /run/zamo");
    }
    return files;
}

posix::Descriptor takeSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        sigaddset(&signals, signal);
    }
    posix::Descriptor fd = posix::aboveStandardStreams(
        posix::Descriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK)));
    // A reload that is in progress when one arrives is brought to its end first.
    if (!fd || pthread_sigmask(SIG_BLOCK, &signals, nullptr) != 0) {
        cannotListen("wait for signals");
    }
    return fd;
}

int pollTime(std::optional<milliseconds> atMost) {
    return atMost ? static_cast<int>(std::clamp<milliseconds::rep>(atMost->count(), 0, INT_MAX))
                  : -1;
}

}  // namespace

void AdapterEvents::Closer::operator()(mnl_socket* socket) const {
    (void)mnl_socket_close(socket);
}

AdapterEvents::AdapterEvents()
    : links_(openLinks()), files_(watchFiles()), signals_(takeSignals()) {}

AdapterEvents::~AdapterEvents() = default;

// What they say does not matter, since the whole state is looked at afterwards; nor does it matter
// that some were lost because there were too many of them (ENOBUFS).
void AdapterEvents::readLinks() {
    std::array<char, 32768> buffer = {};
    while (mnl_socket_recvfrom(links_.get(), buffer.data(), buffer.size()) >= 0 ||
           errno == ENOBUFS || errno == ENOSPC || errno == EINTR) {
    }
}

void AdapterEvents::readFiles() {
    alignas(inotify_event) std::array<char, 4096> buffer = {};
    while (read(files_.get(), buffer.data(), buffer.size()) > 0) {
    }
}

AdapterEvents::Event AdapterEvents::wait(std::optional<milliseconds> atMost) {
    enum Source { kSignals, kLinks, kFiles };
    std::array<pollfd, 3> sources = {{{signals_.get(), POLLIN, 0},
                                      {mnl_socket_get_fd(links_.get()), POLLIN, 0},
                                      {files_.get(), POLLIN, 0}}};
    const int count = poll(sources.data(), sources.size(), pollTime(atMost));
    if (count < 0 && errno != EINTR) {
        cannotListen("wait for changes of network interfaces");
    }
    if (count <= 0) {
        return Event::kNone;
    }
    if (sources[kSignals].revents != 0) {
        return Event::kStop;
    }
    if (sources[kLinks].revents != 0) {
        readLinks();
    }
    if (sources[kFiles].revents != 0) {
        readFiles();
    }
    return Event::kAdapters;
}

AdapterEvents::Event AdapterEvents::waitForQuiet() {
    const Clock::time_point end = Clock::now() + kLongestStorm;
    while (true) {
        const auto rest = std::chrono::ceil<milliseconds>(end - Clock::now());
        if (rest <= milliseconds::zero()) {
            return Event::kAdapters;
        }
        switch (wait(std::min(kQuiet, rest))) {
            case Event::kNone:
                return Event::kAdapters;
            case Event::kStop:
                return Event::kStop;
            case Event::kAdapters:
                break;
        }
    }
}

}  // namespace zamofw
