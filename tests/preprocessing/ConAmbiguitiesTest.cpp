// Cycle-slip repair and arc joining: the whole-cycle decision, the step fit,
// the joining rules on made-up arcs, and slips injected into a real day.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "TestSupport.h"
#include "driver/CheckArguments.h"
#include "driver/ParseArguments.h"
#include "driver/PrintArguments.h"
#include "driver/ReadFiles.h"
#include "driver/SetFiles.h"
#include "estimation/ProcStatic.h"
#include "estimation/SetUnknowns.h"
#include "observations/CheckRNXEpochs.h"
#include "observations/ExcludeProblemSat.h"
#include "observations/GLC.h"
#include "observations/LinearCombinations.h"
#include "preprocessing/ApplyCorrections.h"
#include "preprocessing/ConAmbiguities.h"
#include "preprocessing/GetReceiverProperties.h"
#include "preprocessing/ProcClock.h"
#include "preprocessing/SetAmbiguities.h"
#include "preprocessing/SetLinearCombinations.h"
#include "preprocessing/SetRNXCheckType.h"

namespace {

// Noise-free fits of metre-sized values: long double round-off is near
// 1e-15 m; 1e-9 m leaves room for the conditioning of the 4x4 inverse.
constexpr double StepTol_m = 1e-9;
// Repaired against untouched phase: the double read of a shifted text value
// differs by about 1e-8 cycles, 2e-9 m; 1e-6 leaves a wide margin for the
// cycles, the means of L3 - P3 (m) and the coordinates (m) alike.
constexpr double CycleTol = 1e-6, AmbTol_m = 1e-6, CoordTol_m = 1e-6;

double D(long double v) { return static_cast<double>(v); }

struct Context { RINEXHeader h; RINEXData d{h}; RINEX rnx{h, d}; gCPosC gc{h, d, rnx}; };
// Epochs first .. last, one record each; slip (cycles) at the start, summed.
struct Arc { short sat; long first, last; long double dL1, dL2; };

// GPS phase and code at 30 s epochs (gap_s more after epoch 19) from a
// smooth range and a quadratic ionosphere, the slips accumulated.
void MakeDay(Context& c, const std::vector<Arc>& arcs, long double gap_s) {
    gCPosC& gc = c.gc; RINEXData& d = c.d; const long n = arcs.back().last + 1;
    d.SetNRecords(n, n), d.epoch.Resize(n, 1), d.sat.Resize(n, 1), d.nsat.Resize(n, 1, short(1));
    for (matrix<gnssobs>* m : {&d.L1, &d.L2, &d.L3, &d.L4, &d.MW, &d.PC3}) m->Resize(n, 1);
    c.h.iL1 = c.h.iL2 = c.h.iL3 = c.h.iL4 = c.h.iMW = gc.ifL3 = gc.ifPc3 = true;
    gc.ELV.Resize(n, 1, 0.0L), gc.OKSAT.Resize(n, 1, true), gc.nAmb = static_cast<long>(arcs.size());
    gc.AmbIndex.Resize(gc.nAmb, 4, 0L), gc.AmbSat.Resize(gc.nAmb, 1), gc.xAmb.Resize(gc.nAmb, 1, 0.0L);
    const long double l1 = GPSc::lamb1, l2 = GPSc::lamb2, g = (l2 / l1) * (l2 / l1);
    long double N1 = 11.0L, N2 = -4.0L;
    for (long a = (GLC::LoadSystem(5), 0); a < gc.nAmb; ++a) {
        const Arc& r = arcs[a];
        N1 += r.dL1, N2 += r.dL2, gc.AmbSat(a) = r.sat;
        gc.AmbIndex(a, 0) = gc.AmbIndex(a, 1) = r.first, gc.AmbIndex(a, 2) = r.last;
        for (long k = r.first; k <= r.last; ++k) {
            const long double t = 30.0L * k + (k > 19 ? gap_s : 0.0L), rho = 2.1e7L + 310.0L * t;
            const long double I = 2.0L + 2e-4L * t + 3e-8L * t * t;
            // Elevations 11 to 40 degrees: both weights.
            d.epoch(k) = mjd(59025, t), d.sat(k) = r.sat, gc.ELV(k) = 0.2L + 1e-4L * t;
            d.L1(k) = (rho - I) / l1 + N1, d.L2(k) = (rho - g * I) / l2 + N2, d.PC3(k) = rho;
            d.L3(k) = GNSS_L3(d.L1(k), d.L2(k)), d.L4(k) = GNSS_L4(d.L1(k), d.L2(k));
            d.MW(k) = GNSS_MW(d.L1(k), d.L2(k), gnssobs(rho + I), gnssobs(rho + g * I));
        } } }

// Whole cycles added to L1 and L2 of one satellite over epochs from..to,
// or (blank) both phases removed there.
struct Edit { std::string sat; long from, to; long double dL1, dL2; bool blank; };

// The header and first nEpochs epochs of the real day with the edits made in
// the text: L1 is the third field of a record's first line, L2 of its second
// (22 types, 5 lines a record).
std::string EditedDay(const std::string& name, long nEpochs, const std::vector<Edit>& edits) {
    std::ifstream in(orvotest::Data("esbc-2020-177/esbc1770.20o")); std::string text, l;
    while (std::getline(in, l) && (text += l + "\n", l.find("END OF HEADER") == l.npos)) {}
    auto shift = [](std::string& r, long double dv, bool blank) {
        r.resize(80, ' ');
        const std::string f = r.substr(32, 14);
        // A missing value stays missing.
        if (f.find_first_not_of(' ') == f.npos) return;
        char v[40]; std::snprintf(v, sizeof v, "%14.3Lf", std::stold(f) + dv);
        r.replace(32, 14, blank ? std::string(14, ' ') : std::string(v)); };
    for (long e = 0; e < nEpochs && std::getline(in, l); ++e) {
        text += l + "\n"; std::vector<std::string> sats;
        for (int s = 0, n = std::stoi(l.substr(29, 3)); s < n; ++s) {
            if (s > 0 && s % 12 == 0 && std::getline(in, l)) text += l + "\n";
            sats.push_back(l.substr(32 + 3 * (s % 12), 3)); }
        for (const std::string& sat : sats) {
            std::string rec[5]; for (std::string& r : rec) std::getline(in, r);
            for (const Edit& x : edits) if (x.sat == sat && x.from <= e && e <= x.to) shift(rec[0], x.dL1, x.blank), shift(rec[1], x.dL2, x.blank);
            for (const std::string& r : rec) text += r + "\n";
        } }
    return orvotest::WriteTemp(name, text); }

// nCut: arcs as SetAmbiguities left them; L1, L2: as ConAmbiguities left them.
struct DayRun : Context { long nCut = 0; matrix<gnssobs> L1, L2; };

// The stages of a static run, in the program's order, with -lPp3,L3.
void RunDay(DayRun& r, const std::string& obs) {
    const std::string set = orvotest::Data("esbc-2020-177/");
    const std::string a[] = {"orvo", "-csGR", "-r" + obs, "-ep" + set + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3",
        "-ec" + set + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK", "-gf" + set + "esbc1770.20o.glnfc", "-lPp3,L3",
        "-tmSAAST,NIELL", "-ti02:00:00", "-tg", "-me5", "-xSTA", "-st"};
    std::vector<const char*> argv; for (const std::string& s : a) argv.push_back(s.c_str());
    // The arc file lands in the temporary directory.
    char cwd[4096]; ASSERT_TRUE(getcwd(cwd, sizeof cwd) && chdir(orvotest::TempDir().c_str()) == 0);
    orvotest::Capture out(std::cout), err(std::cerr); gCPosC& gc = r.gc;
    ParseArguments(gc, static_cast<int>(argv.size()), argv.data()), CheckArguments(gc), PrintArguments(gc);
    SetFiles(gc), ReadFiles(gc);
    ExcludeProblemSat(r.h, r.d, gc.GetSatCRX(), gc.GetIsSCRX(), false);
    GetReceiverProperties(gc), ApplyCorrections(gc), SetLinearCombinations(gc), SetRNXCheckType(gc);
    CheckRNXEpochs(r.h, r.d, gc.isGPS, gc.isGLN, gc.isGAL, false);
    ProcClock(gc), SetAmbiguities(gc), r.nCut = gc.nAmb, ConAmbiguities(gc);
    r.L1 = r.d.L1, r.L2 = r.d.L2, SetUnknowns(gc), ProcStatic(gc);
    ASSERT_EQ(chdir(cwd), 0); }

}  // namespace

