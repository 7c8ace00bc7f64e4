#include <zamo/serviceconf.h>

#include <memory>

#include "tests/platform/host.h"

namespace {

std::string textOf(int protocol, const VLIBCSzList* ports) {
    std::string text = std::to_string(protocol) + (ports != nullptr ? ":" : "");
    for (int i = 0; i < VLIBCSzListCount(ports); ++i) {
        text += std::string(" ") + VLIBCSzListGet(ports, i);
    }
    return text;
}

class ServiceCatalogue : public testing::Test {
  protected:
    int load() {
        ZAMOFwServiceList* loaded = nullptr;
        const int count = ZAMOFwServiceEnum(&loaded);
        EXPECT_EQ(loaded != nullptr, count > 0);
        catalogue_.reset(loaded);
        return count;
    }
    // The record in one line.
    std::string find(const char* name) const {
        const ZAMOFwService* found = ZAMOFWServiceFind(catalogue_.get(), name);
        if (found == nullptr) {
            return "missing";
        }
        EXPECT_STREQ(found->name, name);
        return (found->valid ? "on " : "off ") + textOf(found->dstProtocol, found->dstPorts) +
               " / " + textOf(found->srcProtocol, found->srcPorts);
    }

    const Directory shipped_{"/usr/zamo/etc.defaults/services.d"};
    const Directory added_{"/usr/zamo/etc/services.d"};
    SystemLog log_;

  private:
    std::unique_ptr<ZAMOFwServiceList, void (*)(ZAMOFwServiceList*)> catalogue_{nullptr,
                                                                                ZAMOFwServiceFree};
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
    for (const char* name : {".hidden.json", "copy.json~", "json"}) {
        writeFile(added_ / name, "{}");
    }
    EXPECT_EQ(load(), 4);
    EXPECT_EQ(find("ssh"), "on 0 / 32: 1-65535");
    EXPECT_EQ(find("dhcp"), "off 2: 67 6000-6010 / 3: 68");
    EXPECT_EQ(find("none"), "on 0 / 0");
    EXPECT_EQ(find("ping.two"), "on 4: / 0");
    EXPECT_EQ(find("ssh.json"), "missing");
    EXPECT_EQ(log_.take().size(), 0U);
}

TEST_F(ServiceCatalogue, LeavesOutWhatIsBrokenWithOneLogLine) {
    const std::string deep = std::string(5000, '[') + std::string(5000, ']');
    std::vector<std::string> texts = {"",
                                      "{",
                                      "[]",
                                      "{} x",
                                      deep,
                                      "{\"title\": " + deep + "}",
                                      "{}" + std::string(1024 * 1024, ' '),
                                      R"({"title": 5})",
                                      R"({"enabled": "yes"})",
                                      R"({"source": null})"};
    for (const char* source :
         {R"("protocol": "tcp")", R"("ports": ["1"])", R"("protocol": "TCP", "ports": ["1"])",
          R"("protocol": 1, "ports": ["1"])", R"("protocol": "tcp", "ports": "1")",
          R"("protocol": "tcp", "ports": [1])"}) {
        texts.push_back(R"({"source": {)" + std::string(source) + "}}");
    }
    for (const char* port : {"", "0", "022", "65536", "9999999999", "ssh", "1,2", "-1", "1-", "0-5",
                             "6-5", "5-6-7", "5:6"}) {
        texts.push_back(R"({"source": {"protocol": "tcp", "ports": [")" + std::string(port) +
                        "\"]}}");
    }
    writeFile(shipped_ / "good.json", "{}");
    writeFile(shipped_ / "bad.json", "{}");
    const std::string line = "zamoserviceconf: " + (added_ / "bad.json is left out: ");
    for (const std::string& text : texts) {
        writeFile(added_ / "bad.json", text);
        EXPECT_EQ(load(), 1) << text.substr(0, 80);
        EXPECT_EQ(find("bad"), "missing") << "the shipped file is replaced all the same";
        const auto log = log_.take();
        ASSERT_EQ(log.size(), 1U) << text.substr(0, 80);
        EXPECT_EQ(log[0].substr(0, line.size()), line);
        EXPECT_EQ(log[0].find('\n'), std::string::npos) << log[0];
    }
    for (const char* irregular : {"mkfifo", "mkdir", "ln -s /dev/null"}) {
        shell("cd " + (added_ / "") + "; rm -rf bad.json; " + irregular + " bad.json");
        EXPECT_EQ(load(), 1) << irregular;
        EXPECT_EQ(log_.take().size(), 1U) << irregular;
    }
}

}  // namespace
