#pragma once
// Large blocks (a day's record store, the decoded text of a day) are touched
// page by page right after they are allocated. On a virtual machine each
// 4 kB page fault costs microseconds, so a few tens of megabytes cost more
// than the reading that fills them; 2 MB pages cut the faults 512-fold.
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

namespace largememoryns {
/// The size of a large page, and the size from which a block is offered
/// them; object storage of this size or more starts on a large-page
/// boundary, so that all its whole large pages can be used.
inline constexpr std::size_t HugePageBytes = std::size_t(2) << 20;
/// Blocks of this size or more are faulted in by one call to the kernel.
inline constexpr std::size_t PrefaultBytes = std::size_t(256) << 10;
}  // namespace largememoryns

/// Asks the kernel for 2 MB pages in the aligned interior of the n bytes at
/// p when n reaches largememoryns::HugePageBytes, and has it fault in all
/// the pages of a block of largememoryns::PrefaultBytes or more in one
/// call, not one trap per page. Only hints: where the kernel has neither,
/// or on another system, nothing changes but speed.
void PrepareLargeBlock(void* p, std::size_t n);

namespace largememoryns {
/// True when a default-constructed T is all zero bytes and the type may be
/// brought to life by copying bytes: its block is then cleared in one pass
/// instead of object by object, which for extended-precision members costs
/// one slow 80-bit store each. Asked once per type, of an object built on
/// zeroed bytes, so that padding cannot tell against it. A type whose
/// construction does nothing is not cleared at all, as before.
template <class T>
bool ZeroBytesDefault()
{
    if constexpr (std::is_trivially_default_constructible_v<T> || !std::is_trivially_copyable_v<T>
                  || !std::is_trivially_destructible_v<T>) {
        return false;
    } else {
        static const bool zero = [] {
            alignas(T) unsigned char bytes[sizeof(T)] = {};
            ::new (static_cast<void*>(bytes)) T;
            for (unsigned char b : bytes)
                if (b != 0) return false;
            return true;
        }();
        return zero;
    }
}
}  // namespace largememoryns

/// Storage for n objects of T, hinted as above before any is touched, each
/// default-initialised (class types constructed, others left as they are);
/// null when the memory is not there. Free with FreeObjects(p, n).
template <class T>
T* AllocateObjects(std::size_t n)
{
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "over-aligned element type");
    const std::size_t bytes = n * sizeof(T);
    // The alignment costs address space only: memory is what is touched.
    void* raw = bytes >= largememoryns::HugePageBytes
                    ? ::operator new(bytes, std::align_val_t(largememoryns::HugePageBytes), std::nothrow)
                    : ::operator new(bytes, std::nothrow);
    if (raw == nullptr) return nullptr;
    PrepareLargeBlock(raw, bytes);
    T* p = static_cast<T*>(raw);
    if (largememoryns::ZeroBytesDefault<T>())
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
    if (n * sizeof(T) >= largememoryns::HugePageBytes)
        ::operator delete(static_cast<void*>(p), std::align_val_t(largememoryns::HugePageBytes));
    else
        ::operator delete(static_cast<void*>(p));
}
