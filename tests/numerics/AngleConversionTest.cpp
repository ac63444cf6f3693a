// Angle units and the packed degrees-minutes-seconds form against angles
// known by hand and round trips; the radius of curvature against the
// ellipsoid's closed forms.
#include <gtest/gtest.h>

#include <cmath>

#include "NearLD.h"
#include "numerics/AngleConversion.h"
#include "numerics/PolmerN.h"

namespace {

// Pi as these conversions use it: rounded to double precision.
constexpr long double PiDouble = 3.14159265358979311600L;
// Conversions of angles up to a few hundred degrees in long double
// (epsilon 1.1e-19): 1e-15 deg and 1e-16 rad leave margins of a thousand.
// A packed value of up to 360 holds 1e-4 of it in each second, whose last
// bit (5.5e-13 s, 2.7e-18 rad) the radian tolerance covers too.
constexpr long double DegTol = 1e-15L;
constexpr long double RadTol = 1e-16L;

}  // namespace

TEST(AngleUnits, DegreesRadiansAndGonsAgreeAtKnownAngles) {
    EXPECT_NEAR_LD(deg2rad(180.0L), PiDouble, RadTol);
    EXPECT_NEAR_LD(deg2rad(-90), -PiDouble / 2.0L, RadTol);  // integer form
    EXPECT_NEAR_LD(deg2rad(45.0), static_cast<double>(PiDouble) / 4.0, 1e-16);  // double form
    EXPECT_NEAR_LD(rad2deg(PiDouble / 3.0L), 60.0L, DegTol);
    // The gon factor is 10/9 rounded to double: 4e-15 relative off at most.
    EXPECT_NEAR_LD(rad2gon(PiDouble), 200.0L, 1e-13L);
    for (long double d = -359.9L; d < 360.0L; d += 7.123456789L) {
        EXPECT_NEAR_LD(rad2deg(deg2rad(d)), d, DegTol);
        EXPECT_NEAR_LD(dms2rad(rad2dms(deg2rad(d))), deg2rad(d), RadTol) << d;
    }
}

TEST(AnglePacked, HandValuesCarriesAndTexts) {
    // 45 deg 30 min 25.12 s, packed 45.302512. 1e-14: the packing multiplies
    // by 60 twice, round-off is some 1e-17, a wrong second digit is 1e-6.
    const long double a = deg2rad(45.0L + 30.0L / 60.0L + 25.12L / 3600.0L);
    for (int s : {1, -1}) {
        EXPECT_NEAR_LD(rad2dms(s * a), s * 45.302512L, 1e-14L);
        EXPECT_NEAR_LD(dms2rad(s * 45.302512L), s * a, RadTol);
        EXPECT_NEAR_LD(dms2deg(static_cast<short>(s * 45), 30, 36.0L), s * 45.51L, DegTol);
        EXPECT_NEAR_LD(dms2rad(static_cast<short>(s * 45), 30, 36.0L), deg2rad(s * 45.51L), RadTol);
        // 3e-19 rad below 10 deg is 6e-14 s short of 9 deg 59 min 60 s: the
        // seconds carry into minutes and degrees, or the value reads 9.5959999.
        EXPECT_NEAR_LD(rad2dms(s * (deg2rad(10.0L) - 3e-19L)), s * 10.0L, 1e-15L);
    }
    // Regression: 45.30 is stored a hair below 45.3, so its fraction times
    // 100 floors to 29 minutes and leaves 99.9999... "seconds", which read
    // 40 arcseconds too far. Every whole minute of the circle must come back.
    for (int d = 0; d < 360; ++d)
        for (int m = 0; m < 60; ++m) ASSERT_NEAR_LD(dms2rad(d + m / 100.0L), deg2rad(d + m / 60.0L), RadTol) << d << " " << m;

    EXPECT_EQ(dms2dms(45.302512L, 5), " 45 30 25.12000");  // 3 + 3 + 9 columns
    EXPECT_EQ(dms2dms(-45.302512L, 2), "-45 30 25.12");
    EXPECT_EQ(dms2dms(-0.3000L, 2), " -0 30  0.00");  // sign shown with 0 degrees
    EXPECT_EQ(dms2dms(0.0512L, 0), "  0  5  12");
    // 45.60 stored low reads 59 min 99.99.. s: carried to 60 min, then to the degrees.
    EXPECT_EQ(dms2dms(45.5999999999999999999L, 2), " 46  0  0.00");
}

TEST(PolmerN, EquatorPoleAndSphereLimits) {
    // GRS80: a = 6378137 m, f = 1/298.257222101. Equator: N = a; pole:
    // N = a^2 / b. Radii of 6.4e6 m carry about 1e-12 m of round-off; 1e-8 m
    // leaves room for the sine near the pole.
    constexpr long double A_m = 6378137.0L, F = 1.0L / 298.257222101L, RadiusTol_m = 1e-8L;
    const long double e = std::sqrt(2.0L * F - F * F), halfPi = std::acos(-1.0L) / 2.0L;
    EXPECT_NEAR_LD(PolmerN(0.0L, A_m, e), A_m, RadiusTol_m);
    EXPECT_NEAR_LD(PolmerN(halfPi, A_m, e), A_m / (1.0L - F), RadiusTol_m);
    EXPECT_NEAR_LD(PolmerN(-halfPi, A_m, e), A_m / (1.0L - F), RadiusTol_m);
    EXPECT_NEAR_LD(PolmerN(0.8L, 6371000.0L, 0.0L), 6371000.0L, RadiusTol_m);
}
