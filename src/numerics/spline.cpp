#include "numerics/spline.h"

#include <string>

#include "numerics/ProgramError.h"

long double Qfun(long double u1, long double x1, long double u2, long double x2)
{
    return (u1 / x1 / x1 - u2 / x2 / x2) / (1.0L / x1 - 1.0L / x2);
}

void spline(const matrix<long double>& X, const matrix<long double>& U, matrix<long double>& S)
{
    const long N = X.Length();
    if (U.Length() < N)
        ProgramError("Orvo", "SPLINE: FEWER VALUES (" + std::to_string(U.Length())
                                 + ") THAN NODES (" + std::to_string(N) + ")!");
    S.Resize(N, 1, 0.0L);
    // The end slopes need three nodes at each end and the system four
    // unknowns; with fewer nodes the spline degenerates to straight pieces.
    if (N <= 3) return;

    matrix<long double> A(N, 1, 0.0L);
    matrix<long double> dX(N - 1, 1, 0.0L);
    for (long i = 0; i < N - 1; ++i) dX(i) = X(i + 1) - X(i);

    const long double Q1 = Qfun(U(1) - U(0), X(1) - X(0), U(2) - U(0), X(2) - X(0));
    const long double QN = Qfun(U(N - 2) - U(N - 1), X(N - 2) - X(N - 1), U(N - 3) - U(N - 1),
                                X(N - 3) - X(N - 1));

    // Right-hand side of the tridiagonal system for the second derivatives,
    // with the end slopes as the clamped end conditions.
    S(0) = 6.0L * ((U(1) - U(0)) / dX(0) - Q1);
    for (long i = 1; i <= N - 2; ++i)
        S(i) = 6.0L * (U(i + 1) / dX(i) + U(i - 1) / dX(i - 1)
                       - (1.0L / dX(i) + 1.0L / dX(i - 1)) * U(i));
    S(N - 1) = 6.0L * ((U(N - 2) - U(N - 1)) / dX(N - 2) + QN);

    // Forward elimination: A holds the reduced diagonal, the off-diagonals
    // are the interval lengths themselves.
    A(0) = 2.0L * dX(0);
    A(1) = 2.0L * dX(1) + 1.5L * dX(0);
    S(1) -= 0.5L * S(0);
    for (long i = 2; i <= N - 2; ++i) {
        const long double C = dX(i - 1) / A(i - 1);
        A(i) = 2.0L * (X(i + 1) - X(i - 1)) - dX(i - 1) * C;
        S(i) -= S(i - 1) * C;
    }
    const long double C = dX(N - 2) / A(N - 2);
    A(N - 1) = dX(N - 2) * (2.0L - C);
    S(N - 1) -= S(N - 2) * C;

    // Back substitution.
    S(N - 1) /= A(N - 1);
    for (long i = N - 2; i >= 0; --i) S(i) = (S(i) - S(i + 1) * dX(i)) / A(i);
}

long double Evaluate(const matrix<long double>& X, const matrix<long double>& U, long double Y,
                     const matrix<long double>& S)
{
    const long N = X.Length();
    if (N < 1) ProgramError("Orvo", "SPLINE EVALUATION: NO NODES!");
    if (U.Length() < N || S.Length() < N)
        ProgramError("Orvo", "SPLINE EVALUATION: FEWER VALUES OR SECOND DERIVATIVES THAN NODES!");
    if (Y <= X(0)) return U(0);
    if (Y >= X(N - 1)) return U(N - 1);

    long K = 1;
    while (K < N - 1 && !(Y <= X(K))) ++K;
    const long double DY = X(K) - Y;
    const long double DY1 = Y - X(K - 1);
    const long double DK = X(K) - X(K - 1);
    return (S(K - 1) * DY * DY * DY + S(K) * DY1 * DY1 * DY1) / (6.0L * DK)
           + (U(K) / DK - S(K) * DK / 6.0L) * DY1 + (U(K - 1) / DK - S(K - 1) * DK / 6.0L) * DY;
}
