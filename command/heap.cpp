#include "command/heap.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace zamofw {
namespace {

// Address space alone; what is not used costs nothing.
constexpr int kReserve = 32 << 20;
constexpr int kNever = 1 << 30;
constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20U;

std::uintptr_t heapEnd() {
    return reinterpret_cast<std::uintptr_t>(sbrk(0));
}

}  // namespace

void prepareHeap() {
    (void)mallopt(M_TOP_PAD, kReserve);
    (void)mallopt(M_TRIM_THRESHOLD, kNever);
    (void)mallopt(M_MMAP_THRESHOLD, kReserve);
    const std::uintptr_t before = heapEnd();
    // Volatile, so that the compiler does not leave the two calls out.
    void* volatile first = std::malloc(std::size_t{1} << 20U);
    std::free(first);
    const std::uintptr_t begin = (before + kLargePage - 1) / kLargePage * kLargePage;
    const std::uintptr_t end = heapEnd() / kLargePage * kLargePage;
    if (begin < end) {
        // A kernel without large pages goes on page by page.
        (void)madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
    }
}

}  // namespace zamofw
