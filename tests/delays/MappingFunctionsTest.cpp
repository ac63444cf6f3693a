// Mapping functions: limits at the zenith, agreement with a straight-path
// integration through an exponential atmosphere, orderings that follow from
// the geometry, and the Niell and VMF1 specifics against independent values.
#include <functional>

#include "DelaysSupport.h"
#include "delays/MappingFraction.h"
#include "delays/gMF_Chao.h"
#include "delays/gMF_Davis.h"
#include "delays/gMF_Marini.h"
#include "delays/gMF_Niell.h"
#include "delays/gMF_UNB3.h"
#include "delays/gMF_VMF1.h"

using namespace deltest;

namespace {

// Values from exact decimal constants in one or two operations: long
// double round-off (1e-19 relative) only.
// Mapping values up to 20 from fractions of a few terms: 1e-17 per
// operation; 1e-13 is still far below any modelling effect (1e-6).
constexpr long double ExactTol = 1e-18L, RoundOffTol = 1e-13L;

// Slant over vertical column of an exponential refractivity profile with
// scale height Hs_m over a sphere of radius 6371 km, along straight lines
// (no bending). Midpoint rule on 20000 steps over 40 scale heights: the
// integrand is smooth on the scale of Hs, the error is far below 1e-6.
long double StraightPathMapping(long double E, long double Hs_m)
{
    const long double R = 6371000.0L, c2 = std::cos(E) * std::cos(E), du = 40.0L / 20000;
    long double sum = 0.0L, u, rh;
    for (int i = 0; i < 20000; ++i) u = (i + 0.5L) * du, rh = R + u * Hs_m, sum += std::exp(-u) * rh / std::sqrt(rh * rh - R * R * c2) * du;
    return sum;
}

// All functions for a mid-latitude site at 300 m in summer 2015, VMF1 with
// coefficients of the size GPT2 gives there.
const flh kPos(Rad(46.9L), Rad(7.5L), 300.0L);
const std::pair<const char*, std::function<gTropDelay(long double)>> kAll[] = {
    {"Chao", [](long double E) { gTropDelay t; gMF_Chao().GetMappFunction(t, E); return t; }},
    {"Davis", [](long double E) { gTropDelay t; gMF_Davis().GetMappFunction(t, E); return t; }},
    {"UNB3", [](long double E) { gMF_UNB3 m; m.SetAtmParams(kPos); gTropDelay t; m.GetMappFunction(t, E); return t; }},
    {"Niell", [](long double E) { gMF_Niell m; m.SetAtmParams(kPos); gTropDelay t; m.GetMappFunction(t, kPos, kDay, E); return t; }},
    {"VMF1", [](long double E) { gTropDelay t; gMF_VMF1().GetMappFunction(t, kPos, kDay, E, 0.00126L, 0.00057L); return t; }},
};

}  // namespace

TEST(MappingFunctions, OneAtTheZenithAndAnExponentialAtmosphereBelow)
{
    // Normalised fractions are 1 up to round-off at 90 degrees; Chao and
    // Davis reach 1 through a huge tan E.
    // Between 7.5 and 8.5 km of scale height the straight-path value moves
    // by 0.6 % at 5 degrees, and bending, left out, adds a few tenths of a
    // per cent: 1.5 % covers both and still catches a wrong coefficient or a
    // sin/tan swap (several per cent at 5 degrees).
    // Curvature lowers the 60-degree value below 1/sin E by about 0.05 %;
    // "about 10 at 5 degrees": the published functions spread by 1 % there.
    constexpr long double ZenithTol = 1e-12L, RelTol = 0.015L, HighElevationTol = 2e-3L, FiveDegreeTol = 0.2L;
    for (const auto& [name, at] : kAll) {
        EXPECT_NEAR_LD(std::fabs(at(Pi / 2.0L).mfdry - 1.0L) + std::fabs(at(Pi / 2.0L).mfwet - 1.0L), 0.0L, ZenithTol) << name;
        for (long double deg : {5.0L, 10.0L, 30.0L, 60.0L})
            EXPECT_NEAR_LD(at(Rad(deg)).mfdry, StraightPathMapping(Rad(deg), 8000.0L), RelTol * StraightPathMapping(Rad(deg), 8000.0L)) << name << deg;
        EXPECT_NEAR_LD(at(Rad(60.0L)).mfdry, 1.0L / std::sin(Rad(60.0L)), HighElevationTol) << name;
        EXPECT_NEAR_LD(at(Rad(5.0L)).mfdry, 10.1L, FiveDegreeTol) << name;
        // The wet function, for water vapour within 2 km of the ground, sees
        // less curvature and lies nearer 1/sin E, both below it.
        for (int deg = 3; deg <= 30; deg += 3)
            EXPECT_TRUE(at(Rad(deg)).mfwet >= at(Rad(deg)).mfdry && at(Rad(deg)).mfwet < 1.0L / std::sin(Rad(deg)))
                << name << " " << deg;
    }
}

