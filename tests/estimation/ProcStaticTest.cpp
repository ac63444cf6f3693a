// The static adjustment on noise-free observations of the ESBC station
// generated from the real orbits and clocks of its day, and on a short
// excerpt of its real code data against the full solution with explicit
// epoch clocks.
#include <gtest/gtest.h>

#include <cstdio>
#include <iomanip>
#include <regex>
#include <sstream>

#include "EstimationSupport.h"
#include "estimation/ProcStatic.h"
#include "estimation/SetUnknowns.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/NearLD.h"

using namespace esttest;

namespace {

// Noise-free data and the same orbit interpolation on both sides: what
// remains is the light-time convergence (1e-5 m in the orbit class, below
// 1e-9 s in the generator) and the iteration threshold of 1e-4 m on the
// last correction; 1 mm covers both with margin, while any wrong model
// term (relativity sign, Earth rotation, clock sign) is metres.
constexpr long double TruthTol_m = 1e-3L;

std::vector<short> GpsAndGalileo(bool gal)
{
    std::vector<short> s;
    for (short p = 1; p <= 32; ++p) s.push_back(p);
    if (gal)
        for (short p = 201; p <= 236; ++p) s.push_back(p);
    return s;
}

// One arc per satellite over its whole span, with a-priori value off by
// `off` m from the generated 0.1 m * number.
void OneArcPerSatellite(Context& ctx, long double off)
{
    gCPosC& gc = ctx.gc;
    RINEXData& d = ctx.rnxd;
    const long n = d.satList.NRow();
    gc.nAmb = n;
    gc.AmbIndex.Resize(n, 4, 0L);
    gc.AmbSat.Resize(n, 1);
    gc.xAmb.Resize(n, 1);
    for (long s = 0; s < n; ++s) {
        long first = -1, last = -1, firstRec = 0, count = 0, k = 0;
        for (long i = 0; i < d.nepochall; ++i) {
            const long blockStart = k;
            for (long j = 0; j < d.nsat(i); ++j, ++k)
                if (d.sat(k) == d.satList(s)) {
                    if (first < 0) {
                        first = i;
                        firstRec = blockStart;
                    }
                    last = i;
                    ++count;
                }
        }
        gc.AmbIndex(s, 0) = first;
        gc.AmbIndex(s, 1) = firstRec;
        gc.AmbIndex(s, 2) = last;
        gc.AmbIndex(s, 3) = count;
        gc.AmbSat(s) = d.satList(s);
        gc.xAmb(s) = 0.1L * d.satList(s) + off;
    }
    gc.ifL3 = true;
}

void SolveStatic(gCPosC& gc)
{
    Capture out(std::cout);
    SetUnknowns(gc);
    ProcStatic(gc);
}

const xyz kOffset(4.0L, -3.0L, 6.0L);

}  // namespace

TEST(ProcStatic, NoiseFreeCodeReturnsStationAndClocks)
{
    Context ctx;
    LoadProducts(ctx, false);
    Truth tr;
    Generate(ctx, GpsAndGalileo(false), 30, 600.0L, tr);
    gCPosC& gc = ctx.gc;
    gc.isGPS = true;
    SetApriori(gc, tr.station + kOffset);
    SolveStatic(gc);
    EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m);
    EXPECT_LT(Dist(gc.RecPosFC, tr.station), TruthTol_m);
    EXPECT_LT(Dist(gc.RecPosCorr, -1.0L * kOffset), TruthTol_m);
    for (long i = 0; i < 30; ++i)
        EXPECT_NEAR_LD(gc.dtAll(i), tr.clk0_m + tr.clkRate_m * i, TruthTol_m) << i;
    EXPECT_EQ(gc.NClk, 30);
    EXPECT_GT(gc.IterDone, 1);
    EXPECT_LE(gc.IterDone, gc.MaxIter);
    // Residuals of exact data: the a-posteriori deviation is below a mm.
    EXPECT_LT(std::sqrt(std::fabs(gc.s0apost)), 1e-3L);
    EXPECT_EQ(gc.NObs, gc.rnxd.nsatall - [&] {
        long below = 0;
        for (long k = 0; k < gc.rnxd.nsatall; ++k)
            if (!(gc.ELV(k) > gc.MinElevation * Pi / 180.0L)) ++below;
        return below;
    }());
}

