// Ambiguity arcs: the arc parameters from the sampling interval, the arc
// lookup, and the whole stage on the real ESBC day: the a-priori ambiguity
// is the mean of L3 minus the solution's code over each arc, phase outside
// every arc is cleared, and the temporary file is gone afterwards.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <regex>
#include <string>
#include <vector>

#include "StagingSupport.h"
#include "preprocessing/SetAmbiguities.h"
#include "numerics/NearLD.h"

using stagingtest::Capture;
using stagingtest::Context;

namespace {

// The stage and the test sum the same L3 - code values (metres, up to
// some 1e5 m) over at most 2880 epochs; long double round-off on that is
// below 1e-11 m, so a nanometre leaves room for a different summation
// order and still catches any wrong or missing term (centimetres and up).
constexpr long double MeanTol_m = 1e-9L;

int ArcFilesInWorkingDir()
{
    int n = 0;
    for (const auto& e : std::filesystem::directory_iterator("."))
        if (e.path().filename().string().rfind("Ambiq_", 0) == 0) ++n;
    return n;
}

// The stage writes its arc file into the working directory under a name
// drawn from the clock; test processes running side by side would share
// the repository root and the second, so each works in its own folder.
class InTempDir {
public:
    InTempDir() : old_(std::filesystem::current_path())
    {
        std::filesystem::current_path(orvotest::TempDir());
    }
    ~InTempDir() { std::filesystem::current_path(old_); }

private:
    std::filesystem::path old_;
};

}  // namespace

TEST(ArcParameters, GapAndMinimumFollowTheSamplingInterval)
{
    struct Row {
        long double T;
        long double gap;
        long minObs;
    };
    // T + 0.5 against the limits 2, 3, 4, 10, 20 s; a limit itself belongs
    // to the next row.
    const Row rows[] = {{30.0L, 150.5L, 15}, {1.0L, 5.5L, 120},   {5.0L, 25.5L, 30},
                        {1.4L, 7.5L, 120},   {1.5L, 8.0L, 60},    {2.4L, 12.5L, 60},
                        {2.5L, 13.0L, 40},   {3.4L, 17.5L, 40},   {3.5L, 18.0L, 30},
                        {9.4L, 47.5L, 30},   {9.5L, 48.0L, 25},   {19.4L, 97.5L, 25},
                        {19.5L, 98.0L, 15},  {0.1L, 1.0L, 120}};
    for (const Row& r : rows) {
        long double gap = 0.0L;
        long minObs = 0;
        ArcParameters(r.T, gap, minObs);
        EXPECT_NEAR_LD(gap, r.gap, 1e-15L) << r.T;  // exact sums of binary fractions
        EXPECT_EQ(minObs, r.minObs) << r.T;
    }
}

TEST(GetAmbIndex, FindsTheFirstArcEnclosingTheEpochEndsIncluded)
{
    matrix<long> AI(4, 4, 0L);
    matrix<short> AP(4, 1, static_cast<short>(0));
    const long rows[4][3] = {{10, 0, 20}, {0, 0, 50}, {21, 0, 40}, {15, 0, 30}};
    const short sats[4] = {5, 7, 5, 5};
    for (int i = 0; i < 4; ++i) {
        AI(i, 0) = rows[i][0];
        AI(i, 2) = rows[i][2];
        AP(i) = sats[i];
    }
    struct Q {
        short prn;
        long ieph, namb, want;
    };
    const Q qs[] = {{5, 10, 4, 0},  {5, 20, 4, 0},  {5, 21, 4, 2},  {5, 9, 4, -1},
                    {5, 41, 4, -1}, {7, 0, 4, 1},   {7, 50, 4, 1},  {7, 51, 4, -1},
                    {8, 15, 4, -1}, {5, 21, 2, -1}, {5, 25, 3, 2},  {5, 25, 99, 2},
                    {5, 10, 0, -1}, {205, 10, 4, -1}};
    for (const Q& q : qs) {
        long iamb = 123;
        GetAmbIndex(q.prn, q.ieph, AI, AP, q.namb, iamb);
        EXPECT_EQ(iamb, q.want) << q.prn << " " << q.ieph << " " << q.namb;
    }
}

namespace {

// The real day with combinations formed and the per-record arrays that the
// stage reads: every satellite usable and high, unless a test says other.
struct RealDay {
    Context c;
    matrix<gnssobs> L1, L2, L7, L3, L4, MW, C1, PP3;
    std::string out;

