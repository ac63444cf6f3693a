// Saastamoinen and Hopfield zenith delays of the standard atmosphere, and
// the shared atmosphere formulas, against published values and independent
// physics.
#include "delays/gTM_Hopfield.h"
#include "delays/gTM_Saastamoinen.h"
#include "delays/stdAtm.h"

#include <gtest/gtest.h>

#include <cmath>
#include "numerics/NearLD.h"

namespace {

const long double Pi = 3.14159265358979323846264338327950288L;
long double Rad(long double deg) { return deg * Pi / 180.0L; }

// Standard values carried over zero height, or powers of exact decimals:
// round-off of values up to 1e3.
constexpr long double ExactTol = 1e-12L;
// Ratios of two delays of order 1 formed alike: round-off only.
constexpr long double RatioTol = 1e-15L;
// One multiply-add on exact decimals near 1.
constexpr long double FactorTol = 1e-18L;
// The ICAO atmosphere starts at 15 C, this one at 18 C, with a rounded
// exponent: 1 to 2 hPa apart at 5 km.
constexpr long double IcaoTol_hPa = 3.0L;
// Two independent fits of the saturation pressure differ by about 2 % at
// 18 C.
constexpr long double MagnusRelTol = 0.03L;
// Hopfield's quartic profile and Saastamoinen's integration of one standard
// atmosphere: a few mm apart in the hydrostatic delay, a few per cent in
// the wet one.
constexpr long double ModelSpreadTol_m = 0.01L;
constexpr long double WetRelTol = 0.05L;

// The reference values use the IERS form 0.0022768 p/(1 - 0.00266 cos 2f -
// 0.28e-6 h); the model uses 0.002277 and 0.0026. The constants differ by
// 0.09 per mille and the gravity term by at most 0.06 per mille of 2.3 m:
// 0.35 mm together.
constexpr long double FormTol_m = 0.5e-3L;

gTM_Saastamoinen SiteAt(long double lat_deg, long double h_m)
{
    gTM_Saastamoinen s;
    s.SetAtmParams(flh(Rad(lat_deg), Rad(10.0L), h_m));
    return s;
}

}  // namespace

TEST(Saastamoinen, SeaLevelHydrostaticDelayMatchesPublishedForm)
{
    // Reference table: 1013.25 hPa at sea level, latitudes 0, 45, 90.
    const struct { long double lat, zhd; } cases[] = {
        {0.0L, 2.313121L}, {45.0L, 2.306968L}, {90.0L, 2.300847L}};
    for (const auto& c : cases) {
        gTropDelay td;
        SiteAt(c.lat, 0.0L).GetZenithDelay(td);
        EXPECT_NEAR_LD(td.tdry, c.zhd, FormTol_m) << c.lat;
    }
}

TEST(Saastamoinen, StandardAtmosphereAtHeight)
{
    gTM_Saastamoinen s = SiteAt(45.0L, 0.0L);
    // At the reference height the standard values come back: exact inputs.
    EXPECT_NEAR_LD(s.p, 1013.25L, ExactTol);
    EXPECT_NEAR_LD(s.T, 291.16L, ExactTol);
    EXPECT_NEAR_LD(s.H, 50.0L, ExactTol);
    // Half the saturation pressure of the Magnus form (WMO 2008: 6.112
    // exp(17.62 t/(243.12 + t)) hPa), an independent fit: the two fits
    // differ by about 2 % at 18 C, 3 % allowed.
    const long double magnus = 6.112L * std::exp(17.62L * 18.0L / (243.12L + 18.0L));
    EXPECT_NEAR_LD(s.e, 0.5L * magnus, MagnusRelTol * 0.5L * magnus);

    // 5 km: the ICAO standard atmosphere has 540.5 hPa; this one starts 3 K
    // warmer and uses a rounded exponent, which is worth 1 to 2 hPa.
    gTM_Saastamoinen high = SiteAt(45.0L, 5000.0L);
    EXPECT_NEAR_LD(high.p, 540.5L, IcaoTol_hPa);
    EXPECT_NEAR_LD(high.T, 291.16L - 32.5L, ExactTol);
    // Less air and less water above a high site.
    gTropDelay lo, hi;
    s.GetZenithDelay(lo);
    high.GetZenithDelay(hi);
    EXPECT_NEAR_LD(hi.tdry / lo.tdry, (high.p / s.p) * (s.g / high.g), RatioTol);
    EXPECT_LT(hi.twet, lo.twet / 2.0L);
    // Sea level wet delay of a 50 % humid 18 C atmosphere: 5 to 20 cm.
    EXPECT_GT(lo.twet, 0.05L);
    EXPECT_LT(lo.twet, 0.20L);
}

