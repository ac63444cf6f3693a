// The last stages on the arcs: the midnight split on a small made-up store,
// the MW and L3 - P3 screening against an independent weighted mean with
// injected blunders, and both screenings on the real ESBC day.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>

#include "TestSupport.h"
#include "driver/CheckArguments.h"
#include "driver/ParseArguments.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"
#include "numerics/MathConstants.h"
#include "observations/CheckRNXEpochs.h"
#include "observations/GALILEOc.h"
#include "observations/GPSc.h"
#include "observations/RINEX.h"
#include "preprocessing/ApplyCorrections.h"
#include "preprocessing/GetReceiverProperties.h"
#include "preprocessing/L3Filter.h"
#include "preprocessing/MWAmbiguities.h"
#include "preprocessing/ProcClock.h"
#include "preprocessing/SetAmbiguities.h"
#include "preprocessing/SetLinearCombinations.h"
#include "preprocessing/SetRNXCheckType.h"
#include "preprocessing/SplitMidnightAmbs.h"

namespace {

// Printed with 4 decimals (cycles, m) or 2 (cm): half the last digit and slack.
constexpr long double Printed4_tol = 0.6e-4L, Printed2_tol = 0.006L;
// Stored mean against the test's own: sums of 60 values of metres, taken
// from codes of 2e7 m where long double steps by 2e-12 m.
constexpr long double Mean_tol_m = 1e-9L;
// Clean real data: a 4-sigma screen of normal noise rejects 0.006 %; over
// 1 % would mean it cuts good data.
constexpr long double MaxOutlierShare_pct = 1.0L;

struct Ctx { RINEXHeader rnxh; RINEXData rnxd{rnxh}; RINEX rnx{rnxh, rnxd}; gCPosC gc{rnxh, rnxd, rnx}; };

// nEp epochs 30 s apart from second s0 of MJD 59025 (on into the next day),
// each with the satellites `sats`, every observation 10, elevation 60°, OK;
// then the arc table from rows {sat, first epoch, last epoch, count, xAmb}.
using Arcs = std::vector<std::array<long double, 5>>;
void MakeStore(Ctx& c, long nEp, long double s0, const std::vector<short>& sats, const Arcs& arcs) {
    RINEXData& d = c.rnxd; gCPosC& g = c.gc; RINEXHeader& h = c.rnxh;
    const long ns = static_cast<long>(sats.size()), n = nEp * ns;
    d.SetNRecords(nEp, n), d.epoch.Resize(nEp, 1), d.nsat.Resize(nEp, 1, static_cast<short>(ns)), d.sat.Resize(n, 1);
    for (long i = 0; i < nEp; ++i) {
        const long double s = s0 + 30.0L * i;
        d.epoch(i) = mjd(59025 + static_cast<unsigned long>(s / 86400.0L), std::fmod(s, 86400.0L));
        for (long j = 0; j < ns; ++j) d.sat(i * ns + j) = sats[j]; }
    for (matrix<gnssobs>* m : {&d.L1, &d.L2, &d.L7, &d.L3, &d.L4, &d.MW, &d.PC3, &d.PP3}) m->Resize(n, 1, gnssobs(10.0L));
    h.iL1 = h.iL2 = h.iL7 = h.iL3 = h.iL4 = h.iMW = h.iPC3 = h.iPP3 = g.ifL3 = g.ifPp3 = true;
    g.ELV.Resize(n, 1, 60.0L * Deg2Rad), g.OKSAT.Resize(n, 1, true), g.nAmb = static_cast<long>(arcs.size());
    g.xAmb.Resize(g.nAmb, 1), g.AmbIndex.Resize(g.nAmb, 4), g.AmbSat.Resize(g.nAmb, 1);
    for (long a = 0; a < g.nAmb; ++a) {
        const long double col[4] = {arcs[a][1], arcs[a][1] * ns, arcs[a][2], arcs[a][3]};
        for (int j = 0; j < 4; ++j) g.AmbIndex(a, j) = static_cast<long>(col[j]);
        g.AmbSat(a) = static_cast<short>(arcs[a][0]), g.xAmb(a) = arcs[a][4]; } }

std::string RunStage(Ctx& c, void (*stage)(gCPosC&)) { orvotest::Capture cap(std::cout); stage(c.gc); return cap.Text(); }

// The `count` numbers printed after the first `label` behind `from`; NaN
// where there are none.
std::vector<long double> After(const std::string& out, const std::string& label, int count = 1, std::size_t from = 0) {
    std::vector<long double> v(count, std::nanl(""));
    const std::size_t at = out.find(label, from);
    std::istringstream in(at == std::string::npos ? "" : out.substr(at + label.size(), 200));
    for (long double& x : v) in >> x;
    return v; }

// Textbook weighted mean, without the program's shift to the first value:
// x = Σpl/Σp, v0 = Σp(l-x)²/(n-1), residuals standardised by
// sqrt(v0·(1/p - 1/Σp)) against 4; then mean and deviation of the rest.
struct Truth { std::set<long> out; long double x = 0, sdx = 0, svv = 0, sp = 0; long n = 0; };
Truth Independent(const std::vector<long double>& l, const std::vector<long double>& p) {
    Truth t;
    auto fit = [&]() {
        long double spl = 0; t.sp = t.svv = t.n = 0;
        for (std::size_t i = 0; i < l.size(); ++i) if (!t.out.count(i)) spl += p[i] * l[i], t.sp += p[i], ++t.n;
        t.x = spl / t.sp;
        for (std::size_t i = 0; i < l.size(); ++i) if (!t.out.count(i)) t.svv += p[i] * (l[i] - t.x) * (l[i] - t.x); };
    fit();
    const Truth first = t;
    for (std::size_t i = 0; i < l.size(); ++i)
        if (std::fabs(first.x - l[i]) > 4 * std::sqrt(first.svv / (first.n - 1) * (1 / p[i] - 1 / first.sp))) t.out.insert(i);
    fit(), t.sdx = std::sqrt(t.svv / (t.n - 1) / t.sp);
    return t; }

}  // namespace

