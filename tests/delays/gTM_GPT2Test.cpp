// GPT2 on the published 5-degree grid: the IERS test case, a real site with
// measured weather, the grid edges, and broken copies of the grid file.
#include "delays/gTM_GPT2.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <vector>
#include "numerics/NearLD.h"

namespace {

const long double Pi = 3.14159265358979323846264338327950288L;
long double Rad(long double deg) { return deg * Pi / 180.0L; }

// Node coordinates are decimal numbers with one decimal; the grid steps are
// their differences: round-off only.
constexpr long double CoordTol_deg = 1e-12L;
// Pressures of order 1e5 Pa from exact decimals: round-off only.
constexpr long double ReadTol_Pa = 1e-9L;
// Scaled or interpolated values of order 1e-3 from exact decimals.
constexpr long double ReadTol = 1e-15L;
// The IERS header prints 2 decimals of p, T, e and 7 of the coefficients:
// half a unit of the last digit.
constexpr long double HeaderDigitTol = 0.005L;
constexpr long double HeaderCoeffTol = 0.5e-7L;
// A station at 956 m sees 900 to 920 hPa in any weather but a storm.
constexpr long double MetSanityTol_hPa = 10.0L;
// 2.277 mm per hPa over a gravity factor within 0.3 % of 1 at Zimmerwald:
// 6 mm of 2.06 m; 1 cm allowed.
constexpr long double SaastamoinenTol_m = 0.01L;

const std::string kGrid = "models/gpt2_5.grd";

// Reads the real grid once for the whole suite: it has 2592 nodes.
class GPT2Grid : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        grid = new gTM_GPT2;
        grid->SetFile(orvotest::Data(kGrid).c_str());
        grid->ReadFile();
    }
    static void TearDownTestSuite() { delete grid; grid = nullptr; }
    static gTM_GPT2* grid;
};
gTM_GPT2* GPT2Grid::grid = nullptr;

}  // namespace

TEST_F(GPT2Grid, FindsTheFiveDegreeLayout)
{
    EXPECT_EQ(grid->nF, 36);
    EXPECT_EQ(grid->nL, 72);
    EXPECT_EQ(grid->nLine, 36 * 72);
    EXPECT_NEAR_LD(grid->minF, -87.5L, CoordTol_deg);
    EXPECT_NEAR_LD(grid->maxF, 87.5L, CoordTol_deg);
    // Each row of the file runs 2.5 ... 177.5, -177.5 ... -2.5 degrees.
    EXPECT_NEAR_LD(grid->minL, -177.5L, CoordTol_deg);
    EXPECT_NEAR_LD(grid->maxL, 177.5L, CoordTol_deg);
    EXPECT_NEAR_LD(grid->dF, 5.0L, CoordTol_deg);
    EXPECT_NEAR_LD(grid->dL, 5.0L, CoordTol_deg);
    // Row 0 is the southernmost even though the file starts in the north:
    // the node at 87.5 N, 2.5 E (first data line: mean pressure 101421 Pa,
    // humidity 1.64 g/kg, wet coefficient 0.5792e-3) lies in the last row,
    // column 36.
    EXPECT_NEAR_LD(grid->pG(35, 36)(gpt2_grd::A0), 101421.0L, ReadTol_Pa);
    EXPECT_NEAR_LD(grid->pG(35, 36)(gpt2_grd::B1), 409.0L, ReadTol_Pa);
    EXPECT_NEAR_LD(grid->qG(35, 36)(gpt2_grd::A0), 1.64e-3L, ReadTol);
    EXPECT_NEAR_LD(grid->aWG(35, 36)(gpt2_grd::A0), 0.5792e-3L, ReadTol);
    EXPECT_NEAR_LD(grid->hN(35, 36), 19.36L, ReadTol);
}