TEST(GetL4CSlip, FindsTheStepOfAQuadraticAndRefusesSingularOrUnderdetermined) {
    // L4 of the made-up day is quadratic in time; the slip (3, 1) adds
    // 3·lamb1 - lamb2 behind it. No L4 after the gap leaves the step without
    // an observation (singular N); 4 or fewer leave no redundancy.
    const struct { long before, after; bool clearAfter, defined; } cases[] = {
        {30, 30, false, true}, {3, 12, false, true}, {2, 2, false, false}, {30, 30, true, false}};
    for (const auto& c : cases) {
        Context x; MakeDay(x, {{5, 0, c.before - 1, 0, 0}, {5, c.before, c.before + c.after - 1, 3, 1}}, 0);
        for (long k = c.before; c.clearAfter && k < x.d.nsatall; ++k) x.d.L4(k) = 0.0L;
        long double dL4 = -1, sdL4 = -1; orvotest::Capture err(std::cerr), out(std::cout);
        EXPECT_EQ(GetL4CSlip(x.gc, 1, dL4, sdL4), c.defined) << c.before << " " << c.after;
        EXPECT_EQ(err.Text().find("#### Orvo: Warning -> PROBLEMS INVERTING MATRIX N - "
                                  "SINGULARITY POSSIBILITY!!! ####") != std::string::npos, c.clearAfter);
        if (c.defined) { EXPECT_NEAR(D(dL4), D(3 * GPSc::lamb1 - GPSc::lamb2), StepTol_m); EXPECT_LT(D(sdL4), StepTol_m); }
    } }

