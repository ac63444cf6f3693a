// The delay record: products, sum, and its printed form read back.
#include "delays/gTropDelay.h"

#include <gtest/gtest.h>

#include <sstream>
#include "numerics/NearLD.h"

namespace {
// Products and sums of decimals of order 1 to 25: round-off only.
constexpr long double RoundOffTol_m = 1e-15L;
// Half a unit of the last printed decimal: 12 for mapping values, 5 for
// delays.
constexpr long double MapPrintTol = 0.5e-12L;
constexpr long double DelayPrintTol_m = 0.5e-5L;
}  // namespace

TEST(TropDelay, StartsNeutralAndFormsSlantDelays)
{
    gTropDelay td;
    EXPECT_EQ(td.Delay(), 0.0L);
    EXPECT_EQ(td.MappFunDry(), 1.0L);
    EXPECT_EQ(td.MappFunWet(), 1.0L);
    td.tdry = 2.3L;
    td.twet = 0.15L;
    td.mfdry = 10.0L;
    td.mfwet = 11.0L;
    EXPECT_NEAR_LD(td.DelayDry(), 23.0L, RoundOffTol_m);
    EXPECT_NEAR_LD(td.DelayWet(), 1.65L, RoundOffTol_m);
    EXPECT_NEAR_LD(td.Delay(), 24.65L, RoundOffTol_m);
    EXPECT_EQ(td.ZenithDelayDry(), 2.3L);
    EXPECT_EQ(td.ZenithDelayWet(), 0.15L);
}

TEST(TropDelay, PrintsFixedColumnsAndLeavesTheStreamAsItWas)
{
    gTropDelay td;
    td.mfdry = 10.123456789012L;
    td.tdry = 2.30697L;
    td.mfwet = 11.5L;
    td.twet = 0.12345L;
    std::ostringstream out;
    out << std::scientific;
    out.precision(3);
    out << td;
    const std::string s = out.str();
    // 16 columns for the mapping value, then " x "; a delay of metres needs
    // 7 characters for 5 decimals and widens its 6 columns by one.
    ASSERT_EQ(s.size(), 2u * (16u + 3u + 7u)) << s;
    EXPECT_EQ(s.substr(16, 3), " x ");
    EXPECT_EQ(s.substr(42, 3), " x ");
    // Read back: each value to half a unit of its last printed decimal.
    std::istringstream in(s);
    long double a, b, c, d;
    std::string x1, x2;
    in >> a >> x1 >> b >> c >> x2 >> d;
    EXPECT_NEAR_LD(a, td.mfdry, MapPrintTol);
    EXPECT_NEAR_LD(b, td.tdry, DelayPrintTol_m);
    EXPECT_NEAR_LD(c, td.mfwet, MapPrintTol);
    EXPECT_NEAR_LD(d, td.twet, DelayPrintTol_m);
    // The caller's scientific notation survives.
    EXPECT_TRUE(out.flags() & std::ios::scientific);
    EXPECT_EQ(out.precision(), 3);
}
