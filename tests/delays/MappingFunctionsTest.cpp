// Mapping functions: limits at the zenith, agreement with a straight-path
// integration through an exponential atmosphere, orderings that follow from
// the geometry, and the Niell and VMF1 specifics against independent values.
#include "delays/MappingFraction.h"
#include "delays/gMF_Chao.h"
#include "delays/gMF_Davis.h"
#include "delays/gMF_Marini.h"
#include "delays/gMF_Niell.h"
#include "delays/gMF_UNB3.h"
#include "delays/gMF_VMF1.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>
#include "numerics/NearLD.h"

namespace {

const long double Pi = 3.14159265358979323846264338327950288L;
long double Rad(long double deg) { return deg * Pi / 180.0L; }

// Values computed from exact decimal constants in one or two operations:
// long double round-off (1e-19 relative) only.
constexpr long double ExactTol = 1e-18L;
// Mapping values up to 20 from fractions of a few terms: 1e-17 per
// operation; 1e-13 is still far below any modelling effect (1e-6).
constexpr long double RoundOffTol = 1e-13L;
// At 60 degrees curvature lowers a mapping value below 1/sin E by about
// 0.05 %: 2e-3 is ample, yet a wrong coefficient shows.
constexpr long double HighElevationTol = 2e-3L;
// "About 10 at 5 degrees": the published functions spread by 1 % there.
constexpr long double FiveDegreeTol = 0.2L;

// Slant over vertical column of an exponential refractivity profile with
// scale height Hs_m over a sphere of radius 6371 km, along straight lines
// (no bending): integral over height of exp(-h/Hs) ds/dh, divided by Hs.
// Midpoint rule on 20000 steps over 40 scale heights: the integrand is
// smooth on the scale of Hs, the error is far below 1e-6.
long double StraightPathMapping(long double E, long double Hs_m)
{
    const long double R = 6371000.0L, c2 = std::cos(E) * std::cos(E);
    const int n = 20000;
    const long double du = 40.0L / n;
    long double sum = 0.0L;
    for (int i = 0; i < n; ++i) {
        const long double u = (i + 0.5L) * du, rh = R + u * Hs_m;
        sum += std::exp(-u) * rh / std::sqrt(rh * rh - R * R * c2) * du;
    }
    return sum;
}

struct Named {
    std::string name;
    std::function<gTropDelay(long double)> at;  // mapping values at elevation E
};

// All functions for a mid-latitude site at 300 m in summer 2015, VMF1 with
// coefficients of the size GPT2 gives there.
std::vector<Named> AllFunctions()
{
    static const flh pos(Rad(46.9L), Rad(7.5L), 300.0L);
    static const mjd day(57257, 0.0L);
    std::vector<Named> f;
    f.push_back({"Chao", [](long double E) { gTropDelay t; gMF_Chao().GetMappFunction(t, E); return t; }});
    f.push_back({"Davis", [](long double E) { gTropDelay t; gMF_Davis().GetMappFunction(t, E); return t; }});
    f.push_back({"UNB3", [](long double E) {
        gMF_UNB3 m; m.SetAtmParams(pos); gTropDelay t; m.GetMappFunction(t, E); return t; }});
    f.push_back({"Niell", [](long double E) {
        gMF_Niell m; m.SetAtmParams(pos); gTropDelay t; m.GetMappFunction(t, pos, day, E); return t; }});
    f.push_back({"VMF1", [](long double E) {
        gMF_VMF1 m; gTropDelay t; m.GetMappFunction(t, pos, day, E, 0.00126L, 0.00057L); return t; }});
    return f;
}

}  // namespace

TEST(MappingFunctions, OneAtTheZenith)
{
    // Normalised fractions are 1 up to round-off at 90 degrees, and the
    // height correction vanishes there; Chao and Davis reach 1 through a
    // huge tan E.
    constexpr long double ZenithTol = 1e-12L;
    for (const Named& f : AllFunctions()) {
        const gTropDelay t = f.at(Pi / 2.0L);
        EXPECT_NEAR_LD(t.mfdry, 1.0L, ZenithTol) << f.name;
        EXPECT_NEAR_LD(t.mfwet, 1.0L, ZenithTol) << f.name;
    }
}

