// `zamofw reload` against the bare restores of the same lines and one start of the command.

#include <fstream>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "command/plan/plan.h"

namespace {

constexpr double kLimit = 1.5;

void start(const std::vector<std::string>& command) {
    bench::require(bench::startPlainly(command, /*read=*/true), command[0]);
}

void reload() {
    start({COMMAND, "--quiet", "reload"});
}

std::string inputPath(int family) {
    return "/tmp/input." + std::to_string(family);
}

void restorePlainly() {
    start({"/sbin/iptables-restore", "--noflush", inputPath(4)});
    start({"/sbin/ip6tables-restore", "--noflush", inputPath(6)});
    start({COMMAND, "--version"});
}

void compare(int rules, int rounds) {
    const FW::FWPROFILE profile = bench::profileWith(rules);
    bench::store({profile});
    const zamofw::Plan plan = zamofw::planProfile(profile);
    for (const int family : {4, 6}) {
        std::ofstream(inputPath(family)) << zamofw::restoreInput(plan, family);
    }
    reload();
    bench::Samples wall[2];
    bench::Samples processor[2];
    for (int turn = 0; turn < 2 * rounds; ++turn) {
        const int side = turn % 4 == 1 || turn % 4 == 2 ? 1 : 0;
        const bench::Cost cost = bench::costOf(side == 0 ? reload : restorePlainly);
        wall[side].push_back(cost.wall);
        processor[side].push_back(cost.processor);
    }
    const std::string claim = "zamofw reload, " + std::to_string(rules) + " rules, ";
    bench::printRow(claim + "processor time", processor[0], "bare restores", processor[1], kLimit);
    bench::printRow(claim + "wall time", wall[0], "bare restores", wall[1], kLimit);
}

}  // namespace

int main() {
    compare(200, 100);
    compare(1000, 40);
    compare(3000, 20);
}
