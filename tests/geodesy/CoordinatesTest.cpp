// Coordinate classes and their transformations: geodetic conversion against
// published values and round trips, local frames against the geometry of
// the ellipsoid, directions against constructed lines of sight, and the
// print forms against text written out by hand.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

#include "numerics/NearLD.h"
#include "geodesy/CoordinateTransforms.h"

constexpr long double Pi = 3.141592653589793238462643383279502884L, Deg = Pi / 180.0L;
// 1 µm, a hundred times tighter than the 0.1 mm a position needs: the
// latitude iteration stops at 1e-14 rad (6e-8 m on the ground) and
// extended-precision round-off at orbit radius is about 1e-11 m.
// The IAU SOFA values (Gc2gd, Gd2gc) carry 17 digits; the reference states
// the match an implementation of the same formulas reaches.
constexpr long double SofaAngle_rad = 1e-14L, SofaHeight_m = 1e-8L, SofaPosition_m = 1e-7L;
// Rotations of unit-sized values in extended precision stay within a few
// 1e-19; 1e-15 leaves room for the sums yet catches any sign or index slip.
// Chords at +-1e-5 rad differ from the true tangent by e^2 delta^2 = 1e-12 rad.
constexpr long double RoundTrip_m = 1e-6L, Rotation = 1e-15L, Direction_rad = 1e-9L;

static long double Dist(const xyz& a, const xyz& b) { return (a - b).GetLength(); }

// The local axes at g built from the ellipsoid itself: up is a height step,
// north and east are chords between neighbours at +-1e-5 rad.
// Returns north, east, up.
static std::array<xyz, 3> Axes(const flh& g, const elipsoid& e) {
    const long double d = 1e-5L;
    return {(flh2xyz(flh(g.f + d, g.l, g.h), e) - flh2xyz(flh(g.f - d, g.l, g.h), e)).GetUnitVector(1),
            (flh2xyz(flh(g.f, g.l + d, g.h), e) - flh2xyz(flh(g.f, g.l - d, g.h), e)).GetUnitVector(1),
            (flh2xyz(flh(g.f, g.l, g.h + 1.0L), e) - flh2xyz(g, e)).GetUnitVector(1)};
}
template <class T> static std::string Print(const T& v) { std::ostringstream os; os << v; return os.str(); }

TEST(Ellipsoid, TableMatchesPublishedConstants) {
    // Defining 1/f, derived b and e^2 (NIMA TR8350.2 for WGS 84, Moritz 1980
    // for GRS 80): b to the 0.1 mm and e^2 to the 14 decimals of the tables;
    // 1e-12 relative admits the round-off of 1/(1/f) only.
    const elipsoid grs(0), wgs(1), pz(2), bessel(3), sphere(4);
    const struct { const elipsoid& e; long double a, invF; } cases[] = {
        {grs, 6378137.0L, 298.257222101L}, {wgs, 6378137.0L, 298.257223563L}, {pz, 6378136.0L, 298.257839303L}, {bessel, 6377397.155L, 299.1528128L}};
    // e times e against e^2: one square root and one product, some 50 ulps of 0.0067.
    for (const auto& c : cases) EXPECT_TRUE(c.e.GetA() == c.a && std::fabs(1.0L / c.e.GetF() - c.invF) < 1e-12L * c.invF && std::fabs(c.e.GetE() * c.e.GetE() - c.e.GetESQR()) < 1e-18L) << c.a;
    EXPECT_TRUE(std::fabs(wgs.GetB() - 6356752.3142L) < 1e-4L && std::fabs(grs.GetB() - 6356752.3141L) < 1e-4L &&
                std::fabs(wgs.GetESQR() - 0.00669437999014L) < 1e-14L && std::fabs(grs.GetESQR() - 0.00669438002290L) < 1e-14L);
    // Second eccentricity squared of WGS 84, and the second flattening.
    EXPECT_TRUE(std::fabs(wgs.GetE2() * wgs.GetE2() - 0.00673949674228L) < 1e-14L && std::fabs(wgs.GetF2() - (wgs.GetA() - wgs.GetB()) / wgs.GetB()) < 1e-18L &&
                sphere.GetA() == 6371000.0L && sphere.GetE() == 0.0L);
}

