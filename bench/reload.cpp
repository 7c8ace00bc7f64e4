// A reload against a plain loop that starts the same programs one after another.

#include <zamo/core.h>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "platform/base/export.h"

namespace {

struct Start {
    std::vector<std::string> arguments;
    bool read;
};
bool recording = false;
std::vector<Start> starts;

void record(const char* const argv[], bool read) {
    if (!recording) {
        return;
    }
    starts.push_back({{}, read});
    for (; *argv != nullptr; ++argv) {
        starts.back().arguments.emplace_back(*argv);
    }
}

void startAll() {
    for (const Start& start : starts) {
        bench::require(bench::startPlainly(start.arguments, start.read), start.arguments[0]);
    }
}

void compare(int rules, int lines, int rounds) {
    bench::store({bench::profileWith(rules)});
    starts.clear();
    recording = true;
    bench::reload();
    recording = false;

    bench::Samples wall[2];
    bench::Samples processor[2];
    for (int turn = 0; turn < 2 * rounds; ++turn) {
        const int side = turn % 4 == 1 || turn % 4 == 2 ? 1 : 0;
        const bench::Cost cost = bench::costOf(side == 0 ? bench::reload : startAll);
        wall[side].push_back(cost.wall);
        processor[side].push_back(cost.processor);
    }
    const std::string claim = "reload of " + std::to_string(lines) + " lines, ";
    const std::string other = std::to_string(starts.size()) + " plain starts";
    bench::printRow(claim + "processor time", processor[0], other, processor[1], 1.05);
    bench::printRow(claim + "wall time", wall[0], other, wall[1], 1.10);
}

}  // namespace

ZAMO_EXPORT int VLIBCExecv(const char* path, const char* const argv[], int wait) {
    static auto* const real = bench::realFunction(VLIBCExecv, "VLIBCExecv");
    record(argv, /*read=*/false);
    return real(path, argv, wait);
}

ZAMO_EXPORT FILE* VLIBCPopen(const char* mode, const char* const argv[]) {
    static auto* const real = bench::realFunction(VLIBCPopen, "VLIBCPopen");
    record(argv, /*read=*/true);
    return real(mode, argv);
}

int main() {
    compare(72, 200, 10);
    compare(392, 1000, 8);
}
