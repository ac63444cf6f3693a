// The comparison with the truth: readers of the truth, plot and
// troposphere files, the local-level rotation, and "--compare" itself.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "SimCompare.h"
#include "SimSupport.h"
#include "SimWriters.h"
#include "numerics/NearLD.h"

namespace {

constexpr long double Pi = 3.14159265358979323846264338327950288L;
// A rotation of a metre-sized vector in long double: round-off near 1e-18 m;
// 1e-12 m leaves room for the trigonometric functions.
constexpr long double RotationTol_m = 1e-12L;
// The truth file prints positions with 4 decimals (0.05 mm rounding) and
// delays with 6 (0.5 micrometre).
constexpr long double TruthPosRounding_m = 0.5001e-4L;
constexpr long double TruthDelayRounding_m = 0.5001e-6L;

// A static plot file as orvo writes it, with the position p and one word
// as marker name; s0 and the global test glued into one word when glued.
std::string PlotFile(const SimVec& p, bool commented, bool glued)
{
    char buf[600];
    std::snprintf(buf, sizeof buf,
                  "%s 59025 43185.0      2880     92134   44000   48134       0         0       0"
                  "       0       0%s%16.4Lf%16.4Lf%16.4Lf     0.000062795065470     0.000032252916212"
                  "     0.000061746077707     0.000004169578515     0.000052559399311"
                  "     0.000006326566150   SIMU\n",
                  commented ? "#" : "", glued ? "345.44811947733761.0743" : "  0.037831    0.5725",
                  p.x, p.y, p.z);
    return "#   EPOCH[MJD]      NEPH      NOBS    #GPS    #GLN    #GAL NOUTLIERS   #OGPS   #OGLN"
           "   #OGAL        S0     GTEST               X               Y               Z\n"
           + std::string(buf);
}

TEST(SimCompare, NorthEastUpIsTheLocalLevelRotation)
{
    const long double lat = 46.877L * Pi / 180.0L, lon = 7.465L * Pi / 180.0L;
    const SimVec up = {std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon), std::sin(lat)};
    const SimVec east = {-std::sin(lon), std::cos(lon), 0.0L};
    // North completes the right-handed frame: up x east.
    const SimVec north = {up.y * east.z - up.z * east.y, up.z * east.x - up.x * east.z,
                          up.x * east.y - up.y * east.x};
    long double n = 0, e = 0, u = 0;
    NorthEastUp(2.0L * up, lat, lon, n, e, u);
    EXPECT_NEAR_LD(n, 0.0L, RotationTol_m);
    EXPECT_NEAR_LD(e, 0.0L, RotationTol_m);
    EXPECT_NEAR_LD(u, 2.0L, RotationTol_m);
    NorthEastUp(east, lat, lon, n, e, u);
    EXPECT_NEAR_LD(e, 1.0L, RotationTol_m);
    EXPECT_NEAR_LD(n, 0.0L, RotationTol_m);
    NorthEastUp(north, lat, lon, n, e, u);
    EXPECT_NEAR_LD(n, 1.0L, RotationTol_m);
    EXPECT_NEAR_LD(u, 0.0L, RotationTol_m);
    // A rotation keeps lengths.
    const SimVec any = {0.3L, -1.7L, 2.9L};
    NorthEastUp(any, lat, lon, n, e, u);
    EXPECT_NEAR_LD(std::sqrt(n * n + e * e + u * u), Norm(any), RotationTol_m);
}