    explicit RealDay(bool pp3)
    {
        gCPosC& gc = c.gc;
        gc.rnx.SetFile(stagingtest::Obs());
        gc.rnx.ReadFile();
        gc.ifL3 = true;
        gc.ifPp3 = pp3;
        gc.isGPS = gc.isGAL = true;
        gc.isGLN = false;
        RINEXData& d = gc.rnxd;
        d.SetLC_PP3();
        d.SetLC_L3();
        d.SetLC_L4();
        d.SetLC_MW(false);
        gc.ELV.Resize(d.nsatall, 1, 1.0L);
        gc.OKSAT.Resize(d.nsatall, 1, true);
    }
    void Save()
    {
        const RINEXData& d = c.gc.rnxd;
        L1 = d.L1, L2 = d.L2, L7 = d.L7, L3 = d.L3, L4 = d.L4, MW = d.MW, C1 = d.C1, PP3 = d.PP3;
    }
    void Run()
    {
        Save();
        InTempDir here;
        Capture cap(std::cout);
        SetAmbiguities(c.gc);
        out = cap.Text();
    }
    // Record k of epoch i lies inside an arc of its satellite.
    bool InArc(short sat, long i) const
    {
        const gCPosC& gc = c.gc;
        for (long a = 0; a < gc.nAmb; ++a)
            if (gc.AmbSat(a) == sat && gc.AmbIndex(a, 0) <= i && i <= gc.AmbIndex(a, 2))
                return true;
        return false;
    }
};

// Checks the arc table against the saved observations: block starts,
// order, counts and the mean of L3 - code, all computed here.
void CheckTable(const RealDay& r, const matrix<gnssobs>& code)
{
    const gCPosC& gc = r.c.gc;
    const RINEXData& d = gc.rnxd;
    ASSERT_GT(gc.nAmb, 50);
    ASSERT_EQ(gc.xAmb.NRow(), gc.nAmb);
    ASSERT_EQ(gc.AmbIndex.NRow(), gc.nAmb);
    ASSERT_EQ(gc.AmbIndex.NCol(), 4);
    ASSERT_EQ(gc.AmbSat.NRow(), gc.nAmb);

    std::vector<long> start(d.nepochall + 1, 0);
    for (long i = 0; i < d.nepochall; ++i) start[i + 1] = start[i] + d.nsat(i);
    auto listPos = [&](short s) {
        for (long i = 0; i < d.satList.NRow(); ++i)
            if (d.satList(i) == s) return i;
        return -1L;
    };

    for (long a = 0; a < gc.nAmb; ++a) {
        const short sat = gc.AmbSat(a);
        const long i0 = gc.AmbIndex(a, 0), i1 = gc.AmbIndex(a, 2);
        EXPECT_EQ(gc.AmbIndex(a, 1), start[i0]) << a;
        ASSERT_LE(i0, i1);
        if (a > 0) {
            // satList order, then time without overlap.
            const short prev = gc.AmbSat(a - 1);
            EXPECT_LE(listPos(prev), listPos(sat)) << a;
            if (prev == sat) {
                EXPECT_GT(i0, gc.AmbIndex(a - 1, 2)) << a;
            }
        }
        long double sum = 0.0L;
        long n = 0;
        for (long i = i0; i <= i1; ++i)
            for (long k = start[i]; k < start[i + 1]; ++k)
                if (d.sat(k) == sat && gc.OKSAT(k) && !r.L3(k).IsNull() && !code(k).IsNull()) {
                    sum += r.L3(k).obs - code(k).obs;
                    ++n;
                }
        ASSERT_GT(n, 0) << a;
        EXPECT_EQ(gc.AmbIndex(a, 3), n) << a;
        EXPECT_NEAR_LD(gc.xAmb(a), sum / n, MeanTol_m) << a;
    }
}

}  // namespace

