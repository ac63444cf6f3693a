#include "driver/gCPosC.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ContextFixture.h"
#include "numerics/NearLD.h"

using drivertest::Context;

// Defaults derived from other defaults are computed in long double; 1e-18 is
// a few units of its last place at these magnitudes.
constexpr long double DerivedTol = 1e-18L;

TEST(gCPosC, FileNamesAndPresenceFlagsStartEmpty)
{
    Context c;
    const gCPosC& g = c.gc;
    const char* names[] = {g.rnxfile, g.sp3file, g.pclkfile, g.atxfile, g.otidefile,
                           g.clkfile, g.CoutFile, g.CerrFile, g.gnuplotKin, g.gnuplotStat};
    for (const char* n : names) EXPECT_STREQ(n, "");
    EXPECT_FALSE(g.isRnx || g.isPEph || g.isPclk || g.isAtx || g.isCoutFile || g.isCerrFile);
    EXPECT_FALSE(g.GetVerbose() || g.GetIsGPS() || g.GetIsGLN() || g.GetIsGAL());
    EXPECT_FALSE(g.GetIsMP1() || g.GetIsMP2() || g.GetIsMyDBC() || g.GetIsSCRX());
    EXPECT_TRUE(g.GetRunProg());
    EXPECT_TRUE(g.CorrAmbig);
    EXPECT_TRUE(g.isSolidTide);
    EXPECT_FALSE(g.GetNOutl());
}

TEST(gCPosC, SettingsDefaults)
{
    Context c;
    const gCPosC& g = c.gc;
    EXPECT_EQ(g.obsP, gCPosC::COSZ);
    EXPECT_EQ(g.TrpModel, -1);
    EXPECT_EQ(g.TrpMappFun, -1);
    EXPECT_EQ(g.MinElevation, 10.0);
    EXPECT_EQ(g.MinDailyObs, 50.0);
    EXPECT_EQ(g.MaxIter, 10);
    EXPECT_EQ(g.MinObsAmb, 120);
    EXPECT_EQ(g.nTropoGradInt, 1);
    // Phase sigma is a hundredth of the C/A code sigma, the reference sigma
    // a tenth of the P code sigma: 2 mm and 2 cm.
    EXPECT_NEAR_LD(g.sigL1, 0.002L, DerivedTol);
    EXPECT_NEAR_LD(g.sig0, 0.02L, DerivedTol);
    // 14 degrees from pi to 36 digits. 1e-18 rad: two roundings of a value
    // near 0.24 (ulp 2.7e-20) stay far below it, while a double pi (off by
    // 1.2e-16) would put the threshold 9.5e-18 rad away.
    const long double pi36 = 3.14159265358979323846264338327950288L;
    EXPECT_NEAR_LD(g.satEclipsThres, 14.0L * pi36 / 180.0L, 1e-18L);
    EXPECT_EQ(g.EclipsSat.NRow(), 100);
    EXPECT_EQ(g.EclipsNObs.NRow(), 100);
    for (long i = 0; i < 100; ++i) {
        EXPECT_EQ(g.EclipsSat(i), 0);
        EXPECT_EQ(g.EclipsNObs(i), 0);
    }
    for (int s = 0; s < 3; ++s) EXPECT_EQ(g.ixDTsys[s], -1);
}

TEST(gCPosC, ThresholdAndModelDefaultsOfTheSettingsTable)
{
    // Each value is a literal of the settings table, stored without
    // arithmetic, so equality is exact.
    Context c;
    const gCPosC& g = c.gc;
    EXPECT_EQ(g.IonexUnit, 0);
    EXPECT_EQ(g.IonexProc, 1);
    EXPECT_EQ(g.IonexTECV, 0);
    EXPECT_FALSE(g.ifC1 || g.ifP1 || g.ifP2 || g.ifPc3 || g.ifPp3 || g.ifL3);
    EXPECT_FALSE(g.ifEstKin || g.ifEstSta || g.ifEstTropo || g.ifEstTropoGrad);
    EXPECT_FALSE(g.isMinElev || g.isMinDailyObs || g.isThresBlunder || g.isMaxfDiff);
    EXPECT_FALSE(g.isAzmOffAtx);
    EXPECT_EQ(g.AzmOffAtx, 0.0);
    EXPECT_EQ(g.ThresBlunder, 4.0L);
    EXPECT_EQ(g.MaxfDiff, 500.0L);
    EXPECT_EQ(g.sigC, 0.2L);
    EXPECT_EQ(g.sigP, 0.2L);
    EXPECT_EQ(g.MaxAmbTimeGap, 30.5L);
    EXPECT_EQ(g.ThresL40, 0.05L);
    EXPECT_EQ(g.dThresL4, 0.02L);
    EXPECT_FALSE(g.isThresL4 || g.isL4ScreenConst);
    EXPECT_EQ(g.MWRMSThres, 0.86L);
    EXPECT_EQ(g.MWOutliersThres, 4.0L);
    EXPECT_EQ(g.P3OutliersThres, 4.0L);
    EXPECT_EQ(g.IterDone, 0);
    EXPECT_EQ(g.IterThres, 0.0001);
    EXPECT_EQ(g.IterThresFin, 0.0);
    EXPECT_FALSE(g.splitMidnightAmbs || g.doCopyFilterC || g.isHelp);
    EXPECT_FALSE(g.isGNUPlotKin || g.isGNUPlotStat || g.isClkFile || g.isresfile);
    EXPECT_EQ(g.TropoInterval, 0.0L);
    EXPECT_EQ(g.TropoShift, 0.0L);
    EXPECT_EQ(g.NEclipsSat, 0);
    EXPECT_EQ(g.nAmb, 0);
    EXPECT_EQ(g.NObsOutl, 0);
}

TEST(gCPosC, EllipsoidsOfTheSystems)
{
    Context c;
    // GRS 80 for GPS and Galileo (a = 6378137 m, 1/f = 298.257222101),
    // PZ-90 for GLONASS (a = 6378136 m).
    EXPECT_EQ(c.gc.eGPS.a, 6378137.0L);
    EXPECT_EQ(c.gc.eGAL.a, 6378137.0L);
    // 1e-9: 1/f is the defining 12-digit decimal; only round-off of 1/(1/f).
    EXPECT_NEAR_LD(1.0L / c.gc.eGPS.f, 298.257222101L, 1e-9L);
    EXPECT_EQ(c.gc.eGLN.a, 6378136.0L);
}

TEST(gCPosC, OutlierCountAnswersGetNOutl)
{
    // Both answers: a getter that always said yes would pass the first alone.
    Context c;
    c.gc.NObsOutl = 0;
    EXPECT_FALSE(c.gc.GetNOutl());
    c.gc.NObsOutl = 3;
    EXPECT_TRUE(c.gc.GetNOutl());
}