TEST(GeodeticConversion, MatchesSofaValuesAndTheIgsSiteLog) {
    const struct { int el; long double lon, lat, h, x, y, z; } sofa[] = {
        {1, 0.98279372324732907L, 0.97160184819075459L, 331.41724614260599L, -5599000.5577049947L, 233011.67223479203L, -3040909.4706983363L},
        {0, 0.98279372324732907L, 0.97160184820607853L, 331.41731754844348L, -5599000.5577260984L, 233011.6722356703L, -3040909.4706095476L}};
    for (const auto& s : sofa) {
        const flh g = xyz2flh(xyz(2.0e6L, 3.0e6L, 5.244e6L), elipsoid(s.el));
        EXPECT_TRUE(std::fabs(g.l - s.lon) < SofaAngle_rad && std::fabs(g.f - s.lat) < SofaAngle_rad && std::fabs(g.h - s.h) < SofaHeight_m &&
                    Dist(flh2xyz(flh(-0.5L, 3.1L, 2500.0L), elipsoid(s.el)), xyz(s.x, s.y, s.z)) < SofaPosition_m) << g;
    }
    // AAER00FRA: the log rounds angles to 0.01" (0.3 m) and height to 0.1 m.
    const flh a = xyz2flh(xyz(4112958.700L, 334002.300L, 4847353.400L), elipsoid(0));
    EXPECT_TRUE(std::fabs(a.f - (49.0L + 46.0L / 60.0L + 56.88L / 3600.0L) * Deg) < 0.01L / 3600.0L * Deg &&
                std::fabs(a.l - (4.0L + 38.0L / 60.0L + 33.53L / 3600.0L) * Deg) < 0.01L / 3600.0L * Deg && std::fabs(a.h - 199.3L) < 0.05L) << a;
}

TEST(GeodeticConversion, AxesClosedFormsAndRoundTripsOnEveryEllipsoid) {
    const elipsoid w(1);
    const long double a = w.GetA(), b = w.GetB();
    for (long double h : {-500.0L, 0.0L, 2.0e7L}) {
        // Points on the axes, where the textbook height p/cos f - N has no
        // digits left at the poles.
        const struct { flh g; xyz p; } axes[] = {
            {{0, 0, h}, {a + h, 0, 0}}, {{Pi / 2, 0, h}, {0, 0, b + h}}, {{-Pi / 2, 0, h}, {0, 0, -b - h}}, {{0, Pi / 2, h}, {0, a + h, 0}}};
        for (const auto& c : axes) {
            const flh back = xyz2flh(c.p, w);
            EXPECT_TRUE(Dist(flh2xyz(c.g, w), c.p) < RoundTrip_m && std::fabs(back.f - c.g.f) < SofaAngle_rad && std::fabs(back.h - h) < RoundTrip_m &&
                        (c.p.x + c.p.y == 0 || std::fabs(back.l - c.g.l) < SofaAngle_rad)) << back;
        }
    }
    // x < 0 on the x axis: longitude -pi, the lower end of [-pi, pi). The
    // centre maps to the north pole at depth b, which maps back.
    const struct { xyz p; long double l; } lons[] = {{xyz(-a, 0, 0), -Pi}, {xyz(-a, 1.0L, 0), Pi - 1.0L / a}, {xyz(0, -a, 0), -Pi / 2}};
    for (const auto& c : lons) EXPECT_NEAR_LD(xyz2flh(c.p, w).l, c.l, SofaAngle_rad);
    const flh c = xyz2flh(xyz(), w);
    EXPECT_TRUE(std::fabs(c.f - Pi / 2) < SofaAngle_rad && std::fabs(c.h + b) < RoundTrip_m && flh2xyz(c, w).GetLength() < RoundTrip_m);

    for (int el = 0; el <= 4; ++el) {
        const elipsoid e(el);
        for (long double latd : {-90.0L, -89.9999L, -45.0L, 0.0L, 1e-9L, 60.0L, 89.99999999L, 90.0L})
            for (int lond = -180; lond <= 180; lond += 45)
                for (long double h : {-500.0L, 250.5L, 10000.0L, 2.0e7L}) {
                    const flh g(latd * Deg, lond * Deg, h);
                    const xyz p = flh2xyz(g, e);
                    const flh back = xyz2flh(p, e);
                    // The y of a point at 180 degrees is sin(pi) N, a few 1e-13 m
                    // either side, so both ends of [-pi, pi) are reached.
                    ASSERT_TRUE(Dist(flh2xyz(back, e), p) < RoundTrip_m && std::fabs(back.h - h) < RoundTrip_m && std::fabs(back.l) <= Pi) << "ellipsoid " << el << " lat " << latd << " lon " << lond << " h " << h;
                    // The time forms carry dt and agree although they stop otherwise.
                    const flht t = xyzt2flht(flht2xyzt(flht(g.f, g.l, h, -1.25e-4L), e), e);
                    ASSERT_TRUE(t.dt == -1.25e-4L && Dist(flh2xyz(t, e), p) < RoundTrip_m && std::fabs(t.h - h) < RoundTrip_m);
                }
    }
}

