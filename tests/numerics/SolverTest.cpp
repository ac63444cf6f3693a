// The direct solvers and the norm: solutions and inverses against A x = b
// and A X = I, the factors against A itself, and the singular, semi-definite
// and misuse paths with their framed reports.
#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <limits>
#include <random>
#include <string>

#include "numerics/chr.h"
#include "numerics/inv.h"
#include "numerics/lur.h"
#include "numerics/matrix.h"
#include "numerics/norm.h"
#include "numerics/solveL.h"
#include "numerics/solveU.h"

#include "MatrixReport.h"
#include "numerics/NearLD.h"

namespace {

// Normwise relative residual allowed for the random well-conditioned
// systems. Backward stability of LU with partial pivoting and of Cholesky
// bounds |b - A x| by about n * u * |A| |x| times a small growth factor;
// with the long double unit round-off u = 5.4e-20 and n up to 1000 that is
// 5e-17, so 1e-15 holds with room for the growth of the diagonally
// dominant matrices (below 2).
constexpr long double ResidualTol = 1e-15L;

// For n = 40 the same bound is 40 * 5.4e-20 = 2e-18. A solver that rounded
// through double (u = 1.1e-16) would land near 1e-16 and fail this.
constexpr long double ExtendedResidualTol = 1e-17L;

// Results of a few exact operations on small integers and halves: round-off
// of a handful of long double operations, far below any real error.
constexpr long double HandTol = 1e-18L;

using orvotest::MatrixErrorReport;
const std::string& Stars = orvotest::MatrixStars;

// Random matrix with entries in [-1, 1] and a diagonal that dominates its
// row: regular, condition number small, LU needs no growth.
matrix<long double> DiagonallyDominant(long n, unsigned seed)
{
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    matrix<long double> A(n, n);
    for (long i = 0; i < n; ++i) {
        long double rowSum = 0.0L;
        for (long j = 0; j < n; ++j) {
            A(i, j) = static_cast<long double>(u(gen));
            rowSum += std::fabs(A(i, j));
        }
        A(i, i) = rowSum + 1.0L;
    }
    return A;
}

// Symmetric positive definite: symmetric part of a dominant matrix.
matrix<long double> SymmetricPositive(long n, unsigned seed)
{
    const matrix<long double> B = DiagonallyDominant(n, seed);
    matrix<long double> A(n, n);
    for (long i = 0; i < n; ++i)
        for (long j = 0; j < n; ++j) A(i, j) = 0.5L * (B(i, j) + B(j, i));
    for (long i = 0; i < n; ++i) {
        long double off = 0.0L;
        for (long j = 0; j < n; ++j)
            if (j != i) off += std::fabs(A(i, j));
        A(i, i) = off + 1.0L;
    }
    return A;
}

matrix<long double> RandomVector(long n, unsigned seed)
{
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(-100.0, 100.0);
    matrix<long double> x(n);
    for (long i = 0; i < n; ++i) x(i) = static_cast<long double>(u(gen));
    return x;
}

long double InfNorm(const matrix<long double>& A)
{
    long double best = 0.0L;
    for (long i = 0; i < A.r; ++i) {
        long double s = 0.0L;
        for (long j = 0; j < A.c; ++j) s += std::fabs(A(i, j));
        best = std::fmax(best, s);
    }
    return best;
}

// |A x - b|_inf / (|A|_inf |x|_inf): the backward error of x.
long double RelativeResidual(const matrix<long double>& A, const matrix<long double>& x,
                             const matrix<long double>& b)
{
    const matrix<long double> r = A * x;
    long double res = 0.0L;
    for (long i = 0; i < b.r; ++i) res = std::fmax(res, std::fabs(r(i) - b(i)));
    return res / (InfNorm(A) * InfNorm(x));
}

// Backward error of columns of an inverse: |A X(:,j) - e_j| / (|A| |X(:,j)|).
long double InverseColumnResidual(const matrix<long double>& A, const matrix<long double>& X, long j)
{
    const long n = A.r;
    matrix<long double> x(n);
    for (long i = 0; i < n; ++i) x(i) = X(i, j);
    matrix<long double> e(n, 1, 0.0L);
    e(j) = 1.0L;
    return RelativeResidual(A, x, e);
}

bool AllFinite(const matrix<long double>& m)
{
    for (long k = 0; k < m.Length(); ++k)
        if (!std::isfinite(m(k))) return false;
    return true;
}

}  // namespace

