// The direct solvers and the norm: solutions and inverses against A x = b
// and A X = I, the LU factors against a textbook elimination, and the
// singular, semi-definite and misuse paths.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "NearLD.h"
#include "NumericsSupport.h"
#include "TestSupport.h"
#include "numerics/chr.h"
#include "numerics/inv.h"
#include "numerics/lur.h"
#include "numerics/norm.h"

using namespace orvotest;

namespace {

// Normwise relative residual |A X - B| / (|A| |X|) allowed. Backward
// stability of LU with partial pivoting and of Cholesky bounds it by about
// n u times a small growth factor (below 2 for the diagonally dominant
// matrices here); with the long double round-off u = 5.4e-20 that is 5e-17
// for n = 1000, and 2e-18 for n = 40, where a solver rounding through double
// (u = 1.1e-16) would land near 1e-16.
constexpr long double ResidualTol = 1e-15L;
constexpr long double ExtendedResidualTol = 1e-17L;
// A handful of exact operations on small integers and halves.
constexpr long double HandTol = 1e-18L;

// Random n by m matrix with entries in [-1, 1]; `dominant` lets the
// diagonal outweigh its row and column (regular, well conditioned, no growth
// in LU), `symmetric` also makes it symmetric, hence positive definite.
matrix<long double> Random(long n, long m, unsigned seed, bool dominant = false, bool symmetric = false) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    matrix<long double> A(n, m);
    for (long k = 0; k < n * m; ++k) A(k) = static_cast<long double>(u(gen));
    for (long i = 0; i < n && dominant; ++i) {
        A(i, i) = 1.0L;
        for (long j = 0; j < m; ++j) {
            if (symmetric && j < i) A(i, j) = A(j, i);
            if (j != i) A(i, i) += std::fabs(A(i, j)) + std::fabs(A(j, i));
        }
    }
    return A;
}

// Backward error |A X - B| / (|A| |X|) in the infinity norm of X as a
// solution of A X = B; no B stands for the unit matrix, X then being an inverse.
long double Residual(const matrix<long double>& A, const matrix<long double>& X, matrix<long double> B = {}) {
    if (B.Length() == 0) B = I(A.r, 1.0L);
    const matrix<long double> R = A * X;
    auto norm = [](const matrix<long double>& M, const matrix<long double>* Sub) {
        long double best = 0.0L;
        for (long i = 0; i < M.r; ++i) {
            long double s = 0.0L;
            for (long j = 0; j < M.c; ++j) s += std::fabs(M(i, j) - (Sub ? (*Sub)(i, j) : 0.0L));
            best = std::fmax(best, s);
        }
        return best;
    };
    return norm(R, &B) / (norm(A, nullptr) * norm(X, nullptr));
}

}  // namespace

