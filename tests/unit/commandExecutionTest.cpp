// Running command lines: the limits of one, and whatever fails in the list of a reload.

#include <gtest/gtest.h>

#include <boost/algorithm/string/replace.hpp>

#include "tests/support/fakePlatform.h"
#include "tests/support/lineText.h"
#include "tests/support/session.h"
#include "tests/support/store.h"
#include "zamofirewall/controller.h"

namespace {

using Lines = std::vector<std::string>;

std::string times(int count, const std::string& text) {
    std::string repeated;
    for (int i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

TEST(CommandExecution, TakesLinesUpToItsLimits) {
    const std::string tooMany = "zamoFW: #Arguments exceeds limit";
    const std::string tooLong = "zamoFW: cmd is empty or arguments exceeding limit";
    const struct {
        std::string line;
        Lines events;
        Lines log;
    } rows[] = {
        {" /bin/x   -F  y", {"/bin/x -F y"}, {}},
        {times(3, "/bin/x "), {"/bin/x /bin/x /bin/x"}, {}},
        {"   ", {}, {tooLong}},
        // At most 255 words. The limit is checked at the empty word between two blanks too.
        {times(255, "a "), {times(254, "a ") + "a"}, {}},
        {times(256, "a "), {}, {tooMany}},
        {times(255, "a ") + "  ", {}, {tooMany}},
        // At most 1,024 bytes with the NUL of each word, of which none begins after the 1,022nd.
        {std::string(1023, 'w'), {std::string(1023, 'w')}, {}},
        {std::string(1024, 'w'), {}, {tooLong}},
        {std::string(1021, 'w') + " x", {std::string(1021, 'w') + " x"}, {}},
        {std::string(1021, 'w') + " xx", {}, {tooLong}},
        {std::string(1022, 'w') + " x", {}, {tooMany}},
        {std::string(1022, 'w') + "  ", {}, {tooMany}},
        {std::string(5000, 'w') + " x", {}, {tooMany}},
    };
    test::SystemLog log;
    for (const auto& row : rows) {
        test::clearPlatform();
        EXPECT_EQ(FW::ZAMOFW().cmdExec(row.line), row.log.empty()) << row.line;
        EXPECT_EQ(test::platform().events, row.events) << row.line;
        EXPECT_EQ(log.take(), row.log) << row.line;
    }
}

// Reloads a profile that has one line per chain and family, while the event with this number fails.
std::string reload(std::size_t failing) {
    test::clearHost();
    test::writeSettings(true, "home");
    test::writeFile("/tmp/iptables_serv_mod_list", "firewall=\"yes\"\n");
    FW::FWPROFILE profile;
    profile.name = "home";
    profile.adapterPolicyMap["eth0"] = FW::FW_POLICY_DENY;
    test::writeProfile("1.json", profile);
    test::platform().fails = [failing](const std::string&) {
        return test::platform().events.size() == failing;
    };
    test::SystemLog log;
    const std::string result = FW::ZAMOFW().fwReload(/*blEstablished=*/false) ? "true" : "false";
    return result + test::eventText(test::platform().events) + test::logText(log.take());
}

// The policies are open at the end, unless they could not be closed or opened.
TEST(CommandExecution, BringsAReloadToItsEndWhateverFails) {
    const std::string disabling = " > disable before 0 > flush > unload > disable after 0";
    const std::string goesOn = "all the others";
    const std::string command = " ! failed \"EVENT\"";
    const struct {
        std::size_t count;
        std::string result;
        std::string eventsAfter;
        std::string log;
    } outcomes[] = {
        {1, "false", "", " ! zamoFW: TIMEOUT: getting lock"},
        {6, "false", " > unlock", command + " ! zamoFW: Failed to fwExec() to set default drop."},
        {4, "true", goesOn, command},
        {1, "true", goesOn, " ! fwIptables: Failed to exec zamonetdtool with VLIBCPopen()."},
        {18, "false", disabling + " > open > unlock",
         command + " ! zamoFW: Failed to fwExec() so disable firewall"},
        {6, "false", disabling + " > unlock",
         command + " ! zamoFW: Failed to fwExec() to set default accept."},
        {1, "true", "", " ! zamoFW: Failed to unlock"},
    };
    EXPECT_EQ(reload(0), "true > lock > close > flush > tool eth0 > 18 rules > open > unlock");
    const Lines usual = test::platform().events;
    std::size_t failing = 0;
    for (const auto& outcome : outcomes) {
        for (const std::size_t last = failing + outcome.count; failing < last; ++failing) {
            const std::string& event = usual.at(failing);
            const bool all = outcome.eventsAfter == goesOn;
            const Lines before(usual.begin(), usual.begin() + static_cast<long>(failing) + 1);
            EXPECT_EQ(reload(failing + 1), outcome.result + test::eventText(all ? usual : before) +
                                               (all ? "" : outcome.eventsAfter) +
                                               boost::replace_all_copy(outcome.log, "EVENT", event))
                << event;
        }
    }
    EXPECT_EQ(failing, usual.size());
}

}  // namespace
