#pragma once
// The one container of the program: a dense row-major matrix that owns its
// elements and checks every index in every build, so that a bad index stops
// the run with a report instead of reading someone else's memory. A vector
// is a matrix with one column. Beside it: the packed triangle that the
// factorisations store their factors in, and a few generic operations.
#include <cstdint>
#include <cstddef>
#include <new>

#include "numerics/LargeMemory.h"
#include "numerics/MError.h"

/// Direction of `sort` and `UniqList`: 0 ascending, anything else descending.
namespace sortns {
inline int sort = 0;
}

/// Dense r by c matrix, 0-based, row-major: element (i, j) at v[j + c * i].
template <class T>
class matrix {
public:
    long r;  ///< number of rows
    long c;  ///< number of columns
    T* v;    ///< r * c elements, or null when the matrix holds none

    /// Empty matrix: 0 by 0, no storage.
    matrix() : r(0), c(0), v(nullptr) {}

    /// Column of `row` elements; a class type is default-constructed,
    /// anything else is left uninitialised. Stops on a negative length.
    explicit matrix(long row) : r(0), c(0), v(nullptr) { Allocate(row, 1); }

    /// `row` by `col` matrix, uninitialised as above. Stops on a negative
    /// dimension or a size that cannot be allocated.
    matrix(long row, long col) : r(0), c(0), v(nullptr) { Allocate(row, col); }

    /// `row` by `col` matrix with every element `value`.
    matrix(long row, long col, T value) : r(0), c(0), v(nullptr)
    {
        Allocate(row, col);
        Fill(value);
    }

    /// Deep copy.
    matrix(const matrix& m) : r(0), c(0), v(nullptr)
    {
        Allocate(m.r, m.c);
        CopyFrom(m);
    }

    /// Takes over the storage of a temporary; the source is left empty.
    matrix(matrix&& m) noexcept : r(m.r), c(m.c), v(m.v)
    {
        m.r = 0;
        m.c = 0;
        m.v = nullptr;
    }

    ~matrix() { FreeObjects(v, static_cast<std::size_t>(r * c)); }

    /// Deep copy; the storage is reused when the shapes agree, otherwise it
    /// is reallocated to the shape of `rhs`.
    matrix& operator=(const matrix& rhs)
    {
        if (this == &rhs) return *this;
        if (r != rhs.r || c != rhs.c) {
            Release();
            Allocate(rhs.r, rhs.c);
        }
        CopyFrom(rhs);
        return *this;
    }

    /// Makes it a column of `newRows`; no effect when that is already its
    /// shape, otherwise the content is dropped and left uninitialised.
    void Resize(long newRows) { Resize(newRows, 1); }

    /// Makes it `newRows` by `newCols`; no effect when that is already its
    /// shape, otherwise the content is dropped and left uninitialised.
    void Resize(long newRows, long newCols)
    {
        if (newRows == r && newCols == c) return;
        Release();
        Allocate(newRows, newCols);
    }

    /// As Resize(newRows, newCols), then sets every element to `value`, also
    /// when the shape did not change.
    void Resize(long newRows, long newCols, T value)
    {
        Resize(newRows, newCols);
        Fill(value);
    }

    /// Number of rows, r.
    long NRow() const { return r; }
    /// Number of columns, c.
    long NCol() const { return c; }
    /// Number of elements, r * c.
    long Length() const { return r * c; }

    /// Element (i, j). An unset matrix, a row outside [0, r-1] or a column
    /// outside [0, c-1] stops the run with the framed report.
    T& operator()(long i, long j)
    {
        if (OutOf(i, r) || OutOf(j, c)) MError::MatrixAccessError(i, j, r, c);
        return v[j + c * i];
    }

    /// Read-only element (i, j), checked as above.
    const T& operator()(long i, long j) const
    {
        if (OutOf(i, r) || OutOf(j, c)) MError::MatrixAccessError(i, j, r, c);
        return v[j + c * i];
    }

    /// Flat element i in storage order, for any shape; an index outside
    /// [0, r*c - 1] stops the run with the framed report.
    T& operator()(long i)
    {
        if (OutOf(i, r * c)) MError::MatrixFlatAccessError(i, r, c);
        return v[i];
    }

    /// Read-only flat element i, checked as above.
    const T& operator()(long i) const
    {
        if (OutOf(i, r * c)) MError::MatrixFlatAccessError(i, r, c);
        return v[i];
    }

    /// Element-wise sum; differing shapes stop the run.
    matrix& operator+=(const matrix& rhs)
    {
        if (r != rhs.r || c != rhs.c)
            MError::Error("Operator:   +=\nMatrix dims do not agree: ", r, c, rhs.r, rhs.c);
        const long n = r * c;
        for (long k = 0; k < n; ++k) v[k] += rhs.v[k];
        return *this;
    }

