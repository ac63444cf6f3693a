// GPT2 on the published 5-degree grid: the IERS test case, a real site with
// measured weather, the grid edges, and broken copies of the grid file.
#include <fstream>
#include <sstream>

#include "DelaysSupport.h"

using namespace deltest;

namespace {

// Node coordinates are decimals with one decimal, the steps their
// differences; pressures of order 1e5 Pa and fields of order 1e-3 from
// exact decimals; bilinear sums of values near 1e3: round-off only.
constexpr long double CoordTol_deg = 1e-12L, ReadTol_Pa = 1e-9L, ReadTol = 1e-15L, SumTol = 1e-9L;

// Zenith delay at pos on 2012-08-02 (the IERS test day); the grid keeps
// the weather of the last call.
gTropDelay At(gTM_GPT2& g, const flh& pos, const mjd& day = mjd(56141, 0.0L)) { gTropDelay td; return g.SetAtmParams(pos), g.GetZenithDelay(td, day), td; }

}  // namespace

TEST(GPT2, FindsTheFiveDegreeLayout)
{
    EXPECT_TRUE(Grid().nF == 36 && Grid().nL == 72 && Grid().nLine == 36 * 72);
    // Each row of the file runs 2.5 ... 177.5, -177.5 ... -2.5 degrees.
    const long double expected[] = {-87.5L, 87.5L, -177.5L, 177.5L, 5.0L, 5.0L};
    const long double read[] = {Grid().minF, Grid().maxF, Grid().minL, Grid().maxL, Grid().dF, Grid().dL};
    for (int i = 0; i < 6; ++i) EXPECT_NEAR_LD(read[i], expected[i], CoordTol_deg) << i;
    // Row 0 is the southernmost although the file starts in the north: the
    // node at 87.5 N, 2.5 E (first data line: mean pressure 101421 Pa,
    // amplitude 409 Pa, humidity 1.64 g/kg, wet coefficient 0.5792e-3) is in
    // the last row, column 36.
    EXPECT_NEAR_LD(Grid().pG(35, 36)(gpt2_grd::A0) + Grid().pG(35, 36)(gpt2_grd::B1), 101830.0L, ReadTol_Pa);
    EXPECT_NEAR_LD(std::fabs(Grid().qG(35, 36)(gpt2_grd::A0) - 1.64e-3L) + std::fabs(Grid().aWG(35, 36)(gpt2_grd::A0) - 0.5792e-3L)
                   + std::fabs(Grid().hN(35, 36) - 19.36L) / 1e3L, 0.0L, ReadTol);
}

TEST(GPT2, ReproducesIersTestCase)
{
    // IERS Conventions (2010) routine GPT2, test case (Vienna, MJD 56141,
    // with annual and semi-annual terms), full-precision harness values.
    // The routine turns radians into degrees with pi = 3.1415926535: the
    // site it evaluates lies 1.4e-9 degree north of 48.20 degrees, which
    // moves its outputs by up to 5e-9. Given that same site, the quantities
    // without time terms (undulation, and the VMF1 coefficients, whose
    // harmonics are tiny) agree to round-off: 1e-10 leaves room for double
    // round-off of the routine's sums (values up to 1e3). The same pi shifts
    // the annual phase by 2.3e-9 rad and the semi-annual one by 4.5e-9 rad:
    // with harmonic amplitudes below 10 (K, hPa) at most 5e-8.
    constexpr long double IersTol = 1e-10L, HarmonicTol = 5e-8L;
    // The header prints 2 decimals of p, T, e and 7 of the coefficients:
    // half a unit of the last digit for the nominal site.
    constexpr long double DigitTol = 0.005L, CoeffDigitTol = 0.5e-7L;
    const long double routinePi = 3.1415926535L;
    At(Grid(), flh(0.8412486994612668L * Pi / routinePi, 0.28571039855147173L * Pi / routinePi, 156.0L));
    const long double got[] = {Grid().pres, Grid().temp, Grid().dT * 1000.0L, Grid().e, Grid().GetCoeffAH(),
                               Grid().GetCoeffAW(), Grid().undu};
    const long double iers[] = {1002.555031899637015L, 22.121274188593230L, -6.525262725051438L, 15.625300656392879L,
                                0.001264668783781L, 0.000572557214095L, 44.05609719704228L};
    for (int i = 0; i < 7; ++i) EXPECT_NEAR_LD(got[i], iers[i], i < 4 ? HarmonicTol : IersTol) << i;
    At(Grid(), flh(Rad(48.20L), Rad(16.37L), 156.0L));
    const long double nominal[] = {1002.56L, 22.12L, 15.63L, 0.0012647L, 0.0005726L};
    const long double read[] = {Grid().pres, Grid().temp, Grid().e, Grid().GetCoeffAH(), Grid().GetCoeffAW()};
    for (int i = 0; i < 5; ++i) EXPECT_NEAR_LD(read[i], nominal[i], i < 3 ? DigitTol : CoeffDigitTol) << i;
}

