// Combinations against simulated signals: a range rho, a 1/f² ionosphere
// that advances phase and delays code, and integer ambiguities N1, N2.
#include "ObsSupport.h"

using namespace obstest;

// The stored factors and wavelengths are within 2e-16 (relative) of the
// exact ratios; applied to ~6e7 m of combined signal that is ~1e-8 m. A
// millimetre would mean a wrong factor, so 1e-6 m separates the two.
constexpr long double CombTol_m = 1e-6L;

TEST(LinearCombinations, EachCombinationKeepsWhatItsDefinitionKeeps)
{
    GlobalsGuard guard;
    GLONASSc::SetFrequency(-7.0L, 0);
    GLONASSc::SetFrequency(6.0L, 1);
    // GPS, Galileo E1/E5b, and GLONASS at both ends of the channel range.
    const std::tuple<short, long double, long double> systems[] = {
        {12, 1575.42e6L, 1227.60e6L}, {211, 1575.42e6L, 1207.14e6L}, {101, 1602e6L - 7 * 562500.0L, 1246e6L - 7 * 437500.0L},
        {102, 1602e6L + 6 * 562500.0L, 1246e6L + 6 * 437500.0L}};
    for (const auto& [sat, f1, f2] : systems) {
        ASSERT_TRUE(GLC::LoadSystem(sat)) << sat;
        const long double lamWL = C / (f1 - f2), g = f1 / f2;
        for (auto [rho, I1, N1, N2] : {std::array<long double, 4>{2.2345678901e7L, 0, 0, 0}, {2.0e7L, 3.5L, 17, -4},
                                       {2.6e7L, 48.0L, -250, -300}}) {
            const long double I2 = I1 * g * g, a1 = (rho - I1) / (C / f1) + N1, a2 = (rho - I2) / (C / f2) + N2;
            const long double b1 = rho + I1, b2 = rho + I2;
            const gnssobs l1(a1), l2(a2), p1(b1), p2(b2);
            // {plain form, gnssobs form (or the plain one again), expected}:
            // ionosphere-free keeps the range and an ambiguity; geometry-free
            // phase is first minus second, code second minus first; wide-lane
            // phase and narrow-lane code see the ionosphere as +I1·f1/f2,
            // narrow-lane phase and wide-lane code as -I1·f1/f2; half code plus
            // half phase cancels the ionosphere of f1, code minus phase doubles it.
            const std::tuple<const char*, long double, long double, long double> rows[] = {
                {"L3", GNSS_L3(a1, a2), GNSS_L3(l1, l2).GetObs(), rho + C * (f1 * N1 - f2 * N2) / (f1 * f1 - f2 * f2)},
                {"P3", GNSS_P3(b1, b2), GNSS_P3(p1, p2).GetObs(), rho},
                {"L4", GNSS_L4(a1, a2), GNSS_L4(l1, l2).GetObs(), I2 - I1 + C / f1 * N1 - C / f2 * N2},
                {"P4", GNSS_P4(b1, b2), GNSS_P4(p1, p2).GetObs(), I2 - I1},
                {"MW", GNSS_MW(a1, a2, b1, b2), GNSS_MW(l1, l2, p1, p2).GetObs(), lamWL * (N1 - N2)},
                {"L5", GNSS_L5(a1, a2), GNSS_L5(l1, l2).GetObs(), rho + I1 * g + lamWL * (N1 - N2)},
                {"NLP", GNSS_NLP(b1, b2), GNSS_NLP(p1, p2).GetObs(), rho + I1 * g},
                {"NLL", GNSS_NLL(a1, a2), GNSS_NLL(l1, l2).GetObs(), rho - I1 * g + C * (N1 + N2) / (f1 + f2)},
                {"P5", GNSS_P5(b1, b2), GNSS_P5(p1, p2).GetObs(), rho - I1 * g},
                {"CLI", GNSS_CLI(b1, a1), GNSS_CLI(b1, a1), rho + C / f1 * N1 / 2.0L},
                {"CL1", GNSS_CL1(b1, a1), GNSS_CL1(b1, a1), 2.0L * I1 - C / f1 * N1}};
            for (const auto& [name, plain, obs, want] : rows)
                for (long double got : {plain, obs})
                    EXPECT_NEAR_LD(got, want, CombTol_m) << name << " sat " << sat << " I1 " << (double)I1;
        }
    }
}
