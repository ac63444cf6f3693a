// Troposphere, gradient and ambiguity tables of the static report, and the
// troposphere file.
#include "reporting/PrintStaticTropo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include "ReportSupport.h"
#include "reporting/PrintStatic.h"
#include "reporting/PrintStaticAmbiguities.h"

using namespace reporttest;

namespace {

long double Prec(long ix) { return std::sqrt(0.01L * static_cast<long double>(ix) * 9e-4L); }

std::string Report(Context& ctx)
{
    Capture out(std::cout);
    PrintStatic(ctx.gc);
    return out.Text();
}

const std::string Mark = " **** UNDETERMINED ****";
// The fixture's epochs: MJD 59025 is 2020-06-25 (day 177 of 2020).
const std::string Node0 = " 2020-06-25 00:00:00", Node1 = " 2020-06-25 02:00:00";

}  // namespace

TEST(PrintStaticTropo, DelayNodesWithModelledDryAndEstimatedWetParts)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "trop");
    const std::vector<std::string> lines = Lines(Report(ctx));
    const long t = Find(lines, "  SITE SPECIEFIC TROPOSPHERE PARAMETERS:");
    ASSERT_GE(t, 0);
    const size_t i = static_cast<size_t>(t);
    ASSERT_GE(lines.size(), i + 14);
    EXPECT_EQ(lines[i + 3], "  ZENITH TROPOSPHERE DELAYS");
    EXPECT_EQ(lines[i + 4], "    Parameter type: continuous piece-wise linear function");
    EXPECT_EQ(lines[i + 5], "    Units: meters");
    EXPECT_EQ(lines[i + 6], "");
    EXPECT_EQ(lines[i + 7], "    ID              TROPO_EPOCH    DRY[MOD]  WET[EST]     TOTAL   PRECISION");
    EXPECT_EQ(lines[i + 8], "   " + std::string(72, '-'));
    // Dry 2.3456 m from the model, wet 0.1234 m estimated: 2.4690 m in all.
    EXPECT_EQ(lines[i + 9], "     1     " + Node0 + F("%12.4Lf%10.4Lf%10.4Lf +- %8.4Lf", 2.3456L, 0.1234L, 2.469L, Prec(9)));
    EXPECT_EQ(lines[i + 10], "     2     " + Node1 + F("%34s", Mark.c_str()));
    EXPECT_EQ(lines[i + 11], "   " + std::string(72, '-'));
    EXPECT_EQ(lines[i + 12], "");
    EXPECT_EQ(lines[i + 13], "");

    // The undetermined node leaves no line in the file.
    const std::vector<std::string> file = Lines(orvotest::ReadFile(ctx.gc.esttropfile));
    ASSERT_EQ(file.size(), 3u);
    EXPECT_EQ(file[0], "# GNSS-STATION         TROPOSPHERE_EPOCH       DRY[MOD]  WET[EST]     TOTAL   PRECISION");
    EXPECT_EQ(file[1], "#" + std::string(86, '-'));
    EXPECT_EQ(file[2], F("%-20s", "ESBC") + Node0 + F("%15.4Lf%10.4Lf%10.4Lf +- %8.4Lf", 2.3456L, 0.1234L, 2.469L, Prec(9)));
}

