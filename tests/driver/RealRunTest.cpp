// Whole runs of the built program on the real station days: the static PPP
// solution must land on the independently known station coordinates, and bad
// input at program level must give a clear, finite result.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <sys/wait.h>

#include "TestSupport.h"
#include "numerics/NearLD.h"

namespace {

// The bound of the brief for a first solution without antenna calibration
// and without tides: the unmodelled effects (receiver phase-centre offset and
// variation of about a decimetre on the L3 combination, the solid tide left
// after averaging over the day, satellite offsets not absorbed by the clocks)
// add up to decimetres; half a metre means a fault in the chain.
constexpr long double PositionBound_m = 0.5L;
// Tighter checks per component. Up: below the 0.216 m antenna height of
// ESBC, so that a lost or doubled marker-to-ARP eccentricity fails. North and
// east: the missing models act mostly on the height; 10 cm in the plane is
// three times what a correct run shows on these days.
constexpr long double UpBound_m = 0.15L;
constexpr long double HorizontalBound_m = 0.10L;
// Default iteration limit (MaxIter): a run that uses all of it did not
// converge.
constexpr int MaxIter = 10;
// L3 reference deviation over the full day: the a-priori sigma is 6 mm;
// missing tides, wind-up and antenna models add centimetres, and the last
// quarter of an hour lies beyond the last orbit node, where the 14-node
// polynomial is extrapolated (decimetres to metres on a few arcs). Below
// 0.1 m and above 1 mm separates a working adjustment from broken arcs or
// an idle phase type.
constexpr long double L3FullDayMax_mm = 100.0L;
constexpr long double L3Min_mm = 1.0L;
// Within the span of the orbit file no extrapolation is left and the L3
// deviation must come down to the unmodelled centimetre.
constexpr long double L3InsideOrbitMax_mm = 25.0L;
// Code: P3 amplifies the noise of the raw codes about three times, and
// GLONASS inter-frequency biases are not modelled: tens of centimetres to a
// metre; 3 m is a fault (a clock jump, a wrong frequency).
constexpr long double CodeMin_mm = 100.0L;
constexpr long double CodeMax_mm = 3000.0L;
// Last printed digit of coordinates in the report and the plot file.
constexpr long double PrintStep_m = 1e-4L;

struct RunResult {
    int status;
    std::string out, err;
};

// Runs the built program with `args` in its own scratch folder (the plot
// file lands there) and collects the two streams.
RunResult RunOrvo(const std::string& dir, const std::string& args)
{
    const std::string work = orvotest::TempDir() + "/" + dir;
    std::system(("mkdir -p '" + work + "'").c_str());
    const std::string cmd = "cd '" + work + "' && '" + orvotest::OrvoBinary() + "' " + args +
                            " > report.out 2> log.err";
    const int rc = std::system(cmd.c_str());
    RunResult r;
    r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    r.out = orvotest::ReadFile(work + "/report.out");
    r.err = orvotest::ReadFile(work + "/log.err");
    return r;
}

// KEY=value pairs of a data set's set.env (comments and quotes ignored).
std::map<std::string, std::string> SetEnv(const std::string& set)
{
    std::map<std::string, std::string> kv;
    std::istringstream in(orvotest::ReadFile(orvotest::Data(set + "/set.env")));
    std::string line;
    while (std::getline(in, line)) {
        const auto eq = line.find('=');
        if (line.empty() || line[0] == '#' || eq == std::string::npos) continue;
        kv[line.substr(0, eq)] = line.substr(eq + 1);
    }
    return kv;
}

struct Xyz {
    long double x, y, z;
};

Xyz Reference(const std::string& set)
{
    auto kv = SetEnv(set);
    return {std::stold(kv.at("REF_X")), std::stold(kv.at("REF_Y")), std::stold(kv.at("REF_Z"))};
}

struct Neu {
    long double n, e, u;
};

// North, east, up of est - ref in the local frame of ref on GRS80: latitude
// by Bowring's iteration, written here independently of the program's own
// transformations.
Neu LocalDifference(const Xyz& est, const Xyz& ref)
{
    const long double a = 6378137.0L, f = 1.0L / 298.257222101L, e2 = f * (2.0L - f);
    const long double p = std::hypot(ref.x, ref.y);
    long double lat = std::atan2(ref.z, p * (1.0L - e2));
    for (int i = 0; i < 10; ++i) {
        const long double s = std::sin(lat);
        const long double n = a / std::sqrt(1.0L - e2 * s * s);
        const long double h = p / std::cos(lat) - n;
        lat = std::atan2(ref.z, p * (1.0L - e2 * n / (n + h)));
    }
    const long double lon = std::atan2(ref.y, ref.x);
    const long double dx = est.x - ref.x, dy = est.y - ref.y, dz = est.z - ref.z;
    const long double sl = std::sin(lat), cl = std::cos(lat), so = std::sin(lon), co = std::cos(lon);
    return {-sl * co * dx - sl * so * dy + cl * dz, -so * dx + co * dy,
            cl * co * dx + cl * so * dy + sl * dz};
}

// The number after `label` on the first line holding it; NaN when absent.
long double NumberAfter(const std::string& text, const std::string& label)
{
    const auto at = text.find(label);
    if (at == std::string::npos) return std::nanl("");
    std::istringstream in(text.substr(at + label.size(), 40));
    long double v = std::nanl("");
    in >> v;
    return v;
}

// The "Estimated" column of the three ECEF lines of the report.
Xyz Estimated(const std::string& out)
{
    long double v[3];
    const char* labels[3] = {"    X: ", "    Y: ", "    Z: "};
    const auto block = out.find("ECEF COORDINATES:");
    for (int i = 0; i < 3; ++i) {
        v[i] = std::nanl("");
        if (block == std::string::npos) continue;
        const auto at = out.find(labels[i], block);
        if (at == std::string::npos) continue;
        std::istringstream in(out.substr(at + 7, 60));
        long double approx, corr;
        in >> approx >> corr >> v[i];
    }
    return {v[0], v[1], v[2]};
}

// A printed not-a-number ("nan", "-nan", "NaN") as a word of its own, so
// that words like "nanoseconds" in a label do not count.
bool HasNaN(const std::string& text)
{
    static const std::regex NaNWord("(^|[^A-Za-z])[-+]?nan([^A-Za-z]|$)", std::regex::icase);
    return std::regex_search(text, NaNWord);
}

// Options shared by all full runs: ionosphere-free code and phase,
// Saastamoinen with Niell mapping, 2-hour troposphere nodes with gradients,
// static solution and its plot file.
std::string Common(const std::string& ltypes)
{
    return " -l" + ltypes + ",L3 -tmSAAST,NIELL -ti02:00:00 -tg -xSTA -gpsplot.txt";
}

std::string Esbc(const std::string& file) { return orvotest::Data("esbc-2020-177/" + file); }
const std::string EsbcSp3 = "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3";
const std::string EsbcClk = "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK";
std::string EsbcProducts()
{
    return " -ep" + Esbc(EsbcSp3) + " -ec" + Esbc(EsbcClk);
}

// Copies the header and the first `nEpochs` epochs of a RINEX 2 observation
// file to `name` in the scratch folder; with `blankPhase` the L1 and L2
// fields (third field of the first and second line of each record, the
// layout of the ESBC file) are blanked, so that no phase survives.
std::string CutObs(const std::string& src, const std::string& name, long nEpochs, bool blankPhase)
{
    std::ifstream in(src);
    const std::string path = orvotest::TempDir() + "/" + name;
    std::ofstream out(path);
    std::string line;
    int nTypes = 0;
    while (std::getline(in, line)) {
        out << line << "\n";
        if (line.find("# / TYPES OF OBSERV") != std::string::npos && line.size() > 6 &&
            line.substr(0, 6) != "      ")
            nTypes = std::atoi(line.substr(0, 6).c_str());
        if (line.find("END OF HEADER") != std::string::npos) break;
    }
    const int linesPerSat = (nTypes + 4) / 5;
    for (long ep = 0; ep < nEpochs && std::getline(in, line); ++ep) {
        out << line << "\n";
        const int nSat = line.size() >= 32 ? std::atoi(line.substr(29, 3).c_str()) : 0;
        for (int c = 0; c < (nSat - 1) / 12 && std::getline(in, line); ++c) out << line << "\n";
        for (int s = 0; s < nSat; ++s)
            for (int r = 0; r < linesPerSat && std::getline(in, line); ++r) {
                if (blankPhase && r < 2) {
                    line.resize(80, ' ');
                    line.replace(32, 16, 16, ' ');
                    line.erase(line.find_last_not_of(' ') + 1);
                }
                out << line << "\n";
            }
    }
    return path;
}

struct RunCheck {
    std::string set, dir, args;
    const char* codeLabel;
};

// The checks every complete real run must pass.
void ExpectGoodDay(const RunCheck& c)
{
    const RunResult r = RunOrvo(c.dir, c.args);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_FALSE(HasNaN(r.out)) << "not-a-number in the report of " << c.dir;

    const long double iters = NumberAfter(r.out, "# of ITERATIONS :");
    EXPECT_GE(iters, 1.0L);
    EXPECT_LT(iters, MaxIter) << c.dir << " did not converge";

    const long double l3 = NumberAfter(r.out, "REF. STD. APOSTERIORI - L3                     : ");
    EXPECT_GT(l3, L3Min_mm) << c.dir;
    EXPECT_LT(l3, L3FullDayMax_mm) << c.dir;
    const long double code = NumberAfter(r.out, c.codeLabel);
    EXPECT_GT(code, CodeMin_mm) << c.dir;
    EXPECT_LT(code, CodeMax_mm) << c.dir;

    const Neu d = LocalDifference(Estimated(r.out), Reference(c.set));
    const long double dist = std::sqrt(d.n * d.n + d.e * d.e + d.u * d.u);
    EXPECT_LT(dist, PositionBound_m) << c.dir << " N " << d.n << " E " << d.e << " U " << d.u;
    EXPECT_LT(std::fabs(d.u), UpBound_m) << c.dir << " U " << d.u;
    EXPECT_LT(std::hypot(d.n, d.e), HorizontalBound_m) << c.dir << " N " << d.n << " E " << d.e;

    // The plot file carries the same solution as the report: both print the
    // position with 4 decimals, so they agree to the last printed digit.
    const std::string plot = orvotest::ReadFile(orvotest::TempDir() + "/" + c.dir + "/plot.txt");
    EXPECT_FALSE(HasNaN(plot));
    const auto eol = plot.find('\n');
    ASSERT_NE(eol, std::string::npos) << "no data line in the plot file of " << c.dir;
    std::istringstream data(plot.substr(eol + 1));
    std::string skip;
    for (int i = 0; i < 13; ++i) data >> skip;  // epoch (2), counts (9), S0, GTEST
    Xyz inPlot{};
    data >> inPlot.x >> inPlot.y >> inPlot.z;
    const Xyz inReport = Estimated(r.out);
    EXPECT_NEAR_LD(inPlot.x, inReport.x, PrintStep_m);
    EXPECT_NEAR_LD(inPlot.y, inReport.y, PrintStep_m);
    EXPECT_NEAR_LD(inPlot.z, inReport.z, PrintStep_m);
}

const char* const Pc3Label = "REF. STD. APOSTERIORI - Pc3                    : ";
const char* const Pp3Label = "REF. STD. APOSTERIORI - Pp3                    : ";

}  // namespace

