/*
 * Answers single questions about the machine's network. It is started once for every firewall rule:
 * it is linked statically, asks the kernel directly and allocates nothing.
 */
#include <errno.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

enum {
    EXIT_FAULT = 1,
    EXIT_USAGE = 2,
    PART_SIZE = 32768, /* the kernel sends no larger part of a dump */
    DUMP_TRIES = 10,   /* a change of the network makes a dump incomplete */
    MAX_TUNNELS = 1024,
};

struct tunnel {
    char name[IFNAMSIZ];
    uint32_t local; /* in network byte order */
    int index;
};

static struct search {
    int interfaceIndex;
    size_t tunnelCount;
    struct tunnel tunnels[MAX_TUNNELS];
    const struct tunnel* match; /* the answer */
} search;

/* False when there is no room for what the message holds. */
typedef bool messageHandler(const struct nlmsghdr* message);

enum DumpResult { DUMP_DONE, DUMP_INTERRUPTED, DUMP_FAILED };

struct linkRequest {
    struct nlmsghdr header;
    struct ifinfomsg link;
    struct rtattr mask;
    uint32_t maskValue;
};

struct addressRequest {
    struct nlmsghdr header;
    struct ifaddrmsg address;
};

/* The payload of the first attribute of this type, or NULL; `*size` is its length. */
static const void* findAttribute(const void* attributes, size_t left, int type, size_t* size) {
    const struct rtattr* attribute = attributes;

    while (left >= sizeof *attribute && attribute->rta_len >= sizeof *attribute &&
           attribute->rta_len <= left) {
        size_t step = RTA_ALIGN(attribute->rta_len);
        if (attribute->rta_type == type) {
            *size = RTA_PAYLOAD(attribute);
            return RTA_DATA(attribute);
        }
        if (step > left) {
            break;
        }
        left -= step;
        attribute = (const struct rtattr*)((const char*)attribute + step);
    }
    return NULL;
}

/* False when there is no IPv4 address in the attribute. */
static bool copyAddress(const void* attributes, size_t left, int type, uint32_t* address) {
    size_t size = 0;
    const void* found = findAttribute(attributes, left, type, &size);

    if (found == NULL || size != sizeof *address) {
        return false;
    }
    memcpy(address, found, sizeof *address);
    return true;
}

static bool collectTunnel(const struct nlmsghdr* message) {
    const struct ifinfomsg* link = NLMSG_DATA(message);
    const void* attributes = IFLA_RTA(link);
    size_t length = IFLA_PAYLOAD(message);
    struct tunnel tunnel = {.index = link->ifi_index};
    size_t size = 0;

    if (link->ifi_type != ARPHRD_SIT || !(link->ifi_flags & IFF_UP)) {
        return true;
    }
    /* The link-level address of a 6in4 tunnel is its local IPv4 address. */
    if (!copyAddress(attributes, length, IFLA_ADDRESS, &tunnel.local) || tunnel.local == 0) {
        return true;
    }
    const char* name = findAttribute(attributes, length, IFLA_IFNAME, &size);
    if (name == NULL || size > sizeof tunnel.name) {
        return true;
    }
    memcpy(tunnel.name, name, size);

    if (search.tunnelCount == MAX_TUNNELS) {
        return false;
    }
    search.tunnels[search.tunnelCount++] = tunnel;
    return true;
}

static bool matchAddress(const struct nlmsghdr* message) {
    const struct ifaddrmsg* header = NLMSG_DATA(message);
    uint32_t address = 0;

    if (header->ifa_family != AF_INET || (int)header->ifa_index != search.interfaceIndex) {
        return true;
    }
    if (!copyAddress(IFA_RTA(header), IFA_PAYLOAD(message), IFA_LOCAL, &address)) {
        return true;
    }
    for (size_t i = 0; i < search.tunnelCount; ++i) {
        const struct tunnel* tunnel = &search.tunnels[i];
        if (tunnel->local != address) {
            continue;
        }
        if (search.match == NULL || tunnel->index < search.match->index) {
            search.match = tunnel;
        }
    }
    return true;
}

/* Hands on the messages of one part of a dump and tells whether it was the last part. */
static enum DumpResult readPart(int fd, messageHandler* handle, bool* last) {
    static union {
        struct nlmsghdr header;
        char bytes[PART_SIZE];
    } part;
    ssize_t got = recv(fd, &part, sizeof part, MSG_TRUNC);
    unsigned left = (unsigned)got;
    bool interrupted = false;

