// The static report's head, counters, variances, coordinate tables and
// inter-system biases, checked against lines built here from the report's
// formats and against the physics of the local frame.
#include "reporting/PrintStatic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "ReportSupport.h"
#include "reporting/PrintStaticCounters.h"
#include "reporting/StaticRefEpoch.h"
#include "numerics/NearLD.h"

using namespace reporttest;

namespace {

std::string Report(Context& ctx)
{
    Capture out(std::cout);
    PrintStatic(ctx.gc);
    return out.Text();
}

// Four printed decimals: half a unit of the last digit, plus 1e-12 m for
// the test's own long double rotation, which rounds differently.
constexpr long double Dec4Tol = 0.5e-4L + 1e-12L;
// dms with 5 decimals of arc seconds: half a unit, in radians.
constexpr long double DmsTol_rad = 0.5e-5L / 3600.0L * 3.14159265358979323846L / 180.0L + 1e-15L;

long double Num(const std::string& line, size_t pos, size_t width)
{
    EXPECT_GE(line.size(), pos + width) << line;
    if (line.size() < pos + width) return NAN;
    return std::strtold(line.substr(pos, width).c_str(), nullptr);
}

// Radians of a printed "ddd mm ss.sssss" field.
long double DmsField(const std::string& field)
{
    std::istringstream in(field);
    long double d = 0, m = 0, s = 0;
    in >> d >> m >> s;
    EXPECT_FALSE(in.fail()) << field;
    const long double sign = field.find('-') != std::string::npos ? -1.0L : 1.0L;
    return sign * (std::fabs(d) + m / 60.0L + s / 3600.0L) * 3.14159265358979323846L / 180.0L;
}

}  // namespace

TEST(PrintStatic, NothingAtAllWithoutStaticEstimation)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "off");
    ctx.gc.ifEstSta = false;
    ctx.gc.verbose = true;
    Capture err(std::cerr);
    EXPECT_EQ(Report(ctx), "");
    EXPECT_EQ(err.Text(), "");
    for (const char* f : {ctx.gc.estdcbfile, ctx.gc.esttropfile, ctx.gc.gnuplotStat, ctx.gc.clkfile})
        EXPECT_FALSE(std::ifstream(f).good()) << f;
}

TEST(PrintStatic, HeadCountersAndVariancesFollowTheirFormats)
{
    Context ctx;
    FillSolution(ctx);
    const std::string text = Report(ctx);

    std::string want = "STATIC SOLUTION:\n================\n\n";
    want += "  # of ITERATIONS : " + F("%10d", 3) + "       THRESHOLD: " + F("%10.2e", 3.4e-5) + "\n";
    want += "  # of EPOCHS     : " + F("%10d", 4) + "\n";
    want += "  # of OBS        : " + F("%10d    G: %8d    R: %8d    E: %8d", 1000, 600, 300, 100) + "\n";
    want += "  # of OUTLIERS   : " + F("%10d    G: %8d    R: %8d    E: %8d", 10, 6, 4, 0) + "\n";
    // 10 of 1000, 6 of 600, 4 of 300, none of 100.
    want += std::string(20, ' ') + F("%10.2f%%   G: %8.2f%%   R: %8.2f%%   E: %8.2f", 1.0, 1.0, 4.0 / 3.0, 0.0) + "\n\n";
    want += "  # of UNKNOWNS   : " + F("%10d", 18) + "\n";
    want += "  # of CRD        : " + F("%10d", 3) + "\n";
    want += "  # of SYS DT BIAS: " + F("%10d", 2) + "\n";
    want += "  # of DBC BIAS   : " + F("%10d", 4) + "\n";
    want += "  # of AMBIGUITIES: " + F("%10d", 3) + "\n";
    want += "  # of TROPO DELAY: " + F("%10d", 2) + "\n";
    want += "  # of TRP GRAD E : " + F("%10d", 2) + "\n";
    want += "  # of TRP GRAD N : " + F("%10d", 2) + "\n";
    want += "  # of GNSS C. ERR:[" + F("%10d", 4) + "]\n";
    want += "  # of CONSTRAINTS: " + F("%10d", 1) + "\n";
    want += "  # of UNDEF UNKS : " + F("%10d", 3) + "\n";
    // 1000 observations - 18 unknowns - 4 clocks + 1 constraint + 3 fixed.
    want += "  # of REDUNDANCY : " + F("%10d", 982) + "\n\n";
    // sig0 = 20 mm; s0apost = 9e-4 m^2 is 30 mm; C1 0.04 m^2 is 200 mm,
    // P2 0.0625 m^2 is 250 mm; the other types are not in use.
    want += "  REF. STD. APRIORI                              : " + F("%15.1f", 20.0) + " mm\n";
    want += "  REF. STD. APOSTERIORI                          : " + F("%15.1f", 30.0) + " mm\n";
    want += "  REF. STD. APOSTERIORI - C1                     : " + F("%15.1f", 200.0) + " mm\n";
    want += "  REF. STD. APOSTERIORI - P2                     : " + F("%15.1f", 250.0) + " mm\n";
    // (30 mm / 20 mm)^2 = 2.25, its root 1.5.
    want += "  REFERENCE VARIANCE OF UNIT WEIGHT [GLOBAL TEST]: " + F("%15.2f", 2.25) + "         [SQRT]" + F("%10.2f", 1.5) + "\n\n";
    ASSERT_GE(text.size(), want.size());
    EXPECT_EQ(text.substr(0, want.size()), want);
}

