// The two real programs end to end: orvo-simulate writes a station-day with
// known truth into the scratch folder, orvo processes it with static PPP,
// and the result is held against that truth.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "SimCompare.h"
#include "SimObservations.h"
#include "SimOptions.h"
#include "TestSupport.h"
#include "numerics/NearLD.h"

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

const std::string kObs = "SIMU1770.20o";
// The simulated Earth has no tides: the solid tide model is switched off
// (-st), and no ocean loading or pole tide file is given.
const std::string kPpp = " -rSIMU1770.20o -epSIMU1770.sp3 -ecSIMU1770.clk -lPc3,L3"
                         " -tmSAAST,NIELL -ti01:00:00 -tg -me5 -st -xSTA";

int ExitCode(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

// Simulates into its own sub-folder of the scratch folder with the given
// options of orvo-simulate; returns the folder.
std::string SimulateSet(const std::string& sub, const std::string& args)
{
    const std::string dir = orvotest::TempDir() + "/" + sub;
    mkdir(dir.c_str(), 0755);
    const std::string cmd = "'" + std::string(ORVO_SIMULATE_BINARY) + "' -o" + dir + " " + args
                            + " > '" + dir + "/sim.log' 2>&1";
    EXPECT_EQ(ExitCode(std::system(cmd.c_str())), 0) << orvotest::ReadFile(dir + "/sim.log");
    return dir;
}

// Runs orvo in dir (it keeps a scratch file in its working folder); the
// report goes to tag.report, the log to tag.log. Returns the exit code.
int RunOrvo(const std::string& dir, const std::string& args, const std::string& tag)
{
    const std::string cmd = "cd '" + dir + "' && '" + orvotest::OrvoBinary() + "' " + args + " > "
                            + tag + ".report 2> " + tag + ".log";
    return ExitCode(std::system(cmd.c_str()));
}

// The same options as the binary got, simulated in this process: the
// simulation is deterministic, so this tells which satellites the file
// holds at each epoch.
SimData SimulateHere(const std::vector<std::string>& args)
{
    std::vector<const char*> argv = {"orvo-simulate"};
    for (const std::string& a : args) argv.push_back(a.c_str());
    return Simulate(ParseSimOptions(static_cast<int>(argv.size()), argv.data()));
}

void ExpectEachCoordinateNear(const SimVec& est, const SimVec& truth, long double tol,
                              const std::string& what)
{
    EXPECT_NEAR_LD(est.x, truth.x, tol) << what;
    EXPECT_NEAR_LD(est.y, truth.y, tol) << what;
    EXPECT_NEAR_LD(est.z, truth.z, tol) << what;
}

// One row of the a-priori ambiguity table of the report: satellite as
// printed (G05) and first and last epoch index of the arc.
struct ArcRow {
    std::string sat;
    long first = 0, last = 0;
};

std::vector<ArcRow> AprioriArcs(const std::string& report)
{
    std::vector<ArcRow> arcs;
    std::istringstream in(report);
    std::string line;
    bool inTable = false;
    while (std::getline(in, line)) {
        if (line.find("A-PRIORI VALUES OF AMBIGUITIES:") != std::string::npos) {
            inTable = true;
            continue;
        }
        if (!inTable) continue;
        if (line.find("Removing unusable") != std::string::npos) break;
        std::istringstream f(line);
        long id = 0;
        ArcRow r;
        long double amb = 0.0L;
        if (f >> id >> r.sat >> r.first >> r.last >> amb) arcs.push_back(r);
    }
    return arcs;
}

std::string SatName(short sat)
{
    char buf[8];
    std::snprintf(buf, sizeof buf, "%c%02d", sat < 100 ? 'G' : (sat < 200 ? 'R' : 'E'), sat % 100);
    return buf;
}

// Is satellite sat in the observation file at epoch index i?
bool Observed(const SimData& d, short sat, long i)
{
    if (i < 0 || i >= static_cast<long>(d.epochs.size())) return false;
    for (const SimRecord& r : d.epochs[static_cast<std::size_t>(i)].recs)
        if (r.sat == sat) return true;
    return false;
}

// Every arc begins where the satellite rises into the file or where a slip
// was put; anything else is a cut the data do not call for.
void ExpectArcsStartOnlyAtRisesAndSlips(const std::vector<ArcRow>& arcs, const SimData& d,
                                        const std::set<std::pair<std::string, long>>& slips)
{
    for (const ArcRow& a : arcs) {
        short sat = 0;
        for (const SimSatellite& s : d.sats)
            if (SatName(s.number) == a.sat) sat = s.number;
        ASSERT_NE(sat, 0) << a.sat << " is no simulated satellite";
        const bool rise = !Observed(d, sat, a.first - 1);
        const bool slip = slips.count({a.sat, a.first}) > 0;
        EXPECT_TRUE(rise || slip) << a.sat << " arc cut at epoch " << a.first;
    }
}

TEST(SimEndToEnd, NoiseFreeDataGiveTruePositionAndWetDelay)
{
    const std::string dir = SimulateSet("clean", "-h3 -nc0 -np0");
    ASSERT_EQ(RunOrvo(dir, "-csGRE -gf" + kObs + ".glnfc" + kPpp + " -gpsclean.gps -otclean.trp",
                      "clean"),
              0)
        << orvotest::ReadFile(dir + "/clean.log");
    const SimTruth truth = ReadTruth(dir + "/SIMU1770.truth");
    ExpectEachCoordinateNear(ReadStaticPlot(dir + "/clean.gps"), truth.marker, NoiseFreeTol_m,
                             "G+R+E noise-free");

    const std::vector<SimTropoNode> nodes = ReadTropoFile(dir + "/clean.trp");
    int compared = 0;
    for (const SimTropoNode& n : nodes) {
        long double zwd = 0.0L;
        if (!TruthWetDelayAt(truth, n, zwd)) continue;
        EXPECT_NEAR_LD(n.wet, zwd, WetDelayTol_m) << "node at second " << n.second;
        ++compared;
    }
    // Three hours of hourly nodes: 00, 01 and 02 h lie inside the epochs.
    EXPECT_GE(compared, 3);
}

TEST(SimEndToEnd, DefaultNoiseGivesPositionWithinOneCentimetre)
{
    const std::string dir = SimulateSet("noisy", "-h2 -seed7");
    ASSERT_EQ(RunOrvo(dir, "-csGRE -gf" + kObs + ".glnfc" + kPpp + " -gpsnoisy.gps", "noisy"), 0)
        << orvotest::ReadFile(dir + "/noisy.log");
    const SimTruth truth = ReadTruth(dir + "/SIMU1770.truth");
    ExpectEachCoordinateNear(ReadStaticPlot(dir + "/noisy.gps"), truth.marker, NoisyTol_m,
                             "G+R+E with 0.3 m code and 2 mm phase noise");
    // All three systems must have taken part: Galileo has no P1, and a code
    // combination on P1 would leave it out without a word.
    const std::string report = orvotest::ReadFile(dir + "/noisy.report");
    const std::size_t at = report.find("  # of OBS        :");
    ASSERT_NE(at, std::string::npos);
    std::istringstream f(report.substr(at + 19));
    long all = 0, g = 0, r = 0, e = 0;
    std::string label;
    f >> all >> label >> g >> label >> r >> label >> e;
    EXPECT_GT(g, 0);
    EXPECT_GT(r, 0);
    EXPECT_GT(e, 0);
}

TEST(SimEndToEnd, CycleSlipsCutArcsWhereTheyWerePut)
{
    // Slips of every system, large enough in the wide lane (5, 9, 7 cycles)
    // for the Melbourne-Wuebbena screening under 0.3 m code noise.
    const std::vector<std::string> args = {"-h3",  "-slipG05,100,3,-2", "-slipR01,200,-5,4",
                                           "-slipE18,250,4,-3"};
    std::string line;
    for (const std::string& a : args) line += a + " ";
    const std::string dir = SimulateSet("slips", line);
    ASSERT_EQ(RunOrvo(dir, "-csGRE -gf" + kObs + ".glnfc" + kPpp + " -gpsslips.gps", "slips"), 0)
        << orvotest::ReadFile(dir + "/slips.log");
    const SimData d = SimulateHere(args);
    const std::vector<ArcRow> arcs = AprioriArcs(orvotest::ReadFile(dir + "/slips.report"));
    ASSERT_FALSE(arcs.empty());
    const std::set<std::pair<std::string, long>> slips = {{"G05", 100}, {"R01", 200}, {"E18", 250}};
    for (const auto& s : slips) {
        bool endsBefore = false, startsAt = false;
        for (const ArcRow& a : arcs) {
            if (a.sat != s.first) continue;
            endsBefore = endsBefore || a.last == s.second - 1;
            startsAt = startsAt || a.first == s.second;
        }
        EXPECT_TRUE(endsBefore && startsAt) << s.first << " slip at epoch " << s.second;
    }
    ExpectArcsStartOnlyAtRisesAndSlips(arcs, d, slips);
    // The cut arcs cost precision, not accuracy.
    ExpectEachCoordinateNear(ReadStaticPlot(dir + "/slips.gps"), ReadTruth(dir + "/SIMU1770.truth").marker,
                             NoisyTol_m, "with three slips");
}

TEST(SimEndToEnd, MillisecondClockJumpIsFoundOnceAndRepairedForGps)
{
    // The repair shifts GPS phases from the jump on; GLONASS phases only
    // from the epoch behind it and Galileo phases not at all, so the jump is
    // held against GPS, the system the repair is made for.
    const std::vector<std::string> args = {"-sG", "-h3", "-nc0", "-np0", "-jump150"};
    const std::string dir = SimulateSet("jump", "-sG -h3 -nc0 -np0 -jump150");
    ASSERT_EQ(RunOrvo(dir, "-csG" + kPpp + " -gpsjump.gps", "jump"), 0)
        << orvotest::ReadFile(dir + "/jump.log");
    const std::string report = orvotest::ReadFile(dir + "/jump.report");
    EXPECT_NE(report.find("  Correcting observations for MS jumps: 1\n"), std::string::npos);
    // Repaired phases run on through the jump: no arc may be cut there.
    const SimData d = SimulateHere(args);
    const std::vector<ArcRow> arcs = AprioriArcs(report);
    ASSERT_FALSE(arcs.empty());
    ExpectArcsStartOnlyAtRisesAndSlips(arcs, d, {});
    ExpectEachCoordinateNear(ReadStaticPlot(dir + "/jump.gps"),
                             ReadTruth(dir + "/SIMU1770.truth").marker, NoiseFreeTol_m,
                             "GPS with a 1 ms receiver clock jump");
}

TEST(SimEndToEnd, GlonassUsesTheWavelengthsOfItsChannels)
{
    const std::string dir = SimulateSet("glonass", "-sGR -h3 -nc0 -np0");
    const std::string channels = dir + "/" + kObs + ".glnfc";
    // The test means something only when the simulated slots are spread
    // over channels other than 0.
    std::ifstream in(channels);
    std::string row, wrong;
    int nonZero = 0;
    while (std::getline(in, row)) {
        if (row.empty() || row[0] == '#') {
            wrong += row + "\n";
            continue;
        }
        ASSERT_GT(row.size(), 51u) << row;
        const int k = std::atoi(row.c_str() + 51);  // channel from column 52
        nonZero += k != 0;
        // Each slot one channel up (6 wraps to -7): every wavelength wrong.
        wrong += row.substr(0, 51) + std::to_string(k == 6 ? -7 : k + 1) + "\n";
    }
    ASSERT_GT(nonZero, 10);
    orvotest::WriteTemp("glonass/wrong.glnfc", wrong);
    const SimTruth truth = ReadTruth(dir + "/SIMU1770.truth");

    ASSERT_EQ(RunOrvo(dir, "-csGR -gf" + kObs + ".glnfc" + kPpp + " -gpsright.gps", "right"), 0)
        << orvotest::ReadFile(dir + "/right.log");
    ExpectEachCoordinateNear(ReadStaticPlot(dir + "/right.gps"), truth.marker, NoiseFreeTol_m,
                             "G+R with the channel file");

    ASSERT_EQ(RunOrvo(dir, "-csGR -gfwrong.glnfc" + kPpp + " -gpswrong.gps", "wrong"), 0)
        << orvotest::ReadFile(dir + "/wrong.log");
    std::istringstream plot(orvotest::ReadFile(dir + "/wrong.gps"));
    std::string head, data;
    std::getline(plot, head);
    ASSERT_TRUE(static_cast<bool>(std::getline(plot, data)));
    if (!data.empty() && data[0] == '#') return;  // no solution at all: also a miss
    const SimVec est = ReadStaticPlot(dir + "/wrong.gps");
    const SimVec miss = est - truth.marker;
    EXPECT_GT(Norm(miss), WrongChannelMiss_m);
}

}  // namespace
