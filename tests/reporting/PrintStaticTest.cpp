// The static report: its counters, variances, coordinate, bias,
// troposphere and ambiguity tables, its files, and the guard that ends the
// run before any of them is opened; checked against lines built here from
// the report's formats, the physics of the local frame and the clock
// file's reader.
#include "reporting/PrintStatic.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>
#include <sstream>

#include "ReportSupport.h"
#include "orbits/ClkErr.h"
#include "reporting/PrintStaticCounters.h"

using namespace reporttest;
using PrintStaticReport = Report;
using WriteStaticFiles = Report;
using CheckStaticSolutionDeath = Report;

namespace {

// Four printed decimals: half a unit of the last digit, plus 1e-12 m for
// the test's own long double rotation, which rounds differently.
constexpr long double Dec4Tol = 0.5e-4L + 1e-12L;

// The number in columns pos .. pos + width of line.
long double Num(const std::string& line, size_t pos, size_t width) { return std::strtold(line.substr(pos, width).c_str(), nullptr); }

const std::string Title = "  GNSS SATELLITE/RECEIVER DIFFERENTIAL CODE BIASES:";

std::string Bias(long double v, long ix) { return F("%10.4Lf +-%7.4Lf", v, Prec(ix)); }
// The fixture's epochs: MJD 59025 is 2020-06-25 (day 177 of 2020).
const std::string Node0 = " 2020-06-25 00:00:00", Node1 = " 2020-06-25 02:00:00";

// The file behind its head line.
std::string PlotBody(const gCPosC& gc) { const std::string f = orvotest::ReadFile(gc.gnuplotStat); return f.substr(std::min(f.size(), f.find('\n') + 1)); }

// The data line of the fixture after its optional "#", with S0 and the
// global test as given.
std::string PlotData(const gCPosC& gc, const std::string& s0AndTest)
{
    const matrix<long double>& Q = gc.QxxAll;
    // The middle of 3600 s .. 3690 s is 3645 s.
    return F("%6d%8.1Lf", 59025, 3645.0L) + F("%10d%10d%8d%8d%8d", 4, 1000, 600, 300, 100)
           + F("%10d%8d%8d%8d", 10, 6, 4, 0) + s0AndTest
           + F("%16.4Lf%16.4Lf%16.4Lf", gc.RecPosEst.x, gc.RecPosEst.y, gc.RecPosEst.z)
           + F("%22.15Lf%22.15Lf%22.15Lf%22.15Lf%22.15Lf%22.15Lf", Q(0, 0), Q(1, 1), Q(2, 2), Q(0, 1), Q(0, 2), Q(1, 2))
           + "   ESBC\n";
}

// The file holds µs with 6 decimals: half a unit is 0.5e-12 s, and 1e-15 s
// covers the decimal conversions.
constexpr long double ClockTol_s = 0.5e-12L + 1e-15L;
// Seconds of day with 3 decimals.
constexpr long double EpochTol_s = 0.5e-3L + 1e-9L;

}  // namespace

TEST_F(PrintStaticReport, NothingWithoutStaticEstimationNoFileWithoutItsFlagAndTheVerboseLog)
{
    AskForFiles("flags");
    gc.verbose = true;
    orvotest::Capture err(std::cerr);
    gc.ifEstSta = false;
    EXPECT_EQ(Run(), "");
    gc.ifEstSta = true;
    gc.isOutDCBFile = gc.isOutTropFile = gc.isGNUPlotStat = gc.isClkFile = false;
    Run();
    for (const char* f : Files()) EXPECT_FALSE(Exists(f)) << f;
    gc.isGNUPlotStat = gc.isClkFile = true;
    Run();
    const std::string head = "Orvo::PrintStatic(): PRINTING STATIC SOLUTION!\n";
    EXPECT_EQ(err.Text(), head + head + "Orvo::PrintStatic():         Printing STATIC COORDINATES!\n"
                          "Orvo::ProcStatic(): WRITING RECEIVER STATIC CLOCK CORRECTIONS -> 4 EPOCHS!\n");
}

