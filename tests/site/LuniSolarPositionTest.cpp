// Sun, Moon and sidereal time against the worked examples of Meeus,
// Astronomical Algorithms (2nd ed.): 12.a, 25.a and 47.a.
#include <cmath>

#include "SiteSupport.h"
#include "geodesy/LeapSecond.h"
#include "site/LuniSolarPosition.h"

using namespace sitetest;

namespace {

constexpr long double AU_m = 149597870000.0L;

// The routine's time argument is its epoch less GPS - UTC, and it stands
// for UT and dynamical time at once. An epoch of the book's date plus
// GPS - UTC makes that argument the book's instant (TD for the Sun and
// Moon, UT for sidereal time) to the last bit.
mjd BookInstant(unsigned short y, unsigned short m, unsigned short d)
{ mjd t = Epoch(y, m, d); t += LeapSecond(t); return t; }

// Ecliptic longitude and latitude (deg) of an Earth-fixed unit vector at t
// centuries of the book: sidereal rotation undone, then the equator of date
// turned into the ecliptic by the routine's obliquity.
struct Ecliptic { long double lon_deg, lat_deg; };
Ecliptic ToEcliptic(const LuniSolarPosition& lsp, const mjd& eph, long double t, xyz u)
{
    u.RotateZ(lsp.GSTime(eph));
    const long double e = (23.439291L - 0.0130042L * t) * Deg2Rad;
    const long double lon = std::atan2(u.y * std::cos(e) + u.z * std::sin(e), u.x) / Deg2Rad;
    return {lon < 0.0L ? lon + 360.0L : lon, std::asin(u.z * std::cos(e) - u.y * std::sin(e)) / Deg2Rad};
}

}  // namespace

// The routine keeps two equation-of-centre terms: Meeus puts that at 0.01
// deg; the book's R has five decimals, its last half unit and the dropped
// terms stay below 1e-5 AU.
constexpr long double SunLonTol_deg = 0.01L, SunDistTol_AU = 1e-5L;
// Six-term lunar series: the accuracy the Astronomical Almanac gives for
// it, 0.15 deg in direction and 0.2 % in distance.
constexpr long double MoonAngleTol_deg = 0.15L, MoonDistTol = 0.002L;

TEST(LuniSolarPosition, SunAndMoonMatchMeeusExamples)
{
    const LuniSolarPosition lsp; xyz u; long double r = 0.0L;
    // 25.a: 1992-10-13.0 TD, true geometric longitude 199.90988 deg, R 0.99766 AU.
    const mjd sunT = BookInstant(1992, 10, 13);
    lsp.SunPosition(sunT, u, r);
    const Ecliptic sun = ToEcliptic(lsp, sunT, (2448908.5L - 2451545.0L) / 36525.0L, u);
    EXPECT_NEAR_LD(sun.lon_deg, 199.90988L, SunLonTol_deg);
    EXPECT_NEAR_LD(r / AU_m, 0.99766L, SunDistTol_AU);
    // 47.a: 1992-04-12.0 TD, longitude 133.162655, latitude -3.229126 deg,
    // distance 368409.7 km.
    const mjd moonT = BookInstant(1992, 4, 12);
    lsp.MoonPosition(moonT, u, r);
    const Ecliptic moon = ToEcliptic(lsp, moonT, (2448724.5L - 2451545.0L) / 36525.0L, u);
    EXPECT_NEAR_LD(moon.lon_deg, 133.162655L, MoonAngleTol_deg);
    EXPECT_NEAR_LD(moon.lat_deg, -3.229126L, MoonAngleTol_deg);
    EXPECT_NEAR_LD(r / 368409.7e3L, 1.0L, MoonDistTol);
}

// The book gives the time to 1e-4 s (7e-9 rad) from the same IAU 1982
// polynomial; only its rounding separates the two.
constexpr long double SiderealTol_rad = 1e-7L;
// Mean sidereal rate (rad/s of UT1) of the same polynomial near J2000; over
// an hour its change with t is below 1e-15 rad.
constexpr long double SiderealRate_rad_s = 7.2921158553e-5L, RateTol_rad = 1e-9L;
// The routine wraps with its 16-digit 2 pi, 2.4e-16 short of the true one.
constexpr long double WrapTol_rad = 1e-15L;

TEST(LuniSolarPosition, SiderealTimeMatchesMeeusAndStaysInRange)
{
    const LuniSolarPosition lsp;
    const long double twoPi = 2.0L * Pi;
    // 12.a: 1987-04-10 0h UT, 13h10m46.3668s: before J2000, where the
    // polynomial itself is negative.
    const mjd t = BookInstant(1987, 4, 10);
    EXPECT_NEAR_LD(lsp.GSTime(t), (13 * 3600 + 10 * 60 + 46.3668L) / 86400.0L * twoPi, SiderealTol_rad);
    // Local time is Greenwich time plus the east longitude, wrapped.
    for (long double l : {-3.1L, -0.5L, 0.0L, 2.9L}) {
        const long double expect = std::fmod(lsp.GSTime(t) + l + twoPi, twoPi);
        EXPECT_NEAR_LD(lsp.LSTime(t, flh(0.8L, l, 0.0L)), expect, WrapTol_rad) << l;
    }
    // From 1980 to shortly after J2000: in [0, 2 pi) and advancing at the
    // sidereal rate across the wrap.
    for (const mjd& e : {Epoch(1980, 1, 6), Epoch(1995, 3, 1, 7), Epoch(1999, 12, 30, 23), Epoch(2000, 1, 1, 11, 58)}) {
        mjd later = e; later += 3600.0L;
        const long double g0 = lsp.GSTime(e), g1 = lsp.GSTime(later);
        EXPECT_TRUE(g0 >= 0.0L && g0 < twoPi && g1 >= 0.0L && g1 < twoPi) << e.GetMJDDec();
        EXPECT_NEAR_LD(std::fmod(g1 - g0 + twoPi, twoPi), SiderealRate_rad_s * 3600.0L, RateTol_rad) << e.GetMJDDec();
    }
}

// Unit vectors from sines and cosines and a rotation: a few dozen ulps of
// long double (1e-19).
constexpr long double UnitTol = 1e-17L;

TEST(LuniSolarPosition, UnitVectorsAndDistancesWithinTheOrbits)
{
    // Perihelion 1.4710e11 m, aphelion 1.5210e11 m; lunar perigee 356400 km,
    // apogee 406700 km; widened by the series' 1e-5 AU and 0.2 %.
    const LuniSolarPosition lsp; xyz u; long double r = 0.0L;
    for (mjd t = Epoch(1995, 1, 1); t < Epoch(2030, 1, 1); t += 37L) {
        lsp.SunPosition(t, u, r);
        EXPECT_NEAR_LD(u.GetLength(), 1.0L, UnitTol);
        EXPECT_TRUE(r > 1.4708e11L && r < 1.5212e11L) << r;
        lsp.MoonPosition(t, u, r);
        EXPECT_NEAR_LD(u.GetLength(), 1.0L, UnitTol);
        EXPECT_TRUE(r > 3.557e8L && r < 4.075e8L) << r;
    }
}
