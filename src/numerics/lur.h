#pragma once
// LU factorisation with row pivoting, P A = L U (Doolittle, unit-diagonal
// L). It solves and inverts the normal equations of the static solution,
// which run to thousands of unknowns, so the elimination works on its copy
// through the raw array.
#include <cmath>

#include "numerics/MError.h"
#include "numerics/matrix.h"
#include "numerics/solveL.h"
#include "numerics/solveU.h"

namespace lurns {
/// A pivot column whose largest magnitude is below this makes the matrix
/// singular for the factorisation.
inline constexpr long double thres = 1e-13L;
}  // namespace lurns

/// LU factors of a square matrix with partial pivoting.
template <class T = long double>
class lur {
public:
    short sign;     ///< sign of the row permutation
    long N;         ///< dimension, 0 before dcmp
    umatrix<T> L;   ///< unit lower factor, ones stored
    umatrix<T> U;   ///< upper factor
    matrix<long> P; ///< row i of the factors is row P(i) of A

    lur() : sign(1), N(0) {}

    /// Factors the row-permuted A = L U by Doolittle elimination with
    /// partial pivoting (the first of equal candidates wins); A is not
    /// changed. An unset or non-square A, or a pivot column whose largest
    /// magnitude is below lurns::thres, stops the run; the last pivot is not
    /// tested. May be called again.
    void dcmp(const matrix<T>& A)
    {
        if (A.r == 0 || A.c == 0) MError::qrgivError("Function:   lu::dcmp(A)\n\t\tMatrix is not set!");
        if (A.r != A.c)
            MError::qrgivError(
                "Function:   lu::dcmp(A)\n\t\t#Row != #Cols -> Underdetermined/overdetermined system!");
        N = A.r;
        P.Resize(N);
        for (long j = 0; j < N; ++j) P.v[j] = j;
        sign = 1;
        L.Resize(N);
        U.Resize(N);
        matrix<T> LU(A);
        T* a = LU.v;
        // Doolittle elimination by panels of B pivot steps. Inside a panel
        // the steps run as written; the columns right of the panel get the
        // panel's B updates in one pass per element, in the same order, so
        // the result is bit for bit that of the plain step-by-step loop while
        // each extended-precision element is loaded and stored once, not B
        // times. A pending update travels with its row on an exchange, since
        // its multipliers stand in that row.
        constexpr long B = 4;
        static_assert(B == 4, "the trailing update below is unrolled for four steps");
        for (long j0 = 0; j0 + 1 < N; j0 += B) {
            const long jEnd = (j0 + B < N - 1) ? j0 + B : N - 1;  // pivot steps j0 .. jEnd-1
            const long pEnd = (j0 + B < N) ? j0 + B : N;          // panel columns j0 .. pEnd-1
            for (long j = j0; j < jEnd; ++j) {
                long p = j;
                T big = std::abs(a[j + N * j]);
                for (long i = j + 1; i < N; ++i) {
                    const T m = std::abs(a[j + N * i]);
                    if (m > big) {
                        big = m;
                        p = i;
                    }
                }
                if (big < lurns::thres) MError::qrgivError("Function:   lur::dcmp(A)\n\t\tMatrix is SINGULAR!");
                if (p != j) {
                    sign = static_cast<short>(-sign);
                    T* rp = a + N * p;
                    T* rj = a + N * j;
                    for (long k = 0; k < N; ++k) SWAP(rp[k], rj[k]);
                    SWAP(P.v[p], P.v[j]);
                }
                const T* rj = a + N * j;
                for (long i = j + 1; i < N; ++i) {
                    T* ri = a + N * i;
                    ri[j] /= rj[j];
                    const T f = ri[j];
                    for (long k = j + 1; k < pEnd; ++k) ri[k] -= f * rj[k];
                }
            }
            // Rows in rising order: row j0+s is final before it serves as
            // the source of step j0+s for the rows below it.
            const long steps = jEnd - j0;
            const T* r0 = a + N * j0;
            for (long i = j0 + 1; i < N; ++i) {
                T* ri = a + N * i;
                const long cnt = (i - j0 < steps) ? i - j0 : steps;  // steps j with j < i
                if (cnt == B) {
                    const T f0 = ri[j0], f1 = ri[j0 + 1], f2 = ri[j0 + 2], f3 = ri[j0 + 3];
                    const T* r1 = r0 + N;
                    const T* r2 = r1 + N;
                    const T* r3 = r2 + N;
                    for (long k = pEnd; k < N; ++k) {
                        T x = ri[k];
                        x -= f0 * r0[k];
                        x -= f1 * r1[k];
                        x -= f2 * r2[k];
                        x -= f3 * r3[k];
                        ri[k] = x;
                    }
                } else {
                    for (long k = pEnd; k < N; ++k) {
                        T x = ri[k];
                        for (long s = 0; s < cnt; ++s) x -= ri[j0 + s] * a[k + N * (j0 + s)];
                        ri[k] = x;
                    }
                }
            }
        }
        for (long i = 0; i < N; ++i) {
            L.v[L.Pos(i, i)] = T(1);
            U.v[U.Pos(i, i)] = a[i + N * i];
            for (long j = i + 1; j < N; ++j) {
                L.v[L.Pos(i, j)] = a[i + N * j];
                U.v[U.Pos(i, j)] = a[j + N * i];
            }
        }
    }

