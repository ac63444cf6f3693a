// The Vienna series file: layout, look-up by point and label, time
// interpolation, and the zenith-delay and mapping classes built on it.
#include "delays/gMF_VMF1.h"
#include "delays/gTM_VMF1.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include "numerics/NearLD.h"

namespace {

// Series of ZIMM at 6 h steps on MJD 57257; a second point; comments; the
// wet delays under the upper-case label.
const char* kSeries =
    "# Vienna series, test\n"
    "ZIMM zh 4\n"
    " 57257     0 2.0600\n"
    " 57257 21600 2.0700\n"
    " 57257 43200 2.0500\n"
    " 57257 64800 2.0400\n"
    "ZIMM ZW 2\n"
    " 57257 0 0.1000 57258 0 0.2000\n"
    "# coefficients\n"
    "ZIMM ah 2\n"
    " 57257 0 0.00121 57258 0 0.00125\n"
    "ZIMM aw 2\n"
    " 57257 0 0.00050 57258 0 0.00060\n"
    "WTZR zh 1\n"
    " 57257 0 2.2000\n";

// The interpolation of exact decimal inputs: long double round-off.
constexpr long double InterpTol = 1e-15L;

// An epoch of order 6e4 days from day plus seconds/86400: round-off.
constexpr long double EpochTol_d = 1e-12L;
// Mapping values near 5 from coefficients interpolated halfway: round-off.
constexpr long double CoeffTol = 1e-13L;

std::string SeriesFile(const std::string& name, const std::string& text)
{
    return orvotest::WriteTemp(name, text);
}

}  // namespace

TEST(VMF1Series, CountsAndReadsEverySeries)
{
    gTM_VMF1 v;
    v.SetFile(SeriesFile("series.vmf", kSeries).c_str());
    v.ReadFile();
    EXPECT_EQ(v.npts, 5);
    EXPECT_EQ(v.nrec, 4);
    EXPECT_EQ(v.pt(4), "WTZR");
    EXPECT_EQ(v.label(1), "ZW");
    EXPECT_EQ(v.ndata(0), 4);
    EXPECT_EQ(v.ndata(1), 2);
    // Epoch = day + seconds/86400.
    EXPECT_NEAR_LD(v.ephs(0, 1), 57257.25L, EpochTol_d);
    EXPECT_NEAR_LD(v.data(0, 2), 2.05L, InterpTol);
    EXPECT_NEAR_LD(v.data(1, 1), 0.2L, InterpTol);
}

TEST(VMF1Series, ZenithDelaysInterpolateLinearlyWithoutExtrapolation)
{
    gTMns::intType = 0;
    gTM_VMF1 v;
    v.SetFile(SeriesFile("series.vmf", kSeries).c_str());
    v.ReadFile();
    v.SetPoint("ZIMM");  // "ZW" counts as "zw"
    EXPECT_EQ(v.ixH, 0);
    EXPECT_EQ(v.ixW, 1);
    gTropDelay td;
    // 03:00 is halfway between the first two values; 0.25 d into the wet
    // series a quarter of the way.
    v.GetZenithDelay(td, mjd(57257, 10800.0L));
    EXPECT_NEAR_LD(td.tdry, 2.065L, InterpTol);
    EXPECT_NEAR_LD(td.twet, 0.1L + 0.125L * 0.1L, InterpTol);
    // Before the first and after the last epoch: the end values.
    v.GetZenithDelay(td, mjd(57256, 0.0L));
    EXPECT_NEAR_LD(td.tdry, 2.06L, InterpTol);
    EXPECT_NEAR_LD(td.twet, 0.1L, InterpTol);
    v.GetZenithDelay(td, mjd(57259, 3600.0L));
    EXPECT_NEAR_LD(td.tdry, 2.04L, InterpTol);
    EXPECT_NEAR_LD(td.twet, 0.2L, InterpTol);
    // A point with only a hydrostatic series warns and gives no wet delay.
    testing::internal::CaptureStderr();
    v.SetPoint("WTZR");
    const std::string warn = testing::internal::GetCapturedStderr();
    EXPECT_NE(warn.find("#### Orvo: Warning -> ZENITH WETT DELAYS FOR POINT WTZR NOT IN FILE"),
              std::string::npos) << warn;
    EXPECT_EQ(warn.find("HYDROSTATIC"), std::string::npos) << warn;
    v.GetZenithDelay(td, mjd(57257, 0.0L));
    EXPECT_NEAR_LD(td.tdry, 2.2L, InterpTol);
    EXPECT_EQ(td.twet, 0.0L);
}

TEST(VMF1Series, UnknownPointWarnsTwiceAndGivesZero)
{
    gTM_VMF1 v;
    v.SetFile(SeriesFile("series.vmf", kSeries).c_str());
    v.ReadFile();
    testing::internal::CaptureStderr();
    v.SetPoint("zimm");  // names match exactly, case included
    const std::string warn = testing::internal::GetCapturedStderr();
    EXPECT_NE(warn.find("ZENITH HYDROSTATIC DELAYS FOR POINT zimm NOT IN FILE"), std::string::npos);
    EXPECT_NE(warn.find("ZENITH WETT DELAYS FOR POINT zimm NOT IN FILE"), std::string::npos);
    gTropDelay td;
    td.tdry = td.twet = 9.0L;
    v.GetZenithDelay(td, mjd(57257, 0.0L));
    EXPECT_EQ(td.tdry, 0.0L);
    EXPECT_EQ(td.twet, 0.0L);
}

