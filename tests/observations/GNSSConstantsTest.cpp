// Constellation constants against the frequency plan, and the GLONASS
// channel tables against the FDMA formula.
#include <gtest/gtest.h>

#include <cmath>
#include <iostream>

#include "observations/GALILEOc.h"
#include "observations/GLC.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "numerics/NearLD.h"

namespace {

// The stored factors are double-rounded values printed to 20 digits, so
// they sit up to 2e-16 (relative) from the exact ratios; a wrong digit
// anywhere in the first 15 exceeds this bound.
constexpr long double StoredRelTol = 1e-15L;
// Table rows are computed in long double (64-bit mantissa): a few ulp.
constexpr long double ComputedRelTol = 1e-17L;

void ExpectRel(long double got, long double want, long double tol)
{
    EXPECT_NEAR_LD(got / want, 1.0L, tol) << "got " << static_cast<double>(got)
                                      << " want " << static_cast<double>(want);
}

struct Plan {
    long double f1, f2;
    long double LCion1, LCion2, LCwl1, LCwl2, LCnl1, LCnl2, alpha, f1_f2;
};

void ExpectFactorsMatchFrequencies(const Plan& p)
{
    const long double f1 = p.f1, f2 = p.f2;
    ExpectRel(p.LCion1, f1 * f1 / (f1 * f1 - f2 * f2), StoredRelTol);
    ExpectRel(p.LCion2, f2 * f2 / (f1 * f1 - f2 * f2), StoredRelTol);
    ExpectRel(p.LCwl1, f1 / (f1 - f2), StoredRelTol);
    ExpectRel(p.LCwl2, f2 / (f1 - f2), StoredRelTol);
    ExpectRel(p.LCnl1, f1 / (f1 + f2), StoredRelTol);
    ExpectRel(p.LCnl2, f2 / (f1 + f2), StoredRelTol);
    ExpectRel(p.alpha, (f1 / f2) * (f1 / f2), StoredRelTol);
    ExpectRel(p.f1_f2, f1 / f2, StoredRelTol);
}

}  // namespace

TEST(GNSSConstants, GPSWavelengthsAndFactorsFollowFromTheFrequencies)
{
    using namespace GPSc;
    // Frequencies are multiples of the 10.23 MHz clock: 154, 120, 115.
    // 1e-15: ratios of whole-hertz constants, exact in long double after one
    // correctly rounded division (ulp 1.4e-17 at 154).
    EXPECT_NEAR_LD(freq1 / freq0, 154.0L, 1e-15L);
    EXPECT_NEAR_LD(freq2 / freq0, 120.0L, 1e-15L);
    EXPECT_NEAR_LD(freq5 / freq0, 115.0L, 1e-15L);
    ExpectRel(lamb0, c / freq0, StoredRelTol);
    ExpectRel(lamb1, c / freq1, StoredRelTol);
    ExpectRel(lamb2, c / freq2, StoredRelTol);
    ExpectRel(lamb5, c / freq5, StoredRelTol);
    ExpectRel(lamWL, lamb1 * lamb2 / (lamb2 - lamb1), StoredRelTol);
    ExpectRel(lamNL, lamb1 * lamb2 / (lamb1 + lamb2), StoredRelTol);
    ExpectFactorsMatchFrequencies({freq1, freq2, LCion1, LCion2, LCwl1, LCwl2, LCnl1, LCnl2,
                                   alpha, f1_f2});
}

TEST(GNSSConstants, GalileoUsesE5bAsSecondFrequency)
{
    using namespace GALILEOc;
    EXPECT_NEAR_LD(freq2 / freq0, 118.0L, 1e-15L);  // E5b
    EXPECT_NEAR_LD(freq8 / freq0, 116.5L, 1e-15L);  // E5 AltBOC
    ExpectRel(lamb1, c / freq1, StoredRelTol);
    ExpectRel(lamb2, c / freq2, StoredRelTol);
    ExpectRel(lamb5, c / freq5, StoredRelTol);
    ExpectRel(lamb8, c / freq8, StoredRelTol);
    ExpectRel(lamWL, lamb1 * lamb2 / (lamb2 - lamb1), StoredRelTol);
    ExpectRel(lamNL, lamb1 * lamb2 / (lamb1 + lamb2), StoredRelTol);
    ExpectFactorsMatchFrequencies({freq1, freq2, LCion1, LCion2, LCwl1, LCwl2, LCnl1, LCnl2,
                                   alpha, f1_f2});
}

TEST(GNSSConstants, GlonassFactorsAreTheNominalNineToSevenRatio)
{
    using namespace GLONASSc;
    ExpectFactorsMatchFrequencies({9.0L, 7.0L, LCion1, LCion2, LCwl1, LCwl2, LCnl1, LCnl2,
                                   alpha, f1_f2});
    ExpectRel(freq10 / freq20, 9.0L / 7.0L, ComputedRelTol);
    ExpectRel(dfreq10 / dfreq20, 9.0L / 7.0L, ComputedRelTol);
    ExpectRel(lamb10, c / freq10, StoredRelTol);
    ExpectRel(lamb20, c / freq20, StoredRelTol);
    ExpectRel(lamb3, c / freq3, StoredRelTol);
}

