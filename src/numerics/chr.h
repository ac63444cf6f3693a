#pragma once
// Cholesky factorisation A = L L^T of a symmetric positive (semi-)definite
// matrix. One packed triangle holds L; read with swapped indices it is L^T,
// so both substitutions run on the same storage.
#include <cmath>
#include <iostream>

#include "numerics/MError.h"
#include "numerics/matrix.h"
#include "numerics/solveL.h"
#include "numerics/solveU.h"

namespace chrns {
/// A pivot whose magnitude does not exceed this is taken as exactly 0; a
/// negative pivot beyond it means the matrix is not positive semi-definite.
inline constexpr long double thres = 1e-13L;
}  // namespace chrns

/// Cholesky factor of a symmetric matrix; only its lower triangle is read.
template <class T = long double>
class chr {
public:
    long N;        ///< dimension, 0 before dcmp
    umatrix<T> L;  ///< lower factor

    chr() : N(0) {}

    /// Factors A = L L^T, row by row (Cholesky-Banachiewicz), reading the
    /// lower triangle of A, which is not changed. A pivot of magnitude up to
    /// chrns::thres counts as 0, so a semi-definite A is accepted: its
    /// column below such a pivot is set to 0, which keeps L L^T = A for a
    /// consistent semi-definite A and keeps L finite. An unset or non-square
    /// A, or a pivot below -chrns::thres, stops the run. May be called again.
    void dcmp(const matrix<T>& A)
    {
        if (A.r == 0 || A.c == 0) MError::qrgivError("Function:   chr::dcmp(A)\n\t\tMatrix is not set!");
        if (A.r != A.c)
            MError::qrgivError(
                "Function:   chr::dcmp(A)\n\t\t#Row != #Cols -> Underdetermined/overdetermined system!");
        N = A.r;
        L.Resize(N);
        // Rows of L in a dense copy make every inner product a walk along
        // two rows; the packed triangle would read them across its rows.
        matrix<T> W(N, N, T(0));
        for (long k = 0; k < N; ++k) {
            const T* wk = W.v + N * k;
            T sum = T(0);
            for (long i = 0; i < k; ++i) sum += wk[i] * wk[i];
            T s = A.v[k + N * k] - sum;
            const bool zero = std::abs(s) <= chrns::thres;  // a NaN is neither and passes through
            if (!zero && s < T(0)) {
                std::cerr << "k = " << k << "  s = " << s << std::endl;
                MError::qrgivError("Function:   chr::dcmp(A)\n\t\tMatrix is not POSITIVE SEMI-DEFINIT!");
            }
            if (zero) s = T(0);
            const T d = std::sqrt(s);
            W.v[k + N * k] = d;
            for (long j = k + 1; j < N; ++j) {
                if (zero) {
                    W.v[k + N * j] = T(0);
                    continue;
                }
                const T* wj = W.v + N * j;
                T t = T(0);
                for (long i = 0; i < k; ++i) t += wk[i] * wj[i];
                W.v[k + N * j] = (A.v[k + N * j] - t) / d;
            }
        }
        for (long i = 0; i < N; ++i)
            for (long j = 0; j <= i; ++j) L.v[L.Pos(j, i)] = W.v[j + N * i];
    }

    /// Solution x (N by 1) of A x = b for the first column of b, by forward
    /// substitution with L and back substitution with L^T. b.r unequal to N
    /// stops the run. A zero pivot of a semi-definite A makes x non-finite.
    matrix<T> solve(const matrix<T>& b)
    {
        if (b.r != N) MError::qrgivError("Function:   chr::solve(b,x)\n\t\tVector b is not of proper size!");
        matrix<T> y(N, 1), x(N, 1);
        solveL(L, b, y, 0);
        solveU(L, y, x, 0);
        return x;
    }

    /// Inverse of A (N by N), solving every column of the unit matrix.
    /// Stops when no factorisation has been made.
    matrix<T> inv()
    {
        RequireFactor();
        matrix<T> E = I(N, T(1));
        matrix<T> Y(N, N), X(N, N);
        solveL(L, E, Y);
        solveU(L, Y, X);
        return X;
    }

    /// Determinant of A, the square of the product of L's diagonal. Stops
    /// when no factorisation has been made.
    T det()
    {
        RequireFactor();
        T p = T(1);
        for (long k = 0; k < N; ++k) p *= L.v[L.Pos(k, k)];
        return p * p;
    }

    /// L as a full N by N matrix with zeros above the diagonal; 0 by 0
    /// before dcmp.
    matrix<T> GetL()
    {
        matrix<T> M(N, N, T(0));
        for (long i = 0; i < N; ++i)
            for (long j = 0; j <= i; ++j) M.v[j + N * i] = L.v[L.Pos(j, i)];
        return M;
    }

private:
    void RequireFactor() const
    {
        if (N == 0)
            MError::qrgivError("Function:   chr::det()\n\t\tDecomposition of matrix has not yet been performed!");
    }
};
