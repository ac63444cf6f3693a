#pragma once
// EXPECT_NEAR converts both sides to double, which hides any difference
// below 1e-16 of the values' size; extended-precision results are compared
// here in long double instead, or bit for bit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>

namespace orvotest {

/// Predicate formatter: |a - b| <= tol, evaluated in long double.
inline ::testing::AssertionResult NearLD(const char* ea, const char* eb, const char* /*et*/,
                                         long double a, long double b, long double tol)
{
    const long double d = std::fabs(a - b);
    if (d <= tol) return ::testing::AssertionSuccess();
    char text[256];
    std::snprintf(text, sizeof text, "|%s - %s| = %.6Lg exceeds %.6Lg (%.21Lg vs %.21Lg)", ea, eb,
                  d, tol, a, b);
    return ::testing::AssertionFailure() << text;
}

/// Same value and sign, bit for bit (the 10 bytes of the x87 format; a NaN
/// equals itself).
inline bool SameBits(long double a, long double b) { return std::memcmp(&a, &b, 10) == 0; }

}  // namespace orvotest

#define EXPECT_NEAR_LD(a, b, tol) EXPECT_PRED_FORMAT3(::orvotest::NearLD, a, b, tol)
#define ASSERT_NEAR_LD(a, b, tol) ASSERT_PRED_FORMAT3(::orvotest::NearLD, a, b, tol)