TEST(LocalFrame, AxesFollowTheEllipsoidAndRotationsInvertEachOther) {
    const elipsoid e(1);
    for (long double latd : {-70.0L, -5.0L, 0.0L, 46.0L, 85.0L, 90.0L})
        for (long double lond : {-170.0L, 15.0L, 100.0L}) {
            const flh g(latd * Deg, lond * Deg, 300.0L);
            const xyz tc = flh2xyz(g, e);
            const auto [north, east, up] = Axes(g, e);
            // On the pole the chords east have no length.
            const long double axes = (g2lg(north, g) - neu(1, 0, 0)).GetLength() + (g2lg(east, g) - neu(0, 1, 0)).GetLength() + (g2lg(up, g) - neu(0, 0, 1)).GetLength();
            EXPECT_TRUE(latd == 90.0L || axes < Direction_rad) << latd << " " << lond;
            for (const xyz& v : {xyz(123.4L, -56.7L, 8.9L), xyz(-2.1e7L, 1.4e7L, 9.0e6L)}) {
                const long double tol = Rotation * (1.0L + v.GetLength());
                const neu l = g2lg(v, g), ln(v.x, v.y, v.z);
                const neut lt = gt2lgt(xyzt(v, 3.5e-3L), g);  // the time forms carry dt untouched
                const xyzt back = lgt2gt(lt, tc, e);
                EXPECT_LT(std::fabs(l.GetLength() - v.GetLength()) + Dist(lg2g(l, g), v) + (g2lg(lg2g(ln, g), g) - ln).GetLength() + (static_cast<const neu&>(lt) - l).GetLength(), tol);
                EXPECT_TRUE(lt.dt == 3.5e-3L && back.dt == 3.5e-3L && lgt2gt(neut(1, 2, 3, -2.0L), g).dt == -2.0L && gt2lgt(xyzt(v, 1.0L), tc, e).dt == 1.0L);
                // The Cartesian-point forms convert the point first; on the
                // polar axis the longitude, and with it the horizontal axes,
                // cannot come back from x, y, z.
                EXPECT_TRUE(latd > 86.0L || (g2lg(v, tc, e) - l).GetLength() + Dist(lg2g(l, tc, e), v) + Dist(back, v) < 10 * tol) << latd;
            }
        }
}

