// Loaded before a program: makes its n-th allocation, or its n-th call of the platform, fail.
//
//   FAULT_KIND=memory|platform FAULT_NUMBER=N FAULT_LOG=FILE
//
// The processes that the program forks count on. At its end FILE gets a line for each allocation
// and each call: "memory N STACK" or the name of the function. STACK is the same for the same chain
// of callers, so that a caller can choose among thousands of allocations in one loop.

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <zamo/core.h>
#include <zamo/km.h>
#include <zamo/netsdk.h>
#include <zamo/sdk.h>
#include <zamo/serviceconf.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#pragma GCC visibility push(default)

extern "C" {
void* realMalloc(std::size_t size) __asm__("__libc_malloc");
void* realCalloc(std::size_t count, std::size_t size) __asm__("__libc_calloc");
void* realRealloc(void* memory, std::size_t size) __asm__("__libc_realloc");
}

namespace {

constexpr int kFrames = 6;
constexpr long kMostEvents = 1L << 20;

// What came: the name of a function of the platform, or null for an allocation.
struct Event {
    const char* name;
    std::uint64_t stack;
};

struct Events {
    std::atomic<long> size;
    std::atomic<long> allocations;
    std::atomic<long> calls;
    Event all[kMostEvents];
};

Events* events = nullptr;
long failingAllocation = 0;
long failingCall = 0;
bool isCounting = false;
const char* logFile = nullptr;
// Looking at the stack allocates, too.
thread_local bool isInside = false;

struct Start {
    Start() {
        const char* const kind = std::getenv("FAULT_KIND");
        const char* const number = std::getenv("FAULT_NUMBER");
        logFile = std::getenv("FAULT_LOG");
        if (kind == nullptr || number == nullptr || logFile == nullptr) {
            return;
        }
        (*kind == 'm' ? failingAllocation : failingCall) = std::atol(number);
        isCounting = failingAllocation + failingCall == 0;
        (void)unsetenv("LD_PRELOAD");
        void* first[1];
        (void)backtrace(first, 1);
        void* const memory = mmap(nullptr, sizeof(Events), PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        events = memory == MAP_FAILED ? nullptr : static_cast<Events*>(memory);
    }
    ~Start() {
        if (events == nullptr || !isCounting) {
            return;
        }
        isInside = true;
        if (FILE* const file = std::fopen(logFile, "we")) {
            for (long i = 0; i < events->size && i < kMostEvents; ++i) {
                const Event& event = events->all[i];
                std::fprintf(file, "%s %llx\n", event.name == nullptr ? "memory" : event.name,
                             static_cast<unsigned long long>(event.stack));
            }
            (void)std::fclose(file);
        }
    }
} start;

std::uint64_t stackNow() {
    void* frames[kFrames] = {};
    const int count = backtrace(frames, kFrames);
    std::uint64_t hash = 14695981039346656037U;
    for (int i = 2; i < count; ++i) {
        hash = (hash ^ reinterpret_cast<std::uintptr_t>(frames[i])) * 1099511628211U;
    }
    return hash;
}

void note(const char* name) {
    if (isCounting) {
        isInside = true;
        const long at = events->size++;
        if (at < kMostEvents) {
            events->all[at] = {name, stackNow()};
        }
        isInside = false;
    }
}

bool fails() {
    if (events == nullptr || isInside) {
        return false;
    }
    note(nullptr);
    if (++events->allocations != failingAllocation) {
        return false;
    }
    errno = ENOMEM;
    return true;
}

bool fails(const char* name) {
    if (events == nullptr || isInside) {
        return false;
    }
    note(name);
    return ++events->calls == failingCall;
}

template <typename Function>
Function* real(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return fails() ? nullptr : realMalloc(size); }
void* calloc(std::size_t count, std::size_t size) {
    return fails() ? nullptr : realCalloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
    return fails() ? nullptr : realRealloc(memory, size);
}

#define REPLACE(result, name, parameters, arguments, failure) \
    result name parameters {                                  \
        static auto* const function = real(name, #name);      \
        return fails(#name) ? (failure) : function arguments; \
    }

REPLACE(int, VLIBCExecv, (const char* p, const char* const a[], int w), (p, a, w), -1)
REPLACE(FILE*, VLIBCPopen, (const char* m, const char* const a[]), (m, a), nullptr)
REPLACE(int, VLIBCPclose, (FILE * s), (s), (function(s), -1))
REPLACE(int, VLIBCFileLockTimeByFile, (const char* p, int e, int s, int* d), (p, e, s, d),
        (errno = ETIMEDOUT, 0))
REPLACE(int, VLIBCFileUnlockByFile, (int d), (d), (function(d), 0))
REPLACE(int, VLIBCFileGetKeyValue, (const char* f, const char* k, char* v, int s, int g),
        (f, k, v, s, g), -1)
REPLACE(int, VLIBCFileSetKeyValue, (const char* f, const char* k, const char* v, int g),
        (f, k, v, g), -1)
REPLACE(int, VLIBCFileExist, (const char* f), (f), 0)
REPLACE(int, VLIBCSupportGet, (const char* f), (f), 0)
REPLACE(VLIBCSzList*, VLIBCSzListAlloc, (int c), (c), nullptr)
REPLACE(int, VLIBCSzListPush, (VLIBCSzList * *l, const char* t), (l, t), -1)
REPLACE(int, VLIBIptablesModInsert, (const char* s, const VLIBCSzList* m), (s, m), -1)
REPLACE(int, VLIBIptablesModRemove, (const char* s, const VLIBCSzList* m), (s, m), -1)
REPLACE(int, VLIBNetGetInterfaceInfo, (VLIBNetInterface * r, int c, int k), (r, c, k), -3)
REPLACE(int, ZAMOPPPoeIntfGet, (char* b, int s), (b, s), -1)
REPLACE(int, ZAMOFSMkdirP, (const char* p, unsigned m), (p, m), -1)
REPLACE(int, VLIBPluginSDKInit, (const char* c, const char* h, VLIBPlugin** p), (c, h, p), -1)
REPLACE(int, VLIBPluginSetArg, (VLIBPlugin * p, const char* n, const char* v), (p, n, v), -1)
REPLACE(int, VLIBPluginAction, (int a, VLIBPlugin* p), (a, p), -1)
REPLACE(int, ZAMOFwServiceEnum, (ZAMOFwServiceList * *l), (l), -1)

}  // extern "C"

#pragma GCC visibility pop