TEST_F(GPT2Grid, ReproducesIersTestCase)
{
    // IERS Conventions (2010) routine GPT2, test case (Vienna, MJD 56141,
    // with annual and semi-annual terms), full-precision harness values.
    // The routine turns radians into degrees with pi = 3.1415926535: the
    // site it evaluates lies 1.4e-9 degree north of 48.20 degrees, which
    // moves its outputs by up to 5e-9. Given that same site, the quantities
    // without time terms (undulation, and the VMF1 coefficients, whose
    // harmonics are tiny) agree to round-off: 1e-10 leaves room for double
    // round-off of the routine's sums (values up to 1e3).
    constexpr long double IersTol = 1e-10L;
    // The same pi shifts the routine's annual phase by 2.3e-9 rad and the
    // semi-annual one by 4.5e-9 rad at this epoch; with harmonic amplitudes
    // below 10 (K, hPa) that is at most 5e-8.
    constexpr long double HarmonicTol = 5e-8L;
    const long double routinePi = 3.1415926535L;
    const flh pos(0.8412486994612668L * Pi / routinePi,
                  0.28571039855147173L * Pi / routinePi, 156.0L);
    grid->SetAtmParams(pos);
    gTropDelay td;
    grid->GetZenithDelay(td, mjd(56141, 0.0L));
    EXPECT_NEAR_LD(grid->pres, 1002.555031899637015L, HarmonicTol);
    EXPECT_NEAR_LD(grid->temp, 22.121274188593230L, HarmonicTol);
    EXPECT_NEAR_LD(grid->dT * 1000.0L, -6.525262725051438L, HarmonicTol);
    EXPECT_NEAR_LD(grid->e, 15.625300656392879L, HarmonicTol);
    EXPECT_NEAR_LD(grid->GetCoeffAH(), 0.001264668783781L, IersTol);
    EXPECT_NEAR_LD(grid->GetCoeffAW(), 0.000572557214095L, IersTol);
    EXPECT_NEAR_LD(grid->undu, 44.05609719704228L, IersTol);
    // The header's rounded digits hold for the nominal site as well.
    grid->SetAtmParams(flh(Rad(48.20L), Rad(16.37L), 156.0L));
    grid->GetZenithDelay(td, mjd(56141, 0.0L));
    EXPECT_NEAR_LD(grid->pres, 1002.56L, HeaderDigitTol);
    EXPECT_NEAR_LD(grid->temp, 22.12L, HeaderDigitTol);
    EXPECT_NEAR_LD(grid->e, 15.63L, HeaderDigitTol);
    EXPECT_NEAR_LD(grid->GetCoeffAH(), 0.0012647L, HeaderCoeffTol);
    EXPECT_NEAR_LD(grid->GetCoeffAW(), 0.0005726L, HeaderCoeffTol);
}

namespace {

// Mean pressure (hPa) and temperature (Celsius) of a RINEX 2 met file with
// the types PR TD HR, as the station measured them.
void MetDayMean(const std::string& path, long double& p_hPa, long double& T_C)
{
    std::ifstream in(path);
    std::string line;
    bool data = false;
    long double sp = 0.0L, sT = 0.0L;
    int n = 0;
    while (std::getline(in, line)) {
        if (!data) {
            data = line.find("END OF HEADER") != std::string::npos;
            continue;
        }
        std::istringstream ss(line);
        int y, mo, d, h, mi, s;
        long double pr, td, hr;
        if (ss >> y >> mo >> d >> h >> mi >> s >> pr >> td >> hr) {
            sp += pr;
            sT += td;
            ++n;
        }
    }
    ASSERT_GT(n, 10) << path;
    p_hPa = sp / n;
    T_C = sT / n;
}

}  // namespace

TEST_F(GPT2Grid, MatchesWeatherMeasuredAtZimmerwald)
{
    long double pMet = 0.0L, tMet = 0.0L;
    MetDayMean(orvotest::Data("zimm-2015-235/zimm2350.15m"), pMet, tMet);
    // The met file's own sanity: a site at 956 m sees about 900 hPa.
    ASSERT_NEAR_LD(pMet, 909.0L, MetSanityTol_hPa);
    // Zimmerwald pressure sensor, 46.877 N 7.465 E, 956.3 m (met header).
    grid->SetAtmParams(flh(Rad(46.8771L), Rad(7.4650L), 956.345L));
    gTropDelay td;
    grid->GetZenithDelay(td, mjd(57257, 0.0L));  // 2015-08-23
    // A climatology misses the day's weather: synoptic pressure swings in
    // central Europe have a standard deviation near 8 hPa, summer day-mean
    // temperatures near 4 K; three of those are allowed.
    constexpr long double WeatherTol_hPa = 25.0L;
    constexpr long double WeatherTol_K = 12.0L;
    EXPECT_NEAR_LD(grid->pres, pMet, WeatherTol_hPa);
    EXPECT_NEAR_LD(grid->temp, tMet, WeatherTol_K);
    // Saastamoinen on about 905 hPa gives 2.06 m: 2.277 mm per hPa, gravity
    // factor within 0.3 % of 1.
    EXPECT_NEAR_LD(td.tdry, 0.002277L * grid->pres, SaastamoinenTol_m);
    EXPECT_GT(td.twet, 0.03L);
    EXPECT_LT(td.twet, 0.30L);
}

