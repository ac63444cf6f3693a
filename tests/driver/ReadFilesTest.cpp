#include "driver/ReadFiles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "driver/SetFiles.h"
#include "preprocessing/StagingSupport.h"
#include "numerics/NearLD.h"

using stagingtest::Capture;
using stagingtest::Context;
using stagingtest::CutObs;
using stagingtest::SetName;

namespace {

// 20 epochs of the real day from 00:00:00: small enough for death tests,
// which read the file anew in their child process.
constexpr long kEpochs = 20;

std::string Warning(const std::string& msg) { return "#### Orvo: Warning -> " + msg + " ####"; }

// Stages obs with the given systems switched on.
void Stage(Context& c, const std::string& obs, bool gps, bool gln, bool gal)
{
    SetName(c.gc.rnxfile, obs);
    c.gc.isRnx = true;
    c.gc.isGPS = c.gc.isGPSxdcb = gps;
    c.gc.isGLN = c.gc.isGLNxdcb = gln;
    c.gc.isGAL = c.gc.isGALxdcb = gal;
    SetFiles(c.gc);
    ReadFiles(c.gc);
}

// Keeps the first nG GPS and the first nOther satellites of system sys.
stagingtest::Selector Keep(int nG, char sys, int nOther)
{
    return [=](const std::vector<std::string>& sats) {
        std::vector<bool> k(sats.size(), false);
        int g = 0, o = 0;
        for (size_t i = 0; i < sats.size(); ++i) {
            if (sats[i][0] == 'G' && g < nG) k[i] = true, ++g;
            if (sats[i][0] == sys && o < nOther) k[i] = true, ++o;
        }
        return k;
    };
}

std::vector<bool> GalileoOnly(const std::vector<std::string>& sats)
{
    std::vector<bool> k;
    for (const std::string& s : sats) k.push_back(s[0] == 'E');
    return k;
}

// A receiver clock file of the program's own layout with n epochs of
// value_us microseconds from 2020-06-25 00:00:00 at 30 s.
std::string ClockFile(const std::string& name, long n, double value_us)
{
    std::ostringstream os;
    os << "CLOCK ERROR FILE: ESBC00DNK / 10118M001\nCLOCK REF. SYS. : G\n";
    for (long i = 0; i < n; ++i) os << "59025 " << 30.0 * i << "  " << value_us << "\n";
    return orvotest::WriteTemp(name, os.str());
}

TEST(ReadFiles, ReadsTheCutDayAndKeepsSystemsWithEnoughData)
{
    Context c;
    c.gc.verbose = true;
    std::string log;
    {
        Capture err(std::cerr);
        Stage(c, CutObs("plain.20o", 0, kEpochs), true, true, true);
        log = err.Text();
    }
    EXPECT_EQ(c.rnxd.GetNEpoch(), kEpochs);
    EXPECT_TRUE(c.gc.isGPS && c.gc.isGLN && c.gc.isGAL);
    EXPECT_TRUE(c.gc.isGPSxdcb && c.gc.isGLNxdcb && c.gc.isGALxdcb);
    // The first epoch line of the file lists 30 satellites (header of the
    // data set); the echo names the records read.
    EXPECT_EQ(c.rnxd.nsat(0), 30);
    EXPECT_NE(log.find("Orvo::ReadFiles():        reading RINEX file - 20 epochs, "
                       + std::to_string(c.rnxd.GetNObs()) + " C1 observations, 22 obs types"),
              std::string::npos);
}

TEST(ReadFiles, FullDayHoldsTheIndependentlyCountedRecords)
{
    // README.md of the data set, counted by a separate parser: 2880 epochs,
    // G 33406, R 25790, E 24362 records; every system far above 10%.
    Context c;
    c.gc.isDateChkDaily = true;
    c.gc.DateChkDaily.Set(59025, 0.0L);
    Stage(c, stagingtest::Obs(), true, true, true);
    EXPECT_EQ(c.rnxd.GetNEpoch(), 2880);
    EXPECT_EQ(c.rnxd.GetNObs(), 33406 + 25790 + 24362);
    long g = 0, r = 0, e = 0;
    for (long k = 0; k < c.rnxd.GetNObs(); ++k) {
        const short s = c.rnxd.sat(k);
        g += (s >= 1 && s <= 99) ? 1 : 0;
        r += (s >= 101 && s <= 199) ? 1 : 0;
        e += (s >= 201 && s <= 299) ? 1 : 0;
    }
    EXPECT_EQ(g, 33406);
    EXPECT_EQ(r, 25790);
    EXPECT_EQ(e, 24362);
    EXPECT_TRUE(c.gc.isGPS && c.gc.isGLN && c.gc.isGAL);
    EXPECT_TRUE(c.rnxh.HasP2());  // observed, nothing copied
}

TEST(ReadFiles, DailyCheckAcceptsTheDayOfTheData)
{
    Context c;
    c.gc.isDateChkDaily = true;
    c.gc.DateChkDaily.Set(59025, 0.0L);  // 2020-06-25
    Stage(c, CutObs("daily.20o", 0, kEpochs), true, false, false);
    // The check let the whole cut through, not just enough to flag GPS.
    EXPECT_EQ(c.rnxd.GetNEpoch(), kEpochs);
    EXPECT_TRUE(c.gc.isGPS);
}

TEST(ReadFilesDeath, DailyCheckRefusesNeighbouringDays)
{
    // Day before: the data start exactly at its end, which does not touch it.
    const std::string obs = CutObs("daily2.20o", 0, kEpochs);
    EXPECT_EXIT(
        {
            Context c;
            c.gc.isDateChkDaily = true;
            c.gc.DateChkDaily.Set(59024, 0.0L);
            Stage(c, obs, true, false, false);
        },
        ::testing::ExitedWithCode(1),
        "\\*\\*\\*\\* Orvo: Error -> CHECKING DAILY DATA PROBLEM: GNSS DATA NOT FOR DAY 2020-6-24! "
        "\\*\\*\\*\\*");
    EXPECT_EXIT(
        {
            Context c;
            c.gc.isDateChkDaily = true;
            c.gc.DateChkDaily.Set(59026, 0.0L);
            Stage(c, obs, true, false, false);
        },
        ::testing::ExitedWithCode(1), "\\*\\*\\*\\* Orvo: Error -> CHECKING DAILY DATA PROBLEM: GNSS DATA NOT FOR DAY 2020-6-26! "
        "\\*\\*\\*\\*");
}

TEST(ReadFiles, SystemWithAtMostTenPerCentOfRecordsIsDropped)
{
    // Nine GPS and one Galileo record per epoch: exactly 10%, not more.
    Context c;
    std::string out;
    {
        Capture cout(std::cout);
        Stage(c, CutObs("tenpercent.20o", 0, kEpochs, Keep(9, 'E', 1)), true, false, true);
        out = cout.Text();
    }
    EXPECT_TRUE(c.gc.isGPS);
    EXPECT_FALSE(c.gc.isGAL);
    EXPECT_FALSE(c.gc.isGALxdcb);
    EXPECT_NE(out.find(Warning("NO OR NOT ENOUGH GALILEO DATA IN RINEX FILE - NOT USING GALILEO "
                               "OBSERVATIONS IN PROCESSING!")),
              std::string::npos);

    // One GLONASS satellite beside ten GPS satellites: 1/11, dropped too.
    Context d;
    {
        Capture cout(std::cout);
        Stage(d, CutObs("oneglonass.20o", 0, kEpochs, Keep(10, 'R', 1)), true, true, false);
        out = cout.Text();
    }
    EXPECT_TRUE(d.gc.isGPS);
    EXPECT_FALSE(d.gc.isGLN);
    EXPECT_NE(out.find("NOT USING GLONASS OBSERVATIONS"), std::string::npos);

    // Eight GPS and one Galileo: 1/9 is more than 10%, kept.
    Context e;
    Stage(e, CutObs("elevenpercent.20o", 0, kEpochs, Keep(8, 'E', 1)), true, false, true);
    EXPECT_TRUE(e.gc.isGAL);
    EXPECT_TRUE(e.gc.isGALxdcb);
}

TEST(ReadFilesDeath, NoDataOfTheOnlySystemWarnsThenStops)
{
    const std::string obs = CutObs("galileo.20o", 0, kEpochs, GalileoOnly);
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            Context c;
            Stage(c, obs, true, false, false);
        },
        ::testing::ExitedWithCode(1),
        "NO OR NOT ENOUGH GPS DATA IN RINEX FILE - NOT USING GPS OBSERVATIONS IN PROCESSING!"
        "(.|\n)*\\*\\*\\*\\* Orvo: Error -> NO OR NOT ENOUGH GNSS \\(G\\|R\\|E\\) DATA IN RINEX FILE "
        "- PROBLEMATIC RINEX FILE! \\*\\*\\*\\*");
}