TEST(PrintStaticTropo, GradientNodesEastThenNorth)
{
    Context ctx;
    FillSolution(ctx);
    const std::vector<std::string> lines = Lines(Report(ctx));
    const long t = Find(lines, "  TROPOSPHERE EAST AND NORTH GRADIENTS");
    ASSERT_GE(t, 0);
    const size_t i = static_cast<size_t>(t);
    ASSERT_GE(lines.size(), i + 11);
    EXPECT_EQ(lines[i + 4], "    ID         TROPO_GRAD_EPOCH          E-W GRAD   PRECISION       S-N GRAD   PRECISION");
    EXPECT_EQ(lines[i + 5], "   " + std::string(85, '-'));
    EXPECT_EQ(lines[i + 6], "     1     " + Node0 + F("%18.4Lf +- %8.4Lf", 0.0012L, Prec(11))
                                + F("%15.4Lf +- %8.4Lf", -0.0021L, Prec(13)));
    EXPECT_EQ(lines[i + 7], "     2     " + Node1 + F("%18.4Lf +- %8.4Lf", -0.0008L, Prec(12))
                                + F("%27s", Mark.c_str()));
    EXPECT_EQ(lines[i + 8], "   " + std::string(85, '-'));
    EXPECT_EQ(lines[i + 9], "");
    EXPECT_EQ(lines[i + 10], "");

    ctx.gc.ifEstTropoGrad = false;
    EXPECT_EQ(Find(Lines(Report(ctx)), "  TROPOSPHERE EAST AND NORTH GRADIENTS"), -1);
}

TEST(PrintStaticTropo, NothingWithoutEstimatedTroposphere)
{
    Context ctx;
    FillSolution(ctx);
    AskForFiles(ctx.gc, "tropoff");
    ctx.gc.ifEstTropo = false;  // gradients stay asked for, but hang on the delays
    const std::string text = Report(ctx);
    EXPECT_EQ(text.find("TROPOSPHERE"), std::string::npos);
    EXPECT_FALSE(std::ifstream(ctx.gc.esttropfile).good());

    ctx.gc.ifEstTropo = true;
    ctx.gc.isOutTropFile = false;
    EXPECT_NE(Report(ctx).find("ZENITH TROPOSPHERE DELAYS"), std::string::npos);
    EXPECT_FALSE(std::ifstream(ctx.gc.esttropfile).good());
}

TEST(PrintStaticAmbiguities, ArcsBySatelliteWithEpochsValuesAndMeanPrecision)
{
    Context ctx;
    FillSolution(ctx);
    const std::vector<std::string> lines = Lines(Report(ctx));
    const long t = Find(lines, "  PHASE L3 AMBIGUITIES (REAL VALUES):");
    ASSERT_GE(t, 0);
    const size_t i = static_cast<size_t>(t);
    ASSERT_GE(lines.size(), i + 15);
    EXPECT_EQ(lines[i + 3], "    Number of all ambiguities      : " + F("%10d", 3));
    EXPECT_EQ(lines[i + 4], "");
    EXPECT_EQ(lines[i + 5], "    ID     PRN        START_EPOCH              END_EPOCH                     L3 AMBIGUITY[m]         #OBS/AMB");
    const std::string rule = "   " + std::string(106, '-');
    EXPECT_EQ(lines[i + 6], rule);
    // Epochs 0..3 of the fixture are 01:00:00 to 01:01:30 in steps of 30 s.
    EXPECT_EQ(lines[i + 7], "     1     G 5    2020-06-25 01:00:00    2020-06-25 01:00:30"
                                + F("%20.4Lf +- %10.4Lf%15d", 123.4567L, Prec(15), 25));
    EXPECT_EQ(lines[i + 8], "     2     G 5    2020-06-25 01:01:00    2020-06-25 01:01:30"
                                + F("%34s%15d", Mark.c_str(), 0));
    EXPECT_EQ(lines[i + 9], "");  // next satellite
    EXPECT_EQ(lines[i + 10], "     3     E11    2020-06-25 01:00:00    2020-06-25 01:01:30"
                                 + F("%20.4Lf +- %10.4Lf%15d", 0.0042L, Prec(17), 60));
    EXPECT_EQ(lines[i + 11], rule);
    EXPECT_EQ(lines[i + 12], "                                                     AVERAGE AMBIGUITY PRECISION:"
                                 + F("%13.4Lf", (Prec(15) + Prec(17)) / 2.0L));
    EXPECT_EQ(lines[i + 13], "");
    EXPECT_EQ(lines[i + 14], "");

    ctx.gc.nAmb = 0;
    EXPECT_EQ(Find(Lines(Report(ctx)), "  PHASE L3 AMBIGUITIES (REAL VALUES):"), -1);
}
