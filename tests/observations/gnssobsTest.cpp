// The observation value types: null rule, field decoding, arithmetic and
// the listing formats.
#include <gtest/gtest.h>

#include <sstream>

#include "observations/gnssobs.h"
#include "numerics/NearLD.h"

namespace {

// Values decoded from text are compared to the decimal they were written
// as; a long double parse is exact to ~1e-19 relative, far below 1e-12.
constexpr long double DecodeTol = 1e-12L;

std::string Printed(const gnssobs& o, int type)
{
    const int keep = gnssobsns::PrintType;
    gnssobsns::PrintType = type;
    std::ostringstream s;
    s << o;
    gnssobsns::PrintType = keep;
    return s.str();
}

std::string Printed(const gnssobsshort& o, int type)
{
    const int keep = gnssobsshortns::PrintType;
    gnssobsshortns::PrintType = type;
    std::ostringstream s;
    s << o;
    gnssobsshortns::PrintType = keep;
    return s.str();
}

}  // namespace

TEST(GnssObs, NullLimitsDifferBetweenTheTwoTypes)
{
    EXPECT_TRUE(gnssobs().IsNull());
    EXPECT_TRUE(gnssobs(0.00009L).IsNull());
    EXPECT_FALSE(gnssobs(0.00011L).IsNull());
    EXPECT_TRUE(gnssobs(-0.00009L).IsNull());
    EXPECT_FALSE(gnssobsshort(0.00009L).IsNull());
    EXPECT_TRUE(gnssobsshort(0.000009L).IsNull());
}

TEST(GnssObs, AssignmentClearsFlagsAndAdditionKeepsThem)
{
    gnssobs o(100.0L, 1, 7);
    o += 0.5L;
    EXPECT_NEAR_LD(o.GetObs(), 100.5L, DecodeTol);
    EXPECT_EQ(o.GetLli(), 1);
    EXPECT_EQ(o.GetSs(), 7);
    gnssobs copy(o);
    EXPECT_EQ(copy.GetLli(), 1);
    EXPECT_EQ(copy.GetSs(), 7);
    o = 3.0L;
    EXPECT_NEAR_LD(o.GetObs(), 3.0L, DecodeTol);
    EXPECT_EQ(o.GetLli(), 0);
    EXPECT_EQ(o.GetSs(), 0);
}

TEST(GnssObs, DecodesOneRinexField)
{
    gnssobs o;
    o >> " 145124050.10606";
    EXPECT_NEAR_LD(o.GetObs(), 145124050.106L, DecodeTol * 145124050.106L);
    EXPECT_EQ(o.GetLli(), 0);
    EXPECT_EQ(o.GetSs(), 6);
    o >> "     -2620.70216";
    EXPECT_NEAR_LD(o.GetObs(), -2620.702L, DecodeTol * 2620.702L);
    EXPECT_EQ(o.GetLli(), 1);
    EXPECT_EQ(o.GetSs(), 6);
    // A blank field is a missing observation with no flags.
    o >> "                ";
    EXPECT_TRUE(o.IsNull());
    EXPECT_EQ(o.GetLli(), 0);
    EXPECT_EQ(o.GetSs(), 0);
    // Text that is no number reads 0 by the atof rule: a missing value.
    o >> "  abcdefghijk 5 ";
    EXPECT_TRUE(o.IsNull());
    EXPECT_EQ(o.GetLli(), 5);

    gnssobsshort d;
    d >> "     -1957.227 5";
    EXPECT_NEAR_LD(d.GetObs(), -1957.227L, DecodeTol * 1957.227L);
}

TEST(GnssObs, ScalingCarriesFlagsSumsAndDifferencesDoNot)
{
    const gnssobs a(10.0L, 1, 8), b(4.0L, 2, 9), null;
    const gnssobs s = 2.5L * a;
    EXPECT_NEAR_LD(s.GetObs(), 25.0L, DecodeTol);
    EXPECT_EQ(s.GetLli(), 1);
    EXPECT_EQ(s.GetSs(), 8);
    EXPECT_NEAR_LD((a * 2.5L).GetObs(), 25.0L, DecodeTol);

    const gnssobs d = a - b, p = a + b;
    EXPECT_NEAR_LD(d.GetObs(), 6.0L, DecodeTol);
    EXPECT_NEAR_LD(p.GetObs(), 14.0L, DecodeTol);
    EXPECT_EQ(d.GetLli() + d.GetSs() + p.GetLli() + p.GetSs(), 0);
    // A null operand makes the whole result null, whatever the other holds.
    EXPECT_TRUE((a - null).IsNull());
    EXPECT_TRUE((null + b).IsNull());
    EXPECT_TRUE((a + gnssobs(0.00005L)).IsNull());
}

TEST(GnssObs, ListingFormats)
{
    const gnssobs o(1234.5678L, 1, 7);
    EXPECT_EQ(Printed(o, 1), "      1234.568 1 7");
    EXPECT_EQ(Printed(o, 0), "      1234.56817");
    EXPECT_EQ(Printed(gnssobs(), 1), "         *.*** * *");
    EXPECT_EQ(Printed(gnssobs(), 0), "         0.000  ");
    // Null by IsNull, yet above the print limit of 0.00001: shown as a number.
    EXPECT_EQ(Printed(gnssobs(0.00009L), 1), "         0.000 0 0");
    gnssobsns::Width = 10;
    EXPECT_EQ(Printed(o, 2), "  1234.568");
    EXPECT_EQ(Printed(gnssobs(), 2), "     *.***");
    gnssobsns::Width = 14;

    const gnssobsshort d(-12.25L);
    EXPECT_EQ(Printed(d, 1), "   -12.250 0 0");
    EXPECT_EQ(Printed(gnssobsshort(), 1), "     *.*** * *");
    EXPECT_EQ(Printed(d, 0), "       -12.250  ");
    EXPECT_EQ(Printed(gnssobsshort(), 0), "             0  ");
}

TEST(GnssObs, PrintingLeavesTheStreamFormatAlone)
{
    std::ostringstream s;
    s.precision(9);
    s << gnssobs(1.0L) << ' ' << 0.5;
    EXPECT_EQ(s.precision(), 9);
    EXPECT_NE(s.str().find(" 0.5"), std::string::npos);
    EXPECT_EQ(s.str().find("0.500"), std::string::npos);
}