TEST(Lur, SolvesAndInvertsThousandUnknowns)
{
    const long n = 1000;
    const matrix<long double> A = DiagonallyDominant(n, 1);
    const matrix<long double> x0 = RandomVector(n, 2);
    const matrix<long double> b = A * x0;
    lur<long double> lu;
    lu.dcmp(A);
    const matrix<long double> x = lu.solve(b);
    ASSERT_EQ(x.NRow(), n);
    ASSERT_EQ(x.NCol(), 1);
    EXPECT_LT(RelativeResidual(A, x, b), ResidualTol);

    const matrix<long double> X = lu.inv();
    ASSERT_EQ(X.NRow(), n);
    ASSERT_EQ(X.NCol(), n);
    // A full A X costs a billion products; columns at both ends and inside
    // exercise every stage of the substitutions.
    for (long j : {0L, 1L, 499L, 998L, 999L})
        EXPECT_LT(InverseColumnResidual(A, X, j), ResidualTol) << "column " << j;
}

TEST(Lur, SmallSystemsKeepExtendedPrecisionAndFactorsRebuildA)
{
    const long n = 40;
    const matrix<long double> A = DiagonallyDominant(n, 3);
    const matrix<long double> A0(A);
    const matrix<long double> b = A * RandomVector(n, 4);
    lur<long double> lu;
    lu.dcmp(A);
    for (long k = 0; k < A.Length(); ++k) ASSERT_EQ(A(k), A0(k)) << "dcmp changed its input";
    EXPECT_LT(RelativeResidual(A, lu.solve(b), b), ExtendedResidualTol);

    // A X = I and X A = I in full.
    const matrix<long double> X = lu.inv();
    const matrix<long double> AX = A * X, XA = X * A;
    const long double scale = InfNorm(A) * InfNorm(X);
    for (long i = 0; i < n; ++i)
        for (long j = 0; j < n; ++j) {
            const long double e = (i == j) ? 1.0L : 0.0L;
            EXPECT_LT(std::fabs(AX(i, j) - e), ExtendedResidualTol * scale);
            EXPECT_LT(std::fabs(XA(i, j) - e), ExtendedResidualTol * scale);
        }

    // L U is A with its rows in the order of P.
    const matrix<long double> LU = lu.GetL() * lu.GetU();
    const matrix<long> P = lu.GetP();
    for (long i = 0; i < n; ++i)
        for (long j = 0; j < n; ++j)
            EXPECT_LT(std::fabs(LU(i, j) - A(P(i), j)), ExtendedResidualTol * InfNorm(A));
}

TEST(Lur, FactorsAreThoseOfPlainDoolittleElimination)
{
    // The factors feed the static solution, whose printed digits depend on
    // the order of every rounding. A textbook right-looking elimination with
    // partial pivoting (first of equal maxima wins) is the reference; the
    // factorisation must agree with it exactly, for sizes around its blocking.
    std::mt19937_64 gen(42);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (long n : {1L, 2L, 3L, 4L, 5L, 6L, 9L, 37L}) {
        matrix<long double> A(n, n);
        for (long k = 0; k < n * n; ++k) A(k) = static_cast<long double>(u(gen));
        if (n >= 3) A(1, 0) = A(2, 0) = 2.0L;  // a tie: the first row found must win
        matrix<long double> W(A);
        matrix<long> perm(n);
        for (long i = 0; i < n; ++i) perm(i) = i;
        short sgn = 1;
        for (long j = 0; j + 1 < n; ++j) {
            long p = j;
            for (long i = j + 1; i < n; ++i)
                if (std::fabs(W(i, j)) > std::fabs(W(p, j))) p = i;
            if (p != j) {
                sgn = static_cast<short>(-sgn);
                for (long k = 0; k < n; ++k) SWAP(W(p, k), W(j, k));
                SWAP(perm(p), perm(j));
            }
            for (long i = j + 1; i < n; ++i) {
                W(i, j) /= W(j, j);
                for (long k = j + 1; k < n; ++k) W(i, k) -= W(i, j) * W(j, k);
            }
        }
        lur<long double> lu;
        lu.dcmp(A);
        EXPECT_EQ(lu.sign, sgn) << "n = " << n;
        const matrix<long double> L = lu.GetL(), U = lu.GetU();
        for (long i = 0; i < n; ++i) {
            EXPECT_EQ(lu.P(i), perm(i)) << "n = " << n;
            for (long j = 0; j < n; ++j) {
                EXPECT_EQ(L(i, j), i > j ? W(i, j) : (i == j ? 1.0L : 0.0L)) << "n = " << n;
                EXPECT_EQ(U(i, j), i <= j ? W(i, j) : 0.0L) << "n = " << n;
            }
        }
    }
}

