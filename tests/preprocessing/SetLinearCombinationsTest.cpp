#include "preprocessing/SetLinearCombinations.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <vector>

#include "preprocessing/StagingSupport.h"
#include "numerics/NearLD.h"

using stagingtest::Capture;
using stagingtest::Context;

namespace {

// Carrier wavelengths from the GPS frequencies 154 and 120 times
// 10.23 MHz, computed here rather than taken from the program's tables.
constexpr long double C = 299792458.0L;
constexpr long double F0 = 10.23e6L;
constexpr long double Lambda1 = C / (154.0L * F0);
constexpr long double Lambda2 = C / (120.0L * F0);
// One millisecond of receiver clock in metres.
constexpr long double MS_m = C * 1e-3L;
// Combinations of 2e7 m values with factors up to 4.5: long double
// round-off is 1e-11 m, so a micrometre leaves room and still sees any
// wrong factor or a missed millisecond.
constexpr long double CombTol_m = 1e-6L;

// Four GPS satellites over three epochs, ranges fixed, no ionosphere:
// phases equal the range in cycles, codes the range (P1 `p1Bias_m` above
// C1). From epoch `jumpEpoch` on, the receiver clock has stepped by one
// millisecond, which the codes see and the phases (integrated from the
// start) do not.
void Build(Context& c, long jumpEpoch, long double p1Bias_m)
{
    RINEXHeader& h = c.rnxh;
    RINEXData& d = c.rnxd;
    h.iC1 = h.iP1 = h.iL1 = h.iL2 = h.iP2 = true;
    const int nsat = 4, nep = 3;
    d.SetNRecords(nep, nep * nsat);
    d.epoch.Resize(nep, 1, mjd());
    d.nsat.Resize(nep, 1, nsat);
    d.sat.Resize(nep * nsat, 1, 0);
    for (matrix<gnssobs>* m : {&d.C1, &d.P1, &d.L1, &d.L2, &d.P2})
        m->Resize(nep * nsat, 1, gnssobs());
    long k = 0;
    for (int i = 0; i < nep; ++i) {
        d.epoch(i) = mjd(59025, 30.0L * i);
        for (int s = 0; s < nsat; ++s, ++k) {
            d.sat(k) = static_cast<short>(s + 3);
            const long double rho = 2.1e7L + 7.0e5L * s;
            const long double clk = i >= jumpEpoch ? MS_m : 0.0L;
            d.C1(k) = gnssobs(rho + clk);
            d.P1(k) = gnssobs(rho + clk + p1Bias_m);
            d.P2(k) = gnssobs(rho + clk);
            d.L1(k) = gnssobs(rho / Lambda1);
            d.L2(k) = gnssobs(rho / Lambda2);
        }
    }
}

std::string RunStage(gCPosC& g)
{
    Capture out(std::cout);
    SetLinearCombinations(g);
    return out.Text();
}

}  // namespace

TEST(SetLinearCombinations, MillisecondJumpIsRemovedBeforeThePhaseCombinations)
{
    Context c;
    c.gc.ifPc3 = c.gc.ifL3 = true;
    Build(c, 1, 0.0L);
    const std::string out = RunStage(c.gc);
    EXPECT_NE(out.find("SETTING LINEAR COMBINATION OF OBSERVATIONS:"), std::string::npos);
    EXPECT_NE(out.find("  Correcting observations for MS jumps: 1\n"), std::string::npos) << out;
    ASSERT_TRUE(c.rnxh.iL3);
    ASSERT_TRUE(c.rnxh.iPC3);
    // Without ionosphere L3 equals P3 when the phases follow the codes
    // through the jump; an L3 formed before the correction would lag by
    // 299 792.458 m from epoch 1 on.
    for (long k = 0; k < c.rnxd.GetNObs(); ++k)
        EXPECT_NEAR_LD(c.rnxd.L3(k).GetObs() - c.rnxd.PC3(k).GetObs(), 0.0L, CombTol_m) << k;
    // L4 of equal ranges on both carriers is zero before and after.
    for (long k = 0; k < c.rnxd.GetNObs(); ++k)
        EXPECT_NEAR_LD(c.rnxd.L4(k).GetObs(), 0.0L, CombTol_m) << k;
}