TEST(PrintStatic, SharesOfSystemsWithoutObservationsAreZero)
{
    EXPECT_EQ(OutlierShare(0, 0), 0.0L);
    EXPECT_EQ(OutlierShare(3, 0), 0.0L);
    // 1e-15 %: one long double division, round-off 2e-18 of 33.
    EXPECT_NEAR_LD(OutlierShare(1, 3), 100.0L / 3.0L, 1e-15L);

    Context ctx;
    FillSolution(ctx);
    ctx.gc.NObs = ctx.gc.NObsG = ctx.gc.NObsR = ctx.gc.NObsE = 0;
    const std::vector<std::string> lines = Lines(Report(ctx));
    const long i = Find(lines, "  # of OUTLIERS   : ");
    ASSERT_GE(i, 0);
    EXPECT_EQ(lines[static_cast<size_t>(i) + 1],
              std::string(20, ' ') + F("%10.2f%%   G: %8.2f%%   R: %8.2f%%   E: %8.2f", 0.0, 0.0, 0.0, 0.0));
}

TEST(PrintStatic, EcefTableHoldsAprioriCorrectionEstimateAndPrecision)
{
    Context ctx;
    FillSolution(ctx);
    const gCPosC& gc = ctx.gc;
    const std::vector<std::string> lines = Lines(Report(ctx));
    const long t = Find(lines, "  ECEF COORDINATES:");
    ASSERT_GE(t, 0);
    const size_t i = static_cast<size_t>(t);
    ASSERT_GE(lines.size(), i + 9);
    EXPECT_EQ(lines[i + 1], "  " + std::string(17, '-'));
    EXPECT_EQ(lines[i + 2], "");
    EXPECT_EQ(lines[i + 3], F("%23s%12s%16s%12s", "Approximate", "Correction", "Estimated", "Precision"));
    EXPECT_EQ(lines[i + 4], "    " + std::string(59, '-'));
    const long double apr[3] = {gc.RecPos0.x, gc.RecPos0.y, gc.RecPos0.z};
    const long double cor[3] = {0.1234L, -0.2345L, 0.3456L};
    const long double q[3] = {0.04L, 0.01L, 0.05L};
    const char* label[3] = {"    X: ", "    Y: ", "    Z: "};
    for (int a = 0; a < 3; ++a)
        EXPECT_EQ(lines[i + 5 + static_cast<size_t>(a)],
                  label[a] + F("%16.4Lf%12.4Lf%16.4Lf%12.4Lf", apr[a], cor[a], apr[a] + cor[a],
                               std::sqrt(q[a] * 9.0e-4L)));
    EXPECT_EQ(lines[i + 8], "    " + std::string(59, '-'));
}