TEST(LocalFrame, CovarianceFormIsRCRt) {
    // R from the vector form: its rows are the images of the axes. A
    // positive definite covariance (mm^2-scale, as the estimator's) sits in a
    // larger matrix, of which only the leading 3 x 3 block counts; at a
    // scale of 1e-5, 1e-17 absolute is 1e-12 relative.
    constexpr long double CovTol = 1e-17L;
    const flh g(0.81L, -1.93L, 250.0L);
    const neu R[3] = {g2lg(xyz(1, 0, 0), g), g2lg(xyz(0, 1, 0), g), g2lg(xyz(0, 0, 1), g)};
    auto r = [&](int i, int k) { return i == 0 ? R[k].n : i == 1 ? R[k].e : R[k].u; };
    const long double c3[9] = {4.0e-6L, 1.2e-6L, -0.8e-6L, 1.2e-6L, 2.5e-6L, 0.3e-6L, -0.8e-6L, 0.3e-6L, 9.0e-6L};
    matrix<long double> C(5, 5, 9.9L), L, Lt;
    for (int k = 0; k < 9; ++k) C(k / 3, k % 3) = c3[k];
    g2lg(C, g, L), g2lg(C, flht(g.f, g.l, g.h, 1.0L), Lt);
    ASSERT_TRUE(L.NRow() == 3 && L.NCol() == 3);
    for (int i = 0; i < 9; ++i) {
        long double s = 0.0L;
        for (int k = 0; k < 9; ++k) s += r(i / 3, k / 3) * c3[k] * r(i % 3, k % 3);
        EXPECT_TRUE(std::fabs(L(i) - s) < CovTol && std::fabs(Lt(i) - s) < CovTol) << i << ": " << L(i) << " " << s;
    }
    lg2g(L, g, L);  // back to Earth-centred axes, into the same matrix
    for (int k = 0; k < 9; ++k) EXPECT_NEAR_LD(L(k), c3[k], CovTol);
}

TEST(Direction, AzimuthElevationAndSatelliteBasis) {
    // Quadrants, axes, null and near-null offsets, then atan2 all around
    // from an offset origin (1e-17 rad: one long double atan2 of points 3 m apart).
    const struct { long double dx, dy, az; } az[] = {{0, 1, 0}, {1, 0, Pi / 2}, {0, -1, Pi}, {-1, 0, 1.5L * Pi}, {0, 0, 0}, {5e-15L, 1, 0}, {-5e-15L, -1, Pi}};
    for (const auto& c : az) EXPECT_NEAR_LD(Azimuth(5, 5, 5 + c.dx, 5 + c.dy), c.az, 1e-17L) << c.dx << " " << c.dy;
    for (long double a = 0.5L * Deg; a < 2 * Pi; a += 7 * Deg) EXPECT_NEAR_LD(Azimuth(10, -20, 10 + 3 * std::sin(a), -20 + 3 * std::cos(a)), a, 1e-17L);
    // Overhead, 30 degrees up due north, on the horizon due east, 5 degrees
    // below it due west, at GPS range.
    const elipsoid e(1);
    const long double r = 2.2e7L;
    for (long double latd : {-33.0L, 0.0L, 46.05L, 78.9L}) {
        const flh g(latd * Deg, 14.5L * Deg, 350.0L);
        const xyz st = flh2xyz(g, e);
        const auto [north, east, up] = Axes(g, e);
        const struct { xyz sat; long double el, az; } los[] = {
            {flh2xyz(flh(g.f, g.l, 2.02e7L), e), Pi / 2, -1}, {st + r * (std::cos(30 * Deg) * north + std::sin(30 * Deg) * up), 30 * Deg, 0},
            {st + r * east, 0, Pi / 2}, {st + r * (-std::cos(5 * Deg) * east - std::sin(5 * Deg) * up), -5 * Deg, 1.5L * Pi}};
        for (const auto& c : los) {
            long double E = -1, A = -1, Z = -1, A2 = -1;
            SatelliteAzimuthElevation(st, xyzt(c.sat, 1e-4L), e, &E, &A);
            SatelliteAzimuthZenith(st, xyzt(c.sat, 0), e, &Z, &A2);
            EXPECT_TRUE(std::fabs(E - c.el) < Direction_rad && std::fabs(Z - (Pi / 2 - c.el)) < Direction_rad &&
                        (c.az < 0 || std::fabs(std::remainder(A - c.az, 2 * Pi)) + std::fabs(std::remainder(A2 - c.az, 2 * Pi)) < Direction_rad)) << latd << ": " << E << " " << Z << " " << A;
            // The sines and cosines from the components (overhead, asin
            // near 1 costs E itself some 1e-10 rad; the azimuth snaps
            // components below 1e-14 to 0).
            const SkyDirection d = SatelliteSkyDirection(st, LocalFrame(xyz2flh(st, e)), xyzt(c.sat, 0));
            EXPECT_TRUE(d.E == E && d.A == A && std::fabs(d.sinE - std::sin(E)) + std::fabs(d.cosE - std::cos(E)) < Direction_rad &&
                        (c.az < 0 || std::fabs(d.sinA - std::sin(A)) + std::fabs(d.cosA - std::cos(A)) < Direction_rad)) << latd << ": " << d.sinE << " " << d.cosE;
        }
    }
    // No line of sight: elevation and azimuth 0, below any mask.
    long double E = -1, A = -1;
    const xyz st(4112958.7L, 334002.3L, 4847353.4L);
    SatelliteAzimuthElevation(st, xyzt(st, 0.1L), e, &E, &A);
    EXPECT_TRUE(E == 0.0L && A == 0.0L);

    // Body axes: right-handed, z to the centre of the Earth, the Sun in the
    // x-z plane on the +x side.
    for (const xyzt& s : {xyzt(1.5e7L, -2.0e7L, 5.0e6L, 1e-4L), xyzt(-2.6e7L, 1.0e6L, -3.0e6L, 0)})
        for (const xyz& sun : {xyz(1.4e11L, 3.0e10L, 1.1e10L), xyz(-5.0e10L, -1.3e11L, 4.0e10L)}) {
            xyz X, Y, Z, toSun = (sun - s).GetUnitVector(1);
            GNSSSatBasis(X, Y, Z, s, sun);
            EXPECT_LT(std::fabs(X.GetLength() - 1) + std::fabs(Y.GetLength() - 1) + std::fabs(X * Y) + Dist(CrossP(X, Y), Z) + std::fabs(Y * toSun), Rotation);
            EXPECT_TRUE(Dist(Z * s.GetLength(), -xyz(s)) < 1e-8L && X * toSun > 0.0L);
        }
}