TEST(Lur, PivotingSignAndDeterminant)
{
    // Needs a row exchange at once: det [[0 2 1] [1 1 0] [3 0 1]] = -5 by
    // cofactors along the first row: 0 - 2 (1 - 0) + 1 (0 - 3).
    matrix<long double> A(3, 3);
    const long double a[] = {0, 2, 1, 1, 1, 0, 3, 0, 1};
    for (long k = 0; k < 9; ++k) A(k) = a[k];
    lur<long double> lu;
    lu.dcmp(A);
    EXPECT_EQ(lu.P(0), 2);  // the largest entry of column 0 is in row 2
    EXPECT_NEAR_LD(lu.det(), -5.0L, HandTol);
    matrix<long double> b(3);
    b(0) = 3;  // A (1 1 1)
    b(1) = 2;
    b(2) = 4;
    const matrix<long double> x = lu.solve(b);
    for (long i = 0; i < 3; ++i) EXPECT_NEAR_LD(x(i), 1.0L, HandTol);

    // The factors are rebuilt by a second dcmp of another size.
    lu.dcmp(I(2L, 4.0L));
    EXPECT_EQ(lu.N, 2);
    EXPECT_EQ(lu.sign, 1);
    EXPECT_NEAR_LD(lu.det(), 16.0L, HandTol);
    const matrix<long double> Xi = lu.inv();
    EXPECT_NEAR_LD(Xi(1, 1), 0.25L, HandTol);
    EXPECT_NEAR_LD(Xi(0, 1), 0.0L, HandTol);

    // A 1 by 1 system is factored without any pivot test.
    lu.dcmp(matrix<long double>(1, 1, 8.0L));
    EXPECT_NEAR_LD(lu.solve(matrix<long double>(1, 1, 2.0L))(0), 0.25L, HandTol);
}

TEST(Lur, ZeroLastPivotIsNotTestedAndSolveDivides)
{
    // [[1 2] [2 4]]: after the exchange the last pivot is 4 - 0.5 * 4 * 2...
    // exactly 0, and only the substitution meets it.
    matrix<long double> A(2, 2);
    A(0, 0) = 1;
    A(0, 1) = 2;
    A(1, 0) = 2;
    A(1, 1) = 4;
    lur<long double> lu;
    lu.dcmp(A);
    EXPECT_EQ(lu.U(1, 1), 0.0L);
    EXPECT_FALSE(AllFinite(lu.solve(matrix<long double>(2, 1, 1.0L))));
}

TEST(LurDeath, SingularAndMisuseStopWithReports)
{
    lur<long double> lu;
    matrix<long double> Z(3, 3, 1.0L);
    for (long i = 0; i < 3; ++i) Z(i, 1) = 0.0L;
    Z(0, 0) = 2.0L;
    Z(1, 2) = 3.0L;  // column 1 is zero: the second pivot has nothing
    EXPECT_MATRIX_DEATH(lu.dcmp(Z), MatrixErrorReport("Function:   lur::dcmp(A)\n\t\tMatrix is SINGULAR!\n\n"));
    // A pivot column just under the threshold is singular too.
    matrix<long double> T = I(2L, 1.0L);
    T(0, 0) = 5e-14L;
    EXPECT_MATRIX_DEATH(lu.dcmp(T), MatrixErrorReport("Function:   lur::dcmp(A)\n\t\tMatrix is SINGULAR!\n\n"));

    EXPECT_MATRIX_DEATH(lu.dcmp(matrix<long double>()),
                        MatrixErrorReport("Function:   lu::dcmp(A)\n\t\tMatrix is not set!\n\n"));
    EXPECT_MATRIX_DEATH(
        lu.dcmp(matrix<long double>(2, 3, 1.0L)),
        MatrixErrorReport("Function:   lu::dcmp(A)\n\t\t#Row != #Cols -> Underdetermined/overdetermined system!\n\n"));
    EXPECT_MATRIX_DEATH(
        static_cast<void>(lu.inv()),
        MatrixErrorReport("Function:   lu::inv\nSistem has not been decomposed yet (run lu::dcmp(A,f) or lu::dcmp(A))!\n\n"));
    lu.dcmp(I(3L, 1.0L));
    EXPECT_MATRIX_DEATH(static_cast<void>(lu.solve(matrix<long double>(2, 1, 1.0L))),
                        MatrixErrorReport("Function:   lur::solve(b,x)\n\t\tVector b is not of proper size!\n\n"));
}