TEST(ConAmbiguities, JoinsRepairedNeighboursOfOneSatelliteCloserThan300s) {
    const struct { const char* what; std::vector<Arc> arcs; long double gap_s; bool on; long nAmb; } cases[] = {
        {"chain", {{5, 0, 19, 0, 0}, {5, 20, 39, 3, 1}, {5, 40, 59, -2, 5}}, 0, true, 1},
        {"270 s gap", {{5, 0, 19, 0, 0}, {5, 20, 39, 3, 1}}, 240, true, 1},
        {"300 s gap", {{5, 0, 19, 0, 0}, {5, 20, 39, 3, 1}}, 270, true, 2},
        {"two satellites", {{5, 0, 19, 0, 0}, {7, 20, 39, 0, 0}}, 0, true, 2},
        {"half a cycle", {{5, 0, 19, 0, 0}, {5, 20, 39, 0.5L, 0}}, 0, true, 2},
        {"-ca", {{5, 0, 19, 0, 0}, {5, 20, 39, 3, 1}}, 0, false, 2}};
    for (const auto& c : cases) {
        Context x, clean; std::vector<Arc> none = c.arcs; for (Arc& a : none) a.dL1 = a.dL2 = 0;
        MakeDay(x, c.arcs, c.gap_s), MakeDay(clean, none, c.gap_s);
        x.gc.CorrAmbig = c.on;
        { orvotest::Capture out(std::cout); ConAmbiguities(x.gc); }
        const gCPosC& gc = x.gc; ASSERT_EQ(gc.nAmb, c.nAmb) << c.what; const bool joined = gc.nAmb == 1;
        for (long a = 0; c.on && a < gc.nAmb; ++a) {
            const long first = c.arcs[joined ? 0 : a].first, last = c.arcs[joined ? c.arcs.size() - 1 : a].last;
            EXPECT_TRUE(gc.AmbIndex(a, 0) == first && gc.AmbIndex(a, 1) == first && gc.AmbIndex(a, 2) == last
                        && gc.AmbIndex(a, 3) == last - first + 1) << c.what;
            // xAmb is the arc's L3 ambiguity: L3 - P3 of any of its epochs.
            EXPECT_NEAR(D(gc.xAmb(a)), D(x.d.L3(first).obs - x.d.PC3(first).obs), AmbTol_m) << c.what;
        }
        for (long k = 0; k < x.d.nsatall; ++k)  // joined: the clean phase again; apart: untouched
            EXPECT_NEAR(D(x.d.L1(k).obs - clean.d.L1(k).obs), joined ? 0.0 : D(k < 20 ? 0 : c.arcs[1].dL1), CycleTol)
                << c.what;
    } }