TEST(RealRun, EsbcGpsGalileoDayLandsOnReference)
{
    ExpectGoodDay({"esbc-2020-177", "esbc_ge",
                   "-r" + Esbc("esbc1770.20o") + EsbcProducts() + " -csGE" + Common("Pc3"), Pc3Label});
}

TEST(RealRun, EsbcThreeSystemsWithChannelFileLandOnReference)
{
    ExpectGoodDay({"esbc-2020-177", "esbc_gre",
                   "-r" + Esbc("esbc1770.20o") + EsbcProducts() + " -csGRE -gf" +
                       Esbc("esbc1770.20o.glnfc") + Common("Pc3"),
                   Pc3Label});
}

TEST(RealRun, EsbcP1BasedCodeOfGpsAndGlonassLandsOnReference)
{
    // Galileo has no P1 in this file, so the P1-based code runs on G and R.
    ExpectGoodDay({"esbc-2020-177", "esbc_gr_pp3",
                   "-r" + Esbc("esbc1770.20o") + EsbcProducts() + " -csGR -gf" +
                       Esbc("esbc1770.20o.glnfc") + Common("Pp3"),
                   Pp3Label});
}

TEST(RealRun, ZimmerwaldOnOrbitFileClocksLandsOnReference)
{
    // No clock file for this day: without -ec the 15-minute clocks of the
    // orbit file stand in (cubic over four nodes).
    const std::string z = orvotest::Data("zimm-2015-235/");
    ExpectGoodDay({"zimm-2015-235", "zimm_g",
                   "-r" + z + "ZIMM2350.15O -ep" + z + "igs18590.sp3 -csG" + Common("Pc3"), Pc3Label});
}

