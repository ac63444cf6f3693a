// Combinations against simulated signals: a range, a 1/f² ionosphere that
// advances phase and delays code, and integer ambiguities.
#include <gtest/gtest.h>

#include <cmath>

#include "observations/GALILEOc.h"
#include "observations/GLC.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "observations/LinearCombinations.h"
#include "numerics/NearLD.h"

namespace {

constexpr long double C = 299792458.0L;
// The stored factors and wavelengths are within 2e-16 (relative) of the
// exact ratios; applied to ~6e7 m of combined signal that is ~1e-8 m. A
// millimetre would mean a wrong factor, so 1e-6 m separates the two.
constexpr long double CombTol_m = 1e-6L;

// One satellite-receiver pair as the receiver would see it.
struct Signal {
    long double f1, f2;    // Hz
    long double l1, l2;    // phase, cycles
    long double p1, p2;    // code, m
    long double I1;        // ionosphere delay on the first frequency, m
};

// Range rho, ionosphere I1 on f1 (I2 = I1·f1²/f2²), ambiguities N1, N2.
Signal Simulate(long double f1, long double f2, long double rho, long double I1,
                long double N1, long double N2)
{
    const long double I2 = I1 * (f1 / f2) * (f1 / f2);
    Signal s{f1, f2, 0, 0, 0, 0, I1};
    s.l1 = (rho - I1) / (C / f1) + N1;
    s.l2 = (rho - I2) / (C / f2) + N2;
    s.p1 = rho + I1;
    s.p2 = rho + I2;
    return s;
}

struct System {
    const char* name;
    short sat;
    long double f1, f2;
};

// Loads GLC for every case so that the test order does not matter.
std::vector<System> Systems()
{
    GLONASSc::SetFrequency(-7.0L, 0);
    GLONASSc::SetFrequency(6.0L, 1);
    return {{"GPS", 12, GPSc::freq1, GPSc::freq2},
            {"Galileo", 211, GALILEOc::freq1, GALILEOc::freq2},
            {"GLONASS k=-7", 101, 1602e6L - 7 * 562500.0L, 1246e6L - 7 * 437500.0L},
            {"GLONASS k=+6", 102, 1602e6L + 6 * 562500.0L, 1246e6L + 6 * 437500.0L}};
}

}  // namespace

TEST(LinearCombinations, IonosphereFreeRemovesAnInverseSquareDelayExactly)
{
    const long double rho = 22345678.901L;
    for (const System& sys : Systems()) {
        ASSERT_TRUE(GLC::LoadSystem(sys.sat)) << sys.name;
        for (long double I1 : {0.0L, 3.5L, 48.0L}) {
            const Signal s = Simulate(sys.f1, sys.f2, rho, I1, 0.0L, 0.0L);
            EXPECT_NEAR_LD(GNSS_L3(s.l1, s.l2), rho, CombTol_m) << sys.name << " I1=" << (double)I1;
            EXPECT_NEAR_LD(GNSS_P3(s.p1, s.p2), rho, CombTol_m) << sys.name;
            const gnssobs L3 = GNSS_L3(gnssobs(s.l1), gnssobs(s.l2));
            EXPECT_NEAR_LD(L3.GetObs(), rho, CombTol_m) << sys.name;
        }
    }
}

TEST(LinearCombinations, GlonassCodeCombinationIgnoresTheLoadedSystem)
{
    const Signal s = Simulate(1602e6L, 1246e6L, 2.1e7L, 12.0L, 0, 0);
    ASSERT_TRUE(GLC::LoadSystem(3));   // GPS factors in GLC
    EXPECT_NEAR_LD(GNSS_P3R(s.p1, s.p2), 2.1e7L, CombTol_m);
    // GPS factors on GLONASS codes leave about 1% of the 12 m ionosphere.
    EXPECT_GT(std::fabs(GNSS_P3(s.p1, s.p2) - 2.1e7L), 0.05L);
}

TEST(LinearCombinations, GeometryFreeRemovesTheRangeWithOppositeSigns)
{
    for (const System& sys : Systems()) {
        ASSERT_TRUE(GLC::LoadSystem(sys.sat));
        const long double I1 = 7.25L;
        const long double dI = I1 * ((sys.f1 / sys.f2) * (sys.f1 / sys.f2) - 1.0L);
        for (long double rho : {2.0e7L, 2.6e7L}) {
            const Signal s = Simulate(sys.f1, sys.f2, rho, I1, 0, 0);
            // Phase is first minus second, code second minus first: both
            // give +(I2 - I1).
            EXPECT_NEAR_LD(GNSS_L4(s.l1, s.l2), dI, CombTol_m) << sys.name;
            EXPECT_NEAR_LD(GNSS_P4(s.p1, s.p2), dI, CombTol_m) << sys.name;
            EXPECT_NEAR_LD(GNSS_P4(gnssobs(s.p1), gnssobs(s.p2)).GetObs(), dI, CombTol_m);
            EXPECT_NEAR_LD(GNSS_L4(gnssobs(s.l1), gnssobs(s.l2)).GetObs(), dI, CombTol_m);
        }
    }
}