TEST(SplitMidnightAmbs, CrossingArcsSplitAtTheNewDayShortPartsVanish) {
    // Epoch 20 is 24:00:00.
    Ctx c; MakeStore(c, 40, 86400.0L - 600.0L, {5, 7, 13, 112, 209}, {{5, 0, 39, 40, 1.5L}, {7, 0, 19, 20, 2.5L},
              {7, 21, 39, 19, 3.5L}, {13, 0, 20, 21, 4.5L}, {112, 10, 24, 15, 5.5L}, {209, 3, 24, 22, 6.5L}});
    gCPosC& g = c.gc; g.splitMidnightAmbs = true, g.MinObsAmb = 15;
    const std::string out = RunStage(c, SplitMidnightAmbs); ASSERT_EQ(g.nAmb, 6) << out;
    // G05 in two, G13 loses its one epoch after midnight, R12 both short
    // parts, E09 its part after; the block of epoch e starts at record 5e.
    const Arcs want = {{5, 0, 19, 20, 1.5L}, {5, 20, 39, 20, 1.5L}, {7, 0, 19, 20, 2.5L},
                       {7, 21, 39, 19, 3.5L}, {13, 0, 19, 20, 4.5L}, {209, 3, 19, 17, 6.5L}};
    for (long a = 0; a < 6; ++a) {
        const long double got[] = {static_cast<long double>(g.AmbSat(a)), g.AmbIndex(a, 0) * 1.0L,
                                   g.AmbIndex(a, 2) * 1.0L, g.AmbIndex(a, 3) * 1.0L, g.xAmb(a)};
        for (int j = 0; j < 5; ++j) EXPECT_EQ(got[j], want[a][j]) << a << " " << j;
        EXPECT_EQ(g.AmbIndex(a, 1), 5 * g.AmbIndex(a, 0)); }
    for (const auto& q : {std::array<long, 3>{5, 19, 0}, {5, 20, 1}, {13, 20, -1}, {112, 15, -1}, {209, 20, -1}}) {
        EXPECT_EQ(AmbiguityLookup(g.AmbIndex, g.AmbSat, g.nAmb).Find(static_cast<short>(q[0]), q[1]), q[2]) << q[0] << " " << q[1]; }
    EXPECT_EQ(out.find("SPLITTING MIDNIGHT AMBIGUITIES - PRECISE CLKS MISSALIGMENT:\n=="), 0u);
    EXPECT_NE(out.find("  # of splitted ambiguities    : 4\n  # of additional ambiguities  : 1\n"
                       "  # of removed ambiguities     : 1\n"), std::string::npos) << out; }

