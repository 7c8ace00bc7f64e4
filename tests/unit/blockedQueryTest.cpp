// What the blocked queries make of rules; sessions/blockedQuery.txt has their other cases.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <zamo/serviceconf.h>

#include <algorithm>
#include <array>
#include <boost/algorithm/string.hpp>

#include "tests/support/session.h"
#include "tests/support/store.h"

namespace {

std::vector<std::string> lookups;

}  // namespace

// In front of the catalogue's own function.
extern "C" __attribute__((visibility("default"))) const ZAMOFwService* ZAMOFWServiceFind(
    const ZAMOFwServiceList* catalogue, const char* name) {
    static auto* const real =
        reinterpret_cast<decltype(&ZAMOFWServiceFind)>(dlsym(RTLD_NEXT, "ZAMOFWServiceFind"));
    lookups.emplace_back(name);
    return real(catalogue, name);
}

namespace {

class BlockedQuery : public testing::Test {
  protected:
    BlockedQuery() { test::writeSettings(true, "home"); }

    std::string ask(const std::string& profile, const std::string& question) {
        return session_.run("profile 1 home " + profile + "; " + question);
    }

    // The answer for eth0 and the port 22.
    std::string answer(const std::string& profile, const std::string& port = "22") {
        const std::string outcome = ask(profile, "fwPortIsBlocked eth0 " + port);
        return boost::erase_first_copy(boost::erase_last_copy(outcome, " global=none"),
                                       "true eth0=");
    }

