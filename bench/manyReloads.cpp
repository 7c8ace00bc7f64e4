// What a process still holds after a thousand reloads.

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zamo/core.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "platform/base/export.h"

namespace {

constexpr double kFlat = 1.01;

// Runs /bin/true in place of iptables, to save time.
bool withoutRules = true;

struct State {
    double descriptors;
    double children;
    double residentKiB;
    double heapKiB;
};

State now() {
    const std::filesystem::directory_iterator directory("/proc/self/fd");
    const auto descriptors = std::distance(begin(directory), end(directory));
    const bool childless = waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD;
    double size = 0;
    double resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return {static_cast<double>(descriptors),
            childless ? 0.0 : 1.0,
            resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024,
            static_cast<double>(mallinfo2().uordblks) / 1024};
}

void reload(int times) {
    for (int i = 0; i < times; ++i) {
        bench::reload();
    }
}

void row(const std::string& claim,
         double State::*member,
         const State& after,
         const State& before,
         double limit,
         const std::string& unit = "KiB") {
    bench::printRow(claim, {after.*member}, "before", {before.*member}, limit, unit);
}

}  // namespace

ZAMO_EXPORT int VLIBCExecv(const char* path, const char* const argv[], int wait) {
    static auto* const real = bench::realFunction(VLIBCExecv, "VLIBCExecv");
    const char* const nothing[] = {"/bin/true", nullptr};
    return withoutRules ? real(nothing[0], nothing, wait) : real(path, argv, wait);
}

int main() {
    bench::store({bench::profileWith(0)});
    const State first = now();
    reload(100);
    const State hundred = now();
    reload(900);
    const State thousand = now();
    withoutRules = false;
    reload(100);
    const State last = now();
    row("descriptors after 1,100 reloads", &State::descriptors, last, first, 1, "");
    row("children after 1,100 reloads", &State::children, last, first, 1, "");
    row("resident memory, reloads 101 to 1,000", &State::residentKiB, thousand, hundred, kFlat);
    row("heap, reloads 101 to 1,000", &State::heapKiB, thousand, hundred, kFlat);
    row("resident memory, 100 reloads with iptables", &State::residentKiB, last, thousand, kFlat);
}