TEST(ConAmbiguitiesRealDay, InjectedSlipsAreRepairedByTheirCyclesAndJoined) {
    // Three hours of ESBC. In both files G13 loses its phase for 11 epochs
    // (a 360 s gap), and R02 jumps by 6.5 wide-lane cycles at epoch 300, which
    // no repair can fix: ScreenMW then splits R02 in both files, and as a split
    // arc always loses its last value, both lose the same one.
    const std::vector<Edit> both = {{"G13", 200, 210, 0, 0, true}, {"R02", 300, 9999, 26.5L, 20, false}};
    std::vector<Edit> slips = both;
    // G15: L4 0.33 m, MW 2 cycles; R02 (channel -4): L4 0.03 m only; G28: a chain of two;
    // G13 in the gap: stays.
    slips.insert(slips.end(), {{"G15", 120, 9999, 3, 1, false}, {"R02", 150, 299, 13, 10, false},
        {"G28", 100, 9999, 7, 2, false}, {"G28", 230, 9999, -3, -5, false}, {"G13", 205, 9999, 3, 1, false}});
    DayRun clean, slipped; RunDay(clean, EditedDay("clean.20o", 360, both)), RunDay(slipped, EditedDay("slipped.20o", 360, slips));
    const gCPosC &c = clean.gc, &s = slipped.gc; EXPECT_EQ(slipped.nCut, clean.nCut + 4);
    ASSERT_EQ(s.nAmb, c.nAmb); GLC::LoadSystem(13);
    for (long a = 0; a < c.nAmb; ++a) {
        for (int col = 0; col < 4; ++col) EXPECT_EQ(s.AmbIndex(a, col), c.AmbIndex(a, col)) << a;
        EXPECT_EQ(s.AmbSat(a), c.AmbSat(a)); const bool gap = c.AmbSat(a) == 13 && c.AmbIndex(a, 0) > 205;
        EXPECT_NEAR(D(s.xAmb(a) - c.xAmb(a)), gap ? D(GNSS_L3(3.0L, 1.0L)) : 0.0, AmbTol_m) << a;
    }
    for (long e = 0, k = 0; e < slipped.d.nepochall; ++e)
        for (long j = 0; j < slipped.d.nsat(e); ++j, ++k) {
            const double off = slipped.d.sat(k) == 13 && e > 210 ? 1 : 0;
            EXPECT_NEAR(D(slipped.L1(k).obs - clean.L1(k).obs), 3 * off, CycleTol) << k;
            EXPECT_NEAR(D(slipped.L2(k).obs - clean.L2(k).obs), off, CycleTol) << k;
        }
    for (long double dv : {s.RecPosEst.x - c.RecPosEst.x, s.RecPosEst.y - c.RecPosEst.y, s.RecPosEst.z - c.RecPosEst.z})
        EXPECT_NEAR(D(dv), 0.0, CoordTol_m);
}