TEST(SetLinearCombinations, MelbourneWuebbenaTakesTheCodeOfTheP3InUse)
{
    // P1 is 2 m above C1. The MW code part is f1/(f1+f2)·X + f2/(f1+f2)·P2,
    // so the MW with C1 lies 2·154/274 m above the one with P1.
    const long double bias = 2.0L;
    Context withC1, withP1;
    withC1.gc.ifPc3 = withC1.gc.ifL3 = true;
    withP1.gc.ifPp3 = withP1.gc.ifL3 = true;
    Build(withC1, 99, bias);
    Build(withP1, 99, bias);
    const std::string outC1 = RunStage(withC1.gc);
    const std::string outP1 = RunStage(withP1.gc);
    EXPECT_NE(outC1.find("     P3[C1,P2/C7] Linear combination!\n"), std::string::npos);
    EXPECT_NE(outC1.find("     Melbourne-Wuebbena[L1,L2/L7,C1,P2/C7] Linear combination!\n"),
              std::string::npos);
    EXPECT_EQ(outC1.find("P3[P1,P2/C7]"), std::string::npos);
    EXPECT_NE(outP1.find("     P3[P1,P2/C7] Linear combination!\n"), std::string::npos);
    EXPECT_NE(outP1.find("     Melbourne-Wuebbena[L1,L2/L7,P1,P2/C7] Linear combination!\n"),
              std::string::npos);
    EXPECT_NE(outP1.find("  Correcting observations for MS jumps: 0\n"), std::string::npos);
    ASSERT_TRUE(withC1.rnxh.iMW);
    ASSERT_TRUE(withP1.rnxh.iMW);
    EXPECT_TRUE(withP1.rnxh.iPP3);
    EXPECT_FALSE(withP1.rnxh.iPC3);
    for (long k = 0; k < withC1.rnxd.GetNObs(); ++k)
        EXPECT_NEAR_LD(withC1.rnxd.MW(k).GetObs() - withP1.rnxd.MW(k).GetObs(),
                    bias * 154.0L / 274.0L, CombTol_m)
            << k;
}

TEST(SetLinearCombinations, CodeOnlyRunFormsNoPhaseCombination)
{
    // Without L3 the phases are left alone: no jump search, no L3, L4, MW,
    // and the codes' millisecond stays in P3 (the clock takes it).
    Context c;
    c.gc.ifPc3 = true;
    Build(c, 1, 0.0L);
    const std::string out = RunStage(c.gc);
    EXPECT_EQ(out.find("MS jumps"), std::string::npos);
    EXPECT_NE(out.find("  Observations linear combinations    :\n"), std::string::npos);
    EXPECT_EQ(out.find("L3[L1,L2/L7]"), std::string::npos);
    EXPECT_FALSE(c.rnxh.iL3);
    EXPECT_FALSE(c.rnxh.iL4);
    EXPECT_FALSE(c.rnxh.iMW);
    ASSERT_TRUE(c.rnxh.iPC3);
    const long nsat = c.rnxd.nsat(0);
    for (long k = 0; k < c.rnxd.GetNObs(); ++k) {
        const long double rho = 2.1e7L + 7.0e5L * (k % nsat);
        EXPECT_NEAR_LD(c.rnxd.PC3(k).GetObs(), rho + (k >= nsat ? MS_m : 0.0L), CombTol_m) << k;
        EXPECT_NEAR_LD(c.rnxd.L1(k).GetObs(), rho / Lambda1, 1e-6L) << k;  // cycles, untouched
    }
}
