#include "preprocessing/GetReceiverProperties.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

#include "TestSupport.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"
#include "preprocessing/StagingSupport.h"
#include "numerics/NearLD.h"

using stagingtest::Capture;
using stagingtest::Context;
using stagingtest::CutObs;
using stagingtest::SetName;

namespace {

// Header APPROX POSITION of the data set (README.md: the ETRS89 value).
constexpr long double kX0 = 3582105.2910L, kY0 = 532589.7313L, kZ0 = 5232754.8054L;
constexpr long double kAntennaUp_m = 0.2160L;
// Coordinates are read from 4-decimal text; 1e-9 m is far below that and
// far above long double round-off at 6e6 m (3e-13 m).
constexpr long double PosTol_m = 1e-9L;

void Stage(Context& c, const std::string& obs, bool quiet = true)
{
    SetName(c.gc.rnxfile, obs);
    c.gc.isRnx = c.gc.isGPS = true;
    std::unique_ptr<Capture> out;
    if (quiet) out = std::make_unique<Capture>(std::cout);
    SetFiles(c.gc);
    ReadFiles(c.gc);
    GetReceiverProperties(c.gc);
}

TEST(ReceiverProperties, APrioriPositionsFromTheHeaderAndItsEccentricity)
{
    Context c;
    Stage(c, CutObs("props.20o", 0, 5));
    const gCPosC& g = c.gc;
    EXPECT_NEAR_LD(g.RecPos0.x, kX0, PosTol_m);
    EXPECT_NEAR_LD(g.RecPos0.y, kY0, PosTol_m);
    EXPECT_NEAR_LD(g.RecPos0.z, kZ0, PosTol_m);
    EXPECT_EQ(g.RecCodeTrackType, 0);

    // The antenna point lies 0.216 m along the ellipsoid normal, whose
    // direction is (cos f cos l, cos f sin l, sin f) of the geodetic latitude.
    const xyz d = g.RecPosFC - g.RecPos0;
    const long double f = g.RecPos0G.f, l = g.RecPos0G.l;
    EXPECT_NEAR_LD(d.x, kAntennaUp_m * std::cos(f) * std::cos(l), PosTol_m);
    EXPECT_NEAR_LD(d.y, kAntennaUp_m * std::cos(f) * std::sin(l), PosTol_m);
    EXPECT_NEAR_LD(d.z, kAntennaUp_m * std::sin(f), PosTol_m);
    EXPECT_NEAR_LD(g.RecPosEccLG.u, kAntennaUp_m, PosTol_m);
    // Raising a point along its normal keeps latitude and longitude.
    EXPECT_NEAR_LD(g.RecPosFCG.f, f, 1e-14L);
    EXPECT_NEAR_LD(g.RecPosFCG.l, l, 1e-14L);
    EXPECT_NEAR_LD(g.RecPosFCG.h - g.RecPos0G.h, kAntennaUp_m, PosTol_m);
    // Esbjerg: 55.5 N, 8.5 E, some 60 m above GRS80.
    EXPECT_NEAR_LD(f * 180.0L / M_PI, 55.49L, 0.01L);
    EXPECT_NEAR_LD(l * 180.0L / M_PI, 8.46L, 0.01L);

    const long double r = std::sqrt(kX0 * kX0 + kY0 * kY0 + kZ0 * kZ0);
    EXPECT_NEAR_LD(g.RecMag, r, PosTol_m);
    EXPECT_NEAR_LD(g.RecPosUnit.x * r, kX0, PosTol_m);
    EXPECT_NEAR_LD(g.RecPosUnit.z * r, kZ0, PosTol_m);
    EXPECT_EQ(xyzns::NDec, 10);
    EXPECT_EQ(flhns::Unit, 4);
}

TEST(ReceiverProperties, ZeroEccentricityLeavesThePhaseCentreOnTheMarker)
{
    Context c;
    Stage(c, CutObs("noecc.20o", 0, 5, stagingtest::KeepAll, "        0.2160", "        0.0000"));
    EXPECT_EQ(c.gc.RecPosFC.x, c.gc.RecPos0.x);
    EXPECT_EQ(c.gc.RecPosFC.y, c.gc.RecPos0.y);
    EXPECT_EQ(c.gc.RecPosFC.z, c.gc.RecPos0.z);
}

TEST(ReceiverProperties, DailyShareEqualToTheMinimumPasses)
{
    // 00:00:00 to 12:00:00: 43200 s, exactly 50% of a day; 1441 epochs of
    // 30 s are 50.02% of the 2881 epochs of a full day.
    Context c;
    c.gc.isMinDailyObs = true;
    c.gc.MinDailyObs = 50.0;
    std::string out;
    {
        Capture o(std::cout);
        Stage(c, CutObs("half.20o", 0, 1441), false);
        out = o.Text();
    }
    EXPECT_NE(out.find("  Quantity of daily GNSS data span    : 50.0%"), std::string::npos);
    EXPECT_NE(out.find("  Number of daily GNSS data           : 50.0%"), std::string::npos);
    EXPECT_NE(out.find("  MARKER NAME / MARKER NUMBER         : ESBC00DNK / 10118M001"),
              std::string::npos);
}

TEST(ReceiverPropertiesDeath, ShortDataSpanAborts)
{
    // One epoch less: 43170 s is 49.97% of a day.
    const std::string obs = CutObs("short.20o", 0, 1440);
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            Context c;
            c.gc.isMinDailyObs = true;
            c.gc.MinDailyObs = 50.0;
            Stage(c, obs, false);
        },
        ::testing::ExitedWithCode(1),
        "  Quantity of daily GNSS data span    : 50.0%\n"
        "  \\*\\*\\* PROBLEMATIC QUANTITY OF DATA ... ABORTING PROCESS!!\n"
        "(.|\n)*\\*\\*\\*\\* Orvo: Error -> DAILY GNSS DATA 49.965% BELOW THE MINIMUM 50.000%!");
}

