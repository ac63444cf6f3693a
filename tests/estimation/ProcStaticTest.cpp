// The static adjustment on noise-free observations of the ESBC station
// generated from the real orbits and clocks of its day, and on a short
// excerpt of its real code data against the full solution with explicit
// epoch clocks.
#include "estimation/ProcStatic.h"

#include <regex>

#include "EstimationSupport.h"
#include "estimation/SetUnknowns.h"

using namespace esttest;

namespace {

// Noise-free data and the same orbit interpolation on both sides: what
// remains is the light-time convergence (1e-5 m in the orbit class, below
// 1e-9 s in the generator) and the iteration threshold of 1e-4 m on the
// last correction; 1 mm covers both with margin, while any wrong model
// term (relativity sign, Earth rotation, clock sign) is metres.
constexpr long double TruthTol_m = 1e-3L;

std::vector<std::string> Solve(gCPosC& gc)
{
    Capture out(std::cout);
    SetUnknowns(gc);
    ProcStatic(gc);
    std::istringstream in(out.Text());
    std::vector<std::string> lines;
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    return lines;
}

long LineOf(const std::vector<std::string>& lines, const std::string& start)
{
    for (size_t i = 0; i < lines.size(); ++i)
        if (lines[i].rfind(start, 0) == 0) return static_cast<long>(i);
    return -1;
}

// Swaps the orbit file's clocks of the GPS codes generated for the clock
// file's, so that only the clock file route reproduces them.
void UseClockFileClocks(Context& ctx, const Truth& tr)
{
    gCPosC& gc = ctx.gc;
    RINEXData& d = ctx.rnxd;
    for (long k = 0, i = 0; i < d.nepochall; ++i) {
        mjd tTrue = d.epoch(i);
        tTrue += -tr.Clock(i) / C;
        gc.pclkM.SetEpochIndex(tTrue);
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            if (d.sat(k) > 200) continue;
            mjd te = tTrue;
            te += -Observe(gc, d.sat(k), tTrue, tr.station).rho / C;
            long double clk = 0.0L;
            gc.pclkM.GetSatelliteClock(d.sat(k), te, clk);
            ASSERT_TRUE(gc.pclkM.DTisOK);
            xyzt ps, vs;  // satClk = orbit clock + relativity; swap in the file's clock
            gc.pephM.CalcSatPosition(static_cast<unsigned short>(d.sat(k)), te, ps, vs);
            d.PC3(k) = d.PC3(k).obs + C * ps.dt - C * clk;
        }
    }
}

}  // namespace

