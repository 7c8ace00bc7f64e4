// Listing 20 profiles of 1,000 rules, against parsing their files as often as a store without an
// index would: all files for the names, then for each name all files to see that it exists, all
// again to find its path, and its own file.

#include <benchmark/benchmark.h>
#include <json/reader.h>

#include <fstream>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "zamofirewall/zamofirewall.h"

namespace {

constexpr int kProfiles = 20;
constexpr int kParses = kProfiles + kProfiles * (kProfiles + kProfiles + 1);

void list(benchmark::State& state) {
    for (auto _ : state) {
        std::map<std::string, FW::FWPROFILE> profiles;
        bench::require(FW::ZAMOFW_JSON_DB().profileEnum(profiles) && profiles.size() == kProfiles,
                       "listing");
    }
}
BENCHMARK(list)->UseRealTime()->Iterations(1)->Repetitions(9);

// One file parsed a few times stands for 840 parses, which would take ten seconds.
void parse(benchmark::State& state) {
    for (auto _ : state) {
        std::ifstream file("/usr/zamo/etc/firewall.d/7.json");
        Json::Value document;
        bench::require(Json::Reader().parse(file, document), "parsing");
    }
}
BENCHMARK(parse)->UseRealTime()->Iterations(20)->Repetitions(9);

}  // namespace

int main() {
    std::vector<FW::FWPROFILE> profiles(kProfiles, bench::profileWith(1000));
    for (FW::FWPROFILE& profile : profiles) {
        profile.name += std::to_string(&profile - profiles.data());
    }
    bench::store(profiles);
    auto times = bench::runBenchmarks();
    for (double& time : times["parse"]) {
        time *= kParses;
    }
    bench::printRow("listing 20 profiles of 1,000 rules",
                    times["list"],
                    std::to_string(kParses) + " parses of a file",
                    times["parse"],
                    1);
}