TEST(Chr, SolvesAndInvertsPositiveDefiniteSystems)
{
    const long n = 300;
    const matrix<long double> A = SymmetricPositive(n, 5);
    const matrix<long double> b = A * RandomVector(n, 6);
    chr<long double> ch;
    ch.dcmp(A);
    EXPECT_LT(RelativeResidual(A, ch.solve(b), b), ResidualTol);
    const matrix<long double> X = ch.inv();
    for (long j : {0L, 150L, 299L}) EXPECT_LT(InverseColumnResidual(A, X, j), ResidualTol) << "column " << j;

    // Cholesky and LU see the same determinant; both are products over
    // 40 diagonals of size ~20, so compare relatively.
    const matrix<long double> S = SymmetricPositive(40, 7);
    ch.dcmp(S);
    lur<long double> lu;
    lu.dcmp(S);
    EXPECT_NEAR_LD(ch.det() / lu.det(), 1.0L, ExtendedResidualTol * 40);
    const matrix<long double> L = ch.GetL();
    const matrix<long double> LLt = L * tr(L);
    for (long k = 0; k < S.Length(); ++k) EXPECT_LT(std::fabs(LLt(k) - S(k)), ExtendedResidualTol * InfNorm(S));
    const matrix<long double> bs = S * RandomVector(40, 8);
    EXPECT_LT(RelativeResidual(S, ch.solve(bs), bs), ExtendedResidualTol);
    const matrix<long double> XS = ch.inv(), SX = S * XS;
    for (long i = 0; i < 40; ++i)
        for (long j = 0; j < 40; ++j)
            EXPECT_LT(std::fabs(SX(i, j) - (i == j ? 1.0L : 0.0L)), ExtendedResidualTol * InfNorm(S) * InfNorm(XS));
}

TEST(Chr, SemiDefiniteMatrixIsFactoredWithZeroPivot)
{
    // [[1 1 0] [1 1 0] [0 0 4]] has rank 2: the second pivot is exactly 0.
    // Its column is set to 0, so L stays finite and L L^T is still A.
    matrix<long double> A(3, 3, 0.0L);
    A(0, 0) = A(0, 1) = A(1, 0) = A(1, 1) = 1.0L;
    A(2, 2) = 4.0L;
    chr<long double> ch;
    ch.dcmp(A);
    const matrix<long double> L = ch.GetL();
    EXPECT_TRUE(AllFinite(L));
    EXPECT_EQ(L(1, 1), 0.0L);
    EXPECT_NEAR_LD(L(2, 2), 2.0L, HandTol);
    const matrix<long double> LLt = L * tr(L);
    for (long k = 0; k < 9; ++k) EXPECT_NEAR_LD(LLt(k), A(k), HandTol);
    EXPECT_NEAR_LD(ch.det(), 0.0L, HandTol);

    // A slightly negative pivot, -5e-14, counts as 0 and does not stop.
    matrix<long double> B(2, 2, 1.0L);
    B(1, 1) = 1.0L - 5e-14L;
    ch.dcmp(B);
    EXPECT_EQ(ch.L(1, 1), 0.0L);
}

TEST(ChrDeath, IndefiniteAndMisuseStopWithReports)
{
    chr<long double> ch;
    // [[1 2] [2 1]]: the second pivot is 1 - 4 = -3; the log line names it.
    matrix<long double> A(2, 2, 2.0L);
    A(0, 0) = A(1, 1) = 1.0L;
    EXPECT_MATRIX_DEATH(ch.dcmp(A), "k = 1  s = -3\n" + MatrixErrorReport("Function:   chr::dcmp(A)\n\t\tMatrix is not "
                                                                     "POSITIVE SEMI-DEFINIT!\n\n"));
    EXPECT_MATRIX_DEATH(ch.dcmp(matrix<long double>()),
                        MatrixErrorReport("Function:   chr::dcmp(A)\n\t\tMatrix is not set!\n\n"));
    EXPECT_MATRIX_DEATH(
        ch.dcmp(matrix<long double>(3, 2, 1.0L)),
        MatrixErrorReport("Function:   chr::dcmp(A)\n\t\t#Row != #Cols -> Underdetermined/overdetermined system!\n\n"));
    EXPECT_MATRIX_DEATH(
        static_cast<void>(ch.inv()),
        MatrixErrorReport("Function:   chr::det()\n\t\tDecomposition of matrix has not yet been performed!\n\n"));
    ch.dcmp(I(2L, 1.0L));
    EXPECT_MATRIX_DEATH(static_cast<void>(ch.solve(matrix<long double>(3, 1, 1.0L))),
                        MatrixErrorReport("Function:   chr::solve(b,x)\n\t\tVector b is not of proper size!\n\n"));
}

