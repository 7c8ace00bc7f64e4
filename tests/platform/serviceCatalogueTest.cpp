#include <gtest/gtest.h>
#include <zamo/serviceconf.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/processes.h"
#include "tests/support/systemLog.h"

namespace {

using namespace test;

struct CatalogueReleaser {
    void operator()(ZAMOFwServiceList* catalogue) const { ZAMOFwServiceFree(catalogue); }
};

std::string textOf(int protocol, const VLIBCSzList* ports) {
    std::string text = std::to_string(protocol) + (ports ? ":" : "");
    for (int i = 0; i < VLIBCSzListCount(ports); ++i)
        text += std::string(" ") + VLIBCSzListGet(ports, i);
    return text;
}

class ServiceCatalogue : public testing::Test {
  protected:
    int load() {
        ZAMOFwServiceList* loaded = nullptr;
        const int count = ZAMOFwServiceEnum(&loaded);
        EXPECT_EQ(count > 0, loaded != nullptr);
        catalogue_.reset(loaded);
        return count;
    }
    // The record in one line.
    std::string find(const char* name) const {
        const ZAMOFwService* found = ZAMOFWServiceFind(catalogue_.get(), name);
        if (!found) return "missing";
        EXPECT_STREQ(name, found->name);
        return (found->valid ? "on " : "off ") + textOf(found->dstProtocol, found->dstPorts) +
               " / " + textOf(found->srcProtocol, found->srcPorts);
    }

    const Directory shipped_{"/usr/zamo/etc.defaults/services.d"};
    const Directory added_{"/usr/zamo/etc/services.d"};
    SystemLog log_;

  private:
    std::unique_ptr<ZAMOFwServiceList, CatalogueReleaser> catalogue_;
};

TEST_F(ServiceCatalogue, JoinsShippedAndAddedServices) {
    writeFile(shipped_ / "ssh.json",
              R"({"title": "x", "destination": {"protocol": "tcp", "ports": ["22"]}})");
    writeFile(shipped_ / "dhcp.json",
              R"({"destination": {"protocol": "udp", "ports": ["67", "6000-6010"]},
                  "source": {"protocol": "both", "ports": ["68"]}, "enabled": false, "extra": [1]})");
    writeFile(shipped_ / "none.json", "{}");
    writeFile(added_ / "ping.two.json", R"({"destination": {"protocol": "icmp", "ports": []}})");
    writeFile(added_ / "ssh.json", R"({"source": {"protocol": "igmp", "ports": ["1-65535"]}})");
    for (const char* name : {".hidden.json", "copy.json~", "json"}) writeFile(added_ / name, "{}");

    EXPECT_EQ(4, load());
    EXPECT_EQ("on 0 / 32: 1-65535", find("ssh"));
    EXPECT_EQ("off 2: 67 6000-6010 / 3: 68", find("dhcp"));
    EXPECT_EQ("on 0 / 0", find("none"));
    EXPECT_EQ("on 4: / 0", find("ping.two"));
    EXPECT_EQ("missing", find("ssh.json"));
    EXPECT_EQ(0U, log_.take().size());
}

TEST_F(ServiceCatalogue, LeavesOutWhatIsBrokenWithOneLogLine) {
    const std::string deep = std::string(5000, '[') + std::string(5000, ']');
    std::vector<std::string> texts = {"", "{", "[]", "{} x", deep, "{\"title\": " + deep + "}"};
    texts.push_back("{}" + std::string(1024 * 1024, ' '));
    std::istringstream members(R"("title": 5
        "enabled": "yes"
        "source": null
        "source": {"protocol": "tcp"}
        "source": {"ports": ["1"]}
        "source": {"protocol": "TCP", "ports": ["1"]}
        "source": {"protocol": 1, "ports": ["1"]}
        "source": {"protocol": "tcp", "ports": "1"})");
    for (std::string line; std::getline(members, line);) texts.push_back("{" + line + "}");
    std::istringstream ports(
        R"(1 "" "0" "022" "65536" "9999999999" "ssh" "1,2" "-1" "1-" "0-5" "6-5" "5-6-7" "5:6")");
    for (std::string port; ports >> port;) {
        texts.push_back(R"({"source": {"protocol": "tcp", "ports": [)" + port + "]}}");
    }
    writeFile(shipped_ / "good.json", "{}");
    writeFile(shipped_ / "bad.json", "{}");
    for (const std::string& text : texts) {
        writeFile(added_ / "bad.json", text);
        EXPECT_EQ(1, load()) << text.substr(0, 80);
        EXPECT_EQ("missing", find("bad")) << "the shipped file is replaced all the same";
        const auto log = log_.take();
        ASSERT_EQ(1U, log.size()) << text.substr(0, 80);
        EXPECT_TRUE(log[0].find("zamoserviceconf: " + (added_ / "bad.json is left out: ")) == 0 &&
                    log[0].find('\n') == std::string::npos)
            << log[0];
    }
    for (const char* irregular : {"mkfifo", "mkdir", "ln -s /dev/null"}) {
        shell("cd /usr/zamo/etc/services.d; rm -rf bad.json; " + std::string(irregular) +
              " bad.json");
        EXPECT_EQ(1, load()) << irregular;
        EXPECT_EQ(1U, log_.take().size()) << irregular;
    }
}

}  // namespace
