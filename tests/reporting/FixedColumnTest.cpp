// The fixed-notation field writer against the library's own formatting of
// the same stream, which it replaces: ties of the exact binary value,
// signs of values that round to zero, carries into the whole part, the
// limits where it hands over, and random values over the range of the
// report's numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <sstream>

#include "reporting/FixedColumn.h"

namespace {

std::string Ours(long double v, int width, int ndec, std::ios::fmtflags extra = {}, char fill = ' ')
{
    std::ostringstream os;
    os.flags(os.flags() | extra);
    os.fill(fill);
    FixedColumn(os, v, width, ndec);
    // The stream is left in fixed notation with ndec decimals.
    os << "|" << 0.5L;
    return os.str();
}

std::string Library(long double v, int width, int ndec, std::ios::fmtflags extra = {}, char fill = ' ')
{
    std::ostringstream os;
    os.flags(os.flags() | extra);
    os.fill(fill);
    os << std::fixed << std::setprecision(ndec) << std::setw(width) << v << "|" << 0.5L;
    return os.str();
}

}  // namespace

TEST(FixedColumn, WritesWhatTheLibraryWrites)
{
    const long double inf = std::numeric_limits<long double>::infinity();
    const struct {
        long double v;
        int width, ndec;
    } rows[] = {
        {0.125L, 8, 2},  {0.375L, 8, 2},   {2.5L, 4, 0},  {3.5L, 4, 0},  {-2.5L, 4, 0},  // ties go to even
        {-0.0L, 10, 4},  {-1e-9L, 10, 4},  {1e-30L, 6, 3}, {-1e-4000L, 8, 1},           // zero, signed
        {0.99999999L, 8, 4}, {-9.99995L, 12, 4}, {999.9999999L, 3, 6},                  // carries; no room
        {3582104.79791234L, 16, 4}, {-4.799012L, 15, 6}, {5e-10L, 12, 9}, {0.0L, 3, 0},
        {1.8446744073709551615e19L, 25, 0}, {1e15L, 30, 6}, {1e20L, 30, 2},             // beyond 2^64
        {inf, 8, 2}, {-inf, 8, 2}, {std::nanl(""), 8, 2}, {1.5L, 8, 12}, {1.5L, 60, 2},
    };
    for (const auto& r : rows) EXPECT_EQ(Ours(r.v, r.width, r.ndec), Library(r.v, r.width, r.ndec)) << r.v;
    for (long double v : {2.5L, -0.125L})
        for (const std::ios::fmtflags f : {std::ios::left, std::ios::internal, std::ios::showpos, std::ios::showpoint})
            EXPECT_EQ(Ours(v, 9, 2, f), Library(v, 9, 2, f)) << v;
    EXPECT_EQ(Ours(2.5L, 9, 2, {}, '*'), Library(2.5L, 9, 2, {}, '*'));
    EXPECT_EQ(Ours(2.0L, 6, 0, std::ios::showpoint), Library(2.0L, 6, 0, std::ios::showpoint));  // "2."

    // Random significands over 2^-70 to 2^70, and ties at every decimal
    // count n: an odd multiple of 2^-(n+1) is one, times 10^n an odd
    // multiple of 5^n/2.
    std::mt19937_64 rng(20201777);
    for (int i = 0; i < 200000; ++i) {
        const int ndec = static_cast<int>(rng() % 10), width = static_cast<int>(rng() % 24);
        long double v = std::ldexp(static_cast<long double>(rng() | (1ULL << 63)), static_cast<int>(rng() % 141) - 134);
        if (i % 4 == 3) v = std::ldexp(static_cast<long double>(2 * (rng() >> 14) + 1), -(ndec + 1));
        if (rng() & 1) v = -v;
        ASSERT_EQ(Ours(v, width, ndec), Library(v, width, ndec)) << static_cast<double>(v) << " " << ndec;
    }
}