TEST(ProcStatic, NoiseFreeCodeReturnsStationAndClocksAndRejectsABlunder)
{
    // A good a-priori position and clock, so that only the blunder of
    // 1000 m exceeds the bound of 50 m in the first iteration.
    Context ctx;
    Truth tr;
    Generate(ctx, false, 30, 600.0L, tr, false, xyz(0.3L, 0.2L, -0.4L));
    gCPosC& gc = ctx.gc;
    RINEXData& d = ctx.rnxd;
    gc.isMaxfDiff = true;
    gc.MaxfDiff = 50.0L;
    long bad = d.nsatall / 2;
    while (gc.ELV(bad) < 20.0L * Pi / 180.0L) ++bad;
    d.PC3(bad) = d.PC3(bad).obs + 1000.0L;
    for (long i = 0; i < d.nepochall; ++i) gc.dtAll(i) = tr.Clock(i);
    const std::vector<std::string> lines = Solve(gc);
    EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m);
    EXPECT_LT(Dist(gc.RecPosFC, tr.station), TruthTol_m);
    EXPECT_LT(Dist(gc.RecPosCorr, xyz(-0.3L, -0.2L, 0.4L)), TruthTol_m);
    for (long i = 0; i < 30; ++i) EXPECT_NEAR_LD(gc.dtAll(i), tr.Clock(i), TruthTol_m) << i;
    EXPECT_EQ(gc.NClk, 30);
    EXPECT_TRUE(gc.IterDone > 1 && gc.IterDone <= gc.MaxIter);
    EXPECT_TRUE(gc.ifXc3(bad) && !gc.ifOc3(bad));
    long above = 0;
    for (long k = 0; k < d.nsatall; ++k) above += gc.ELV(k) > gc.MinElevation * Pi / 180.0L;
    EXPECT_EQ(gc.NObs, above - 1);

    // The one outlier line: the misclosure (the blunder less the a-priori
    // offset of 0.54 m projected on the line of sight), then the modelled
    // troposphere (0 here) in free width; the solves numbered from 1.
    const long at = LineOf(lines, "    Outlier detection:  PRN");
    ASSERT_GE(at, 0);
    EXPECT_TRUE(Has(lines[at], " " + std::to_string(d.sat(bad)) + "   EPOCH: ")) << lines[at];
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const std::string& l) { return Has(l, "Outlier"); }), 1);
    const std::string rest = lines[at].substr(lines[at].find("f(PC3) = ") + 9);
    EXPECT_NEAR_LD(std::stold(rest.substr(0, 12)), -1000.0L, 0.6L);
    EXPECT_EQ(rest.substr(12), "  0.000 m");
    const std::regex iterLine("   Processing iteration                : [ 0-9]{5}[0-9] {7}[0-9]\\.[0-9]{2}e[-+][0-9]{2}");
    long nIter = 0;
    for (const std::string& l : lines)
        if (l.rfind("   Processing iteration", 0) == 0) {
            EXPECT_TRUE(std::regex_match(l, iterLine)) << l;
            EXPECT_EQ(std::stol(l.substr(41, 6)), ++nIter);
        }
    EXPECT_EQ(nIter, gc.IterDone);
    // Exact data: the a-posteriori deviation stays below a millimetre.
    EXPECT_LT(std::sqrt(gc.s0apost), 1e-3L);
    const long dev = LineOf(lines, "  Estimated reference standard deviations:");
    ASSERT_EQ(static_cast<long>(lines.size()), dev + 5);
    char buf[80];
    std::snprintf(buf, sizeof buf, "      A-posteriori Pc3: %15.1Lf mm", std::sqrt(gc.s0apost_Pc3) * 1000.0L);
    EXPECT_EQ(lines[dev + 2], buf);
}

