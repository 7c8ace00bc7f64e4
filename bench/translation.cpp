// Translating a profile of 1,000 rules against reloading it. The starts of the network tool count
// as part of the reload.

#include <benchmark/benchmark.h>
#include <zamo/core.h>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "platform/base/export.h"
#include "zamofirewall/zamofirewall.h"

namespace {

bool answersItself = false;

// Reading the profile's file included.
void translate(benchmark::State& state) {
    answersItself = true;
    for (auto _ : state) {
        Json::Value list;
        bench::require(FW::ZAMOFW().fwIptablesRulesEnum("bench", list, true), "the translation");
    }
    answersItself = false;
}
BENCHMARK(translate)->UseRealTime()->Iterations(10)->Repetitions(9);

void reload(benchmark::State& state) {
    for (auto _ : state) {
        bench::reload();
    }
}
BENCHMARK(reload)->UseRealTime()->Iterations(1)->Repetitions(3);

}  // namespace

ZAMO_EXPORT FILE* VLIBCPopen(const char* mode, const char* const argv[]) {
    static auto* const real = bench::realFunction(VLIBCPopen, "VLIBCPopen");
    static char answer[] = "eth0";
    return answersItself ? fmemopen(answer, sizeof answer - 1, mode) : real(mode, argv);
}

ZAMO_EXPORT int VLIBCPclose(FILE* stream) {
    static auto* const real = bench::realFunction(VLIBCPclose, "VLIBCPclose");
    return answersItself ? fclose(stream) : real(stream);
}

int main() {
    bench::store({bench::profileWith(1000)});
    auto times = bench::runBenchmarks();
    bench::printRow("translation of 1,000 rules",
                    times["translate"],
                    "reload of the same",
                    times["reload"],
                    0.01);
}
