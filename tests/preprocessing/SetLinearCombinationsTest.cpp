#include "preprocessing/SetLinearCombinations.h"

#include "preprocessing/StagingSupport.h"

using namespace stagingtest;

namespace {

// Carrier wavelengths from the GPS frequencies 154 and 120 times
// 10.23 MHz, computed here rather than taken from the program's tables.
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
    RINEXData& d = c.rnxd;
    c.rnxh.iC1 = c.rnxh.iP1 = c.rnxh.iL1 = c.rnxh.iL2 = c.rnxh.iP2 = true;
    const int nsat = 4, nep = 3;
    d.SetNRecords(nep, nep * nsat);
    d.epoch.Resize(nep, 1, mjd());
    d.nsat.Resize(nep, 1, nsat);
    d.sat.Resize(nep * nsat, 1, 0);
    for (matrix<gnssobs>* m : {&d.C1, &d.P1, &d.L1, &d.L2, &d.P2}) m->Resize(nep * nsat, 1, gnssobs());
    long k = 0;
    for (int i = 0; i < nep; ++i) {
        d.epoch(i) = mjd(59025, 30.0L * i);
        for (int s = 0; s < nsat; ++s, ++k) {
            d.sat(k) = static_cast<short>(s + 3);
            const long double rho = 2.1e7L + 7.0e5L * s, clk = i >= jumpEpoch ? MS_m : 0.0L;
            d.C1(k) = gnssobs(rho + clk);
            d.P1(k) = gnssobs(rho + clk + p1Bias_m);
            d.P2(k) = gnssobs(rho + clk);
            d.L1(k) = gnssobs(rho / Lambda1);
            d.L2(k) = gnssobs(rho / Lambda2);
        }
    }
}

std::string RunStage(Context& c, bool pc3, bool pp3, bool l3)
{
    Build(c, 1, 2.0L);
    c.gc.ifPc3 = pc3;
    c.gc.ifPp3 = pp3;
    c.gc.ifL3 = l3;
    Capture out(std::cout);
    SetLinearCombinations(c.gc);
    return out.Text();
}

}  // namespace

TEST(SetLinearCombinations, JumpRemovedAndPhaseCombinationsFollowTheP3InUse)
{
    // P1 is 2 m above C1 and the clock jumps at epoch 1. Without ionosphere
    // L3 equals P3 when the phases follow the codes through the jump; an L3
    // formed before the correction would lag by 299 792.458 m from epoch 1
    // on. L4 of equal ranges on both carriers is zero. The MW code part is
    // f1/(f1+f2)·X + f2/(f1+f2)·P2, so the MW with C1 lies 2·154/274 m above
    // the one with P1. Without L3 the phases are left alone: no jump search,
    // no L3, L4, MW, and the codes' millisecond stays in P3 (the clock takes it).
    Context withC1, withP1, codeOnly;
    const std::string outC1 = RunStage(withC1, true, false, true), outP1 = RunStage(withP1, false, true, true),
                      outCode = RunStage(codeOnly, true, false, false);
    for (const char* line : {"SETTING LINEAR COMBINATION OF OBSERVATIONS:", "  Correcting observations for MS jumps: 1\n",
                             "     P3[C1,P2/C7] Linear combination!\n",
                             "     Melbourne-Wuebbena[L1,L2/L7,C1,P2/C7] Linear combination!\n"})
        EXPECT_TRUE(Has(outC1, line)) << line << outC1;
    EXPECT_TRUE(Has(outP1, "     P3[P1,P2/C7] Linear combination!\n"));
    EXPECT_TRUE(Has(outP1, "     Melbourne-Wuebbena[L1,L2/L7,P1,P2/C7] Linear combination!\n"));
    EXPECT_TRUE(Has(outCode, "  Observations linear combinations    :\n"));
    EXPECT_FALSE(Has(outC1, "P3[P1,P2/C7]") || Has(outCode, "MS jumps") || Has(outCode, "L3[L1,L2/L7]"));
    ASSERT_TRUE(withC1.rnxh.iL3 && withC1.rnxh.iPC3 && withC1.rnxh.iMW && withP1.rnxh.iMW && withP1.rnxh.iPP3);
    EXPECT_FALSE(withP1.rnxh.iPC3 || codeOnly.rnxh.iL3 || codeOnly.rnxh.iL4 || codeOnly.rnxh.iMW);
    ASSERT_TRUE(codeOnly.rnxh.iPC3);
    const long nsat = 4;
    for (long k = 0; k < withC1.rnxd.GetNObs(); ++k) {
        const long double rho = 2.1e7L + 7.0e5L * (k % nsat);
        EXPECT_NEAR_LD(withC1.rnxd.L3(k).GetObs() - withC1.rnxd.PC3(k).GetObs(), 0.0L, CombTol_m) << k;
        EXPECT_NEAR_LD(withC1.rnxd.L4(k).GetObs(), 0.0L, CombTol_m) << k;
        EXPECT_NEAR_LD(withC1.rnxd.MW(k).GetObs() - withP1.rnxd.MW(k).GetObs(), 2.0L * 154.0L / 274.0L, CombTol_m) << k;
        EXPECT_NEAR_LD(codeOnly.rnxd.PC3(k).GetObs(), rho + (k >= nsat ? MS_m : 0.0L), CombTol_m) << k;
        EXPECT_NEAR_LD(codeOnly.rnxd.L1(k).GetObs(), rho / Lambda1, CombTol_m) << k;  // cycles, untouched
    }
}
