// The SINEX result file: its line formatters against the worked example of
// the format, and a whole run whose file is read back by columns and held
// against the report and the static plot file.
#include <map>

#include "driver/ContextFixture.h"
#include "geodesy/TimeConverse.h"
#include "numerics/MathConstants.h"
#include "reporting/WriteSinex.h"

namespace {

// Radians of degrees, minutes and seconds (south or west as negative deg).
long double Rad(long double d, long double m, long double s) { return (d + m / 60.0L + s / 3600.0L) * Deg2Rad; }
mjd Epoch(unsigned short y, unsigned short doy, long double sec) { ymdhms t; t.SetDayOfYear(y, doy); mjd m = ymdhms2mjd(t); m += sec; return m; }

TEST(SinexLines, FormattersReproduceTheWorkedExampleColumnForColumn) {
    const std::pair<std::string, std::string> rows[] = {
        {SinexHeaderLine("XYZ", "21:065:43200", "21:060:00000", "21:061:00000", 6),
         "%=SNX 2.02 XYZ 21:065:43200 XYZ 21:060:00000 21:061:00000 P     6 2 S"},
        {SinexSiteIdLine("XMP2", "99999M002", "Example site two", Rad(4, 25, 10.0L), Rad(50, 47, 2.2L), 98.7L),
         " XMP2  A 99999M002 P Example site two         4 25 10.0  50 47  2.2    98.7"},
        {SinexSiteLine("XMPL", "1", "21:060:00000", "21:060:86370") + " UNE   0.0800   0.0000   0.0000",
         " XMPL  A    1 P 21:060:00000 21:060:86370 UNE   0.0800   0.0000   0.0000"},
        {SinexEstimateLine(1, "STAX", "XMPL", "1", "21:060:43200", "m", 4031426.9741L, 1.2e-3L),
         "     1 STAX   XMPL  A    1 21:060:43200 m    2  4.03142697410000e+06 1.20000e-03"},
        {SinexMatrixLine(3, 1, {1.08e-6L, 6.0e-8L, 2.25e-6L}),
         "     3     1  1.08000000000000e-06  6.00000000000000e-08  2.25000000000000e-06"},
        {SinexMatrixLine(4, 4, {1.96e-6L}), "     4     4  1.96000000000000e-06"},
        // Epochs: 2021-03-01 12:00; 86400 s allowed; two-digit years both sides of 2000.
        {SinexEpoch(Epoch(2021, 60, 43200.0L)), "21:060:43200"},
        {SinexEpoch(Epoch(2020, 366, 86399.6L)), "20:366:86400"},
        {SinexEpoch(Epoch(2000, 1, 0.4L)), "00:001:00000"},
        {SinexEpoch(Epoch(1999, 365, 86370.0L)), "99:365:86370"},
    };
    for (const auto& [got, want] : rows) EXPECT_EQ(got, want);
}

TEST(SinexLines, SiteCodeDomesAndAnglesAtTheirEdges) {
    const std::pair<std::string, std::string> rows[] = {
        {SinexSiteCode("ESBC00DNK", "x.20o"), "ESBC"}, {SinexSiteCode("zimm", ""), "ZIMM"},
        {SinexSiteCode("  ", "/data/wtzr1770.20o"), "WTZR"}, {SinexSiteCode("A B", ""), "A_B_"},
        {SinexDomes(" 10118M001 "), "10118M001"}, {SinexDomes("14001S007"), "14001S007"},
        {SinexDomes("10118X001"), "---------"}, {SinexDomes("10118M0011"), "---------"}, {SinexDomes(""), "---------"},
        // Longitude east 0-360, latitude signed in the degree text even at -0;
        // 59.96" rounds into the next minute, 359 59 59.96 onto 0.
        {SinexSiteIdLine("S", "", "", Rad(-1, 0, 0), Rad(-0.0L, -30, 0), 0).substr(44, 23), "359  0  0.0  -0 30  0.0"},
        {SinexSiteIdLine("S", "", "", Rad(12, 59, 59.96L), Rad(-45, -59, -59.96L), 0).substr(44, 23), " 13  0  0.0 -46  0  0.0"},
        {SinexSiteIdLine("S", "", "", Rad(359, 59, 59.96L), Rad(0, 0, 0.04L), 0).substr(44, 23), "  0  0  0.0   0  0  0.0"},
    };
    for (const auto& [got, want] : rows) EXPECT_EQ(got, want);
}

TEST(SinexLinesDeath, FieldsTheFormatCannotHoldStopTheRun) {
    EXPECT_EXIT(SinexMatrixLine(1, 1, {1, 2, 3, 4}), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> SINEX FILE: A MATRIX LINE HOLDS 1 TO 3 ELEMENTS, NOT 4!");
    EXPECT_EXIT(SinexEpoch(Epoch(2051, 1, 0)), ::testing::ExitedWithCode(1),
                "Orvo: Error -> SINEX FILE: EPOCH OF YEAR 2051 OUTSIDE 1951-2050 OF THE TWO-DIGIT YEAR!");
}

// Read back by the columns of the format, independent of the writer.
struct Sinex {
    std::vector<std::string> lines;
    std::map<std::string, std::vector<std::string>> blocks;  // data lines by block title
    long double value[3], sigma[3], cov[3][3] = {};
    int written = 0, aboveDiagonal = 0;  // matrix elements read, and those with j > i
};
Sinex ReadSinex(const std::string& text) {
    Sinex s;
    std::istringstream in(text);
    std::string line, block;
    for (std::string l; std::getline(in, l);) s.lines.push_back(l);
    for (const std::string& l : s.lines) {
        if (l[0] == '+') block = l.substr(1);
        else if (l[0] == ' ') s.blocks[block].push_back(l + std::string(80, ' '));
    }
    for (const std::string& l : s.blocks["SOLUTION/ESTIMATE"]) {
        const int i = std::stoi(l.substr(1, 5)) - 1;
        s.value[i] = std::stold(l.substr(47, 21)), s.sigma[i] = std::stold(l.substr(69, 11));
    }
    for (const std::string& l : s.blocks["SOLUTION/MATRIX_ESTIMATE L COVA"])
        for (int k = 0, i = std::stoi(l.substr(1, 5)) - 1, j = std::stoi(l.substr(7, 5)) - 1; k < 3 && l[13 + 22 * k + 1] != ' '; ++k)
            s.cov[i][j + k] = s.cov[j + k][i] = std::stold(l.substr(13 + 22 * k, 21)), ++s.written, s.aboveDiagonal += j + k > i;
    return s;
}

// The report prints coordinates and precisions with 4 decimals (m): half a
// step of rounding, and a margin for the binary value behind the text.
constexpr long double ReportStep_m = 0.5e-4L + 1e-9L;
// Six significant digits of the E11.6 standard deviation.
constexpr long double SigmaRelative = 5e-6L;
// Correlations from two texts of 14 and 15 digits: far below 1e-6.
constexpr long double CorrelationTol = 1e-6L;

TEST(SinexRun, FileCarriesTheReportsStaticSolutionThroughTheKinematicPass) {
    using namespace drivertest;
    const drivertest::RunResult r = RunOrvo("sinex", "-r" + CutObs("sinex.20o", 240) + " -ep" + kSp3 + " -ec" + kClk +
                                            " -csGE -lPc3,L3 -tmSAAST,NIELL -ti01:00:00 -xSTA,KIN -gpsplot.txt -osesbc.snx");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(Has(r.out, "\n  SINEX solution file                 : esbc.snx\n"));
    const std::string dir = orvotest::TempDir() + "/sinex/";
    const Sinex s = ReadSinex(orvotest::ReadFile(dir + "esbc.snx"));
    ASSERT_GT(s.lines.size(), 2u);
    for (const std::string& l : s.lines) EXPECT_LE(l.size(), 80u) << l;
    const std::string& head = s.lines.front();
    EXPECT_EQ(head.substr(0, 15), "%=SNX 2.02 ORV ");
    EXPECT_EQ(s.lines.back(), "%ENDSNX");
    // 240 epochs of 30 s from 2020-06-25 (day 177) 00:00: the last at 7170 s,
    // the middle at 3585 s.
    EXPECT_EQ(head.substr(28, 30), "ORV 20:177:00000 20:177:07170 ");
    EXPECT_EQ(std::stoi(head.substr(60, 5)), 3);
    ASSERT_EQ(s.blocks.at("SOLUTION/ESTIMATE").size(), 3u);
    EXPECT_EQ(s.blocks.at("SOLUTION/EPOCHS")[0].substr(0, 54), " ESBC  A    1 P 20:177:00000 20:177:07170 20:177:03585");
    EXPECT_EQ(s.blocks.at("SITE/ID")[0].substr(0, 21), " ESBC  A 10118M001 P ");
    EXPECT_EQ(s.blocks.at("SITE/RECEIVER")[0].substr(42, 20), "SEPT POLARX5        ");
    EXPECT_EQ(s.blocks.at("SITE/ANTENNA")[0].substr(42, 20), "ASH701945E_M    SCIS");
    EXPECT_EQ(s.blocks.at("SITE/ECCENTRICITY")[0].substr(42, 30), "UNE   0.2160   0.0000   0.0000");
    for (int i = 0; i < 3; ++i) {
        const std::string& l = s.blocks.at("SOLUTION/ESTIMATE")[i];
        EXPECT_EQ(l.substr(7, 32), std::string("STA") + "XYZ"[i] + "   ESBC  A    1 20:177:03585");
    }
    // A lower triangle, complete: six elements, none above the diagonal.
    EXPECT_TRUE(s.written == 6 && s.aboveDiagonal == 0) << s.written << " " << s.aboveDiagonal;

    // The report's X, Y, Z lines: estimate and precision; the plot file:
    // sqrt(s0apost) and the cofactors Q11 Q22 Q33 Q12 Q13 Q23.
    const size_t ecef = r.out.find("ECEF COORDINATES:");
    const std::string plot = orvotest::ReadFile(dir + "plot.txt");
    std::istringstream p(plot.substr(plot.find('\n')));
    std::string skip;
    long double s0, q[6];
    for (int i = 0; i < 11; ++i) p >> skip;
    p >> s0 >> skip >> skip >> skip >> skip >> q[0] >> q[1] >> q[2] >> q[3] >> q[4] >> q[5];
    const int qi[3][3] = {{0, 3, 4}, {3, 1, 5}, {4, 5, 2}};
    for (int i = 0; i < 3; ++i) {
        long double approx, corr, est, prec;
        std::istringstream(r.out.substr(r.out.find(std::string("    ") + "XYZ"[i] + ": ", ecef) + 7, 60)) >> approx >> corr >> est >> prec;
        EXPECT_NEAR(s.value[i], est, ReportStep_m);
        EXPECT_NEAR(s.sigma[i], prec, ReportStep_m);
        EXPECT_NEAR(std::sqrt(s.cov[i][i]) / s.sigma[i], 1.0L, SigmaRelative);
        // s0apost from its 10.6 text: half a micrometre of s0, doubled.
        EXPECT_NEAR(s.cov[i][i] / q[i] / (s0 * s0), 1.0L, 1e-6L / s0);
        for (int j = 0; j < 3; ++j)
            EXPECT_NEAR(s.cov[i][j] / std::sqrt(s.cov[i][i] * s.cov[j][j]), q[qi[i][j]] / std::sqrt(q[i] * q[j]), CorrelationTol);
    }
    // Positive definite (Sylvester): the leading minors are positive.
    const auto& c = s.cov;
    const long double m2 = c[0][0] * c[1][1] - c[0][1] * c[1][0];
    EXPECT_TRUE(c[0][0] > 0 && m2 > 0 && c[2][0] * (c[0][1] * c[1][2] - c[1][1] * c[0][2]) - c[2][1] * (c[0][0] * c[1][2] - c[1][0] * c[0][2]) + c[2][2] * m2 > 0);
}

TEST(SinexRun, ARunThatStopsAfterReadingLeavesNoFile) {
    using namespace drivertest;
    // One epoch of five GPS satellites: as many codes as unknowns, no redundancy.
    const Selector fiveGps = [](const std::vector<std::string>& sats) {
        std::vector<bool> k(sats.size(), false);
        for (size_t i = 0, n = 0; i < sats.size(); ++i) k[i] = sats[i][0] == 'G' && n++ < 5;
        return k;
    };
    const RunResult r = RunOrvo("sinex_stop", "-r" + CutObs("sinex_five.20o", 1, fiveGps) + " -ep" + kSp3 + " -ec" + kClk + " -csG -lPc3 -xSTA -osout.snx");
    EXPECT_TRUE(r.status == 1 && Has(r.err, "NO REDUNDANT OBSERVATIONS IN STATIC SOLUTION")) << r.err;
    EXPECT_FALSE(std::ifstream(orvotest::TempDir() + "/sinex_stop/out.snx").good());
}

}  // namespace