TEST(ReceiverPropertiesDeath, EpochShareCountsTheEpochsOfAFullDay)
{
    // The same 1441 epochs (12 h) under a header INTERVAL of 15 s: the span
    // share is 50.0% and passes a minimum of 40%, but a full day at 15 s
    // holds 86400/15 + 1 = 5761 epochs, of which 1441 are 25.013%. The
    // second test must abort on that; a denominator of 86400 s alone would
    // give 25.017%, a span-based one 50%.
    const std::string obs = CutObs("sparse.20o", 0, 1441, stagingtest::KeepAll,
                                   "    30.000  ", "    15.000  ");
    const long double fullDayEpochs = 86400.0L / 15.0L + 1.0L;
    char share[64];
    std::snprintf(share, sizeof share, "%.3Lf", 1441.0L / fullDayEpochs * 100.0L);
    ASSERT_EQ(std::string(share), "25.013");  // the arithmetic of the comment
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            Context c;
            c.gc.isMinDailyObs = true;
            c.gc.MinDailyObs = 40.0;
            Stage(c, obs, false);
        },
        ::testing::ExitedWithCode(1),
        "  Quantity of daily GNSS data span    : 50.0%\n"
        "  Number of daily GNSS data           : 25.0%\n"
        "  \\*\\*\\* PROBLEMATIC QUANTITY OF DATA ... ABORTING PROCESS!!\n"
        "(.|\n)*\\*\\*\\*\\* Orvo: Error -> DAILY GNSS DATA "
            + std::string(share) + "% BELOW THE MINIMUM 40.000%!");
}

TEST(ReceiverPropertiesDeath, HeaderWithoutPositionStops)
{
    const std::string obs = CutObs("nopos.20o", 0, 3, stagingtest::KeepAll,
                                   "  3582105.2910   532589.7313  5232754.8054",
                                   "        0.0000        0.0000        0.0000");
    EXPECT_EXIT(
        {
            Context c;
            Stage(c, obs);
        },
        ::testing::ExitedWithCode(1),
        "\\*\\*\\*\\* Orvo: Error -> NO VALID APRIORI RECEIVER POSITION IN RINEX HEADER");
}

}  // namespace