    /// Scales every element by `value`; the shape stays, so multiplying by
    /// 0 clears an accumulator in place.
    matrix& operator*=(long double value)
    {
        const long n = r * c;
        for (long k = 0; k < n; ++k) v[k] *= value;
        return *this;
    }

private:
    // One unsigned compare covers both a negative index and one past the
    // end, and an unset matrix (bound 0) fails it for every index.
    static bool OutOf(long i, long bound)
    {
        return __builtin_expect(static_cast<unsigned long>(i) >= static_cast<unsigned long>(bound), 0);
    }

    void Allocate(long row, long col)
    {
        // A negative dimension or a product beyond the address space is a
        // request no allocator can meet; stop with the shape rather than
        // let the product wrap into a small, wrong array.
        if (row < 0 || col < 0) MError::AllocationError(row, col);
        if (row > 0 && col > static_cast<long>(PTRDIFF_MAX / sizeof(T)) / row)
            MError::AllocationError(row, col);
        const long n = row * col;
        T* p = nullptr;
        if (n > 0) {
            p = AllocateObjects<T>(static_cast<std::size_t>(n));
            if (p == nullptr) MError::AllocationError(row, col);
        }
        r = row;
        c = col;
        v = p;
    }

    void Release()
    {
        FreeObjects(v, static_cast<std::size_t>(r * c));
        v = nullptr;
        r = 0;
        c = 0;
    }

    void Fill(const T& value)
    {
        const long n = r * c;
        for (long k = 0; k < n; ++k) v[k] = value;
    }

    void CopyFrom(const matrix& m)
    {
        const long n = r * c;
        for (long k = 0; k < n; ++k) v[k] = m.v[k];
    }
};

/// Packed symmetric storage of one triangle of dimension n: cells (i, j) and
/// (j, i) are the same, so a lower factor read with swapped indices is its
/// transpose. Row i of the upper triangle starts at n*i - i*(i-1)/2.
template <class T>
class umatrix {
public:
    long n;  ///< dimension
    T* v;    ///< n(n+1)/2 cells, uninitialised

    /// Unset triangle, dimension 0.
    umatrix() : n(0), v(nullptr) {}

    /// Triangle of dimension nn, cells uninitialised; stops on a negative or
    /// unallocatable dimension.
    explicit umatrix(long nn) : n(0), v(nullptr) { Allocate(nn); }

    /// Deep copy.
    umatrix(const umatrix& u) : n(0), v(nullptr)
    {
        Allocate(u.n);
        for (long k = 0; k < Cells(n); ++k) v[k] = u.v[k];
    }

    /// Deep copy into fresh storage.
    umatrix& operator=(const umatrix& u)
    {
        if (this == &u) return *this;
        Resize(u.n);
        for (long k = 0; k < Cells(n); ++k) v[k] = u.v[k];
        return *this;
    }

    ~umatrix()
    {
        FreeObjects(v, static_cast<std::size_t>(Cells(n)));
        n = 0;
    }

    /// Sets the dimension to nn with new, uninitialised cells.
    void Resize(long nn)
    {
        FreeObjects(v, static_cast<std::size_t>(Cells(n)));
        v = nullptr;
        n = 0;
        Allocate(nn);
    }

    /// Dimension n.
    long Dim() const { return n; }

    /// Cell (i, j), the same as (j, i). An unset triangle or an index
    /// outside [0, n-1] stops the run with the framed report.
    T& operator()(long i, long j)
    {
        if (OutOf(i) || OutOf(j)) MError::UMatrixAccessError(i, j, n);
        return v[Pos(i, j)];
    }

    /// Read-only cell (i, j), checked as above.
    const T& operator()(long i, long j) const
    {
        if (OutOf(i) || OutOf(j)) MError::UMatrixAccessError(i, j, n);
        return v[Pos(i, j)];
    }

    /// Storage position of cell (i, j) with i not above j, unchecked; for
    /// solvers that have checked their whole index range once.
    long Pos(long i, long j) const
    {
        if (j < i) {
            const long t = i;
            i = j;
            j = t;
        }
        return n * i - i * (i - 1) / 2 + (j - i);
    }

private:
    bool OutOf(long i) const
    {
        return __builtin_expect(static_cast<unsigned long>(i) >= static_cast<unsigned long>(n), 0);
    }

    static long Cells(long nn) { return nn * (nn + 1) / 2; }

