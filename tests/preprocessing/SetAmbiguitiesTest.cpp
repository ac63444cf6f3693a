// Ambiguity arcs: the arc parameters from the sampling interval, the arc
// lookup, and the whole stage on the real ESBC day: the a-priori ambiguity
// is the mean of L3 minus the solution's code over each arc, phase outside
// every arc is cleared, and the temporary file is gone afterwards.
#include "preprocessing/SetAmbiguities.h"

#include <filesystem>
#include <regex>

#include "preprocessing/AmbiguityTable.h"
#include "preprocessing/StagingSupport.h"

using namespace stagingtest;

namespace {

// The stage and the test sum the same L3 - code values (metres, up to
// some 1e5 m) over at most 2880 epochs; long double round-off on that is
// below 1e-11 m, so a nanometre leaves room for a different summation
// order and still catches any wrong or missing term (centimetres and up).
constexpr long double MeanTol_m = 1e-9L;

// The stage writes its arc file into the working directory under a name
// drawn from the clock; test processes running side by side would share
// the repository root and the second, so each works in its own folder.
struct InTempDir {
    std::filesystem::path old = std::filesystem::current_path();
    InTempDir() { std::filesystem::current_path(orvotest::TempDir()); }
    ~InTempDir() { std::filesystem::current_path(old); }
};

TEST(ArcParameters, GapAndMinimumFollowTheSamplingInterval)
{
    // T + 0.5 against the limits 2, 3, 4, 10, 20 s; a limit itself belongs
    // to the next row. Sums of binary fractions are exact: 1e-15 s.
    const struct {
        long double T, gap;
        long minObs;
    } rows[] = {{30.0L, 150.5L, 15}, {1.0L, 5.5L, 120}, {5.0L, 25.5L, 30},  {1.4L, 7.5L, 120}, {1.5L, 8.0L, 60},
                {2.4L, 12.5L, 60},   {2.5L, 13.0L, 40}, {3.4L, 17.5L, 40},  {3.5L, 18.0L, 30}, {9.4L, 47.5L, 30},
                {9.5L, 48.0L, 25},   {19.4L, 97.5L, 25}, {19.5L, 98.0L, 15}, {0.1L, 1.0L, 120}};
    for (const auto& r : rows) {
        long double gap = 0.0L;
        long minObs = 0;
        ArcParameters(r.T, gap, minObs);
        EXPECT_NEAR_LD(gap, r.gap, 1e-15L) << r.T;
        EXPECT_EQ(minObs, r.minObs) << r.T;
    }
}

TEST(AmbiguityLookup, FindsTheFirstArcEnclosingTheEpochEndsIncluded)
{
    // Arcs (first epoch, last epoch, satellite): 10-20 G05, 0-50 G07, 21-40 G05, 15-30 G05.
    matrix<long> AI(4, 4, 0L);
    matrix<short> AP(4, 1, static_cast<short>(5));
    std::tie(AI(0, 0), AI(0, 2), AI(1, 0), AI(1, 2), AI(2, 0), AI(2, 2), AI(3, 0), AI(3, 2), AP(1)) =
        std::make_tuple(10, 20, 0, 50, 21, 40, 15, 30, 7);
    const long qs[][4] = {{5, 10, 4, 0},  {5, 20, 4, 0},  {5, 21, 4, 2}, {5, 9, 4, -1},  {5, 41, 4, -1},
                          {7, 0, 4, 1},   {7, 50, 4, 1},  {7, 51, 4, -1}, {8, 15, 4, -1}, {5, 21, 2, -1},
                          {5, 25, 3, 2},  {5, 25, 99, 2}, {5, 10, 0, -1}, {205, 10, 4, -1}};  // prn, epoch, namb, want
    for (const auto& q : qs)
        EXPECT_EQ(AmbiguityLookup(AI, AP, q[2]).Find(static_cast<short>(q[0]), q[1]), q[3]) << q[0] << " " << q[1] << " " << q[2];
}

TEST(SatelliteRecords, EachSatellitesRecordsInTimeOrder)
{
    // Epochs of G05 G07, R03 G05, (none), G07 R03 G05: each list holds its
    // satellite's (epoch, record) pairs in file order; one not in the store
    // has none.
    RINEXHeader h;
    RINEXData d(h);
    const short sats[] = {5, 7, 103, 5, 7, 103, 5};
    const long nsat[] = {2, 2, 0, 3};
    d.nsat.Resize(4, 1, 0L);
    d.sat.Resize(7, 1, static_cast<short>(0));
    for (long i = 0; i < 4; ++i) d.nsat(i) = nsat[i];
    for (long k = 0; k < 7; ++k) d.sat(k) = sats[k];
    d.nepochall = 4;
    d.nsatall = 7;
    const SatelliteRecords bySat = RecordsBySatellite(d);
    const std::map<short, std::vector<std::pair<long, long>>> want = {
        {5, {{0, 0}, {1, 3}, {3, 6}}}, {7, {{0, 1}, {3, 4}}}, {103, {{1, 2}, {3, 5}}}};
    std::map<short, std::vector<std::pair<long, long>>> got;
    for (const auto& [sat, recs] : bySat)
        for (const SatRecord& r : recs) got[sat].push_back({r.epoch, r.k});
    EXPECT_EQ(got, want);
    EXPECT_EQ(bySat[103].size(), 2u);
    EXPECT_TRUE(bySat[8].empty());
}

// The real day with combinations formed and the per-record arrays that the
// stage reads: every satellite usable and high, unless a test says other.
struct RealDay {
    Context c;
    RINEXData& d = c.rnxd;
    matrix<gnssobs> L1, L3;
    std::string out;

