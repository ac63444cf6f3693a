#include <gtest/gtest.h>

#include "NearLD.h"

#include <cmath>
#include <string>

#include "numerics/AngleConversion.h"

namespace {

// Pi as these conversions use it: rounded to double precision.
constexpr long double PiDouble = 3.14159265358979311600L;

// Conversions of angles up to a few hundred degrees in long double
// (epsilon 1.1e-19): 1e-15 deg and 1e-16 rad leave margins of a thousand.
constexpr long double DegTol = 1e-15L;
constexpr long double RadTol = 1e-16L;

// A packed value of up to 360 holds 1e-4 of it in each second: its last
// bit (5.5e-17) is 5.5e-13 s, 2.7e-18 rad. 1e-16 rad covers it with the
// conversions on top.
constexpr long double PackedRoundTripTol_rad = 1e-16L;

}  // namespace

TEST(AngleUnits, DegreesRadiansAndGonsAgreeAtKnownAngles)
{
    EXPECT_NEAR_LD(deg2rad(180.0L), PiDouble, RadTol);
    EXPECT_NEAR_LD(deg2rad(-90), -PiDouble / 2.0L, RadTol);  // integer form
    EXPECT_NEAR_LD(deg2rad(45.0), static_cast<double>(PiDouble) / 4.0, 1e-16);  // double form
    EXPECT_NEAR_LD(rad2deg(PiDouble / 3.0L), 60.0L, DegTol);
    // The gon factor is 10/9 rounded to double: 4e-15 relative off at most.
    EXPECT_NEAR_LD(deg2gon(90.0L), 100.0L, 1e-13L);
    EXPECT_NEAR_LD(rad2gon(PiDouble), 200.0L, 1e-13L);
    for (long double d = -400.0L; d <= 400.0L; d += 37.3L)
        EXPECT_NEAR_LD(rad2deg(deg2rad(d)), d, DegTol);
}

TEST(AnglePacked, HandCheckedValuesBothSigns)
{
    // 45 deg 30 min 25.12 s = 45.50697777... deg, packed 45.302512.
    const long double a = deg2rad(45.0L + 30.0L / 60.0L + 25.12L / 3600.0L);
    // 1e-14: the packing multiplies by 60 twice; round-off is some 1e-17, a
    // wrong second digit is 1e-6.
    EXPECT_NEAR_LD(rad2dms(a), 45.302512L, 1e-14L);
    EXPECT_NEAR_LD(rad2dms(-a), -45.302512L, 1e-14L);
    EXPECT_NEAR_LD(dms2rad(45.302512L), a, RadTol);
    EXPECT_NEAR_LD(dms2rad(-45.302512L), -a, RadTol);

    EXPECT_NEAR_LD(dms2deg(45, 30, 36.0L), 45.51L, DegTol);
    EXPECT_NEAR_LD(dms2deg(-45, 30, 36.0L), -45.51L, DegTol);
    EXPECT_NEAR_LD(dms2rad(-45, 30, 36.0L), deg2rad(-45.51L), RadTol);
}

TEST(AnglePacked, RoundTripThroughThePackedForm)
{
    for (long double d = -359.9L; d < 360.0L; d += 7.123456789L) {
        const long double r = deg2rad(d);
        EXPECT_NEAR_LD(dms2rad(rad2dms(r)), r, PackedRoundTripTol_rad) << d;
    }
}

TEST(AnglePacked, SixtySecondsCarryIntoMinutesAndDegrees)
{
    // An angle 3e-19 rad below 10 deg: 6e-14 s short of 9 deg 59 min 60 s.
    // Without the carry the packed value would read 9.5959999...
    const long double r = deg2rad(10.0L) - 3e-19L;
    // 1e-15: with the carry the packed value is 10 to round-off; without it
    // it reads 9.5959999..., 0.4 away.
    EXPECT_NEAR_LD(rad2dms(r), 10.0L, 1e-15L);
    EXPECT_NEAR_LD(rad2dms(-r), -10.0L, 1e-15L);
}

TEST(AnglePacked, WholeMinutesStoredALittleLowReadAsWholeMinutes)
{
    // Regression: 45.30 is stored a hair below 45.3, so its fraction times
    // 100 floors to 29 minutes and leaves 99.9999... "seconds", which read
    // 40 arcseconds too far. Every whole minute of the circle must come back.
    for (int d = 0; d < 360; ++d)
        for (int m = 0; m < 60; ++m) {
            const long double packed = d + m / 100.0L;
            ASSERT_NEAR_LD(dms2rad(packed), deg2rad(d + m / 60.0L), RadTol) << d << " " << m;
        }
}

TEST(AngleText, Dms2dmsColumnsAndSigns)
{
    EXPECT_EQ(dms2dms(45.302512L, 5), " 45 30 25.12000");  // 3 + 3 + 9 columns
    EXPECT_EQ(dms2dms(-45.302512L, 2), "-45 30 25.12");
    EXPECT_EQ(dms2dms(-0.3000L, 2), " -0 30  0.00");  // sign shown with 0 degrees
    EXPECT_EQ(dms2dms(-0.3000, 2), " -0 30  0.00");   // the double literal too
    EXPECT_EQ(dms2dms(0.0512L, 0), "  0  5  12");
    EXPECT_EQ(dms2dms(15.5930L, 1), " 15 59 30.0");
    // 45.60 stored low reads 59 min 99.99.. s: carried to 60 min, then to
    // the degrees.
    EXPECT_EQ(dms2dms(45.5999999999999999999L, 2), " 46  0  0.00");
}
