#include "numerics/LargeMemory.h"

#include <cerrno>
#include <cstdint>
#include <iterator>
#include <map>
#include <new>

#include "numerics/MError.h"
#if defined(__linux__)
#include <sys/mman.h>
#endif

// Under the address sanitizer every block comes from the library heap, so
// that a read or write past a block's end is caught there.
#if defined(__SANITIZE_ADDRESS__)
#define ORVO_LARGE_PAGE_ARENA 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORVO_LARGE_PAGE_ARENA 0
#endif
#endif
#if !defined(ORVO_LARGE_PAGE_ARENA) && defined(__linux__)
#define ORVO_LARGE_PAGE_ARENA 1
#endif
#if !defined(ORVO_LARGE_PAGE_ARENA)
#define ORVO_LARGE_PAGE_ARENA 0
#endif

#if ORVO_LARGE_PAGE_ARENA
namespace {

constexpr std::size_t PageBytes = 4096;

std::size_t RoundUp(std::size_t n, std::size_t unit) { return (n + unit - 1) / unit * unit; }
std::size_t RoundDown(std::size_t n, std::size_t unit) { return n / unit * unit; }

// Large blocks carved from one range of address space whose memory the
// kernel is asked to give in 2 MB pages. On a virtual machine the first
// touch of each 4 kB page costs microseconds even after it was faulted in
// ahead, that of a 2 MB page hardly more: blocks of a few hundred kB, too
// small for a large page of their own, share them here, and no block ends
// in a tail of small pages. A freed block joins its free neighbours, and
// the large pages that a free range covers whole go back to the system, so
// that resident memory follows the live blocks.
class LargePageArena {
public:
    static LargePageArena& Instance()
    {
        // Never destroyed: static arrays of other files give their blocks
        // back while the program ends, in an order no one controls.
        static LargePageArena* const arena = new LargePageArena;
        return *arena;
    }

    // n bytes (at least one), faulted in; null when the range is not there
    // or full, or the memory is not.
    void* Take(std::size_t n)
    {
        if (base_ == nullptr || n == 0 || n > reserved_ - PageBytes) return nullptr;
        const std::size_t len = RoundUp(n, PageBytes);
        std::size_t at = top_;
        // The lowest free range that holds the block, else the top.
        auto it = free_.begin();
        while (it != free_.end() && it->second < len) ++it;
        if (it != free_.end()) {
            at = it->first;
            const std::size_t rest = it->second - len;
            free_.erase(it);
            if (rest > 0) free_[at + len] = rest;
        } else {
            if (len > reserved_ - top_) return nullptr;
            top_ += len;
        }
        char* p = base_ + at;
#if defined(MADV_POPULATE_WRITE)
        if (madvise(p, len, MADV_POPULATE_WRITE) != 0 && errno == ENOMEM) {
            Give(p, n);
            return nullptr;
        }
#endif
        return p;
    }

    // The start of the range; null where it could not be had.
    const void* Base() const { return base_; }

    bool Owns(const void* p) const
    {
        const char* c = static_cast<const char*>(p);
        return base_ != nullptr && c >= base_ && c < base_ + reserved_;
    }

    // Takes back the n bytes at p from Take.
    void Give(void* p, std::size_t n)
    {
        std::size_t at = static_cast<std::size_t>(static_cast<char*>(p) - base_);
        std::size_t len = RoundUp(n, PageBytes);
        const auto next = free_.lower_bound(at);
        if (next != free_.begin()) {
            const auto prev = std::prev(next);
            if (prev->first + prev->second == at) {
                at = prev->first;
                len += prev->second;
                free_.erase(prev);
            }
        }
        if (next != free_.end() && at + len == next->first) {
            len += next->second;
            free_.erase(next);
        }
        // A range that reaches the top lowers it, and all the large pages
        // above the live blocks go back.
        const std::size_t lo = RoundUp(at, largememoryns::HugePageBytes);
        std::size_t hi = RoundDown(at + len, largememoryns::HugePageBytes);
        if (at + len == top_) {
            top_ = at;
            hi = RoundUp(at + len, largememoryns::HugePageBytes);
        } else {
            free_[at] = len;
        }
        if (hi > lo) madvise(base_ + lo, hi - lo, MADV_DONTNEED);
    }

private:
    LargePageArena()
    {
        // Address space only: nothing is committed before it is taken. The
        // largest block allowed fits.
        constexpr std::size_t Want = largememoryns::MaxBlockBytes + largememoryns::HugePageBytes;
        void* p = mmap(nullptr, Want, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (p == MAP_FAILED) return;
        const std::size_t a = reinterpret_cast<std::uintptr_t>(p);
        const std::size_t skip = RoundUp(a, largememoryns::HugePageBytes) - a;
        base_ = static_cast<char*>(p) + skip;
        reserved_ = Want - skip;
#if defined(MADV_HUGEPAGE)
        madvise(base_, reserved_, MADV_HUGEPAGE);
#endif
    }

    char* base_ = nullptr;
    std::size_t reserved_ = 0;
    std::size_t top_ = 0;                      // taken so far, from base_
    std::map<std::size_t, std::size_t> free_;  // start to length, below top_, none adjacent
};

}  // namespace
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

bool LargeBlocksSharePages()
{
#if ORVO_LARGE_PAGE_ARENA
    return LargePageArena::Instance().Base() != nullptr;
#else
    return false;
#endif
}

void* AllocateBytes(std::size_t n)
{
    if (n > largememoryns::MaxBlockBytes) return nullptr;
#if ORVO_LARGE_PAGE_ARENA
    if (n >= largememoryns::PrefaultBytes)
        if (void* p = LargePageArena::Instance().Take(n)) return p;
#endif
    // Where the arena is missing or full, the library heap. The alignment
    // costs address space only: memory is what is touched.
    void* raw = n >= largememoryns::HugePageBytes
                    ? ::operator new(n, std::align_val_t(largememoryns::HugePageBytes), std::nothrow)
                    : ::operator new(n, std::nothrow);
    PrepareLargeBlock(raw, n);
    return raw;
}

void FreeBytes(void* p, std::size_t n)
{
    if (p == nullptr) return;
#if ORVO_LARGE_PAGE_ARENA
    if (LargePageArena::Instance().Owns(p)) {
        LargePageArena::Instance().Give(p, n);
        return;
    }
#endif
    if (n >= largememoryns::HugePageBytes)
        ::operator delete(p, std::align_val_t(largememoryns::HugePageBytes));
    else
        ::operator delete(p);
}

void LargeBlockRefused(std::size_t n)
{
    MError::AllocationError(static_cast<long>(n > PTRDIFF_MAX ? PTRDIFF_MAX : n), 1);
}