TEST(SimCompare, TruthFileReadsBackWhatWasSimulated)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    const SimTruth t = ReadTruth(set.Path(set.names.truth));
    EXPECT_NEAR_LD(t.marker.x, set.d.marker.x, TruthPosRounding_m);
    EXPECT_NEAR_LD(t.marker.y, set.d.marker.y, TruthPosRounding_m);
    EXPECT_NEAR_LD(t.marker.z, set.d.marker.z, TruthPosRounding_m);
    EXPECT_NEAR_LD(Norm(t.arp - set.d.arp), 0.0L, 2.0L * TruthPosRounding_m);
    EXPECT_NEAR_LD(t.eccH, set.d.opt.eccH, TruthPosRounding_m);
    ASSERT_EQ(t.zwd.size(), set.d.epochs.size());
    for (std::size_t i = 0; i < t.zwd.size(); i += 37) {
        EXPECT_EQ(t.mjday[i], set.d.mjday);
        // 1 ms: the truth file prints epochs with 3 decimals of the second.
        EXPECT_NEAR_LD(t.second[i], set.d.epochs[i].t, 1e-3L);
        EXPECT_NEAR_LD(t.zwd[i], set.d.epochs[i].zwd, TruthDelayRounding_m);
        EXPECT_NEAR_LD(t.zhd[i], set.d.epochs[i].zhd, TruthDelayRounding_m);
    }
}

TEST(SimCompare, TropoNodesTakeTheirEpochAndTheTruthBetweenEpochs)
{
    const std::string path = orvotest::WriteTemp(
        "nodes.trp",
        "# GNSS-STATION         TROPOSPHERE_EPOCH       DRY[MOD]  WET[EST]     TOTAL   PRECISION\n"
        "#------\n"
        "SIMU                 2020-06-25 01:00:00         2.0584    0.0418    2.1002 +-   0.0004\n"
        "SIMU                 2020-06-26 00:00:00         2.0584    0.0420    2.1004 +-   0.0004\n");
    const std::vector<SimTropoNode> n = ReadTropoFile(path);
    ASSERT_EQ(n.size(), 2u);
    // MJD 58849 is 2020-01-01; 25 June is day 177 of the leap year.
    EXPECT_EQ(n[0].mjday, 58849u + 176u);
    // Read from 4-decimal text: strtold round-off only, so 1e-6 s and 1e-12 m
    // are loose bounds yet far below the last printed digit (1e-4 m).
    EXPECT_NEAR_LD(n[0].second, 3600.0L, 1e-6L);
    EXPECT_NEAR_LD(n[0].dry, 2.0584L, 1e-12L);
    EXPECT_NEAR_LD(n[0].wet, 0.0418L, 1e-12L);
    EXPECT_EQ(n[1].mjday, 59026u);

    SimTruth t;
    t.mjday = {59025, 59025, 59025};
    t.second = {3570.0L, 3630.0L, 86370.0L};
    t.zwd = {0.040L, 0.044L, 0.050L};
    long double zwd = 0.0L;
    ASSERT_TRUE(TruthWetDelayAt(t, n[0], zwd));
    // 1e-15 m: linear interpolation of values near 0.04 m in long double.
    EXPECT_NEAR_LD(zwd, 0.042L, 1e-15L);  // halfway between the two epochs
    SimTropoNode atEpoch;
    atEpoch.mjday = 59025;
    atEpoch.second = 86370.0L;
    ASSERT_TRUE(TruthWetDelayAt(t, atEpoch, zwd));
    EXPECT_NEAR_LD(zwd, 0.050L, 1e-15L);
    // Midnight of the next day lies behind the last epoch: no truth there.
    zwd = -1.0L;
    EXPECT_FALSE(TruthWetDelayAt(t, n[1], zwd));
    EXPECT_EQ(zwd, -1.0L);
}

TEST(SimCompare, PlotFilePositionStandsBeforeCofactorsEvenWhenColumnsRunTogether)
{
    const SimVec p = {4331297.0123L, 567555.0456L, 4633132.9789L};
    for (bool glued : {false, true}) {
        const SimVec r = ReadStaticPlot(orvotest::WriteTemp("p.gps", PlotFile(p, false, glued)));
        // 1e-9 m: the plot file prints 4 decimals of 4-decimal coordinates, so
        // reading them back leaves only round-off.
        EXPECT_NEAR_LD(Norm(r - p), 0.0L, 1e-9L) << (glued ? "glued" : "plain");
    }
}

