// The matrix container: checked access and its framed reports, shape and
// copy semantics, products, sorting and unique lists.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "NearLD.h"
#include "NumericsSupport.h"
#include "geodesy/xyz.h"
#include "numerics/LargeMemory.h"
#include "numerics/matrix.h"

using namespace orvotest;

TEST(MatrixDeath, BadIndexShapeOrSizeStopsWithTheFramedReport) {
    matrix<long double> m(3, 2, 0.0L), a(2, 3, 1.0L), b(3, 2, 1.0L);
    const matrix<long double>& cm = m;
    matrix<short> noCols(4, 0);
    matrix<long> shrunk(2, 2, 1L);
    shrunk.Resize(0);
    umatrix<long double> u(3), unset;
    const long huge = 1L << 40;  // squared, it would wrap a 64-bit count back to a small number
    const std::string op = "Operator:   ()\n", row = op + "Row index not in range: ", col = op + "Column index not in range: ";
    const struct { std::function<void()> f; std::string body; } cases[] = {
        {[&] { (void)m(3, 0); }, row + "    3 -> [    0,    2]\n\n"},
        {[&] { (void)m(2, 2); }, col + "    2 -> [    0,    1]\n\n"},
        {[&] { (void)cm(0, 2); }, col + "    2 -> [    0,    1]\n\n"},
        {[&] { (void)m(6); }, op + "Matrix index not in range:     6 -> [    0,    5]\n\n"},
        {[&] { (void)noCols(0); }, op + "Matrix is not set:  [    4,    0]\n\n"},
        {[&] { (void)shrunk(0, 0); }, op + "Matrix is not set:  [    0,    1]\n\n"},
        {[&] { (void)unset(0, 0); }, op + "UMatrix is not set:  [    0]\n\n"},
        {[&] { (void)u(3, 1); }, row + "    3 -> [    0,    2]\n\n"},
        {[&] { (void)u(1, 3); }, col + "    3 -> [    0,    2]\n\n"},
        {[&] { a += b; }, "Operator:   +=\nMatrix dims do not agree:   [    2,    3] -> [    3,    2]\n\n"},
        {[&] { (void)(a * a); }, "Function:   matrix operator *\nMatrix dimensions do not fit!  [    2,    3] -> [    2,    3]\n\n"},
        {[&] { matrix<long double>(-2, 3); }, "Function:   matrix\nMatrix can not be allocated:  [   -2,    3]\n\n"},
        {[&] { matrix<long double>(huge, huge); },
         "Function:   matrix\nMatrix can not be allocated:  [" + std::to_string(huge) + "," + std::to_string(huge) + "]\n\n"},
        {[&] { LargeVector<long double>().reserve(static_cast<std::size_t>(huge)); },
         "Function:   matrix\nMatrix can not be allocated:  [" + std::to_string(huge) + ",    1]\n\n"},
        // The pivot report: the scaled pivot in a field of 10, the index in a field of 5.
        {[&] { MError::invError("Function:   test\nPivot: ", 2.5L, 7L); }, "Function:   test\nPivot:        2.5 10**-15     7\n\n"},
    };
    for (const auto& c : cases) EXPECT_MATRIX_DEATH(c.f(), c.body);
}

TEST(Matrix, RowMajorStorageResizeAndDeepCopies) {
    const matrix<long> m = Mat<long>(3, 4, {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23});
    for (long i = 0; i < 12; ++i) EXPECT_EQ(m(i / 4, i % 4), 10 * (i / 4) + i % 4) << i;
    matrix<long double> r(4);
    EXPECT_TRUE(r.NRow() == 4 && r.NCol() == 1);
    EXPECT_EQ(&r(3), &r(3, 0));
    EXPECT_TRUE(matrix<std::string>(2, 3)(1, 2).empty());  // class elements are default-constructed
    {
        // Cleared storage of a zero-default class holds its default even
        // where the heap hands back the bytes of an array just freed (the
        // fence keeps them from going back to the system, which would zero
        // them).
        // Written and read through volatile: the optimiser drops stores to
        // storage about to be freed and may take bytes it believes never
        // written for anything.
        matrix<xyzt>* dirty = new matrix<xyzt>(300, 1);
        volatile long double* const old = &(*dirty)(0).x;
        for (long i = 0; i < 4 * 300; ++i) old[i] = 1.0L;
        const matrix<long> fence(100, 1, 0L);
        delete dirty;
        const matrix<xyzt> fresh(300, 1);
        const volatile long double* const cell = &fresh(0).x;
        for (long i = 0; i < 4 * 300; ++i) EXPECT_EQ(cell[i], 0.0L) << i;
    }
    r.Resize(4, 1, 2.5L);
    long double* const before = r.v;
    r.Resize(4);  // same shape: storage and content stay
    EXPECT_EQ(r.v, before);
    EXPECT_TRUE(Equals(r, {2.5L, 2.5L, 2.5L, 2.5L}));
    r.Resize(4, 3);  // same row count, other shape
    r(3, 2) = 9.0L;  // the new storage is usable to its last element
    EXPECT_EQ(r(11), 9.0L);
    r.Resize(4, 3, -1.0L);  // same shape, but the value form overwrites
    EXPECT_EQ(r(11), -1.0L);

    matrix<long double> a = Mat<long double>(2, 2, {1, 2, 3, 4}), b(a), c(2, 2, 0.0L), d(7, 3, 0.0L);
    EXPECT_NE(a.v, b.v);
    b(0, 0) = 5.0L;
    long double* const storage = c.v;
    c = b;  // same shape: the storage is reused
    EXPECT_EQ(c.v, storage);
    c(1, 1) = 8.0L;
    d = a;  // other shape: reallocated
    EXPECT_TRUE(Equals(a, {1, 2, 3, 4}) && Equals(b, {5, 2, 3, 4}) && Equals(c, {5, 2, 3, 8}) && Equals(d, {1, 2, 3, 4}));
    matrix<long double>& self = d;
    d = self;
    EXPECT_TRUE(Equals(d, {1, 2, 3, 4}));
    d = matrix<long double>(0, 3);  // an empty source empties the target
    EXPECT_TRUE(d.Length() == 0 && d.v == nullptr);
    umatrix<long double> u(2);
    u(0, 1) = 2.0L;
    umatrix<long double> w(u), x;
    w(1, 0) = -2.0L;
    x = w;
    EXPECT_EQ(u(0, 1) - x(0, 1), 4.0L);
}

