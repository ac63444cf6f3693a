// The static plot file and the receiver clock file, their flags, and the
// guard that ends the run before any of them is opened.
#include "reporting/WriteStaticClock.h"
#include "reporting/WriteStaticPlot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "ReportSupport.h"
#include "orbits/ClkErr.h"
#include "reporting/CheckStaticSolution.h"
#include "reporting/PrintStatic.h"
#include "numerics/NearLD.h"

using namespace reporttest;

namespace {

void RunReport(Context& ctx)
{
    Capture out(std::cout);
    PrintStatic(ctx.gc);
}

const std::string PlotHead =
    "#   EPOCH[MJD]      NEPH      NOBS    #GPS    #GLN    #GAL NOUTLIERS   #OGPS   #OGLN   "
    "#OGAL        S0     GTEST               X               Y               Z"
    + F("%22s%22s%22s%22s%22s%22s", "Q11", "Q22", "Q33", "Q12", "Q13", "Q23") + "   MARKER NAME";

// The data line of the fixture after its optional "#".
std::string PlotData(const gCPosC& gc)
{
    const matrix<long double>& Q = gc.QxxAll;
    // The middle of 3600 s .. 3690 s is 3645 s; sqrt(9e-4) = 0.03 m and
    // (0.03 / 0.02)^2 = 2.25.
    return F("%6d%8.1Lf", 59025, 3645.0L) + F("%10d%10d%8d%8d%8d", 4, 1000, 600, 300, 100)
           + F("%10d%8d%8d%8d", 10, 6, 4, 0) + F("%10.6Lf%10.4Lf", 0.03L, 2.25L)
           + F("%16.4Lf%16.4Lf%16.4Lf", gc.RecPosEst.x, gc.RecPosEst.y, gc.RecPosEst.z)
           + F("%22.15Lf%22.15Lf%22.15Lf%22.15Lf%22.15Lf%22.15Lf", Q(0, 0), Q(1, 1), Q(2, 2),
               Q(0, 1), Q(0, 2), Q(1, 2))
           + "   ESBC";
}

// The file holds µs with 6 decimals: half a unit is 0.5e-12 s, and 1e-15 s
// covers the decimal conversions.
constexpr long double ClockTol_s = 0.5e-12L + 1e-15L;
// Seconds of day with 3 decimals.
constexpr long double EpochTol_s = 0.5e-3L + 1e-9L;

}  // namespace

TEST(WriteStaticPlot, HeadAndOneDataLine)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "plot");
    RunReport(ctx);
    const std::vector<std::string> file = Lines(orvotest::ReadFile(ctx.gc.gnuplotStat));
    ASSERT_EQ(file.size(), 2u);
    EXPECT_EQ(file[0], PlotHead);
    EXPECT_EQ(file[1], PlotData(ctx.gc));
    EXPECT_FALSE(ctx.gc.gplotStat.is_open());
}

TEST(WriteStaticPlot, RunWithoutSolutionIsACommentLine)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "plot0");
    ctx.gc.s0apost = 0.0L;
    RunReport(ctx);
    const std::vector<std::string> file = Lines(orvotest::ReadFile(ctx.gc.gnuplotStat));
    ASSERT_EQ(file.size(), 2u);
    const std::string data = PlotData(ctx.gc);
    // sqrt(0) and 0 / sig0^2 replace 0.03 and 2.25.
    const std::string zero = F("%10.6Lf%10.4Lf", 0.0L, 0.0L);
    const size_t at = 14 + 10 + 10 + 24 + 10 + 24;
    EXPECT_EQ(file[1], "#" + data.substr(0, at) + zero + data.substr(at + 20));

    // An undefined variance (no redundancy) is no solution either.
    ctx.gc.s0apost = std::numeric_limits<long double>::quiet_NaN();
    RunReport(ctx);
    EXPECT_EQ(orvotest::ReadFile(ctx.gc.gnuplotStat).substr(PlotHead.size() + 1, 1), "#");

    // Just above the bound the line is data again.
    ctx.gc.s0apost = 2e-10L;
    RunReport(ctx);
    EXPECT_NE(orvotest::ReadFile(ctx.gc.gnuplotStat).substr(PlotHead.size() + 1, 1), "#");
}