    explicit RealDay(bool pp3)
    {
        c.gc.rnx.SetFile(Obs());
        c.gc.rnx.ReadFile();
        c.gc.ifL3 = c.gc.isGPS = c.gc.isGAL = true;
        c.gc.ifPp3 = pp3;
        d.SetLC_PP3();
        d.SetLC_L3();
        d.SetLC_L4();
        d.SetLC_MW(false);
        c.gc.ELV.Resize(d.nsatall, 1, 1.0L);
        c.gc.OKSAT.Resize(d.nsatall, 1, true);
    }
    // Runs the stage and checks the arc table against the observations as
    // they came: block starts, order, counts and the mean of L3 - code.
    void RunAndCheck(const matrix<gnssobs>& solutionCode)
    {
        const matrix<gnssobs> code = solutionCode;
        L1 = d.L1, L3 = d.L3;
        {
            InTempDir here;
            Capture cap(std::cout);
            SetAmbiguities(c.gc);
            out = cap.Text();
        }
        const gCPosC& gc = c.gc;
        ASSERT_GT(gc.nAmb, 50);
        ASSERT_EQ(gc.xAmb.NRow() + gc.AmbIndex.NRow() + gc.AmbSat.NRow(), 3 * gc.nAmb);
        ASSERT_EQ(gc.AmbIndex.NCol(), 4);
        std::vector<long> start(d.nepochall + 1, 0);
        for (long i = 0; i < d.nepochall; ++i) start[i + 1] = start[i] + d.nsat(i);
        for (long a = 0; a < gc.nAmb; ++a) {
            const short sat = gc.AmbSat(a);
            const long i0 = gc.AmbIndex(a, 0), i1 = gc.AmbIndex(a, 2);
            EXPECT_EQ(gc.AmbIndex(a, 1), start[i0]) << a;
            ASSERT_LE(i0, i1);
            // satList order (by satellite number), then time without overlap.
            EXPECT_TRUE(a == 0 || gc.AmbSat(a - 1) < sat || (gc.AmbSat(a - 1) == sat && i0 > gc.AmbIndex(a - 1, 2))) << a;
            long double sum = 0.0L;
            long n = 0;
            for (long k = start[i0]; k < start[i1 + 1]; ++k)
                if (d.sat(k) == sat && gc.OKSAT(k) && !L3(k).IsNull() && !code(k).IsNull()) {
                    sum += L3(k).obs - code(k).obs;
                    ++n;
                }
            ASSERT_GT(n, 0) << a;
            EXPECT_EQ(gc.AmbIndex(a, 3), n) << a;
            EXPECT_NEAR_LD(gc.xAmb(a), sum / n, MeanTol_m) << a;
        }
    }
    bool InArc(short sat, long i) const
    {
        for (long a = 0; a < c.gc.nAmb; ++a)
            if (c.gc.AmbSat(a) == sat && c.gc.AmbIndex(a, 0) <= i && i <= c.gc.AmbIndex(a, 2)) return true;
        return false;
    }
};

}  // namespace

