// Coordinate classes and their transformations: geodetic conversion against
// published values and round trips, local frames against the geometry of
// the ellipsoid, directions against constructed lines of sight, and the
// print forms against text written out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

#include "geodesy/CoordinateTransforms.h"
#include "geodesy/elipsoid.h"
#include "geodesy/flh.h"
#include "geodesy/neu.h"
#include "geodesy/xyz.h"
#include "numerics/matrix.h"
#include "numerics/NearLD.h"

namespace {

constexpr long double Pi = 3.141592653589793238462643383279502884L;
constexpr long double Deg = Pi / 180.0L;

// 1 µm, a hundred times tighter than the 0.1 mm a position needs: the
// latitude iteration stops at 1e-14 rad (6e-8 m on the ground) and
// extended-precision round-off at orbit radius is about 1e-11 m, so a
// wrong term of any physical size fails.
constexpr long double RoundTrip_m = 1e-6L;

// Published IAU SOFA values (test_vectors.md, section 9) carry 17 digits;
// the reference itself states the match an implementation of the same
// formulas reaches: 1e-14 rad, 1e-8 m in height, 1e-7 m in position.
constexpr long double SofaAngle_rad = 1e-14L;
constexpr long double SofaHeight_m = 1e-8L;
constexpr long double SofaPosition_m = 1e-7L;

// Rotations are built from sin and cos in extended precision: an
// orthonormal 3 x 3 product of unit-sized values stays within a few 1e-19;
// 1e-15 leaves room for the sums yet catches any sign or index slip.
constexpr long double Rotation = 1e-15L;

// Angle-direction checks use chords whose direction differs from the true
// tangent by terms of order e^2 delta^2 = 1e-12 rad at delta = 1e-5 rad.
constexpr long double Direction_rad = 1e-9L;

// Distance between two Cartesian points.
long double Dist(const xyz& a, const xyz& b) { return (a - b).GetLength(); }

// Ground distance (m) between two geodetic positions through their
// Cartesian points; free of the longitude wrap and the pole singularity.
long double GroundDist(const flh& a, const flh& b, const elipsoid& e)
{
    return Dist(flh2xyz(a, e), flh2xyz(b, e));
}

// Saves the program-wide print settings and puts them back, so that a
// test's own settings never leak into another.
class PrintSettings : public ::testing::Test {
protected:
    void TearDown() override
    {
        xyzns::NDec = 4; xyzns::Width = 14; xyzns::Unit = 1.0L;
        xyztns::NDec = 4; xyztns::NDecT = 6; xyztns::Width = 14; xyztns::WidthT = 12;
        xyztns::Unit = 1.0L; xyztns::UnitT = 1.0L; xyztns::PrintTime = 1;
        neuns::NDecNE = 4; neuns::NDecU = 4; neuns::WidthNE = 12; neuns::WidthU = 10;
        neuns::Unit = 1.0L; neuns::PrintType = 1;
        neutns::UnitT = 1.0L;
        flhns::NDecFL = 8; flhns::NDecH = 4; flhns::WidthFL = 12; flhns::WidthH = 10; flhns::Unit = 0;
        flhtns::Unit = 0; flhtns::UnitT = 1.0L;
    }
    template <class T> static std::string Print(const T& v)
    {
        std::ostringstream os;
        os << v;
        return os.str();
    }
};

}  // namespace

// ---------------------------------------------------------------- ellipsoid

TEST(Ellipsoid, TableMatchesPublishedConstants)
{
    // Published defining 1/f and derived b, e^2 (NIMA TR8350.2 for WGS 84,
    // Moritz 1980 for GRS 80); b to the 0.1 mm of the tables.
    constexpr long double Tab_m = 1e-4L;
    constexpr long double TabRel = 1e-12L;
    elipsoid grs(0), wgs(1), pz(2), bessel(3), sphere(4);
    // 1/f is defining (exact decimals): TabRel admits round-off of 1/(1/f) only.
    EXPECT_NEAR_LD(1.0L / wgs.GetF(), 298.257223563L, TabRel * 298.0L);
    EXPECT_NEAR_LD(1.0L / grs.GetF(), 298.257222101L, TabRel * 298.0L);
    EXPECT_NEAR_LD(1.0L / pz.GetF(), 298.257839303L, TabRel * 298.0L);
    EXPECT_NEAR_LD(1.0L / bessel.GetF(), 299.1528128L, TabRel * 299.0L);
    EXPECT_NEAR_LD(wgs.GetB(), 6356752.3142L, Tab_m);
    EXPECT_NEAR_LD(grs.GetB(), 6356752.3141L, Tab_m);
    // 1e-14: the tables quote e^2 to 14 decimals. e times e against e^2 is one
    // square root and one product: 1e-18 is some 50 long double ulps of 0.0067.
    EXPECT_NEAR_LD(wgs.GetESQR(), 0.00669437999014L, 1e-14L);
    EXPECT_NEAR_LD(grs.GetESQR(), 0.00669438002290L, 1e-14L);
    EXPECT_NEAR_LD(wgs.GetE() * wgs.GetE(), wgs.GetESQR(), 1e-18L);
    // Second eccentricity squared of WGS 84: 0.00673949674228.
    EXPECT_NEAR_LD(wgs.GetE2() * wgs.GetE2(), 0.00673949674228L, 1e-14L);
    EXPECT_NEAR_LD(wgs.GetF2(), (wgs.GetA() - wgs.GetB()) / wgs.GetB(), 1e-18L);
    EXPECT_EQ(sphere.GetA(), 6371000.0L);
    EXPECT_EQ(sphere.GetE(), 0.0L);
    EXPECT_EQ(pz.GetA(), 6378136.0L);
    EXPECT_EQ(bessel.GetA(), 6377397.155L);
}

