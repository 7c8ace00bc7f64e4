#include "command/answers/ruleHits.h"

#include <gtest/gtest.h>

namespace zamofw {
namespace {

using Listing = std::map<std::string, std::vector<std::string>>;

// As the programs print it, each line with its end.
const Listing kKernel = {
    {"4 INPUT_FIREWALL",
     {"-N INPUT_FIREWALL\n", "-A INPUT_FIREWALL -i lo -c 9 900 -j ACCEPT\n",
      "-A INPUT_FIREWALL -i eth0 -p tcp -m tcp --dport 22 -c 3 180 -j LOG\n",
      "-A INPUT_FIREWALL -i eth0 -p tcp -m tcp --dport 22 -c 3 180 -j RETURN\n",
      "-A INPUT_FIREWALL -i eth0 -c 7 700 -j DROP\n"}},
    {"4 FORWARD_FIREWALL", {"-N FORWARD_FIREWALL\n"}},
    {"6 INPUT_FIREWALL", {"-A INPUT_FIREWALL -i eth0 -c 18446744073709551610 5 -j RETURN\n"}},
    {"6 FORWARD_FIREWALL", {"-A FORWARD_FIREWALL -o eth0 -c 1 60 -j RETURN\n"}},
};

Plan plan() {
    const std::string begin = "-t filter -A INPUT_FIREWALL ";
    const PlannedLine ssh = {begin + "-i eth0 -p tcp --dport 22 -j RETURN", "eth0", LineKind::kRule,
                             2, ""};
    PlannedLine log = ssh;
    log.line = begin + "-i eth0 -p tcp --dport 22 -j LOG";
    return {"home",
            {{begin + "-i lo -j ACCEPT", "global", LineKind::kBuiltIn, std::nullopt, ""},
             log,
             ssh,
             {begin + "-i eth0 -j DROP", "eth0", LineKind::kDefault, std::nullopt, ""}},
            {{"-t filter -A FORWARD_FIREWALL -o eth0 -j RETURN", "eth0", LineKind::kRule, 2, ""},
             {begin + "-i eth0 -j RETURN", "eth0", LineKind::kRule, 3, ""}}};
}

std::optional<RuleHits> hits(const Listing& kernel) {
    return hitsOf(plan(), [&kernel](int family, const std::string& chain) {
        return kernel.at(std::to_string(family) + " " + chain);
    });
}

TEST(RuleHits, AddUpTheLinesOfARuleWithoutItsLogLines) {
    const std::optional<RuleHits> counted = hits(kKernel);
    ASSERT_TRUE(counted);
    ASSERT_EQ(counted->size(), 2U);
    EXPECT_EQ(counted->at({"eth0", 2}).packets, 4U);
    EXPECT_EQ(counted->at({"eth0", 2}).bytes, 240U);
    EXPECT_EQ(counted->at({"eth0", 3}).packets, 18446744073709551610U);
}

TEST(RuleHits, AreUnknownWhenTheKernelHoldsOtherRules) {
    const std::string chain = "4 INPUT_FIREWALL";
    Listing missing = kKernel;
    missing[chain].pop_back();
    Listing extra = kKernel;
    extra["6 FORWARD_FIREWALL"].push_back("-A FORWARD_FIREWALL -c 0 0 -j DROP\n");
    Listing moved = kKernel;
    std::swap(moved[chain][2], moved[chain][3]);
    Listing elsewhere = kKernel;
    elsewhere[chain][4] = "-A INPUT_FIREWALL -i eth1 -c 7 700 -j DROP\n";
    for (const Listing& kernel : {missing, extra, moved, elsewhere}) {
        EXPECT_FALSE(hits(kernel));
    }
}

}  // namespace
}  // namespace zamofw
