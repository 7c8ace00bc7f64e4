// What every benchmark uses: samples of two sides that take turns, and a row that compares them.
#ifndef BENCH_MEASURE_H
#define BENCH_MEASURE_H

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

using Samples = std::vector<double>;

// Ends the program when something cannot be measured.
void require(bool condition, const std::string& what);

double nowMilliseconds();

// Milliseconds; the processor time is user and system time of this process and its ended children.
struct Cost {
    double wall;
    double processor;
};
Cost costOf(const std::function<void()>& work);

// Runs the Google Benchmark functions in random turns: the wall times in milliseconds, by name.
std::map<std::string, Samples> runBenchmarks();

// Prints a row with the medians of both sides, their ratio, and whether it keeps the limit. A row
// without a limit is for comparison only. When both sides have equally many samples, the ratio is
// the median of the ratios of neighbours, so that what disturbs both sides for a while cancels out.
// The row has tabs between its values; scripts/bench makes text and tables of it.
void printRow(const std::string& claim,
              const Samples& ours,
              const std::string& otherName,
              const Samples& other,
              double limit = 0,
              const std::string& unit = "ms");

}  // namespace bench

#endif
