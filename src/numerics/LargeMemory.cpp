#include "numerics/LargeMemory.h"

#include <cstdint>
#if defined(__linux__)
#include <sys/mman.h>
#endif

void AdviseHugePages(void* p, std::size_t n)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (p == nullptr || n < largememoryns::HugePageBytes) return;
    const std::uintptr_t huge = largememoryns::HugePageBytes, a = reinterpret_cast<std::uintptr_t>(p);
    const std::uintptr_t lo = (a + huge - 1) & ~(huge - 1), hi = (a + n) & ~(huge - 1);
    // A refused hint changes nothing but the speed.
    if (hi > lo) madvise(reinterpret_cast<void*>(lo), hi - lo, MADV_HUGEPAGE);
#else
    (void)p;
    (void)n;
#endif
}