TEST(SimCompare, CompareToolPrintsTheOffsetInTheLocalFrame)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    const std::string truth = set.Path(set.names.truth);
    // The truth's own marker moved 0.25 m up along the ellipsoid normal and
    // 0.1 m east: the tool must give back exactly that split.
    long double lat = 0, lon = 0, h = 0;
    Geodetic(set.d.marker, lat, lon, h);
    const SimVec up = {std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon), std::sin(lat)};
    const SimVec east = {-std::sin(lon), std::cos(lon), 0.0L};
    const SimTruth t = ReadTruth(truth);
    const std::string plot = orvotest::WriteTemp("moved.gps", PlotFile(t.marker + 0.25L * up + 0.1L * east, false, false));
    const std::string out = orvotest::TempDir() + "/compare.txt";
    const std::string cmd = "'" + std::string(ORVO_SIMULATE_BINARY) + "' --compare '" + truth + "' '"
                            + plot + "' > '" + out + "' 2>&1";
    const int st = std::system(cmd.c_str());
    ASSERT_TRUE(WIFEXITED(st) && WEXITSTATUS(st) == 0) << orvotest::ReadFile(out);
    const std::string text = orvotest::ReadFile(out);
    // The plot file rounds each coordinate to 0.05 mm (0.09 mm in any
    // direction) and the tool prints 0.05 mm rounding: 0.2 mm holds both.
    constexpr long double PrintedTol_m = 0.2e-3L;
    std::istringstream in(text);
    std::string word, unit;
    long double got[3] = {-9.0L, -9.0L, -9.0L};
    const char* names[3] = {"north", "east", "up"};
    for (std::string line; std::getline(in, line);) {
        std::istringstream f(line);
        long double v = 0.0L;
        if (!(f >> word >> v >> unit)) continue;
        for (int i = 0; i < 3; ++i)
            if (word == names[i]) got[i] = v;
    }
    EXPECT_NEAR_LD(got[0], 0.0L, PrintedTol_m) << text;
    EXPECT_NEAR_LD(got[1], 0.1L, PrintedTol_m) << text;
    EXPECT_NEAR_LD(got[2], 0.25L, PrintedTol_m) << text;
}

TEST(SimCompareDeath, UnusableFilesStopWithFramedError)
{
    const SimVec p = {4331297.0L, 567555.0L, 4633133.0L};
    const std::string noSolution = orvotest::WriteTemp("nosol.gps", PlotFile(p, true, false));
    EXPECT_EXIT(ReadStaticPlot(noSolution), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> .*no solution");
    EXPECT_EXIT(ReadStaticPlot(orvotest::TempDir() + "/none.gps"), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> .*none.gps: can not be opened");
    const std::string headOnly = orvotest::WriteTemp("head.gps", "#   EPOCH[MJD]\n");
    EXPECT_EXIT(ReadStaticPlot(headOnly), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> .*no data line");
    const std::string noTruth = orvotest::WriteTemp("t.truth", "# orvo-simulate truth\n 59025 0.0 2.0 0.1 0.0\n");
    EXPECT_EXIT(ReadTruth(noTruth), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> .*position records missing");
    const std::string badEpoch = orvotest::WriteTemp(
        "e.truth", "MARKER XYZ (m) 1 2 3\nARP XYZ (m) 1 2 3\nHEADER XYZ (m) 1 2 3\n"
                   "ECCENTRICITY H/E/N (m) 0 0 0\n 59025 zero\n");
    EXPECT_EXIT(ReadTruth(badEpoch), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> .*epoch line 5 is not readable");
    const std::string badNode = orvotest::WriteTemp("n.trp", "SIMU                 2020-13-25 01:00:00  2.0 0.1\n");
    EXPECT_EXIT(ReadTropoFile(badNode), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> .*node line 1 is not readable");
}

}  // namespace
