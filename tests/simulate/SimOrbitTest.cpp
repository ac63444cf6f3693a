// The simulator's own orbits against two-body physics and published
// constellation figures, and read back through the program's SP3 reader.
#include <gtest/gtest.h>

#include <cmath>

#include "SimOrbit.h"
#include "SimSupport.h"
#include "geodesy/mjd.h"
#include "orbits/GNSSpEph.h"
#include "numerics/NearLD.h"

namespace {

constexpr long double Pi = 3.14159265358979323846264338327950288L;

SimVec Cross(const SimVec& a, const SimVec& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// The same satellite without J2: a pure Kepler ellipse.
SimSatellite PureKepler(SimSatellite s)
{
    s.raanDot = s.argpDot = 0.0L;
    s.MDot = std::sqrt(simorbitns::GM / (s.a * s.a * s.a));
    return s;
}

// The 1 s central difference has a truncation error of about 1e-5 m/s
// against 3 900 m/s (3e-9 relative); energy and momentum then hold to a few
// 1e-9. A wrong rotation or anomaly would break them at the 1e-3 level.
constexpr long double ConservedRelTol = 1e-7L;

TEST(SimOrbit, KeplerEllipseConservesEnergyAndMomentum)
{
    const std::vector<SimSatellite> sats = NominalConstellation(true, true, true, 1);
    ASSERT_EQ(sats.size(), 72u);
    for (const SimSatellite& s0 : sats) {
        const SimSatellite s = PureKepler(s0);
        const long double h0 = Norm(Cross(InertialPosition(s, 0.0L), InertialVelocity(s, 0.0L)));
        for (long double t = 0.0L; t < 86400.0L; t += 3917.0L) {
            const SimVec r = InertialPosition(s, t), v = InertialVelocity(s, t);
            // Vis-viva: v^2/2 - GM/r = -GM/(2a).
            const long double energy = Dot(v, v) / 2.0L - simorbitns::GM / Norm(r);
            EXPECT_NEAR_LD(energy / (-simorbitns::GM / (2.0L * s.a)), 1.0L, ConservedRelTol);
            EXPECT_NEAR_LD(Norm(Cross(r, v)) / h0, 1.0L, ConservedRelTol);
            // Radius between perigee and apogee (1 mm slack for round-off).
            EXPECT_GE(Norm(r), s.a * (1.0L - s.e) - 1e-3L);
            EXPECT_LE(Norm(r), s.a * (1.0L + s.e) + 1e-3L);
        }
        // After one period the ellipse closes (1e-6 m: round-off of the
        // anomaly at 1e-19 relative times 3e7 m, with a wide margin).
        const long double T = 2.0L * Pi / s.MDot;
        EXPECT_LT(Norm(InertialPosition(s, T) - InertialPosition(s, 0.0L)), 1e-6L);
    }
}

// Node regression of GPS: about -0.04 deg/day (Misra and Enge, Global
// Positioning System, 2nd ed., sec. 4.2.1); the first-order J2 formula
// gives -0.0388 deg/day at a = 26 560 km, i = 55 deg.
TEST(SimOrbit, SecularRatesMatchPublishedGpsNodeRegression)
{
    SimSatellite s;
    s.a = 26560000.0L;
    s.e = 0.0L;
    s.inc = 55.0L * Pi / 180.0L;
    SetSecularRates(s);
    // 0.001 deg/day: the formula gives -0.03878, quoted above to 3 digits; a
    // J2 term off by its factor 3/2 or a sign error is 0.02 deg/day or more away.
    EXPECT_NEAR_LD(s.raanDot * 86400.0L * 180.0L / Pi, -0.0388L, 0.001L);
    // Perigee advance (5 cos^2 i - 1) / (2 cos i) times the node rate in size.
    const long double ci = std::cos(s.inc);
    // 1e-12: the same J2 factors on both sides; only round-off of the ratio.
    EXPECT_NEAR_LD(s.argpDot / s.raanDot, -(5.0L * ci * ci - 1.0L) / (2.0L * ci), 1e-12L);
    // A polar orbit's node stays put.
    s.inc = Pi / 2.0L;
    SetSecularRates(s);
    // 1e-20 rad/s: cos of the long double pi/2 is 1e-20, times a rate scale of
    // 1e-7 rad/s; the 55-degree rate is 8e-9 rad/s.
    EXPECT_NEAR_LD(s.raanDot, 0.0L, 1e-20L);
}

TEST(SimOrbit, EarthFixedAndInertialFramesRoundTrip)
{
    const SimVec p = {1.2e7L, -2.1e7L, 1.3e7L};
    for (long double t : {-7200.0L, 0.0L, 43200.5L, 93600.0L}) {
        const SimVec q = ToInertial(ToEarthFixed(p, t), t);
        // 1e-8 m: two rotations of a 3e7 m vector; round-off is near 1e-11 m, a
        // sign slip in either frame turn is kilometres.
        EXPECT_LT(Norm(q - p), 1e-8L);
        // The frame turns eastward: a point fixed in inertial space drifts
        // westward in Earth-fixed longitude.
        const SimVec e0 = ToEarthFixed(p, t), e1 = ToEarthFixed(p, t + 60.0L);
        const long double dlon = std::remainder(std::atan2(e1.y, e1.x) - std::atan2(e0.y, e0.x), 2.0L * Pi);
        // 1e-15 rad: two atan2 of long double vectors; round-off is near 1e-19 rad,
        // a 60 s clock error of 1 ms would be 7e-8 rad.
        EXPECT_NEAR_LD(dlon, -simorbitns::OmegaE * 60.0L, 1e-15L);
    }
}

TEST(SimOrbit, GlonassAntipodalSlotsShareChannels)
{
    const std::vector<SimSatellite> sats = NominalConstellation(false, true, false, 1);
    ASSERT_EQ(sats.size(), 24u);
    for (const SimSatellite& s : sats) {
        EXPECT_GE(s.channel, -7);
        EXPECT_LE(s.channel, 6);
    }
    for (int plane = 0; plane < 3; ++plane)
        for (int k = 0; k < 4; ++k) {
            const SimSatellite& a = sats[static_cast<std::size_t>(8 * plane + k)];
            const SimSatellite& b = sats[static_cast<std::size_t>(8 * plane + k + 4)];
            EXPECT_EQ(a.channel, b.channel);
            const SimVec ra = InertialPosition(a, 0.0L), rb = InertialPosition(b, 0.0L);
            // Opposite sides of the Earth within the element scatter (a few deg).
            EXPECT_LT(Dot(ra, rb) / (Norm(ra) * Norm(rb)), -0.98L);
        }
}

// Radius and period of GPS from the SP3 file through the program's reader:
// vis-viva with the inertial velocity v + w x r. The J2 drift rates change
// the speed by ~0.1 m/s (a by ~2 km), the element scatter a by 2 km. The
// period is that of half a sidereal day, 11 h 58 min 2 s; 6 km of axis
// make 15 s of period.
constexpr long double GpsAxisTol_m = 6000.0L;
constexpr long double GpsPeriodTol_s = 30.0L;
constexpr long double HalfSiderealDay_s = 43082.0L;

TEST(SimOrbit, GpsRadiusAndPeriodFromOrbitFile)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    GNSSpEph eph;
    const std::string path = set.Path(set.names.sp3);
    eph.SetFile(path.c_str());
    eph.ReadFile();
    for (unsigned short prn = 1; prn <= 24; ++prn) {
        mjd t(set.d.mjday, 3600.0L);
        xyzt p, v;
        eph.CalcSatPosition(prn, t, p, v);
        ASSERT_TRUE(eph.PSisOK);
        const long double w = simorbitns::OmegaE;
        const long double vx = v.x - w * p.y, vy = v.y + w * p.x, vz = v.z;
        const long double r = std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z);
        const long double v2 = vx * vx + vy * vy + vz * vz;
        const long double a = 1.0L / (2.0L / r - v2 / simorbitns::GM);
        EXPECT_NEAR_LD(a, 26560000.0L, GpsAxisTol_m) << "G" << prn;
        EXPECT_GT(r, 26000000.0L);
        EXPECT_LT(r, 27100000.0L);
        const long double T = 2.0L * Pi * std::sqrt(a * a * a / simorbitns::GM);
        EXPECT_NEAR_LD(T, HalfSiderealDay_s, GpsPeriodTol_s) << "G" << prn;
    }
}

}  // namespace
