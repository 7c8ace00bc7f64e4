// Running command lines, and what happens to a reload from outside while it is under way.

#include <gtest/gtest.h>

#include <boost/algorithm/string/replace.hpp>
#include <csignal>
#include <functional>
#include <future>
#include <regex>
#include <set>
#include <stdexcept>

#include "tests/support/fakePlatform.h"
#include "tests/support/session.h"
#include "zamofirewall/controller.h"

namespace {

using FW::ZAMOFW;
using test::platform;
using Lines = std::vector<std::string>;

class ApplyCycle : public testing::Test {
  protected:
    ApplyCycle() { reset(); }

    // An enabled firewall with one rule and loaded modules, and nothing in the kernel yet.
    void reset() {
        session_.run(
            "anew eth0; settings {\"status\": true, \"profile\": \"home\"};"
            " profile 1 home eth0=deny, eth0 allow ports 22;"
            " file /tmp/iptables_serv_mod_list firewall=\"yes\"");
        closedChains_.clear();
        filledChains_.clear();
        platform().onEvent = [this](const std::string& event) { runInKernel(event); };
    }

    // What the command would make of the kernel's filter.
    void runInKernel(const std::string& command) {
        static const std::regex form("(\\S+)(?: -t \\S+)? (-A|-D|-F|--policy) (\\S+) ?(\\S*).*");
        std::smatch part;
        if (!std::regex_match(command, part, form)) {
            return;
        }
        const std::string chain = part[1].str() + " " + part[3].str();
        std::set<std::string>& chains = part[2] == "--policy" ? closedChains_ : filledChains_;
        if (part[2] == "-A" || part[4] == "DROP") {
            chains.insert(chain);
        } else {
            chains.erase(chain);
        }
    }

    test::Session session_;
    std::set<std::string> closedChains_;
    std::set<std::string> filledChains_;
};

std::string words(std::size_t count) {
    return boost::replace_all_copy(std::string(count, '.'), ".", "a ");
}

TEST_F(ApplyCycle, TakesLinesUpToTheirLimits) {
    const std::string tooMany = "false ! zamoFW: #Arguments exceeds limit";
    const std::string tooLong = "false ! zamoFW: cmd is empty or arguments exceeding limit";
    const std::string ran = "true > ";
    const std::pair<std::string, std::string> rows[] = {
        {" /bin/x   -F  y", ran + "/bin/x -F y"},
        {"   ", tooLong},
        // At most 255 words. The limit is checked at the empty word between two blanks too.
        {words(255), ran + words(254) + "a"},
        {words(256), tooMany},
        {words(255) + "  ", tooMany},
        // At most 1,024 bytes with the NUL of each word, of which none begins after the 1,022nd.
        {std::string(1023, 'w'), ran + std::string(1023, 'w')},
        {std::string(1024, 'w'), tooLong},
        {std::string(1021, 'w') + " x", ran + std::string(1021, 'w') + " x"},
        {std::string(1021, 'w') + " xx", tooLong},
        {std::string(1022, 'w') + " x", tooMany},
        {std::string(1022, 'w') + "  ", tooMany},
    };
    for (const auto& [line, outcome] : rows) {
        const std::string result = ZAMOFW().cmdExec(line) ? "true " : "false ";
        EXPECT_EQ(result + session_.run("fail"), outcome) << line;
    }
}

TEST_F(ApplyCycle, GoesOnWhenAChainCannotBeFlushed) {
    EXPECT_EQ(session_.run("fail iptables -F; fwReload false"),
              "true > lock > close > flush > 2 questions > 20 rules > open > unlock"
              " ! failed \"/sbin/iptables -F INPUT_FIREWALL\""
              " ! failed \"/sbin/iptables -F FORWARD_FIREWALL\"");
}

std::map<int, std::size_t> eventsAtDelivery;

void noteDelivery(int signal) { eventsAtDelivery[signal] = platform().events.size(); }

TEST_F(ApplyCycle, HoldsSignalsBackUntilThePoliciesAreOpen) {
    const int deferred[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};
    for (const bool throws : {false, true}) {
        reset();
        // The handler must not allocate.
        eventsAtDelivery = {{SIGHUP, 0}, {SIGINT, 0}, {SIGQUIT, 0}, {SIGTERM, 0}};
        for (const int signal : deferred) {
            (void)std::signal(signal, noteDelivery);
        }
        platform().onEvent = [&](const std::string& event) {
            runInKernel(event);
            for (const int signal : deferred) {
                (void)(closedChains_.empty() ? 0 : std::raise(signal));
            }
            if (throws && event.find("--dport 22") != std::string::npos) {
                throw std::runtime_error("in the middle");
            }
        };
        if (throws) {
            EXPECT_THROW(ZAMOFW().fwReload(true), std::runtime_error);
        } else {
            EXPECT_TRUE(ZAMOFW().fwReload(true));
        }
        for (const int signal : deferred) {
            (void)std::signal(signal, SIG_DFL);
            ASSERT_GT(eventsAtDelivery[signal], 0U) << signal << throws;
            EXPECT_EQ(platform().events[eventsAtDelivery[signal] - 1],
                      "/sbin/ip6tables -D FIREWALL_RELOADING -m state --state ESTABLISHED,RELATED "
                      "-j ACCEPT");
        }
    }
}

// An operation in a thread of its own, which pauses before one of its events. Only one operation
// runs at a time.
class Paused {
  public:
    Paused(const std::function<bool()>& operation, std::size_t pauseBefore) : left_(pauseBefore) {
        succeeded_ = std::async(std::launch::async, [this, operation] {
            current = this;
            const bool succeeded = operation();
            if (!isPaused_) {
                paused_.set_value();
            }
            return succeeded;
        });
        paused_.get_future().wait();
    }
    bool finish() {
        resume_.set_value();
        return succeeded_.get();
    }
    static void atEvent() {
        if (current != nullptr && current->left_-- == 0) {
            current->isPaused_ = true;
            current->paused_.set_value();
            current->resume_.get_future().wait();
        }
    }

