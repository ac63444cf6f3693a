// The matrix container: checked access and its framed reports, shape and
// copy semantics, products, sorting and unique lists.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "numerics/MError.h"
#include "numerics/matrix.h"
#include "NearLD.h"

#include "MatrixReport.h"

namespace {

using orvotest::MatrixErrorReport;

// Death with the framed error report holding exactly `body`.
#define EXPECT_MATRIX_REPORT(stmt, body) EXPECT_MATRIX_DEATH(stmt, MatrixErrorReport(body))

}  // namespace

TEST(MatrixAccessDeath, RowColumnAndFlatIndexOutsideStopWithRange)
{
    matrix<long double> m(3, 2, 0.0L);
    EXPECT_MATRIX_REPORT(static_cast<void>(m(3, 0)),
                        "Operator:   ()\nRow index not in range:     3 -> [    0,    2]\n\n");
    EXPECT_MATRIX_REPORT(static_cast<void>(m(-1, 1)),
                        "Operator:   ()\nRow index not in range:    -1 -> [    0,    2]\n\n");
    EXPECT_MATRIX_REPORT(static_cast<void>(m(2, 2)),
                        "Operator:   ()\nColumn index not in range:     2 -> [    0,    1]\n\n");
    EXPECT_MATRIX_REPORT(static_cast<void>(m(0, -1)),
                        "Operator:   ()\nColumn index not in range:    -1 -> [    0,    1]\n\n");
    EXPECT_MATRIX_REPORT(static_cast<void>(m(6)),
                        "Operator:   ()\nMatrix index not in range:     6 -> [    0,    5]\n\n");
    EXPECT_MATRIX_REPORT(static_cast<void>(m(-1)),
                        "Operator:   ()\nMatrix index not in range:    -1 -> [    0,    5]\n\n");
    // The row is reported before the column when both are wrong.
    EXPECT_MATRIX_REPORT(static_cast<void>(m(5, 7)),
                        "Operator:   ()\nRow index not in range:     5 -> [    0,    2]\n\n");
    // The const access is checked the same way.
    const matrix<long double>& cm = m;
    EXPECT_MATRIX_REPORT(static_cast<void>(cm(0, 2)),
                        "Operator:   ()\nColumn index not in range:     2 -> [    0,    1]\n\n");
}

TEST(MatrixAccessDeath, UnsetMatrixStopsEvenAtIndexZero)
{
    matrix<long double> e;
    EXPECT_MATRIX_REPORT(static_cast<void>(e(0, 0)), "Operator:   ()\nMatrix is not set:  [    0,    0]\n\n");
    EXPECT_MATRIX_REPORT(static_cast<void>(e(0)), "Operator:   ()\nMatrix is not set:  [    0,    0]\n\n");
    matrix<short> noCols(4, 0);
    EXPECT_MATRIX_REPORT(static_cast<void>(noCols(0)), "Operator:   ()\nMatrix is not set:  [    4,    0]\n\n");
    matrix<long> shrunk(2, 2, 1L);
    shrunk.Resize(0);
    EXPECT_MATRIX_REPORT(static_cast<void>(shrunk(0, 0)), "Operator:   ()\nMatrix is not set:  [    0,    1]\n\n");
}

TEST(MatrixAccessDeath, PackedTriangleChecksItsDimension)
{
    umatrix<long double> unset;
    EXPECT_MATRIX_REPORT(static_cast<void>(unset(0, 0)), "Operator:   ()\nUMatrix is not set:  [    0]\n\n");
    umatrix<long double> u(3);
    EXPECT_MATRIX_REPORT(static_cast<void>(u(3, 1)),
                        "Operator:   ()\nRow index not in range:     3 -> [    0,    2]\n\n");
    EXPECT_MATRIX_REPORT(static_cast<void>(u(1, 3)),
                        "Operator:   ()\nColumn index not in range:     3 -> [    0,    2]\n\n");
    EXPECT_MATRIX_REPORT(static_cast<void>(u(0, -2)),
                        "Operator:   ()\nColumn index not in range:    -2 -> [    0,    2]\n\n");
}