TEST(ProcStatic, TroposphereSystemBiasAndAmbiguitiesAreRecovered)
{
    Context ctx;
    LoadProducts(ctx, false);
    Truth tr;
    tr.zwd_m = 0.12L;
    tr.galBias_m = 5.0L;
    Generate(ctx, GpsAndGalileo(true), 25, 720.0L, tr);
    gCPosC& gc = ctx.gc;
    gc.isGPS = gc.isGAL = true;
    gc.ifEstTropo = true;
    gc.TropoInterval = 7200.0L;
    OneArcPerSatellite(ctx, 0.3L);
    SetApriori(gc, tr.station + kOffset);
    SolveStatic(gc);
    EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m);
    EXPECT_NEAR_LD(gc.dtGNSS[2], tr.galBias_m, TruthTol_m);
    ASSERT_GE(gc.nTropoUnk, 3);
    for (long i = 0; i < gc.nTropoUnk; ++i) EXPECT_NEAR_LD(gc.xTropo(i), tr.zwd_m, TruthTol_m) << i;
    for (long a = 0; a < gc.nAmb; ++a) {
        if (!gc.IsUnkOK(gc.ixAmb(a))) continue;  // a satellite never above the cut-off
        EXPECT_NEAR_LD(gc.xAmb(a), 0.1L * gc.AmbSat(a), TruthTol_m) << gc.AmbSat(a);
    }
    // The phase entered: L3 equations are counted besides P3.
    long used = 0;
    for (long k = 0; k < gc.rnxd.nsatall; ++k) used += gc.ifOl3(k);
    EXPECT_GT(used, 0);
}

TEST(ProcStatic, PreciseClockFileOverrulesTheOrbitClock)
{
    Context ctx;
    LoadProducts(ctx, true);
    Truth tr;
    // Generate with the clock file's values, so that only the clock file
    // route reproduces the data.
    Generate(ctx, GpsAndGalileo(false), 12, 900.0L, tr);
    gCPosC& gc = ctx.gc;
    RINEXData& d = ctx.rnxd;
    long k = 0;
    for (long i = 0; i < d.nepochall; ++i) {
        mjd tTrue = d.epoch(i);
        tTrue += -(tr.clk0_m + tr.clkRate_m * i) / C;
        gc.pclkM.SetEpochIndex(tTrue);
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            short prn = d.sat(k);
            const Signal s = Observe(gc, prn, tTrue, tr.station);
            mjd te = tTrue;
            te += -s.rho / C;
            long double clk = 0.0L;
            gc.pclkM.GetSatelliteClock(prn, te, clk);
            ASSERT_TRUE(gc.pclkM.DTisOK);
            // satClk = orbit clock + relativity; swap in the file's clock.
            xyzt ps, vs;
            gc.pephM.CalcSatPosition(static_cast<unsigned short>(prn), te, ps, vs);
            const long double rel = s.satClk - ps.dt;
            d.PC3(k) = d.PC3(k).obs + C * s.satClk - C * (clk + rel);
        }
    }
    gc.isGPS = true;
    SetApriori(gc, tr.station + kOffset);
    SolveStatic(gc);
    EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m);
}

TEST(ProcStatic, ConstellationBelowCutOffLeavesItsBiasUndetermined)
{
    Context ctx;
    LoadProducts(ctx, false);
    Truth tr;
    Generate(ctx, GpsAndGalileo(true), 20, 600.0L, tr);
    gCPosC& gc = ctx.gc;
    for (long k = 0; k < ctx.rnxd.nsatall; ++k)
        if (ctx.rnxd.sat(k) > 200) gc.ELV(k) = 9.0L * Pi / 180.0L;
    gc.isGPS = gc.isGAL = true;
    SetApriori(gc, tr.station + kOffset);
    SolveStatic(gc);
    ASSERT_EQ(gc.ixDTsys[2], 3);
    EXPECT_FALSE(gc.IsUnkOK(3));
    EXPECT_EQ(gc.NUnkUndef, 1);
    EXPECT_TRUE(std::isfinite(gc.RecPosEst.x) && std::isfinite(gc.RecPosEst.y) &&
                std::isfinite(gc.RecPosEst.z));
    EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m);
    EXPECT_NEAR_LD(gc.dtGNSS[2], 0.0L, TruthTol_m);
}

