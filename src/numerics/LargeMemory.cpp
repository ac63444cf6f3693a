#include "numerics/LargeMemory.h"

#include <cstdint>
#include <new>

#include "numerics/MError.h"
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

void* AllocateBytes(std::size_t n)
{
    // The alignment costs address space only: memory is what is touched.
    void* raw = n >= largememoryns::HugePageBytes
                    ? ::operator new(n, std::align_val_t(largememoryns::HugePageBytes), std::nothrow)
                    : ::operator new(n, std::nothrow);
    PrepareLargeBlock(raw, n);
    return raw;
}

void FreeBytes(void* p, std::size_t n)
{
    if (p == nullptr) return;
    if (n >= largememoryns::HugePageBytes)
        ::operator delete(p, std::align_val_t(largememoryns::HugePageBytes));
    else
        ::operator delete(p);
}

void LargeBlockRefused(std::size_t n)
{
    MError::AllocationError(static_cast<long>(n > PTRDIFF_MAX ? PTRDIFF_MAX : n), 1);
}