TEST(ProcStatic, TroposphereSystemBiasAndAmbiguitiesAreRecovered)
{
    Context ctx;
    Truth tr;
    tr.zwd_m = 0.12L;
    tr.galBias_m = 5.0L;
    Generate(ctx, true, 25, 720.0L, tr);
    gCPosC& gc = ctx.gc;
    RINEXData& d = ctx.rnxd;
    gc.ifEstTropo = gc.ifL3 = true;
    gc.TropoInterval = 7200.0L;
    gc.isThresBlunder = true;  // the design rows are kept
    // One arc per satellite over its whole span, a-priori 0.3 m off the
    // generated 0.1 m * number.
    gc.nAmb = d.satList.NRow();
    gc.AmbIndex.Resize(gc.nAmb, 4, -1L);
    gc.AmbSat = d.satList;
    gc.xAmb.Resize(gc.nAmb, 1);
    for (long k = 0, i = 0; i < d.nepochall; ++i)
        for (long j = 0, start = k; j < d.nsat(i); ++j, ++k)
            for (long s = 0; s < gc.nAmb; ++s) {
                if (d.sat(k) != d.satList(s)) continue;
                if (gc.AmbIndex(s, 0) < 0) gc.AmbIndex(s, 0) = i, gc.AmbIndex(s, 1) = start, gc.AmbIndex(s, 3) = 0;
                gc.AmbIndex(s, 2) = i;
                ++gc.AmbIndex(s, 3);
                gc.xAmb(s) = 0.1L * d.satList(s) + 0.3L;
            }
    Solve(gc);
    EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m);
    EXPECT_NEAR_LD(gc.dtGNSS[2], tr.galBias_m, TruthTol_m);
    ASSERT_GE(gc.nTropoUnk, 3);
    for (long i = 0; i < gc.nTropoUnk; ++i) EXPECT_NEAR_LD(gc.xTropo(i), tr.zwd_m, TruthTol_m) << i;
    for (long a = 0; a < gc.nAmb; ++a)  // a satellite never above the cut-off has none
        EXPECT_NEAR_LD(gc.IsUnkOK(gc.ixAmb(a)) ? gc.xAmb(a) : 0.1L * gc.AmbSat(a), 0.1L * gc.AmbSat(a), TruthTol_m) << gc.AmbSat(a);
    long used = 0;  // the phase entered: L3 equations are counted besides P3
    for (long k = 0; k < d.nsatall; ++k) used += gc.ifOl3(k);
    EXPECT_GT(used, 0);

    // The stored rows with each equation's own column rebuild the reduced
    // normal matrix of the last iteration: summed here equation by
    // equation, the epoch clock (-1 in every row) reduced epoch by epoch,
    // apart from the adjustment's per-epoch blocks.
    const long n = gc.NUnk;
    const long double p0[2][3] = {{gc.p0Pc3G, gc.p0Pc3R, gc.p0Pc3E}, {gc.p0L3G, gc.p0L3R, gc.p0L3E}};
    std::vector<long double> N(static_cast<size_t>(n * n), 0.0L);
    for (long k = 0, i = 0; i < d.nepochall; ++i) {
        const TropoSlots tropo = EpochTropoSlots(gc, d.epoch(i));
        std::vector<long double> sum(static_cast<size_t>(n), 0.0L);
        long double sumP = 0.0L;
        for (long j = 0; j < d.nsat(i); ++j, ++k)
            for (int e = 0; e < 2; ++e) {
                if (!(e == 0 ? gc.ifOc3(k) : gc.ifOl3(k))) continue;
                const int sys = SystemOf(d.sat(k));
                long double b[ProcStaticns::NSlots];
                long col[ProcStaticns::NSlots];
                StoredDesignRow(gc, k, sys, tropo, b, col);
                for (long a = 0; e == 1 && a < gc.nAmb; ++a) if (gc.AmbSat(a) == d.sat(k)) col[5] = gc.ixAmb(a);
                const long double p = gc.WGHT(k) * p0[e][sys];
                sumP += p;
                for (int u = 0; u < ProcStaticns::NSlots; ++u) {
                    if (col[u] < 0) continue;
                    sum[static_cast<size_t>(col[u])] += p * b[u];
                    for (int v = 0; v < ProcStaticns::NSlots; ++v)
                        if (col[v] >= 0) N[static_cast<size_t>(col[u] * n + col[v])] += p * b[u] * b[v];
                }
            }
        for (long a = 0; a < n && sumP > 0.0L; ++a)
            for (long c = 0; c < n; ++c) N[static_cast<size_t>(a * n + c)] -= sum[static_cast<size_t>(a)] * sum[static_cast<size_t>(c)] / sumP;
    }
    long double largest = 0.0L;
    for (long a = 0; a < n; ++a) largest = std::max(largest, std::fabs(gc.NFin(a, a)));
    // The matrix may have been summed an iteration or two before the rows,
    // up to 10 m away: over 20 000 km that changes it by 5e-7 of its
    // entries; 1e-6 of the largest allows for it, round-off lies far
    // below, and a wrong node weight or column is of the entries' order.
    for (long a = 0; a < n; ++a)
        for (long c = 0; c < n; ++c)
            if (gc.IsUnkOK(a) && gc.IsUnkOK(c)) {
                EXPECT_NEAR_LD(N[static_cast<size_t>(a * n + c)], gc.NFin(a, c), 1e-6L * largest) << a << " " << c;
            }


    // The last iterations solved with the matrix of an earlier one (the
    // station has moved since). Their solution is still that of the full
    // system: one more iteration, which sums its own matrix, moves the
    // station by round-off. A step not solved afresh, or a stale right side,
    // would leave it off by that last step, a fraction of a millimetre.
    const xyz reached = gc.RecPosEst;
    gc.MaxIter = 1;
    {
        Capture out(std::cout);
        ProcStatic(gc);
    }
    EXPECT_LT(Dist(gc.RecPosEst, reached), 1e-9L);
}

