#include "bench/measure.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace bench {
namespace {

// Google Benchmark 1.8 replaced the run's error_occurred by the reason for a skipped run.
template <typename AnyRun>
auto hasFailed(const AnyRun& run) -> decltype(run.error_occurred) {
    return run.error_occurred;
}

template <typename AnyRun>
auto hasFailed(const AnyRun& run) -> decltype(static_cast<bool>(run.skipped)) {
    return static_cast<bool>(run.skipped);
}

class Collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            require(!hasFailed(run), run.benchmark_name());
            if (run.run_type == Run::RT_Iteration) {
                samples[run.run_name.function_name].push_back(run.real_accumulated_time * 1e3 /
                                                              static_cast<double>(run.iterations));
            }
        }
    }

    std::map<std::string, Samples> samples;
};

double processorMilliseconds() {
    double result = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage = {};
        require(getrusage(who, &usage) == 0, "getrusage");
        for (const timeval& time : {usage.ru_utime, usage.ru_stime}) {
            result += static_cast<double>(time.tv_sec) * 1e3;
            result += static_cast<double>(time.tv_usec) * 1e-3;
        }
    }
    return result;
}

double median(Samples samples) {
    std::sort(samples.begin(), samples.end());
    return (samples[(samples.size() - 1) / 2] + samples[samples.size() / 2]) / 2;
}

double ratio(const Samples& ours, const Samples& other) {
    if (ours.size() != other.size()) {
        return median(ours) / median(other);
    }
    Samples ratios;
    for (std::size_t i = 0; i < ours.size(); ++i) {
        ratios.push_back(ours[i] == other[i] ? 1 : ours[i] / other[i]);
    }
    return median(ratios);
}

}  // namespace

void require(bool condition, const std::string& what) {
    if (!condition) {
        std::fprintf(stderr, "cannot measure: %s failed\n", what.c_str());
        std::exit(1);
    }
}

double nowMilliseconds() {
    timespec now = {};
    require(clock_gettime(CLOCK_MONOTONIC, &now) == 0, "clock_gettime");
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

Cost costOf(const std::function<void()>& work) {
    const Cost before = {nowMilliseconds(), processorMilliseconds()};
    work();
    return {nowMilliseconds() - before.wall, processorMilliseconds() - before.processor};
}

std::map<std::string, Samples> runBenchmarks() {
    char program[] = "bench";
    char interleaved[] = "--benchmark_enable_random_interleaving=true";
    char* arguments[] = {program, interleaved, nullptr};
    int count = 2;
    benchmark::Initialize(&count, arguments);
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    return collector.samples;
}

void printRow(const std::string& claim,
              const Samples& ours,
              const std::string& otherName,
              const Samples& other,
              double limit,
              const std::string& unit) {
    require(!ours.empty() && !other.empty(), claim);
    const double result = ratio(ours, other);
    const char* const verdict = result <= limit ? "ok" : "OVER";
    std::printf("%s\t%g\t%s\t%g\t%s\t%g\t%g\t%s\n",
                claim.c_str(),
                median(ours),
                otherName.c_str(),
                median(other),
                unit.c_str(),
                result,
                limit,
                limit > 0 ? verdict : "-");
    (void)std::fflush(stdout);
}

}  // namespace bench