TEST(SetAmbiguities, RealDayMeansOfL3MinusP3AndPhaseOutsideArcsCleared)
{
    RealDay r(true);
    gCPosC& gc = r.c.gc;
    RINEXData& d = gc.rnxd;
    // A satellite without any usable code: its arcs have no a-priori value
    // and go, and all its phase with them.
    const short noCode = 7;
    for (long k = 0; k < d.nsatall; ++k)
        if (d.sat(k) == noCode) d.PP3(k) = gnssobs();
    r.Run();

    EXPECT_EQ(gc.MinObsAmb, 15);
    // 1e-15 s: 150.5 is exact in binary; only the parse could round.
    EXPECT_NEAR_LD(gc.MaxAmbTimeGap, 150.5L, 1e-15L);
    CheckTable(r, r.PP3);
    // The temporary file was named from the marker and is gone again.
    EXPECT_TRUE(std::regex_match(d.AmbFile, std::regex("Ambiq_ESBC00DNK_[0-9]+\\.b")))
        << d.AmbFile;
    {
        InTempDir here;
        EXPECT_FALSE(std::filesystem::exists(d.AmbFile));
        EXPECT_EQ(ArcFilesInWorkingDir(), 0);
    }

    long removed = 0, keptGPS = 0, removedGPS = 0;
    long k = 0;
    for (long i = 0; i < d.nepochall; ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            const short s = d.sat(k);
            if (s >= 101 && s <= 199) {
                // GLONASS is switched off: left as it came.
                // Zero tolerance: records inside an arc are copied untouched.
                EXPECT_NEAR_LD(d.L1(k).obs, r.L1(k).obs, 0.0L) << k;
                continue;
            }
            if (s == noCode) {
                EXPECT_FALSE(r.InArc(s, i));
            }
            const bool gps = s <= 99 && s != noCode;
            if (r.InArc(s, i)) {
                EXPECT_NEAR_LD(d.L1(k).obs, r.L1(k).obs, 0.0L) << k;
                EXPECT_NEAR_LD(d.L4(k).obs, r.L4(k).obs, 0.0L) << k;
                if (gps && !r.L1(k).IsNull()) ++keptGPS;
                continue;
            }
            if (!r.L1(k).IsNull()) ++removed;
            if (gps && !r.L1(k).IsNull()) ++removedGPS;
            EXPECT_TRUE(d.L1(k).IsNull()) << k;
            EXPECT_TRUE(d.L2(k).IsNull()) << k;
            if (s >= 201) {
                EXPECT_TRUE(d.L7(k).IsNull()) << k;
            }
            EXPECT_TRUE(d.L3(k).IsNull()) << k;
            EXPECT_TRUE(d.L4(k).IsNull()) << k;
            EXPECT_TRUE(d.MW(k).IsNull()) << k;
        }
    // With every record high and usable, GPS phase outside arcs is only the
    // odd fragment shorter than 15 epochs at a geodetic station: under 5 %.
    // (Galileo has no P1 here, so no P3 from P1 and no arc: all of it goes.)
    EXPECT_GT(keptGPS, 20 * removedGPS);
    EXPECT_NE(r.out.find("DETERMINING PHASE AMBIGUITIES:"), std::string::npos);
    EXPECT_NE(r.out.find("  Testing all ambiguities - # of OK   : " + std::to_string(gc.nAmb)),
              std::string::npos);
    EXPECT_NE(r.out.find("  Removing unusable phase observations: " + std::to_string(removed)),
              std::string::npos);
    EXPECT_NE(r.out.find("A-PRIORI VALUES OF AMBIGUITIES:"), std::string::npos);
}

TEST(SetAmbiguities, ConstantScreenOnC1KeepsLowPhaseInsideAnArc)
{
    RealDay r(false);
    gCPosC& gc = r.c.gc;
    gc.isL4ScreenConst = true;
    RINEXData& d = gc.rnxd;
    // A record of G05 at epoch 1100 (inside a clean arc, 969 to 1370) sinks
    // below the cut-off: the constant screen steps over it, so the arc
    // spans it and its phase stays, by span and not by elevation.
    long k = 0, low = -1;
    for (long i = 0; i <= 1100; ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k)
            if (i == 1100 && d.sat(k) == 5) low = k;
    ASSERT_GE(low, 0);
    gc.ELV(low) = 0.01L;
    r.Run();
    CheckTable(r, r.C1);
    EXPECT_TRUE(r.InArc(5, 1100));
    EXPECT_FALSE(d.L1(low).IsNull());
    // Zero tolerance: a kept record is copied untouched.
    EXPECT_NEAR_LD(d.L1(low).obs, r.L1(low).obs, 0.0L);
}

TEST(SetAmbiguities, NothingHappensWithoutPhase)
{
    Context c;
    c.gc.ifL3 = false;
    c.gc.nAmb = 0;
    Capture cap(std::cout);
    SetAmbiguities(c.gc);
    EXPECT_EQ(cap.Text(), "");
    EXPECT_EQ(c.gc.nAmb, 0);
    EXPECT_EQ(c.gc.MinObsAmb, 120);  // defaults not replaced
}

TEST(SetAmbiguitiesDeath, UnknownIntervalOrMissingCorrectionsStop)
{
    RealDay r(false);
    r.c.gc.rnxh.SetInterval(-1.0f);
    EXPECT_EXIT(SetAmbiguities(r.c.gc), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> AMBIGUITIES: SAMPLING INTERVAL OF THE RINEX FILE "
                "NOT DETERMINED! \\*\\*\\*\\*");
    r.c.gc.rnxh.SetInterval(30.0f);
    r.c.gc.OKSAT.Resize(10, 1, true);
    EXPECT_EXIT(SetAmbiguities(r.c.gc), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> AMBIGUITIES: OBSERVATION CORRECTIONS NOT SET FOR "
                "ALL OBSERVATIONS!");
}