TEST(Substitution, TriangularSolvesMatchHandResultAndAllColumnsForm)
{
    // Packed [[2 . .] [1 4 .] [3 -2 5]] as L; its transpose as U.
    umatrix<long double> L(3);
    L(0, 0) = 2;
    L(1, 0) = 1;
    L(1, 1) = 4;
    L(2, 0) = 3;
    L(2, 1) = -2;
    L(2, 2) = 5;
    matrix<long double> b(3, 2);
    b(0, 0) = 2;  // L (1 1 1)
    b(1, 0) = 5;
    b(2, 0) = 6;
    b(0, 1) = 4;  // L^T (1 2 3) = (2+2+9, 8-6, 15)
    b(1, 1) = 3;
    b(2, 1) = 7;
    matrix<long double> x(3, 2, 0.0L);
    solveL(L, b, x, 0);
    for (long i = 0; i < 3; ++i) EXPECT_NEAR_LD(x(i, 0), 1.0L, HandTol);
    b(0, 1) = 13;
    b(1, 1) = 2;
    b(2, 1) = 15;
    solveU(L, b, x, 1);
    for (long i = 0; i < 3; ++i) EXPECT_NEAR_LD(x(i, 1), i + 1.0L, HandTol);

    // The all-columns forms repeat each column's operations in the same
    // order, so they must agree bit for bit with the column form.
    const matrix<long double> B = DiagonallyDominant(6, 9);
    chr<long double> ch;
    ch.dcmp(SymmetricPositive(6, 10));
    matrix<long double> Y1(6, 6), Y2(6, 6), X1(6, 6), X2(6, 6);
    for (long J = 0; J < 6; ++J) solveL(ch.L, B, Y1, J);
    solveL(ch.L, B, Y2);
    for (long J = 0; J < 6; ++J) solveU(ch.L, Y1, X1, J);
    solveU(ch.L, Y2, X2);
    for (long k = 0; k < 36; ++k) {
        EXPECT_EQ(Y1(k), Y2(k));
        EXPECT_EQ(X1(k), X2(k));
    }
}

TEST(Inv, InvertsRegularMatricesAndLeadingBlocks)
{
    const long n = 8;
    const matrix<long double> A = DiagonallyDominant(n, 11);
    invns::IsSingular = true;  // a stale flag must be cleared
    const matrix<long double> X = inv(A);
    EXPECT_FALSE(invns::IsSingular);
    const matrix<long double> AX = A * X;
    const long double scale = InfNorm(A) * InfNorm(X);
    for (long i = 0; i < n; ++i)
        for (long j = 0; j < n; ++j)
            EXPECT_LT(std::fabs(AX(i, j) - (i == j ? 1.0L : 0.0L)), ExtendedResidualTol * scale);

    // Only the leading 3 by 3 block counts with dim = 3, wide or tall.
    matrix<long double> W(3, 5, 7.0L), B(3, 3);
    for (long i = 0; i < 3; ++i)
        for (long j = 0; j < 3; ++j) W(i, j) = B(i, j) = A(i, j);
    const matrix<long double> XB = inv(W, 3);
    ASSERT_EQ(XB.NRow(), 3);
    ASSERT_EQ(XB.NCol(), 3);
    const matrix<long double> BX = B * XB;
    for (long i = 0; i < 3; ++i)
        for (long j = 0; j < 3; ++j)
            EXPECT_LT(std::fabs(BX(i, j) - (i == j ? 1.0L : 0.0L)), ExtendedResidualTol * InfNorm(B) * InfNorm(XB));

    // Needs row exchanges: [[0 1] [2 0]] inverts to [[0 0.5] [1 0]].
    matrix<long double> S(2, 2, 0.0L);
    S(0, 1) = 1;
    S(1, 0) = 2;
    const matrix<long double> XS = inv(S);
    EXPECT_NEAR_LD(XS(0, 1), 0.5L, HandTol);
    EXPECT_NEAR_LD(XS(1, 0), 1.0L, HandTol);
    EXPECT_NEAR_LD(XS(0, 0), 0.0L, HandTol);
    EXPECT_NEAR_LD(XS(1, 1), 0.0L, HandTol);
}