TEST(Solvers, LuAndCholeskySolveInvertAndAgreeOnTheDeterminant) {
    const matrix<long double> A = Random(1000, 1000, 1, true, true), b = A * Random(1000, 1, 2);
    lur<long double> lu;
    chr<long double> ch;
    lu.dcmp(A);
    ch.dcmp(A);
    EXPECT_LT(std::fmax(Residual(A, lu.solve(b), b), Residual(A, ch.solve(b), b)), ResidualTol);
    // 40 unknowns: whole inverses, from both sides, at extended precision.
    const matrix<long double> S = Random(40, 40, 3, true, true), D = Random(40, 40, 4, true), bs = S * Random(40, 1, 5);
    matrix<long double> N(40, 40);  // D upside down: every column needs a row exchange
    for (long k = 0; k < 1600; ++k) N(k) = D(39 - k / 40, k % 40);
    ch.dcmp(S);
    lu.dcmp(S);
    EXPECT_LT(std::fmax(Residual(S, lu.solve(bs), bs), Residual(S, ch.solve(bs), bs)), ExtendedResidualTol);
    EXPECT_LT(Residual(S, ch.inv()), ExtendedResidualTol);
    EXPECT_LT(Residual(ch.GetL(), tr(ch.GetL()), S), ExtendedResidualTol);
    // Products over 40 diagonals of size ~20: compared relatively.
    EXPECT_NEAR_LD(ch.det() / lu.det(), 1.0L, ExtendedResidualTol * 40);
    lu.dcmp(N);
    const matrix<long double> X = lu.inv();
    EXPECT_LT(std::fmax(Residual(N, X), Residual(X, N)), ExtendedResidualTol);

    // det [[0 2 1] [1 1 0] [3 0 1]] = -5 by cofactors along the first row;
    // it needs a row exchange at once. b = A (1 1 1).
    lu.dcmp(Mat<long double>(3, 3, {0, 2, 1, 1, 1, 0, 3, 0, 1}));
    const matrix<long double> x = lu.solve(Mat<long double>(3, 1, {3, 2, 4}));
    EXPECT_NEAR_LD(std::fabs(lu.det() + 5.0L) + std::fabs(x(0) - 1) + std::fabs(x(1) - 1) + std::fabs(x(2) - 1), 0.0L, HandTol);
    // [[1 2] [2 4]]: the last pivot is exactly 0, is not tested, and only
    // the substitution meets it.
    lu.dcmp(Mat<long double>(2, 2, {1, 2, 2, 4}));
    EXPECT_TRUE(lu.U(1, 1) == 0.0L && !std::isfinite(lu.solve(matrix<long double>(2, 1, 1.0L))(0)));
}

TEST(Solvers, LuFactorsAreThoseOfPlainDoolittleElimination) {
    // The factors feed the static solution, whose printed digits depend on
    // the order of every rounding. A textbook right-looking elimination with
    // partial pivoting (first of equal maxima wins) is the reference; the
    // blocked factorisation must agree with it exactly, for sizes around its
    // blocks of four.
    lur<long double> lu;
    for (long n : {1L, 2L, 3L, 4L, 5L, 6L, 9L, 37L}) {
        matrix<long double> A = Random(n, n, 42 + n);
        if (n >= 3) A(1, 0) = A(2, 0) = 2.0L;  // a tie: the first row found must win
        matrix<long double> W(A);
        matrix<long> perm(n);
        short sgn = 1;
        for (long i = 0; i < n; ++i) perm(i) = i;
        for (long j = 0; j + 1 < n; ++j) {
            long p = j;
            for (long i = j + 1; i < n; ++i) p = std::fabs(W(i, j)) > std::fabs(W(p, j)) ? i : p;
            sgn = static_cast<short>(p != j ? -sgn : sgn);
            for (long k = 0; k < n && p != j; ++k) SWAP(W(p, k), W(j, k));
            SWAP(perm(p), perm(j));
            for (long i = j + 1; i < n; ++i)
                for (long k = j; k < n; ++k) W(i, k) = k == j ? W(i, j) / W(j, j) : W(i, k) - W(i, j) * W(j, k);
        }
        lu.dcmp(A);
        const matrix<long double> L = lu.GetL(), U = lu.GetU();
        const matrix<long> P = lu.GetP();
        EXPECT_EQ(lu.sign, sgn) << "n = " << n;
        for (long k = 0; k < n * n; ++k) {
            const long i = k / n, j = k % n;
            EXPECT_TRUE(P(i) == perm(i) && L(k) == (i > j ? W(k) : i == j ? 1.0L : 0.0L) && U(k) == (i <= j ? W(k) : 0.0L)) << "n = " << n << " at " << i << "," << j;
        }
    }
}

