// Starting a command from a process with a large heap, against one with a small heap.

#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zamo/core.h>

#include <cstring>

#include "bench/measure.h"

namespace {

constexpr std::size_t kSmall = std::size_t{10} << 20;
constexpr std::size_t kLarge = std::size_t{2} << 30;
constexpr const char* kCommand[] = {"/bin/true", nullptr};

bool start() {
    return VLIBCExecv(kCommand[0], kCommand, 1) == 0;
}

bool startByFork() {
    const pid_t child = fork();
    if (child == 0) {
        execv(kCommand[0], const_cast<char* const*>(kCommand));
        _exit(1);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0;
}

// Small pages are the worst case for a start that copies the page tables.
void measure(benchmark::State& state, std::size_t size, bool (*command)()) {
    void* const heap =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    bench::require(heap != MAP_FAILED, "mmap");
    (void)madvise(heap, size, MADV_NOHUGEPAGE);
    std::memset(heap, 1, size);
    // Handing out so much memory keeps the kernel busy for a while; these starts wait for it.
    for (int i = 0; i < 200; ++i) {
        bench::require(start(), kCommand[0]);
    }
    for (auto _ : state) {
        bench::require(command(), kCommand[0]);
    }
    (void)munmap(heap, size);
}

void add(const char* name, std::size_t size, bool (*command)(), int iterations) {
    benchmark::RegisterBenchmark(name, measure, size, command)
        ->UseRealTime()
        ->Iterations(iterations)
        ->Repetitions(7);
}

}  // namespace

int main() {
    add("small", kSmall, start, 200);
    add("large", kLarge, start, 200);
    add("smallFork", kSmall, startByFork, 4);
    add("largeFork", kLarge, startByFork, 4);
    auto times = bench::runBenchmarks();
    bench::printRow(
        "start with a heap of 2 GiB", times["large"], "one of 10 MiB", times["small"], 1.1);
    bench::printRow(
        "plain fork with a heap of 2 GiB", times["largeFork"], "one of 10 MiB", times["smallFork"]);
}
