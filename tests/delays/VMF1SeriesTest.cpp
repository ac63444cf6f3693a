// The Vienna series file: layout, look-up by point and label, time
// interpolation, and the zenith-delay and mapping classes built on it.
#include <iomanip>
#include <sstream>

#include "DelaysSupport.h"
#include "delays/gTM_VMF1.h"

using namespace deltest;

namespace {

// Series of ZIMM at 6 h steps on MJD 57257; a second point; comments; the
// wet delays under the upper-case label.
const std::string kSeries = orvotest::WriteTemp("series.vmf",
    "# Vienna series, test\nZIMM zh 4\n 57257     0 2.0600\n 57257 21600 2.0700\n"
    " 57257 43200 2.0500\n 57257 64800 2.0400\nZIMM ZW 2\n 57257 0 0.1000 57258 0 0.2000\n"
    "# coefficients\nZIMM ah 2\n 57257 0 0.00121 57258 0 0.00125\n"
    "ZIMM aw 2\n 57257 0 0.00050 57258 0 0.00060\nWTZR zh 1\n 57257 0 2.2000\n");

// The interpolation of exact decimal inputs, and an epoch of order 6e4
// days from day plus seconds/86400: long double round-off.
constexpr long double InterpTol = 1e-15L, EpochTol_d = 1e-12L;

// Zenith delays of the series at t.
gTropDelay At(gTM_VMF1& v, const mjd& t) { gTropDelay td; td.tdry = td.twet = 9.0L; return v.GetZenithDelay(td, t), td; }

}  // namespace

TEST(VMF1Series, ReadsEverySeriesAndInterpolatesLinearlyWithoutExtrapolation)
{
    gTMns::intType = 0;
    gTM_VMF1 v; Read(v, kSeries);
    EXPECT_EQ(std::to_string(v.npts) + std::to_string(v.nrec) + v.pt(4) + v.label(1) + std::to_string(v.ndata(0))
                  + std::to_string(v.ndata(1)), "54WTZRZW42");
    EXPECT_NEAR_LD(v.ephs(0, 1), 57257.25L, EpochTol_d);  // day + seconds/86400
    EXPECT_NEAR_LD(v.data(0, 2) + v.data(1, 1), 2.25L, InterpTol);
    EXPECT_TRUE((v.SetPoint("ZIMM"), v.ixH == 0 && v.ixW == 1));  // "ZW" counts as "zw"
    // 03:00 is halfway between the first two values and an eighth of the
    // way into the wet series; before the first and after the last epoch
    // the end values hold.
    const struct { mjd t; long double dry, wet; } cases[] = {
        {mjd(57257, 10800.0L), 2.065L, 0.1125L}, {mjd(57256, 0.0L), 2.06L, 0.1L}, {mjd(57259, 3600.0L), 2.04L, 0.2L}};
    for (const auto& c : cases) EXPECT_NEAR_LD(std::fabs(At(v, c.t).tdry - c.dry) + std::fabs(At(v, c.t).twet - c.wet), 0.0L, InterpTol);
    // A point with only a hydrostatic series warns of the wet one alone;
    // names match exactly, case included, so "zimm" misses both. A missing
    // series gives 0.
    for (const char* point : {"WTZR", "zimm"}) {
        testing::internal::CaptureStderr(), v.SetPoint(point);
        const std::string warn = testing::internal::GetCapturedStderr(), p(point);
        EXPECT_NE(warn.find("#### Orvo: Warning -> ZENITH WETT DELAYS FOR POINT " + p + " NOT IN FILE"), std::string::npos);
        EXPECT_EQ(warn.find("ZENITH HYDROSTATIC DELAYS FOR POINT " + p) != std::string::npos, p == "zimm") << warn;
        EXPECT_NEAR_LD(At(v, mjd(57257, 0.0L)).tdry, p == "zimm" ? 0.0L : 2.2L, InterpTol);
        EXPECT_EQ(At(v, mjd(57257, 0.0L)).twet, 0.0L);
    }
}