TEST(ProcStatic, ClockFileOverrulesOrbitClockAndAConstellationBelowCutOffIsLeftOut)
{
    // The GPS data carry the clock file's values, so that only the clock
    // file route reproduces them. Galileo entirely below the cut-off: its
    // bias is undetermined, set to 0 and kept out; every arc rejected: the
    // solution falls back to code.
    Context ctx;
    Truth tr;
    Generate(ctx, true, 12, 900.0L, tr, true);
    gCPosC& gc = ctx.gc;
    RINEXData& d = ctx.rnxd;
    UseClockFileClocks(ctx, tr);
    for (long k = 0; k < d.nsatall; ++k)
        if (d.sat(k) > 200) gc.ELV(k) = 9.0L * Pi / 180.0L;
    gc.ifL3 = true;
    gc.nAmb = 0;
    Solve(gc);
    EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m);  // finite and right
    ASSERT_EQ(gc.ixDTsys[2], 3);
    EXPECT_EQ(gc.NUnk, 4);
    EXPECT_FALSE(gc.IsUnkOK(3));
    EXPECT_EQ(gc.NUnkUndef, 1);
    EXPECT_NEAR_LD(gc.dtGNSS[2], 0.0L, TruthTol_m);
    long used = 0;
    for (long k = 0; k < d.nsatall; ++k) used += gc.ifOl3(k);
    EXPECT_EQ(used, 0);
}

// The light-time solutions of the preprocessing, made without the receiver
// clock, start the adjustment: where the clock file gives the clocks they
// are moved over the 0.5 ms the receiver clock stands off and stay the
// preprocessing's; with the orbit file's clocks, which a move keeps, they
// are interpolated afresh for the receiver clock. The station lands within
// TruthTol either way.
TEST(ProcStatic, PreprocessingSolutionsAreMovedWhereTheClockFileGivesTheClock)
{
    for (bool clockFile : {true, false}) {
        Context ctx;
        Truth tr;
        tr.clk0_m = 1.5e5L;
        Generate(ctx, false, 12, 900.0L, tr, clockFile);
        gCPosC& gc = ctx.gc;
        RINEXData& d = ctx.rnxd;
        if (clockFile) UseClockFileClocks(ctx, tr);
        gc.savedSat.Resize(d.nsatall);
        for (long k = 0, i = 0; i < d.nepochall; ++i)
            for (long j = 0; j < d.nsat(i); ++j, ++k) {
                mjd t = d.epoch(i);
                xyzt p, v;
                gc.pephM.CalcSatPosition(static_cast<unsigned short>(d.sat(k)), t, gc.RecPosFC, p, v);
                gc.savedSat(k) = {gc.pephM.LastState(), 0.0L, gc.pephM.PSisOK, gc.pephM.DTisOK};
            }
        const matrix<gCPosC::SavedSatellite> preprocessing = gc.savedSat;
        gc.nAmb = 0;
        Solve(gc);
        EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m) << clockFile;
        // Either way the saved solution ends made for a clock metres from
        // the truth (the a-priori position is 8 m off): without the clock
        // file the shift exceeds the carry's bound, and the satellite is
        // interpolated afresh, the clock with it. With it, the preprocessing
        // solution is carried at every iteration and kept as carried, with
        // its orbit file clock: the light-time solution for the last
        // iteration's clock, which a fresh interpolation for that clock
        // matches to the carry's 1e-9 m, widened by the last step (below
        // 1e-4 m, over the flight).
        long used = 0;
        for (long k = 0, i = 0; i < d.nepochall; ++i)
            for (long j = 0; j < d.nsat(i); ++j, ++k) {
                if (!gc.ifOc3(k)) continue;
                ++used;
                const gCPosC::SavedSatellite& s = gc.savedSat(k);
                EXPECT_NEAR_LD(s.recClk, tr.Clock(i), 100.0L) << clockFile << " " << k;
                if (!clockFile) continue;
                mjd t = d.epoch(i);
                t += -s.recClk / C;
                xyzt p, v;
                gc.pephM.CalcSatPosition(static_cast<unsigned short>(d.sat(k)), t, gc.RecPosFC, p, v);
                const GNSSpEph::LightTimeState fresh = gc.pephM.LastState();
                EXPECT_NEAR_LD(s.state.tau, fresh.tau, 1e-12L) << k;
                EXPECT_LT(Dist(s.state.pos, fresh.pos), 1e-6L) << k;
                EXPECT_LT(Dist(s.state.vel, fresh.vel), 1e-6L) << k;
                EXPECT_EQ(s.state.pos.dt, preprocessing(k).state.pos.dt) << k;
            }
        EXPECT_GT(used, 12 * 4);
    }
}

