// Edits of every profile, and the import of a configuration: how the processor time grows with the
// number of files. Twice the files may cost little more than twice the time.

#include <array>
#include <functional>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "zamofirewall/zamofirewall.h"

namespace {

constexpr std::array<std::size_t, 3> kFileCounts = {50, 100, 200};
constexpr int kRounds = 7;
constexpr int kRulesPerProfile = 5;
constexpr double kLimit = 2.3;

struct Edit {
    const char* name;
    std::function<bool(const Json::Value& configuration)> run;
};

const std::array<Edit, 5> kEdits = {{
    {"reserving a service",
     [](const Json::Value&) {
         return FW::ZAMOFW_PROFILE().profileAddServToReserve(
             "global", "ssh", FW::FW_POLICY_ALLOW, /*reload=*/false);
     }},
    {"removing a service",
     [](const Json::Value&) { return FW::ZAMOFW_PROFILE().profileRemoveServ("ssh"); }},
    {"changing an adapter",
     [](const Json::Value&) {
         return FW::ZAMOFW_PROFILE().profileChangeAdapter("eth0", "eth1", /*reload=*/false);
     }},
    {"repairing the services", [](const Json::Value&) { return FW::ZAMOFW().fwUpdate(); }},
    {"importing",
     [](const Json::Value& configuration) {
         return FW::ZAMOFW_JSON_DB().importConfig(configuration);
     }},
}};

void storeProfiles(std::size_t count) {
    std::vector<FW::FWPROFILE> profiles(count, bench::profileWith(kRulesPerProfile));
    for (FW::FWPROFILE& profile : profiles) {
        profile.name += std::to_string(&profile - profiles.data());
    }
    bench::store(profiles);
}

}  // namespace

int main() {
    std::array<std::array<bench::Samples, kFileCounts.size()>, kEdits.size()> times;
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t size = 0; size < kFileCounts.size(); ++size) {
            storeProfiles(kFileCounts[size]);
            Json::Value configuration;
            bench::require(FW::ZAMOFW_JSON_DB().exportConfig(configuration), "exporting");
            for (std::size_t edit = 0; edit < kEdits.size(); ++edit) {
                const auto run = [&] {
                    bench::require(kEdits[edit].run(configuration), kEdits[edit].name);
                };
                times[edit][size].push_back(bench::costOf(run).processor);
            }
        }
    }
    for (std::size_t edit = 0; edit < kEdits.size(); ++edit) {
        for (std::size_t size = 1; size < kFileCounts.size(); ++size) {
            bench::printRow(std::string(kEdits[edit].name) + ", " +
                                std::to_string(kFileCounts[size]) + " files",
                            times[edit][size],
                            std::to_string(kFileCounts[size - 1]) + " files",
                            times[edit][size - 1],
                            kLimit);
        }
    }
}