TEST_F(GPT2Grid, BeyondTheOutermostRowsOnlyLongitudeCounts)
{
    // North of 87.5 degrees one row is used twice: the values do not change
    // with latitude any more, and equal those on the row itself.
    constexpr long double SameTol = 1e-9L;
    gTropDelay td;
    long double p[3];
    const long double lats[3] = {87.5L, 88.7L, 89.99L};
    for (int i = 0; i < 3; ++i) {
        grid->SetAtmParams(flh(Rad(lats[i]), Rad(31.0L), 100.0L));
        grid->GetZenithDelay(td, mjd(56141, 0.0L));
        p[i] = grid->pres;
    }
    EXPECT_EQ(grid->IX[0][0], grid->IX[2][0]);
    EXPECT_NEAR_LD(p[1], p[0], SameTol);
    EXPECT_NEAR_LD(p[2], p[0], SameTol);
    // The same in the south.
    grid->SetAtmParams(flh(Rad(-89.0L), Rad(31.0L), 100.0L));
    EXPECT_EQ(grid->IX[0][0], 0);
    EXPECT_EQ(grid->IX[2][0], 0);
}

TEST_F(GPT2Grid, CrossesTheDateLineContinuously)
{
    // The file's columns end at 177.5 and start at -177.5: a site at 180
    // degrees lies in the middle of the seam cell, and -180 is the same
    // meridian. On a grid row only longitude is interpolated, and node
    // values come back unchanged: round-off only.
    constexpr long double SeamTol = 1e-9L;
    gTropDelay td;
    auto presAt = [&](long double lon_deg) {
        grid->SetAtmParams(flh(Rad(47.5L), Rad(lon_deg), 500.0L));
        grid->GetZenithDelay(td, mjd(56141, 0.0L));
        return grid->pres;
    };
    const long double west = presAt(177.5L), east = presAt(-177.5L);
    EXPECT_NEAR_LD(presAt(180.0L), (west + east) / 2.0L, SeamTol);
    EXPECT_NEAR_LD(presAt(-180.0L), (west + east) / 2.0L, SeamTol);
    EXPECT_NEAR_LD(grid->L2 - grid->L1, 5.0L, SeamTol);
    EXPECT_NEAR_LD(presAt(-179.0L), 0.3L * west + 0.7L * east, SeamTol);
}

namespace {

// A synthetic 5-degree grid with columns 2.5 ... 357.5 (the 0-360
// convention), every height 0 and every field constant in time; mean
// pressure 100000 Pa + 10 Pa per degree of longitude + 1 Pa per degree of
// latitude.
std::string SyntheticGrid()
{
    std::ostringstream g;
    g << "% synthetic\n";
    for (int r = 0; r < 36; ++r) {
        const double lat = 87.5 - 5.0 * r;
        for (int c = 0; c < 72; ++c) {
            const double lon = 2.5 + 5.0 * c;
            g << lat << ' ' << lon << ' ' << 100000.0 + 10.0 * lon + lat
              << " 0 0 0 0 288 0 0 0 0 5 0 0 0 0 -6.5 0 0 0 0 0 0"
              << " 1.2 0 0 0 0 0.6 0 0 0 0\n";
        }
    }
    return g.str();
}

}  // namespace

TEST(GPT2, SeamCellOnAZeroTo360Grid)
{
    gTM_GPT2 g;
    g.SetFile(orvotest::WriteTemp("grid0360.grd", SyntheticGrid()).c_str());
    g.ReadFile();
    EXPECT_NEAR_LD(g.minL, 2.5L, CoordTol_deg);
    EXPECT_NEAR_LD(g.maxL, 357.5L, CoordTol_deg);
    // 358 degrees, given as -2 as the program's longitudes run: between the
    // last column (357.5) and the first (2.5 = 362.5).
    g.SetAtmParams(flh(Rad(10.0L), Rad(-2.0L), 0.0L));
    EXPECT_NEAR_LD(g.L1, 357.5L, CoordTol_deg);
    EXPECT_NEAR_LD(g.L2, 362.5L, CoordTol_deg);
    EXPECT_EQ(g.IX[0][1], 71);
    EXPECT_EQ(g.IX[1][1], 0);
    gTropDelay td;
    g.GetZenithDelay(td, mjd(56141, 0.0L));
    // At height 0 the pressure is the bilinear mean of the nodes: weight 0.9
    // on 357.5 and 0.1 on 2.5 in longitude, latitude 10 gives 10 Pa.
    const long double expect_Pa = 0.9L * (100000.0L + 3575.0L) + 0.1L * (100000.0L + 25.0L) + 10.0L;
    // Bilinear sums of values near 1e3 (hPa, K): round-off only.
    constexpr long double SumTol = 1e-12L;
    EXPECT_NEAR_LD(g.pres, expect_Pa / 100.0L, SumTol);
    EXPECT_NEAR_LD(g.temp, 288.0L - 273.15L, SumTol);
    EXPECT_NEAR_LD(g.GetCoeffAH(), 1.2e-3L, ReadTol);
    EXPECT_NEAR_LD(g.GetCoeffAW(), 0.6e-3L, ReadTol);
}