TEST(ProcStaticDeath, RunWithoutLayoutStopsWithFramedError)
{
    Context ctx;
    EXPECT_EXIT(ProcStatic(ctx.gc), ::testing::ExitedWithCode(1), "\\*\\*\\*\\* Orvo: Error -> STATIC SOLUTION: UNKNOWNS ARE NOT SET!");
}

TEST(ProcStatic, RealExcerptMatchesSolutionWithExplicitClocks)
{
    // The first ten epochs of the real file: the record store is in file
    // order, so its prefix is exactly those epochs.
    Context ctx;
    RINEXData& d = ctx.rnxd;
    gCPosC& gc = ctx.gc;
    LoadProducts(gc, false);
    {
        Capture err(std::cerr);
        ctx.rnx.SetFile(orvotest::Data("esbc-2020-177/esbc1770.20o"));
        ctx.rnx.ReadFile();
    }
    ASSERT_TRUE(ctx.rnxh.iC1 && ctx.rnxh.iP2);
    const long nEp = 10;
    long nRec = 0;
    for (long i = 0; i < nEp; ++i) nRec += d.nsat(i);
    d.nepochall = d.NOKEph = nEp;
    d.nsatall = nRec;
    d.PC3.Resize(nRec, 1);
    SizeRecordArrays(gc, nRec);
    // Ionosphere-free code of GPS L1/L2 (1575.42, 1227.60 MHz), weighted by elevation.
    const long double f1 = 1575.42e6L, f2 = 1227.60e6L;
    for (long k = 0, i = 0; i < nEp; ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            if (d.sat(k) > 99 || d.C1(k).IsNull() || d.P2(k).IsNull()) continue;
            d.PC3(k) = (f1 * f1 * d.C1(k).obs - f2 * f2 * d.P2(k).obs) / (f1 * f1 - f2 * f2);
            const Signal s = Observe(gc, d.sat(k), d.epoch(i), TrueStation());
            gc.ELV(k) = s.elev;
            gc.WGHT(k) = std::sin(s.elev) * std::sin(s.elev);
        }
    ctx.rnxh.iPC3 = true;
    gc.p0Pc3G = 0.01L;
    gc.MaxIter = 1;
    gc.isThresBlunder = true;  // keeps the design rows
    gc.dtAll.Resize(nEp, 1, 0.0L);
    gc.RecPos0 = gc.RecPosFC = TrueStation() + xyz(1.0L, 1.0L, 1.0L);
    Solve(gc);
    ASSERT_EQ(gc.NUnk, 3);
    ASSERT_GT(gc.NObs, 3 * nEp);
    // Full system over dX, dY, dZ and one clock per epoch, from the stored
    // rows and misclosures.
    const size_t n = static_cast<size_t>(3 + nEp);
    std::vector<long double> A(n * n, 0.0L), b(n, 0.0L);
    for (long k = 0, i = 0; i < nEp; ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            if (!gc.ifOc3(k)) continue;
            std::vector<long double> row(n, 0.0L);
            const long xyzCol[3] = {gc.ixX, gc.ixY, gc.ixZ};
            for (int s = 0; s < 3; ++s) row[static_cast<size_t>(xyzCol[s])] = gc.mB(k, s);
            row[static_cast<size_t>(3 + i)] = -1.0L;
            AddRow(A, b, row, gc.WGHT(k) * gc.p0Pc3G, gc.fc3(k));
        }
    const std::vector<long double> full = DenseSolve(A, b);
    // Long double elimination of a 13-unknown system with metre-sized right
    // sides: round-off is of order 1e-15 m; 1e-9 m as asked of the reduction.
    constexpr long double ReductionTol_m = 1e-9L;
    for (size_t u = 0; u < n; ++u)
        EXPECT_NEAR_LD(u < 3 ? gc.xtemp(static_cast<long>(u)) : gc.dtAll(static_cast<long>(u) - 3), full[u], ReductionTol_m) << u;
    // The real code puts the station within metres of its reference.
    EXPECT_LT(Dist(gc.RecPosEst, TrueStation()), 10.0L);
}
