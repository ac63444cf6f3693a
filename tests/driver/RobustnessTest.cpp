// The whole program on broken input. Every kind of file a run reads, given
// empty, cut inside a record, of another format or not at all, must end the
// run with status 1 and a framed message naming the problem: never a signal,
// a hang, or a finished report built on a number that was never in the file.
// Optional files that the program drops by design (with a warning) must
// leave the result exactly as if they had not been named.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <regex>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "TestSupport.h"
#include "numerics/NearLD.h"

namespace {

const std::string kDay = "esbc-2020-177/";
const std::string kObs = orvotest::Data(kDay + "esbc1770.20o");
const std::string kSp3 = orvotest::Data(kDay + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3");
const std::string kClk = orvotest::Data(kDay + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK");
const std::string kChannels = orvotest::Data(kDay + "esbc1770.20o.glnfc");
const std::string kGrid = orvotest::Data("models/gpt2_5.grd");

// Marker of ESBC in IGb14 at the day's noon (the data set's reference).
constexpr long double kRefX = 3582104.7655L, kRefY = 532590.1789L, kRefZ = 5232755.1393L;
// 5 m: the short file gives 13 epochs (6 minutes) of ionosphere-free code
// alone (no arc reaches the minimum length), whose a-posteriori precision is
// about 0.5 m per axis; 5 m is some 5 sigma in 3D and still far below what a
// wrong orbit, clock or channel would do (kilometres).
constexpr long double kCodeOnlyTol_m = 5.0L;

struct RunResult {
    int status = -1;  // exit status; 124 is a hang killed by timeout, >= 128 a signal
    std::string out, err;
};

// Lines of the observation file up to the last whole epoch before line
// 2000: 13 epochs of GPS, GLONASS and Galileo, a run of about a second.
std::string ShortObservationText()
{
    const std::string text = orvotest::FirstLines(kObs, 2000);
    const std::size_t lastEpoch = text.rfind("\n 20  6 25 ");
    return lastEpoch == std::string::npos ? text : text.substr(0, lastEpoch + 1);
}

// A satellite problem list in its fixed columns: six header lines, then
// G05 with both problems from 00:00 to the next midnight.
const std::string kProblemHeader =
    "SATELLITE PROBLEMS\n"
    "------------------\n"
    " SAT  PROBLEM  ACTION      FROM                 TO\n"
    "\n"
    "     (1 phase, 2 code, 3 both)\n"
    "-----------------------------------------------------------------------\n";
const std::string kProblemLine =
    "   5          3       0          2020 06 25 00 00 00  2020 06 26 00 00 00\n";

// The scratch folder of the runs with the inputs every case shares.
std::string Work()
{
    static const std::string dir = [] {
        orvotest::WriteTemp("obs.20o", ShortObservationText());
        orvotest::WriteTemp("clk.clk", orvotest::FirstLines(kClk, 3000));
        orvotest::WriteTemp("sat.crx", kProblemHeader + kProblemLine);
        orvotest::WriteTemp("empty", "");
        return orvotest::TempDir();
    }();
    return dir;
}

// Runs orvo in the scratch folder; both streams go to files named after the
// case. The 60 s limit turns a hang into status 124.
RunResult RunOrvo(const std::string& name, const std::string& args)
{
    const std::string dir = Work();
    const std::string cmd = "cd '" + dir + "' && timeout 60 '" + orvotest::OrvoBinary() + "' "
                            + args + " > '" + name + ".out' 2> '" + name + ".err'";
    const int rc = std::system(cmd.c_str());
    RunResult r;
    r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    r.out = orvotest::ReadFile(dir + "/" + name + ".out");
    r.err = orvotest::ReadFile(dir + "/" + name + ".err");
    return r;
}

// The options of the full-run example, each input replaceable.
struct Inputs {
    std::string obs = "obs.20o";
    std::string sp3 = kSp3;
    std::string clk = "clk.clk";
    std::string channels = kChannels;
    std::string extra;  // further options, e.g. a grid or problem file

    std::string Args() const
    {
        std::string a = "-csGRE -lPc3,L3 -ti02:00:00 -tg -xSTA";
        if (extra.find("-tm") == std::string::npos) a += " -tmSAAST,NIELL";
        if (!obs.empty()) a += " -r" + obs;
        if (!sp3.empty()) a += " -ep" + sp3;
        if (!clk.empty()) a += " -ec" + clk;
        if (!channels.empty()) a += " -gf" + channels;
        return a + " " + extra;
    }
};

// The framed error of ProgramError or of a reader's own routine: the frame
// line with the text, then the "Exiting" line of the same name.
const std::regex kFramedError(
    "(\\*\\*\\*\\*|####) (\\w+): Error -> ([^\\n]*) (\\*\\*\\*\\*|####)\\n {5}Exiting (class )?\\2 ");

std::string FramedErrorText(const RunResult& r)
{
    std::smatch m;
    const std::string both = r.out + r.err;
    return std::regex_search(both, m, kFramedError) ? m[3].str() : std::string();
}

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// A refused input: status 1, the framed error holding `expected` (a regular
// expression), no report of results, no sanitizer report.
void ExpectRefused(const std::string& name, const Inputs& in, const std::string& expected)
{
    SCOPED_TRACE(name + ": orvo " + in.Args());
    const RunResult r = RunOrvo(name, in.Args());
    EXPECT_EQ(r.status, 1) << r.out << r.err;
    const std::string text = FramedErrorText(r);
    EXPECT_TRUE(std::regex_search(text, std::regex(expected)))
        << "framed text: \"" << text << "\"\n" << r.out << r.err;
    EXPECT_FALSE(Has(r.out, "PPP PROCESSING RESULTS:"));
    EXPECT_FALSE(Has(r.out, "SUCCESFULLY ENDED"));
    EXPECT_FALSE(Has(r.err, "Sanitizer") || Has(r.err, "runtime error:")) << r.err;
}

struct Position {
    bool found = false;
    long double x = 0, y = 0, z = 0;
};

// The estimated column of the X, Y and Z lines of the coordinate block.
Position EstimatedPosition(const std::string& out)
{
    Position p;
    const std::size_t block = out.find("ECEF COORDINATES:");
    if (block == std::string::npos) return p;
    long double* dst[3] = {&p.x, &p.y, &p.z};
    const char* labels[3] = {"X:", "Y:", "Z:"};
    std::size_t at = block;
    for (int k = 0; k < 3; ++k) {
        at = out.find(labels[k], at);
        if (at == std::string::npos) return p;
        const std::size_t eol = out.find('\n', at);
        // Columns: approximate, correction, estimated, precision.
        const std::string line = out.substr(at + 2, eol - at - 2);
        char* end = nullptr;
        std::strtold(line.c_str(), &end);
        std::strtold(end, &end);
        *dst[k] = std::strtold(end, nullptr);
    }
    p.found = true;
    return p;
}

// A completed run: status 0, the closing title, a position near the marker.
Position ExpectCompleted(const std::string& name, const RunResult& r)
{
    SCOPED_TRACE(name);
    EXPECT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_TRUE(Has(r.out, "SUCCESFULLY ENDED"));
    EXPECT_TRUE(FramedErrorText(r).empty()) << FramedErrorText(r);
    EXPECT_FALSE(Has(r.err, "Sanitizer") || Has(r.err, "runtime error:")) << r.err;
    const Position p = EstimatedPosition(r.out);
    EXPECT_TRUE(p.found) << r.out;
    const long double d = std::sqrt((p.x - kRefX) * (p.x - kRefX) + (p.y - kRefY) * (p.y - kRefY)
                                    + (p.z - kRefZ) * (p.z - kRefZ));
    EXPECT_LT(d, kCodeOnlyTol_m) << name;
    return p;
}

// Two runs on the same data must print the very same coordinates: a file
// dropped by design changes nothing.
void ExpectSamePosition(const Position& a, const Position& b)
{
    ASSERT_TRUE(a.found && b.found);
    // The report prints 0.1 mm; equal runs agree to the last digit.
    constexpr long double PrintStep_m = 1e-4L;
    EXPECT_NEAR_LD(a.x, b.x, PrintStep_m / 2);
    EXPECT_NEAR_LD(a.y, b.y, PrintStep_m / 2);
    EXPECT_NEAR_LD(a.z, b.z, PrintStep_m / 2);
}

// The complete inputs, run once for the cases that compare against it.
const Position& Reference()
{
    static const Position p = ExpectCompleted("reference", RunOrvo("reference", Inputs().Args()));
    return p;
}

std::string Cut(const std::string& file, std::size_t bytes)
{
    return orvotest::ReadFile(file).substr(0, bytes);
}

}  // namespace

TEST(Robustness, CompleteShortRunEndsNearTheMarker)
{
    EXPECT_TRUE(Reference().found);
}

TEST(Robustness, ObservationFileEmptyCutForeignOrMissing)
{
    Inputs in;
    in.obs = "empty";
    ExpectRefused("obs_empty", in, "NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED");

    // Lines missing from the last epoch's records.
    const std::string full = orvotest::FirstLines(kObs, 2000);
    in.obs = "obs_cut.20o";
    orvotest::WriteTemp(in.obs, full);
    ExpectRefused("obs_cut", in, "RINEX FILE ENDS INSIDE THE EPOCH OF LINE");

    // The last line cut inside a value, as a copy that broke off: the
    // GPS-only ZIMM file has two lines a record, the second ending in P2,
    // and line 43 ends the first epoch. "23535870.391" cut to its first 7
    // digits would read as 2353587 m. The reader stops before any orbit is
    // needed, so the other day's orbit files don't matter.
    const std::string zimm =
        orvotest::FirstLines(orvotest::Data("zimm-2015-235/ZIMM2350.15O"), 43);
    const std::size_t line43 = zimm.rfind('\n', zimm.size() - 2) + 1;
    ASSERT_EQ(zimm.compare(line43 + 18, 12, "23535870.391"), 0) << zimm.substr(line43);
    in.obs = "obs_cutvalue.15o";
    orvotest::WriteTemp(in.obs, zimm.substr(0, line43 + 16 + 9));
    ExpectRefused("obs_cutvalue", in, "RINEX FILE ENDS INSIDE AN OBSERVATION VALUE");

    in.obs = kSp3;
    ExpectRefused("obs_foreign", in, "NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED");
    in.obs = "absent.20o";
    ExpectRefused("obs_missing", in, "RINEX \\(OBSERVATION\\) FILE CAN NOT BE OPENED!");
}

TEST(Robustness, PreciseOrbitFileEmptyCutForeignOrMissing)
{
    Inputs in;
    in.sp3 = "empty";
    ExpectRefused("sp3_empty", in, "PRECISE ORBIT FILE .*file ends in the header");

    // Inside a position line of the 33rd epoch.
    in.sp3 = "orb_cut.sp3";
    orvotest::WriteTemp(in.sp3, Cut(kSp3, 150000));
    ExpectRefused("sp3_cut", in, "PRECISE ORBIT FILE .*header announces 96 epochs");

    // A clock file where the orbit belongs.
    in.sp3 = "clk.clk";
    ExpectRefused("sp3_foreign", in, "PRECISE ORBIT FILE .*not an SP3 header line");
    in.sp3 = "absent.sp3";
    ExpectRefused("sp3_missing", in, "MULTI-GNSS PRECISE EPHEMERIS FILE CAN NOT BE OPENED!");
}

TEST(Robustness, ClockFileEmptyCutForeignOrMissing)
{
    Inputs in;
    in.clk = "empty";
    ExpectRefused("clk_empty", in, "RINEX VERSION / TYPE NOT IN FIRST LINE");

    // The last AS record cut inside its bias: "0.635702757495E-04" cut to
    // "0.635702757495" would be a clock of 0.64 s in place of 64 us, some
    // 190000 km of range.
    const std::string lines = orvotest::FirstLines(kClk, 3001);
    const std::size_t last = lines.rfind("AS ", lines.size() - 2);
    ASSERT_NE(last, std::string::npos);
    in.clk = "clk_cut.clk";
    orvotest::WriteTemp(in.clk, lines.substr(0, last + 55));
    ExpectRefused("clk_cut", in, "RINEX CLOCK FILE .*AS record too short");

    in.clk = kSp3;
    ExpectRefused("clk_foreign", in, "RINEX VERSION / TYPE NOT IN FIRST LINE");

    // A clock file that does not open is dropped with a warning, and the
    // clocks of the orbit file serve: the same run as without the option.
    in.clk = "absent.clk";
    const RunResult r = RunOrvo("clk_missing", in.Args());
    EXPECT_TRUE(Has(r.err, "#### Orvo: Warning -> PRECISE MULTI-GNSS SATELLITE CLOCK FILE CAN NOT BE OPENED! ####"))
        << r.err;
    const Position dropped = ExpectCompleted("clk_missing", r);
    in.clk.clear();
    ExpectSamePosition(dropped, ExpectCompleted("clk_none", RunOrvo("clk_none", in.Args())));
}

TEST(Robustness, ChannelFileEmptyCutForeignOrMissing)
{
    Inputs in;
    in.channels = "empty";
    ExpectRefused("glnfc_empty", in, "GLONASS FREQUENCY CHANNEL FILE .*NO FREQUENCY CHANNEL LINES");

    // Cut inside the line of R11, before its channel.
    in.channels = "glnfc_cut";
    orvotest::WriteTemp(in.channels, Cut(kChannels, 700));
    ExpectRefused("glnfc_cut", in, "GLONASS FREQUENCY CHANNEL FILE .*line 13:");

    in.channels = kSp3;
    ExpectRefused("glnfc_foreign", in, "GLONASS FREQUENCY CHANNEL FILE .*line 3:");
    in.channels = "absent.glnfc";
    ExpectRefused("glnfc_missing", in, "GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED!");
}

TEST(Robustness, GridFileEmptyCutForeignOrMissing)
{
    Inputs in;
    in.extra = "-tmGPT2,GLPT2 -g2empty";
    ExpectRefused("grd_empty", in, "GPT2 TROPOSHPERE MODEL CORRUPTED \\(READING HEADER\\)");

    // Cut inside a node line some 200 lines into the grid.
    orvotest::WriteTemp("grd_cut.grd", Cut(kGrid, 40000));
    in.extra = "-tmGPT2,GLPT2 -g2grd_cut.grd";
    ExpectRefused("grd_cut", in, "GPT2 TROPOSHPERE MODEL CORRUPTED \\(#LONGITUDE, #LATITUDE\\)");

    // A clock file is no grid: its second line holds no node.
    in.extra = "-tmGPT2,GLPT2 -g2clk.clk";
    ExpectRefused("grd_foreign", in, "GPT2 TROPOSHPERE MODEL CORRUPTED \\(READING 1. DATA LINE\\)");

    // A grid that does not open: the defaults Saastamoinen and Niell stand
    // in with their warnings, the same run as one that chose them.
    in.extra = "-tmGPT2,GLPT2 -g2absent.grd";
    const RunResult r = RunOrvo("grd_missing", in.Args());
    EXPECT_TRUE(Has(r.err, "#### Orvo: Warning -> GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED! ####"));
    EXPECT_TRUE(Has(r.err, "#### Orvo: Warning -> TROPOSPHERE MODEL SET TO DEFAULT - SAASTAMOINEN! ####"));
    ExpectSamePosition(ExpectCompleted("grd_missing", r), Reference());

    // The real grid completes, as a check that the cases above fail on the
    // file alone.
    in.extra = "-tmGPT2,GLPT2 -g2" + kGrid;
    ExpectCompleted("grd_real", RunOrvo("grd_real", in.Args()));
}

TEST(Robustness, ProblemFileEmptyCutForeignOrMissing)
{
    Inputs in;
    // Fewer than the six header lines: an empty list that blanks nothing.
    in.extra = "-sxempty";
    ExpectSamePosition(ExpectCompleted("crx_empty", RunOrvo("crx_empty", in.Args())), Reference());

    // Cut inside the end date: read as an open end it would silently
    // stretch the period to 2099.
    orvotest::WriteTemp("crx_cut.crx", kProblemHeader + kProblemLine.substr(0, 62));
    in.extra = "-sxcrx_cut.crx";
    ExpectRefused("crx_cut", in, "SATELLITE PROBLEM FILE .*line 7: DATA LINE ENDS INSIDE A DATE");

    // Header lines of the orbit file have digits in the problem column and
    // end where a date would still run.
    in.extra = "-sx" + kSp3;
    ExpectRefused("crx_foreign", in, "SATELLITE PROBLEM FILE .*line 20: DATA LINE ENDS INSIDE A DATE");

    // Dropped with a warning when it does not open.
    in.extra = "-sxabsent.crx";
    const RunResult r = RunOrvo("crx_missing", in.Args());
    EXPECT_TRUE(Has(r.err, "#### Orvo: Warning -> GPS AND GLONASS SATELLITE PROBLEM FILE CAN NOT BE OPENED! ####"));
    ExpectSamePosition(ExpectCompleted("crx_missing", r), Reference());

    // The whole list completes, and removing G05 moves the code solution.
    in.extra = "-sxsat.crx";
    const Position p = ExpectCompleted("crx_real", RunOrvo("crx_real", in.Args()));
    ASSERT_TRUE(p.found && Reference().found);
    EXPECT_GT(std::fabs(p.x - Reference().x) + std::fabs(p.y - Reference().y)
                  + std::fabs(p.z - Reference().z),
              1e-3L);
}

TEST(Robustness, WrongOptions)
{
    // A wrong sub-selector of -e is fatal before any file is read.
    Inputs in;
    in.extra = "-ex" + kSp3;
    ExpectRefused("opt_e", in, "EPHEMERIS/PRECISE CLOCKS/ERP FILE NOT SET CORRECTLY");
    in.extra = "-tmFOG";
    ExpectRefused("opt_tm", in, "TROPOSPHERE MODEL NOT SET CORRECTLY");
    // No observation file at all.
    in = Inputs();
    in.obs.clear();
    ExpectRefused("opt_nor", in, "NO RINEX \\(OBSERVATION\\) FILE SET!");

    // An unknown option is only a warning and changes nothing.
    in = Inputs();
    in.extra = "-zz";
    const RunResult r = RunOrvo("opt_unknown", in.Args());
    EXPECT_TRUE(Has(r.err, "#### Orvo: Warning -> UNKNOWN PARAMETHER: -zz ####")) << r.err;
    ExpectSamePosition(ExpectCompleted("opt_unknown", r), Reference());
}