    /// Solution x (N by 1) of A x = b for the first column of b: b is
    /// permuted by P, then forward substitution with L and back substitution
    /// with U. b.r unequal to N stops the run; a zero last pivot makes x
    /// non-finite.
    matrix<T> solve(const matrix<T>& b)
    {
        if (b.r != N) MError::qrgivError("Function:   lur::solve(b,x)\n\t\tVector b is not of proper size!");
        matrix<T> bp(N, 1), y(N, 1), x(N, 1);
        for (long i = 0; i < N; ++i) bp(i) = b(P(i), 0);
        solveL(L, bp, y, 0);
        solveU(U, y, x, 0);
        return x;
    }

    /// Inverse of A (N by N): the permuted unit matrix E, E(i, P(i)) = 1,
    /// goes column by column through forward substitution, then through
    /// back substitution. Stops when no factorisation has been made.
    matrix<T> inv()
    {
        if (N == 0)
            MError::qrgivError(
                "Function:   lu::inv\nSistem has not been decomposed yet (run lu::dcmp(A,f) or lu::dcmp(A))!");
        matrix<T> E(N, N, T(0));
        for (long i = 0; i < N; ++i) E(i, P(i)) = T(1);
        matrix<T> Y(N, N), X(N, N);
        solveL(L, E, Y);
        solveU(U, Y, X);
        return X;
    }

    /// Determinant of A: the permutation's sign times the product of U's
    /// diagonal. Stops when no factorisation has been made.
    T det()
    {
        if (N == 0)
            MError::qrgivError("Function:   lur::det()\n\t\tDecomposition of matrix has not yet been performed!");
        T p = T(sign);
        for (long i = 0; i < N; ++i) p *= U.v[U.Pos(i, i)];
        return p;
    }

    /// L as a full N by N matrix, ones on the diagonal, zeros above.
    matrix<T> GetL()
    {
        matrix<T> M(N, N, T(0));
        for (long i = 0; i < N; ++i)
            for (long j = 0; j <= i; ++j) M.v[j + N * i] = L.v[L.Pos(j, i)];
        return M;
    }

    /// U as a full N by N matrix, zeros below the diagonal.
    matrix<T> GetU()
    {
        matrix<T> M(N, N, T(0));
        for (long i = 0; i < N; ++i)
            for (long j = i; j < N; ++j) M.v[j + N * i] = U.v[U.Pos(i, j)];
        return M;
    }

    /// The row permutation: row i of L U is row P(i) of A.
    matrix<long> GetP() { return P; }
};
