#include "numerics/LargeMemory.h"

#include <cstdint>
#if defined(__linux__)
#include <sys/mman.h>
#endif

void AdviseHugePages(void* p, std::size_t n)
{
#if defined(__linux__)
    if (p == nullptr || n < largememoryns::PrefaultBytes) return;
    const std::uintptr_t a = reinterpret_cast<std::uintptr_t>(p);
    // A refused hint changes nothing but the speed.
#if defined(MADV_HUGEPAGE)
    const std::uintptr_t huge = largememoryns::HugePageBytes;
    const std::uintptr_t lo = (a + huge - 1) & ~(huge - 1), hi = (a + n) & ~(huge - 1);
    if (hi > lo) madvise(reinterpret_cast<void*>(lo), hi - lo, MADV_HUGEPAGE);
#endif
#if defined(MADV_POPULATE_WRITE)
    const std::uintptr_t page = 4096;
    const std::uintptr_t plo = (a + page - 1) & ~(page - 1), phi = (a + n) & ~(page - 1);
    if (phi > plo) madvise(reinterpret_cast<void*>(plo), phi - plo, MADV_POPULATE_WRITE);
#endif
#else
    (void)p;
    (void)n;
#endif
}
