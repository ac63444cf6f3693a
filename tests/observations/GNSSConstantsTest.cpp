// Constellation constants against the frequency plan, the GLONASS channel
// tables against the FDMA formula, and the working coefficients.
#include "ObsSupport.h"

using namespace obstest;

// The stored factors are double-rounded values printed to 20 digits, so
// they sit up to 2e-16 (relative) from the exact ratios; a wrong digit
// anywhere in the first 15 exceeds this bound.
constexpr long double StoredRelTol = 1e-15L;
// Table rows are computed in long double (ulp 1e-19 relative); the lane
// formulas lose a factor of about 5 to cancellation. 1e-16 leaves room for
// that, while a wrong term is off by far more than 1e-6.
constexpr long double ComputedRelTol = 1e-16L;

// got/want pairs, each within tol of 1 as a ratio.
static void ExpectRatios(const std::vector<std::pair<long double, long double>>& rows, long double tol, const std::string& what)
{
    for (std::size_t k = 0; k < rows.size(); ++k)
        EXPECT_NEAR_LD(rows[k].first / rows[k].second, 1.0L, tol) << what << " row " << k;
}

// The stored factors LCion1, LCion2, LCwl1, LCwl2, LCnl1, LCnl2, alpha,
// f1_f2 of a system with carriers f1, f2 (or two numbers in their ratio).
static std::vector<std::pair<long double, long double>> Factors(long double f1, long double f2, std::vector<long double> got)
{
    const long double want[] = {f1 * f1 / (f1 * f1 - f2 * f2), f2 * f2 / (f1 * f1 - f2 * f2), f1 / (f1 - f2), f2 / (f1 - f2),
                                f1 / (f1 + f2), f2 / (f1 + f2), (f1 / f2) * (f1 / f2), f1 / f2};
    std::vector<std::pair<long double, long double>> rows(8);
    for (int k = 0; k < 8; ++k) rows[k] = {got[k], want[k]};
    return rows;
}

TEST(GNSSConstants, WavelengthsAndFactorsFollowFromTheFrequencyPlan)
{
    // GPS carriers are 154, 120 and 115 times the 10.23 MHz clock, Galileo
    // E5b 118 and E5 AltBOC 116.5 times; GLONASS keeps the nominal 9 : 7.
    // Wavelengths are c/f, wide and narrow lane c/(f1 -+ f2).
    using namespace GPSc;
    namespace E = GALILEOc;
    namespace R = GLONASSc;
    ExpectRatios({{freq1 / freq0, 154.0L}, {freq2 / freq0, 120.0L}, {freq5 / freq0, 115.0L}, {E::freq2 / E::freq0, 118.0L},
                  {E::freq8 / E::freq0, 116.5L}, {R::freq10 / R::freq20, 9.0L / 7.0L}, {R::dfreq10 / R::dfreq20, 9.0L / 7.0L},
                  {lamb0, C / freq0}, {lamb1, C / freq1}, {lamb2, C / freq2}, {lamb5, C / freq5}, {E::lamb1, C / E::freq1},
                  {E::lamb2, C / E::freq2}, {E::lamb5, C / E::freq5}, {E::lamb8, C / E::freq8}, {R::lamb10, C / R::freq10},
                  {R::lamb20, C / R::freq20}, {R::lamb3, C / R::freq3}, {lamWL, C / (freq1 - freq2)}, {lamNL, C / (freq1 + freq2)},
                  {E::lamWL, C / (E::freq1 - E::freq2)}, {E::lamNL, C / (E::freq1 + E::freq2)}}, StoredRelTol, "plan");
    ExpectRatios(Factors(freq1, freq2, {LCion1, LCion2, LCwl1, LCwl2, LCnl1, LCnl2, alpha, f1_f2}), StoredRelTol, "GPS");
    ExpectRatios(Factors(E::freq1, E::freq2, {E::LCion1, E::LCion2, E::LCwl1, E::LCwl2, E::LCnl1, E::LCnl2, E::alpha, E::f1_f2}),
                 StoredRelTol, "Galileo");
    ExpectRatios(Factors(9.0L, 7.0L, {R::LCion1, R::LCion2, R::LCwl1, R::LCwl2, R::LCnl1, R::LCnl2, R::alpha, R::f1_f2}),
                 StoredRelTol, "GLONASS");
}

TEST(GlonassChannels, SetFrequencyFollowsTheFdmaPlanForEveryChannelAndRow)
{
    GlobalsGuard guard;
    // Channels -7..+6 (broadcast since 2005) each in a row of its own so
    // that rows do not overwrite each other; channel 0 also in the last row.
    std::vector<std::pair<int, short>> rows{{0, 31}};
    for (int k = -7; k <= 6; k++) rows.push_back({k, static_cast<short>(k + 7)});
    for (auto [k, row] : rows) GLONASSc::SetFrequency(static_cast<long double>(k), row);
    for (auto [k, row] : rows) {
        // Frequencies are sums of exactly representable terms; alpha is
        // (fGPS1/f)².
        const long double f1 = (1602.0L + 0.5625L * k) * 1e6L, f2 = (1246.0L + 0.4375L * k) * 1e6L, g = 1575.42e6L;
        using namespace GLONASSc;
        ExpectRatios({{freq(row, 0), f1}, {freq(row, 1), f2}, {lamb(row, 0), C / f1}, {lamb(row, 1), C / f2},
                      {lambWL(row), C / (f1 - f2)}, {lambNL(row), C / (f1 + f2)}, {alphaG(row, 0), (g / f1) * (g / f1)},
                      {alphaG(row, 1), (g / f2) * (g / f2)}}, ComputedRelTol, "channel " + std::to_string(k));
    }
    EXPECT_STOP(GLONASSc::SetFrequency(1.0L, 32), "MATRIX::ERROR:(.|\n)*Row index not in range: ");
}

TEST(WorkingCoefficients, LoadPerConstellationAndRefuseWhatHasNoConstants)
{
    GlobalsGuard guard;
    GLONASSc::SetFrequency(-4.0L, 10);
    // R30 has no channel (the guard cleared its row): loading its zeros
    // would make every GLONASS phase combination 0. R00 and BeiDou have no
    // constants. A refused load must change nothing.
    const std::tuple<short, long double*, long double> rows[] = {
        {205, &GLC::lamb2, GALILEOc::lamb2}, {205, &GLC::lamb8, GALILEOc::lamb8}, {205, &GLC::LCion1, GALILEOc::LCion1},
        {111, &GLC::lamb1, GLONASSc::lamb(10, 0)}, {111, &GLC::lamb2, GLONASSc::lamb(10, 1)},
        {111, &GLC::LCwl1, GLONASSc::LCwl1}, {7, &GLC::lamb1, GPSc::lamb1}, {7, &GLC::LCnl2, GPSc::LCnl2},
        {130, &GLC::lamb1, GPSc::lamb1}, {100, &GLC::lamb1, GPSc::lamb1}, {305, &GLC::lamb1, GPSc::lamb1},
        {-1, &GLC::lamb1, GPSc::lamb1}};
    for (const auto& [sat, got, want] : rows) {
        EXPECT_EQ(GLC::LoadSystem(sat), sat != 130 && sat != 100 && sat != 305 && sat != -1) << sat;
        EXPECT_NEAR_LD(*got / want, 1.0L, ComputedRelTol) << sat;
    }
}