TEST(MatrixShapeDeath, SumAndProductOfMismatchedShapesStop)
{
    matrix<long double> a(2, 3, 1.0L), b(3, 2, 1.0L);
    EXPECT_MATRIX_REPORT(a += b, "Operator:   +=\nMatrix dims do not agree:   [    2,    3] -> [    3,    2]\n\n");
    EXPECT_MATRIX_REPORT(static_cast<void>(a * a),
                        "Function:   matrix operator *\nMatrix dimensions do not fit!  [    2,    3] -> [    2,    3]\n\n");
}

TEST(MatrixShapeDeath, ImpossibleSizesStopInsteadOfWrapping)
{
    EXPECT_MATRIX_REPORT(matrix<long double>(-2, 3),
                        "Function:   matrix\nMatrix can not be allocated:  [   -2,    3]\n\n");
    // 2^40 squared elements would wrap a 64-bit count back to a small number.
    const long huge = 1L << 40;
    EXPECT_MATRIX_REPORT(matrix<long double>(huge, huge),
                        "Function:   matrix\nMatrix can not be allocated:  [" + std::to_string(huge) + "," +
                            std::to_string(huge) + "]\n\n");
}

TEST(MErrorDeath, PivotErrorPrintsScaledPivotAndIndex)
{
    // ods in a field of 10, then the index in a field of 5.
    EXPECT_MATRIX_REPORT(MError::invError("Function:   test\nPivot: ", 2.5L, 7L),
                        "Function:   test\nPivot:        2.5 10**-15     7\n\n");
}

TEST(MatrixAccess, StorageIsRowMajorAndFlatIndexFollowsIt)
{
    matrix<long> m(3, 4);
    for (long i = 0; i < 3; ++i)
        for (long j = 0; j < 4; ++j) m(i, j) = 10 * i + j;
    for (long k = 0; k < m.Length(); ++k) EXPECT_EQ(m(k), 10 * (k / 4) + k % 4) << "flat " << k;

    matrix<long double> col(5);
    EXPECT_EQ(col.NRow(), 5);
    EXPECT_EQ(col.NCol(), 1);
    col(3, 0) = 7.25L;
    EXPECT_EQ(&col(3), &col(3, 0));

    matrix<short> row(1, 4);
    for (long k = 0; k < 4; ++k) row(k) = static_cast<short>(k + 1);
    for (long j = 0; j < 4; ++j) EXPECT_EQ(row(0, j), j + 1);
}

TEST(MatrixShape, ResizeKeepsSameShapeAndDropsOnChange)
{
    matrix<long double> m(4, 1, 2.5L);
    long double* const before = m.v;
    m.Resize(4);  // already 4 by 1: nothing happens
    EXPECT_EQ(m.v, before);
    EXPECT_EQ(m(3), 2.5L);
    m.Resize(4, 1);
    EXPECT_EQ(m(0), 2.5L);

    m.Resize(4, 1, -1.0L);  // same shape, but the value form overwrites
    for (long k = 0; k < 4; ++k) EXPECT_EQ(m(k), -1.0L);

    m.Resize(2, 3);
    EXPECT_EQ(m.NRow(), 2);
    EXPECT_EQ(m.NCol(), 3);
    EXPECT_EQ(m.Length(), 6);
    m(1, 2) = 9.0L;  // the new storage is usable to its last element
    EXPECT_EQ(m(5), 9.0L);

    m.Resize(3);
    EXPECT_EQ(m.NCol(), 1);
    EXPECT_EQ(m.NRow(), 3);

    m.Resize(2, 2, 4.0L);
    for (long k = 0; k < 4; ++k) EXPECT_EQ(m(k), 4.0L);
}

TEST(MatrixShape, ClassElementsAreDefaultConstructed)
{
    matrix<std::string> s(2, 3);
    for (long k = 0; k < s.Length(); ++k) EXPECT_TRUE(s(k).empty());
    matrix<std::string> t(1, 2, std::string("R05"));
    EXPECT_EQ(t(0, 1), "R05");
}