    void Allocate(long nn)
    {
        // The cell count grows with the square of nn; bound it before the
        // product can wrap.
        if (nn < 0 || (nn > 0 && nn > static_cast<long>(PTRDIFF_MAX / sizeof(T)) / (nn + 1)))
            MError::AllocationError(nn, nn);
        T* p = nullptr;
        if (nn > 0) {
            p = AllocateObjects<T>(static_cast<std::size_t>(Cells(nn)));
            if (p == nullptr) MError::AllocationError(nn, nn);
        }
        n = nn;
        v = p;
    }
};

/// Product A B, A.r by B.c, each element summed over k rising in the element
/// type. A.c unequal to B.r stops the run.
template <class T>
matrix<T> operator*(const matrix<T>& A, const matrix<T>& B)
{
    if (A.c != B.r)
        MError::Error("Function:   matrix operator *\nMatrix dimensions do not fit!", A.r, A.c, B.r, B.c);
    matrix<T> C(A.r, B.c, T(0));
    // Loop order i, k, j walks B and C along their rows; each element still
    // gathers its terms in rising k, as the plain dot product would.
    for (long i = 0; i < A.r; ++i) {
        T* ci = C.v + B.c * i;
        for (long k = 0; k < A.c; ++k) {
            const T a = A.v[k + A.c * i];
            const T* bk = B.v + B.c * k;
            for (long j = 0; j < B.c; ++j) ci[j] += a * bk[j];
        }
    }
    return C;
}

/// Transpose of m.
template <class T>
matrix<T> tr(const matrix<T>& m)
{
    matrix<T> t(m.c, m.r);
    for (long i = 0; i < m.r; ++i)
        for (long j = 0; j < m.c; ++j) t.v[i + m.r * j] = m.v[j + m.c * i];
    return t;
}

/// n by n matrix with `value` on the diagonal and 0 elsewhere.
template <class T>
matrix<T> I(long n, T value)
{
    matrix<T> m(n, n, T(0));
    for (long i = 0; i < n; ++i) m.v[i + n * i] = value;
    return m;
}

/// Exchanges x and y.
template <class T>
void SWAP(T& x, T& y)
{
    T t = x;
    x = y;
    y = t;
}

/// Sorted copy of the first vec.r elements of the column vec, in the
/// direction of sortns::sort. Bubble sort: equal neighbours never swap, so
/// equal values keep their order.
template <class T>
matrix<T> sort(const matrix<T>& vec)
{
    matrix<T> s(vec);
    long m = vec.c > 0 ? vec.r : 0;  // a matrix without columns holds nothing
    const bool down = sortns::sort != 0;
    bool swapped = true;
    while (swapped && m > 1) {
        swapped = false;
        for (long i = 0; i + 1 < m; ++i) {
            const bool wrong = down ? (s.v[i] < s.v[i + 1]) : (s.v[i + 1] < s.v[i]);
            if (wrong) {
                SWAP(s.v[i], s.v[i + 1]);
                swapped = true;
            }
        }
        --m;
    }
    return s;
}

/// Sorted copy of the column vec as sort(vec); vIx is resized to vec.r and
/// receives, for each sorted element, its row in vec. Stable.
inline matrix<long double> sort(const matrix<long double>& vec, matrix<long>& vIx)
{
    matrix<long double> s(vec);
    long m = vec.c > 0 ? vec.r : 0;  // a matrix without columns holds nothing
    vIx.Resize(m);
    for (long i = 0; i < m; ++i) vIx.v[i] = i;
    const bool down = sortns::sort != 0;
    bool swapped = true;
    while (swapped && m > 1) {
        swapped = false;
        for (long i = 0; i + 1 < m; ++i) {
            const bool wrong = down ? (s.v[i] < s.v[i + 1]) : (s.v[i + 1] < s.v[i]);
            if (wrong) {
                SWAP(s.v[i], s.v[i + 1]);
                SWAP(vIx.v[i], vIx.v[i + 1]);
                swapped = true;
            }
        }
        --m;
    }
    return s;
}

/// Distinct values of the column vec, sorted in the direction of
/// sortns::sort. An empty vec gives an empty list.
template <class T>
matrix<T> UniqList(const matrix<T>& vec)
{
    if (vec.r <= 0 || vec.c <= 0) return matrix<T>();
    const matrix<T> s = sort(vec);
    long n = 1;
    for (long i = 1; i < s.r; ++i)
        if (s.v[i] != s.v[i - 1]) ++n;
    matrix<T> u(n);
    u.v[0] = s.v[0];
    long k = 1;
    for (long i = 1; i < s.r; ++i)
        if (s.v[i] != s.v[i - 1]) u.v[k++] = s.v[i];
    return u;
}
