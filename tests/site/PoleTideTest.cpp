// ERP reading, pole interpolation, mean pole and pole tide on small ERP
// files written here.
#include <cmath>

#include "SiteSupport.h"
#include "site/PoleTide.h"

using namespace sitetest;

namespace {

const std::string kV1Head = "version 1\nsome producer\n  MJD      X       Y   UT1-UTC\n     (10**-5\") (10**-6 s)\n";
const std::string kV2Head = "IGS ERP\nfinal\nVERSION 2\n  MJD    Xpole   Ypole  UT1-UTC\n  (10**-6\")  (0.1 usec)\n";
// Three days: x 0.10, 0.12, 0.11", y 0.40, 0.41, 0.43"; two short tail
// lines (five characters at most after trimming) that are not records.
const std::string kV1 = kV1Head + "59024.50  10000  40000  -123456\n59025.50  12000  41000 -124456 9 9 9\n"
                                  "59026.50  11000  43000 -125456\n  EOF \n12345\n";

PoleTide Read(const std::string& name, const std::string& text)
{ PoleTide p; p.SetFile(orvotest::WriteTemp(name, text).c_str()); p.ReadFile(); return p; }

mjd Day(long double mjdDec) { mjd t; t = mjdDec; return t; }

}  // namespace

// Epochs from decimal MJD carry up to 1e-9 s (2e-16" at 0.02"/day); the
// pole values themselves hold 1e-20" of round-off. The file resolves 1e-6".
constexpr long double PoleTol_as = 1e-15L;

TEST(PoleTide, InterpolatesAndExtrapolatesTheRecordsWithWarningsBeyondADay)
{
    PoleTide p = Read("v1.erp", kV1);
    EXPECT_EQ(p.GetNEpoch(), 3);
    const std::string warn = "#### Orvo: Warning -> ERP FILE - GETTING INDEX - INPUT EPOCH OUT OF DATA INTERVAL ";
    const struct { mjd t; long double x, y; std::string text; } cases[] = {
        {Day(59024.5L), 0.10L, 0.40L, ""},  {Day(59025.5L), 0.12L, 0.41L, ""}, {Day(59026.5L), 0.11L, 0.43L, ""},
        {Day(59025.0L), 0.11L, 0.405L, ""}, {Day(59026.0L), 0.115L, 0.42L, ""},
        {Day(59027.0L), 0.105L, 0.44L, ""}, {Day(59024.0L), 0.09L, 0.395L, ""},
        {Day(59027.5L), 0.10L, 0.45L, ""},  {Day(59023.5L), 0.08L, 0.39L, ""},
        {Day(59027.5L + 1.0L / 86400.0L), 0.10L - 0.01L / 86400.0L, 0.45L + 0.02L / 86400.0L, warn + "(>1day) ####"},
        {Day(59023.5L - 1.0L / 86400.0L), 0.08L - 0.02L / 86400.0L, 0.39L - 0.01L / 86400.0L, warn + "(<1day) ####"}};
    for (const auto& c : cases) {
        orvotest::Capture err(std::cerr); neu d;
        p.GetPoleTide(c.t, flh(0.8L, 0.1L, 0.0L), d);
        EXPECT_NEAR_LD(p.GetXi(), c.x, PoleTol_as) << c.t.GetMJDDec();
        EXPECT_NEAR_LD(p.GetYi(), c.y, PoleTol_as) << c.t.GetMJDDec();
        if (c.text.empty()) EXPECT_EQ(err.Text(), "") << c.t.GetMJDDec();
        else EXPECT_NE(err.Text().find(c.text), std::string::npos) << err.Text();
    }
}

TEST(PoleTide, ColumnsScaleByTheFileVersionAndOneRecordHoldsEverywhere)
{
    const struct { std::string text; long n; long double x, y; } files[] = {
        {kV1Head + "59024.50  10000  40000 0\n", 1, 0.1L, 0.4L},
        {kV2Head + "59024.50  100000  400000 0\n59025.50  100000  400000 0\n", 2, 0.1L, 0.4L},
        {"version 2 " + kV1Head + "59024.50  100000  400000 0\n", 1, 0.1L, 0.4L}};
    int k = 0;
    for (const auto& f : files) {
        PoleTide p = Read("ver" + std::to_string(k++) + ".erp", f.text);
        EXPECT_EQ(p.GetNEpoch(), f.n);
        for (long double day : {59024.5L, 59025.0L, 59031.0L}) {
            orvotest::Capture err(std::cerr); neu d;
            p.GetPoleTide(Day(day), flh(), d);
            EXPECT_NEAR_LD(p.GetXi(), f.x, PoleTol_as) << k;
            EXPECT_NEAR_LD(p.GetYi(), f.y, PoleTol_as) << k;
        }
    }
}