TEST(VMF1Series, CubicReproducesACubicCourseInInnerIntervals)
{
    // y = 2 + 0.3 t - 0.2 t^2 + 0.05 t^3, t in days from the first epoch, on
    // seven irregular epochs: the Lagrange cubic through four of them is the
    // polynomial itself. Values of order 1, sums of four terms: 1e-15 per
    // operation, 1e-13 allowed.
    constexpr long double CubicTol = 1e-13L;
    const long double t[7] = {0.0L, 0.25L, 0.5L, 1.0L, 1.25L, 1.75L, 2.0L};
    auto y = [](long double x) { return 2.0L + 0.3L * x - 0.2L * x * x + 0.05L * x * x * x; };
    std::ostringstream f;
    f.precision(20);
    f << "SITE zh 7\n";
    for (long double ti : t) f << " " << 57000.0L + ti << " 0 " << y(ti) << "\n";
    gTM_VMF1 v;
    v.SetFile(SeriesFile("cubic.vmf", f.str()).c_str());
    v.ReadFile();
    gTMns::intType = 1;
    for (long double x : {0.6L, 0.9L, 1.1L, 1.5L})
        EXPECT_NEAR_LD(v.Interpolate(57000.0L + x, 0), y(x), CubicTol) << x;
    // First and last interval stay linear.
    const long double lin = 0.5L * y(0.0L) + 0.5L * y(0.25L);
    EXPECT_NEAR_LD(v.Interpolate(57000.125L, 0), lin, CubicTol);
    EXPECT_GT(std::fabs(lin - y(0.125L)), 1e-4L);
    gTMns::intType = 0;
    // Linear in an inner interval does not follow the curve.
    EXPECT_GT(std::fabs(v.Interpolate(57001.5L, 0) - y(1.5L)), 1e-4L);
    EXPECT_EQ(v.Interpolate(57001.0L, -1), 0.0L);
}

TEST(VMF1Series, MappingCoefficientsComeFromTheFile)
{
    gTMns::intType = 0;
    gMF_VMF1 m;
    m.SetFile(SeriesFile("series.vmf", kSeries).c_str());
    m.ReadFile();
    m.SetPoint("ZIMM");
    EXPECT_EQ(m.ixH, 2);
    EXPECT_EQ(m.ixW, 3);
    // Noon: halfway between the daily values of ah and aw.
    const flh pos(0.8181L, 0.1303L, 956.0L);
    const mjd noon(57257, 43200.0L);
    const long double E = 0.2L;
    gTropDelay fromFile, given;
    m.GetMappFunction(fromFile, pos, noon, E);
    m.GetMappFunction(given, pos, noon, E, 0.00123L, 0.00055L);
    EXPECT_NEAR_LD(fromFile.mfdry, given.mfdry, CoeffTol);
    EXPECT_NEAR_LD(fromFile.mfwet, given.mfwet, CoeffTol);
    testing::internal::CaptureStderr();
    m.SetPoint("WTZR");
    const std::string warn = testing::internal::GetCapturedStderr();
    EXPECT_NE(warn.find("HYDROSTATIC COEFFICINETS A FOR POINT WTZR NOT IN FILE"), std::string::npos);
    EXPECT_NE(warn.find("WETT COEFFICINETS A FOR POINT WTZR NOT IN FILE"), std::string::npos);
}

namespace {

void ReadSeries(const std::string& name, const std::string& text)
{
    gTM_VMF1 v;
    v.SetFile(SeriesFile(name, text).c_str());
    v.ReadFile();
}

const char* kCorrupt = "\\*\\*\\*\\* Orvo: Error -> .*VMF1 TROPOSPHERE MODEL FILE CORRUPTED ";

}  // namespace

TEST(VMF1SeriesDeath, BrokenFilesStopWithFramedError)
{
    const std::string all(kSeries);
    // Cut inside the first series: 4 values announced, 2 given.
    const std::string cut = all.substr(0, all.find(" 57257 43200"));
    EXPECT_EXIT(ReadSeries("cut.vmf", cut), ::testing::ExitedWithCode(1),
                std::string(kCorrupt) + "\\(SERIES ENDING BEFORE LINE 5 HAS 6 OF 12 NUMBERS\\)!");
    EXPECT_EXIT(ReadSeries("head.vmf", "ZIMM zh\n 57257 0 2.0\n"), ::testing::ExitedWithCode(1),
                std::string(kCorrupt) + "\\(SERIES HEAD AT LINE 1\\)!");
    EXPECT_EXIT(ReadSeries("neg.vmf", "ZIMM zh -3\n"), ::testing::ExitedWithCode(1),
                std::string(kCorrupt) + "\\(SERIES HEAD AT LINE 1\\)!");
    EXPECT_EXIT(ReadSeries("orphan.vmf", " 57257 0 2.0\nZIMM zh 1\n 57257 0 2.0\n"),
                ::testing::ExitedWithCode(1), std::string(kCorrupt) + "\\(DATA AT LINE 1\\)!");
    EXPECT_EXIT(ReadSeries("word.vmf", "ZIMM zh 1\n 57257 zero 2.0\n"),
                ::testing::ExitedWithCode(1), std::string(kCorrupt) + "\\(DATA AT LINE 2\\)!");
    EXPECT_EXIT(ReadSeries("back.vmf", "ZIMM zh 2\n 57257 3600 2.0\n 57257 0 2.1\n"),
                ::testing::ExitedWithCode(1),
                std::string(kCorrupt) + "\\(EPOCHS NOT RISING AT LINE 3\\)!");
    EXPECT_EXIT(ReadSeries("none.vmf", "# nothing here\n"), ::testing::ExitedWithCode(1),
                std::string(kCorrupt) + "\\(NO SERIES\\)!");
    gTM_VMF1 v;
    v.SetFile("/nonexistent/dir/x.vmf");
    EXPECT_EXIT(v.ReadFile(), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> .*VMF1 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!");
}
