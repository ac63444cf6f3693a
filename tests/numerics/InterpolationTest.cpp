#include <gtest/gtest.h>

#include "NearLD.h"

#include <cmath>

#include "numerics/Interpolation.h"

namespace {

// A few dozen operations on values up to 1e3 in long double (epsilon
// 1.1e-19) stay below 1e-14 with a margin of several hundred.
constexpr long double RoundOffTol = 1e-14L;

long double Quad(long double x) { return 2.5L - 1.25L * x + 0.75L * x * x; }
long double Cub(long double x) { return -1.0L + 0.5L * x - 2.0L * x * x + 0.125L * x * x * x; }

}  // namespace

TEST(InterpolationWeights, SetPAndSetXNAreComplementaryAndHitTheNodes)
{
    EXPECT_NEAR_LD(SetP(10.0L, 10.0L, 14.0L), 1.0L, RoundOffTol);
    EXPECT_NEAR_LD(SetP(14.0L, 10.0L, 14.0L), 0.0L, RoundOffTol);
    EXPECT_NEAR_LD(SetXN(11.0L, 10.0L, 14.0L), 0.25L, RoundOffTol);
    for (long double x : {-3.0L, 10.0L, 12.7L, 20.0L})
        EXPECT_NEAR_LD(SetP(x, 10.0L, 14.0L) + SetXN(x, 10.0L, 14.0L), 1.0L, RoundOffTol);
}

TEST(InterpolationLinear, ExactForStraightLinesAlsoOutsideTheNodes)
{
    auto line = [](long double x) { return 3.0L * x - 7.0L; };
    for (long double x : {-5.0L, 1.0L, 2.2L, 4.0L, 9.0L})
        EXPECT_NEAR_LD(LinearInterpolate(x, 1.0L, 4.0L, line(1.0L), line(4.0L)), line(x), RoundOffTol);
    EXPECT_NEAR_LD(LinearInterpolate(0.25L, 8.0L, 0.75L, 4.0L), 5.0L, RoundOffTol);
}

TEST(InterpolationBilinear, ExactForBilinearFieldWithCornersInTheirOrder)
{
    // z = a + b x + c y + d x y is reproduced exactly by bilinear
    // interpolation; a corner passed in the wrong slot breaks it.
    auto z = [](long double x, long double y) { return 1.0L + 2.0L * x - 3.0L * y + 0.5L * x * y; };
    const long double x1 = 10.0L, x2 = 15.0L, y1 = -2.5L, y2 = 0.0L;
    for (long double x : {10.0L, 11.3L, 15.0L})
        for (long double y : {-2.5L, -0.7L, 0.0L})
            EXPECT_NEAR_LD(BiLinearInterpolate(x, y, x1, x2, y1, y2, z(x1, y1), z(x2, y1), z(x2, y2),
                                            z(x1, y2)),
                        z(x, y), RoundOffTol);
}

TEST(InterpolationLagrange, ExactForPolynomialsOfItsDegree)
{
    const long double xs[] = {-1.0L, 0.3L, 1.7L, 2.0L, 3.9L};
    for (long double x : xs) {
        EXPECT_NEAR_LD(QuadraticInterpolate(x, -0.5L, 1.0L, 3.0L, Quad(-0.5L), Quad(1.0L), Quad(3.0L)),
                    Quad(x), RoundOffTol);
        EXPECT_NEAR_LD(CubicInterpolate(x, -0.5L, 1.0L, 2.5L, 3.0L, Cub(-0.5L), Cub(1.0L), Cub(2.5L),
                                     Cub(3.0L)),
                    Cub(x), RoundOffTol);
    }
}

TEST(InterpolationLagrange, CubicErrorOnQuarticIsTheNodePolynomial)
{
    // For f = x^4 the interpolation error is f''''/4! times the node
    // polynomial, i.e. exactly (x - x0)(x - x1)(x - x2)(x - x3).
    const long double n[] = {0.0L, 1.0L, 2.5L, 4.0L};
    auto f = [](long double x) { return x * x * x * x; };
    for (long double x : {0.5L, 1.8L, 3.3L, 5.0L}) {
        const long double w = (x - n[0]) * (x - n[1]) * (x - n[2]) * (x - n[3]);
        EXPECT_NEAR_LD(f(x) - CubicInterpolate(x, n[0], n[1], n[2], n[3], f(n[0]), f(n[1]), f(n[2]),
                                            f(n[3])),
                    w, RoundOffTol);
    }
}

TEST(InterpolationHermite, HitsMiddleNodesAndIsExactForQuadraticsOnUnitGrid)
{
    long double p0, p1, p2, p3;
    // Any spacing: the cubic starts at y1 and ends at y2.
    SetP(0.0L, 2.0L, 5.0L, 6.0L, 1.0L, -4.0L, 7.0L, 3.0L, p0, p1, p2, p3);
    EXPECT_NEAR_LD(CubicInterpolate(SetXN(2.0L, 2.0L, 5.0L), p0, p1, p2, p3), -4.0L, RoundOffTol);
    EXPECT_NEAR_LD(CubicInterpolate(SetXN(5.0L, 2.0L, 5.0L), p0, p1, p2, p3), 7.0L, RoundOffTol);

    // Unit spacing: central differences give exact slopes of a quadratic,
    // and a cubic Hermite piece with exact values and slopes reproduces it.
    SetP(3.0L, 4.0L, 5.0L, 6.0L, Quad(3.0L), Quad(4.0L), Quad(5.0L), Quad(6.0L), p0, p1, p2, p3);
    for (long double x : {4.0L, 4.2L, 4.5L, 4.9L, 5.0L})
        EXPECT_NEAR_LD(CubicInterpolate(SetXN(x, 4.0L, 5.0L), p0, p1, p2, p3), Quad(x), RoundOffTol);
}
