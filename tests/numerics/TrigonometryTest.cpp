// The reduced sine and cosine against the library's, in every quadrant, at
// its own bounds and beyond them.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <random>
#include <vector>

#include "NearLD.h"
#include "numerics/Trigonometry.h"

// 3e-19 absolute: the remainder carries at most two roundings of about
// 5e-20 (the parts of k·π/2 beyond the exact first one), and each side's
// result is within an ulp (1.1e-19 below 1). A quadrant wrong by one misses
// by up to 1, a third part of π/2 dropped by k·2e-21.
TEST(Trigonometry, ReducedSineAndCosineMatchTheLibrary)
{
    constexpr long double Tol = 3e-19L, HalfPi = 1.57079632679489661923L;
    std::mt19937_64 rng(7);
    std::vector<long double> xs = {0.0L, 0.785L, 0.786L, -0.786L, HalfPi, -HalfPi, 2.0L * HalfPi, 3.0L * HalfPi,
                                   -3.0L * HalfPi, 1000.0L * HalfPi, 0.99e6L, -0.99e6L, 1.01e6L, 1e12L};
    for (const long double range : {2.0L, 100.0L, 1e6L}) {
        std::uniform_real_distribution<double> u(-static_cast<double>(range), static_cast<double>(range));
        for (int i = 0; i < 2000; ++i) xs.push_back(static_cast<long double>(u(rng)) * (1.0L + 1e-12L));
    }
    for (long double x : xs) {
        long double s = 0.0L, c = 0.0L;
        trig::SinCos(x, s, c);
        EXPECT_NEAR_LD(s, std::sin(x), Tol) << x;
        EXPECT_NEAR_LD(c, std::cos(x), Tol) << x;
        EXPECT_EQ(trig::Sin(x), s) << x;
        EXPECT_EQ(trig::Cos(x), c) << x;
    }
    long double s = 0.0L, c = 0.0L;
    trig::SinCos(NAN, s, c);
    EXPECT_TRUE(std::isnan(s) && std::isnan(c) && std::isnan(trig::Sin(INFINITY)) && std::isnan(trig::Cos(-INFINITY)));
}