TEST(PrintStatic, GeodeticTableRotatesCorrectionsAndPrecisionsIntoTheLocalFrame)
{
    Context ctx;
    FillSolution(ctx);
    const gCPosC& gc = ctx.gc;
    const std::vector<std::string> lines = Lines(Report(ctx));
    const long t = Find(lines, "  GEODETIC COORDINATES:");
    ASSERT_GE(t, 0);
    const size_t i = static_cast<size_t>(t);
    ASSERT_GE(lines.size(), i + 9);
    EXPECT_EQ(lines[i + 3], F("%24s%12s%20s%12s", "Approximate", "Correction", "Estimated", "Precision"));
    EXPECT_EQ(lines[i + 4], "    " + std::string(64, '-'));
    EXPECT_EQ(lines[i + 8], "    " + std::string(64, '-'));
    const std::string& N = lines[i + 5];
    const std::string& E = lines[i + 6];
    const std::string& U = lines[i + 7];
    ASSERT_EQ(N.substr(0, 7), "    N: ");
    ASSERT_EQ(E.substr(0, 7), "    E: ");
    ASSERT_EQ(U.substr(0, 7), "    U: ");
    for (const std::string* l : {&N, &E, &U}) EXPECT_EQ(l->size(), 7u + 17u + 12u + 20u + 12u) << *l;

    // Rows of the rotation to north, east, up, formed here.
    auto rot = [](long double f, long double l, long double R[3][3]) {
        const long double sf = std::sin(f), cf = std::cos(f), sl = std::sin(l), cl = std::cos(l);
        const long double r[3][3] = {{-sf * cl, -sf * sl, cf}, {-sl, cl, 0.0L}, {cf * cl, cf * sl, sf}};
        for (int a = 0; a < 3; ++a)
            for (int b = 0; b < 3; ++b) R[a][b] = r[a][b];
    };
    // The correction is rotated at the estimated point.
    long double R[3][3];
    rot(gc.RecPosEstG.f, gc.RecPosEstG.l, R);
    const long double d[3] = {0.1234L, -0.2345L, 0.3456L};
    long double neu[3] = {0, 0, 0};
    for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) neu[a] += R[a][b] * d[b];
    EXPECT_NEAR_LD(Num(N, 24, 12), neu[0], Dec4Tol);
    EXPECT_NEAR_LD(Num(E, 24, 12), neu[1], Dec4Tol);
    EXPECT_NEAR_LD(Num(U, 24, 12), neu[2], Dec4Tol);
    // A rotation keeps the length of the correction.
    EXPECT_NEAR_LD(std::sqrt(neu[0] * neu[0] + neu[1] * neu[1] + neu[2] * neu[2]),
                std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]), 1e-15L);

    // The cofactors are rotated at the phase centre: Q_neu = R Q R^T.
    rot(gc.RecPosFCG.f, gc.RecPosFCG.l, R);
    long double Q[3][3];
    for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) Q[a][b] = gc.QxxAll(a, b);
    const size_t col = 7 + 17 + 12 + 20;
    const std::string* rows[3] = {&N, &E, &U};
    bool correlationMatters = false;
    for (int a = 0; a < 3; ++a) {
        long double qa = 0.0L, qdiag = 0.0L;
        for (int b = 0; b < 3; ++b) {
            qdiag += R[a][b] * R[a][b] * Q[b][b];
            for (int c = 0; c < 3; ++c) qa += R[a][b] * Q[b][c] * R[a][c];
        }
        const long double sd = std::sqrt(qa * gc.s0apost);
        EXPECT_NEAR_LD(Num(*rows[a], col, 12), sd, Dec4Tol) << *rows[a];
        correlationMatters = correlationMatters || std::fabs(std::sqrt(qdiag * gc.s0apost) - sd) > 10 * Dec4Tol;
    }
    // Guard of the test itself: the chosen correlations must change a
    // precision visibly, or a rotation that drops them would pass.
    EXPECT_TRUE(correlationMatters);

    // Latitude and longitude fields convert back to the positions they show.
    EXPECT_NEAR_LD(DmsField(N.substr(7, 17)), gc.RecPos0G.f, DmsTol_rad);
    EXPECT_NEAR_LD(DmsField(N.substr(36, 20)), gc.RecPosEstG.f, DmsTol_rad);
    EXPECT_NEAR_LD(DmsField(E.substr(7, 17)), gc.RecPos0G.l, DmsTol_rad);
    EXPECT_NEAR_LD(DmsField(E.substr(36, 20)), gc.RecPosEstG.l, DmsTol_rad);
    EXPECT_EQ(U.substr(7, 17), F("%17.4Lf", gc.RecPos0G.h));
    EXPECT_EQ(U.substr(36, 20), F("%20.4Lf", gc.RecPosEstG.h));
    // Over 0.45 m the up direction bends by 1e-8 m only: the heights differ
    // by the up correction within the print rounding of three fields.
    EXPECT_NEAR_LD(Num(U, 36, 20) - Num(U, 7, 17), Num(U, 24, 12), 3 * Dec4Tol);
}

