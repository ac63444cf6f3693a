#pragma once
// Back substitution with the upper triangle of a packed factor. Cell (i, j)
// with j above i is read as U(i, j); a Cholesky factor L read this way is
// its own transpose.
#include "numerics/matrix.h"

/// Back substitution on column J: for i falling,
/// x(i,J) = (b(i,J) - sum over j > i, rising, of U(i,j) x(j,J)) / U(i,i).
/// b and x need at least U.Dim() rows and a column J, otherwise the run stops
/// with the access report; x may be b itself. A zero U(i,i) gives infinite
/// or undefined values, as the division does.
template <class T>
void solveU(const umatrix<T>& U, const matrix<T>& b, matrix<T>& x, long J)
{
    const long n = U.n;
    if (n == 0) return;
    // One checked touch of the far corner guards the unchecked loop.
    static_cast<void>(b(n - 1, J));
    static_cast<void>(x(n - 1, J));
    for (long i = n - 1; i >= 0; --i) {
        const T* ui = U.v + U.Pos(i, i);  // row i of the triangle, from the diagonal on
        T sum = T(0);
        for (long j = i + 1; j < n; ++j) sum += ui[j - i] * x.v[J + x.c * j];
        x.v[J + x.c * i] = (b.v[J + b.c * i] - sum) / ui[0];
    }
}

/// Back substitution on every column of b at once, into x of at least the
/// shape of b's first U.Dim() rows. Each element gets exactly the operations
/// of solveU(U, b, x, J) in the same order, so the result is bit for bit the
/// same; only the memory walk differs. x may be b.
template <class T>
void solveU(const umatrix<T>& U, const matrix<T>& b, matrix<T>& x)
{
    const long n = U.n;
    const long m = b.c;
    if (n == 0 || m == 0) return;
    static_cast<void>(b(n - 1, m - 1));
    static_cast<void>(x(n - 1, m - 1));
    // Four columns side by side share each load of U and keep their four
    // sums in registers; the extended-precision stores are what costs.
    constexpr long K = 4;
    matrix<T> G(n * K);
    for (long J0 = 0; J0 < m; J0 += K) {
        const long kk = (m - J0 < K) ? m - J0 : K;
        for (long i = n - 1; i >= 0; --i) {
            const T* ui = U.v + U.Pos(i, i);  // row i of the triangle, from the diagonal on
            const T* bi = b.v + b.c * i + J0;
            T* gi = G.v + K * i;
            if (kk == K) {
                T s0 = T(0), s1 = T(0), s2 = T(0), s3 = T(0);
                for (long j = i + 1; j < n; ++j) {
                    const T u = ui[j - i];
                    const T* gj = G.v + K * j;
                    s0 += u * gj[0];
                    s1 += u * gj[1];
                    s2 += u * gj[2];
                    s3 += u * gj[3];
                }
                gi[0] = (bi[0] - s0) / ui[0];
                gi[1] = (bi[1] - s1) / ui[0];
                gi[2] = (bi[2] - s2) / ui[0];
                gi[3] = (bi[3] - s3) / ui[0];
            } else {
                for (long k = 0; k < kk; ++k) {
                    T sum = T(0);
                    for (long j = i + 1; j < n; ++j) sum += ui[j - i] * G.v[K * j + k];
                    gi[k] = (bi[k] - sum) / ui[0];
                }
            }
        }
        for (long i = 0; i < n; ++i)
            for (long k = 0; k < kk; ++k) x.v[x.c * i + J0 + k] = G.v[K * i + k];
    }
}