TEST(LinearCombinations, MelbourneWuebbenaIsTheWideLaneAmbiguityTimesItsWavelength)
{
    for (const System& sys : Systems()) {
        ASSERT_TRUE(GLC::LoadSystem(sys.sat));
        const long double lamWL = C / (sys.f1 - sys.f2);
        for (auto [N1, N2] : {std::pair<long double, long double>{0, 0}, {17, -4}, {-250, -300}}) {
            const Signal s = Simulate(sys.f1, sys.f2, 2.3e7L, 9.0L, N1, N2);
            EXPECT_NEAR_LD(GNSS_MW(s.l1, s.l2, s.p1, s.p2), lamWL * (N1 - N2), CombTol_m)
                << sys.name;
            const gnssobs mw = GNSS_MW(gnssobs(s.l1), gnssobs(s.l2), gnssobs(s.p1), gnssobs(s.p2));
            EXPECT_NEAR_LD(mw.GetObs(), lamWL * (N1 - N2), CombTol_m) << sys.name;
        }
    }
}

TEST(LinearCombinations, LanesAgreeWithTheirPhysicalDefinitions)
{
    for (const System& sys : Systems()) {
        ASSERT_TRUE(GLC::LoadSystem(sys.sat));
        const long double rho = 2.05e7L, I1 = 5.0L, f1 = sys.f1, f2 = sys.f2;
        const Signal s = Simulate(f1, f2, rho, I1, 0, 0);
        // Wide lane: phase sees the ionosphere as +I1·f1/f2, with the sign
        // of a code; narrow-lane code sees the same.
        EXPECT_NEAR_LD(GNSS_L5(s.l1, s.l2), rho + I1 * f1 / f2, CombTol_m) << sys.name;
        EXPECT_NEAR_LD(GNSS_NLP(s.p1, s.p2), rho + I1 * f1 / f2, CombTol_m) << sys.name;
        // Narrow-lane phase: -I1·f1/f2; wide-lane code: -I1·f1/f2.
        EXPECT_NEAR_LD(GNSS_NLL(s.l1, s.l2), rho - I1 * f1 / f2, CombTol_m) << sys.name;
        EXPECT_NEAR_LD(GNSS_P5(s.p1, s.p2), rho - I1 * f1 / f2, CombTol_m) << sys.name;
        // GRAPHIC: half code plus half phase cancels the ionosphere of f1;
        // code minus phase doubles it.
        EXPECT_NEAR_LD(GNSS_CLI(s.p1, s.l1), rho, CombTol_m) << sys.name;
        EXPECT_NEAR_LD(GNSS_CL1(s.p1, s.l1), 2.0L * I1, CombTol_m) << sys.name;
    }
}

TEST(LinearCombinations, NullOperandGivesNullResultAndNoFlags)
{
    ASSERT_TRUE(GLC::LoadSystem(1));
    const gnssobs l1(1.2e8L, 1, 7), l2(9.3e7L, 0, 6), p1(2.2e7L, 0, 5), p2(2.2e7L + 3, 0, 5);
    const gnssobs none;
    EXPECT_TRUE(GNSS_MW(none, l2, p1, p2).IsNull());
    EXPECT_TRUE(GNSS_MW(l1, l2, p1, none).IsNull());
    EXPECT_TRUE(GNSS_L3(l1, none).IsNull());
    EXPECT_TRUE(GNSS_P3(none, p2).IsNull());
    EXPECT_TRUE(GNSS_L4(none, l2).IsNull());
    EXPECT_TRUE(GNSS_P4(p1, none).IsNull());
    EXPECT_TRUE(GNSS_NLL(l1, none).IsNull());
    EXPECT_TRUE(GNSS_NLP(none, p2).IsNull());
    EXPECT_TRUE(GNSS_P5(p1, none).IsNull());
    const gnssobs full = GNSS_L3(l1, l2);
    EXPECT_FALSE(full.IsNull());
    EXPECT_EQ(full.GetLli(), 0);
    EXPECT_EQ(full.GetSs(), 0);
    // The gnssobs form computes the same number as the plain one.
    const long double a = l1.GetObs(), b = l2.GetObs();
    EXPECT_NEAR_LD(full.GetObs(), GNSS_L3(a, b), CombTol_m);
}
