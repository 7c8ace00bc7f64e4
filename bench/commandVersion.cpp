// The start of `zamofw --version` against a C++ program that links the same libraries and does
// nothing.

#include "bench/firewall.h"
#include "bench/measure.h"

namespace {

constexpr int kStarts = 20;
constexpr int kRounds = 50;

void startAll(const std::vector<std::string>& command) {
    for (int i = 0; i < kStarts; ++i) {
        bench::require(bench::startPlainly(command, /*read=*/true), command[0]);
    }
}

}  // namespace

int main() {
    const std::vector<std::string> commands[2] = {{COMMAND, "--version"}, {NOTHING}};
    bench::Samples wall[2];
    bench::Samples processor[2];
    for (int turn = 0; turn < 2 * kRounds; ++turn) {
        const int side = turn % 4 == 1 || turn % 4 == 2 ? 1 : 0;
        const bench::Cost cost = bench::costOf([&] { startAll(commands[side]); });
        wall[side].push_back(cost.wall / kStarts);
        processor[side].push_back(cost.processor / kStarts);
    }
    bench::printRow("zamofw --version, processor time",
                    processor[0],
                    "a program that does nothing",
                    processor[1],
                    1.5);
    bench::printRow(
        "zamofw --version, wall time", wall[0], "a program that does nothing", wall[1], 1.5);
}
