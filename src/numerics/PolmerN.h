#pragma once
// Radius of curvature of the reference ellipsoid.

/// Radius of curvature in the prime vertical (m) at geodetic latitude fi
/// (rad) on the ellipsoid of semi-major axis a (m) and first eccentricity e:
/// a / sqrt((1 - e sin fi)(1 + e sin fi)). The factored form keeps the
/// precision of 1 - e^2 sin^2 fi. Valid for 0 <= e < 1; a for the sphere.
long double PolmerN(long double fi, long double a, long double e);
