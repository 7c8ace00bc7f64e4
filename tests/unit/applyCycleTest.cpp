// What happens to a reload from outside while it is under way, and the overloads of the
// translation.

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <future>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "tests/support/fakePlatform.h"
#include "tests/support/store.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/controller.h"

namespace {

using FW::ZAMOFW;
using test::platform;
using Lines = std::vector<std::string>;

// What the commands would make of the kernel's filter.
struct Kernel {
    std::map<std::string, int> rules;  // "/sbin/iptables INPUT_FIREWALL" -> number
    std::map<std::string, std::string> policies;

    void run(const std::string& command) {
        std::istringstream words(command);
        std::string program;
        std::string verb;
        std::string chain;
        words >> program >> verb;
        if (verb == "-t") {
            words >> chain >> verb;
        }
        words >> chain;
        if (verb == "--policy") {
            words >> policies[program + " " + chain];
        } else if (verb == "-F") {
            rules[program + " " + chain] = 0;
        } else if (verb == "-A" || verb == "-D") {
            rules[program + " " + chain] += verb == "-A" ? 1 : -1;
        }
    }
    bool isClosed() const {
        return std::any_of(policies.begin(), policies.end(),
                           [](const auto& policy) { return policy.second == "DROP"; });
    }
    bool hasRules() const {
        return std::any_of(rules.begin(), rules.end(),
                           [](const auto& chain) { return chain.second != 0; });
    }
};

class ApplyCycle : public testing::Test {
  protected:
    ApplyCycle() { reset(); }

    // An enabled firewall with one rule, and nothing in the kernel yet.
    void reset() {
        test::clearFiles();
        test::clearPlatform();
        test::writeModuleList();
        test::writeSettings(true, "home");
        FW::FWPROFILE profile;
        profile.name = "home";
        profile.rules["eth0"] = {test::portRule(FW::FW_POLICY_ALLOW, {"22"})};
        profile.adapterPolicyMap["eth0"] = FW::FW_POLICY_DENY;
        test::writeProfile("1.json", profile);
        kernel_ = Kernel();
        platform().onEvent = [this](const std::string& event) { kernel_.run(event); };
    }

    Kernel kernel_;
    test::SystemLog log_;
};

constexpr int kDeferred[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};
volatile std::sig_atomic_t eventsAtDelivery = 0;

void noteDelivery(int) {
    eventsAtDelivery = static_cast<std::sig_atomic_t>(platform().events.size());
}

bool isBlocked(int signal) {
    sigset_t mask = {};
    return pthread_sigmask(SIG_BLOCK, nullptr, &mask) == 0 && sigismember(&mask, signal) == 1;
}

TEST_F(ApplyCycle, HoldsSignalsBackUntilThePoliciesAreOpen) {
    for (const int signal : kDeferred) {
        for (const bool throws : {false, true}) {
            SCOPED_TRACE(std::to_string(signal) + (throws ? " with an exception" : ""));
            reset();
            eventsAtDelivery = 0;
            auto* const previous = std::signal(signal, noteDelivery);
            platform().onEvent = [&](const std::string& event) {
                kernel_.run(event);
                if (kernel_.isClosed()) {
                    (void)std::raise(signal);
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
            (void)std::signal(signal, previous);

            ASSERT_GT(eventsAtDelivery, 0);
            EXPECT_EQ(platform().events[static_cast<std::size_t>(eventsAtDelivery) - 1],
                      "/sbin/ip6tables -D FIREWALL_RELOADING -m state --state ESTABLISHED,RELATED "
                      "-j ACCEPT");
            for (const int each : kDeferred) {
                EXPECT_FALSE(isBlocked(each)) << each;
            }
        }
    }
}

// An operation in a thread of its own, which pauses before one of its events. Only one operation
// runs at a time.
class Paused {
  public:
    Paused(std::function<bool()> operation, std::size_t pauseBefore) : left_(pauseBefore) {
        thread_ = std::thread([this, operation = std::move(operation)] {
            current = this;
            succeeded_ = operation();
            if (!isPaused_) {
                paused_.set_value();
            }
        });
        paused_.get_future().wait();
    }
    bool finish() {
        resume_.set_value();
        thread_.join();
        return succeeded_;
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
    bool succeeded_ = false;
    std::promise<void> paused_;
    std::promise<void> resume_;
    std::thread thread_;
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
                test::writeFile("/tmp/iptables_serv_mod_list", "firewall=\"yes\"\n");
                platform().onEvent = [this](const std::string& event) {
                    Paused::atEvent();
                    kernel_.run(event);
                };
                Paused first(reloadFirst ? reload : disable, reloadFirst ? i : j);
                Paused second(reloadFirst ? disable : reload, reloadFirst ? j : i);
                EXPECT_TRUE(first.finish());
                EXPECT_TRUE(second.finish());

                bool enabled = true;
                EXPECT_TRUE(ZAMOFW().fwStatus(enabled));
                EXPECT_FALSE(enabled);
                EXPECT_FALSE(kernel_.isClosed());
                ASSERT_FALSE(kernel_.hasRules());
            }
        }
    }
    EXPECT_EQ(log_.take(), Lines{});
}

TEST_F(ApplyCycle, TakesEveryKindOfTextAsAClientAndOnlyABoolAsTheFlag) {
    const auto listFor = [](auto argument) {
        Json::Value list;
        EXPECT_TRUE(ZAMOFW().fwIptablesRulesEnum("home", list, argument));
        return list;
    };
    (void)setenv("CLIENT", "10.0.0.9", 1);
    const Json::Value forClient = listFor(std::string("10.0.0.9"));
    const Json::Value forNobody = listFor(std::string());
    EXPECT_NE(forClient, forNobody);
    EXPECT_EQ(listFor(std::getenv("CLIENT")), forClient);
    EXPECT_EQ(listFor("10.0.0.9"), forClient);
    EXPECT_EQ(listFor(std::getenv("NO_SUCH_VARIABLE")), forNobody);
    EXPECT_EQ(listFor(true), forNobody);
    EXPECT_NE(listFor(false), forNobody);

    // Not through a parameter, which would turn the array into a pointer.
    Json::Value list;
    EXPECT_TRUE(ZAMOFW().fwIptablesRulesEnum("home", list, "10.0.0.9"));
    EXPECT_EQ(list, forClient);
}

}  // namespace