TEST(RealRun, PhaseFitsToCentimetreWithinOrbitSpan)
{
    // 2850 epochs end at 23:44:30, before the last orbit node at 23:45: no
    // observation needs the extrapolated orbit, and the L3 deviation drops
    // from several to about one centimetre.
    const std::string obs = CutObs(Esbc("esbc1770.20o"), "esbc_2850.20o", 2850, false);
    const RunResult r =
        RunOrvo("esbc_inside", "-r" + obs + EsbcProducts() + " -csGRE -gf" + Esbc("esbc1770.20o.glnfc") +
                                   Common("Pc3"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_FALSE(HasNaN(r.out));
    EXPECT_EQ(NumberAfter(r.out, "# of EPOCHS     :"), 2850.0L);
    const long double l3 = NumberAfter(r.out, "REF. STD. APOSTERIORI - L3                     : ");
    EXPECT_GT(l3, L3Min_mm);
    EXPECT_LT(l3, L3InsideOrbitMax_mm);
    const Neu d = LocalDifference(Estimated(r.out), Reference("esbc-2020-177"));
    EXPECT_LT(std::fabs(d.u), UpBound_m);
    EXPECT_LT(std::hypot(d.n, d.e), HorizontalBound_m);
}

// Two hours of the ESBC day: the bad-input runs below are cut from it.
constexpr long TwoHours = 240;

TEST(RealRunBadInput, FileWithoutPhaseGivesCodeOnlySolutionWithoutNaN)
{
    // Regression: the type sums of the variances each lose the whole xtc, so
    // the L3 variance of a run without any phase came out just below zero
    // and the report printed "-nan mm" for it.
    const std::string obs = CutObs(Esbc("esbc1770.20o"), "nophase.20o", TwoHours, true);
    const RunResult r = RunOrvo("nophase", "-r" + obs + EsbcProducts() + " -csG" + Common("Pc3"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_FALSE(HasNaN(r.out));
    EXPECT_EQ(NumberAfter(r.out, "L3 ambiguity parameters             :"), 0.0L);
    EXPECT_EQ(NumberAfter(r.out, "# of AMBIGUITIES:"), 0.0L);
    EXPECT_EQ(NumberAfter(r.out, "REF. STD. APOSTERIORI - L3                     : "), 0.0L);
    EXPECT_GT(NumberAfter(r.out, "# of OBS        :"), 0.0L);
    // Code alone over two hours with the troposphere free: the P3 noise of
    // several decimetres and its correlation with height and troposphere
    // leave metre-level errors, mostly in height; 2 m keeps a solution that
    // took blanks for zero phase (kilometres) out.
    const Neu d = LocalDifference(Estimated(r.out), Reference("esbc-2020-177"));
    EXPECT_LT(std::sqrt(d.n * d.n + d.e * d.e + d.u * d.u), 2.0L);
}

TEST(RealRunBadInput, TroposphereIntervalLongerThanDataSpanGivesOnePiece)
{
    // Six-hour interval on two hours of data: one node before the first
    // epoch and one after the last, so one linear piece over the span.
    const std::string obs = CutObs(Esbc("esbc1770.20o"), "two_hours.20o", TwoHours, false);
    const std::string args = "-r" + obs + EsbcProducts() + " -csGE" +
                             " -lPc3,L3 -tmSAAST,NIELL -ti06:00:00 -tg -xSTA -gpsplot.txt";
    const RunResult r = RunOrvo("long_tropo", args);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_FALSE(HasNaN(r.out));
    EXPECT_EQ(NumberAfter(r.out, "Troposphere zenit delays (wet)      :"), 2.0L);
    EXPECT_LT(NumberAfter(r.out, "# of ITERATIONS :"), MaxIter);
    EXPECT_EQ(NumberAfter(r.out, "# of UNDEF UNKS :"), 0.0L);
    // Two hours of phase: the ambiguities are weakly separated from the
    // position, so the bound is the brief's half metre, not the day's.
    const Neu d = LocalDifference(Estimated(r.out), Reference("esbc-2020-177"));
    EXPECT_LT(std::sqrt(d.n * d.n + d.e * d.e + d.u * d.u), PositionBound_m);
}

TEST(RealRunBadInput, CutOffAboveAllSatellitesLeavesAprioriPositionAndWarns)
{
    const std::string obs = CutObs(Esbc("esbc1770.20o"), "two_hours_me.20o", TwoHours, false);
    const RunResult r =
        RunOrvo("cutoff89", "-r" + obs + EsbcProducts() + " -csGE -me89" + Common("Pc3"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("#### Orvo: Warning -> NO REDUNDANT OBSERVATIONS"), std::string::npos)
        << r.err;
    EXPECT_EQ(NumberAfter(r.out, "# of OBS        :"), 0.0L);
    // Nothing observed, nothing moved: the estimate is the header position,
    // finite, to the 0.1 mm of the print.
    const std::string head = orvotest::FirstLines(obs, 40);
    const auto label = head.find("APPROX POSITION XYZ");
    ASSERT_NE(label, std::string::npos);
    std::istringstream hdr(head.substr(label - 60, 42));  // the label is at column 61
    Xyz apr{};
    hdr >> apr.x >> apr.y >> apr.z;
    const Xyz est = Estimated(r.out);
    EXPECT_NEAR_LD(est.x, apr.x, PrintStep_m);
    EXPECT_NEAR_LD(est.y, apr.y, PrintStep_m);
    EXPECT_NEAR_LD(est.z, apr.z, PrintStep_m);
}
