// Code bias table and file of the static report: which satellites and kinds
// appear, their columns, the mean precisions and the file lines.
#include "reporting/PrintStaticDCB.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ReportSupport.h"
#include "reporting/PrintStatic.h"

using namespace reporttest;

namespace {

// Precision of unknown ix of the fixture: its cofactor is 0.01 ix, s0apost 9e-4.
long double Prec(long ix) { return std::sqrt(0.01L * static_cast<long double>(ix) * 9e-4L); }

std::string Report(Context& ctx)
{
    Capture out(std::cout);
    PrintStatic(ctx.gc);
    return out.Text();
}

}  // namespace

TEST(PrintStaticDCB, TableListsSatellitesWithBiasesInKindOrder)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "dcb");
    const std::vector<std::string> lines = Lines(Report(ctx));
    const long t = Find(lines, "  GNSS SATELLITE/RECEIVER DIFFERENTIAL CODE BIASES:");
    ASSERT_GE(t, 0);
    const size_t i = static_cast<size_t>(t);
    ASSERT_GE(lines.size(), i + 14);
    EXPECT_EQ(lines[i + 3], "    DCBs: " + std::string("    C1: ") + F("%3d", 1) + "    P2: " + F("%3d", 3));
    EXPECT_EQ(lines[i + 4], "    PRN" + F("%20s%20s", "C1 DCB[m +- m]", "P2 DCB[m +- m]"));
    const std::string rule = "    ---" + std::string(40, '-');
    EXPECT_EQ(lines[i + 5], rule);
    // G05 has both kinds; G12 only P2, right behind its number; R03 none,
    // so no line; E11's only bias is undetermined, so its line stays bare.
    EXPECT_EQ(lines[i + 6], "    G05" + F("%10.4Lf +-%7.4Lf", 1.2345L, Prec(5))
                                      + F("%10.4Lf +-%7.4Lf", -0.5678L, Prec(6)));
    EXPECT_EQ(lines[i + 7], "    G12" + F("%10.4Lf +-%7.4Lf", 2.25L, Prec(7)));
    EXPECT_EQ(lines[i + 8], "    E11");
    EXPECT_EQ(lines[i + 9], rule);
    // Means over the determined biases only: one C1, two P2.
    EXPECT_EQ(lines[i + 10], "   ADCB" + std::string("        C1") + F("%10.4Lf", Prec(5))
                                 + "        P2" + F("%10.4Lf", (Prec(6) + Prec(7)) / 2.0L));
    EXPECT_EQ(lines[i + 11], "");
    EXPECT_EQ(lines[i + 12], "");
    EXPECT_EQ(Find(lines, "    R03"), -1);

    // The file: marker, satellite, then day of the middle epoch (59025),
    // kind, value and precision for each determined bias.
    const std::vector<std::string> file = Lines(orvotest::ReadFile(ctx.gc.estdcbfile));
    ASSERT_EQ(file.size(), 3u);
    EXPECT_EQ(file[0], "ESBC   G05" + F("%8d%8s%10.4Lf +-%7.4Lf", 59025, "C1", 1.2345L, Prec(5))
                           + F("%8d%8s%10.4Lf +-%7.4Lf", 59025, "P2", -0.5678L, Prec(6)));
    EXPECT_EQ(file[1], "ESBC   G12" + F("%8d%8s%10.4Lf +-%7.4Lf", 59025, "P2", 2.25L, Prec(7)));
    EXPECT_EQ(file[2], "ESBC   E11");
}

TEST(PrintStaticDCB, CombinedKindsAndAKindWithoutDeterminedBias)
{
    Context ctx;
    FillSolution(ctx);
    gCPosC& gc = ctx.gc;
    // P3 from C1 for G05 and R03 (a GLONASS bias) in place of C1 and P2;
    // R03's is undetermined, and no bias of P3 from P1 is determined.
    gc.isdcbC1 = gc.isdcbP2 = false;
    gc.isdcbPc3 = gc.isdcbPp3 = true;
    gc.isGLNxdcb = true;
    gc.ndcbPc3 = 2;
    gc.ndcbPp3 = 1;
    gc.ixdcbPc3.Resize(4, 1, -1);
    gc.ixdcbPc3(0) = 5;
    gc.ixdcbPc3(2) = 8;
    gc.ixdcbPp3.Resize(4, 1, -1);
    gc.ixdcbPp3(1) = 10;
    gc.dcbPc3.Resize(4, 1, 0.0L);
    gc.dcbPc3(0) = 0.125L;
    gc.dcbPp3.Resize(4, 1, 0.0L);
    const std::vector<std::string> lines = Lines(Report(ctx));
    const long t = Find(lines, "    DCBs: ");
    ASSERT_GE(t, 0);
    const size_t i = static_cast<size_t>(t);
    ASSERT_GE(lines.size(), i + 8);
    EXPECT_EQ(lines[i], "    DCBs: " + std::string(" P3[C]: ") + F("%3d", 2) + " P3[P]: " + F("%3d", 1));
    EXPECT_EQ(lines[i + 1], "    PRN" + F("%20s%20s", "P3[C] DCB[m +- m]", "P3[P] DCB[m +- m]"));
    EXPECT_EQ(lines[i + 3], "    G05" + F("%10.4Lf +-%7.4Lf", 0.125L, Prec(5)));
    EXPECT_EQ(lines[i + 4], "    G12");
    EXPECT_EQ(lines[i + 5], "    R03");
    // No determined P3[P] bias: the mean has nothing to divide and is NaN.
    EXPECT_EQ(lines[i + 7], "   ADCB" + std::string("     P3[C]") + F("%10.4Lf", Prec(5))
                                + "     P3[P]" + F("%10s", "nan"));
}

TEST(PrintStaticDCB, NoSectionWithoutEstimatedBiasesAndNoFileWithoutItsFlag)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "dcboff");
    ctx.gc.isOutDCBFile = false;
    std::string text = Report(ctx);
    EXPECT_NE(text.find("DIFFERENTIAL CODE BIASES:"), std::string::npos);
    EXPECT_FALSE(std::ifstream(ctx.gc.estdcbfile).good());

    ctx.gc.isGPSxdcb = ctx.gc.isGLNxdcb = ctx.gc.isGALxdcb = false;
    ctx.gc.isOutDCBFile = true;
    text = Report(ctx);
    EXPECT_EQ(text.find("DIFFERENTIAL CODE BIASES:"), std::string::npos);
    EXPECT_EQ(text.find("ADCB"), std::string::npos);
    EXPECT_FALSE(std::ifstream(ctx.gc.estdcbfile).good());
}
