#pragma once
// Closed-form interpolation between tabulated nodes, for grids and series of
// model values. The functions hold no state and test nothing: equal nodes
// divide by zero, so callers pass distinct nodes.

/// Weight of the first node for x between x1 and x2: (x2 - x) / (x2 - x1);
/// 1 at x1, 0 at x2, outside [0, 1] when x lies outside.
long double SetP(long double x, long double x1, long double x2);

/// Position of x between x1 and x2: (x - x1) / (x2 - x1); 0 at x1, 1 at x2.
long double SetXN(long double x, long double x1, long double x2);

/// Weighted sum p1 y1 + p2 y2.
long double LinearInterpolate(long double p1, long double y1, long double p2, long double y2);

/// Straight line through (x1, y1) and (x2, y2) at x; extrapolates outside.
long double LinearInterpolate(long double x, long double x1, long double x2, long double y1,
                              long double y2);

/// Bilinear value at (x, y) in the cell x1..x2 by y1..y2 with corner values
/// z11 at (x1, y1), z21 at (x2, y1), z22 at (x2, y2), z12 at (x1, y2):
/// linear in x along both rows, then linear in y between them.
long double BiLinearInterpolate(long double x, long double y, long double x1, long double x2,
                                long double y1, long double y2, long double z11, long double z21,
                                long double z22, long double z12);

/// Lagrange polynomial through (x0, y0), (x1, y1), (x2, y2) at x: exact for
/// polynomials up to degree 2.
long double QuadraticInterpolate(long double x, long double x0, long double x1, long double x2,
                                 long double y0, long double y1, long double y2);

/// Lagrange polynomial through four points at x: exact for polynomials up to
/// degree 3.
long double CubicInterpolate(long double x, long double x0, long double x1, long double x2,
                             long double x3, long double y0, long double y1, long double y2,
                             long double y3);

/// Coefficients p0..p3 of the cubic on the interval of the two middle nodes
/// (x1, y1)..(x2, y2), in the normalised position of SetXN(x, x1, x2), with
/// the end slopes of the central differences f0c = (y2 - y0) / (x2 - x0) and
/// f1c = (y3 - y1) / (x3 - x1) (cubic Hermite, Catmull-Rom kind). The slopes
/// are used as they stand, per unit of x, as the gridded models expect.
void SetP(long double x0, long double x1, long double x2, long double x3, long double y0,
          long double y1, long double y2, long double y3, long double& p0, long double& p1,
          long double& p2, long double& p3);

/// p0 x^3 + p1 x^2 + p2 x + p3, with x the normalised position from SetXN.
long double CubicInterpolate(long double x, long double p0, long double p1, long double p2,
                             long double p3);
