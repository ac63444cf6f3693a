#include <gtest/gtest.h>

#include "NearLD.h"

#include <cmath>

#include "numerics/PolmerN.h"

namespace {

// GRS80: a = 6378137 m, f = 1/298.257222101.
constexpr long double A_m = 6378137.0L;
constexpr long double F = 1.0L / 298.257222101L;

// Radii of 6.4e6 m in long double carry about 1e-12 m of round-off; 1e-8 m
// leaves room for the sine near the pole.
constexpr long double RadiusTol_m = 1e-8L;

}  // namespace

TEST(PolmerN, EquatorPoleAndSphereLimits)
{
    const long double e = std::sqrt(2.0L * F - F * F);
    const long double b = A_m * (1.0L - F);
    // Equator: N = a. Pole: N = a^2 / b (the polar radius of curvature).
    EXPECT_NEAR_LD(PolmerN(0.0L, A_m, e), A_m, RadiusTol_m);
    EXPECT_NEAR_LD(PolmerN(std::acos(-1.0L) / 2.0L, A_m, e), A_m * A_m / b, RadiusTol_m);
    EXPECT_NEAR_LD(PolmerN(-std::acos(-1.0L) / 2.0L, A_m, e), A_m * A_m / b, RadiusTol_m);
    EXPECT_NEAR_LD(PolmerN(0.8L, 6371000.0L, 0.0L), 6371000.0L, RadiusTol_m);
}
