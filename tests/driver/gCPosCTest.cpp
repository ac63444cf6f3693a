#include "driver/gCPosC.h"

#include "ContextFixture.h"

TEST(gCPosC, DerivedDefaultsEllipsoidsAndOutlierAnswer) {
    drivertest::Context c;
    gCPosC& g = c.gc;
    // Phase sigma is a hundredth of the C/A code sigma, the reference sigma
    // a tenth of the P code sigma: 2 mm and 2 cm. 1e-18 m is a few units of
    // the last place of long double at these magnitudes.
    EXPECT_NEAR_LD(g.sigL1, 0.002L, 1e-18L);
    EXPECT_NEAR_LD(g.sig0, 0.02L, 1e-18L);
    // 14 degrees from pi to 36 digits. 1e-18 rad: two roundings of a value
    // near 0.24 (ulp 2.7e-20) stay far below it, while a double pi (off by
    // 1.2e-16) would put the threshold 9.5e-18 rad away.
    EXPECT_NEAR_LD(g.satEclipsThres, 14.0L * 3.14159265358979323846264338327950288L / 180.0L, 1e-18L);
    // GRS 80 for GPS and Galileo (a = 6378137 m, 1/f = 298.257222101), PZ-90
    // for GLONASS (a = 6378136 m). 1e-9: 1/f is the defining 12-digit
    // decimal; only round-off of 1/(1/f).
    EXPECT_TRUE(g.eGPS.a == 6378137.0L && g.eGAL.a == 6378137.0L && g.eGLN.a == 6378136.0L);
    EXPECT_NEAR_LD(1.0L / g.eGPS.f, 298.257222101L, 1e-9L);
    EXPECT_NEAR_LD(1.0L / g.eGAL.f, 298.257222101L, 1e-9L);
    // Both answers: a getter that always said yes would pass the first alone.
    EXPECT_FALSE(g.GetNOutl());
    g.NObsOutl = 3;
    EXPECT_TRUE(g.GetNOutl());
}
