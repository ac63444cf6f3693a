#include "geodesy/CoordinateTransforms.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "numerics/MathConstants.h"
#include "numerics/PolmerN.h"
#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"

namespace {

// Full extended-precision pi: longitudes and azimuths are true angles here,
// fed back into sin and cos.
// Below this size a coordinate difference in Azimuth counts as zero.
constexpr long double AzimuthNull = 1e-14L;

// An ellipsoid left unset (a = 0) would turn every position into the
// geocentric direction and the distance: wrong numbers that look right.
void CheckEllipsoid(const elipsoid& elps)
{
    if (!(elps.GetA() > 0.0L))
        ProgramError("Orvo", "Reference ellipsoid not set");
}


// Geodetic position of (x, y, z); heightStop adds the height change to the
// stopping rule (the xyzt form). Sets f, l, h.
void Geodetic(const xyz& c, const elipsoid& elps, bool heightStop,
              long double& f, long double& l, long double& h)
{
    CheckEllipsoid(elps);
    const long double a = elps.GetA(), e = elps.GetE(), e2 = elps.GetESQR();
    // A corrupt coordinate must not pass as the pole below: NaN goes on to
    // the latitude check of flh, which stops the run.
    if (!std::isfinite(c.x) || !std::isfinite(c.y) || !std::isfinite(c.z)) {
        f = l = h = std::numeric_limits<long double>::quiet_NaN();
        return;
    }
    const long double p = std::hypot(c.x, c.y);

    // On the polar axis the longitude is free and the latitude is that of
    // the nearer pole; the Earth's centre is given the north pole, for
    // which the height -b closes the round trip.
    if (!(p > 0.0L)) {
        f = (c.z < 0.0L) ? -Pi / 2.0L : Pi / 2.0L;
        l = 0.0L;
        h = std::fabs(c.z) - elps.GetB();
        return;
    }

    l = std::atan(c.y / c.x);
    if (c.x < 0.0L) l += (c.y > 0.0L) ? Pi : -Pi;

    // The height p / cos f - N of the textbook iteration loses all its
    // digits near the poles; p cos f + z sin f - a^2/N is the same distance
    // along the normal and is insensitive to a small error in f.
    const auto height = [&](long double fi, long double N) {
        return p * trig::Cos(fi) + c.z * trig::Sin(fi) - a * a / N;
    };

    long double f0 = std::atan(c.z / ((1.0L - e) * p * (1.0L + e)));
    h = height(f0, PolmerN(f0, a, e));
    long double eps = 1.0L;
    for (int it = 0; eps > geodeticns::LatitudeStep_rad && it < geodeticns::MaxIterations; ++it) {
        const long double N0 = PolmerN(f0, a, e);
        const long double h1 = height(f0, N0);
        // (1 - e^2 N/(N + h)) p with N + h = p / cos f, free of the
        // division by cos f near the poles.
        const long double fn = std::atan(c.z / (p - e2 * N0 * trig::Cos(f0)));
        eps = std::fabs(fn - f0) + (heightStop ? std::fabs(h1 - h) : 0.0L);
        f0 = fn;
        h = h1;
    }
    f = f0;
    h = height(f, PolmerN(f, a, e));
}

void Rotate(const long double R[3][3], bool transpose, const matrix<long double>& S,
            matrix<long double>& Syy)
{
    if (S.NRow() < 3 || S.NCol() < 3)
        ProgramError("Orvo", "Covariance rotation needs a 3 x 3 matrix, got "
                                 + std::to_string(S.NRow()) + " x " + std::to_string(S.NCol()));
    // Copy first: the caller may rotate a matrix into itself.
    long double C[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            C[i][j] = (i <= j) ? S(i, j) : S(j, i);  // upper triangle defines it
    long double Q[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            Q[i][j] = transpose ? R[j][i] : R[i][j];
    Syy.Resize(3, 3);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            long double s = 0.0L;
            for (int k = 0; k < 3; ++k)
                for (int m = 0; m < 3; ++m)
                    s += Q[i][k] * C[k][m] * Q[j][m];
            Syy(i, j) = s;
        }
}

}  // namespace

xyz flh2xyz(const flh& pos, const elipsoid& elps)
{
    CheckEllipsoid(elps);
    const long double e = elps.GetE();
    const long double N = PolmerN(pos.f, elps.GetA(), e);
    const long double cf = trig::Cos(pos.f);
    return xyz((N + pos.h) * cf * trig::Cos(pos.l),
               (N + pos.h) * cf * trig::Sin(pos.l),
               ((1.0L - e * e) * N + pos.h) * trig::Sin(pos.f));
}

xyzt flht2xyzt(const flht& pos, const elipsoid& elps)
{
    return xyzt(flh2xyz(pos, elps), pos.dt);
}

flh xyz2flh(const xyz& ecef, const elipsoid& elps)
{
    long double f = 0.0L, l = 0.0L, h = 0.0L;
    Geodetic(ecef, elps, false, f, l, h);
    return flh(f, l, h);
}

flht xyzt2flht(const xyzt& ecef, const elipsoid& elps)
{
    long double f = 0.0L, l = 0.0L, h = 0.0L;
    Geodetic(ecef, elps, true, f, l, h);
    return flht(f, l, h, ecef.dt);
}

LocalFrame::LocalFrame(const flh& p)
{
    const long double sf = trig::Sin(p.f), cf = trig::Cos(p.f);
    const long double sl = trig::Sin(p.l), cl = trig::Cos(p.l);
    R[0][0] = -sf * cl; R[0][1] = -sf * sl; R[0][2] = cf;
    R[1][0] = -sl;      R[1][1] = cl;       R[1][2] = 0.0L;
    R[2][0] = cf * cl;  R[2][1] = cf * sl;  R[2][2] = sf;
}

neu g2lg(const xyz& vec, const LocalFrame& r)
{
    return neu(r.R[0][0] * vec.x + r.R[0][1] * vec.y + r.R[0][2] * vec.z,
               r.R[1][0] * vec.x + r.R[1][1] * vec.y + r.R[1][2] * vec.z,
               r.R[2][0] * vec.x + r.R[2][1] * vec.y + r.R[2][2] * vec.z);
}

neu g2lg(const xyz& vec, const flh& tcg) { return g2lg(vec, LocalFrame(tcg)); }

neu g2lg(const xyz& vec, const xyz& tc, const elipsoid& elps)
{
    return g2lg(vec, xyz2flh(tc, elps));
}

xyz lg2g(const neu& vec, const flh& tcg)
{
    const LocalFrame r(tcg);
    return xyz(r.R[0][0] * vec.n + r.R[1][0] * vec.e + r.R[2][0] * vec.u,
               r.R[0][1] * vec.n + r.R[1][1] * vec.e + r.R[2][1] * vec.u,
               r.R[0][2] * vec.n + r.R[1][2] * vec.e + r.R[2][2] * vec.u);
}

xyz lg2g(const neu& vec, const xyz& tc, const elipsoid& elps)
{
    return lg2g(vec, xyz2flh(tc, elps));
}

neut gt2lgt(const xyzt& vec, const flh& tcg)
{
    return neut(g2lg(static_cast<const xyz&>(vec), tcg), vec.dt);
}

neut gt2lgt(const xyzt& vec, const xyz& tc, const elipsoid& elps)
{
    return neut(g2lg(static_cast<const xyz&>(vec), tc, elps), vec.dt);
}

xyzt lgt2gt(const neut& vec, const flh& tcg)
{
    return xyzt(lg2g(static_cast<const neu&>(vec), tcg), vec.dt);
}

xyzt lgt2gt(const neut& vec, const xyz& tc, const elipsoid& elps)
{
    return xyzt(lg2g(static_cast<const neu&>(vec), tc, elps), vec.dt);
}

void g2lg(const matrix<long double>& S, const flh& tcg, matrix<long double>& Syy)
{
    Rotate(LocalFrame(tcg).R, false, S, Syy);
}

void lg2g(const matrix<long double>& S, const flh& tcg, matrix<long double>& Syy)
{
    Rotate(LocalFrame(tcg).R, true, S, Syy);
}

long double Azimuth(long double x1, long double y1, long double x2, long double y2)
{
    long double dx = x2 - x1, dy = y2 - y1;
    if (std::fabs(dx) < AzimuthNull) dx = 0.0L;
    if (std::fabs(dy) < AzimuthNull) dy = 0.0L;
    if (dx > 0.0L) {
        if (dy > 0.0L) return std::atan(dx / dy);
        if (dy < 0.0L) return std::atan(dx / dy) + Pi;
        return Pi / 2.0L;
    }
    if (dx < 0.0L) {
        if (dy > 0.0L) return std::atan(dx / dy) + 2.0L * Pi;
        if (dy < 0.0L) return std::atan(dx / dy) + Pi;
        return 1.5L * Pi;
    }
    return (dy < 0.0L) ? Pi : 0.0L;
}

void SatelliteAzimuthElevation(const xyz& stPoint, const xyzt& satPos, const elipsoid& elps,
                               long double* E, long double* A)
{
    SatelliteAzimuthElevation(stPoint, LocalFrame(xyz2flh(stPoint, elps)), satPos, E, A);
}

void SatelliteAzimuthElevation(const xyz& stPoint, const LocalFrame& frame, const xyzt& satPos,
                               long double* E, long double* A)
{
    const SkyDirection d = SatelliteSkyDirection(stPoint, frame, satPos);
    if (E) *E = d.E;
    if (A) *A = d.A;
}

SkyDirection SatelliteSkyDirection(const xyz& stPoint, const LocalFrame& frame, const xyzt& satPos)
{
    SkyDirection d;
    xyz vec = satPos - stPoint;
    const long double len = vec.GetLength();
    if (!(len > 0.0L)) return d;
    vec /= len;
    const neu veclg = g2lg(vec, frame);
    const long double n = veclg.GetLength();
    // Round-off can carry |u| / length a few ulp past 1, outside asin.
    const long double s = std::clamp(veclg.u / n, -1.0L, 1.0L);
    d.E = std::asin(s);
    d.A = Azimuth(0.0L, 0.0L, veclg.e, veclg.n);
    d.sinE = s;
    const long double h = std::sqrt(veclg.e * veclg.e + veclg.n * veclg.n);
    d.cosE = h / n;
    // Straight overhead the azimuth is 0.
    d.sinA = h > 0.0L ? veclg.e / h : 0.0L;
    d.cosA = h > 0.0L ? veclg.n / h : 1.0L;
    return d;
}

void SatelliteAzimuthZenith(const xyz& stPoint, const xyzt& satPos, const elipsoid& elps,
                            long double* Z, long double* A)
{
    const SkyDirection d = SatelliteSkyDirection(stPoint, LocalFrame(xyz2flh(stPoint, elps)), satPos);
    if (Z) *Z = Pi / 2.0L - d.E;
    if (A) *A = d.A;
}

void GNSSSatBasis(xyz& Xv, xyz& Yv, xyz& Zv, const xyzt& pSat, const xyz& pSun)
{
    const xyz sat = pSat;
    Zv = sat.GetUnitVector(-1.0L);
    const xyz s = (pSun - sat).GetUnitVector(1.0L);
    Yv = CrossP(Zv, s).GetUnitVector(1.0L);
    Xv = CrossP(Yv, Zv).GetUnitVector(1.0L);
}
