#include <arpa/inet.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_tun.h>
#include <sys/ioctl.h>
#include <zamo/netsdk.h>

#include <cstring>

#include "tests/platform/host.h"

namespace {

std::string interfaces(int capacity, int kind = VLIB_NET_INTERFACE_CONFIGURED) {
    VLIBNetInterface records[8];
    memset(records, 'x', sizeof records);
    const int count = VLIBNetGetInterfaceInfo(records, capacity, kind);
    std::string names = count < 0 ? "error" : "";
    for (int i = 0; i < count; ++i) {
        names += std::string(records[i].name) + ' ';
    }
    return names;
}

std::string routerInterface(const std::string& interface) {
    shell(NETTOOL " --get-ipv6-router-interface " + interface + " >/tmp/answer");
    return readFile("/tmp/answer");
}

// A TAP device of its link type looks like a 6in4 tunnel, also on a kernel without the driver.
void addTunnel(const std::string& name, const std::string& local) {
    const int fd = open("/dev/net/tun", O_RDWR | O_CLOEXEC);
    ifreq request = {};
    name.copy(request.ifr_name, sizeof request.ifr_name - 1);
    request.ifr_flags = IFF_TAP | IFF_NO_PI;
    ASSERT_EQ(ioctl(fd, TUNSETIFF, &request), 0) << strerror(errno);
    ASSERT_EQ(ioctl(fd, TUNSETLINK, ARPHRD_SIT) + ioctl(fd, TUNSETPERSIST, 1), 0);
    request.ifr_hwaddr.sa_family = ARPHRD_SIT;
    ASSERT_EQ(inet_pton(AF_INET, local.c_str(), request.ifr_hwaddr.sa_data), 1);
    ASSERT_EQ(ioctl(fd, SIOCSIFHWADDR, &request), 0) << strerror(errno);
    close(fd);
}

class Network : public testing::Test {
  protected:
    // The order of creation is not that of the names.
    void SetUp() override {
        shell(
            "for i in zz1 down1 bb1 bare1; do ip link add $i type veth peer name peer-$i; done;"
            "for i in zz1 bb1 bare1; do ip link set $i addrgenmode none up; done;"
            "ip addr add 10.9.0.1/24 dev zz1; ip addr add 10.9.1.1/24 dev zz1 label zz1:5;"
            "ip addr add 10.9.2.1/24 dev down1; ip addr add fe80::9/64 dev bb1 nodad");
    }
    void TearDown() override { shell("for i in zz1 down1 bb1 bare1; do ip link del $i; done"); }
};

TEST_F(Network, ListsConfiguredInterfacesOnceInTheKernelsOrder) {
    EXPECT_EQ(interfaces(8), "zz1 bb1 ");
    EXPECT_EQ(interfaces(1), "zz1 ");
    shell("ip addr del 10.9.0.1/24 dev zz1; ip link set down1 up");
    EXPECT_EQ(interfaces(8), "zz1 down1 bb1 ") << "a labelled address is enough";
    EXPECT_EQ(interfaces(-1), "error");
    EXPECT_EQ(interfaces(1, 7), "error");
    EXPECT_EQ(VLIBCErrGet(), ZAMO_ERR_BAD_PARAMETERS);
}

TEST_F(Network, NamesThePppoeInterfaceWhenItExists) {
    const Directory place("/run/zamo");
    const char* const rows[][2] = {{"bb1", "bb1"}, {"nosuch", ""}, {"zz1:5", ""}};
    char name[256] = "untouched";
    EXPECT_EQ(ZAMOPPPoeIntfGet(name, sizeof name), 0);
    EXPECT_STREQ(name, "") << "no file";
    for (const auto& [text, expected] : rows) {
        writeFile(place / "pppoe.conf", std::string("interface=") + text);
        EXPECT_EQ(ZAMOPPPoeIntfGet(name, sizeof name), 0) << text;
        EXPECT_STREQ(name, expected) << text;
        EXPECT_EQ(ZAMOPPPoeIntfGet(name, 3) < 0, *expected != '\0') << text << "no room";
    }
}

TEST_F(Network, ToolFindsTheTunnelThatIsUpOnAnAddress) {
    if (access("/dev/net/tun", R_OK | W_OK) != 0) {
        GTEST_SKIP() << "there are no TAP devices";
    }
    addTunnel("tun-b", "10.9.1.1");
    addTunnel("tun-a", "10.9.0.1");
    addTunnel("tun-other", "10.9.7.7");
    // Both are down at first; in the end, the older one of two is found.
    const char* const rows[][2] = {{"tun-other", "zz1"}, {"tun-a", "tun-a"}, {"tun-b", "tun-b"}};
    for (const auto& [name, router] : rows) {
        shell("ip link set up dev " + std::string(name));
        EXPECT_EQ(routerInterface("zz1"), router) << name;
    }
    for (const char* name : {"bb1", "lo", "nosuch", "a-name-of-more-than-fifteen-letters"}) {
        EXPECT_EQ(routerInterface(name), name);
    }
    for (const char* wrong : {"", "--get-ipv6-router-interface", "--x lo"}) {
        shell(NETTOOL " " + std::string(wrong) + " 2>/tmp/message; [ $? = 2 -a -s /tmp/message ]");
    }
    shell("for i in tun-a tun-b tun-other; do ip link del $i; done");
}

}  // namespace