TEST(ReadFiles, ReceiverClockFileMustMatchTheEpochs)
{
    const std::string obs = CutObs("clk.20o", 0, kEpochs);
    Context ok;
    SetName(ok.gc.clkFName, ClockFile("match.clk", kEpochs, 1.5));
    ok.gc.isClkErr = true;
    Stage(ok, obs, true, false, false);
    EXPECT_TRUE(ok.gc.isClkErr);
    // 1.5 µs read back in seconds; the text carries the value exactly.
    EXPECT_NEAR_LD(ok.gc.clkerr.GetClkErr(kEpochs - 1), 1.5e-6L, 1e-18L);

    Context bad;
    SetName(bad.gc.clkFName, ClockFile("onemore.clk", kEpochs + 1, 1.5));
    bad.gc.isClkErr = true;
    std::string out;
    {
        Capture cout(std::cout);
        Stage(bad, obs, true, false, false);
        out = cout.Text();
    }
    EXPECT_FALSE(bad.gc.isClkErr);
    EXPECT_NE(out.find(Warning("RINEX FILE AND APRIORI CLOCK ERROR FILE HAVE DIFFERENT NUMBER OF "
                               "EPOCHS - NOT USING RECEIVER CLOCK ERROR FILE!")),
              std::string::npos);
}

