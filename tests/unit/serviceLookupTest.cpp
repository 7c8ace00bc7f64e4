#include <dlfcn.h>
#include <gtest/gtest.h>
#include <zamo/serviceconf.h>

#include <algorithm>

#include "tests/support/store.h"
#include "zamofirewall/controller.h"

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

// Copying and parsing all ports of a service for each of them made the query's time quadratic.
TEST(ServiceQuery, LooksEachServiceUpOnceForAllPortsAndRules) {
    test::clearFiles();
    Json::Value service = test::json("{'destination': {'protocol': 'tcp'}}");
    for (int port = 1; port <= 50; ++port) {
        service["destination"]["ports"].append(std::to_string(2 * port));
    }
    test::writeFile("/usr/zamo/etc.defaults/services.d/many.json", service.toStyledString());
    test::writeServices();
    FW::FWPROFILE profile;
    profile.name = "home";
    profile.rules["eth0"] = {test::serviceRule(FW::FW_POLICY_DENY, {"dns"}),
                             test::serviceRule(FW::FW_POLICY_ALLOW, {"dns", "web"}),
                             test::serviceRule(FW::FW_POLICY_DENY, {"many"}),
                             test::serviceRule(FW::FW_POLICY_ALLOW, {"many"})};
    profile.rules["eth1"] = profile.rules["eth0"];
    profile.adapterPolicyMap = {{"eth0", FW::FW_POLICY_ALLOW}, {"eth1", FW::FW_POLICY_ALLOW}};
    test::writeProfile("1.json", profile);
    test::writeSettings(true, "home");

    lookups.clear();
    std::map<std::string, FW::FW_POLICY> answers;
    ASSERT_TRUE(FW::ZAMOFW().fwServIsBlocked("many", "", answers));
    EXPECT_EQ(answers, (decltype(answers){{"eth0", FW::FW_POLICY_DENY},
                                          {"eth1", FW::FW_POLICY_DENY},
                                          {"global", FW::FW_POLICY_NONE}}));
    // One for the ports that are asked about.
    EXPECT_EQ(std::count(lookups.begin(), lookups.end(), "many"), 2);
    EXPECT_EQ(std::count(lookups.begin(), lookups.end(), "web"), 1);
}

}  // namespace
