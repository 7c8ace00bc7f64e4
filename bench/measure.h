// What every benchmark is made of: samples of two sides that took turns, and a row of the table.
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

// Prints "claim, ours, other, what the other is, ratio, limit", separated by tabs. Without a limit
// the row is there for comparison only. Of equally many samples the ratios of neighbours count, so
// that what disturbs both sides for a while does not show.
void printRow(const std::string& claim,
              const Samples& ours,
              const std::string& otherName,
              const Samples& other,
              double limit = 0);

}  // namespace bench

#endif