TEST(MatrixCopy, CopiesAreDeepAndAssignmentTakesTheSourceShape)
{
    matrix<long double> a(2, 2, 1.0L);
    matrix<long double> b(a);
    EXPECT_NE(a.v, b.v);
    b(0, 0) = 5.0L;
    EXPECT_EQ(a(0, 0), 1.0L);

    matrix<long double> c(2, 2, 0.0L);
    long double* const storage = c.v;
    c = b;  // same shape: the storage is reused
    EXPECT_EQ(c.v, storage);
    EXPECT_EQ(c(0, 0), 5.0L);
    c(1, 1) = 8.0L;
    EXPECT_EQ(b(1, 1), 1.0L);

    matrix<long double> d(7, 3, 0.0L);
    d = a;  // other shape: reallocated to 2 by 2
    EXPECT_EQ(d.NRow(), 2);
    EXPECT_EQ(d.NCol(), 2);
    EXPECT_EQ(d(1, 1), 1.0L);

    matrix<long double>& self = d;
    d = self;
    EXPECT_EQ(d(1, 0), 1.0L);

    matrix<long double> e;
    d = e;  // an empty source empties the target
    EXPECT_EQ(d.Length(), 0);
    EXPECT_EQ(d.v, nullptr);

    umatrix<long double> u(2);
    u(0, 0) = 1.0L;
    u(0, 1) = 2.0L;
    u(1, 1) = 3.0L;
    umatrix<long double> w(u);
    w(1, 0) = -2.0L;
    EXPECT_EQ(u(0, 1), 2.0L);
}

TEST(MatrixArithmetic, SumScaleAndClear)
{
    matrix<long double> a(2, 2, 1.5L), b(2, 2, 0.25L);
    a += b;
    for (long k = 0; k < 4; ++k) EXPECT_EQ(a(k), 1.75L);
    a *= 4.0L;
    for (long k = 0; k < 4; ++k) EXPECT_EQ(a(k), 7.0L);
    a *= 0.0L;  // the estimator's way to clear an accumulator
    EXPECT_EQ(a.NRow(), 2);
    EXPECT_EQ(a.NCol(), 2);
    for (long k = 0; k < 4; ++k) EXPECT_EQ(a(k), 0.0L);
}

TEST(MatrixArithmetic, ProductMatchesHandResultAndTransposeRule)
{
    // [1 2 3; 4 5 6] [7 8; 9 10; 11 12] = [58 64; 139 154], by hand.
    matrix<long> A(2, 3), B(3, 2);
    long k = 1;
    for (long i = 0; i < 2; ++i)
        for (long j = 0; j < 3; ++j) A(i, j) = k++;
    for (long i = 0; i < 3; ++i)
        for (long j = 0; j < 2; ++j) B(i, j) = k++;
    const matrix<long> C = A * B;
    ASSERT_EQ(C.NRow(), 2);
    ASSERT_EQ(C.NCol(), 2);
    EXPECT_EQ(C(0, 0), 58);
    EXPECT_EQ(C(0, 1), 64);
    EXPECT_EQ(C(1, 0), 139);
    EXPECT_EQ(C(1, 1), 154);

    // (A B)^T = B^T A^T, exact in integers.
    const matrix<long> lhs = tr(C);
    const matrix<long> rhs = tr(B) * tr(A);
    for (long n = 0; n < 4; ++n) EXPECT_EQ(lhs(n), rhs(n));
    const matrix<long> At = tr(A);
    EXPECT_EQ(At.NRow(), 3);
    EXPECT_EQ(At(2, 1), 6);

    const matrix<long> AI = A * I(3L, 1L);
    for (long n = 0; n < 6; ++n) EXPECT_EQ(AI(n), A(n));
    const matrix<long double> D = I(3L, 2.5L);
    for (long i = 0; i < 3; ++i)
        for (long j = 0; j < 3; ++j) EXPECT_EQ(D(i, j), i == j ? 2.5L : 0.0L);

    // An inner dimension of 0 gives a zero matrix of the outer shape.
    const matrix<long double> Z = matrix<long double>(2, 0) * matrix<long double>(0, 3);
    ASSERT_EQ(Z.Length(), 6);
    for (long n = 0; n < 6; ++n) EXPECT_EQ(Z(n), 0.0L);
}