  private:
    static thread_local Paused* current;
    std::size_t left_;
    bool isPaused_ = false;
    std::promise<void> paused_;
    std::promise<void> resume_;
    std::future<bool> succeeded_;
};
thread_local Paused* Paused::current = nullptr;

// The reload runs up to one of its events, a disable beside it up to one of its own; then they go
// on, one after the other. This includes either of them running whole inside the other.
TEST_F(ApplyCycle, EndsWithEmptyChainsWhereverADisableMeetsAReload) {
    const std::function<bool()> reload = [] { return ZAMOFW().fwReload(true); };
    const std::function<bool()> disable = [] { return ZAMOFW().fwDisable(); };
    EXPECT_TRUE(reload());
    const std::size_t reloadEvents = platform().events.size();
    EXPECT_TRUE(disable());
    const std::size_t disableEvents = platform().events.size() - reloadEvents;
    EXPECT_GE(disableEvents, 8U) << "hooks, flushes and modules";

    for (std::size_t i = 0; i <= reloadEvents; ++i) {
        for (std::size_t j = 0; j <= disableEvents; ++j) {
            for (const bool reloadFirst : {true, false}) {
                SCOPED_TRACE(std::to_string(i) + " and " + std::to_string(j) +
                             (reloadFirst ? ", reload first" : ", disable first"));
                reset();
                platform().onEvent = [this](const std::string& event) {
                    Paused::atEvent();
                    runInKernel(event);
                };
                Paused first(reloadFirst ? reload : disable, reloadFirst ? i : j);
                Paused second(reloadFirst ? disable : reload, reloadFirst ? j : i);
                EXPECT_TRUE(first.finish());
                EXPECT_TRUE(second.finish());

                platform().events.clear();
                EXPECT_EQ(session_.run("fwStatus"), "true false");
                EXPECT_EQ(closedChains_, std::set<std::string>());
                ASSERT_EQ(filledChains_, std::set<std::string>());
            }
        }
    }
}

}  // namespace
