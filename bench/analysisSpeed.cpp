// What a profile does to packets: idle rules, matrix and difference by the number of rules.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <random>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "command/analysis/difference.h"
#include "command/analysis/idleRules.h"
#include "command/analysis/matrix.h"
#include "command/answers/meaning.h"

namespace {

constexpr int kSizes[] = {1000, 2000, 4000};

using Random = std::mt19937;

int upTo(Random& random, int last) {
    return std::uniform_int_distribution<int>(0, last)(random);
}

std::string host(Random& random) {
    return "10." + std::to_string(upTo(random, 3)) + "." + std::to_string(upTo(random, 255)) + "." +
           std::to_string(upTo(random, 255));
}

void addAddresses(Random& random, FW::FWRULE& rule) {
    rule.ipType = 0;
    rule.ipDirect = upTo(random, 19) == 0 ? 0 : 1;
    switch (upTo(random, 4)) {
        case 0:
            rule.ipGroup = 0;
            rule.ipList = {host(random)};
            break;
        case 1:
            rule.ipGroup = 1;
            rule.ipList = {host(random), std::to_string(16 + upTo(random, 14))};
            break;
        case 2: {
            const std::string begin = "10.9." + std::to_string(upTo(random, 255)) + ".";
            rule.ipGroup = 4;
            rule.ipList = {begin + std::to_string(upTo(random, 99)), begin + "200"};
            break;
        }
        case 3:
            rule.ipType = 1;
            rule.ipGroup = 0;
            rule.ipList = {"2001:db8::" + std::to_string(upTo(random, 9999))};
            break;
        default:
            rule.ipType = 2;
            rule.ipGroup = 5;
    }
}

// Hosts, networks, ranges and everybody; ports, lists and ranges of ports; allowed and denied.
FW::FWPROFILE mixedProfile(int rules, unsigned seed) {
    Random random(seed);
    FW::FWPROFILE profile = bench::profileWith(1);
    const FW::FWRULE model = profile.rules["eth0"].front();
    profile.rules["eth0"].clear();
    for (int i = 0; i < rules; ++i) {
        FW::FWRULE rule = model;
        rule.policy = upTo(random, 1) == 0 ? FW::FW_POLICY_ALLOW : FW::FW_POLICY_DENY;
        addAddresses(random, rule);
        rule.portGroup = 1;
        rule.protocol = 1 + upTo(random, 2);
        const int port = upTo(random, 9000);
        rule.portList = {std::to_string(port)};
        if (upTo(random, 3) == 0) {
            rule.portList = {std::to_string(port) + "-" + std::to_string(port + upTo(random, 900))};
        }
        profile.rules[i % 3 == 0 ? "eth1" : "eth0"].push_back(std::move(rule));
    }
    return profile;
}

// Ten rules of it changed places.
FW::FWPROFILE edited(FW::FWPROFILE profile) {
    Random random(7);
    auto& rules = profile.rules["eth0"];
    const int last = static_cast<int>(rules.size()) - 1;
    for (int i = 0; i < 10; ++i) {
        std::swap(rules[static_cast<std::size_t>(upTo(random, last))],
                  rules[static_cast<std::size_t>(upTo(random, last))]);
    }
    return profile;
}

struct Models {
    zamofw::analysis::ModelReader reader{zamofw::countryRanges()};
    std::unique_ptr<const zamofw::Meaning> before, after, other;
};
std::map<int, Models> modelsOf;

void findIdleRules(benchmark::State& state, int rules) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(zamofw::analysis::idleRules(modelsOf[rules].before->model));
    }
}

void makeMatrix(benchmark::State& state, int rules) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(zamofw::analysis::matrix(modelsOf[rules].before->model, {}));
    }
}

void compareEdited(benchmark::State& state, int rules) {
    const Models& models = modelsOf[rules];
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            zamofw::analysis::difference(models.before->model, models.after->model));
    }
}

void compareUnrelated(benchmark::State& state, int rules) {
    const Models& models = modelsOf[rules];
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            zamofw::analysis::difference(models.before->model, models.other->model));
    }
}

const std::map<std::string, void (*)(benchmark::State&, int)> kWork = {
    {"idle rules", findIdleRules},
    {"matrix", makeMatrix},
    {"difference of an edit", compareEdited}};

void add(const std::string& name, void (*work)(benchmark::State&, int), int rules) {
    benchmark::RegisterBenchmark((name + std::to_string(rules)).c_str(), work, rules)
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(7);
}

}  // namespace

int main() {
    for (const int rules : kSizes) {
        Models& models = modelsOf[rules];
        const FW::FWPROFILE profile = mixedProfile(rules, 1);
        models.before = zamofw::meaningOf(profile, "before", models.reader);
        models.after = zamofw::meaningOf(edited(profile), "after", models.reader);
        models.other = zamofw::meaningOf(mixedProfile(rules, 2), "other", models.reader);
        for (const auto& [name, work] : kWork) {
            add(name, work, rules);
        }
    }
    add("unrelated", compareUnrelated, kSizes[0]);
    auto times = bench::runBenchmarks();
    const auto printDoubled = [&times](const std::string& name, int rules) {
        bench::printRow(name + " of " + std::to_string(rules) + " rules",
                        times[name + std::to_string(rules)],
                        "half of them",
                        times[name + std::to_string(rules / 2)],
                        2.5);
    };
    for (const auto& [name, work] : kWork) {
        printDoubled(name, 2000);
        printDoubled(name, 4000);
    }
    bench::printRow("difference of unrelated profiles of 1000 rules",
                    times["unrelated1000"],
                    "of an edit",
                    times["difference of an edit1000"]);
}