TEST(ReadFilesDeath, BrokenOrForeignProductFilesStopTheRun)
{
    const std::string obs = CutObs("products.20o", 0, kEpochs);
    // A missing orbit file: the argument checks normally refuse it; here the reader does.
    EXPECT_EXIT(
        {
            Context c;
            SetName(c.gc.sp3file, orvotest::TempDir() + "/absent.sp3");
            c.gc.isPEph = true;
            Stage(c, obs, true, false, false);
        },
        ::testing::ExitedWithCode(1), "\\*\\*\\*\\* Orvo: Error -> PRECISE ORBIT FILE .*absent.sp3 CAN NOT BE OPENED!");
    // An observation file given as orbits.
    EXPECT_EXIT(
        {
            Context c;
            SetName(c.gc.sp3file, obs);
            c.gc.isPEph = true;
            Stage(c, obs, true, false, false);
        },
        ::testing::ExitedWithCode(1), "\\*\\*\\*\\* Orvo: Error -> PRECISE ORBIT FILE .*: line 1.*not an SP3 header line");
    // An observation file given as receiver clocks.
    EXPECT_EXIT(
        {
            Context c;
            SetName(c.gc.clkFName, obs);
            c.gc.isClkErr = true;
            Stage(c, obs, true, false, false);
        },
        ::testing::ExitedWithCode(1),
        "\\*\\*\\*\\* Orvo: Error -> Line 1 of clock file is not >CLOCK ERROR FILE:< line!");
}

TEST(ReadFiles, SatelliteProblemFileIsReadWithTheRest)
{
    // Six header lines and no period: an empty list, read and echoed.
    Context c;
    SetName(c.gc.scrxfile, orvotest::WriteTemp("empty.crx", "h1\nh2\nh3\nh4\nh5\nh6\n"));
    c.gc.isSCrx = true;
    c.gc.verbose = true;
    std::string log;
    {
        Capture err(std::cerr);
        Stage(c, CutObs("crx.20o", 0, 3), true, false, false);
        log = err.Text();
    }
    EXPECT_EQ(c.gc.GetSatCRX().GetNSat(), 0);
    EXPECT_NE(log.find("Orvo::SetFiles():         setting GPS AND GLONASS SATELLITE PROBLEM file!"),
              std::string::npos);
    EXPECT_NE(log.find("Orvo::ReadFiles():        reading GPS AND GLONASS SATELLITE PROBLEM file - "
                       "0 problematic epochs/satellites!"),
              std::string::npos);
}

TEST(ReadFilesDeath, MissingSatelliteProblemFileStops)
{
    const std::string obs = CutObs("crx2.20o", 0, 3);
    EXPECT_EXIT(
        {
            Context c;
            SetName(c.gc.scrxfile, orvotest::TempDir() + "/absent.crx");
            c.gc.isSCrx = true;
            Stage(c, obs, true, false, false);
        },
        ::testing::ExitedWithCode(1), "Orvo: Error -> SATELLITE PROBLEM FILE DOES NOT EXIST!");
}

TEST(ReadFilesDeath, FirstCarrierMissingStops)
{
    // C1 and P1 renamed to types the reader does not know: no first code.
    const std::string obs = CutObs("noc1.20o", 0, 3, stagingtest::KeepAll, "    C1    P1",
                                   "    X1    X2");
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            Context c;
            Stage(c, obs, true, true, true);
        },
        ::testing::ExitedWithCode(1),
        "  \\*\\*\\* PROBLEMATIC DATA - FIRST CARRIER OBSERVATIONS ARE MISSING \\(C1, L1\\)!!\n\n"
        "(.|\n)*Orvo: Error -> OBSERVATIONS \\(C1, L1\\) ON FIRST CARRIER ARE MISSING!");
}

TEST(ReadFiles, OnlyC2OnTheSecondCarrierIsCopiedToP2)
{
    const std::string obs = CutObs("nop2.20o", 0, 3, stagingtest::KeepAll, "    P2    L2",
                                   "    X2    L2");
    Context plain;
    Stage(plain, CutObs("withp2.20o", 0, 3), true, true, true);
    Context c;
    std::string err;
    {
        Capture e(std::cerr);
        Stage(c, obs, true, true, true);
        err = e.Text();
    }
    EXPECT_NE(err.find(Warning("RINEX FILE HAS ONLY C2 CODE OBSERVATIONS ON L2 - COPYING VALUES TO "
                               "P2!")),
              std::string::npos);
    ASSERT_TRUE(c.rnxh.HasP2());
    ASSERT_EQ(c.rnxd.GetNObs(), plain.rnxd.GetNObs());
    long nC2 = 0;
    for (long k = 0; k < c.rnxd.GetNObs(); ++k) {
        // P2 is now the C2 column of the same file read without the change.
        EXPECT_EQ(c.rnxd.P2(k).obs, plain.rnxd.C2(k).obs) << "record " << k;
        if (std::fabs(plain.rnxd.C2(k).obs) > 1.0L) ++nC2;
    }
    EXPECT_GT(nC2, 0);
}

}  // namespace