TEST(VMF1Series, CubicReproducesACubicCourseInInnerIntervals)
{
    // y = 2 + 0.3 t - 0.2 t^2 + 0.05 t^3, t in days from the first epoch, on
    // seven irregular epochs: the Lagrange cubic through four of them is the
    // polynomial itself. Values of order 1, sums of four terms: 1e-15 per
    // operation, 1e-13 allowed.
    constexpr long double CubicTol = 1e-13L;
    auto y = [](long double x) { return 2.0L + 0.3L * x - 0.2L * x * x + 0.05L * x * x * x; };
    std::ostringstream f;
    f << std::setprecision(20) << "SITE zh 7\n";
    for (long double t : {0.0L, 0.25L, 0.5L, 1.0L, 1.25L, 1.75L, 2.0L}) f << " " << 57000.0L + t << " 0 " << y(t) << "\n";
    gTM_VMF1 v; Read(v, orvotest::WriteTemp("cubic.vmf", f.str()));
    gTMns::intType = 1;
    for (long double x : {0.6L, 0.9L, 1.1L, 1.5L}) EXPECT_NEAR_LD(v.Interpolate(57000.0L + x, 0), y(x), CubicTol) << x;
    // First and last interval stay linear; linear in an inner interval does
    // not follow the curve.
    const long double lin = 0.5L * y(0.0L) + 0.5L * y(0.25L);
    EXPECT_NEAR_LD(v.Interpolate(57000.125L, 0), lin, CubicTol);
    EXPECT_GT(std::fabs(lin - y(0.125L)), 1e-4L);
    gTMns::intType = 0;
    EXPECT_GT(std::fabs(v.Interpolate(57001.5L, 0) - y(1.5L)), 1e-4L);
    EXPECT_EQ(v.Interpolate(57001.0L, -1), 0.0L);
}

TEST(VMF1SeriesDeath, BrokenFilesStopWithFramedError)
{
    const std::string all = orvotest::ReadFile(kSeries);
    // Cut inside the first series: 4 values announced, 2 given; a head
    // without a count or with one beyond ten million values; numbers before
    // any head; epochs going back.
    const struct { const char* name; std::string text, error; } cases[] = {
        {"cut.vmf", all.substr(0, all.find(" 57257 43200")), "SERIES ENDING BEFORE LINE 5 HAS 6 OF 12 NUMBERS"},
        {"head.vmf", "ZIMM zh\n 57257 0 2.0\n", "SERIES HEAD AT LINE 1"}, {"neg.vmf", "ZIMM zh -3\n", "SERIES HEAD AT LINE 1"},
        // Found by fuzzing: a count whose 3 n numbers overflowed a long.
        {"huge.vmf", "ZIMM zh 4953959590107545600\n", "SERIES HEAD AT LINE 1"},
        {"orphan.vmf", " 57257 0 2.0\nZIMM zh 1\n 57257 0 2.0\n", "DATA AT LINE 1"},
        {"word.vmf", "ZIMM zh 1\n 57257 zero 2.0\n", "DATA AT LINE 2"},
        {"back.vmf", "ZIMM zh 2\n 57257 3600 2.0\n 57257 0 2.1\n", "EPOCHS NOT RISING AT LINE 3"},
        {"none.vmf", "# nothing here\n", "NO SERIES"}};
    gTM_VMF1 v;
    for (const auto& c : cases)
        EXPECT_EXIT(Read(v, orvotest::WriteTemp(c.name, c.text)), ::testing::ExitedWithCode(1),
                    Framed(".*VMF1 TROPOSPHERE MODEL FILE CORRUPTED \\(" + c.error + "\\)!")) << c.name;
    EXPECT_EXIT(Read(v, "/nonexistent/dir/x.vmf"), ::testing::ExitedWithCode(1),
                Framed(".*VMF1 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!"));
}