TEST(VectorAlgebra, ProductsRotationsAndTimeTermsBetweenClasses) {
    const xyz big(2.6e7L, -1.3e7L, 4.0e6L), a(1, 2, 3), b(-4, 5, 0.5L);
    // 1e-9 m: a few long double ulps (4e-12 m) at 3e7 m after a division,
    // a square root or three rotations.
    EXPECT_NEAR_LD(big.GetUnitVector(1) * big, big.GetLength(), 1e-9L);
    EXPECT_TRUE(xyz(1e7L, 0, 0).GetUnitVector(-1) == xyz(-1, 0, 0) && xyz().GetUnitVector(1) == xyz() && xyzt(3, 4, 0, 7).GetUnitVector(1) == xyzt(0.6L, 0.8L, 0, 0));
    EXPECT_TRUE(xyz(1, 0, 0).RotateZ(Pi / 2) == xyz(0, 1, 0) && xyz(0, 1, 0).RotateX(Pi / 2) == xyz(0, 0, 1) &&
                xyz(0, 0, 1).RotateY(Pi / 2) == xyz(1, 0, 0));  // right-hand rule about each axis
    EXPECT_LT(Dist(xyz(big).RotateX(0.3L).RotateY(-1.2L).RotateZ(2.9L).RotateZ(-2.9L).RotateY(1.2L).RotateX(-0.3L), big), 1e-9L);
    // CrossP by hand: (2*0.5-3*5, 3*-4-1*0.5, 1*5-2*-4)
    EXPECT_TRUE(a * b == 7.5L && CrossP(a, b) == xyz(-14, -12.5L, 13));
    EXPECT_TRUE(ElementP(a, b) == xyz(-4, 10, 1.5L) && sqrt(xyz(4, 9, 0.25L)) == xyz(2, 3, 0.5L) && 2.0L * a - a == a);
    EXPECT_EQ((((xyz(a) += b) -= a) *= 2) /= 4, b * 0.5L);
    // Equality is 1e-14 per component.
    EXPECT_TRUE(a == xyz(1, 2, 3 + 5e-15L) && !(a == xyz(1, 2, 3 + 2e-14L)) && a != xyz(1 - 2e-14L, 2, 3));

    // p = s drops dt; a plain vector has no time; += xyz adds the Cartesian part only.
    const xyzt s(1, 2, 3, 0.5L);
    xyz p;
    xyzt q(9, 9, 9, 9), t = s;
    p = s, q = xyz(4, 5, 6), t += s, t += xyz(1, 1, 1);
    EXPECT_TRUE(p == xyz(1, 2, 3) && q == xyzt(4, 5, 6, 0) && t == xyzt(3, 5, 7, 1) && s * 2.0L == xyzt(2, 4, 6, 1));
    EXPECT_TRUE(s + xyz(1, 1, 1) == xyz(2, 3, 4) && xyz(1, 1, 1) - s == xyz(0, -1, -2) && !(s == xyzt(1, 2, 3, 0.6L)));
    const neut nt(1, 2, 3, 4);
    neu n;
    EXPECT_TRUE((n = nt) == neu(1, 2, 3) && nt + neu(1, 1, 1) == neu(2, 3, 4) && nt * 2.0L == neut(2, 4, 6, 8) && !(nt == neut(1, 2, 3, 4.1L)) &&
                neu(1, 2, 3) * neu(1, 1, 1) == 6.0L && neu(1, 2, 3) != neu(1, 2, 3.1L));
    EXPECT_NEAR_LD(neu(3, 4, 12).GetLength(), 13.0L, 1e-17L);  // the exact 169, correctly rounded
    const flht ft(0.5L, 1.0L, 100.0L, 2.0L);
    flh fp = ft;
    EXPECT_TRUE(ft + ft == flht(1.0L, 2.0L, 200.0L, 4.0L) && fp == flh(0.5L, 1.0L, 100.0L) && fp + flh(0.25L, -2.0L, 1.0L) == flh(0.75L, -1.0L, 101.0L));
    EXPECT_EQ(fp -= flh(0.5L, 1.0L, 0.0L), flh(0, 0, 100.0L));
}