TEST_F(PrintStaticReport, OutlierSharesRedundancyAndVariancesFollowTheirFormats)
{
    const std::string text = Run();
    // 10 of 1000, 6 of 600, 4 of 300, none of 100; a system without
    // observations has no outliers to share.
    EXPECT_NE(text.find("\n" + std::string(20, ' ') + F("%10.2f%%   G: %8.2f%%   R: %8.2f%%   E: %8.2f\n", 1.0, 1.0, 4.0 / 3.0, 0.0)),
              std::string::npos);
    EXPECT_EQ(OutlierShare(3, 0), 0.0L);
    // 1000 observations - 18 unknowns - 4 clocks + 1 constraint + 3 fixed.
    EXPECT_NE(text.find("\n  # of REDUNDANCY : " + F("%10d", 982) + "\n"), std::string::npos);
    // sig0 = 20 mm; s0apost = 9e-4 m^2 is 30 mm; C1 0.04 m^2 is 200 mm,
    // P2 0.0625 m^2 is 250 mm, Pc3 0.01 m^2 is 100 mm; the other types are
    // not in use. (30 mm / 20 mm)^2 = 2.25, its root 1.5.
    const std::string sd = "  REF. STD. APOSTERIORI", colon = "                     : ";
    const std::string want = "  REF. STD. APRIORI                              : " + F("%15.1f", 20.0) + " mm\n" + sd
                             + "     " + colon + F("%15.1f", 30.0) + " mm\n" + sd + " - C1" + colon + F("%15.1f", 200.0)
                             + " mm\n" + sd + " - P2" + colon + F("%15.1f", 250.0) + " mm\n"
                             + sd + " - Pc3" + colon.substr(1) + F("%15.1f", 100.0) + " mm\n"
                             + "  REFERENCE VARIANCE OF UNIT WEIGHT [GLOBAL TEST]: " + F("%15.2f         [SQRT]%10.2f\n\n", 2.25, 1.5);
    EXPECT_EQ(text.substr(text.find("  REF. STD. APRIORI"), want.size()), want);
}

TEST_F(PrintStaticReport, EcefTableHoldsAprioriCorrectionEstimateAndPrecision)
{
    const std::string rule = "    " + std::string(59, '-') + "\n";
    std::string want = F("%23s%12s%16s%12s\n", "Approximate", "Correction", "Estimated", "Precision") + rule;
    const long double apr[3] = {gc.RecPos0.x, gc.RecPos0.y, gc.RecPos0.z};
    const long double cor[3] = {0.1234L, -0.2345L, 0.3456L}, q[3] = {0.04L, 0.01L, 0.05L};
    const char* label[3] = {"    X: ", "    Y: ", "    Z: "};
    for (int a = 0; a < 3; ++a)
        want += label[a] + F("%16.4Lf%12.4Lf%16.4Lf%12.4Lf\n", apr[a], cor[a], apr[a] + cor[a], std::sqrt(q[a] * 9.0e-4L));
    EXPECT_EQ(Table(Run(), "  ECEF COORDINATES:", want.size() + rule.size()), want + rule);
}

TEST_F(PrintStaticReport, GeodeticTableRotatesCorrectionsAndPrecisionsIntoTheLocalFrame)
{
    std::istringstream in(Table(Run(), "  GEODETIC COORDINATES:", 1000));
    std::string l[6];  // head, rule, N, E, U, rule
    for (std::string& s : l) std::getline(in, s);
    EXPECT_EQ(l[0], F("%24s%12s%20s%12s", "Approximate", "Correction", "Estimated", "Precision"));
    // Rows of the rotation to north, east, up: the correction is rotated at
    // the estimated point, the cofactors (Q_neu = R Q R^T) at the phase centre.
    auto rot = [](const flh& p, int a, int b) {
        const long double sf = std::sin(p.f), cf = std::cos(p.f), sl = std::sin(p.l), cl = std::cos(p.l);
        const long double r[3][3] = {{-sf * cl, -sf * sl, cf}, {-sl, cl, 0.0L}, {cf * cl, cf * sl, sf}};
        return r[a][b];
    };
    const long double d[3] = {0.1234L, -0.2345L, 0.3456L};
    bool correlationMatters = false;
    for (int a = 0; a < 3; ++a) {
        const std::string& row = l[2 + a];
        long double neu = 0.0L, q = 0.0L, qdiag = 0.0L;
        for (int b = 0; b < 3; ++b) {
            neu += rot(gc.RecPosEstG, a, b) * d[b];
            qdiag += std::pow(rot(gc.RecPosFCG, a, b), 2) * gc.QxxAll(b, b);
            for (int c = 0; c < 3; ++c) q += rot(gc.RecPosFCG, a, b) * gc.QxxAll(b, c) * rot(gc.RecPosFCG, a, c);
        }
        EXPECT_NEAR_LD(Num(row, 24, 12), neu, Dec4Tol) << row;
        EXPECT_NEAR_LD(Num(row, 56, 12), std::sqrt(q * gc.s0apost), Dec4Tol) << row;
        correlationMatters = correlationMatters || std::fabs(std::sqrt(qdiag / q) - 1.0L) > 0.01L;
    }
    // Guard of the test itself: the chosen correlations must change a
    // precision visibly, or a rotation that drops them would pass.
    EXPECT_TRUE(correlationMatters);
    EXPECT_EQ(l[4].substr(7, 17), F("%17.4Lf", gc.RecPos0G.h));
    // Over 0.45 m the up direction bends by 1e-8 m only: the heights differ
    // by the up correction within the print rounding of three fields.
    EXPECT_NEAR_LD(Num(l[4], 36, 20) - Num(l[4], 7, 17), Num(l[4], 24, 12), 3 * Dec4Tol);
}