// Broken copies of the real grid, cut by the tests themselves.
namespace {

std::vector<std::string> GridLines(int n)
{
    std::ifstream in(orvotest::Data(kGrid));
    std::vector<std::string> lines;
    std::string l;
    while ((n < 0 || static_cast<int>(lines.size()) < n) && std::getline(in, l))
        lines.push_back(l);
    return lines;
}

std::string Join(const std::vector<std::string>& lines)
{
    std::string s;
    for (const std::string& l : lines) s += l + "\n";
    return s;
}

void ReadGrid(const std::string& name, const std::string& text)
{
    gTM_GPT2 g;
    g.SetFile(orvotest::WriteTemp(name, text).c_str());
    g.ReadFile();
}

const char* kFrame = "\\*\\*\\*\\* Orvo: Error -> GRID DATA FILE FOR GPT2 TROPOSHPERE MODEL CORRUPTED ";

}  // namespace

TEST(GPT2Death, CutOrBrokenGridStopsWithFramedError)
{
    const auto all = GridLines(-1);
    ASSERT_EQ(all.size(), 2593u);
    EXPECT_EXIT(ReadGrid("empty.grd", ""), ::testing::ExitedWithCode(1),
                std::string(kFrame) + "\\(READING HEADER\\)!");
    EXPECT_EXIT(ReadGrid("head.grd", Join(GridLines(1))), ::testing::ExitedWithCode(1),
                std::string(kFrame) + "\\(READING 1. DATA LINE\\)!");
    EXPECT_EXIT(ReadGrid("one.grd", Join(GridLines(2))), ::testing::ExitedWithCode(1),
                std::string(kFrame) + "\\(READING 2. DATA LINE\\)!");
    // Lines 1 and 73 are the first nodes of two different rows.
    EXPECT_EXIT(ReadGrid("lat.grd", Join({all[0], all[1], all[73]})),
                ::testing::ExitedWithCode(1), std::string(kFrame) + "\\(LATITUDE 1 - 2\\)!");
    EXPECT_EXIT(ReadGrid("lon.grd", Join({all[0], all[2], all[1]})),
                ::testing::ExitedWithCode(1),
                std::string(kFrame) + "\\(LONGITUDE 1 <= LONGITUDE 2\\)!");
    // A row and a half: 72 columns times 2 rows would need 144 lines.
    EXPECT_EXIT(ReadGrid("short.grd", Join(GridLines(101))), ::testing::ExitedWithCode(1),
                std::string(kFrame) + "\\(#LONGITUDE, #LATITUDE\\)!");
}

TEST(GPT2Death, BadNodeLinesStopWithFramedError)
{
    auto lines = GridLines(-1);
    auto text = lines;
    text[50] = "  not a number";
    EXPECT_EXIT(ReadGrid("word.grd", Join(text)), ::testing::ExitedWithCode(1),
                std::string(kFrame) + "\\(READING 50. DATA LINE\\)!");
    // A node with its coordinates but only part of its fields.
    text = lines;
    text[200] = text[200].substr(0, 60);
    EXPECT_EXIT(ReadGrid("fields.grd", Join(text)), ::testing::ExitedWithCode(1),
                std::string(kFrame) + "\\(READING 200. DATA LINE\\)!");
    // A node given twice leaves another one without data.
    text = lines;
    text[300] = text[299];
    EXPECT_EXIT(ReadGrid("twice.grd", Join(text)), ::testing::ExitedWithCode(1),
                std::string(kFrame) + "\\(#LONGITUDE, #LATITUDE\\)!");
}

TEST(GPT2Death, MissingGridStopsBeforeUse)
{
    EXPECT_EXIT(ReadGrid("/nonexistent/dir/none.grd", ""), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> .*GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!");
    gTM_GPT2 g;
    EXPECT_EXIT(g.SetAtmParams(flh(0.5L, 0.5L, 0.0L)), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> GPT2 TROPOSPHERE MODEL: NO GRID DATA READ!");
    gpt2_grd node;
    EXPECT_EXIT(node(5), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> GRD::OPERATOR\\(\\) INPUT INDEX NOT IN RAGNE!");
    EXPECT_EXIT(node(-1), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> GRD::OPERATOR\\(\\) INPUT INDEX NOT IN RAGNE!");
}