// Hand sums of the published coefficients are exact to 1e-12"; the two
// pieces meet at 2010.0 to the 1e-6" their coefficients are rounded to.
constexpr long double MeanPoleTol_as = 1e-12L, SeamTol_as = 1e-6L + MeanPoleTol_as;

TEST(PoleTide, MeanPoleCubicUpTo2010AndLineAfterMeetAtTheSeam)
{
    // Years from 2000-01-01 0h (MJD 51544).
    const struct { mjd t; long double xp, yp; } cases[] = {
        {mjd(51544, 0.0L), 0.055974L, 0.346346L},
        {mjd(51178, 64800.0L), 0.054326806L, 0.344450018L},
        {mjd(55196, 43200.0L), 0.099654L, 0.352605L},
        {mjd(55196, 43200.000001L), 0.099654L, 0.352604L},
        {mjd(58849, 0.0L), 0.175795L, 0.346317L}};
    PoleTide p; long double x[5], y[5]; int k = 0;
    for (const auto& c : cases) {
        p.SetCalcEpoch(c.t), p.SetMeanPole(), x[k] = p.GetXp(), y[k++] = p.GetYp();
        EXPECT_NEAR_LD(p.GetXp(), c.xp, MeanPoleTol_as) << c.t.GetMJDDec();
        EXPECT_NEAR_LD(p.GetYp(), c.yp, MeanPoleTol_as) << c.t.GetMJDDec();
    }
    // Cases 2 and 3, a microsecond apart, lie on either side of the seam.
    EXPECT_TRUE(std::fabs(x[3] - x[2]) <= SeamTol_as && std::fabs(y[3] - y[2]) <= SeamTol_as) << y[3] - y[2];
}

// Reference computed by hand in double precision (1e-19 m round-off on
// displacements of 1e-3 m).
constexpr long double TideTol_m = 1e-15L;

TEST(PoleTide, DisplacementOfTheConventionsFormulae)
{
    // Pole 0.2", 0.3"; mean pole of 2020.0 0.175795", 0.346317"; site at
    // 0.8 rad, 0.13 rad.
    PoleTide p = Read("one.erp", kV2Head + "58849.00  200000  300000 0\n");
    p.SetCalcEpoch(mjd(58849, 0.0L)), p.SetMeanPole();
    neu d;
    p.GetPoleTide(mjd(58849, 0.0L), flh(0.8L, 0.13L, 0.0L), d);
    EXPECT_NEAR_LD(d.n, 4.729400476793991e-06L, TideTol_m);
    EXPECT_NEAR_LD(d.e, 0.00031676701790190665L, TideTol_m);
    EXPECT_NEAR_LD(d.u, -0.0005936309743518392L, TideTol_m);
}

TEST(PoleTideDeath, UnreadableFilesStopWithTheFramedError)
{
    const std::string bad[] = {
        "",                                                           // nothing at all
        "version 1\n 59024.50 10000 40000 0\n",                        // no column head
        kV1Head,                                                      // head without records
        kV1Head.substr(0, kV1Head.rfind('(')),                        // no units line either
        kV1Head + "59024.50  1x000\n",                                // record without all columns
        kV1Head + "59025.50 1 1 1\n59024.50 1 1 1\n",                 // out of time order
        kV1Head + "59024.50 1 1 1\n59024.50 1 1 1\n"};                // repeated epoch
    for (std::size_t i = 0; i < sizeof bad / sizeof bad[0]; ++i)
        EXPECT_EXIT(Read("bad" + std::to_string(i) + ".erp", bad[i]), ::testing::ExitedWithCode(1),
                    Framed("EARTH ROTATION PARAMETER FILE CAN NOT BE READ!")) << i;
    EXPECT_EXIT({ PoleTide p; p.SetFile("/nonexistent/erp"); p.ReadFile(); }, ::testing::ExitedWithCode(1),
                Framed("EARTH ROTATION PARAMETER FILE CAN NOT BE READ!"));
}