TEST(Inv, OneByOneIsTheReciprocalWithoutTest)
{
    EXPECT_NEAR_LD(inv(matrix<long double>(1, 1, 4.0L))(0), 0.25L, HandTol);
    matrix<long double> M = I(3L, 1.0L);
    M(0, 0) = 2.0L;
    const matrix<long double> X1 = inv(M, 1);
    ASSERT_EQ(X1.Length(), 1);
    EXPECT_NEAR_LD(X1(0), 0.5L, HandTol);

    testing::internal::CaptureStdout();
    const matrix<long double> Xz = inv(matrix<long double>(1, 1, 0.0L));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_TRUE(std::isinf(Xz(0)));
    EXPECT_FALSE(invns::IsSingular);
}

TEST(Inv, ZeroColumnGivesUpQuietlyWithPartlyReducedResult)
{
    // First column zero: no pivot at all, the unit matrix comes back as is.
    matrix<long double> A = I(3L, 1.0L);
    A(0, 0) = 0.0L;
    testing::internal::CaptureStdout();
    const matrix<long double> X = inv(A);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_TRUE(invns::IsSingular);
    for (long i = 0; i < 3; ++i)
        for (long j = 0; j < 3; ++j) EXPECT_EQ(X(i, j), i == j ? 1.0L : 0.0L);

    // Middle column zero: [[2 0 1] [4 0 3] [1 0 5]]. Column 0 is reduced
    // first (exchange rows 0 and 1, then rows 1 and 2 lose 1/2 and 1/4 of
    // the new row 0), then column 1 has no pivot. By hand the reduction so
    // far is [[0 1 0] [1 -1/2 0] [0 -1/4 1]].
    matrix<long double> B(3, 3, 0.0L);
    B(0, 0) = 2;
    B(0, 2) = 1;
    B(1, 0) = 4;
    B(1, 2) = 3;
    B(2, 0) = 1;
    B(2, 2) = 5;
    const long double expect[] = {0, 1, 0, 1, -0.5L, 0, 0, -0.25L, 1};
    testing::internal::CaptureStdout();
    const matrix<long double> XB = inv(B);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_TRUE(invns::IsSingular);
    for (long k = 0; k < 9; ++k) EXPECT_NEAR_LD(XB(k), expect[k], HandTol) << "element " << k;

    // The next regular matrix clears the flag again.
    static_cast<void>(inv(I(2L, 3.0L)));
    EXPECT_FALSE(invns::IsSingular);
}

TEST(Inv, ZeroLastPivotWarnsAndGivesUp)
{
    // [[1 2] [2 4]]: after the exchange row 1 becomes [1 2] - 1/2 [2 4] = 0.
    matrix<long double> A(2, 2);
    A(0, 0) = 1;
    A(0, 1) = 2;
    A(1, 0) = 2;
    A(1, 1) = 4;
    // The pivot is printed in the stream's own notation; pin the default.
    const std::ios::fmtflags saved = std::cout.flags();
    std::cout.unsetf(std::ios::floatfield);
    testing::internal::CaptureStdout();
    const matrix<long double> X = inv(A);
    const std::string out = testing::internal::GetCapturedStdout();
    std::cout.flags(saved);
    EXPECT_TRUE(invns::IsSingular);
    EXPECT_EQ(out, "\n" + Stars + "\nMATRIX::WARNING:\n\n\tFunction:   inv\nMatrix is SINGULAR:          0 10**-15     1\n\n" +
                       Stars + "\n");
    EXPECT_EQ(X.NRow(), 2);
}