TEST(EllipsoidDeath, UnknownNumberAndUnsetEllipsoidStop)
{
    EXPECT_EXIT(elipsoid(5), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> Improper ELLIPSOID setting! \\*\\*\\*\\*");
    EXPECT_EXIT(elipsoid(-1), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> Improper ELLIPSOID setting! \\*\\*\\*\\*");
    const elipsoid unset;
    EXPECT_EXIT(xyz2flh(xyz(6.4e6L, 0, 0), unset), ::testing::ExitedWithCode(1),
                "Orvo: Error -> Reference ellipsoid not set");
    EXPECT_EXIT(flh2xyz(flh(0, 0, 0), unset), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> Reference ellipsoid not set");
}

// ---------------------------------------------------------- geodetic <-> XYZ

TEST(GeodeticConversion, MatchesSofaTestValues)
{
    const xyz p(2.0e6L, 3.0e6L, 5.244e6L);
    const flh w = xyz2flh(p, elipsoid(1));
    EXPECT_NEAR_LD(w.l, 0.98279372324732907L, SofaAngle_rad);
    EXPECT_NEAR_LD(w.f, 0.97160184819075459L, SofaAngle_rad);
    EXPECT_NEAR_LD(w.h, 331.41724614260599L, SofaHeight_m);
    const flh g = xyz2flh(p, elipsoid(0));
    EXPECT_NEAR_LD(g.f, 0.97160184820607853L, SofaAngle_rad);
    EXPECT_NEAR_LD(g.h, 331.41731754844348L, SofaHeight_m);

    const flh q(-0.5L, 3.1L, 2500.0L);
    const xyz qw = flh2xyz(q, elipsoid(1));
    EXPECT_NEAR_LD(qw.x, -5599000.5577049947L, SofaPosition_m);
    EXPECT_NEAR_LD(qw.y, 233011.67223479203L, SofaPosition_m);
    EXPECT_NEAR_LD(qw.z, -3040909.4706983363L, SofaPosition_m);
    const xyz qg = flh2xyz(q, elipsoid(0));
    EXPECT_NEAR_LD(qg.x, -5599000.5577260984L, SofaPosition_m);
    EXPECT_NEAR_LD(qg.y, 233011.6722356703L, SofaPosition_m);
    EXPECT_NEAR_LD(qg.z, -3040909.4706095476L, SofaPosition_m);
}

TEST(GeodeticConversion, MatchesIgsSiteLog)
{
    // AAER00FRA: the log rounds angles to 0.01" (0.3 m) and height to 0.1 m.
    constexpr long double LogAngle_rad = 0.01L / 3600.0L * Deg;
    constexpr long double LogHeight_m = 0.05L;
    const flh p = xyz2flh(xyz(4112958.700L, 334002.300L, 4847353.400L), elipsoid(0));
    EXPECT_NEAR_LD(p.f, (49.0L + 46.0L / 60.0L + 56.88L / 3600.0L) * Deg, LogAngle_rad);
    EXPECT_NEAR_LD(p.l, (4.0L + 38.0L / 60.0L + 33.53L / 3600.0L) * Deg, LogAngle_rad);
    EXPECT_NEAR_LD(p.h, 199.3L, LogHeight_m);
}

TEST(GeodeticConversion, ClosedFormPointsOnTheAxes)
{
    const elipsoid e(1);
    const long double a = e.GetA(), b = e.GetB();
    for (long double h : {-500.0L, 0.0L, 10000.0L, 2.0e7L}) {
        EXPECT_LT(Dist(flh2xyz(flh(0, 0, h), e), xyz(a + h, 0, 0)), RoundTrip_m);
        EXPECT_LT(Dist(flh2xyz(flh(Pi / 2, 0, h), e), xyz(0, 0, b + h)), RoundTrip_m);
        EXPECT_LT(Dist(flh2xyz(flh(-Pi / 2, 1.0L, h), e), xyz(0, 0, -b - h)), RoundTrip_m);
        EXPECT_LT(Dist(flh2xyz(flh(0, Pi / 2, h), e), xyz(0, a + h, 0)), RoundTrip_m);

        const flh eq = xyz2flh(xyz(a + h, 0, 0), e);
        EXPECT_NEAR_LD(eq.f, 0.0L, SofaAngle_rad);
        EXPECT_NEAR_LD(eq.l, 0.0L, SofaAngle_rad);
        EXPECT_NEAR_LD(eq.h, h, RoundTrip_m);
        // Exactly on the axis: the textbook height p/cos f - N has no digits
        // left here.
        const flh np = xyz2flh(xyz(0, 0, b + h), e);
        EXPECT_NEAR_LD(np.f, Pi / 2, SofaAngle_rad);
        EXPECT_NEAR_LD(np.h, h, RoundTrip_m);
        const flh sp = xyz2flh(xyz(0, 0, -b - h), e);
        EXPECT_NEAR_LD(sp.f, -Pi / 2, SofaAngle_rad);
        EXPECT_NEAR_LD(sp.h, h, RoundTrip_m);
    }
    // x < 0 on the x axis: longitude -pi, the lower end of [-pi, pi).
    EXPECT_NEAR_LD(xyz2flh(xyz(-a, 0, 0), e).l, -Pi, SofaAngle_rad);
    EXPECT_NEAR_LD(xyz2flh(xyz(-a, 1.0L, 0), e).l, Pi - 1.0L / a, SofaAngle_rad);
    EXPECT_NEAR_LD(xyz2flh(xyz(0, -a, 0), e).l, -Pi / 2, SofaAngle_rad);
    // The centre maps to the north pole at depth b, which maps back.
    const flh c = xyz2flh(xyz(), e);
    EXPECT_NEAR_LD(c.f, Pi / 2, SofaAngle_rad);
    EXPECT_NEAR_LD(c.h, -b, RoundTrip_m);
    EXPECT_LT(flh2xyz(c, e).GetLength(), RoundTrip_m);
}

TEST(GeodeticConversion, RoundTripClosesEverywhereOnEveryEllipsoid)
{
    const long double lats[] = {-90, -89.9999L, -75, -45, -10, 0, 1e-9L, 30, 60, 89.99999999L, 90};
    const long double heights[] = {-500, 0, 250.5L, 3000, 10000, 2.0e7L};
    for (int el = 0; el <= 4; ++el) {
        const elipsoid e(el);
        for (long double latd : lats)
            for (int lond = -180; lond <= 180; lond += 30)
                for (long double h : heights) {
                    const flh g(latd * Deg, lond * Deg, h);
                    const xyz p = flh2xyz(g, e);
                    const flh back = xyz2flh(p, e);
                    ASSERT_LT(GroundDist(g, back, e), RoundTrip_m)
                        << "ellipsoid " << el << " lat " << latd << " lon " << lond << " h " << h;
                    ASSERT_NEAR_LD(back.h, h, RoundTrip_m);
                    ASSERT_LT(Dist(flh2xyz(back, e), p), RoundTrip_m);
                    // y of a point at 180 degrees is sin(pi) N, a few 1e-13 m
                    // either side, so the ends of [-pi, pi) are both reached.
                    ASSERT_LE(std::fabs(back.l), Pi);
                }
    }
}

TEST(GeodeticConversion, TimeFormsCarryDtAndAgreeDespiteOtherStop)
{
    const elipsoid e(2);
    for (long double latd : {-89.5L, -20.0L, 45.0L, 88.0L})
        for (long double h : {100.0L, 2.55e7L}) {
            const flht g(latd * Deg, 2.0L, h, -1.25e-4L);
            const xyzt p = flht2xyzt(g, e);
            EXPECT_EQ(p.dt, g.dt);
            EXPECT_LT(Dist(p, flh2xyz(g, e)), RoundTrip_m);
            const flht t = xyzt2flht(p, e);
            const flh plain = xyz2flh(p, e);
            EXPECT_EQ(t.dt, g.dt);
            EXPECT_LT(GroundDist(t, plain, e), RoundTrip_m);
            EXPECT_NEAR_LD(t.h, plain.h, RoundTrip_m);
            EXPECT_LT(GroundDist(t, g, e), RoundTrip_m);
        }
}

// ------------------------------------------------------------- local frames

TEST(LocalFrame, AxesFollowTheEllipsoidGeometry)
{
    // Up is the ellipsoid normal: a height step; north and east are chords
    // between neighbours at +-delta, parallel to the tangents.
    const elipsoid e(1);
    constexpr long double d = 1e-5L;
    for (long double latd : {-70.0L, -5.0L, 0.0L, 46.0L, 85.0L})
        for (long double lond : {-170.0L, 0.0L, 15.0L, 100.0L}) {
            const flh g(latd * Deg, lond * Deg, 300.0L);
            const xyz up = flh2xyz(flh(g.f, g.l, g.h + 1.0L), e) - flh2xyz(g, e);
            const xyz north = flh2xyz(flh(g.f + d, g.l, g.h), e) - flh2xyz(flh(g.f - d, g.l, g.h), e);
            const xyz east = flh2xyz(flh(g.f, g.l + d, g.h), e) - flh2xyz(flh(g.f, g.l - d, g.h), e);
            const neu u = g2lg(up.GetUnitVector(1), g);
            const neu n = g2lg(north.GetUnitVector(1), g);
            const neu ea = g2lg(east.GetUnitVector(1), g);
            EXPECT_NEAR_LD(u.u, 1.0L, Direction_rad);
            EXPECT_NEAR_LD(u.n, 0.0L, Direction_rad);
            EXPECT_NEAR_LD(u.e, 0.0L, Direction_rad);
            EXPECT_NEAR_LD(n.n, 1.0L, Direction_rad);
            EXPECT_NEAR_LD(n.u, 0.0L, Direction_rad);
            EXPECT_NEAR_LD(ea.e, 1.0L, Direction_rad);
            EXPECT_NEAR_LD(ea.n, 0.0L, Direction_rad);
            EXPECT_NEAR_LD(ea.u, 0.0L, Direction_rad);
        }
}

TEST(LocalFrame, RotationsKeepLengthAndInvertEachOther)
{
    const elipsoid e(0);
    const xyz vecs[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {123.4L, -56.7L, 8.9L}, {-2.1e7L, 1.4e7L, 9.0e6L}};
    const flh pts[] = {{0, 0, 0}, {Pi / 2, 0.3L, 10}, {-0.7L, -2.9L, 40}, {0.87L, 0.08L, 199}};
    for (const flh& g : pts)
        for (const xyz& v : vecs) {
            const long double tol = Rotation * (1.0L + v.GetLength());
            const neu l = g2lg(v, g);
            EXPECT_NEAR_LD(l.GetLength(), v.GetLength(), tol);
            EXPECT_LT(Dist(lg2g(l, g), v), tol);
            const neu ln(v.x, v.y, v.z);
            EXPECT_LT((g2lg(lg2g(ln, g), g) - ln).GetLength(), tol);
            // The Cartesian-point forms convert the point first; on the
            // polar axis the longitude, and with it the horizontal axes,
            // cannot come back from x, y, z.
            if (std::fabs(g.f) > 1.5L) continue;
            const xyz tc = flh2xyz(g, e);
            EXPECT_LT((g2lg(v, tc, e) - l).GetLength(), tol * 10);
            EXPECT_LT(Dist(lg2g(l, tc, e), v), tol * 10);
            // The time forms carry dt untouched.
            const neut lt = gt2lgt(xyzt(v, 3.5e-3L), g);
            EXPECT_EQ(lt.dt, 3.5e-3L);
            EXPECT_LT((static_cast<const neu&>(lt) - l).GetLength(), tol);
            const xyzt back = lgt2gt(lt, tc, e);
            EXPECT_EQ(back.dt, 3.5e-3L);
            EXPECT_LT(Dist(back, v), tol * 10);
            EXPECT_EQ(gt2lgt(xyzt(v, 1.0L), tc, e).dt, 1.0L);
            EXPECT_EQ(lgt2gt(neut(1, 2, 3, -2.0L), g).dt, -2.0L);
        }
}

TEST(LocalFrame, CovarianceFormIsRCRt)
{
    const flh g(0.81L, -1.93L, 250.0L);
    // R from the vector form: its columns are the images of the axes.
    long double R[3][3];
    const xyz axes[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    for (int j = 0; j < 3; ++j) {
        const neu c = g2lg(axes[j], g);
        R[0][j] = c.n; R[1][j] = c.e; R[2][j] = c.u;
    }
    // A positive definite covariance (mm^2-scale, as the estimator's) in a
    // larger matrix: only the leading 3 x 3 block counts.
    matrix<long double> C(5, 5, 9.9L);
    const long double c3[3][3] = {{4.0e-6L, 1.2e-6L, -0.8e-6L}, {1.2e-6L, 2.5e-6L, 0.3e-6L}, {-0.8e-6L, 0.3e-6L, 9.0e-6L}};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) C(i, j) = c3[i][j];
    // A covariance scale of 1e-5 needs relative agreement; 1e-17 absolute
    // is 1e-12 of it.
    constexpr long double CovTol = 1e-17L;
    matrix<long double> L;
    g2lg(C, g, L);
    ASSERT_EQ(L.NRow(), 3);
    ASSERT_EQ(L.NCol(), 3);
    long double trace = 0.0L;
    for (int i = 0; i < 3; ++i) {
        trace += L(i, i);
        for (int j = 0; j < 3; ++j) {
            long double s = 0.0L;
            for (int k = 0; k < 3; ++k)
                for (int m = 0; m < 3; ++m) s += R[i][k] * c3[k][m] * R[j][m];
            EXPECT_NEAR_LD(L(i, j), s, CovTol) << i << "," << j;
        }
    }
    EXPECT_NEAR_LD(trace, c3[0][0] + c3[1][1] + c3[2][2], CovTol);
    // A flht point rotates the same way.
    matrix<long double> Lt;
    g2lg(C, flht(g.f, g.l, g.h, 1.0L), Lt);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_NEAR_LD(Lt(i, j), L(i, j), CovTol);
    // Back to Earth-centred axes, into the same matrix.
    lg2g(L, g, L);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_NEAR_LD(L(i, j), c3[i][j], CovTol);
}

TEST(LocalFrameDeath, CovarianceSmallerThan3x3Stops)
{
    const matrix<long double> S(2, 2, 1.0L);
    matrix<long double> out;
    EXPECT_EXIT(g2lg(S, flh(0, 0, 0), out), ::testing::ExitedWithCode(1),
                "Orvo: Error -> Covariance rotation needs a 3 x 3 matrix, got 2 x 2");
}

// --------------------------------------------------------------- directions

TEST(Direction, AzimuthCoversAllQuadrantsAndAxes)
{
    EXPECT_EQ(Azimuth(0, 0, 0, 1), 0.0L);                 // north
    EXPECT_NEAR_LD(Azimuth(0, 0, 1, 0), Pi / 2, 1e-18L);     // east
    EXPECT_NEAR_LD(Azimuth(0, 0, 0, -1), Pi, 1e-18L);        // south
    EXPECT_NEAR_LD(Azimuth(0, 0, -1, 0), 1.5L * Pi, 1e-18L); // west
    EXPECT_EQ(Azimuth(5, 5, 5, 5), 0.0L);                 // null
    EXPECT_EQ(Azimuth(0, 0, 5e-15L, 1), 0.0L);            // below 1e-14 is null
    EXPECT_NEAR_LD(Azimuth(0, 0, -5e-15L, -1), Pi, 1e-18L);
    // Against atan2 all around, from an offset origin.
    for (int k = 0; k < 360; k += 7) {
        const long double az = (k + 0.5L) * Deg;
        const long double a = Azimuth(10, -20, 10 + 3 * std::sin(az), -20 + 3 * std::cos(az));
        // 1e-17 rad: one long double atan2 of points 3 m apart at round-off 1e-19 m.
        EXPECT_NEAR_LD(a, az, 1e-17L) << k;
        EXPECT_GE(a, 0.0L);
        EXPECT_LT(a, 2 * Pi);
    }
}

TEST(Direction, SatelliteOverheadNorthAndEast)
{
    const elipsoid e(1);
    constexpr long double d = 1e-5L;
    for (long double latd : {-33.0L, 0.0L, 46.05L, 78.9L}) {
        const flh g(latd * Deg, 14.5L * Deg, 350.0L);
        const xyz st = flh2xyz(g, e);
        const xyz up = (flh2xyz(flh(g.f, g.l, g.h + 1.0L), e) - st).GetUnitVector(1);
        const xyz north = (flh2xyz(flh(g.f + d, g.l, g.h), e) - flh2xyz(flh(g.f - d, g.l, g.h), e)).GetUnitVector(1);
        const xyz east = (flh2xyz(flh(g.f, g.l + d, g.h), e) - flh2xyz(flh(g.f, g.l - d, g.h), e)).GetUnitVector(1);
        long double E = -1, A = -1, Z = -1;

        SatelliteAzimuthElevation(st, xyzt(flh2xyz(flh(g.f, g.l, 2.02e7L), e), 1e-4L), e, &E, &A);
        EXPECT_NEAR_LD(E, Pi / 2, Direction_rad);
        SatelliteAzimuthZenith(st, xyzt(flh2xyz(flh(g.f, g.l, 2.02e7L), e), 0), e, &Z, &A);
        EXPECT_NEAR_LD(Z, 0.0L, Direction_rad);

        // 30 degrees up, due north, at GPS range.
        const long double r = 2.2e7L;
        const xyz satN = st + r * (std::cos(30 * Deg) * north + std::sin(30 * Deg) * up);
        SatelliteAzimuthElevation(st, xyzt(satN, 0), e, &E, &A);
        EXPECT_NEAR_LD(E, 30 * Deg, Direction_rad);
        EXPECT_NEAR_LD(std::remainder(A, 2 * Pi), 0.0L, Direction_rad);
        SatelliteAzimuthZenith(st, xyzt(satN, 0), e, &Z, &A);
        EXPECT_NEAR_LD(Z, 60 * Deg, Direction_rad);

        // On the horizon, due east; 5 degrees below it, due west.
        SatelliteAzimuthElevation(st, xyzt(st + r * east, 0), e, &E, &A);
        EXPECT_NEAR_LD(E, 0.0L, Direction_rad);
        EXPECT_NEAR_LD(A, Pi / 2, Direction_rad);
        const xyz satW = st + r * (-std::cos(5 * Deg) * east - std::sin(5 * Deg) * up);
        SatelliteAzimuthElevation(st, xyzt(satW, 0), e, &E, &A);
        EXPECT_NEAR_LD(E, -5 * Deg, Direction_rad);
        EXPECT_NEAR_LD(A, 1.5L * Pi, Direction_rad);
    }
    // No line of sight: elevation and azimuth 0, below any mask.
    long double E = -1, A = -1;
    const xyz st(4112958.7L, 334002.3L, 4847353.4L);
    SatelliteAzimuthElevation(st, xyzt(st, 0.1L), e, &E, &A);
    EXPECT_EQ(E, 0.0L);
    EXPECT_EQ(A, 0.0L);
}

TEST(Direction, SatelliteBasisIsRightHandedAndFacesEarthAndSun)
{
    const xyzt sats[] = {{1.5e7L, -2.0e7L, 5.0e6L, 1e-4L}, {-2.6e7L, 1.0e6L, -3.0e6L, 0}};
    const xyz suns[] = {{1.4e11L, 3.0e10L, 1.1e10L}, {-5.0e10L, -1.3e11L, 4.0e10L}};
    for (const xyzt& s : sats)
        for (const xyz& sun : suns) {
            xyz X, Y, Z;
            GNSSSatBasis(X, Y, Z, s, sun);
            EXPECT_NEAR_LD(X.GetLength(), 1.0L, Rotation);
            EXPECT_NEAR_LD(Y.GetLength(), 1.0L, Rotation);
            EXPECT_NEAR_LD(Z.GetLength(), 1.0L, Rotation);
            EXPECT_NEAR_LD(X * Y, 0.0L, Rotation);
            EXPECT_NEAR_LD(Y * Z, 0.0L, Rotation);
            EXPECT_NEAR_LD(X * Z, 0.0L, Rotation);
            EXPECT_LT(Dist(CrossP(X, Y), Z), Rotation);
            EXPECT_LT(Dist(Z * s.GetLength(), -xyz(s)), 1e-8L);   // nadir
            const xyz toSun = (sun - s).GetUnitVector(1);
            EXPECT_NEAR_LD(Y * toSun, 0.0L, Rotation);                // Sun in the x-z plane
            EXPECT_GT(X * toSun, 0.0L);                            // on the +x side
        }
}

// ------------------------------------------------------------ vector algebra

TEST(VectorAlgebra, UnitVectorRotationsAndProducts)
{
    EXPECT_EQ(xyz(1e7L, 0, 0).GetUnitVector(-1), xyz(-1, 0, 0));
    const xyz big(2.6e7L, -1.3e7L, 4.0e6L);
    // 1e-18: a few long double ulps of 1 after a division and a square root;
    // 1e-9 m is the same at 3e7 m, where an ulp is 4e-12 m.
    EXPECT_NEAR_LD(big.GetUnitVector(1).GetLength(), 1.0L, 1e-18L);
    EXPECT_NEAR_LD(big.GetUnitVector(1) * big, big.GetLength(), 1e-9L);
    EXPECT_EQ(xyz().GetUnitVector(1), xyz());
    const xyzt ut = xyzt(3, 4, 0, 7).GetUnitVector(1);
    EXPECT_EQ(ut, xyzt(0.6L, 0.8L, 0, 0));

    // Right-hand rule about each axis, lengths kept.
    EXPECT_EQ(xyz(1, 0, 0).RotateZ(Pi / 2), xyz(0, 1, 0));
    EXPECT_EQ(xyz(0, 1, 0).RotateX(Pi / 2), xyz(0, 0, 1));
    EXPECT_EQ(xyz(0, 0, 1).RotateY(Pi / 2), xyz(1, 0, 0));
    xyz r = big;
    r.RotateX(0.3L).RotateY(-1.2L).RotateZ(2.9L);
    // 1e-9 m: three rotations keep the length up to round-off (1e-11 m at 3e7 m).
    EXPECT_NEAR_LD(r.GetLength(), big.GetLength(), 1e-9L);
    r.RotateZ(-2.9L).RotateY(1.2L).RotateX(-0.3L);
    EXPECT_LT(Dist(r, big), 1e-9L);

    const xyz a(1, 2, 3), b(-4, 5, 0.5L);
    EXPECT_EQ(a * b, -4.0L + 10.0L + 1.5L);
    EXPECT_EQ(CrossP(xyz(1, 0, 0), xyz(0, 1, 0)), xyz(0, 0, 1));
    // 1e-17: small-integer inputs make the products exact but for the 0.5 term,
    // so the dot products vanish to round-off of numbers near 30.
    EXPECT_NEAR_LD(CrossP(a, b) * a, 0.0L, 1e-17L);
    EXPECT_NEAR_LD(CrossP(a, b) * b, 0.0L, 1e-17L);
    EXPECT_EQ(ElementP(a, b), xyz(-4, 10, 1.5L));
    EXPECT_EQ(sqrt(xyz(4, 9, 0.25L)), xyz(2, 3, 0.5L));
    EXPECT_EQ(2.0L * a - a, a);
    xyz c = a;
    c += b; c -= a; c *= 2; c /= 4;
    EXPECT_EQ(c, b * 0.5L);

    // Equality is 1e-14 per component.
    EXPECT_TRUE(a == xyz(1, 2, 3 + 5e-15L));
    EXPECT_FALSE(a == xyz(1, 2, 3 + 2e-14L));
    EXPECT_TRUE(a != xyz(1 - 2e-14L, 2, 3));
}

TEST(VectorAlgebra, TimeTermsBetweenClasses)
{
    const xyzt s(1, 2, 3, 0.5L);
    xyz p;
    p = s;                                // drops dt
    EXPECT_EQ(p, xyz(1, 2, 3));
    xyzt q(9, 9, 9, 9);
    q = xyz(4, 5, 6);                     // a plain vector has no time
    EXPECT_EQ(q, xyzt(4, 5, 6, 0));
    EXPECT_EQ(s + xyz(1, 1, 1), xyz(2, 3, 4));
    EXPECT_EQ(xyz(1, 1, 1) - s, xyz(0, -1, -2));
    EXPECT_EQ(s - s, xyz());
    xyzt t = s;
    t += s;
    EXPECT_EQ(t, xyzt(2, 4, 6, 1));
    t += xyz(1, 1, 1);                    // Cartesian part only
    EXPECT_EQ(t, xyzt(3, 5, 7, 1));
    EXPECT_EQ(s * 2.0L, xyzt(2, 4, 6, 1));
    EXPECT_FALSE(xyzt(1, 2, 3, 0.5L) == xyzt(1, 2, 3, 0.6L));

    const neut nt(1, 2, 3, 4);
    neu n;
    n = nt;
    EXPECT_EQ(n, neu(1, 2, 3));
    // 1e-17 m: square root of the exact 169, correctly rounded.
    EXPECT_NEAR_LD(neu(3, 4, 12).GetLength(), 13.0L, 1e-17L);
    EXPECT_EQ(nt + neu(1, 1, 1), neu(2, 3, 4));
    EXPECT_EQ(nt * 2.0L, neut(2, 4, 6, 8));
    EXPECT_EQ(neu(1, 2, 3) * neu(1, 1, 1), 6.0L);
    EXPECT_FALSE(neut(1, 2, 3, 4) == neut(1, 2, 3, 4.1L));

    const flht ft(0.5L, 1.0L, 100.0L, 2.0L);
    const flht sum = ft + ft;
    EXPECT_EQ(sum, flht(1.0L, 2.0L, 200.0L, 4.0L));
    flh fp = ft;
    EXPECT_EQ(fp, flh(0.5L, 1.0L, 100.0L));
    fp -= flh(0.5L, 1.0L, 0.0L);
    EXPECT_EQ(fp, flh(0, 0, 100.0L));
}

// --------------------------------------------------------------- validation

TEST(FlhDeath, BadAnglesStopWithTheClassFrame)
{
    // The bounds 90 and 180 apply to the radian values as numbers.
    const flh edge(90.0L, -180.0L, 0.0L);
    EXPECT_EQ(edge.f, 90.0L);
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); flh p(90.001L, 0.0L, 0.0L); (void)p; },
                ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* flh: Error -> LATITUDE not valid \\*\\*\\*\\*\n     Exiting class flh \\.\\.\\.");
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); flh p(0.0L, -180.5L, 0.0L); (void)p; },
                ::testing::ExitedWithCode(1), "flh: Error -> LONGITUDE not valid");
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); flht p(0.0L, 200.0L, 0.0L, 0.0L); (void)p; },
                ::testing::ExitedWithCode(1),
                "flht: Error -> LONGITUDE not valid \\*\\*\\*\\*\n     Exiting class flht");
    // A corrupt (NaN) latitude is caught, also when it arrives by assignment.
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); flh p; p.Set(std::nanl(""), 0, 0); },
                ::testing::ExitedWithCode(1), "flh: Error -> LATITUDE not valid");
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); flh p(80, 0, 0); p += flh(20, 0, 0); },
                ::testing::ExitedWithCode(1), "\\*\\*\\*\\* flh: Error -> LATITUDE not valid");
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); flh p = xyz2flh(xyz(NAN, 0, 0), elipsoid(0)); (void)p; },
                ::testing::ExitedWithCode(1), "flh: Error -> LATITUDE not valid");
}

