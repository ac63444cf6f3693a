// Interpolation formulas and the cubic spline: each is exact for the
// polynomials of its degree, and the spline keeps to its published error
// bound on a smooth function.
#include <gtest/gtest.h>

#include <cmath>

#include "NearLD.h"
#include "numerics/Interpolation.h"
#include "numerics/spline.h"

namespace {

// A few dozen operations on values up to 1e3 in long double (epsilon
// 1.1e-19), or a tridiagonal solve of a few dozen rows on values up to 1e2:
// round-off stays below 1e-13 with a margin of some hundreds.
constexpr long double RoundOffTol = 1e-13L;

long double Line(long double x) { return 3.0L * x - 7.0L; }
long double Quad(long double x) { return 2.5L - 1.25L * x + 0.75L * x * x; }
long double Cub(long double x) { return -1.0L + 0.5L * x - 2.0L * x * x + 0.125L * x * x * x; }

// Spline of f through the nodes x[0..n-1]: nodes X, values U, second derivatives S.
template <class F>
void Fit(std::initializer_list<long double> x, F f, matrix<long double>& X, matrix<long double>& U, matrix<long double>& S) {
    X.Resize(static_cast<long>(x.size()), 1);
    U.Resize(X.NRow(), 1);
    long i = 0;
    for (long double xi : x) X(i) = xi, U(i++) = f(xi);
    spline(X, U, S);
}

}  // namespace

TEST(Interpolation, ExactForPolynomialsOfItsDegree) {
    EXPECT_NEAR_LD(SetP(11.0L, 10.0L, 14.0L), 0.75L, RoundOffTol);
    EXPECT_NEAR_LD(SetXN(11.0L, 10.0L, 14.0L), 0.25L, RoundOffTol);
    EXPECT_NEAR_LD(LinearInterpolate(0.25L, 8.0L, 0.75L, 4.0L), 5.0L, RoundOffTol);
    auto z = [](long double x, long double y) { return 1.0L + 2.0L * x - 3.0L * y + 0.5L * x * y; };
    for (long double x : {-1.0L, 0.3L, 1.7L, 2.0L, 3.9L}) {
        EXPECT_NEAR_LD(LinearInterpolate(x, 1.0L, 4.0L, Line(1.0L), Line(4.0L)), Line(x), RoundOffTol);
        EXPECT_NEAR_LD(QuadraticInterpolate(x, -0.5L, 1.0L, 3.0L, Quad(-0.5L), Quad(1.0L), Quad(3.0L)), Quad(x), RoundOffTol);
        EXPECT_NEAR_LD(CubicInterpolate(x, -0.5L, 1.0L, 2.5L, 3.0L, Cub(-0.5L), Cub(1.0L), Cub(2.5L), Cub(3.0L)), Cub(x),
                       RoundOffTol);
        // z = a + b x + c y + d x y is bilinear: a corner in the wrong slot breaks it.
        const long double y = x - 2.0L;
        EXPECT_NEAR_LD(BiLinearInterpolate(x, y, 10.0L, 15.0L, -2.5L, 0.0L, z(10, -2.5L), z(15, -2.5L), z(15, 0), z(10, 0)),
                       z(x, y), RoundOffTol);
    }
    // Hermite: starts at y1 and ends at y2 for any spacing; on a unit grid
    // central differences give the exact slopes of a quadratic, and a cubic
    // piece with exact values and slopes reproduces it.
    long double p0, p1, p2, p3;
    SetP(0.0L, 2.0L, 5.0L, 6.0L, 1.0L, -4.0L, 7.0L, 3.0L, p0, p1, p2, p3);
    EXPECT_NEAR_LD(CubicInterpolate(SetXN(2.0L, 2.0L, 5.0L), p0, p1, p2, p3), -4.0L, RoundOffTol);
    EXPECT_NEAR_LD(CubicInterpolate(SetXN(5.0L, 2.0L, 5.0L), p0, p1, p2, p3), 7.0L, RoundOffTol);
    SetP(3.0L, 4.0L, 5.0L, 6.0L, Quad(3.0L), Quad(4.0L), Quad(5.0L), Quad(6.0L), p0, p1, p2, p3);
    for (long double x : {4.0L, 4.2L, 4.5L, 4.9L, 5.0L})
        EXPECT_NEAR_LD(CubicInterpolate(SetXN(x, 4.0L, 5.0L), p0, p1, p2, p3), Quad(x), RoundOffTol);
}

