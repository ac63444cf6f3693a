// The two real programs end to end: orvo-simulate writes a station-day with
// known truth into the scratch folder, orvo processes it with static PPP,
// and the result is held against that truth; and the readers of that
// comparison (truth, plot and troposphere files, "--compare") on known input.

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <set>
#include <sstream>

#include "SimCompare.h"
#include "SimSupport.h"

using namespace simtest;

namespace {

// Noise-free data: what is left is the rounding of the files (1 mm code,
// 0.001 cycle phase, 1 mm SP3 nodes) averaged over thousands of
// observations, some 0.1 mm; the plot file itself prints 0.1 mm. 1 mm is
// ten times that, and any model term the estimator misses or mis-signs
// (relativistic path 2 cm, antenna eccentricity 10 cm, Earth rotation tens
// of metres) is far beyond.
constexpr long double NoiseFreeTol_m = 1e-3L;
// Zenith wet delay without noise: the estimator's dry model is evaluated at
// the a-priori position, 3 m from the truth (about 0.3 mm of hydrostatic
// delay that the wet estimate takes over), and hourly piecewise-linear nodes
// follow the simulated daily sine to 0.1 mm. 1 mm covers both with margin.
constexpr long double WetDelayTol_m = 1e-3L;
// 0.3 m code and 2 mm phase noise over two hours of about 24 satellites
// give a formal precision of 1 to 2 mm per coordinate; 1 cm is over five
// sigma.
constexpr long double NoisyTol_m = 0.01L;
// Wrong GLONASS wavelengths turn hundreds of kilometres of range change of
// every arc into metres of misfit: a run with them cannot come within a
// metre of the truth.
constexpr long double WrongChannelMiss_m = 1.0L;

// The simulated Earth has no tides: the solid tide model is switched off
// (-st), and no ocean loading or pole tide file is given.
const std::string kPpp = " -rSIMU1770.20o -epSIMU1770.sp3 -ecSIMU1770.clk -lPc3,L3"
                         " -tmSAAST,NIELL -ti01:00:00 -tg -me5 -st -xSTA";
const std::string kChannels = " -gfSIMU1770.20o.glnfc";

int ExitCode(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

struct Outcome {
    std::string dir, report;
    SimData d;          // the same simulation made in this process: it is deterministic
    SimTruth truth;
    long double miss;   // largest coordinate error of the estimate, infinite without one
};

// Simulates with the given options of orvo-simulate into sub-folder sub,
// lets prepare change the files, runs orvo there (it keeps a scratch file in
// its working folder) with the plot file sub.gps, and holds the estimate
// against the truth.
Outcome Process(const std::string& sub, const std::vector<std::string>& sim, const std::string& ppp,
            const std::function<void(const std::string&)>& prepare = {}, int status = 0)
{
    Outcome r;
    r.dir = orvotest::TempDir() + "/" + sub;
    mkdir(r.dir.c_str(), 0755);
    std::vector<const char*> argv = {"orvo-simulate"};
    std::string line = "'" + std::string(ORVO_SIMULATE_BINARY) + "' -o" + r.dir;
    for (const std::string& a : sim) argv.push_back(a.c_str()), line += " " + a;
    EXPECT_EQ(ExitCode(std::system((line + " > '" + r.dir + "/sim.log' 2>&1").c_str())), 0) << orvotest::ReadFile(r.dir + "/sim.log");
    if (prepare) prepare(r.dir);
    const std::string run = "cd '" + r.dir + "' && '" + orvotest::OrvoBinary() + "' " + ppp + kPpp + " -gps" + sub
                            + ".gps > " + sub + ".report 2> " + sub + ".log";
    EXPECT_EQ(ExitCode(std::system(run.c_str())), status) << orvotest::ReadFile(r.dir + "/" + sub + ".log");
    r.report = orvotest::ReadFile(r.dir + "/" + sub + ".report");
    r.d = Simulate(ParseSimOptions(static_cast<int>(argv.size()), argv.data()));
    r.truth = ReadTruth(r.dir + "/SIMU1770.truth");
    r.miss = INFINITY;
    const std::string plot = orvotest::ReadFile(r.dir + "/" + sub + ".gps");
    if (!plot.empty() && plot.find("\n#") == std::string::npos) {
        const SimVec e = ReadStaticPlot(r.dir + "/" + sub + ".gps"), t = r.truth.marker;
        r.miss = std::max({std::fabs(e.x - t.x), std::fabs(e.y - t.y), std::fabs(e.z - t.z)});
    }
    return r;
}

// The starts (and ends) of the a-priori ambiguity arcs of the report as
// (satellite as printed, G05; epoch index). Each arc must begin where the satellite rises
// into the file or where a slip was put: anything else is a cut the data
// do not call for.
using Marks = std::set<std::pair<std::string, long>>;
Marks ArcsStartOnlyAtRisesAndSlips(const Outcome& run, const Marks& slips, Marks* ends = nullptr)
{
    Marks starts;
    std::istringstream in(run.report.substr(std::min(run.report.size(), run.report.find("A-PRIORI VALUES OF AMBIGUITIES:"))));
    for (std::string line; std::getline(in, line) && line.find("Removing unusable") == std::string::npos;) {
        std::istringstream f(line);
        long id = 0, first = 0, last = 0;
        std::string sat;
        long double amb = 0.0L;
        if (!(f >> id >> sat >> first >> last >> amb)) continue;
        starts.insert({sat, first});
        if (ends) ends->insert({sat, last});
        bool rise = true;
        if (first > 0 && first <= static_cast<long>(run.d.epochs.size()))
            for (const SimRecord& r : run.d.epochs[static_cast<std::size_t>(first - 1)].recs) {
                char name[8];
                std::snprintf(name, sizeof name, "%c%02d", r.sat < 100 ? 'G' : (r.sat < 200 ? 'R' : 'E'), r.sat % 100);
                rise = rise && name != sat;
            }
        EXPECT_TRUE(rise || slips.count({sat, first})) << sat << " arc cut at epoch " << first;
    }
    EXPECT_FALSE(starts.empty());
    return starts;
}

TEST(SimEndToEnd, NoiseFreeDataGiveTruePositionAndWetDelay)
{
    const Outcome run = Process("clean", {"-h3", "-nc0", "-np0"}, "-csGRE" + kChannels + " -otclean.trp");
    EXPECT_LT(run.miss, NoiseFreeTol_m) << "G+R+E noise-free";
    int compared = 0;
    for (const SimTropoNode& n : ReadTropoFile(run.dir + "/clean.trp")) {
        long double zwd = 0.0L;
        if (!TruthWetDelayAt(run.truth, n, zwd)) continue;
        EXPECT_NEAR_LD(n.wet, zwd, WetDelayTol_m) << "node at second " << n.second;
        ++compared;
    }
    // Three hours of hourly nodes: 00, 01 and 02 h lie inside the epochs.
    EXPECT_GE(compared, 3);
}

TEST(SimEndToEnd, DefaultNoiseGivesPositionWithinOneCentimetreFromAllSystems)
{
    const Outcome run = Process("noisy", {"-h2", "-seed7"}, "-csGRE" + kChannels);
    EXPECT_LT(run.miss, NoisyTol_m) << "G+R+E with 0.3 m code and 2 mm phase noise";
    // All three systems must have taken part: Galileo has no P1, and a code
    // combination on P1 would leave it out without a word.
    std::istringstream f(run.report.substr(std::min(run.report.size(), run.report.find("  # of OBS        :") + 19)));
    long all = 0, g = 0, r = 0, e = 0;
    std::string label;
    f >> all >> label >> g >> label >> r >> label >> e;
    EXPECT_TRUE(g > 0 && r > 0 && e > 0) << g << " " << r << " " << e;
}

TEST(SimEndToEnd, CycleSlipsCutArcsWhereTheyWerePut)
{
    // Slips of every system, large enough in the wide lane (5, 9, 7 cycles)
    // for the Melbourne-Wuebbena screening under 0.3 m code noise.
    const Outcome run = Process("slips", {"-h3", "-slipG05,100,3,-2", "-slipR01,200,-5,4", "-slipE18,250,4,-3"}, "-csGRE" + kChannels);
    const Marks slips = {{"G05", 100}, {"R01", 200}, {"E18", 250}};
    Marks ends;
    const Marks starts = ArcsStartOnlyAtRisesAndSlips(run, slips, &ends);
    for (const auto& s : slips)
        EXPECT_TRUE(ends.count({s.first, s.second - 1}) && starts.count(s)) << s.first << " slip at epoch " << s.second;
    EXPECT_LT(run.miss, NoisyTol_m) << "the cut arcs cost precision, not accuracy";
}

TEST(SimEndToEnd, MillisecondClockJumpIsFoundOnceAndRepairedForGps)
{
    // The repair shifts GPS phases from the jump on; GLONASS phases only
    // from the epoch behind it and Galileo phases not at all, so the jump is
    // held against GPS, the system the repair is made for.
    const Outcome run = Process("jump", {"-sG", "-h3", "-nc0", "-np0", "-jump150"}, "-csG");
    EXPECT_NE(run.report.find("  Correcting observations for MS jumps: 1\n"), std::string::npos);
    // Repaired phases run on through the jump: no arc may be cut there.
    ArcsStartOnlyAtRisesAndSlips(run, {});
    EXPECT_LT(run.miss, NoiseFreeTol_m) << "GPS with a 1 ms receiver clock jump";
}

TEST(SimEndToEnd, GlonassUsesTheWavelengthsOfItsChannels)
{
    // With the channel file the noise-free run above comes within 1 mm.
    // Each slot one channel up (6 wraps to -7): every wavelength wrong. The
    // test means something only when the slots are spread over channels.
    int nonZero = 0;
    const Outcome wrong = Process("wrong", {"-sGR", "-h3", "-nc0", "-np0"}, "-csGR -gfwrong.glnfc", [&](const std::string& dir) {
        std::istringstream in(orvotest::ReadFile(dir + "/SIMU1770.20o.glnfc"));
        std::string text;
        for (std::string row; std::getline(in, row);) {
            const int k = row.size() > 51 && row[0] != '#' ? std::atoi(row.c_str() + 51) : 99;  // channel from column 52
            nonZero += k != 0 && k != 99;
            text += k == 99 ? row + "\n" : row.substr(0, 51) + std::to_string(k == 6 ? -7 : k + 1) + "\n";
        }
        orvotest::WriteTemp("wrong/wrong.glnfc", text);
    }, 1);
    ASSERT_GT(nonZero, 10);
    // The wrong wavelengths pull the estimate hundreds of metres from the
    // a-priori position, which the run refuses as a result.
    EXPECT_TRUE(wrong.miss > WrongChannelMiss_m && orvotest::ReadFile(wrong.dir + "/wrong.log").find("FROM THE A-PRIORI POSITION") != std::string::npos);
}

// A static plot file as orvo writes it, with the position p and one word
// as marker name; s0 and the global test run together when glued.
std::string PlotFile(const SimVec& p, bool glued)
{
    char buf[600];
    std::snprintf(buf, sizeof buf,
                  " 59025 43185.0      2880     92134   44000   48134       0         0       0"
                  "       0       0%s%16.4Lf%16.4Lf%16.4Lf     0.000062795065470     0.000032252916212"
                  "     0.000061746077707     0.000004169578515     0.000052559399311"
                  "     0.000006326566150   SIMU\n",
                  glued ? "345.44811947733761.0743" : "  0.037831    0.5725", p.x, p.y, p.z);
    return "#   EPOCH[MJD]      NEPH      NOBS    #GPS    #GLN    #GAL NOUTLIERS   #OGPS   #OGLN"
           "   #OGAL        S0     GTEST               X               Y               Z\n" + std::string(buf);
}

TEST(SimCompare, CompareToolPrintsTheOffsetInTheLocalFrameEvenFromGluedColumns)
{
    const DataSet& set = NoiseFree();
    const std::string truth = set.Path(set.names.truth);
    // The truth's own marker moved 0.25 m up along the ellipsoid normal and
    // 0.1 m east: the tool must give back exactly that split.
    long double lat = 0, lon = 0, h = 0;
    Geodetic(set.d.marker, lat, lon, h);
    const SimVec up = {std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon), std::sin(lat)};
    const SimVec east = {-std::sin(lon), std::cos(lon), 0.0L}, moved = ReadTruth(truth).marker + 0.25L * up + 0.1L * east;
    // The plot file prints 4 decimals: reading it back, glued to the column
    // before or not, leaves that rounding, 0.05 mm per coordinate (0.087 mm
    // in all) plus round-off.
    for (bool glued : {false, true})
        EXPECT_LT(Norm(ReadStaticPlot(orvotest::WriteTemp("p.gps", PlotFile(moved, glued))) - moved), 0.0867e-3L) << glued;
    const std::string out = orvotest::TempDir() + "/compare.txt";
    const std::string cmd = "'" + std::string(ORVO_SIMULATE_BINARY) + "' --compare '" + truth + "' '"
                            + orvotest::TempDir() + "/p.gps' > '" + out + "' 2>&1";
    const int st = std::system(cmd.c_str());
    ASSERT_TRUE(WIFEXITED(st) && WEXITSTATUS(st) == 0) << orvotest::ReadFile(out);
    // The plot file rounds each coordinate to 0.05 mm (0.09 mm in any
    // direction) and the tool prints 0.05 mm rounding: 0.2 mm holds both.
    constexpr long double PrintedTol_m = 0.2e-3L;
    const std::string text = orvotest::ReadFile(out);
    auto value = [&](const std::string& word) {
        const size_t at = text.find("\n  " + word + " ");
        return at == std::string::npos ? NAN : std::strtold(text.c_str() + at + 3 + word.size(), nullptr);
    };
    EXPECT_NEAR_LD(value("north"), 0.0L, PrintedTol_m) << text;
    EXPECT_NEAR_LD(value("east"), 0.1L, PrintedTol_m);
    EXPECT_NEAR_LD(value("up"), 0.25L, PrintedTol_m);
}

}  // namespace
