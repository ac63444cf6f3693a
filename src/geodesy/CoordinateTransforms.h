#pragma once
// Conversions between Earth-centred Cartesian, geodetic and local
// north-east-up coordinates, and the directions built on them: azimuth,
// elevation and the nominal attitude frame of a satellite.
#include "geodesy/elipsoid.h"
#include "geodesy/flh.h"
#include "geodesy/neu.h"
#include "geodesy/xyz.h"
#include "numerics/matrix.h"

/// Limits of the geodetic latitude iteration.
namespace geodeticns {
/// Latitude step (rad) below which the iteration stops: 6e-8 m on the ground.
constexpr long double LatitudeStep_rad = 1e-14L;
/// Cap on the iterations; the step shrinks by about e^2 = 0.0067 each time,
/// so a point outside the evolute needs fewer than ten. Round-off can keep
/// the height change of xyzt2flht at a few ulp of an orbit radius, above
/// 1e-14 m, and the cap then ends it.
constexpr int MaxIterations = 50;
}  // namespace geodeticns

/// Cartesian position (m) of the geodetic position pos on the ellipsoid
/// elps: x = (N + h) cos f cos l, y = (N + h) cos f sin l,
/// z = ((1 - e^2) N + h) sin f with N the prime-vertical radius
/// (e.g. Hofmann-Wellenhof et al., GNSS, 2008, eq. 3.22). An ellipsoid not
/// yet set stops the run.
xyz flh2xyz(const flh& pos, const elipsoid& elps);
/// flh2xyz, with dt copied.
xyzt flht2xyzt(const flht& pos, const elipsoid& elps);

/// Geodetic position of the Cartesian point ecef (m) on the ellipsoid elps:
/// longitude in [-pi, pi), latitude by the fixed-point iteration
/// f = atan(z / ((1 - e^2 N / (N + h)) p)) until the step falls to 1e-14 rad,
/// height along the normal as p cos f + z sin f - a^2 / N, which stays exact
/// at the poles. A point on the polar axis gets longitude 0, the Earth's
/// centre latitude pi/2 and height -b. Within about e^2 a (43 km) of the
/// centre the geodetic latitude is not unique and the result is only one of
/// the answers. An ellipsoid not yet set, or a non-finite coordinate (through
/// the latitude check of flh), stops the run.
flh xyz2flh(const xyz& ecef, const elipsoid& elps);
/// As xyz2flh, stopping when the height change plus the latitude step falls
/// to 1e-14; dt copied.
flht xyzt2flht(const xyzt& ecef, const elipsoid& elps);

/// The rotation from Earth-centred to local north, east, up axes at a
/// geodetic point (rows n, e, u): made once for a station whose records all
/// turn about the same point.
struct LocalFrame {
    long double R[3][3];
    explicit LocalFrame(const flh& p);
};

/// The vector vec (Earth-centred axes) in the local north, east, up axes of
/// the geodetic point tcg (a flht converts by dropping its dt).
neu g2lg(const xyz& vec, const flh& tcg);
/// g2lg in a frame made beforehand.
neu g2lg(const xyz& vec, const LocalFrame& frame);
/// g2lg at the Cartesian point tc, converted on the ellipsoid elps.
neu g2lg(const xyz& vec, const xyz& tc, const elipsoid& elps);
/// The local vector vec at the geodetic point tcg in Earth-centred axes:
/// the transpose of g2lg.
xyz lg2g(const neu& vec, const flh& tcg);
/// lg2g at the Cartesian point tc, converted on the ellipsoid elps.
xyz lg2g(const neu& vec, const xyz& tc, const elipsoid& elps);
/// g2lg carrying dt unchanged.
neut gt2lgt(const xyzt& vec, const flh& tcg);
/// g2lg at the Cartesian point tc, carrying dt unchanged.
neut gt2lgt(const xyzt& vec, const xyz& tc, const elipsoid& elps);
/// lg2g carrying dt unchanged.
xyzt lgt2gt(const neut& vec, const flh& tcg);
/// lg2g at the Cartesian point tc, carrying dt unchanged.
xyzt lgt2gt(const neut& vec, const xyz& tc, const elipsoid& elps);

/// Rotates the symmetric covariance of a Cartesian vector into the local
/// axes of tcg: Syy = R S R^T, with S read from its leading 3 x 3 block
/// (diagonal and the entries (0,1), (0,2), (1,2); S may be larger, e.g. the
/// whole cofactor matrix). Syy becomes 3 x 3 (same units as S). S smaller
/// than 3 x 3 stops the run. S and Syy may be the same matrix.
void g2lg(const matrix<long double>& S, const flh& tcg, matrix<long double>& Syy);
/// The inverse of the covariance g2lg: Syy = R^T S R from local to
/// Earth-centred axes, under the same rules.
void lg2g(const matrix<long double>& S, const flh& tcg, matrix<long double>& Syy);

/// Direction (rad, [0, 2 pi)) from (x1, y1) to (x2, y2), counted from the
/// y axis towards the x axis; with x east and y north the azimuth from
/// north clockwise. Differences below 1e-14 in size count as 0, and a null
/// difference gives 0.
long double Azimuth(long double x1, long double y1, long double x2, long double y2);

/// Elevation *E (rad, [-pi/2, pi/2]) and azimuth *A (rad, [0, 2 pi),
/// clockwise from north) of the satellite satPos seen from stPoint, both
/// Cartesian (m), the local frame taken on elps. A satellite at the
/// station has no direction and gets E = A = 0, below any elevation mask.
void SatelliteAzimuthElevation(const xyz& stPoint, const xyzt& satPos, const elipsoid& elps,
                               long double* E, long double* A);
/// The same with the station's local frame (LocalFrame of its xyz2flh on the
/// ellipsoid) given, for loops over many satellites seen from one station.
void SatelliteAzimuthElevation(const xyz& stPoint, const LocalFrame& frame, const xyzt& satPos,
                               long double* E, long double* A);
/// Elevation E and azimuth A (rad) as SatelliteAzimuthElevation gives them,
/// with their sines and cosines taken from the components of the line of
/// sight, not from E and A (equal to them to round-off, without the cost of
/// four long double trigonometric calls). A satellite at the station gets
/// E = A = 0 and their sines and cosines.
struct SkyDirection {
    long double E = 0.0L, A = 0.0L;
    long double sinE = 0.0L, cosE = 1.0L, sinA = 0.0L, cosA = 1.0L;
};
SkyDirection SatelliteSkyDirection(const xyz& stPoint, const LocalFrame& frame, const xyzt& satPos);
/// As SatelliteAzimuthElevation with the zenith distance *Z = pi/2 - E
/// (rad) in place of the elevation.
void SatelliteAzimuthZenith(const xyz& stPoint, const xyzt& satPos, const elipsoid& elps,
                            long double* Z, long double* A);

/// Nominal yaw-steering attitude frame of a satellite at pSat (m) with the
/// Sun at pSun (m), both Earth-centred: Zv the unit vector to the Earth's
/// centre, Yv = unit(Zv x s) with s the unit vector to the Sun, and
/// Xv = unit(Yv x Zv) completing the right-handed frame (IGS convention,
/// Kouba 2009, GPS Solutions 13:1-12). With the Sun on the satellite's
/// nadir line the frame is undefined and Yv, Xv come out null.
void GNSSSatBasis(xyz& Xv, xyz& Yv, xyz& Zv, const xyzt& pSat, const xyz& pSun);