TEST_F(PrintStaticReport, InterSystemBiasesInMetresAndMicroseconds)
{
    const std::string title = "  GNSS INTER-SYSTEM CLOCK BIASES:";
    // 299.792458 m of clock is 1 µs exactly; precisions sqrt(0.03 s0) and sqrt(0.04 s0).
    const long double p1 = std::sqrt(0.03L * 9e-4L), p2 = std::sqrt(0.04L * 9e-4L);
    const std::string fmt = "%12.4Lf +- %10.4Lf m   [%12.6Lf +- %10.6Lf mics]\n";
    const std::string rows = "    GPS-GLN: " + F(fmt.c_str(), 299.792458L, p1, 1.0L, p1 / C * 1e6L)
                             + "    GPS-GAL: " + F(fmt.c_str(), -3.21L, p2, -3.21L / C * 1e6L, p2 / C * 1e6L) + "\n";
    EXPECT_EQ(Table(Run(), title, rows.size()), rows);

    // Without GPS the epoch clock refers to GLONASS, and so does Galileo's bias.
    gc.isGPS = false;
    EXPECT_NE(Table(Run(), title, rows.size()).find("\n    GLN-GAL: "), std::string::npos);
    // One system: no section.
    gc.nDTsys = 0;
    EXPECT_EQ(Run().find(title), std::string::npos);
}

TEST_F(PrintStaticReport, CodeBiasTableListsSatellitesWithBiasesInKindOrder)
{
    AskForFiles("dcb");
    const std::string rule = "    ---" + std::string(40, '-') + "\n";
    // G05 has both kinds; G12 only P2, right behind its number; R03 none,
    // so no line; E11's only bias is undetermined, so its line stays bare.
    // Means over the determined biases only: one C1, two P2.
    std::string want = "    DCBs:     C1: " + F("%3d", 1) + "    P2: " + F("%3d", 3) + "\n    PRN"
                       + F("%20s%20s", "C1 DCB[m +- m]", "P2 DCB[m +- m]") + "\n" + rule + "    G05" + Bias(1.2345L, 5)
                       + Bias(-0.5678L, 6) + "\n    G12" + Bias(2.25L, 7) + "\n    E11\n" + rule + "   ADCB        C1"
                       + F("%10.4Lf        P2%10.4Lf\n\n\n", Prec(5), (Prec(6) + Prec(7)) / 2.0L);
    EXPECT_EQ(Table(Run(), Title, want.size()), want);
    // The file: marker, satellite, then day of the middle epoch (59025),
    // kind, value and precision for each determined bias.
    const std::string day = F("%8d", 59025);
    EXPECT_EQ(orvotest::ReadFile(gc.estdcbfile), "ESBC   G05" + day + "      C1" + Bias(1.2345L, 5) + day + "      P2"
                  + Bias(-0.5678L, 6) + "\nESBC   G12" + day + "      P2" + Bias(2.25L, 7) + "\nESBC   E11\n");

    // P3 from C1 for G05 and R03 (a GLONASS bias) in place of C1 and P2;
    // R03's is undetermined, and no bias of P3 from P1 is determined, so
    // that mean has nothing to divide and is NaN.
    gc.isdcbC1 = gc.isdcbP2 = false;
    gc.isdcbPc3 = gc.isdcbPp3 = gc.isGLNxdcb = true;
    gc.ndcbPc3 = 2, gc.ndcbPp3 = 1;
    Set<long>(gc.ixdcbPc3, {5, -1, 8, -1}), Set<long double>(gc.dcbPc3, {0.125L, 0, 0, 0});
    Set<long>(gc.ixdcbPp3, {-1, 10, -1, -1}), Set<long double>(gc.dcbPp3, {0, 0, 0, 0});
    want = "    DCBs:  P3[C]: " + F("%3d", 2) + " P3[P]: " + F("%3d", 1) + "\n    PRN"
           + F("%20s%20s", "P3[C] DCB[m +- m]", "P3[P] DCB[m +- m]") + "\n" + rule + "    G05" + Bias(0.125L, 5)
           + "\n    G12\n    R03\n" + rule + "   ADCB     P3[C]" + F("%10.4Lf     P3[P]%10s\n", Prec(5), "nan");
    EXPECT_EQ(Table(Run(), Title, want.size()), want);

    // One system's biases make the section; none, no section.
    gc.isGLNxdcb = gc.isGALxdcb = false;
    EXPECT_NE(Run().find(Title), std::string::npos);
    gc.isGPSxdcb = false;
    EXPECT_EQ(Run().find("ADCB"), std::string::npos);
}