// ------------------------------------------------------------------ streams

TEST_F(PrintSettings, XyzFormats)
{
    const xyz p(4112958.7L, 334002.3L, 4847353.4L);
    EXPECT_EQ(Print(p), "  4112958.7000   334002.3000  4847353.4000");
    xyzns::Unit = 1000; xyzns::Width = 10; xyzns::NDec = 1;   // kilometres to metres
    EXPECT_EQ(Print(xyz(1.2345L, -0.5L, 0)), "    1234.5    -500.0       0.0");
    xyzns::Unit = 2;                                          // any other divides
    EXPECT_EQ(Print(xyz(3, 5, -7)), "       1.5       2.5      -3.5");

    // xyzt: only 100 multiplies; dt in microseconds with UnitT 1e6.
    xyztns::Unit = 1000; xyztns::Width = 8; xyztns::NDec = 3; xyztns::UnitT = 1e6L;
    EXPECT_EQ(Print(xyzt(1000, 2500, -500, 1.5e-3L)), "   1.000   2.500  -0.500 1500.000000");
    xyztns::PrintTime = 0;
    EXPECT_EQ(Print(xyzt(1000, 2500, -500, 1.5e-3L)), "   1.000   2.500  -0.500");

    std::istringstream in("100 250 -300   7 8 9 4");
    xyzns::Unit = 100;
    xyz r;
    in >> r;
    EXPECT_EQ(r, xyz(1, 2.5L, -3));
    xyztns::Unit = 1; xyztns::UnitT = 1000;
    xyzt rt;
    in >> rt;
    EXPECT_EQ(rt, xyzt(7, 8, 9, 0.004L));
    // A short line fails the stream and leaves the value alone.
    std::istringstream bad("1 2");
    in.clear();
    bad >> r;
    EXPECT_TRUE(bad.fail());
    EXPECT_EQ(r, xyz(1, 2.5L, -3));

    // The caller's own stream format survives.
    std::ostringstream os;
    os << std::scientific << std::setprecision(2) << p;
    EXPECT_TRUE(os.flags() & std::ios::scientific);
    EXPECT_EQ(os.precision(), 2);
}

