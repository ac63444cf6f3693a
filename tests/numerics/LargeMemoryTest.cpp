// Large blocks: carved from shared 2 MB pages, they must never overlap,
// must reuse the space of freed blocks (cleared where the type asks), and
// must give the memory of freed blocks back to the system. Where they come
// from the library heap instead, the blocks still stay apart and cleared.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <vector>

#include "geodesy/xyz.h"
#include "numerics/LargeMemory.h"

namespace {

constexpr std::size_t KiB = 1024, MiB = 1024 * KiB;

struct Block {
    unsigned char* p;
    std::size_t n;
};

Block Take(std::size_t n)
{
    auto* p = static_cast<unsigned char*>(AllocateBytes(n));
    EXPECT_NE(p, nullptr) << n;
    return {p, n};
}

// Every byte of the block holds its mark.
bool Holds(const Block& b, unsigned char mark)
{
    for (std::size_t i = 0; i < b.n; ++i)
        if (b.p[i] != mark) return false;
    return true;
}

// Resident memory of this process (bytes), 0 where the system does not say.
std::size_t Resident()
{
    std::ifstream statm("/proc/self/statm");
    std::size_t pages = 0, resident = 0;
    return statm >> pages >> resident ? resident * 4096 : 0;
}

}  // namespace

TEST(LargeMemory, BlocksStayApartReuseFreedSpaceAndReturnIt)
{
    // Sizes across the 2 MB page: below, between one and two, above.
    std::vector<Block> blocks;
    for (std::size_t n : {300 * KiB, 1 * MiB + 3, 2 * MiB + 5 * KiB, 700 * KiB, 5 * MiB})
        blocks.push_back(Take(n));
    for (std::size_t i = 0; i < blocks.size(); ++i) std::memset(blocks[i].p, static_cast<int>(i + 1), blocks[i].n);
    // Two holes; a smaller block lands in the first that holds it, and
    // cleared storage of a zero-default type comes back cleared.
    FreeBytes(blocks[1].p, blocks[1].n);
    FreeBytes(blocks[3].p, blocks[3].n);
    const Block hole1 = blocks[1];
    const std::size_t nObjects = 600 * KiB / sizeof(xyzt);
    xyzt* fresh = AllocateObjects<xyzt>(nObjects);
    ASSERT_NE(fresh, nullptr);
    const auto* at = reinterpret_cast<unsigned char*>(fresh);
    // The sanitizer's heap holds freed blocks back: there, no reuse.
    EXPECT_EQ(at >= hole1.p && at + nObjects * sizeof(xyzt) <= hole1.p + hole1.n, LargeBlocksSharePages());
    for (std::size_t i = 0; i < nObjects; ++i) EXPECT_TRUE(fresh[i].x == 0.0L && fresh[i].dt == 0.0L) << i;
    for (std::size_t i : {0u, 2u, 4u}) EXPECT_TRUE(Holds(blocks[i], static_cast<unsigned char>(i + 1))) << i;
    FreeObjects(fresh, nObjects);
    for (std::size_t i : {0u, 2u, 4u}) FreeBytes(blocks[i].p, blocks[i].n);

    // 64 MB written and freed: its memory goes back (a little may stay in
    // pages shared with others' blocks). The sanitizer's heap holds freed
    // blocks back on purpose.
    const std::size_t before = Resident();
    Block big = Take(64 * MiB);
    std::memset(big.p, 7, big.n);
    EXPECT_GE(Resident(), before + 60 * MiB);
    FreeBytes(big.p, big.n);
    if (before > 0 && LargeBlocksSharePages()) {
        EXPECT_LE(Resident(), before + 4 * MiB);
    }
}