TEST_F(PrintStaticReport, TroposphereNodesWithModelledDryAndEstimatedWetPartsAndGradients)
{
    AskForFiles("trop");
    // Dry 2.3456 m from the model, wet 0.1234 m estimated: 2.4690 m in all.
    const std::string total = F("%12.4Lf%10.4Lf%10.4Lf +- %8.4Lf", 2.3456L, 0.1234L, 2.469L, Prec(9));
    const std::string delays = "\n     1     " + Node0 + total + "\n     2     " + Node1 + F("%34s", Undetermined.c_str()) + "\n";
    const std::string gradients = "\n     1     " + Node0 + F("%18.4Lf +- %8.4Lf%15.4Lf +- %8.4Lf", 0.0012L, Prec(11), -0.0021L, Prec(13))
        + "\n     2     " + Node1 + F("%18.4Lf +- %8.4Lf%27s", -0.0008L, Prec(12), Undetermined.c_str()) + "\n";
    const std::string text = Run();
    EXPECT_NE(text.find(delays), std::string::npos);
    EXPECT_NE(text.find(gradients), std::string::npos);
    // The undetermined node leaves no line in the file.
    EXPECT_EQ(orvotest::ReadFile(gc.esttropfile),
              "# GNSS-STATION         TROPOSPHERE_EPOCH       DRY[MOD]  WET[EST]     TOTAL   PRECISION\n#"
                  + std::string(86, '-') + "\n" + F("%-20s", "ESBC") + Node0
                  + F("%15.4Lf%10.4Lf%10.4Lf +- %8.4Lf", 2.3456L, 0.1234L, 2.469L, Prec(9)) + "\n");

    gc.ifEstTropoGrad = false;
    EXPECT_EQ(Run().find("GRADIENTS"), std::string::npos);
    // Gradients asked for hang on the delays: without those, nothing.
    gc.ifEstTropoGrad = true;
    gc.ifEstTropo = false;
    std::remove(gc.esttropfile);
    EXPECT_EQ(Run().find("TROPOSPHERE"), std::string::npos);
    EXPECT_FALSE(Exists(gc.esttropfile));
}

TEST_F(PrintStaticReport, AmbiguityArcsBySatelliteWithEpochsValuesAndMeanPrecision)
{
    // Epochs 0..3 of the fixture are 01:00:00 to 01:01:30 in steps of 30 s;
    // a new satellite starts behind a blank line.
    const std::string want = "     1     G 5    2020-06-25 01:00:00    2020-06-25 01:00:30" + F("%20.4Lf +- %10.4Lf%15d", 123.4567L, Prec(15), 25)
        + "\n     2     G 5    2020-06-25 01:01:00    2020-06-25 01:01:30" + F("%34s%15d", Undetermined.c_str(), 0)
        + "\n\n     3     E11    2020-06-25 01:00:00    2020-06-25 01:01:30" + F("%20.4Lf +- %10.4Lf%15d", 0.0042L, Prec(17), 60)
        + "\n   " + std::string(106, '-') + "\n" + std::string(53, ' ') + "AVERAGE AMBIGUITY PRECISION:"
        + F("%13.4Lf", (Prec(15) + Prec(17)) / 2.0L) + "\n\n\n";
    const std::string title = "  PHASE L3 AMBIGUITIES (REAL VALUES):";
    const std::string table = Table(Run(), title, 1000);
    EXPECT_EQ(table.substr(0, 47), "    Number of all ambiguities      : " + F("%10d", 3));
    EXPECT_EQ(table.substr(table.find("     1     G 5")), want);

    // No determined arc: the mean is NaN. No arcs: no section, and no arc
    // table to check either.
    gc.IsUnkOK(15) = gc.IsUnkOK(17) = false;
    EXPECT_NE(Table(Run(), title, 1000).find("PRECISION:" + F("%13s", "nan")), std::string::npos);
    gc.nAmb = 0, gc.AmbIndex.Resize(0, 0);
    EXPECT_EQ(Run().find(title), std::string::npos);
}