TEST_F(PrintSettings, NeuFormats)
{
    EXPECT_EQ(Print(neu(0.1L, -0.25L, 1.5L)), "      0.1000     -0.2500    1.5000");
    neuns::PrintType = 0;                          // up first, 14.4, unscaled
    neuns::Unit = 1000;
    EXPECT_EQ(Print(neu(1, 2, 3)), "        3.0000        2.0000        1.0000");
    neuns::PrintType = 1; neuns::NDecNE = 2; neuns::NDecU = 2; neuns::WidthNE = 8; neuns::WidthU = 8;
    EXPECT_EQ(Print(neu(0.0012L, -0.0034L, 0.1L)), "    1.20   -3.40  100.00");   // millimetres
    std::istringstream in("12 34 -56");
    neu r;
    in >> r;
    EXPECT_EQ(r, neu(0.012L, 0.034L, -0.056L));
    neuns::Unit = 0.5L;                            // any other: multiply on input, divide on output
    std::istringstream in2("2 4 6");
    in2 >> r;
    EXPECT_EQ(r, neu(1, 2, 3));
    EXPECT_EQ(Print(r), "    2.00    4.00    6.00");

    neutns::UnitT = 1e3L;
    EXPECT_EQ(Print(neut(1, 2, 3, 0.002L)), "      1.0000      2.0000    3.0000  2.000000");
    std::istringstream in3("1 2 3 5");
    neut rt;
    in3 >> rt;
    EXPECT_EQ(rt, neut(1, 2, 3, 0.005L));
}