TEST(ProcStatic, NoUsablePhaseFallsBackToCode)
{
    Context ctx;
    LoadProducts(ctx, false);
    Truth tr;
    Generate(ctx, GpsAndGalileo(false), 20, 600.0L, tr);
    gCPosC& gc = ctx.gc;
    gc.isGPS = true;
    gc.ifL3 = true;
    gc.nAmb = 0;  // every arc was rejected
    SetApriori(gc, tr.station + kOffset);
    SolveStatic(gc);
    EXPECT_EQ(gc.NUnk, 3);
    long used = 0;
    for (long k = 0; k < gc.rnxd.nsatall; ++k) used += gc.ifOl3(k);
    EXPECT_EQ(used, 0);
    EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m);
}

TEST(ProcStatic, BlunderBeyondMaxfDiffIsRejectedForGood)
{
    Context ctx;
    LoadProducts(ctx, false);
    Truth tr;
    Generate(ctx, GpsAndGalileo(false), 20, 600.0L, tr);
    gCPosC& gc = ctx.gc;
    gc.isGPS = true;
    gc.isMaxfDiff = true;
    gc.MaxfDiff = 50.0L;
    const long bad = ctx.rnxd.nsatall / 2;
    ctx.rnxd.PC3(bad) = ctx.rnxd.PC3(bad).obs + 1000.0L;
    // A good a-priori position and clock, so that only the blunder exceeds
    // the bound in the first iteration.
    SetApriori(gc, tr.station + xyz(0.3L, 0.2L, -0.4L));
    for (long i = 0; i < ctx.rnxd.nepochall; ++i) gc.dtAll(i) = tr.clk0_m + tr.clkRate_m * i;
    Capture out(std::cout);
    SetUnknowns(gc);
    ProcStatic(gc);
    EXPECT_TRUE(gc.ifXc3(bad));
    EXPECT_FALSE(gc.ifOc3(bad));
    EXPECT_LT(Dist(gc.RecPosEst, tr.station), TruthTol_m);

    // The one outlier line: number, epoch, label, misclosure 12.3, then the
    // modelled troposphere in free width (no code biases are estimated).
    long epochOfBad = 0;
    for (long k = 0, i = 0; i < ctx.rnxd.nepochall; ++i)
        for (long j = 0; j < ctx.rnxd.nsat(i); ++j, ++k)
            if (k == bad) epochOfBad = i;
    std::ostringstream head;
    head << "    Outlier detection:  PRN" << std::setw(4) << ctx.rnxd.sat(bad) << "   EPOCH: "
         << std::setw(5) << epochOfBad + 1 << " [" << mjd2ymdhms(ctx.rnxd.epoch(epochOfBad))
         << "]     f(PC3) = ";
    std::istringstream in(out.Text());
    std::vector<std::string> outliers;
    for (std::string l; std::getline(in, l);)
        if (l.find("Outlier detection") != std::string::npos) outliers.push_back(l);
    ASSERT_EQ(outliers.size(), 1u) << out.Text();
    const std::string& line = outliers[0];
    ASSERT_EQ(line.substr(0, head.str().size()), head.str());
    const std::string rest = line.substr(head.str().size());
    ASSERT_GE(rest.size(), 12u);
    // Computed minus observed: the 1000 m blunder, less the a-priori
    // offset of 0.54 m projected on the line of sight.
    EXPECT_NEAR_LD(std::stold(rest.substr(0, 12)), -1000.0L, 0.6L);
    EXPECT_EQ(rest.substr(12), "  0.000 m");  // TROP(bad) is 0 in the generated data
}