TEST(PrintStatic, InterSystemBiasesInMetresAndMicroseconds)
{
    Context ctx;
    FillSolution(ctx);
    std::vector<std::string> lines = Lines(Report(ctx));
    long t = Find(lines, "  GNSS INTER-SYSTEM CLOCK BIASES:");
    ASSERT_GE(t, 0);
    size_t i = static_cast<size_t>(t);
    ASSERT_GE(lines.size(), i + 6);
    // 299.792458 m of clock is 1 µs exactly; precisions sqrt(0.03 s0) and sqrt(0.04 s0).
    const long double p1 = std::sqrt(0.03L * 9e-4L), p2 = std::sqrt(0.04L * 9e-4L);
    EXPECT_EQ(lines[i + 3], "    GPS-GLN: " + F("%12.4Lf +- %10.4Lf m   [%12.6Lf +- %10.6Lf mics]",
                                               299.792458L, p1, 1.0L, p1 / C * 1e6L));
    EXPECT_EQ(lines[i + 4], "    GPS-GAL: " + F("%12.4Lf +- %10.4Lf m   [%12.6Lf +- %10.6Lf mics]",
                                               -3.21L, p2, -3.21L / C * 1e6L, p2 / C * 1e6L));
    EXPECT_EQ(lines[i + 5], "");

    // Galileo against GPS alone, then against GLONASS alone: the label
    // names the system the epoch clock refers to.
    ctx.gc.isGLN = false;
    ctx.gc.nDTsys = 1;
    ctx.gc.ixDTsys[1] = -1;
    lines = Lines(Report(ctx));
    t = Find(lines, "  GNSS INTER-SYSTEM CLOCK BIASES:");
    ASSERT_GE(t, 0);
    i = static_cast<size_t>(t);
    EXPECT_EQ(lines[i + 3].substr(0, 13), "    GPS-GAL: ");
    EXPECT_EQ(lines[i + 4], "");
    ctx.gc.isGLN = true;
    ctx.gc.isGPS = false;
    lines = Lines(Report(ctx));
    i = static_cast<size_t>(Find(lines, "  GNSS INTER-SYSTEM CLOCK BIASES:"));
    EXPECT_EQ(lines[i + 3].substr(0, 13), "    GLN-GAL: ");

    // One system: no section.
    ctx.gc.nDTsys = 0;
    ctx.gc.ixDTsys[2] = -1;
    EXPECT_EQ(Find(Lines(Report(ctx)), "  GNSS INTER-SYSTEM CLOCK BIASES:"), -1);
}

TEST(PrintStatic, NoNotANumberWhereDataExistAndVerboseLog)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "nan");
    ctx.gc.verbose = true;
    std::string text, log;
    {
        Capture err(std::cerr);
        text = Report(ctx);
        log = err.Text();
    }
    EXPECT_EQ(text.find("nan"), std::string::npos);
    EXPECT_EQ(text.find("inf"), std::string::npos);
    for (const char* f : {ctx.gc.estdcbfile, ctx.gc.esttropfile, ctx.gc.gnuplotStat, ctx.gc.clkfile}) {
        const std::string body = orvotest::ReadFile(f);
        EXPECT_FALSE(body.empty()) << f;
        EXPECT_EQ(body.find("nan"), std::string::npos) << f;
    }
    EXPECT_EQ(log, "Orvo::PrintStatic(): PRINTING STATIC SOLUTION!\n"
                   "Orvo::PrintStatic():         Printing STATIC COORDINATES!\n"
                   "Orvo::ProcStatic(): WRITING RECEIVER STATIC CLOCK CORRECTIONS -> 4 EPOCHS!\n");
    // The report changes nothing of the solution it reads.
    EXPECT_EQ(ctx.gc.xAll(0), 0.1234L);
    EXPECT_EQ(ctx.gc.QxxAll(0, 1), 0.01L);
}

TEST(StaticRefEpoch, MiddleOfTheSpanAcrossMidnight)
{
    Context ctx;
    RINEXData& d = ctx.rnxd;
    d.nepochall = 3;
    d.epoch.Resize(3, 1);
    d.epoch(0) = mjd(59025UL, 86000.0L);
    d.epoch(1) = mjd(59025UL, 86300.0L);
    d.epoch(2) = mjd(59026UL, 400.0L);
    // 800 s span: the middle is 400 s after 86000 s, the next midnight.
    const mjd mid = StaticRefEpoch(d);
    EXPECT_EQ(mid.GetMJDay(), 59026UL);
    // 1e-9 s: round-off of day-plus-second epoch arithmetic (1e-14 s).
    EXPECT_NEAR_LD(mid.GetSecond(), 0.0L, 1e-9L);
    d.nepochall = 1;
    const mjd one = StaticRefEpoch(d);
    EXPECT_EQ(one.GetMJDay(), 59025UL);
    EXPECT_NEAR_LD(one.GetSecond(), 86000.0L, 1e-12L);
}