TEST(GlonassChannels, SetFrequencyFollowsTheFdmaPlanForEveryChannel)
{
    // Channels -7..+6 are the ones broadcast since 2005; each goes to its
    // own row so that rows do not overwrite each other.
    for (int k = -7; k <= 6; k++) {
        const short row = static_cast<short>(k + 7);
        GLONASSc::SetFrequency(static_cast<long double>(k), row);
        const long double f1 = (1602.0L + 0.5625L * k) * 1e6L;
        const long double f2 = (1246.0L + 0.4375L * k) * 1e6L;
        // The frequencies are sums of exactly representable terms.
        EXPECT_NEAR_LD(GLONASSc::freq(row, 0), f1, 1e-6L) << "channel " << k;
        EXPECT_NEAR_LD(GLONASSc::freq(row, 1), f2, 1e-6L) << "channel " << k;
        const long double l1 = 299792458.0L / f1, l2 = 299792458.0L / f2;
        ExpectRel(GLONASSc::lamb(row, 0), l1, ComputedRelTol);
        ExpectRel(GLONASSc::lamb(row, 1), l2, ComputedRelTol);
        // Wide and narrow lane from their definitions c/(f1-f2), c/(f1+f2).
        ExpectRel(GLONASSc::lambWL(row), 299792458.0L / (f1 - f2), 1e-16L);
        ExpectRel(GLONASSc::lambNL(row), 299792458.0L / (f1 + f2), 1e-16L);
        ExpectRel(GLONASSc::alphaG(row, 0), (1575.42e6L / f1) * (1575.42e6L / f1),
                  ComputedRelTol);
        ExpectRel(GLONASSc::alphaG(row, 1), (1575.42e6L / f2) * (1575.42e6L / f2),
                  ComputedRelTol);
        // The channel keeps the 9/7 ratio, so the nominal factors hold.
        ExpectRel(GLONASSc::freq(row, 0) / GLONASSc::freq(row, 1), 9.0L / 7.0L,
                  ComputedRelTol);
    }
}

TEST(GlonassChannels, ChannelZeroGivesTheBaseFrequenciesNotGpsValues)
{
    GLONASSc::SetFrequency(0.0L, 31);
    // 1e-9 Hz: channel 0 adds 0 * 562.5 kHz to the whole-hertz base exactly.
    EXPECT_NEAR_LD(GLONASSc::freq(31, 0), 1602000000.0L, 1e-9L);
    EXPECT_NEAR_LD(GLONASSc::freq(31, 1), 1246000000.0L, 1e-9L);
    const long double l1 = GLONASSc::lamb10, l2 = GLONASSc::lamb20;
    ExpectRel(GLONASSc::lambWL(31), l1 * l2 / (l2 - l1), StoredRelTol);
    // 0.86 m for GPS against 0.84 m here: far beyond any tolerance.
    EXPECT_GT(std::fabs(GLONASSc::lambWL(31) - GPSc::lamWL), 0.01L);
}

TEST(GlonassChannels, RowOutsideTheTableStopsTheRun)
{
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            GLONASSc::SetFrequency(1.0L, 32);
        },
        ::testing::ExitedWithCode(1), "MATRIX::ERROR:(.|\n)*Row index not in range: ");
}

TEST(WorkingCoefficients, StartAtGpsAndLoadPerConstellation)
{
    // Start values, before any test of this process loads another system.
    ExpectRel(GLC::lamb3, GLONASSc::lamb3, ComputedRelTol);
    ExpectRel(GLC::lamb8, GALILEOc::lamb8, ComputedRelTol);

    ASSERT_TRUE(GLC::LoadSystem(205));
    ExpectRel(GLC::lamb2, GALILEOc::lamb2, ComputedRelTol);
    ExpectRel(GLC::LCion1, GALILEOc::LCion1, ComputedRelTol);

    GLONASSc::SetFrequency(-4.0L, 10);
    ASSERT_TRUE(GLC::LoadSystem(111));
    ExpectRel(GLC::lamb1, GLONASSc::lamb(10, 0), ComputedRelTol);
    ExpectRel(GLC::lamb2, GLONASSc::lamb(10, 1), ComputedRelTol);
    ExpectRel(GLC::LCwl1, GLONASSc::LCwl1, ComputedRelTol);

    ASSERT_TRUE(GLC::LoadSystem(7));
    ExpectRel(GLC::lamb1, GPSc::lamb1, ComputedRelTol);
    ExpectRel(GLC::LCnl2, GPSc::LCnl2, ComputedRelTol);
}

TEST(WorkingCoefficients, RefusesSystemsWithoutConstantsAndUnsetSlots)
{
    ASSERT_TRUE(GLC::LoadSystem(1));
    // Slot R30 without a channel (its row as at program start): loading its
    // zeros would make every GLONASS phase combination 0.
    GLONASSc::lamb(29, 0) = 0.0L;
    GLONASSc::lamb(29, 1) = 0.0L;
    EXPECT_FALSE(GLC::LoadSystem(130));
    EXPECT_FALSE(GLC::LoadSystem(100));   // no slot 0
    EXPECT_FALSE(GLC::LoadSystem(305));   // BeiDou: no constants
    EXPECT_FALSE(GLC::LoadSystem(-1));
    // A refused load must change nothing.
    ExpectRel(GLC::lamb1, GPSc::lamb1, ComputedRelTol);
}