TEST(ProcStatic, ReportListsWeightsIterationsAndDeviations)
{
    Context ctx;
    LoadProducts(ctx, false);
    Truth tr;
    Generate(ctx, GpsAndGalileo(false), 10, 600.0L, tr);
    gCPosC& gc = ctx.gc;
    gc.isGPS = true;
    gc.sigC = 0.3L;
    gc.p0C = 0.027777L;
    gc.sigP = 0.2L;
    gc.p0P = 0.0625L;
    gc.p0Pc3G = 0.25L;  // sigma 0.1 against sig0 0.05
    gc.sigPc3G = 0.1L;
    SetApriori(gc, tr.station + kOffset);
    Capture out(std::cout);
    SetUnknowns(gc);
    ProcStatic(gc);
    std::vector<std::string> lines;
    {
        std::istringstream in(out.Text());
        for (std::string l; std::getline(in, l);) lines.push_back(l);
    }
    auto fmt = [](const char* f, long double a, long double b) {
        char buf[160];
        std::snprintf(buf, sizeof(buf), f, a, b);
        return std::string(buf);
    };
    auto fmt1 = [](const char* f, long double a) {
        char buf[160];
        std::snprintf(buf, sizeof(buf), f, a);
        return std::string(buf);
    };
    const auto head = std::find(lines.begin(), lines.end(), "  Standard deviatons and weights      :");
    ASSERT_NE(head, lines.end()) << out.Text();
    size_t at = static_cast<size_t>(head - lines.begin()) + 1;
    ASSERT_GE(lines.size(), at + 14);
    EXPECT_EQ(lines[at], fmt("      observation C/A             [m] :  S: %6.4Lf     W: %8.4Lf", 0.3L, 0.027777L));
    EXPECT_EQ(lines[at + 1], fmt("      observation P1/P2           [m] :  S: %6.4Lf     W: %8.4Lf", 0.2L, 0.0625L));
    EXPECT_EQ(lines[at + 2], fmt("      observation P3[C1,P2]-GPS   [m] :  S: %6.4Lf     W: %8.4Lf", 0.1L, 0.25L));
    EXPECT_EQ(lines[at + 3].substr(0, 39), "      observation P3[C1,P2]-GLN   [m] :");
    EXPECT_EQ(lines[at + 4].substr(0, 39), "      observation P3[C1,C7]-GAL   [m] :");
    EXPECT_EQ(lines[at + 5].substr(0, 39), "      observation P3[P1,P2]-GPS   [m] :");
    EXPECT_EQ(lines[at + 6].substr(0, 39), "      observation P3[P1,P2]-GLN   [m] :");
    EXPECT_EQ(lines[at + 7].substr(0, 39), "      observation P3[P1,C7]-GAL   [m] :");
    EXPECT_EQ(lines[at + 8].substr(0, 39), "      observation L3[L1,L2]-GPS   [m] :");
    EXPECT_EQ(lines[at + 9].substr(0, 39), "      observation L3[L1,L2]-GLN   [m] :");
    EXPECT_EQ(lines[at + 10], fmt("      observation L3[L1,L7]-GAL   [m] :  S: %6.4Lf     W: %8.4Lf", 0.0005L, 10000.0L));
    EXPECT_EQ(lines[at + 11], fmt1("      reference std. dev. apriori [m] : %6.4Lf", 0.05L));
    EXPECT_EQ(lines[at + 12], "");
    EXPECT_EQ(lines[at + 13], "  PROCESSING GNSS OBSERVATIONS:");

    // One line per solve, numbered from 1, the norm in 15 columns as d.dde+xx.
    const std::regex iterLine("   Processing iteration                : [ 0-9]{5}[0-9] {7}[0-9]\\.[0-9]{2}e[-+][0-9]{2}");
    long nIter = 0;
    for (const std::string& l : lines)
        if (l.rfind("   Processing iteration", 0) == 0) {
            ++nIter;
            EXPECT_TRUE(std::regex_match(l, iterLine)) << l;
            EXPECT_EQ(std::stol(l.substr(41, 6)), nIter);
        }
    EXPECT_EQ(nIter, gc.IterDone);

    // Closing: empty line, title, the global and the Pc3 deviation (the only
    // type on), two empty lines.
    const auto dev = std::find(lines.begin(), lines.end(), "  Estimated reference standard deviations:");
    ASSERT_NE(dev, lines.end());
    at = static_cast<size_t>(dev - lines.begin());
    ASSERT_EQ(lines.size(), at + 5) << out.Text();
    EXPECT_EQ(lines[at - 1], "");
    EXPECT_EQ(lines[at + 1], fmt1("  A-posteriori        : %15.1Lf mm", std::sqrt(gc.s0apost) * 1000.0L));
    EXPECT_EQ(lines[at + 2], fmt1("      A-posteriori Pc3: %15.1Lf mm", std::sqrt(gc.s0apost_Pc3) * 1000.0L));
    EXPECT_EQ(lines[at + 3], "");
    EXPECT_EQ(lines[at + 4], "");
    // Exact data: the deviations are far below the 0.05 m a-priori one.
    EXPECT_LT(std::sqrt(gc.s0apost), 1e-3L);
}

