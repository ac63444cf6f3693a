// GPT against the published test case of the IERS Conventions (2010)
// routine and against independent evaluations of the published model.
#include "DelaysSupport.h"
#include "delays/gTM_GPT.h"

using namespace deltest;

TEST(GPT, ReproducesIersTestCaseAndIndependentEvaluations)
{
    // IERS routine GPT, test case as corrected in 2011 (NRAO Green Bank,
    // 2009-08-12): double precision matches itself to 1e-12, the reference
    // asks for 1e-9. Further points evaluated independently in double
    // precision, quoted to 1e-9, asked to 1e-6: the southern hemisphere and
    // the equator on the date line, where the sine terms of the longitude
    // and the odd Legendre terms matter.
    const struct { long double day, lat, lon, h, p_hPa, T_C, N_m, tol; } cases[] = {
        {55055.0L, 0.6708665767L, -1.393397187L, 812.546L, 918.0710638757363995L, 19.31914181012882992L,
         -42.19185643717770517L, 1e-9L},
        {51544.0L, -0.5L, 2.5L, 100.0L, 1004.266512437L, 28.123227653L, 19.936153924L, 1e-6L},
        {55197.0L, 0.0L, Pi, 0.0L, 1010.501576240L, 26.930345966L, 20.835886276L, 1e-6L}};
    for (const auto& c : cases) {
        gTM_GPT gpt; gTropDelay td;
        const flh pos(c.lat, c.lon, c.h);
        gpt.SetAtmParams(pos), gpt.GetZenithDelay(td, pos, mjd(static_cast<unsigned long>(c.day), 0.0L));
        for (auto [got, want] : {std::pair(gpt.pres, c.p_hPa), {gpt.temp, c.T_C}, {gpt.gHeight, c.N_m}}) EXPECT_NEAR_LD(got, want, c.tol) << c.day;
        // The zenith hydrostatic delay is 2.277 mm per hPa over the gravity
        // factor (round-off only); the wet one a few cm to a few dm.
        const long double g = 1.0L - 0.0026L * std::cos(2.0L * pos.f) - 0.00028L * pos.h / 1000.0L;
        EXPECT_NEAR_LD(td.tdry, 0.002277L * gpt.pres / g, 1e-12L);
        EXPECT_NEAR_LD(td.twet, 0.21L, 0.19L);
    }
}