TEST(InvDeath, ShapeErrorsStop)
{
    EXPECT_MATRIX_DEATH(static_cast<void>(inv(matrix<long double>(2, 3, 1.0L))),
                        MatrixErrorReport("Function:   inv\nMatrix is not square:  [    2,    3]\n\n"));
    EXPECT_MATRIX_DEATH(static_cast<void>(inv(matrix<long double>())),
                        MatrixErrorReport("Function:   inv\nMatrix is not defined:  [    0,    0]\n\n"));
    EXPECT_MATRIX_DEATH(static_cast<void>(inv(I(3L, 1.0L), 0)),
                        MatrixErrorReport("Function:   inv\nMatrix is not defined:  [    0,    0]\n\n"));
    EXPECT_MATRIX_DEATH(static_cast<void>(inv(matrix<long double>(4, 3, 1.0L), 4)),
                        MatrixErrorReport("Function:   inv\nDimension of submatrix inproper:  [    0,   -1]\n\n"));
}

TEST(Subnorm, KindsAgainstHandValues)
{
    // (3, -4, 12, 100): |3|+|-4| = 7, hypot(3, 4) = 5, hypot(5, 12) = 13.
    matrix<long double> v(4);
    v(0) = 3;
    v(1) = -4;
    v(2) = 12;
    v(3) = 100;
    normns::norm = 0;
    EXPECT_NEAR_LD(subnorm(v, 2, 0), 7.0L, HandTol);
    normns::norm = 1;
    EXPECT_NEAR_LD(subnorm(v, 2, 0), 5.0L, HandTol);
    EXPECT_NEAR_LD(subnorm(v, 3, 7), 13.0L, HandTol);  // p is ignored
    normns::norm = 2;
    EXPECT_NEAR_LD(subnorm(v, 2, 3), std::cbrt(91.0L), HandTol);
    EXPECT_NEAR_LD(subnorm(v, 3, 2), 13.0L, HandTol);  // p = 2 is the Euclidean norm
    normns::norm = 1000;
    EXPECT_NEAR_LD(subnorm(v, 3, 0), 12.0L, HandTol);  // the 100 behind nr stays out
    normns::norm = 64536;
    EXPECT_NEAR_LD(subnorm(v, 3, 0), 3.0L, HandTol);

    // A row vector is walked the same way; nr = 0 gives 0 for kinds 0-2.
    const matrix<long double> row = tr(v);
    for (int kind : {0, 1, 2}) {
        normns::norm = kind;
        EXPECT_EQ(subnorm(row, 0, 2), 0.0L) << "kind " << kind;
    }
    normns::norm = 1;
    EXPECT_NEAR_LD(subnorm(row, 4, 0), std::sqrt(169.0L + 10000.0L), HandTol);
}

TEST(Subnorm, UnknownKindAndMatrixWarnAndGoOn)
{
    matrix<long double> v(2);
    v(0) = 6;
    v(1) = 8;
    normns::norm = 7;
    testing::internal::CaptureStdout();
    const long double n2 = subnorm(v, 2, 0);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "\n" + Stars +
                       "\nMATRIX::WARNING:\n\n\tFunction:   norm\nNORM type is not properly set - Using default "
                       "NORM2!\n\n" +
                       Stars + "\nContinuing program...\n\n");
    EXPECT_EQ(normns::norm, 1);  // reset for this and all later calls
    EXPECT_NEAR_LD(n2, 10.0L, HandTol);

    testing::internal::CaptureStdout();
    const long double m = subnorm(I(2L, 1.0L), 2, 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\n" + Stars + "\nMATRIX::WARNING:\n\n\tFunction:   norm\nMatrix norm is not evaluated!\n\n" + Stars +
                  "\nContinuing program...\n\n");
    EXPECT_EQ(m, 0.0L);
}

TEST(SubnormDeath, UndefinedVectorAndTooManyElementsStop)
{
    EXPECT_MATRIX_DEATH(static_cast<void>(subnorm(matrix<long double>(), 0, 2)),
                        MatrixErrorReport("Function:   subnorm\nMatrix/Vector is not defined:  [    0,    0]\n\n"));
    EXPECT_MATRIX_DEATH(
        static_cast<void>(subnorm(matrix<long double>(3, 1, 1.0L), 4, 2)),
        MatrixErrorReport("Function:   subnorm\nNumber of elements for subnorm greater than vector size:  [    3,    1] -> n "
                    "=     4\n\n"));
    EXPECT_MATRIX_DEATH(
        static_cast<void>(subnorm(matrix<long double>(3, 1, 1.0L), -1, 2)),
        MatrixErrorReport("Function:   subnorm\nNumber of elements for subnorm is negative:  [    3,    1] -> n =    -1\n\n"));
}
