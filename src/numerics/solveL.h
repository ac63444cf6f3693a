#pragma once
// Forward substitution with the lower triangle of a packed factor. Cell
// (i, j) with j below i is read as L(i, j); the diagonal is divided by, so a
// unit-diagonal factor must store its ones.
#include "numerics/matrix.h"

/// Forward substitution on column J: for i rising,
/// x(i,J) = (b(i,J) - sum over j < i, rising, of L(i,j) x(j,J)) / L(i,i).
/// b and x need at least L.Dim() rows and a column J, otherwise the run stops
/// with the access report; x may be b itself. A zero L(i,i) gives infinite
/// or undefined values, as the division does.
template <class T>
void solveL(const umatrix<T>& L, const matrix<T>& b, matrix<T>& x, long J)
{
    const long n = L.n;
    if (n == 0) return;
    // Touch the far corner once through the checked access, so that the
    // unchecked loop below cannot leave either matrix.
    static_cast<void>(b(n - 1, J));
    static_cast<void>(x(n - 1, J));
    for (long i = 0; i < n; ++i) {
        T sum = T(0);
        for (long j = 0; j < i; ++j) sum += L.v[L.Pos(j, i)] * x.v[J + x.c * j];
        x.v[J + x.c * i] = (b.v[J + b.c * i] - sum) / L.v[L.Pos(i, i)];
    }
}

/// Forward substitution on every column of b at once, into x of at least the
/// shape of b's first L.Dim() rows. Each element gets exactly the operations
/// of solveL(L, b, x, J) in the same order, so the result is bit for bit the
/// same; only the memory walk differs. x may be b.
template <class T>
void solveL(const umatrix<T>& L, const matrix<T>& b, matrix<T>& x)
{
    const long n = L.n;
    const long m = b.c;
    if (n == 0 || m == 0) return;
    static_cast<void>(b(n - 1, m - 1));
    static_cast<void>(x(n - 1, m - 1));
    // The rows of L lie across the packed triangle; a row-wise copy lets the
    // inner products run along memory. Row i starts at i(i+1)/2.
    matrix<T> R(n * (n + 1) / 2);
    for (long i = 0; i < n; ++i)
        for (long j = 0; j <= i; ++j) R.v[i * (i + 1) / 2 + j] = L.v[L.Pos(j, i)];
    // Four columns side by side share each load of L and keep their four
    // sums in registers; the extended-precision stores are what costs.
    constexpr long K = 4;
    matrix<T> G(n * K);
    for (long J0 = 0; J0 < m; J0 += K) {
        const long kk = (m - J0 < K) ? m - J0 : K;
        // Above the first non-zero row of the columns (a unit matrix's
        // columns, say) every solution element is a zero, and with a finite
        // factor its products add zeros to the sums below, which leave them
        // as they are: the sums start there.
        const auto zeroRow = [&](long i) {
            for (long k = 0; k < kk; ++k)
                if (!(b.v[b.c * i + J0 + k] == T(0))) return false;
            return true;
        };
        long nz = 0;
        while (nz < n && zeroRow(nz)) ++nz;
        for (long i = 0; i < n; ++i) {
            const T* ri = R.v + i * (i + 1) / 2;
            const T* bi = b.v + b.c * i + J0;
            T* gi = G.v + K * i;
            const long j0 = nz < i ? nz : i;
            if (kk == K) {
                T s0 = T(0), s1 = T(0), s2 = T(0), s3 = T(0);
                for (long j = j0; j < i; ++j) {
                    const T l = ri[j];
                    const T* gj = G.v + K * j;
                    s0 += l * gj[0];
                    s1 += l * gj[1];
                    s2 += l * gj[2];
                    s3 += l * gj[3];
                }
                gi[0] = (bi[0] - s0) / ri[i];
                gi[1] = (bi[1] - s1) / ri[i];
                gi[2] = (bi[2] - s2) / ri[i];
                gi[3] = (bi[3] - s3) / ri[i];
            } else {
                for (long k = 0; k < kk; ++k) {
                    T sum = T(0);
                    for (long j = j0; j < i; ++j) sum += ri[j] * G.v[K * j + k];
                    gi[k] = (bi[k] - sum) / ri[i];
                }
            }
        }
        for (long i = 0; i < n; ++i)
            for (long k = 0; k < kk; ++k) x.v[x.c * i + J0 + k] = G.v[K * i + k];
    }
}