TEST(MappingFunctions, DavisAndMariniGiveOneValueForBoth)
{
    gMF_Davis davis; gMF_Marini marini; marini.SetAtmParams(flh(Rad(45.0L), 0.0L, 0.0L));
    // At 45 degrees and sea level the gravity factor is 1 and ksi the bare
    // published constant; Davis folds in the standard lapse of -6.5762 K/km.
    const long double k = 0.02644L;
    EXPECT_NEAR_LD(std::fabs(marini.g - 1.0L) + std::fabs(marini.ksi - k) + std::fabs(davis.alpha - (-5.93L - 0.0359L * 18.0L)), 0.0L, ExactTol);
    long double prev = 1e9L;
    for (int deg = 3; deg <= 90; deg += 3) {
        gTropDelay d, m; davis.GetMappFunction(d, Rad(deg)), marini.GetMappFunction(m, Rad(deg));
        // The one-parameter form with this ksi is meant for elevations from
        // 15 degrees up; below about 10 degrees it turns back down.
        EXPECT_TRUE(d.mfdry == d.mfwet && m.mfdry == m.mfwet && (deg < 15 || m.mfdry < prev)) << deg;
        prev = deg < 15 ? prev : m.mfdry;
    }
    // Marini is not normalised: at the zenith (1 + ksi)/(1 + ksi/(1.015 (1 + ksi))).
    gTropDelay z; marini.GetMappFunction(z, Pi / 2.0L);
    EXPECT_NEAR_LD(z.mfdry, (1.0L + k) / (1.0L + k / (1.015L * (1.0L + k))), RoundOffTol);
}

TEST(Niell, TableRowsByLatitudeBandAndHemisphere)
{
    // Below 15 degrees the first row alone, from 75 the last; in between the
    // plain mean of the bracketing rows (Niell 1996, table 3): a_h average,
    // b_w, c_h amplitude.
    const long double ad15 = 1.2769934e-3L, ad30 = 1.2683230e-3L, bw15 = 1.4275268e-3L, bw30 = 1.5138625e-3L, rows[5][4] = {{10.0L, ad15, bw15, 0.0L}, {20.0L, (ad15 + ad30) / 2.0L, (bw15 + bw30) / 2.0L, 9.0128400e-5L / 2.0L},
                                    {29.0L, (ad15 + ad30) / 2.0L, (bw15 + bw30) / 2.0L, 9.0128400e-5L / 2.0L},
                                    {75.0L, 1.2045996e-3L, 1.7599082e-3L, 170.37206e-5L}, {80.0L, 1.2045996e-3L, 1.7599082e-3L, 170.37206e-5L}};
    gMF_Niell n, s;
    for (const auto& r : rows) {
        n.SetAtmParams(flh(Rad(r[0]), 0.0L, 0.0L));
        EXPECT_NEAR_LD(std::fabs(n.ad1 - r[1]) + std::fabs(n.bw - r[2]) + std::fabs(n.cd2 - r[3]), 0.0L, ExactTol) << r[0];
    }
    // The southern hemisphere uses |latitude| and the same phase.
    const flh north(Rad(40.0L), 0.0L, 100.0L), south(Rad(-40.0L), 0.0L, 100.0L);
    gTropDelay tn, ts;
    n.SetAtmParams(north), s.SetAtmParams(south), n.GetMappFunction(tn, north, kDay, Rad(7.0L)), s.GetMappFunction(ts, south, kDay, Rad(7.0L));
    EXPECT_TRUE(tn.mfdry == ts.mfdry && tn.mfwet == ts.mfwet);
}