TEST(MappingFunctions, FollowAnExponentialAtmosphere)
{
    // Hydrostatic refractivity falls with a scale height near 8 km; between
    // 7.5 and 8.5 km the straight-path value moves by 0.6 % at 5 degrees,
    // and bending, left out here, adds a few tenths of a per cent. 1.5 %
    // covers both and still catches a wrong coefficient or a sin/tan swap
    // (either moves the 5-degree value by several per cent).
    constexpr long double RelTol = 0.015L;
    for (long double deg : {5.0L, 10.0L, 30.0L, 60.0L}) {
        const long double ref = StraightPathMapping(Rad(deg), 8000.0L);
        for (const Named& f : AllFunctions())
            EXPECT_NEAR_LD(f.at(Rad(deg)).mfdry, ref, RelTol * ref) << f.name << " " << deg;
    }
    // Near 1/sin E high up, about 10 at 5 degrees.
    for (const Named& f : AllFunctions()) {
        EXPECT_NEAR_LD(f.at(Rad(60.0L)).mfdry, 1.0L / std::sin(Rad(60.0L)), HighElevationTol) << f.name;
        EXPECT_NEAR_LD(f.at(Rad(5.0L)).mfdry, 10.1L, FiveDegreeTol) << f.name;
    }
}

TEST(MappingFunctions, FallWithElevationAndWetLiesAboveHydrostatic)
{
    // A thinner layer sees less of the Earth's curvature: the wet function,
    // for water vapour within 2 km of the ground, is nearer 1/sin E than
    // the hydrostatic one, and both stay below 1/sin E.
    for (const Named& f : AllFunctions()) {
        long double prev = 1e9L;
        for (int deg = 3; deg <= 90; ++deg) {
            const gTropDelay t = f.at(Rad(deg));
            EXPECT_LT(t.mfdry, prev) << f.name << " " << deg;
            prev = t.mfdry;
            if (deg <= 30) {
                const long double flat = 1.0L / std::sin(Rad(deg));
                EXPECT_GE(t.mfwet, t.mfdry) << f.name << " " << deg;
                EXPECT_LT(t.mfwet, flat) << f.name << " " << deg;
            }
        }
    }
}

TEST(MappingFunctions, DavisAndMariniGiveOneValueForBoth)
{
    gMF_Davis davis;
    gMF_Marini marini;
    marini.SetAtmParams(flh(Rad(45.0L), 0.0L, 0.0L));
    // At 45 degrees and sea level the gravity factor is 1 and ksi the bare
    // published constant.
    EXPECT_NEAR_LD(marini.g, 1.0L, ExactTol);
    EXPECT_NEAR_LD(marini.ksi, 0.02644L, ExactTol);
    long double prev = 1e9L;
    for (int deg = 3; deg <= 90; deg += 3) {
        gTropDelay d, m;
        davis.GetMappFunction(d, Rad(deg));
        marini.GetMappFunction(m, Rad(deg));
        EXPECT_EQ(d.mfdry, d.mfwet);
        EXPECT_EQ(m.mfdry, m.mfwet);
        // The one-parameter form with this ksi is meant for elevations from
        // 15 degrees up; below about 10 degrees it turns back down.
        if (deg >= 15) {
            EXPECT_LT(m.mfdry, prev) << deg;
            prev = m.mfdry;
        }
    }
    // Davis folds the standard atmosphere into its coefficients: the site
    // does not enter, and alpha is the standard lapse of -6.576 K/km.
    EXPECT_NEAR_LD(davis.alpha, -5.93L - 0.0359L * 18.0L, ExactTol);
    // Marini is not normalised: at the zenith it gives
    // (1 + ksi)/(1 + ksi/(1.015 (1 + ksi))).
    gTropDelay z;
    marini.GetMappFunction(z, Pi / 2.0L);
    const long double k = 0.02644L;
    EXPECT_NEAR_LD(z.mfdry, (1.0L + k) / (1.0L + k / (1.015L * (1.0L + k))), RoundOffTol);
}