TEST(ProcStaticDeath, RunWithoutLayoutStopsWithFramedError)
{
    Context ctx;
    EXPECT_EXIT(ProcStatic(ctx.gc), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> STATIC SOLUTION: UNKNOWNS ARE NOT SET!");
}

// ---- A real excerpt: reduced solve against the full system ---------------

TEST(ProcStatic, RealExcerptMatchesSolutionWithExplicitClocks)
{
    Context ctx;
    LoadProducts(ctx, false);
    RINEXData& d = ctx.rnxd;
    RINEXHeader& h = ctx.rnxh;
    {
        Capture err(std::cerr);
        ctx.rnx.SetFile(Obs());
        ctx.rnx.ReadFile();
    }
    ASSERT_TRUE(h.iC1 && h.iP2);
    // The first ten epochs form the excerpt: the record store is in file
    // order, so its prefix is exactly those epochs.
    const long nEp = 10;
    long nRec = 0;
    for (long i = 0; i < nEp; ++i) nRec += d.nsat(i);
    d.nepochall = nEp;
    d.nsatall = nRec;
    d.NOKEph = nEp;
    gCPosC& gc = ctx.gc;
    // Ionosphere-free code of GPS L1/L2 (1575.42, 1227.60 MHz).
    const long double f1 = 1575.42e6L, f2 = 1227.60e6L;
    d.PC3.Resize(nRec, 1);
    gc.ELV.Resize(nRec, 1, 0.0L);
    gc.WGHT.Resize(nRec, 1, 0.0L);
    gc.MFGRAD.Resize(nRec, 2, 0.0L);
    gc.OKSAT.Resize(nRec, 1, true);
    for (matrix<long double>* m : {&gc.TROP, &gc.MFTROP, &gc.ION, &gc.SETIDE, &gc.PTIDE, &gc.OTIDE, &gc.REL2})
        m->Resize(nRec, 1, 0.0L);
    long k = 0;
    for (long i = 0; i < nEp; ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            if (d.sat(k) > 99 || d.C1(k).IsNull() || d.P2(k).IsNull()) continue;
            d.PC3(k) = (f1 * f1 * d.C1(k).obs - f2 * f2 * d.P2(k).obs) / (f1 * f1 - f2 * f2);
            const Signal s = Observe(gc, d.sat(k), d.epoch(i), TrueStation());
            if (!s.ok) continue;
            gc.ELV(k) = s.elev;
            gc.WGHT(k) = std::sin(s.elev) * std::sin(s.elev);
        }
    h.iPC3 = true;
    gc.isGPS = true;
    gc.ifPc3 = true;
    gc.p0Pc3G = 0.01L;
    gc.MaxIter = 1;
    gc.isThresBlunder = true;  // keeps the design rows
    gc.dtAll.Resize(nEp, 1, 0.0L);
    SetApriori(gc, TrueStation() + xyz(1.0L, 1.0L, 1.0L));
    SolveStatic(gc);
    ASSERT_EQ(gc.NUnk, 3);
    ASSERT_GT(gc.NObs, 3 * nEp);

    // Full system over dX, dY, dZ and one clock per epoch, from the stored
    // rows and misclosures.
    const size_t n = static_cast<size_t>(3 + nEp);
    std::vector<long double> A(n * n, 0.0L), b(n, 0.0L);
    k = 0;
    for (long i = 0; i < nEp; ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            if (!gc.ifOc3(k)) continue;
            std::vector<long double> row(n, 0.0L);
            for (int s = 0; s < 3; ++s) row[static_cast<size_t>(gc.mIB(k, s))] = gc.mB(k, s);
            row[static_cast<size_t>(3 + i)] = -1.0L;
            const long double p = gc.WGHT(k) * gc.p0Pc3G;
            for (size_t r = 0; r < n; ++r) {
                b[r] += row[r] * p * gc.fc3(k);
                for (size_t c = 0; c < n; ++c) A[r * n + c] += row[r] * p * row[c];
            }
        }
    const std::vector<long double> full = DenseSolve(A, b);
    // Long double elimination of a 13-unknown system with metre-sized right
    // sides: round-off is of order 1e-15 m; 1e-9 m as asked of the reduction.
    constexpr long double ReductionTol_m = 1e-9L;
    for (long u = 0; u < 3; ++u) EXPECT_NEAR_LD(gc.xtemp(u), full[static_cast<size_t>(u)], ReductionTol_m);
    for (long i = 0; i < nEp; ++i) EXPECT_NEAR_LD(gc.dtAll(i), full[static_cast<size_t>(3 + i)], ReductionTol_m);
    // The real code puts the station within metres of its reference.
    EXPECT_LT(Dist(gc.RecPosEst, TrueStation()), 10.0L);
}