TEST(Solvers, CholeskyOfSemiDefiniteAndAllColumnSubstitutions) {
    // [[1 1 0] [1 1 0] [0 0 4]] has rank 2: the second pivot is exactly 0,
    // its column is set to 0, so L stays finite and L L^T is still A.
    chr<long double> ch;
    ch.dcmp(Mat<long double>(3, 3, {1, 1, 0, 1, 1, 0, 0, 0, 4}));
    EXPECT_TRUE(Equals(ch.GetL(), {1, 0, 0, 1, 0, 0, 0, 0, 2}) && ch.det() == 0.0L);
    // A slightly negative pivot, -5e-14, counts as 0 and does not stop.
    ch.dcmp(Mat<long double>(2, 2, {1, 1, 1, 1.0L - 5e-14L}));
    EXPECT_EQ(ch.L(1, 1), 0.0L);

    // The all-columns forms repeat each column's operations in the same
    // order, so they must agree bit for bit with the column form; six
    // columns are a block of four and a remainder of two. The second right
    // side has zero rows on top of each block (3 over the four, 1 over the
    // two), where the all-columns form starts its sums later.
    ch.dcmp(Random(6, 6, 10, true, true));
    matrix<long double> B = Random(6, 6, 9);
    for (int zeroTop = 0; zeroTop < 2; ++zeroTop) {
        for (long i = 0; i < 3 * zeroTop; ++i)
            for (long j = 0; j < 6; ++j)
                if (j < 4 || i == 0) B(i, j) = 0.0L;
        matrix<long double> Y1(6, 6), Y2(6, 6), X1(6, 6), X2(6, 6);
        for (long J = 0; J < 6; ++J) solveL(ch.L, B, Y1, J);
        solveL(ch.L, B, Y2);
        for (long J = 0; J < 6; ++J) solveU(ch.L, Y1, X1, J);
        solveU(ch.L, Y2, X2);
        for (long k = 0; k < 36; ++k)
            EXPECT_TRUE(Y1(k) == Y2(k) && std::signbit(Y1(k)) == std::signbit(Y2(k)) && X1(k) == X2(k))
                << zeroTop << " " << k;
    }
}

TEST(Inv, InvertsRegularMatricesAndGivesUpOnSingularOnes) {
    const matrix<long double> A = Random(8, 8, 11, true);
    invns::IsSingular = true;  // a stale flag must be cleared
    EXPECT_TRUE(Residual(A, inv(A)) < ExtendedResidualTol && !invns::IsSingular);
    // Only the leading 3 by 3 block counts with dim = 3, of a wide matrix.
    matrix<long double> W(3, 5, 7.0L), B(3, 3);
    for (long k = 0; k < 9; ++k) W(k / 3, k % 3) = B(k) = A(k / 3, k % 3);
    const matrix<long double> XB = inv(W, 3);
    EXPECT_TRUE(XB.NRow() == 3 && XB.NCol() == 3 && Residual(B, XB) < ExtendedResidualTol);
    EXPECT_TRUE(Equals(inv(Mat<long double>(2, 2, {0, 1, 2, 0})), {0, 0.5L, 1, 0}));  // row exchange
    EXPECT_TRUE(Equals(inv(I(3L, 2.0L), 1), {0.5L}));  // the reciprocal, no pivot test
    orvotest::Capture out(std::cout);
    std::cout.unsetf(std::ios::floatfield);  // the pivot is printed in the stream's own notation
    EXPECT_TRUE(std::isinf(inv(matrix<long double>(1, 1, 0.0L))(0)) && !invns::IsSingular);
    // First column zero: no pivot at all, the unit matrix comes back as is.
    // Middle column zero: [[2 0 1] [4 0 3] [1 0 5]]: column 0 is reduced
    // (rows 0 and 1 exchanged, rows 1 and 2 lose 1/2 and 1/4 of the new row
    // 0), then column 1 has no pivot. Both give up without a word.
    EXPECT_TRUE(Equals(inv(Mat<long double>(3, 3, {0, 0, 0, 0, 1, 0, 0, 0, 1})), {1, 0, 0, 0, 1, 0, 0, 0, 1}) && invns::IsSingular);
    EXPECT_TRUE(Equals(inv(Mat<long double>(3, 3, {2, 0, 1, 4, 0, 3, 1, 0, 5})), {0, 1, 0, 1, -0.5L, 0, 0, -0.25L, 1}) && invns::IsSingular);
    EXPECT_EQ(out.Text(), "");
    // [[1 2] [2 4]]: after the exchange the last row is 0, which is told.
    EXPECT_TRUE(inv(Mat<long double>(2, 2, {1, 2, 2, 4})).Length() == 4 && invns::IsSingular);
    EXPECT_EQ(out.Text(), MatrixWarning("Function:   inv\nMatrix is SINGULAR:          0 10**-15     1\n\n"));
}

