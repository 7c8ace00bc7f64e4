// Waiting for a lock that another process holds: what it costs, and how soon the lock is ours.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zamo/core.h>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "zamofirewall/zamofirewall.h"

namespace {

constexpr const char* kExecutionLock = "/tmp/firewall_iptables_exec.lock";
constexpr const char* kSettings = "/usr/zamo/etc/firewall.d/firewall_settings.json";

// Writes the time when it has locked, and again when it unlocks.
[[noreturn]] void holdLock(const char* path, useconds_t milliseconds, int pipe) {
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    const int descriptor = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    bench::require(fcntl(descriptor, F_OFD_SETLKW, &lock) == 0, "locking");
    double time = bench::nowMilliseconds();
    bench::require(write(pipe, &time, sizeof time) == sizeof time, "write");
    usleep(milliseconds * 1000);
    time = bench::nowMilliseconds();
    bench::require(write(pipe, &time, sizeof time) == sizeof time, "write");
    _exit(0);
}

struct Waited {
    bench::Cost cost;
    double handOver;
};

Waited waitFor(const char* path, void (*wait)(), useconds_t milliseconds) {
    int ends[2];
    bench::require(pipe2(ends, O_CLOEXEC) == 0, "pipe2");
    const pid_t child = fork();
    if (child == 0) {
        holdLock(path, milliseconds, ends[1]);
    }
    double time = 0;
    bench::require(read(ends[0], &time, sizeof time) == sizeof time, "the start of the wait");
    double end = 0;
    const bench::Cost cost = bench::costOf([&] {
        wait();
        end = bench::nowMilliseconds();
    });
    bench::require(read(ends[0], &time, sizeof time) == sizeof time, "the end of the wait");
    bench::require(waitpid(child, nullptr, 0) == child, "waitpid");
    close(ends[0]);
    close(ends[1]);
    return {cost, end - time};
}

void takeExecutionLock() {
    int descriptor = -1;
    bench::require(VLIBCFileLockTimeByFile(kExecutionLock, 1, 30, &descriptor) != 0 &&
                       VLIBCFileUnlockByFile(descriptor) != 0,
                   "the execution lock");
}

void readSettings() {
    Json::Value settings;
    bench::require(FW::jsonFileLoad(settings, kSettings), "reading the settings");
}

void measure(const std::string& name, const char* path, void (*wait)()) {
    bench::Samples wall;
    bench::Samples processor;
    for (int i = 0; i < 3; ++i) {
        const bench::Cost cost = waitFor(path, wait, 1500).cost;
        wall.push_back(cost.wall);
        processor.push_back(cost.processor);
    }
    bench::Samples times;
    for (useconds_t i = 0; i < 101; ++i) {
        times.push_back(waitFor(path, wait, 20 + i * 7 % 20).handOver);
    }
    bench::printRow(name + ", processor time of a wait", processor, "the wait", wall, 0.03);
    bench::printRow(name + ", from release to hand-over", times, "a millisecond", {1}, 2);
}

}  // namespace

int main() {
    bench::store({bench::profileWith(1)});
    measure("execution lock", kExecutionLock, takeExecutionLock);
    measure("lock of a JSON file", FW::getLockFile(kSettings).c_str(), readSettings);
}
