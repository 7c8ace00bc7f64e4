// The plan of a profile and its input for restore, against what is done with them, and against the
// library's list, which starts the network tool once per rule.

#include <benchmark/benchmark.h>

#include <fstream>
#include <map>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "command/plan/plan.h"
#include "zamofirewall/zamofirewall.h"

namespace {

constexpr int kSizes[] = {200, 1000, 3000};

std::map<int, FW::FWPROFILE> profiles;

std::string inputPath(int rules, int family) {
    return "/tmp/input." + std::to_string(rules) + "." + std::to_string(family);
}

void planAndSay(benchmark::State& state, int rules) {
    for (auto _ : state) {
        const zamofw::Plan plan = zamofw::planProfile(profiles[rules]);
        benchmark::DoNotOptimize(zamofw::restoreInput(plan, 4));
        benchmark::DoNotOptimize(zamofw::restoreInput(plan, 6));
    }
}

void restore(benchmark::State& state, int rules) {
    for (auto _ : state) {
        for (const auto& [program, family] :
             {std::pair("/sbin/iptables-restore", 4), std::pair("/sbin/ip6tables-restore", 6)}) {
            bench::require(
                bench::startPlainly({program, "--noflush", inputPath(rules, family)}, false),
                program);
        }
    }
}

void enumerate(benchmark::State& state) {
    for (auto _ : state) {
        Json::Value list;
        bench::require(FW::ZAMOFW().fwIptablesRulesEnum("bench", list, true), "the translation");
    }
}
BENCHMARK(enumerate)->UseRealTime()->Iterations(1)->Repetitions(3);

void add(const std::string& name, void (*work)(benchmark::State&, int), int rules) {
    benchmark::RegisterBenchmark(name.c_str(), work, rules)
        ->UseRealTime()
        ->Iterations(2)
        ->Repetitions(9);
}

void prepare(int rules) {
    profiles[rules] = bench::profileWith(rules);
    const zamofw::Plan plan = zamofw::planProfile(profiles[rules]);
    for (const int family : {4, 6}) {
        std::ofstream(inputPath(rules, family)) << zamofw::restoreInput(plan, family);
    }
    const std::string size = std::to_string(rules);
    add("plan" + size, planAndSay, rules);
    add("restore" + size, restore, rules);
}

}  // namespace

int main() {
    bench::store({bench::profileWith(1000)});
    for (const int rules : kSizes) {
        prepare(rules);
    }
    auto times = bench::runBenchmarks();
    for (const int rules : kSizes) {
        const std::string size = std::to_string(rules);
        bench::printRow("plan of " + size + " rules",
                        times["plan" + size],
                        "their restore",
                        times["restore" + size],
                        0.4);
    }
    bench::printRow(
        "plan of 1,000 rules", times["plan1000"], "the library's list", times["enumerate"], 0.05);
}
