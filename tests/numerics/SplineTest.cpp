#include <gtest/gtest.h>

#include "NearLD.h"

#include <cmath>

#include "numerics/matrix.h"
#include "numerics/spline.h"

namespace {

// Values of order 1 to 1e2 through a tridiagonal solve of a few dozen rows:
// long double round-off stays far below 1e-13.
constexpr long double RoundOffTol = 1e-13L;

void Nodes(const long double* x, long n, long double (*f)(long double), matrix<long double>& X,
           matrix<long double>& U)
{
    X.Resize(n, 1);
    U.Resize(n, 1);
    for (long i = 0; i < n; ++i) {
        X(i) = x[i];
        U(i) = f(x[i]);
    }
}

long double Quad(long double x) { return 4.0L - 3.0L * x + 0.5L * x * x; }
long double Sin(long double x) { return std::sin(x); }

// Largest error of the spline of sin on [0, 3] with n nodes, and the same
// away from the ends (at least 8 intervals in).
void SinError(long n, long double& all, long double& interior)
{
    const long double h = 3.0L / (n - 1);
    matrix<long double> X(n, 1), U(n, 1), S;
    for (long i = 0; i < n; ++i) {
        X(i) = i * h;
        U(i) = std::sin(X(i));
    }
    spline(X, U, S);
    all = interior = 0.0L;
    for (long j = 0; j <= 20 * (n - 1); ++j) {
        const long double y = j * h / 20.0L;
        const long double e = std::fabs(Evaluate(X, U, y, S) - std::sin(y));
        all = std::fmax(all, e);
        if (y > 8.0L * h && y < 3.0L - 8.0L * h) interior = std::fmax(interior, e);
    }
}

}  // namespace

TEST(Spline, QfunIsTheEndSlopeOfAQuadratic)
{
    // u = 2 x - 0.7 x^2 through the origin: slope 2 at the origin.
    auto u = [](long double x) { return 2.0L * x - 0.7L * x * x; };
    EXPECT_NEAR_LD(Qfun(u(0.4L), 0.4L, u(1.1L), 1.1L), 2.0L, RoundOffTol);
    EXPECT_NEAR_LD(Qfun(u(-0.4L), -0.4L, u(-1.1L), -1.1L), 2.0L, RoundOffTol);
}

TEST(Spline, ThreeNodesOrFewerLeaveZeroSecondDerivativesAndLinearPieces)
{
    const long double x[] = {0.0L, 1.0L, 3.0L};
    matrix<long double> X, U, S(7, 1, 5.0L);
    Nodes(x, 3, Quad, X, U);
    spline(X, U, S);
    ASSERT_EQ(S.Length(), 3);
    for (long i = 0; i < 3; ++i) EXPECT_NEAR_LD(S(i), 0.0L, RoundOffTol);
    EXPECT_NEAR_LD(Evaluate(X, U, 2.0L, S), 0.5L * (U(1) + U(2)), RoundOffTol);
}

TEST(Spline, ReproducesQuadraticOnUnevenNodesAndHitsEveryNode)
{
    // The end slopes of Qfun are exact for a quadratic, and a clamped cubic
    // spline with exact end slopes reproduces any cubic.
    const long double x[] = {0.0L, 0.5L, 1.75L, 2.0L, 3.5L, 4.0L, 6.0L};
    matrix<long double> X, U, S;
    Nodes(x, 7, Quad, X, U);
    spline(X, U, S);
    for (long double y = 0.0L; y <= 6.0L; y += 0.125L)
        EXPECT_NEAR_LD(Evaluate(X, U, y, S), Quad(y), RoundOffTol) << y;
    for (long i = 0; i < 7; ++i) EXPECT_NEAR_LD(Evaluate(X, U, X(i), S), U(i), RoundOffTol);
    // The second derivative of the quadratic is 1 everywhere.
    for (long i = 0; i < 7; ++i) EXPECT_NEAR_LD(S(i), 1.0L, RoundOffTol);
}

TEST(Spline, NoExtrapolationBeyondTheEndNodes)
{
    const long double x[] = {1.0L, 2.0L, 3.0L, 4.0L, 5.0L};
    matrix<long double> X, U, S;
    Nodes(x, 5, Sin, X, U);
    spline(X, U, S);
    EXPECT_NEAR_LD(Evaluate(X, U, -10.0L, S), U(0), RoundOffTol);
    EXPECT_NEAR_LD(Evaluate(X, U, 5.0001L, S), U(4), RoundOffTol);
}

TEST(Spline, SmoothFunctionWithinTheCubicSplineErrorBound)
{
    // Interior: a clamped cubic spline errs by at most 5/384 h^4 max|f''''|
    // (Hall and Meyer 1976); for sin max|f''''| = 1. Near the ends the slope
    // of the three-point quadratic errs by up to h*2h/6 max|f'''|, which
    // moves the spline by at most about h times that: h^3/3 in all. The end
    // error decays by 2 - sqrt(3) per node, so 8 intervals in it is gone.
    long double all = 0.0L, interior = 0.0L;
    const long n = 31;
    const long double h = 3.0L / (n - 1);
    SinError(n, all, interior);
    EXPECT_LE(interior, 5.0L / 384.0L * h * h * h * h);
    EXPECT_LE(all, 5.0L / 384.0L * h * h * h * h + h * h * h / 3.0L);

    // Halving h must cut the error by about 2^3 at the ends; 6 leaves room
    // for the not yet asymptotic coarse grid.
    long double all2 = 0.0L, interior2 = 0.0L;
    SinError(2 * n - 1, all2, interior2);
    EXPECT_GT(all / all2, 6.0L);
}

TEST(SplineDeath, MismatchedOrEmptyArraysStopTheRun)
{
    matrix<long double> X(5, 1, 1.0L), U(4, 1, 1.0L), S, empty;
    EXPECT_EXIT(spline(X, U, S), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> SPLINE: FEWER VALUES \\(4\\) THAN NODES \\(5\\)!");
    EXPECT_EXIT(Evaluate(empty, empty, 1.0L, S), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> SPLINE EVALUATION: NO NODES!");
    EXPECT_EXIT(Evaluate(X, X, 1.5L, S), ::testing::ExitedWithCode(1),
                "Error -> SPLINE EVALUATION: FEWER VALUES OR SECOND DERIVATIVES THAN NODES!");
}