TEST(SplitMidnightAmbs, OneDayFileOrSwitchOffChangesAndPrintsNothing) {
    for (const auto& k : {std::pair<long double, bool>{0.0L, true}, {86400.0L - 600.0L, false}}) {
        Ctx c; MakeStore(c, 40, k.first, {5}, {{5, 0, 39, 40, 1.5L}});
        c.gc.splitMidnightAmbs = k.second;
        EXPECT_EQ(RunStage(c, SplitMidnightAmbs), "") << k.first;
        EXPECT_EQ(c.gc.nAmb * 100 + c.gc.AmbIndex(0, 2), 139); } }

TEST(ArcScreening, MWAndL3MatchAnIndependentMeanAndClearTheirShareOfABlunder) {
    // unit_m: of the printed value, wide lane or metre; cleared: how many of L1, L2/L7, L4, PC3, L3 go.
    struct Case { void (*stage)(gCPosC&); short sat; long double unit_m; int cleared; } cases[] = {
        {MWAmbiguities, 5, GPSc::lamWL, 5}, {MWAmbiguities, 211, GALILEOc::lamWL, 5}, {L3Filter, 5, 1.0L, 1}};
    for (const Case& k : cases) {
        Ctx c; MakeStore(c, 60, 0.0L, {k.sat}, {{k.sat * 1.0L, 0, 59, 60, 0}});
        RINEXData& d = c.rnxd; const bool mw = k.stage == MWAmbiguities; std::vector<long double> l, p;
        for (long i = 0; i < 60; ++i) {  // elevations 5° to 85°, 10 m blunder at 30
            const long double e = (5.0L + 80.0L * std::sin(Pi * i / 59.0L)) * Deg2Rad;
            const long double v = 0.3L * std::sin(1.7L * i) / (mw ? 1 : std::sin(e)) + (i == 30) * 10;
            // OKSAT: only L3 asks.
            c.gc.ELV(i) = e, c.gc.OKSAT(i) = i != 7, d.PP3(i) = 2.0e7L + 100.0L * i;
            (mw ? d.MW(i) : d.L3(i)) = (mw ? 12.345L : d.PP3(i).obs + 4.5L) + v;
            if (e <= 10.0L * Deg2Rad || (!mw && i == 7)) continue;  // below MinElevation
            l.push_back(mw ? d.MW(i).obs : d.L3(i).obs - d.PP3(i).obs);
            p.push_back(!mw ? std::sin(e) * std::sin(e) : e >= Pi / 6 ? 1.0L : 2.0L * std::sin(e)); }
        const std::string out = RunStage(c, k.stage); const Truth t = Independent(l, p);
        ASSERT_EQ(t.out.size(), 1u) << "the blunder alone stands out";
        const std::vector<long double> r = After(out, k.sat > 200 ? "1   E11" : "1   G05", 6);
        EXPECT_EQ(r[2], t.n); EXPECT_NEAR(r[3], t.x / k.unit_m, Printed4_tol) << k.sat;
        EXPECT_NEAR(r[4], t.sdx / k.unit_m, Printed4_tol);
        EXPECT_NEAR(c.gc.xAmb(0), mw ? 0 : t.x, Mean_tol_m);  // MW stores nothing
        const gnssobs got[] = {d.L1(30), k.sat > 200 ? d.L7(30) : d.L2(30), d.L4(30), d.PC3(30), d.L3(30), d.MW(30), d.L3(29)};
        int nNull = 0; for (const gnssobs& o : got) nNull += o.IsNull();
        EXPECT_EQ(nNull, k.cleared) << k.sat;
        EXPECT_TRUE(got[4].IsNull() && !got[5].IsNull() && !got[6].IsNull());
        const long double cm = After(out, mw ? "precision of MW obs   : " : "L3-P3 obs: ")[0];
        EXPECT_NEAR(cm, std::sqrt(t.svv / (t.n - (mw ? 1 : 0))) * 100.0L, Printed2_tol); } }