TEST(CoordinateFormat, PrintAndReadFormsOfEveryClass) {
    const flh site((49.0L + 46.0L / 60 + 56.88L / 3600) * Deg, (4.0L + 38.0L / 60 + 33.53L / 3600) * Deg, 199.3L), g(45 * Deg, -90 * Deg, 10);
    // Each case sets the print globals and prints; the defaults come back after it.
    // Unit 1000 prints millimetres; any other unit divides.
    const struct { std::function<void()> set; std::function<std::string()> print; const char* text; } cases[] = {
        {[] {}, [] { return Print(xyz(4112958.7L, 334002.3L, 4847353.4L)) + Print(neu(0.1L, -0.25L, 1.5L)) + Print(flh(0.5L, -1.25L, 3)); }, "  4112958.7000   334002.3000  4847353.4000      0.1000     -0.2500    1.5000  0.50000000 -1.25000000    3.0000"},
        {[] { xyzns::Unit = 1000; xyzns::Width = 10; xyzns::NDec = 1; }, [] { return Print(xyz(1.2345L, -0.5L, 0)); }, "    1234.5    -500.0       0.0"},
        {[] { xyzns::Unit = 2; xyzns::Width = 10; xyzns::NDec = 1; }, [] { return Print(xyz(3, 5, -7)); }, "       1.5       2.5      -3.5"},
        {[] { xyztns::Unit = 1000; xyztns::Width = 8; xyztns::NDec = 3; xyztns::UnitT = 1e6L; }, [] { return Print(xyzt(1000, 2500, -500, 1.5e-3L)); }, "   1.000   2.500  -0.500 1500.000000"},
        {[] { xyztns::Unit = 100; xyztns::Width = 8; xyztns::NDec = 3; xyztns::PrintTime = 0; }, [] { return Print(xyzt(1, 2.5L, -5, 1.5e-3L)); }, " 100.000 250.000-500.000"},
        {[] { neuns::PrintType = 0; neuns::Unit = 1000; }, [] { return Print(neu(1, 2, 3)); }, "        3.0000        2.0000        1.0000"},
        {[] { neuns::NDecNE = neuns::NDecU = 2; neuns::WidthNE = neuns::WidthU = 8; neuns::Unit = 1000; }, [] { return Print(neu(0.0012L, -0.0034L, 0.1L)); }, "    1.20   -3.40  100.00"},
        {[] { neuns::NDecNE = neuns::NDecU = 2; neuns::WidthNE = neuns::WidthU = 8; neuns::Unit = 0.5L; }, [] { return Print(neu(1, 2, 3)); }, "    2.00    4.00    6.00"},
        {[] { neutns::UnitT = 1e3L; }, [] { return Print(neut(1, 2, 3, 0.002L)); }, "      1.0000      2.0000    3.0000  2.000000"},
        {[] { flhns::Unit = 4; flhns::NDecFL = 5; flhns::WidthFL = 16; flhns::WidthH = 12; }, [&] { return Print(site) + Print(flh(-0.5L * Deg, -(12 + 15.0L / 60) * Deg, -20)); }, "  49 46 56.88000   4 38 33.53000    199.3000  -0 30  0.00000 -12 15  0.00000    -20.0000"},
        {[] { flhns::Unit = 5; }, [&] { return Print(site); }, "  4 38 33.5  49 46 56.9   199.3"},
        {[] { flhns::Unit = 1; }, [&] { return Print(g); }, " 45.00000000-90.00000000   10.0000"},
        {[] { flhns::Unit = 2; }, [&] { return Print(g); }, " 50.00000000-100.00000000   10.0000"},
        {[] { flhns::Unit = 3; flhns::NDecFL = 6; }, [] { return Print(flh((45 + 30.0L / 60 + 25.12L / 3600) * Deg, 0, 0)); }, "   45.302512    0.000000    0.0000"},
        {[] { flhtns::Unit = 1; flhtns::UnitT = 1e3L; }, [&] { return Print(flht(g.f, g.l, g.h, 0.0025L)); }, " 45.00000000-90.00000000   10.0000    2.500000"}};
    for (const auto& c : cases) {
        c.set();
        EXPECT_EQ(c.print(), c.text);
        xyzns::NDec = xyztns::NDec = 4; xyzns::Width = xyztns::Width = 14; xyzns::Unit = xyztns::Unit = xyztns::UnitT = 1.0L; xyztns::PrintTime = 1;
        neuns::NDecNE = neuns::NDecU = 4; neuns::WidthNE = 12; neuns::WidthU = 10; neuns::Unit = neutns::UnitT = flhtns::UnitT = 1.0L; neuns::PrintType = 1;
        flhns::NDecFL = 8; flhns::NDecH = 4; flhns::WidthFL = 12; flhns::WidthH = 10; flhns::Unit = flhtns::Unit = 0;
    }
    // Readers, each against the value its text stands for (the time form of
    // neu scales its time only); a short line
    // fails the stream and leaves the value alone.
    xyzns::Unit = 100; xyztns::Unit = 100; xyztns::UnitT = 1000; neuns::Unit = 1000; neutns::UnitT = 1e6L; flhtns::UnitT = 1e6L;
    xyz rx; xyzt rt; neu rn; neut rnt; flht rft;
    std::istringstream("100 250 -300   700 800 900 4   12 34 -56   1 2 3 5   0.1 0.2 3 250") >> rx >> rt >> rn >> rnt >> rft;
    EXPECT_TRUE(rx == xyz(1, 2.5L, -3) && rt == xyzt(7, 8, 9, 0.004L) && rn == neu(0.012L, 0.034L, -0.056L) && rnt == neut(1, 2, 3, 5e-6L) && rft == flht(0.1L, 0.2L, 3, 250e-6L));
    EXPECT_TRUE(!(std::istringstream("1 2") >> rx) && rx == xyz(1, 2.5L, -3));
    // Angles to a few ulp of the degree sums (1e-15 rad), 1e-12 rad for the 8 packed digits.
    flh r4, r1, r3;
    flhns::Unit = 4, std::istringstream("-0 30 0 -12 15 36 100.5") >> r4;
    flhns::Unit = 1, std::istringstream("45.5 -120.25 10") >> r1;
    flhns::Unit = 3, std::istringstream("45.302512 -4.3833 7") >> r3;
    EXPECT_TRUE(std::fabs(r4.f + 0.5L * Deg) < 1e-15L && std::fabs(r4.l + (12 + 15.0L / 60 + 36.0L / 3600) * Deg) < 1e-15L && r4.h == 100.5L) << r4;
    EXPECT_TRUE(std::fabs(r1.f - 45.5L * Deg) < 1e-15L && std::fabs(r1.l + 120.25L * Deg) < 1e-15L) << r1;
    EXPECT_TRUE(std::fabs(r3.f - (45 + 30.0L / 60 + 25.12L / 3600) * Deg) < 1e-12L && std::fabs(r3.l + (4 + 38.0L / 60 + 33.0L / 3600) * Deg) < 1e-12L) << r3;
    xyzns::Unit = xyztns::Unit = xyztns::UnitT = neuns::Unit = neutns::UnitT = flhtns::UnitT = 1.0L, flhns::Unit = 0;
    // The caller's own stream format survives.
    std::ostringstream os;
    os << std::scientific << std::setprecision(2) << site << xyz();
    EXPECT_TRUE((os.flags() & std::ios::scientific) && os.precision() == 2);
}