TEST(SetAmbiguities, RealDayMeansOfL3MinusP3AndPhaseOutsideArcsCleared)
{
    RealDay r(true);
    RINEXData& d = r.d;
    // A satellite without any usable code: its arcs have no a-priori value
    // and go, and all its phase with them.
    const short noCode = 7;
    for (long k = 0; k < d.nsatall; ++k)
        if (d.sat(k) == noCode) d.PP3(k) = gnssobs();
    r.RunAndCheck(d.PP3);
    EXPECT_EQ(r.c.gc.MinObsAmb, 15);
    EXPECT_NEAR_LD(r.c.gc.MaxAmbTimeGap, 150.5L, 1e-15L);  // exact in binary
    // The temporary file was named from the marker and is gone again.
    EXPECT_TRUE(std::regex_match(d.AmbFile, std::regex("Ambiq_ESBC00DNK_[0-9]+\\.b"))) << d.AmbFile;
    for (const auto& e : std::filesystem::directory_iterator(orvotest::TempDir()))
        EXPECT_NE(e.path().filename().string().rfind("Ambiq_", 0), 0u);

    long removed = 0, keptGPS = 0, removedGPS = 0, k = 0;
    for (long i = 0; i < d.nepochall; ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            const short s = d.sat(k);
            // GLONASS is switched off and records inside an arc are copied
            // untouched: zero tolerance.
            if (IsGlonass(s) || r.InArc(s, i)) {
                EXPECT_NEAR_LD(d.L1(k).obs, r.L1(k).obs, 0.0L) << k;
                EXPECT_NE(s, noCode);
                keptGPS += !IsGlonass(s) && s < 100 && !r.L1(k).IsNull();
                continue;
            }
            removed += !r.L1(k).IsNull();
            removedGPS += s < 100 && s != noCode && !r.L1(k).IsNull();
            for (const matrix<gnssobs>* m : {&d.L1, s >= 201 ? &d.L7 : &d.L2, &d.L3, &d.L4, &d.MW})
                EXPECT_TRUE((*m)(k).IsNull()) << k;
        }
    // With every record high and usable, GPS phase outside arcs is only the
    // odd fragment shorter than 15 epochs at a geodetic station: under 5 %.
    // (Galileo has no P1 here, so no P3 from P1 and no arc: all of it goes.)
    EXPECT_GT(keptGPS, 20 * removedGPS);
    for (const std::string& line : {std::string("DETERMINING PHASE AMBIGUITIES:"), std::string("A-PRIORI VALUES OF AMBIGUITIES:"),
                                    "  Testing all ambiguities - # of OK   : " + std::to_string(r.c.gc.nAmb),
                                    "  Removing unusable phase observations: " + std::to_string(removed)})
        EXPECT_NE(r.out.find(line), std::string::npos) << line;
}

TEST(SetAmbiguities, ConstantScreenOnC1KeepsLowPhaseInsideAnArc)
{
    // A record of G05 at epoch 1100 (inside a clean arc, 969 to 1370) sinks
    // below the cut-off: the constant screen steps over it, so the arc
    // spans it and its phase stays, by span and not by elevation.
    RealDay r(false);
    r.c.gc.isL4ScreenConst = true;
    long low = -1;
    for (long k : Records(r.d, 1100))
        if (r.d.sat(k) == 5) low = k;
    ASSERT_GE(low, 0);
    r.c.gc.ELV(low) = 0.01L;
    r.RunAndCheck(r.d.C1);
    EXPECT_TRUE(r.InArc(5, 1100));
    EXPECT_NEAR_LD(r.d.L1(low).obs, r.L1(low).obs, 0.0L);
    EXPECT_FALSE(r.d.L1(low).IsNull());
}

TEST(SetAmbiguities, NothingHappensWithoutPhase)
{
    Context c;
    c.gc.ifL3 = false;
    c.gc.nAmb = 0;
    Capture cap(std::cout);
    SetAmbiguities(c.gc);
    EXPECT_EQ(cap.Text(), "");
    EXPECT_EQ(c.gc.nAmb + c.gc.MinObsAmb, 120);  // nothing set, defaults not replaced
}

TEST(SetAmbiguitiesDeath, UnknownIntervalOrMissingCorrectionsStop)
{
    RealDay r(false);
    r.c.gc.rnxh.SetInterval(-1.0f);
    EXPECT_EXIT(SetAmbiguities(r.c.gc), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> AMBIGUITIES: SAMPLING INTERVAL OF THE RINEX FILE NOT DETERMINED! \\*\\*\\*\\*");
    r.c.gc.rnxh.SetInterval(30.0f);
    r.c.gc.OKSAT.Resize(10, 1, true);
    EXPECT_EXIT(SetAmbiguities(r.c.gc), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> AMBIGUITIES: OBSERVATION CORRECTIONS NOT SET FOR ALL OBSERVATIONS!");
}