TEST(Saastamoinen, AboveTheAtmosphereThereIsNoPressure)
{
    // 50 km would make the pressure base negative: the delay must stay a
    // number, and nothing of the atmosphere is left.
    gTropDelay td;
    SiteAt(45.0L, 50000.0L).GetZenithDelay(td);
    EXPECT_TRUE(std::isfinite(td.tdry));
    EXPECT_NEAR_LD(td.tdry, 0.0L, ExactTol);
}

TEST(Hopfield, SeaLevelAgreesWithSaastamoinen)
{
    // Two models of one standard atmosphere: the quartic profile of Hopfield
    // and Saastamoinen's integration differ by a few mm in the hydrostatic
    // delay at sea level; the wet formulas (for the same 8.5 hPa and 18 C)
    // by a few per cent.
    const flh pos(Rad(45.0L), Rad(10.0L), 0.0L);
    gTM_Hopfield h;
    h.SetAtmParams(pos);
    gTropDelay th;
    h.GetZenithDelay(th, pos);
    gTropDelay ts;
    SiteAt(45.0L, 0.0L).GetZenithDelay(ts);
    EXPECT_NEAR_LD(th.tdry, ts.tdry, ModelSpreadTol_m);
    const long double saasWet = stdAtm::SaastamoinenWet(291.16L, stdAtm::e0, 1.0L);
    EXPECT_NEAR_LD(th.twet, saasWet, WetRelTol * saasWet);
}

TEST(Hopfield, HeightActsOnlyThroughLayerTopAndGravity)
{
    // Pressure and humidity stay standard at any height: the hydrostatic
    // delay scales with the layer top Hd = 148.72 T + 40136 m (T falling by
    // 6.5 K per km) over the gravity factor, the wet one with 1/g alone.
    gTropDelay t0, t2;
    const flh low(Rad(30.0L), 0.0L, 0.0L), high(Rad(30.0L), 0.0L, 2000.0L);
    gTM_Hopfield h;
    h.SetAtmParams(low);
    h.GetZenithDelay(t0, low);
    h.SetAtmParams(high);
    h.GetZenithDelay(t2, high);
    const long double hd0 = 148.72L * 18.0L + 40136.0L;
    const long double hd2 = 148.72L * (18.0L - 13.0L) + 40136.0L;
    const long double g0 = stdAtm::GravityFactor(low.f, 0.0L);
    const long double g2 = stdAtm::GravityFactor(low.f, 2000.0L);
    EXPECT_NEAR_LD(t2.tdry / t0.tdry, (hd2 / hd0) * (g0 / g2), RatioTol);
    EXPECT_NEAR_LD(t2.twet / t0.twet, g0 / g2, RatioTol);
}

TEST(StdAtm, GravityFactorIsOneAtFortyFiveDegreesAndSeaLevel)
{
    EXPECT_NEAR_LD(stdAtm::GravityFactor(Rad(45.0L), 0.0L), 1.0L, FactorTol);
    EXPECT_NEAR_LD(stdAtm::GravityFactor(0.0L, 0.0L), 0.9974L, FactorTol);
    EXPECT_NEAR_LD(stdAtm::GravityFactor(Rad(45.0L), 1000.0L), 1.0L - 0.00028L, FactorTol);
}
