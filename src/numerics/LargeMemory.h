#pragma once
// Large blocks (a day's record store, the decoded text of a day) are touched
// page by page right after they are allocated. On a virtual machine each
// 4 kB page fault costs microseconds, so a few tens of megabytes cost more
// than the reading that fills them; 2 MB pages cut the faults 512-fold.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace largememoryns {
/// The size of a large page, and the size from which a block is offered
/// them; object storage of this size or more starts on a large-page
/// boundary, so that all its whole large pages can be used.
inline constexpr std::size_t HugePageBytes = std::size_t(2) << 20;
/// Blocks of this size or more are faulted in by one call to the kernel.
inline constexpr std::size_t PrefaultBytes = std::size_t(256) << 10;
/// Larger blocks are refused before any allocator is asked: a terabyte is
/// no array of a station's observations, only a size gone wrong.
inline constexpr std::size_t MaxBlockBytes = std::size_t(1) << 40;
}  // namespace largememoryns

/// Asks the kernel for 2 MB pages in the aligned interior of the n bytes at
/// p when n reaches largememoryns::HugePageBytes, and has it fault in all
/// the pages of a block of largememoryns::PrefaultBytes or more in one
/// call, not one trap per page. Only hints: where the kernel has neither,
/// or on another system, nothing changes but speed.
void PrepareLargeBlock(void* p, std::size_t n);

/// A class whose default-constructed value is all zero bytes says so with
/// `using ZeroBytesDefault = void;`: a block of it is then cleared in one
/// pass instead of object by object, which for extended-precision members
/// costs one slow 80-bit store each. Asking the bytes of a constructed
/// object instead is not reliable: the optimiser may leave its padding as
/// anything.
template <class T, class = void>
struct ZeroBytesDefault : std::false_type {};
template <class T>
struct ZeroBytesDefault<T, std::void_t<typename T::ZeroBytesDefault>>
    : std::bool_constant<std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>> {};

/// n bytes; null when the memory is not there or n exceeds
/// largememoryns::MaxBlockBytes. Free with FreeBytes(p, n).
/// From largememoryns::PrefaultBytes on, the block is carved (on Linux)
/// from a range of 2 MB pages shared with other large blocks and is faulted
/// in at once; where that range is missing or full, and below that size,
/// it comes from the library heap, hinted as above.
void* AllocateBytes(std::size_t n);
/// Whether large blocks are carved from the shared 2 MB pages (not under
/// the address sanitizer, nor off Linux, nor where the address range could
/// not be had).
bool LargeBlocksSharePages();
/// Frees the n bytes at p from AllocateBytes.
void FreeBytes(void* p, std::size_t n);

/// Storage for n objects of T, hinted as above before any is touched, each
/// default-initialised (class types constructed, others left as they are);
/// null when the memory is not there. Free with FreeObjects(p, n).
template <class T>
T* AllocateObjects(std::size_t n)
{
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "over-aligned element type");
    const std::size_t bytes = n * sizeof(T);
    void* raw = AllocateBytes(bytes);
    if (raw == nullptr) return nullptr;
    T* p = static_cast<T*>(raw);
    if constexpr (ZeroBytesDefault<T>::value)
        std::memset(raw, 0, bytes);
    else
        std::uninitialized_default_construct_n(p, n);
    return p;
}

/// Ends the n objects at p from AllocateObjects and frees their storage.
template <class T>
void FreeObjects(T* p, std::size_t n)
{
    if (p == nullptr) return;
    std::destroy_n(p, n);
    FreeBytes(p, n * sizeof(T));
}

/// Ends the run with the framed report of an array of n that could not be
/// had.
[[noreturn]] void LargeBlockRefused(std::size_t n);

/// Allocator of growing arrays whose final size is known roughly in
/// advance (reserve it): their storage is taken as above, and a refusal
/// ends the run with the framed report, not an exception.
template <class T>
struct LargeBlockAllocator {
    using value_type = T;
    LargeBlockAllocator() = default;
    template <class U>
    LargeBlockAllocator(const LargeBlockAllocator<U>&) {}
    T* allocate(std::size_t n)
    {
        static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "over-aligned element type");
        void* p = n <= PTRDIFF_MAX / sizeof(T) ? AllocateBytes(n * sizeof(T)) : nullptr;
        if (p == nullptr) LargeBlockRefused(n);
        return static_cast<T*>(p);
    }
    void deallocate(T* p, std::size_t n) { FreeBytes(p, n * sizeof(T)); }
    bool operator==(const LargeBlockAllocator&) const { return true; }
    bool operator!=(const LargeBlockAllocator&) const { return false; }
};

/// A growing array in such storage.
template <class T>
using LargeVector = std::vector<T, LargeBlockAllocator<T>>;