TEST(Niell, MatchesIndependentEvaluationOfThePublishedFunctions)
{
    // Reference values (own evaluation of Niell 1996, match 1e-6) for the
    // 45-degree row on day 28 and day 200 at 0 and 1 km, and for the
    // 30-degree row in the south on day 28. The publication writes
    // a = avg - amp cos(2 pi (doy - 28)/365.25), shifted by half a year in
    // the south; here a = ad1 + ad2 cos(...) in both hemispheres, so the
    // amplitude enters with its sign turned in the north and kept in the
    // south. The site values are set directly, as the band means of
    // SetAtmParams differ from the publication's latitude interpolation;
    // the day runs from 1980-01-01 (MJD 44239).
    constexpr long double NiellTol = 1e-6L;
    // Elevation; 45 N, 0 km, day 28: m_h, m_w; 45 N, 1 km, day 200: m_h;
    // 30 S, 0.5 km, day 28: m_h, m_w.
    const long double ref[5][6] = {{90.0L, 1.0L, 1.0L, 1.0L, 1.0L, 1.0L},
                                   {30.0L, 1.992807L, 1.996544L, 1.992648L, 1.992525L, 1.996623L},
                                   {10.0L, 5.555763L, 5.657127L, 5.551565L, 5.548196L, 5.659496L},
                                   {5.0L, 10.151762L, 10.750884L, 10.128015L, 10.108669L, 10.767598L},
                                   {3.0L, 14.699039L, 16.416701L, 14.635620L, 14.583172L, 16.474200L}};
    gMF_Niell n;
    auto setRow = [&n](int r, long double sign) {
        n.ad1 = n.adavg[r], n.bd1 = n.bdavg[r], n.cd1 = n.cdavg[r], n.aw = n.awpov[r], n.bw = n.bwpov[r], n.cw = n.cwpov[r];
        n.ad2 = sign * n.adamp[r], n.bd2 = sign * n.bdamp[r], n.cd2 = sign * n.cdamp[r];
    };
    const mjd doy28(44239 + 27, 0.0L), doy200(44239 + 199, 0.0L);
    for (const auto& r : ref) {
        gTropDelay a, b, c;
        setRow(2, -1.0L), n.GetMappFunction(a, flh(Rad(45.0L), 0.0L, 0.0L), doy28, Rad(r[0]));
        n.GetMappFunction(b, flh(Rad(45.0L), 0.0L, 1000.0L), doy200, Rad(r[0]));
        setRow(1, 1.0L), n.GetMappFunction(c, flh(Rad(-30.0L), 0.0L, 500.0L), doy28, Rad(r[0]));
        const long double got[5] = {a.mfdry, a.mfwet, b.mfdry, c.mfdry, c.mfwet};
        for (int j = 0; j < 5; ++j) EXPECT_NEAR_LD(got[j], r[j + 1], NiellTol) << r[0] << " " << j;
    }
}

TEST(VMF1Mapping, SeasonalConstantsByHemisphereAndNiellsHeightCorrection)
{
    // On day 28 of 1980 the seasonal cosine is 1 in the north and -1 in the
    // south (phase pi): c = 0.062 + (0.005 + 0.001)(1 - cos 40) there and
    // c = 0.062 + 0.002 (1 - cos 40) here, by the published constants. At
    // the equator c is 0.062 whatever the season; the wet b and c are fixed.
    // At 2 km the hydrostatic value grows by Niell's correction,
    // 2 (1/sin E - F(2.53e-5, 5.49e-3, 1.14e-3, E)), of the order of 0.1 %
    // per km at low elevation.
    const mjd d28(44239 + 27, 0.0L);
    const long double E = Rad(8.0L), ah = 0.00125L, aw = 0.0006L, k40 = 1.0L - std::cos(Rad(40.0L));
    const long double corr = 2.0L * (1.0L / std::sin(E) - MappingFraction(2.53e-5L, 5.49e-3L, 1.14e-3L, E));
    const struct { long double lat, h; mjd day; long double c; } cases[] = {
        {40.0L, 0.0L, d28, 0.062L + 0.006L * k40}, {-40.0L, 0.0L, d28, 0.062L + 0.002L * k40},
        {0.0L, 0.0L, kDay, 0.062L}, {-40.0L, 2000.0L, d28, 0.062L + 0.002L * k40}};
    gMF_VMF1 m; for (const auto& c : cases) {
        gTropDelay t; m.GetMappFunction(t, flh(Rad(c.lat), 0.0L, c.h), c.day, E, ah, aw);
        EXPECT_NEAR_LD(std::fabs(t.mfdry - MappingFraction(ah, 0.0029L, c.c, E) - c.h / 1000.0L * corr / 2.0L)
                       + std::fabs(t.mfwet - MappingFraction(aw, 0.00146L, 0.04391L, E)), 0.0L, RoundOffTol) << c.lat;
    }
    EXPECT_NEAR_LD(std::fabs(m.phh - Pi) + std::fabs(m.c11h - 0.007L), 0.0L, RoundOffTol);
    EXPECT_NEAR_LD(corr / MappingFraction(ah, 0.0029L, 0.062L, E), 0.0055L, 0.0045L);
}