TEST(ArcScreening, ArcsWithFewerThanTwoObservationsStayFinite) {
    for (long n : {0L, 1L})  // usable observations; the rest lie below the cut-off
        for (void (*stage)(gCPosC&) : {MWAmbiguities, L3Filter}) {
            Ctx c; MakeStore(c, 20, 0.0L, {5}, {{5, 0, 19, 20, 7.25L}});
            for (long k = n; k < 20; ++k) c.gc.ELV(k) = 5.0L * Deg2Rad;
            const std::string out = RunStage(c, stage); EXPECT_EQ(c.gc.xAmb(0), 7.25L) << n;
            EXPECT_EQ(c.gc.AmbIndex(0, 3), stage == L3Filter ? n : 20);
            const char* row = n ? "    -.----         0     0.0%" : "-.----    -.----        --     -.-%";
            EXPECT_TRUE(out.find("nan") == out.npos && out.find(": -.-- cm") != out.npos && out.find(row) != out.npos)
                << out; } }

TEST(ArcScreening, RealDayBlundersOnP1AreFoundByTheirStage) {
    const std::string set = orvotest::Data("esbc-2020-177/");
    const std::string args[] = {"orvo", "-csGRE", "-r" + set + "esbc1770.20o", "-lPp3,L3", "-me5",
        "-ep" + set + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3", "-ec" + set + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK",
        "-gf" + set + "esbc1770.20o.glnfc"};
    std::vector<const char*> argv; for (const std::string& a : args) argv.push_back(a.c_str());
    Ctx c; gCPosC& g = c.gc; RINEXData& d = c.rnxd; const std::filesystem::path here = std::filesystem::current_path();
    std::filesystem::current_path(orvotest::TempDir());  // the arc file lands there
    // Three high epochs each of G05 with 5 m on P1 before the combinations,
    // and of G07 with the trace of 2 m (2·LCion1 on PP3) left after the MW
    // screening: MW has 14 cm noise here and would catch its 1.1 m share.
    std::vector<long> five, two; std::string out;
    {   orvotest::Capture cout(std::cout), cerr(std::cerr);
        ParseArguments(g, static_cast<int>(argv.size()), argv.data()), CheckArguments(g), SetFiles(g), ReadFiles(g);
        GetReceiverProperties(g), ApplyCorrections(g);
        long last[2] = {-99, -99};
        for (long i = 0, k = 0; i < d.GetNEpoch(); ++i)
            for (long j = 0; j < d.nsat(i); ++j, ++k) {
                const int s = d.sat(k) == 5 ? 0 : d.sat(k) == 7 ? 1 : -1;
                if (s < 0 || !(g.ELV(k) > 50.0L * Deg2Rad) || i - last[s] < 20 || d.P1(k).IsNull()
                    || (s ? two : five).size() == 3) continue;
                if (!s) d.P1(k) += 5.0L;
                (s ? two : five).push_back(k), last[s] = i; }
        SetLinearCombinations(g), SetRNXCheckType(g), CheckRNXEpochs(c.rnxh, d, g.isGPS, g.isGLN, g.isGAL, false);
        ProcClock(g), SetAmbiguities(g);
        const std::size_t from = cout.Text().size(); MWAmbiguities(g);
        for (long k : two) d.PP3(k) += 2.0L * GPSc::LCion1;
        L3Filter(g), out = cout.Text().substr(from);
    }
    std::filesystem::current_path(here); ASSERT_EQ(five.size() + two.size(), 6u);
    for (long k : five)
        EXPECT_TRUE(d.L1(k).IsNull() && d.L2(k).IsNull() && d.L3(k).IsNull() && d.L4(k).IsNull() && !d.MW(k).IsNull()) << k;
    for (long k : two) EXPECT_TRUE(d.L3(k).IsNull() && !d.L1(k).IsNull() && !d.L2(k).IsNull() && !d.L4(k).IsNull()) << k;
    for (const char* what : {"MW outliers           : ", "L3-P3 outliers        : "})
        EXPECT_LT(After(out, "(", 1, out.find(what))[0], MaxOutlierShare_pct) << out;
}