TEST(MatrixArithmetic, ProductKeepsExtendedPrecision)
{
    // 1 + 2^-60 is exact in the 64-bit mantissa and lost in a double; the
    // product must carry it through.
    const long double tiny = 1.0L / 1152921504606846976.0L;  // 2^-60
    matrix<long double> a(1, 2), b(2, 1);
    a(0) = 1.0L;
    a(1) = tiny;
    b(0) = 1.0L;
    b(1) = 1.0L;
    // Every step is exact in long double, so the excess is 2^-60 itself; a
    // quarter of it separates that from a lost (0) or double-rounded term.
    EXPECT_NEAR_LD((a * b)(0) - 1.0L, tiny, tiny / 4.0L);
}

TEST(MatrixSort, IndexedSortIsStableInBothDirections)
{
    matrix<long double> v(5);
    const long double vals[] = {3.0L, 1.0L, 2.0L, 1.0L, 3.0L};
    for (long k = 0; k < 5; ++k) v(k) = vals[k];
    matrix<long> ix;
    const matrix<long double> up = sort(v, ix);
    const long upIx[] = {1, 3, 2, 0, 4};
    for (long k = 0; k < 5; ++k) {
        EXPECT_EQ(up(k), vals[upIx[k]]);
        EXPECT_EQ(ix(k), upIx[k]);
    }
    EXPECT_EQ(v(0), 3.0L);  // the input stays as it was

    sortns::sort = 1;
    const matrix<long double> down = sort(v, ix);
    sortns::sort = 0;
    const long downIx[] = {0, 4, 2, 1, 3};
    for (long k = 0; k < 5; ++k) {
        EXPECT_EQ(down(k), vals[downIx[k]]);
        EXPECT_EQ(ix(k), downIx[k]);
    }

    matrix<long double> one(1, 1, 4.0L);
    const matrix<long double> s1 = sort(one, ix);
    ASSERT_EQ(ix.NRow(), 1);
    EXPECT_EQ(ix(0), 0);
    EXPECT_EQ(s1(0), 4.0L);
}

TEST(MatrixSort, IndexedSortAgreesWithStableSortOnRandomTies)
{
    // Values from a small set force many ties; std::stable_sort of the
    // indices is an independent reference for the order and the indices.
    std::mt19937 gen(177);
    std::uniform_int_distribution<int> pick(0, 9);
    const long n = 200;
    matrix<long double> v(n);
    for (long k = 0; k < n; ++k) v(k) = pick(gen) * 0.5L;
    std::vector<long> ref(n);
    std::iota(ref.begin(), ref.end(), 0L);
    std::stable_sort(ref.begin(), ref.end(), [&](long a, long b) { return v(a) < v(b); });
    matrix<long> ix;
    const matrix<long double> s = sort(v, ix);
    ASSERT_EQ(ix.NRow(), n);
    for (long k = 0; k < n; ++k) {
        EXPECT_EQ(ix(k), ref[k]) << "position " << k;
        EXPECT_EQ(s(k), v(ref[k]));
    }
}

TEST(MatrixSort, IntegerSortsAndUniqueLists)
{
    const short sats[] = {205, 12, 101, 12, 3, 205, 101, 12};
    matrix<short> s(8);
    for (long k = 0; k < 8; ++k) s(k) = sats[k];
    const matrix<short> sorted = sort(s);
    for (long k = 1; k < 8; ++k) EXPECT_LE(sorted(k - 1), sorted(k));

    const matrix<short> u = UniqList(s);
    const std::set<short> ref(std::begin(sats), std::end(sats));
    ASSERT_EQ(static_cast<std::size_t>(u.NRow()), ref.size());
    long k = 0;
    for (short x : ref) EXPECT_EQ(u(k++), x);

    sortns::sort = 1;
    const matrix<short> ud = UniqList(s);
    sortns::sort = 0;
    k = 0;
    for (auto it = ref.rbegin(); it != ref.rend(); ++it) EXPECT_EQ(ud(k++), *it);

    matrix<unsigned short> same(3, 1, static_cast<unsigned short>(7));
    const matrix<unsigned short> us = UniqList(same);
    ASSERT_EQ(us.NRow(), 1);
    EXPECT_EQ(us(0), 7);

    // An empty list has no distinct values and must not be read.
    EXPECT_EQ(UniqList(matrix<short>()).Length(), 0);
    EXPECT_EQ(sort(matrix<short>()).Length(), 0);

    short a = 1, b = 2;
    SWAP(a, b);
    EXPECT_EQ(a, 2);
    EXPECT_EQ(b, 1);
}