TEST(CoordinateDeath, BadAnglesUnsetEllipsoidAndUnknownFormsStop) {
    // The bounds 90 and 180 apply to the radian values as numbers; a NaN
    // latitude is caught, also when it arrives by assignment.
    EXPECT_EQ(flh(90.0L, -180.0L, 0.0L).f, 90.0L);
    const auto frame = [](const std::string& cls, const std::string& msg) { return "\\*\\*\\*\\* " + cls + ": Error -> " + msg + " not valid \\*\\*\\*\\*\n     Exiting class " + cls; };
    const struct { std::function<void()> f; std::string regex; } cases[] = {
        {[] { flh p(90.001L, 0.0L, 0.0L); }, frame("flh", "LATITUDE")},
        {[] { flh p(0.0L, -180.5L, 0.0L); }, frame("flh", "LONGITUDE")},
        {[] { flht p(0.0L, 200.0L, 0.0L, 0.0L); }, frame("flht", "LONGITUDE")},
        {[] { flh p; p.Set(std::nanl(""), 0, 0); }, frame("flh", "LATITUDE")},
        {[] { flh p(80, 0, 0); p += flh(20, 0, 0); }, frame("flh", "LATITUDE")},
        {[] { xyz2flh(xyz(NAN, 0, 0), elipsoid(0)); }, frame("flh", "LATITUDE")},
        {[] { elipsoid(5); }, "\\*\\*\\*\\* Orvo: Error -> Improper ELLIPSOID setting! \\*\\*\\*\\*"},
        {[] { xyz2flh(xyz(6.4e6L, 0, 0), elipsoid()); }, "Orvo: Error -> Reference ellipsoid not set"},
        {[] { flh2xyz(flh(0, 0, 0), elipsoid()); }, "\\*\\*\\*\\* Orvo: Error -> Reference ellipsoid not set"},
        {[] { matrix<long double> out; g2lg(matrix<long double>(2, 2, 1.0L), flh(0, 0, 0), out); }, "Orvo: Error -> Covariance rotation needs a 3 x 3 matrix, got 2 x 2"},
        {[] { flhns::Unit = 5; std::istringstream in("1 2 3"); flh p; in >> p; }, "Orvo: Error -> flh: no input in form 5"},
        {[] { flhns::Unit = 7; std::ostringstream os; os << flh(); }, "flh: unknown print form 7"}};
    for (const auto& c : cases) EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); c.f(); }, ::testing::ExitedWithCode(1), c.regex);
}