TEST(GPT2, MatchesWeatherMeasuredAtZimmerwald)
{
    // Day means of the RINEX 2 met file (types PR TD HR) as the station
    // measured them.
    std::ifstream in(orvotest::Data("zimm-2015-235/zimm2350.15m")); std::string line;
    while (std::getline(in, line) && line.find("END OF HEADER") == std::string::npos) {}
    long double sp = 0.0L, sT = 0.0L, pr, td, hr;
    int n = 0, y, mo, d, h, mi, s;
    while (std::getline(in, line))
        if (std::istringstream(line) >> y >> mo >> d >> h >> mi >> s >> pr >> td >> hr) sp += pr, sT += td, ++n;
    // A station at 956 m sees 900 to 920 hPa in any weather but a storm.
    ASSERT_TRUE(n > 10 && std::fabs(sp / n - 909.0L) < 10.0L) << n;
    const gTropDelay z = At(Grid(), kSite, mjd(57257, 0.0L));
    // A climatology misses the day's weather: synoptic pressure swings in
    // central Europe have a standard deviation near 8 hPa, summer day-mean
    // temperatures near 4 K; three of those are allowed.
    EXPECT_NEAR_LD(Grid().pres, sp / n, 25.0L);
    EXPECT_NEAR_LD(Grid().temp, sT / n, 12.0L);
    // Saastamoinen: 2.277 mm per hPa over a gravity factor within 0.3 % of
    // 1 at Zimmerwald, 6 mm of 2.06 m; 1 cm allowed. Wet: 3 to 30 cm.
    EXPECT_NEAR_LD(z.tdry, 0.002277L * Grid().pres, 0.01L);
    EXPECT_NEAR_LD(z.twet, 0.165L, 0.135L);
}

TEST(GPT2, OutermostRowsAndTheDateLineSeam)
{
    // North of 87.5 degrees one row is used twice: the values no longer
    // change with latitude; the same row index serves the south pole side.
    const long double p875 = (At(Grid(), flh(Rad(87.5L), Rad(31.0L), 100.0L)), Grid().pres);
    for (long double lat : {88.7L, 89.99L}) {
        At(Grid(), flh(Rad(lat), Rad(31.0L), 100.0L));
        EXPECT_TRUE(std::fabs(Grid().pres - p875) < SumTol && Grid().IX[0][0] == Grid().IX[2][0]) << lat;
    }
    EXPECT_TRUE((Grid().SetAtmParams(flh(Rad(-89.0L), Rad(31.0L), 100.0L)), Grid().IX[0][0] == 0 && Grid().IX[2][0] == 0));
    // The file's columns end at 177.5 and start at -177.5: 180 degrees lies
    // in the middle of the seam cell, and -180 is the same meridian. On a
    // grid row only longitude is interpolated.
    auto presAt = [](long double lon) { return At(Grid(), flh(Rad(47.5L), Rad(lon), 500.0L)), Grid().pres; };
    const long double west = presAt(177.5L), east = presAt(-177.5L);
    EXPECT_NEAR_LD(std::fabs(presAt(180.0L) - (west + east) / 2.0L) + std::fabs(presAt(-180.0L) - (west + east) / 2.0L), 0.0L, SumTol);
    EXPECT_NEAR_LD(Grid().L2 - Grid().L1, 5.0L, SumTol);
    EXPECT_NEAR_LD(presAt(-179.0L), 0.3L * west + 0.7L * east, SumTol);
}