TEST(Spline, ReproducesQuadraticsAndDegeneratesToLinesBelowFourNodes) {
    // u = 2 x - 0.7 x^2 through the origin has slope 2 there.
    auto u = [](long double x) { return 2.0L * x - 0.7L * x * x; };
    EXPECT_NEAR_LD(Qfun(u(0.4L), 0.4L, u(1.1L), 1.1L), 2.0L, RoundOffTol);
    EXPECT_NEAR_LD(Qfun(u(-0.4L), -0.4L, u(-1.1L), -1.1L), 2.0L, RoundOffTol);
    // The end slopes of Qfun are exact for a quadratic, and a clamped cubic
    // spline with exact end slopes reproduces it on uneven nodes, second
    // derivative 1.5 everywhere; no extrapolation beyond the end nodes.
    matrix<long double> X, U, S(7, 1, 5.0L);
    Fit({0.0L, 0.5L, 1.75L, 2.0L, 3.5L, 4.0L, 6.0L}, Quad, X, U, S);
    for (long double y = -1.0L; y <= 7.0L; y += 0.125L)
        EXPECT_NEAR_LD(Evaluate(X, U, y, S), Quad(std::fmin(std::fmax(y, 0.0L), 6.0L)), RoundOffTol) << y;
    for (long i = 0; i < 7; ++i) EXPECT_NEAR_LD(S(i), 1.5L, RoundOffTol);
    Fit({0.0L, 1.0L, 3.0L}, Quad, X, U, S);
    ASSERT_EQ(S.Length(), 3);
    for (long i = 0; i < 3; ++i) EXPECT_EQ(S(i), 0.0L);
    EXPECT_NEAR_LD(Evaluate(X, U, 2.0L, S), 0.5L * (U(1) + U(2)), RoundOffTol);
}

TEST(Spline, SmoothFunctionWithinTheCubicSplineErrorBound) {
    // Interior: a clamped cubic spline errs by at most 5/384 h^4 max|f''''|
    // (Hall and Meyer 1976); for sin max|f''''| = 1. Near the ends the slope
    // of the three-point quadratic errs by up to h*2h/6 max|f'''|, which
    // moves the spline by at most about h times that: h^3/3 in all. The end
    // error decays by 2 - sqrt(3) per node, so 8 intervals in it is gone.
    // Halving h must cut the error by about 2^3 at the ends; 6 leaves room
    // for the not yet asymptotic coarse grid.
    long double all[2] = {0, 0};
    for (int halve = 0; halve < 2; ++halve) {
        const long n = halve ? 61 : 31;
        const long double h = 3.0L / (n - 1);
        matrix<long double> X(n, 1), U(n, 1), S;
        for (long i = 0; i < n; ++i) X(i) = i * h, U(i) = std::sin(X(i));
        spline(X, U, S);
        long double interior = 0.0L;
        for (long j = 0; j <= 20 * (n - 1); ++j) {
            const long double y = j * h / 20.0L, e = std::fabs(Evaluate(X, U, y, S) - std::sin(y));
            all[halve] = std::fmax(all[halve], e);
            if (y > 8.0L * h && y < 3.0L - 8.0L * h) interior = std::fmax(interior, e);
        }
        EXPECT_LE(interior, 5.0L / 384.0L * h * h * h * h);
        EXPECT_LE(all[halve], 5.0L / 384.0L * h * h * h * h + h * h * h / 3.0L);
    }
    EXPECT_GT(all[0] / all[1], 6.0L);
}

TEST(SplineDeath, MismatchedOrEmptyArraysStopTheRun) {
    matrix<long double> X(5, 1, 1.0L), U(4, 1, 1.0L), S, empty;
    EXPECT_EXIT(spline(X, U, S), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> SPLINE: FEWER VALUES \\(4\\) THAN NODES \\(5\\)!");
    EXPECT_EXIT(Evaluate(empty, empty, 1.0L, S), ::testing::ExitedWithCode(1), "Orvo: Error -> SPLINE EVALUATION: NO NODES!");
    EXPECT_EXIT(Evaluate(X, X, 1.5L, S), ::testing::ExitedWithCode(1),
                "Error -> SPLINE EVALUATION: FEWER VALUES OR SECOND DERIVATIVES THAN NODES!");
}
