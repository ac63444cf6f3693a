#pragma once
// Cubic spline through tabulated values, for the admittance of the ocean
// tide constituents over frequency. The end slopes come from a quadratic
// through the three outermost nodes at each end, so the spline reproduces
// any quadratic exactly.
#include "numerics/matrix.h"

/// Slope at the common start of two chords from it, u1 over x1 and u2 over
/// x2, of the quadratic through the three points:
/// (u1 / x1^2 - u2 / x2^2) / (1 / x1 - 1 / x2). Exact for a quadratic;
/// x1 and x2 must be distinct and non-zero.
long double Qfun(long double u1, long double x1, long double u2, long double x2);

/// Fills S with the second derivatives of the spline through the nodes X
/// (strictly increasing) with values U at them; S becomes a column as long
/// as X. With 3 nodes or fewer S stays zero, so Evaluate interpolates
/// linearly. Stops the run when U is shorter than X.
void spline(const matrix<long double>& X, const matrix<long double>& U, matrix<long double>& S);

/// Value at Y of the spline given by nodes X, values U and second derivatives
/// S from spline. No extrapolation: at or below the first node the first
/// value, at or above the last node the last value. Stops the run when X is
/// empty or U or S is shorter than X.
long double Evaluate(const matrix<long double>& X, const matrix<long double>& U, long double Y,
                     const matrix<long double>& S);