TEST(GPT2Death, CutBrokenOrMissingGridStops)
{
    std::vector<std::string> all; std::ifstream in(kGrid);
    for (std::string l; std::getline(in, l);) all.push_back(l);
    ASSERT_EQ(all.size(), 2593u);
    auto with = [&](int i, const std::string& l) { auto v = all; v[i] = l; return Join(v); };
    // Lines 1 and 73 are the first nodes of two different rows; a row and a
    // half of 72 columns; a node with only part of its fields; a node given
    // twice leaves another one without data.
    const struct { const char* name; std::string text, error; } cases[] = {
        {"empty.grd", "", "\\(READING HEADER\\)"}, {"head.grd", all[0] + "\n", "\\(READING 1. DATA LINE\\)"},
        {"lat.grd", Join({all[0], all[1], all[73]}), "\\(LATITUDE 1 - 2\\)"},
        {"lon.grd", Join({all[0], all[2], all[1]}), "\\(LONGITUDE 1 <= LONGITUDE 2\\)"},
        {"short.grd", Join(std::vector<std::string>(all.begin(), all.begin() + 101)), "\\(#LONGITUDE, #LATITUDE\\)"},
        {"word.grd", with(50, "  not a number"), "\\(READING 50. DATA LINE\\)"},
        {"fields.grd", with(200, all[200].substr(0, 60)), "\\(READING 200. DATA LINE\\)"},
        {"twice.grd", with(300, all[299]), "\\(#LONGITUDE, #LATITUDE\\)"},
        // A longitude of 1e30 degrees made the column count overflow; a
        // step of 0.005 degrees asks for 72000 columns that no file holds.
        {"huge.grd", with(2, all[2].substr(0, 6) + "   1e30" + all[2].substr(13)), "\\(FILE .*huge.grd LINE 3: NODE COORDINATES NOT FINITE OR OFF THE GLOBE\\)"},
        {"nan.grd", with(99, "   nan" + all[99].substr(6)), "\\(FILE .*nan.grd LINE 100: NODE COORDINATES NOT FINITE OR OFF THE GLOBE\\)"},
        {"step.grd", with(2, all[2].substr(0, 6) + "  2.505" + all[2].substr(13)), "\\(FILE .*step.grd LINE 3: GRID STEP BELOW 0.01 DEGREES\\)"}};
    gTM_GPT2 g;
    for (const auto& c : cases)
        EXPECT_EXIT(Read(g, orvotest::WriteTemp(c.name, c.text)), ::testing::ExitedWithCode(1),
                    Framed("GRID DATA FILE FOR GPT2 TROPOSHPERE MODEL CORRUPTED " + c.error + "!")) << c.name;
    EXPECT_EXIT(Read(g, "/nonexistent/dir/none.grd"), ::testing::ExitedWithCode(1),
                Framed(".*GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!"));
    EXPECT_EXIT(g.SetAtmParams(flh(0.5L, 0.5L, 0.0L)), ::testing::ExitedWithCode(1), Framed("GPT2 TROPOSPHERE MODEL: NO GRID DATA READ!"));
    for (int i : {5, -1}) EXPECT_EXIT(gpt2_grd()(i), ::testing::ExitedWithCode(1), Framed("GRD::OPERATOR\\(\\) INPUT INDEX NOT IN RAGNE!"));
}