TEST(Subnorm, KindsAgainstHandValuesAndWarnings) {
    // (3, -4, 12, 100): |3|+|-4| = 7, hypot(3, 4) = 5, hypot(5, 12) = 13;
    // p is used by kind 2 only, and the elements behind nr stay out.
    const matrix<long double> v = Mat<long double>(4, 1, {3, -4, 12, 100});
    const struct { int kind; long nr; long double p, expect; } cases[] = {
        {0, 2, 0, 7}, {1, 2, 0, 5}, {1, 3, 7, 13}, {2, 2, 3, std::cbrt(91.0L)}, {2, 3, 2, 13}, {1000, 3, 0, 12},
        {64536, 3, 0, 3}, {0, 0, 2, 0}, {1, 0, 2, 0}, {2, 0, 2, 0}, {1, 4, 0, std::sqrt(10169.0L)}};
    for (const auto& c : cases) {
        normns::norm = c.kind;
        EXPECT_NEAR_LD(subnorm(v, c.nr, c.p), c.expect, HandTol) << c.kind << " " << c.nr;
        EXPECT_NEAR_LD(subnorm(tr(v), c.nr, c.p), c.expect, HandTol) << "row vector";
    }
    normns::norm = 7;
    orvotest::Capture out(std::cout);
    EXPECT_NEAR_LD(subnorm(Mat<long double>(2, 1, {6, 8}), 2, 0), 10.0L, HandTol);
    EXPECT_EQ(normns::norm, 1);  // reset for this and all later calls
    EXPECT_EQ(subnorm(I(2L, 1.0L), 2, 0), 0.0L);
    EXPECT_EQ(out.Text(), MatrixWarning("Function:   norm\nNORM type is not properly set - Using default NORM2!\n\n") +
                              "Continuing program...\n\n" + MatrixWarning("Function:   norm\nMatrix norm is not evaluated!\n\n") +
                              "Continuing program...\n\n");
}

TEST(SolverDeath, SingularIndefiniteAndMisuseStopWithReports) {
    lur<long double> lu;
    chr<long double> ch;
    // Column 1 zero: the second pivot has nothing. 5e-14 is just under the threshold.
    const std::string sing = "Function:   lur::dcmp(A)\n\t\tMatrix is SINGULAR!\n\n", undef = " is not defined:  [    0,    0]\n\n";
    EXPECT_MATRIX_DEATH(lu.dcmp(Mat<long double>(3, 3, {2, 0, 1, 1, 0, 3, 1, 0, 1})), sing);
    EXPECT_MATRIX_DEATH(lu.dcmp(Mat<long double>(2, 2, {5e-14L, 0, 0, 1})), sing);
    EXPECT_MATRIX_DEATH((void)inv(matrix<long double>(2, 3, 1.0L)), "Function:   inv\nMatrix is not square:  [    2,    3]\n\n");
    EXPECT_MATRIX_DEATH((void)inv(matrix<long double>()), "Function:   inv\nMatrix" + undef);
    EXPECT_MATRIX_DEATH((void)inv(matrix<long double>(4, 3, 1.0L), 4), "Function:   inv\nDimension of submatrix inproper:  [    0,   -1]\n\n");
    EXPECT_MATRIX_DEATH((void)subnorm(matrix<long double>(), 0, 2), "Function:   subnorm\nMatrix/Vector" + undef);
    // [[1 2] [2 1]]: the second pivot is 1 - 4 = -3, and the log line names it.
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); ch.dcmp(Mat<long double>(2, 2, {1, 2, 2, 1})); }, ::testing::ExitedWithCode(1),
                "k = 1  s = -3\n" + MatrixErrorReport("Function:   chr::dcmp(A)\n\t\tMatrix is not POSITIVE SEMI-DEFINIT!\n\n"));
}