TEST(WriteStaticClock, EveryEpochInMicrosecondsReadsBack)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "clk");
    RunReport(ctx);
    const std::vector<std::string> file = Lines(orvotest::ReadFile(ctx.gc.clkfile));
    ASSERT_EQ(file.size(), 6u);
    EXPECT_EQ(file[0], "CLOCK ERROR FILE: ESBC / 10118M001");
    EXPECT_EQ(file[1], "CLOCK REF. SYS. : G");
    // 299.792458 m of clock is 1 µs; the epoch without solution keeps its line.
    EXPECT_EQ(file[2], F("%6d%10.3Lf  %10.6Lf", 59025, 3600.0L, 1.0L));
    EXPECT_EQ(file[3], F("%6d%10.3Lf  %10.6Lf", 59025, 3630.0L, -0.5L));
    EXPECT_EQ(file[4], F("%6d%10.3Lf  %10.6Lf", 59025, 3660.0L, 0.0L));

    // Round trip through the reader: clock in seconds is metres / c.
    ClkErr back;
    back.SetFile(ctx.gc.clkfile);
    back.ReadFile();
    ASSERT_EQ(back.GetNEpoch(), 4);
    EXPECT_EQ(back.GetRefSystem(), 'G');
    for (long i = 0; i < 4; ++i) {
        EXPECT_NEAR_LD(back.GetClkErr(i), ctx.gc.dtAll(i) / C, ClockTol_s) << i;
        EXPECT_NEAR_LD(back.GetMJD(i) - ctx.rnxd.epoch(i), 0.0L, EpochTol_s) << i;
    }
}

TEST(WriteStaticClock, ReferenceSystemIsTheFirstSystemInUse)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "clkref");
    ctx.gc.isGPS = false;
    RunReport(ctx);
    EXPECT_EQ(Lines(orvotest::ReadFile(ctx.gc.clkfile))[1], "CLOCK REF. SYS. : R");
    ctx.gc.isGLN = false;
    RunReport(ctx);
    EXPECT_EQ(Lines(orvotest::ReadFile(ctx.gc.clkfile))[1], "CLOCK REF. SYS. : E");
}

TEST(WriteStaticFiles, NoFileWithoutItsFlag)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "noflags");
    ctx.gc.isOutDCBFile = ctx.gc.isOutTropFile = ctx.gc.isGNUPlotStat = ctx.gc.isClkFile = false;
    RunReport(ctx);
    for (const char* f : {ctx.gc.estdcbfile, ctx.gc.esttropfile, ctx.gc.gnuplotStat, ctx.gc.clkfile})
        EXPECT_FALSE(std::ifstream(f).good()) << f;
}

TEST(CheckStaticSolutionDeath, BrokenLayoutEndsTheRunBeforeAnyFile)
{
    const std::string frame = "\\*\\*\\*\\* Orvo: Error -> STATIC SOLUTION REPORT: ";
    {
        Context ctx;
        FillSolution(ctx);
        AskForFiles(ctx.gc, "death");
        ctx.gc.QxxAll.Resize(0, 0);
        EXPECT_EXIT(RunReport(ctx), ::testing::ExitedWithCode(1), frame + "COFACTOR MATRIX SMALLER");
        // The child ended before opening anything.
        for (const char* f : {ctx.gc.estdcbfile, ctx.gc.esttropfile, ctx.gc.gnuplotStat, ctx.gc.clkfile})
            EXPECT_FALSE(std::ifstream(f).good()) << f;
    }
    {
        Context ctx;
        FillSolution(ctx);
        ctx.gc.AmbIndex(1, 2) = 4;  // one past the last epoch
        EXPECT_EXIT(RunReport(ctx), ::testing::ExitedWithCode(1), frame + "AMBIGUITY 2 HAS EPOCH 4 OUTSIDE");
    }
    {
        Context ctx;
        FillSolution(ctx);
        ctx.gc.ixdcbP2(1) = NUnk;  // the constraint column is no bias
        EXPECT_EXIT(RunReport(ctx), ::testing::ExitedWithCode(1), frame + "P2 CODE BIAS COLUMN 18 OUTSIDE");
    }
    {
        Context ctx;
        FillSolution(ctx);
        ctx.gc.isClkFile = true;
        ctx.gc.dtAll.Resize(3, 1, 0.0L);
        EXPECT_EXIT(RunReport(ctx), ::testing::ExitedWithCode(1), frame + "RECEIVER CLOCK LIST HOLDS 3 VALUES FOR 4");
    }
    {
        Context ctx;
        FillSolution(ctx);
        ctx.gc.nTropoUnk = 3;  // one node more than the node lists hold
        EXPECT_EXIT(RunReport(ctx), ::testing::ExitedWithCode(1), frame + "TROPOSPHERE NODE EPOCH LIST HOLDS 2");
    }
    {
        Context ctx;
        FillSolution(ctx);
        ctx.rnxd.nepochall = 0;
        EXPECT_EXIT(RunReport(ctx), ::testing::ExitedWithCode(1), frame + "NO OBSERVATION EPOCHS");
    }
}

TEST(CheckStaticSolution, ConsistentSolutionPasses)
{
    Context ctx;
    FillSolution(ctx);
    ctx.gc.isClkFile = true;
    // The guard returns on a whole layout: the child reaches its own exit 0.
    EXPECT_EXIT(
        {
            CheckStaticSolution(ctx.gc);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}