TEST_F(PrintSettings, FlhFormats)
{
    // AAER00FRA from its site log: 49 46 56.88 N, 4 38 33.53 E, 199.3 m.
    const flh site((49.0L + 46.0L / 60 + 56.88L / 3600) * Deg, (4.0L + 38.0L / 60 + 33.53L / 3600) * Deg, 199.3L);
    flhns::Unit = 4; flhns::NDecFL = 5; flhns::WidthFL = 16; flhns::WidthH = 12;
    EXPECT_EQ(Print(site), "  49 46 56.88000   4 38 33.53000    199.3000");
    flhns::Unit = 5;
    EXPECT_EQ(Print(site), "  4 38 33.5  49 46 56.9   199.3");
    flhns::Unit = 4;
    EXPECT_EQ(Print(flh(-0.5L * Deg, -(12 + 15.0L / 60) * Deg, -20)), "  -0 30  0.00000 -12 15  0.00000    -20.0000");

    flhns::Unit = 1; flhns::NDecFL = 8; flhns::WidthFL = 12; flhns::WidthH = 10;
    const flh g(45 * Deg, -90 * Deg, 10);
    EXPECT_EQ(Print(g), " 45.00000000-90.00000000   10.0000");
    flhns::Unit = 2;
    EXPECT_EQ(Print(g), " 50.00000000-100.00000000   10.0000");
    flhns::Unit = 0;
    EXPECT_EQ(Print(flh(0.5L, -1.25L, 3)), "  0.50000000 -1.25000000    3.0000");
    flhns::Unit = 3; flhns::NDecFL = 6;
    EXPECT_EQ(Print(flh((45 + 30.0L / 60 + 25.12L / 3600) * Deg, 0, 0)), "   45.302512    0.000000    0.0000");

    flhtns::Unit = 1; flhtns::UnitT = 1e3L;
    EXPECT_EQ(Print(flht(45 * Deg, -90 * Deg, 10, 0.0025L)), " 45.00000000-90.00000000   10.0000    2.500000");

    // Readers, each checked against the angle the text stands for.
    constexpr long double Read_rad = 1e-15L;   // a few ulp of the degree sums
    flh r;
    flhns::Unit = 4;
    std::istringstream in4("-0 30 0 -12 15 36 100.5");
    in4 >> r;
    EXPECT_NEAR_LD(r.f, -0.5L * Deg, Read_rad);
    EXPECT_NEAR_LD(r.l, -(12 + 15.0L / 60 + 36.0L / 3600) * Deg, Read_rad);
    EXPECT_EQ(r.h, 100.5L);
    flhns::Unit = 1;
    std::istringstream in1("45.5 -120.25 10");
    in1 >> r;
    EXPECT_NEAR_LD(r.f, 45.5L * Deg, Read_rad);
    EXPECT_NEAR_LD(r.l, -120.25L * Deg, Read_rad);
    flhns::Unit = 3;
    std::istringstream in3("45.302512 -4.3833 7");
    in3 >> r;
    EXPECT_NEAR_LD(r.f, (45 + 30.0L / 60 + 25.12L / 3600) * Deg, 1e-12L);   // 8 packed digits
    EXPECT_NEAR_LD(r.l, -(4 + 38.0L / 60 + 33.0L / 3600) * Deg, 1e-12L);
    flhtns::Unit = 0; flhtns::UnitT = 1e6L;
    std::istringstream in0("0.1 0.2 3 250");
    flht rt;
    in0 >> rt;
    EXPECT_EQ(rt, flht(0.1L, 0.2L, 3, 250e-6L));
}

TEST(FlhDeath, ReadingAnOutputOnlyFormStops)
{
    EXPECT_EXIT({ flhns::Unit = 5; std::istringstream in("1 2 3"); flh p; in >> p; },
                ::testing::ExitedWithCode(1), "Orvo: Error -> flh: no input in form 5");
    EXPECT_EXIT({ flhns::Unit = 7; std::ostringstream os; os << flh(); },
                ::testing::ExitedWithCode(1), "flh: unknown print form 7");
}
