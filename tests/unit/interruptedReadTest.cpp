#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>

#include "tests/support/fakePlatform.h"
#include "tests/support/store.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/translator.h"

namespace {

// Prints a character at a time. Before each of them, and before the end, a signal interrupts the
// read, as one does whose handler was installed without SA_RESTART.
struct InterruptedText {
    std::string text;
    std::size_t read = 0;
    bool interrupt = true;
    int error = EINTR;
};

FILE* openInterrupted(InterruptedText& source) {
    cookie_io_functions_t functions = {};
    functions.read = [](void* cookie, char* buffer, std::size_t) -> ssize_t {
        auto& state = *static_cast<InterruptedText*>(cookie);
        state.interrupt = !state.interrupt;
        if (!state.interrupt) {
            errno = state.error;
            return -1;
        }
        return static_cast<ssize_t>(state.text.copy(buffer, 1, state.read++));
    };
    return fopencookie(&source, "r", functions);
}

TEST(NetworkTool, IsReadToTheEndOfTheLineAcrossSignalsAndToNoOtherError) {
    const struct {
        std::string text;
        int error;
        std::string expected;
        std::vector<std::string> log;
    } rows[] = {
        {"tun6", EINTR, "{'tun6': ['-t filter -A INPUT_FIREWALL -i tun6 -j RETURN']}", {}},
        {"a\nb", EINTR, "{'a\\n': ['-t filter -A INPUT_FIREWALL -i a\\n -j RETURN']}", {}},
        {"", EINTR, "null", {"fwIptables: Failed to getline after VLIBCPopen()."}},
        {"tun6", EIO, "null", {"fwIptables: Failed to getline after VLIBCPopen()."}},
    };
    FW::FWRULE rule = test::portRule(FW::FW_POLICY_ALLOW, {});
    rule.portGroup = FW::FW_PORT_GROUP_ALL;
    rule.ipType = FW::FW_IP_TYPE_V6;
    rule.chainList = {"INPUT_FIREWALL"};
    for (const auto& row : rows) {
        InterruptedText source = {row.text};
        source.error = row.error;
        test::clearPlatform();
        test::platform().openAnswer = [&](const std::string&) { return openInterrupted(source); };
        test::SystemLog log;
        Json::Value commands;
        FW::ZAMOFW_IPTABLES_RULES translator;
        ASSERT_TRUE(translator.jIptablesCmdInit(commands));
        translator.iptables6in4ToCmd("eth0", rule, commands);
        EXPECT_EQ(commands["v6"], test::json(row.expected)) << row.text;
        EXPECT_EQ(log.take(), row.log) << row.text;
    }
    test::clearPlatform();
}

}  // namespace