    if (got < 0 || (size_t)got > sizeof part) {
        return DUMP_FAILED;
    }
    for (const struct nlmsghdr* m = &part.header; NLMSG_OK(m, left); m = NLMSG_NEXT(m, left)) {
        if (m->nlmsg_flags & NLM_F_DUMP_INTR) {
            interrupted = true;
        }
        if (m->nlmsg_type == NLMSG_ERROR) {
            return DUMP_FAILED;
        }
        if (m->nlmsg_type == NLMSG_DONE) {
            *last = true;
            break;
        }
        if (!handle(m)) {
            return DUMP_FAILED;
        }
    }
    return interrupted ? DUMP_INTERRUPTED : DUMP_DONE;
}

static enum DumpResult dump(int fd, const struct nlmsghdr* request, messageHandler* handle) {
    enum DumpResult result = DUMP_DONE;
    bool last = false;

    if (send(fd, request, request->nlmsg_len, 0) < 0) {
        return DUMP_FAILED;
    }
    while (!last) {
        enum DumpResult part = readPart(fd, handle, &last);
        if (part == DUMP_FAILED) {
            return part;
        }
        if (part == DUMP_INTERRUPTED) {
            result = part;
        }
    }
    return result;
}

static enum DumpResult dumpTunnels(int fd) {
    static const struct linkRequest request = {
        .header = {.nlmsg_len = sizeof request,
                   .nlmsg_type = RTM_GETLINK,
                   .nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP},
        .mask = {.rta_len = sizeof request.mask + sizeof request.maskValue,
                 .rta_type = IFLA_EXT_MASK},
        .maskValue = RTEXT_FILTER_SKIP_STATS,
    };
    search.tunnelCount = 0;
    return dump(fd, &request.header, collectTunnel);
}

static enum DumpResult dumpAddresses(int fd) {
    static const struct addressRequest request = {
        .header = {.nlmsg_len = sizeof request,
                   .nlmsg_type = RTM_GETADDR,
                   .nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP},
        .address = {.ifa_family = AF_INET},
    };
    search.match = NULL;
    return dump(fd, &request.header, matchAddress);
}

static bool completeDump(int fd, enum DumpResult (*attempt)(int)) {
    for (int i = 0; i < DUMP_TRIES; ++i) {
        enum DumpResult result = attempt(fd);
        if (result != DUMP_INTERRUPTED) {
            return result == DUMP_DONE;
        }
    }
    errno = EAGAIN;
    return false;
}

/* 0 when there is no such interface. */
static int findInterface(int fd, const char* name) {
    struct ifreq request = {0};
    const size_t length = strlen(name);

    if (length >= sizeof request.ifr_name) {
        return 0;
    }
    memcpy(request.ifr_name, name, length);
    return ioctl(fd, SIOCGIFINDEX, &request) == 0 ? request.ifr_ifindex : 0;
}

/* Sets search.match; false, with errno set, when the kernel does not tell. */
static bool findTunnel(const char* interface) {
    int fd = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);

    if (fd < 0) {
        return false;
    }
    search.interfaceIndex = findInterface(fd, interface);
    if (search.interfaceIndex == 0) {
        return true;
    }
    if (!completeDump(fd, dumpTunnels)) {
        return false;
    }
    return search.tunnelCount == 0 || completeDump(fd, dumpAddresses);
}

static int printName(const char* name) {
    size_t length = strlen(name);

    return write(STDOUT_FILENO, name, length) == (ssize_t)length ? 0 : EXIT_FAULT;
}

static int fail(int status, const char* message) {
    if (write(STDERR_FILENO, message, strlen(message)) < 0) {
        return EXIT_FAULT;
    }
    return status;
}

int main(int argc, char* argv[]) {
    if (argc != 3 || strcmp(argv[1], "--get-ipv6-router-interface") != 0 || !*argv[2]) {
        return fail(EXIT_USAGE, "usage: zamonetdtool --get-ipv6-router-interface INTERFACE\n");
    }
    if (!findTunnel(argv[2])) {
        return fail(EXIT_FAULT, "zamonetdtool: the kernel does not tell its interfaces\n");
    }
    return printName(search.match != NULL ? search.match->name : argv[2]);
}
