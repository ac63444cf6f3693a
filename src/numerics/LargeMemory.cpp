#include "numerics/LargeMemory.h"

#include <cstdint>
#if defined(__linux__)
#include <sys/mman.h>
#endif

void PrepareLargeBlock(void* p, std::size_t n)
{
#if defined(__linux__)
    if (p == nullptr || n < largememoryns::PrefaultBytes) return;
    // The whole units of size unit inside the block, advised as asked. A
    // refused hint changes nothing but the speed.
    const auto advise = [p, n](std::uintptr_t unit, int advice) {
        const std::uintptr_t a = reinterpret_cast<std::uintptr_t>(p);
        const std::uintptr_t lo = (a + unit - 1) & ~(unit - 1), hi = (a + n) & ~(unit - 1);
        if (hi > lo) madvise(reinterpret_cast<void*>(lo), hi - lo, advice);
    };
#if defined(MADV_HUGEPAGE)
    advise(largememoryns::HugePageBytes, MADV_HUGEPAGE);
#endif
#if defined(MADV_POPULATE_WRITE)
    advise(4096, MADV_POPULATE_WRITE);
#endif
#else
    (void)p;
    (void)n;
#endif
}