TEST(Matrix, SumScaleProductAndTranspose) {
    matrix<long double> s(2, 2, 1.5L);
    s += matrix<long double>(2, 2, 0.25L);
    s *= 4.0L;
    EXPECT_TRUE(Equals(s, {7, 7, 7, 7}));
    s *= 0.0L;  // the estimator's way to clear an accumulator
    EXPECT_TRUE(Equals(s, {0, 0, 0, 0}));
    // [1 2 3; 4 5 6] [7 8; 9 10; 11 12] = [58 64; 139 154] by hand; its
    // transpose is B^T A^T, exact in integers.
    const matrix<long> A = Mat<long>(2, 3, {1, 2, 3, 4, 5, 6}), B = Mat<long>(3, 2, {7, 8, 9, 10, 11, 12});
    EXPECT_TRUE(Equals(A * B, {58, 64, 139, 154}));
    EXPECT_TRUE(tr(A).NRow() == 3 && tr(A).NCol() == 2);
    EXPECT_TRUE(Equals(tr(A * B), {58, 139, 64, 154}) && Equals(tr(B) * tr(A), {58, 139, 64, 154}));
    EXPECT_TRUE(Equals(A * I(3L, 2L), {2, 4, 6, 8, 10, 12}));
    // An inner dimension of 0 gives a zero matrix of the outer shape.
    EXPECT_TRUE(Equals(matrix<long>(2, 0) * matrix<long>(0, 3), {0, 0, 0, 0, 0, 0}));
    // 1 + 2^-60 is exact in the 64-bit mantissa and lost in a double; every
    // step is exact, so a quarter of 2^-60 separates it from a lost term.
    const long double tiny = 1.0L / 1152921504606846976.0L;
    EXPECT_NEAR_LD((Mat<long double>(1, 2, {1.0L, tiny}) * matrix<long double>(2, 1, 1.0L))(0) - 1.0L, tiny, tiny / 4);
}

TEST(MatrixSort, StableInBothDirectionsWithIndicesAndUniqueLists) {
    const matrix<long double> v = Mat<long double>(5, 1, {3, 1, 2, 1, 3});
    matrix<long> ix;
    EXPECT_TRUE(Equals(sort(v, ix), {1, 1, 2, 3, 3}));
    EXPECT_TRUE(Equals(ix, {1, 3, 2, 0, 4}));
    EXPECT_EQ(v(0), 3.0L);  // the input stays as it was
    sortns::sort = 1;
    EXPECT_TRUE(Equals(sort(v, ix), {3, 3, 2, 1, 1}));
    EXPECT_TRUE(Equals(ix, {0, 4, 2, 1, 3}));
    const matrix<short> s = Mat<short>(8, 1, {205, 12, 101, 12, 3, 205, 101, 12});
    EXPECT_TRUE(Equals(UniqList(s), {205, 101, 12, 3}));
    sortns::sort = 0;
    EXPECT_TRUE(Equals(sort(s), {3, 12, 12, 12, 101, 101, 205, 205}));
    EXPECT_TRUE(Equals(UniqList(s), {3, 12, 101, 205}));
    EXPECT_TRUE(Equals(UniqList(matrix<short>(3, 1, 7)), {7}));
    EXPECT_TRUE(Equals(sort(matrix<long double>(1, 1, 4.0L), ix), {4.0L}));
    EXPECT_TRUE(Equals(ix, {0L}));
    // An empty list has no values and must not be read.
    EXPECT_EQ(UniqList(matrix<short>()).Length() + sort(matrix<short>()).Length(), 0);

    // Many ties from a small value set; std::stable_sort of the indices is an
    // independent reference for the order and the indices.
    std::mt19937 gen(177);
    std::uniform_int_distribution<int> pick(0, 9);
    const long n = 200;
    matrix<long double> r(n);
    for (long k = 0; k < n; ++k) r(k) = pick(gen) * 0.5L;
    std::vector<long> ref(n);
    std::iota(ref.begin(), ref.end(), 0L);
    std::stable_sort(ref.begin(), ref.end(), [&](long a, long b) { return r(a) < r(b); });
    const matrix<long double> sr = sort(r, ix);
    ASSERT_EQ(ix.NRow(), n);
    for (long k = 0; k < n; ++k) {
        EXPECT_EQ(ix(k), ref[k]) << "position " << k;
        EXPECT_EQ(sr(k), r(ref[k]));
    }
}