    test::Session session_;
};

// A cell is what a rule leads to alone, before a rule with the policy 7, and before one that
// allows: Allow, Deny, None, Partial or 7. Where the walk stops, the three are equal; the rules
// that follow tell the working values, which no answer shows, from each other.
TEST_F(BlockedQuery, WalksByTheTransitionTables) {
    const struct {
        std::string addresses;
        std::string defaultPolicies;
        std::string cells;  // of rules with the policies ALLOW, DENY, NONE and 7
    } rows[] = {{"", "012", "aaa ddd nnn 777 "},   {"", "4", "aaa ppp aaa aaa "},
                {"", "5", "ppp ddd aaa aaa "},     {"", "36", "aaa aaa aaa aaa "},
                {"some", "0", "a7a pap a7a a7a "}, {"some", "1", "paa a7a a7a a7a "},
                {"some", "2", "paa pap a7a a7a "}, {"some", "4", "a7a ppp aaa aaa "},
                {"some", "5", "ppp a7a aaa aaa "}, {"some", "36", "aaa aaa aaa aaa "}};
    for (const auto& row : rows) {
        for (const char policy : row.defaultPolicies) {
            std::string cells;
            for (const char* rulePolicy : {"allow", "deny", "none", "7"}) {
                const std::string rule = std::string("eth0=") + policy + ", eth0 " + rulePolicy +
                                         " any " + row.addresses;
                for (const char* next : {"", ", eth0 7 any", ", eth0 allow any"}) {
                    cells += answer(rule + next)[0];
                }
                cells += " ";
            }
            EXPECT_EQ(cells, row.cells) << "from " << policy << " " << row.addresses;
        }
    }
}

// A rule that denies speaks of a query of which it covers a bit, another one only of a query of
// which it covers all.
TEST_F(BlockedQuery, ComparesPorts) {
    // A rule, queries, and for each the policies of the rules that speak of it.
    const std::array<std::string, 3> rows[] = {
        {"ports 21,22", "22", "both"},
        {"ports -", "0", "none"},
        {"ports 10-20", "15, 10-20, 9, 21", "both both none none"},
        {"ports 10-20", "15-25, 5-10, 20-25, 9-21", "deny deny deny deny"},
        {"ports 1-5,6-9", "4-7", "deny"},
        {"ports 22", "22 udp", "none"},
        {"ports 22 udp", "22 both", "deny"},
        {"ports 22 both", "22 udp, 22 both", "both both"},
        {"ports 22 source", "22 source, 22", "both none"},
        {"ports 22 portDirect=2", "22 source", "none"},
        {"ports 50", "80-20", "allow"},
        {"ports ssh", "''", "both"},
        {"ports 22x", "~22", "both"},
        {"ports -5", "3", "both"},
        {"ports 1-2-9", "3", "none"},
        {"services off,ssh udp source", "22", "both"},
        {"services dns,web", "443 both, 443", "deny both"},
        {"services dhcp", "68 udp source, 68 udp, 67 udp portDirect=2", "both none none"},
        {"reserved sip", "5060 both, 5060 udp", "both both"},
        {"any", "9 udp source", "both"},
        {"ports 22 portGroup=-1", "22", "none"},
    };
    for (const auto& [rule, allQueries, expected] : rows) {
        std::vector<std::string> queries;
        boost::iter_split(queries, allQueries, boost::first_finder(", "));
        std::string actual;
        for (const std::string& query : queries) {
            const bool allows = answer("eth0=none, eth0 allow " + rule, query) == "allow";
            const bool denies = answer("eth0=none, eth0 deny " + rule, query) == "deny";
            actual += allows && denies ? " both" : allows ? " allow" : denies ? " deny" : " none";
        }
        EXPECT_EQ(actual, " " + expected) << rule;
    }
}

TEST_F(BlockedQuery, AsksTheRulesForEveryAdapterFirstAndForEveryPortOfAService) {
    const std::array<std::string, 3> rows[] = {
        {", global allow any, eth2 deny any", "''", "eth0=allow eth1=allow global=allow"},
        {", global deny any, eth2 allow any", "eth0", "eth0=deny global=deny"},
        {", global allow any some, global deny any some", "''",
         "eth0=partial eth1=partial global=partial"},
        {", global deny any some, global allow any some", "eth1", "eth1=partial global=partial"},
        {", global allow any some, global allow any some", "eth0", "eth0=allow global=allow"},
        {", global none any some", "eth0", "eth0=allow global=allow"},
        {", global none any", "eth0", "eth0=deny global=none"},
        {", global allow any some", "''", "eth0=deny eth1=allow global=none"},
        {", global deny any some", "eth0", "eth0=deny global=partial"},
        {", global deny any some", "''", "eth0=deny eth1=allow global=allow"},
        {", global deny any some", "global", "global=allow"},
        {", global allow any some, global deny any", "eth0", "eth0=deny global=partial"},
        {", global allow any some, global deny any", "''", "eth0=deny eth1=allow global=deny"},
        {", global deny any some, global allow any", "eth1", "eth1=allow global=partial"},
        {", eth2 deny any", "''", "eth0=deny eth1=allow eth2=deny global=none"},
        {"", "eth2", "eth2=allow global=none"},
        {", global deny any some, eth2 allow any", "eth3", "eth3=allow global=partial"},
        // The most severe answer of the ports 80 and 443 is a service's.
        {", eth1 deny ports 80", "eth1 web", "eth1=deny global=none"},
        {", eth1 deny ports 443 some", "eth1 web", "eth1=partial global=none"},
        {", eth1 deny ports 80 some, eth1 deny ports 443", "eth1 web", "eth1=deny global=none"},
        {", eth1 deny ports 80, eth1 deny ports 443 some", "eth1 web", "eth1=deny global=none"},
        {", eth0 none ports 80, eth0 allow ports 443", "eth0 web", "eth0=allow global=none"},
        {", eth0 allow ports 80, eth0 none ports 443", "eth0 web", "eth0=allow global=none"},
        {" eth2=none, eth2 7 ports 80", "eth2 web", "eth2=7 global=none"},
        {" eth2=none, eth2 7 ports 443", "eth2 web", "eth2=none global=none"},
    };
    for (const auto& [rules, query, answers] : rows) {
        const bool isService = query.find(" web") != std::string::npos;
        EXPECT_EQ(ask("eth0=deny eth1=allow global=none" + rules,
                      isService ? "fwServIsBlocked " + query : "fwPortIsBlocked " + query + " 22"),
                  "true " + answers)
            << rules << query;
    }
}

// Copying and parsing all ports of a service for each of them made the query's time quadratic.
TEST_F(BlockedQuery, LooksEachServiceUpOnceForAllPortsAndRules) {
    const std::string rules = " deny services ssh, allow services ssh,dns, allow services web";
    lookups.clear();
    EXPECT_EQ(ask("eth0=deny eth1=deny, eth0" + rules + ", eth1" + rules, "fwServIsBlocked '' web"),
              "true eth0=allow eth1=allow global=none");
    EXPECT_EQ(std::count(lookups.begin(), lookups.end(), "dns"), 1);
    // One for the ports that are asked about.
    EXPECT_EQ(std::count(lookups.begin(), lookups.end(), "web"), 2);
}

}  // namespace
