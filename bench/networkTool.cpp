// The network tool against C programs that print one line and do nothing else.

#include <benchmark/benchmark.h>

#include "bench/firewall.h"
#include "bench/measure.h"

namespace {

void add(const char* name, const std::vector<std::string>& arguments) {
    benchmark::RegisterBenchmark(name,
                                 [arguments](benchmark::State& state) {
                                     for (auto _ : state) {
                                         bench::require(bench::startPlainly(arguments, true),
                                                        arguments[0]);
                                     }
                                 })
        ->UseRealTime()
        ->Iterations(50)
        ->Repetitions(50);
}

}  // namespace

int main() {
    add("tool", {"/usr/zamo/sbin/zamonetdtool", "--get-ipv6-router-interface", "eth0"});
    add("dynamic", {HELLO});
    add("static", {HELLO_STATIC});
    auto times = bench::runBenchmarks();
    bench::printRow("zamonetdtool", times["tool"], "a C program", times["dynamic"], 1.2);
    bench::printRow("zamonetdtool", times["tool"], "a static C program", times["static"]);
}
