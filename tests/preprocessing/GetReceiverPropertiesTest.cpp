#include "preprocessing/GetReceiverProperties.h"

#include "preprocessing/StagingSupport.h"

using namespace stagingtest;

namespace {

// Header APPROX POSITION of the data set (README.md: the ETRS89 value).
const xyz kX0(3582105.2910L, 532589.7313L, 5232754.8054L);
// Coordinates are read from 4-decimal text; 1e-9 m is far below that and
// far above long double round-off at 6e6 m (3e-13 m).
constexpr long double PosTol_m = 1e-9L;

Options Props(const std::string& obs, bool quiet = true)
{
    Options o;
    o.obs = obs;
    o.sp3 = "";
    o.upTo = 1;
    o.quiet = quiet;
    return o;
}

TEST(ReceiverProperties, APrioriPositionsFromTheHeaderAndItsEccentricityAndTheDailyShare)
{
    // The antenna point lies 0.216 m along the ellipsoid normal, whose
    // direction is (cos f cos l, cos f sin l, sin f) of the geodetic
    // latitude; raising a point along its normal keeps latitude and
    // longitude. A zero eccentricity leaves the phase centre on the marker.
    // 00:00:00 to 12:00:00: 43200 s, exactly 50% of a day, passes a minimum
    // of 50%; 1441 epochs of 30 s are 50.02% of the 2881 epochs of a full day.
    for (const long double up : {kAntennaUp_m, 0.0L}) {
        Context c;
        c.gc.isMinDailyObs = true;
        c.gc.MinDailyObs = 50.0;
        const std::string out = Stage(c, Props(CutObs("half.20o", 0, 1441, KeepAll, "        0.2160", up > 0 ? "        0.2160" : "        0.0000")));
        for (const char* line : {"  Quantity of daily GNSS data span    : 50.0%", "  Number of daily GNSS data           : 50.0%",
                                 "  MARKER NAME / MARKER NUMBER         : ESBC00DNK / 10118M001"})
            EXPECT_TRUE(Has(out, line)) << line;
        const gCPosC& g = c.gc;
        EXPECT_NEAR_LD((g.RecPos0 - kX0).GetLength(), 0.0L, PosTol_m);
        const long double f = g.RecPos0G.f, l = g.RecPos0G.l;
        const xyz d = g.RecPosFC - g.RecPos0;
        EXPECT_NEAR_LD(d.x, up * std::cos(f) * std::cos(l), PosTol_m);
        EXPECT_NEAR_LD(d.y, up * std::cos(f) * std::sin(l), PosTol_m);
        EXPECT_NEAR_LD(d.z, up * std::sin(f), PosTol_m);
        EXPECT_NEAR_LD(g.RecPosEccLG.u, up, PosTol_m);
        EXPECT_NEAR_LD(g.RecPosFCG.f, f, 1e-14L);
        EXPECT_NEAR_LD(g.RecPosFCG.l, l, 1e-14L);
        EXPECT_NEAR_LD(g.RecPosFCG.h - g.RecPos0G.h, up, PosTol_m);
        // Esbjerg: 55.5 N, 8.5 E.
        EXPECT_NEAR_LD(f * 180.0L / Pi, 55.49L, 0.01L);
        EXPECT_NEAR_LD(l * 180.0L / Pi, 8.46L, 0.01L);
        EXPECT_NEAR_LD(g.RecMag, kX0.GetLength(), PosTol_m);
        EXPECT_NEAR_LD((g.RecPosUnit * g.RecMag - kX0).GetLength(), 0.0L, PosTol_m);
        EXPECT_EQ(g.RecCodeTrackType, 0);
    }
}

TEST(ReceiverPropertiesDeath, DailyShareBelowTheMinimumAborts)
{
    // One epoch less than half a day: 43170 s is 49.965% of a day. The same
    // 1441 epochs (12 h) under a header INTERVAL of 15 s: the span share is
    // 50.0% and passes 40%, but a full day at 15 s holds 86400/15 + 1 = 5761
    // epochs, of which 1441 are 25.013% (86400 s alone would give 25.017%,
    // a span-based share 50%).
    const std::string abort = "  \\*\\*\\* PROBLEMATIC QUANTITY OF DATA ... ABORTING PROCESS!!\n(.|\n)*"
                              "\\*\\*\\*\\* Orvo: Error -> DAILY GNSS DATA ";
    const struct {
        std::string obs;
        double minimum;
        std::string lines, share;
    } rows[] = {
        {CutObs("short.20o", 0, 1440), 50.0, "", "49.965% BELOW THE MINIMUM 50.000%!"},
        {CutObs("sparse.20o", 0, 1441, KeepAll, "    30.000  ", "    15.000  "), 40.0,
         "  Number of daily GNSS data           : 25.0%\n", "25.013% BELOW THE MINIMUM 40.000%!"},
    };
    for (const auto& r : rows)
        EXPECT_EXIT(
            {
                std::cout.rdbuf(std::cerr.rdbuf());
                Context c;
                c.gc.isMinDailyObs = true;
                c.gc.MinDailyObs = r.minimum;
                Stage(c, Props(r.obs, false));
            },
            ::testing::ExitedWithCode(1), "  Quantity of daily GNSS data span    : 50.0%\n" + r.lines + abort + r.share);
}

TEST(ReceiverPropertiesDeath, HeaderWithoutPositionStops)
{
    const std::string obs = CutObs("nopos.20o", 0, 3, KeepAll, "  3582105.2910   532589.7313  5232754.8054",
                                   "        0.0000        0.0000        0.0000");
    EXPECT_EXIT({ Context c; Stage(c, Props(obs, false)); }, ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> NO VALID APRIORI RECEIVER POSITION IN RINEX HEADER");
}

}  // namespace

TEST(ReceiverProperties, CatalogueAndReceiverListJoinTheStation)
{
    // The catalogue gives the reference marker (no motion): the run starts
    // from it, not from the header; the receiver list makes the station's
    // SEPT POLARX5 a C1/X2 receiver (type 2). A station the catalogue does
    // not hold keeps the header position with the warning.
    char row[300];
    std::snprintf(row, sizeof row, "%4d %-20s %-60s %.4Lf %.4Lf %.4Lf %.4f %.4f %.4f %s\n", 1, "ESBC00DNK", "10118M001",
                  kRef[0], kRef[1], kRef[2], 0.0, 0.0, 0.0, "2020-06-25 12:00:00");
    char entry[120];
    std::snprintf(entry, sizeof entry, "%-20s   %d     %s   %s\n%29sX2\n", "SEPT POLARX5", 2, "C1", "CODE TRACKING", "");
    const std::string list = orvotest::WriteTemp("rec.lst", std::string("RECEIVER TYPE          #F    CODES\n") + entry);
    for (const bool listed : {true, false}) {
        Context c;
        SetName(c.gc.aprcrdfile, orvotest::WriteTemp("cat.crd", "# ID NAME\n#*** ****\n" + std::string(listed ? row : "")));
        SetName(c.gc.rctrackfile, list);
        c.gc.isAprCrd = c.gc.isRCodTrc = true;
        std::string err;
        Stage(c, Props(CutObs("ac.20o", 0, 3)), &err);
        const xyz want = listed ? xyz(kRef[0], kRef[1], kRef[2]) : kX0;
        EXPECT_LT((c.gc.RecPos0 - want).GetLength(), PosTol_m) << listed;
        EXPECT_EQ(Has(err, "SITE NAME NOT LISTED IN APRIORI COORDINATE FILE - USING RINEX VALUES!"), !listed) << err;
        EXPECT_EQ(c.gc.RecCodeTrackType, 2);
    }
}