TEST_F(WriteStaticFiles, PlotHasOneDataLineCommentedWithoutSolution)
{
    AskForFiles("plot");
    // sqrt(9e-4) = 0.03 m and (0.03 / 0.02)^2 = 2.25.
    Run();
    EXPECT_EQ(orvotest::ReadFile(gc.gnuplotStat).substr(0, 15), "#   EPOCH[MJD] ");
    EXPECT_EQ(PlotBody(gc), PlotData(gc, F("%10.6Lf%10.4Lf", 0.03L, 2.25L)));
    EXPECT_FALSE(gc.gplotStat.is_open());
    // No variance, an undefined one (no redundancy), or one just above the
    // bound of 1e-10 m^2: only the last is a solution.
    const std::pair<long double, bool> cases[] = {
        {0.0L, true}, {std::numeric_limits<long double>::quiet_NaN(), true}, {2e-10L, false}};
    for (const auto& c : cases) {
        gc.s0apost = c.first;
        Run();
        EXPECT_EQ(PlotBody(gc)[0] == '#', c.second) << c.first;
    }
    gc.s0apost = 0.0L;
    Run();
    EXPECT_EQ(PlotBody(gc), "#" + PlotData(gc, F("%10.6Lf%10.4Lf", 0.0L, 0.0L)));
}

TEST_F(WriteStaticFiles, ClockFileHoldsEveryEpochInMicrosecondsAndReadsBack)
{
    AskForFiles("clk");
    Run();
    EXPECT_EQ(orvotest::ReadFile(gc.clkfile).substr(0, 35), "CLOCK ERROR FILE: ESBC / 10118M001\n");
    // Round trip through the reader: clock in seconds is metres / c, every
    // epoch kept, the one without solution too.
    ClkErr back;
    back.SetFile(gc.clkfile), back.ReadFile();
    ASSERT_EQ(back.GetNEpoch(), 4);
    EXPECT_EQ(back.GetRefSystem(), 'G');
    for (long i = 0; i < 4; ++i)
        EXPECT_TRUE(std::fabs(back.GetClkErr(i) - gc.dtAll(i) / C) <= ClockTol_s && std::fabs(back.GetMJD(i) - rnxd.epoch(i)) <= EpochTol_s) << i;
    // The reference is the first system in use.
    gc.isGPS = false;
    Run();
    EXPECT_EQ(orvotest::ReadFile(gc.clkfile).substr(35, 19), "CLOCK REF. SYS. : R");
}

TEST_F(CheckStaticSolutionDeath, BrokenLayoutEndsTheRunBeforeAnyFile)
{
    AskForFiles("death");
    const std::pair<std::function<void(gCPosC&)>, const char*> cases[] = {
        {[](gCPosC& g) { g.QxxAll.Resize(0, 0); }, "COFACTOR MATRIX SMALLER"},
        {[](gCPosC& g) { g.AmbIndex(1, 2) = 4; }, "AMBIGUITY 2 HAS EPOCH 4 OUTSIDE"},  // one past the last
        {[](gCPosC& g) { g.ixdcbP2(1) = NUnk; }, "P2 CODE BIAS COLUMN 18 OUTSIDE"},  // the constraint
        {[](gCPosC& g) { g.dtAll.Resize(3, 1, 0.0L); }, "RECEIVER CLOCK LIST HOLDS 3 VALUES FOR 4"},
        {[](gCPosC& g) { g.nTropoUnk = 3; }, "TROPOSPHERE NODE EPOCH LIST HOLDS 2"},  // one node too many
        {[](gCPosC& g) { g.rnxd.nepochall = 0; }, "NO OBSERVATION EPOCHS"},
    };
    // Each breakage happens in the child of its death test only.
    for (const auto& c : cases)
        EXPECT_EXIT((c.first(gc), Run()), ::testing::ExitedWithCode(1),
                    std::string("\\*\\*\\*\\* Orvo: Error -> STATIC SOLUTION REPORT: ") + c.second)
            << c.second;
    for (const char* f : Files()) EXPECT_FALSE(Exists(f)) << f;
}