TEST(Niell, TableRowsByLatitudeBand)
{
    gMF_Niell n;
    // Below 15 degrees the first row alone, above 75 the last.
    n.SetAtmParams(flh(Rad(10.0L), 0.0L, 0.0L));
    EXPECT_EQ(n.ad1, 1.2769934e-3L);
    EXPECT_EQ(n.cw, 4.3472961e-2L);
    n.SetAtmParams(flh(Rad(80.0L), 0.0L, 0.0L));
    EXPECT_EQ(n.ad1, 1.2045996e-3L);
    EXPECT_EQ(n.cd2, 170.37206e-5L);
    // 20 and 29 degrees: the plain mean of the 15 and 30 degree rows.
    gMF_Niell m;
    n.SetAtmParams(flh(Rad(20.0L), 0.0L, 0.0L));
    m.SetAtmParams(flh(Rad(29.0L), 0.0L, 0.0L));
    EXPECT_EQ(n.ad1, m.ad1);
    EXPECT_EQ(n.bd2, m.bd2);
    EXPECT_EQ(n.cw, m.cw);
    EXPECT_NEAR_LD(n.ad1, (1.2769934e-3L + 1.2683230e-3L) / 2.0L, ExactTol);
    EXPECT_NEAR_LD(n.bw, (1.4275268e-3L + 1.5138625e-3L) / 2.0L, ExactTol);
    // 75 degrees exactly: the last row, not a row beyond the table.
    n.SetAtmParams(flh(Rad(75.0L), 0.0L, 0.0L));
    EXPECT_EQ(n.ad1, 1.2045996e-3L);
    // The southern hemisphere uses |latitude| and the same phase.
    gMF_Niell s;
    n.SetAtmParams(flh(Rad(40.0L), 0.0L, 100.0L));
    s.SetAtmParams(flh(Rad(-40.0L), 0.0L, 100.0L));
    gTropDelay tn, ts;
    n.GetMappFunction(tn, flh(Rad(40.0L), 0.0L, 100.0L), mjd(57257, 0.0L), Rad(7.0L));
    s.GetMappFunction(ts, flh(Rad(-40.0L), 0.0L, 100.0L), mjd(57257, 0.0L), Rad(7.0L));
    EXPECT_EQ(tn.mfdry, ts.mfdry);
    EXPECT_EQ(tn.mfwet, ts.mfwet);
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
    const long double E[5] = {Rad(90.0L), Rad(30.0L), Rad(10.0L), Rad(5.0L), Rad(3.0L)};
    const long double mh45[5] = {1.0L, 1.992807L, 5.555763L, 10.151762L, 14.699039L};
    const long double mw45[5] = {1.0L, 1.996544L, 5.657127L, 10.750884L, 16.416701L};
    const long double mh45h1[5] = {1.0L, 1.992648L, 5.551565L, 10.128015L, 14.635620L};
    const long double mhS30[5] = {1.0L, 1.992525L, 5.548196L, 10.108669L, 14.583172L};
    const long double mwS30[5] = {1.0L, 1.996623L, 5.659496L, 10.767598L, 16.474200L};

    gMF_Niell n;
    auto setRow = [&n](int r, long double sign) {
        n.ad1 = n.adavg[r]; n.bd1 = n.bdavg[r]; n.cd1 = n.cdavg[r];
        n.ad2 = sign * n.adamp[r]; n.bd2 = sign * n.bdamp[r]; n.cd2 = sign * n.cdamp[r];
        n.aw = n.awpov[r]; n.bw = n.bwpov[r]; n.cw = n.cwpov[r];
    };
    const mjd doy28(44239 + 27, 0.0L), doy200(44239 + 199, 0.0L);
    for (int i = 0; i < 5; ++i) {
        gTropDelay t;
        setRow(2, -1.0L);
        n.GetMappFunction(t, flh(Rad(45.0L), 0.0L, 0.0L), doy28, E[i]);
        EXPECT_NEAR_LD(t.mfdry, mh45[i], NiellTol) << i;
        EXPECT_NEAR_LD(t.mfwet, mw45[i], NiellTol) << i;
        n.GetMappFunction(t, flh(Rad(45.0L), 0.0L, 1000.0L), doy200, E[i]);
        EXPECT_NEAR_LD(t.mfdry, mh45h1[i], NiellTol) << i;
        setRow(1, 1.0L);
        n.GetMappFunction(t, flh(Rad(-30.0L), 0.0L, 500.0L), doy28, E[i]);
        EXPECT_NEAR_LD(t.mfdry, mhS30[i], NiellTol) << i;
        EXPECT_NEAR_LD(t.mfwet, mwS30[i], NiellTol) << i;
    }
}

TEST(VMF1Mapping, SouthernConstantsAndHalfYearShift)
{
    // On day 28 of 1980 the seasonal cosine is 1 in the north and -1 in the
    // south (phase pi): c = 0.062 + (0.005 + 0.001)(1 - cos 40) there and
    // c = 0.062 + 0.002 (1 - cos 40) here, by the published constants. At
    // the equator c is 0.062 whatever the season.
    constexpr long double Tol = 1e-15L;
    gMF_VMF1 m;
    const mjd d28(44239 + 27, 0.0L);
    const long double E = Rad(8.0L), ah = 0.00125L, aw = 0.0006L;
    const long double k40 = 1.0L - std::cos(Rad(40.0L));
    gTropDelay t;
    m.GetMappFunction(t, flh(Rad(40.0L), 0.0L, 0.0L), d28, E, ah, aw);
    EXPECT_NEAR_LD(t.mfdry, MappingFraction(ah, 0.0029L, 0.062L + 0.006L * k40, E), Tol);
    EXPECT_NEAR_LD(m.phh, 0.0L, Tol);
    m.GetMappFunction(t, flh(Rad(-40.0L), 0.0L, 0.0L), d28, E, ah, aw);
    EXPECT_NEAR_LD(t.mfdry, MappingFraction(ah, 0.0029L, 0.062L + 0.002L * k40, E), Tol);
    EXPECT_NEAR_LD(m.phh, Pi, Tol);
    EXPECT_NEAR_LD(m.c11h, 0.007L, Tol);
    m.GetMappFunction(t, flh(0.0L, 0.0L, 0.0L), mjd(57257, 0.0L), E, ah, aw);
    EXPECT_NEAR_LD(t.mfdry, MappingFraction(ah, 0.0029L, 0.062L, E), Tol);
    // The wet function has fixed b and c.
    EXPECT_NEAR_LD(t.mfwet, MappingFraction(aw, 0.00146L, 0.04391L, E), Tol);
}

TEST(VMF1Mapping, HeightCorrectionIsNiells)
{
    // The same correction as in Niell: at 2 km the hydrostatic value grows by
    // 2 (1/sin E - F(2.53e-5, 5.49e-3, 1.14e-3, E)).
    gMF_VMF1 m;
    const mjd day(57257, 0.0L);
    const long double E = Rad(5.0L);
    gTropDelay t0, t2;
    m.GetMappFunction(t0, flh(Rad(46.0L), 0.0L, 0.0L), day, E, 0.00125L, 0.0006L);
    m.GetMappFunction(t2, flh(Rad(46.0L), 0.0L, 2000.0L), day, E, 0.00125L, 0.0006L);
    const long double corr = 2.0L * (1.0L / std::sin(E)
                                     - MappingFraction(2.53e-5L, 5.49e-3L, 1.14e-3L, E));
    EXPECT_NEAR_LD(t2.mfdry - t0.mfdry, corr, RoundOffTol);
    // Of the order of 0.1 % per km at 5 degrees.
    EXPECT_GT(corr / t0.mfdry, 0.001L);
    EXPECT_LT(corr / t0.mfdry, 0.01L);
    EXPECT_EQ(t2.mfwet, t0.mfwet);
}
