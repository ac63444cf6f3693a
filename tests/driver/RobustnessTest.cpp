// The whole program on broken input. Every kind of file a run reads, given
// empty, cut inside a record, of another format or not at all, must end the
// run with status 1 and a framed message naming the problem: never a signal,
// a hang, or a finished report built on a number that was never in the file.
// Optional files that the program drops by design (with a warning) must
// leave the result exactly as if they had not been named.

#include "ContextFixture.h"

using namespace drivertest;

const std::string kGrid = orvotest::Data("models/gpt2_5.grd");

// 5 m: the short file gives 13 epochs (6 minutes) of ionosphere-free code
// alone (no arc reaches the minimum length), whose a-posteriori precision is
// about 0.5 m per axis; 5 m is some 5 sigma in 3D and still far below what a
// wrong orbit, clock or channel would do (kilometres).
constexpr long double kCodeOnlyTol_m = 5.0L;
// The report prints 0.1 mm; equal runs agree to the last digit.
constexpr long double PrintStep_m = 1e-4L;

// A satellite problem list in its fixed columns: six header lines, then
// G05 with both problems from 00:00 to the next midnight.
const std::string kProblemHeader = "SATELLITE PROBLEMS\n------------------\n SAT  PROBLEM  ACTION      FROM                 TO\n\n"
                                   "     (1 phase, 2 code, 3 both)\n" + std::string(71, '-') + "\n";
const std::string kProblemLine = "   5          3       0          2020 06 25 00 00 00  2020 06 26 00 00 00\n";

static std::string Cut(const std::string& file, std::size_t bytes) { return orvotest::ReadFile(file).substr(0, bytes); }

// Writes once into the scratch folder the inputs that the cases share and
// the broken variants cut from the real files.
static void WriteInputs() {
    [[maybe_unused]] static const bool done = [] {
        // Lines of the observation file up to the last whole epoch before
        // line 2000: 13 epochs of GPS, GLONASS and Galileo, a run of about a
        // second. The 2000 lines themselves end inside an epoch's records.
        const std::string text = orvotest::FirstLines(kObs, 2000);
        orvotest::WriteTemp("obs.20o", text.substr(0, text.rfind("\n 20  6 25 ") + 1));
        orvotest::WriteTemp("obs_cut.20o", text);
        orvotest::WriteTemp("clk.clk", orvotest::FirstLines(kClk, 3000));
        orvotest::WriteTemp("sat.crx", kProblemHeader + kProblemLine);
        orvotest::WriteTemp("empty", "");
        // The last line cut inside a value, as a copy that broke off: the
        // GPS-only ZIMM file has two lines a record, the second ending in P2,
        // and line 43 ends the first epoch. "23535870.391" cut to its first 7
        // digits would read as 2353587 m. The reader stops before any orbit is
        // needed, so the other day's orbit files don't matter.
        const std::string zimm = orvotest::FirstLines(orvotest::Data("zimm-2015-235/ZIMM2350.15O"), 43);
        const std::size_t line43 = zimm.rfind('\n', zimm.size() - 2) + 1;
        EXPECT_EQ(zimm.compare(line43 + 18, 12, "23535870.391"), 0) << zimm.substr(line43);
        orvotest::WriteTemp("obs_cutvalue.15o", zimm.substr(0, line43 + 16 + 9));
        // Inside a position line of the 33rd epoch.
        orvotest::WriteTemp("orb_cut.sp3", Cut(kSp3, 150000));
        // The last AS record cut inside its bias: "0.635702757495E-04" cut to
        // "0.635702757495" would be a clock of 0.64 s in place of 64 us, some
        // 190000 km of range.
        const std::string lines = orvotest::FirstLines(kClk, 3001);
        orvotest::WriteTemp("clk_cut.clk", lines.substr(0, lines.rfind("AS ", lines.size() - 2) + 55));
        // Inside the line of R11, before its channel.
        orvotest::WriteTemp("glnfc_cut", Cut(kChannels, 700));
        // Inside a node line some 200 lines into the grid.
        orvotest::WriteTemp("grd_cut.grd", Cut(kGrid, 40000));
        // Inside the end date: read as an open end it would silently stretch
        // the period to 2099.
        orvotest::WriteTemp("crx_cut.crx", kProblemHeader + kProblemLine.substr(0, 62));
        return true;
    }();
}

// The options of the full-run example, each input replaceable.
struct Inputs {
    std::string obs = "obs.20o", sp3 = kSp3, clk = "clk.clk", channels = kChannels;
    std::string extra;  // further options, e.g. a grid or problem file

    std::string Args() const {
        std::string a = "-csGRE -lPc3,L3 -ti02:00:00 -tg -xSTA";
        if (!Has(extra, "-tm")) a += " -tmSAAST,NIELL";
        for (const auto& [opt, value] : {std::pair{" -r", obs}, {" -ep", sp3}, {" -ec", clk}, {" -gf", channels}})
            if (!value.empty()) a += opt + value;
        return a + " " + extra;
    }
};

// Runs the program on `in` in the scratch folder.
static RunResult RunOn(const Inputs& in) {
    WriteInputs();
    return RunOrvo(".", in.Args());
}

// The framed error of ProgramError or of a reader's own routine: the frame
// line with the text, then the "Exiting" line of the same name.
static std::string FramedErrorText(const RunResult& r) {
    static const std::regex framed("(\\*\\*\\*\\*|####) (\\w+): Error -> ([^\\n]*) (\\*\\*\\*\\*|####)\\n {5}Exiting (class )?\\2 ");
    std::smatch m;
    const std::string both = r.out + r.err;
    return std::regex_search(both, m, framed) ? m[3].str() : std::string();
}

static bool Sanitized(const RunResult& r) { return Has(r.err, "Sanitizer") || Has(r.err, "runtime error:"); }

// A completed run: status 0, the closing title, no framed error, a position
// near the marker.
static Xyz ExpectCompleted(const std::string& name, const RunResult& r) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(r.status == 0 && Has(r.out, "SUCCESFULLY ENDED") && FramedErrorText(r).empty() && !Sanitized(r)) << r.out << r.err;
    const Xyz p = Estimated(r.out);
    EXPECT_LT(Distance(p, Reference("esbc-2020-177")), kCodeOnlyTol_m) << r.out;
    return p;
}

// The complete inputs, run once for the cases that compare against it.
static const Xyz& Complete() {
    static const Xyz p = ExpectCompleted("reference", RunOn(Inputs()));
    return p;
}

TEST(Robustness, BrokenOrWrongInputEndsWithAFramedMessage) {
    using F = std::string Inputs::*;
    const F obs = &Inputs::obs, sp3 = &Inputs::sp3, clk = &Inputs::clk, gf = &Inputs::channels, extra = &Inputs::extra;
    // Each row replaces one input; `expected` is a regular expression for the framed text.
    const struct { F field; std::string value; const char* expected; } rows[] = {
        {obs, "empty", "NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED"},
        {obs, "obs_cut.20o", "RINEX FILE ENDS INSIDE THE EPOCH OF LINE"},
        {obs, "obs_cutvalue.15o", "RINEX FILE ENDS INSIDE AN OBSERVATION VALUE"},
        {obs, kSp3, "NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED"},
        {obs, "absent.20o", "RINEX \\(OBSERVATION\\) FILE CAN NOT BE OPENED!"},
        {obs, "", "NO RINEX \\(OBSERVATION\\) FILE SET!"}, {sp3, "empty", "PRECISE ORBIT FILE .*file ends in the header"},
        {sp3, "orb_cut.sp3", "PRECISE ORBIT FILE .*header announces 96 epochs"},
        {sp3, "clk.clk", "PRECISE ORBIT FILE .*not an SP3 header line"},
        {sp3, "absent.sp3", "MULTI-GNSS PRECISE EPHEMERIS FILE CAN NOT BE OPENED!"},
        {clk, "empty", "RINEX VERSION / TYPE NOT IN FIRST LINE"},
        {clk, "clk_cut.clk", "RINEX CLOCK FILE .*AS record too short"}, {clk, kSp3, "RINEX VERSION / TYPE NOT IN FIRST LINE"},
        {gf, "empty", "GLONASS FREQUENCY CHANNEL FILE .*NO FREQUENCY CHANNEL LINES"},
        {gf, "glnfc_cut", "GLONASS FREQUENCY CHANNEL FILE .*line 13:"}, {gf, kSp3, "GLONASS FREQUENCY CHANNEL FILE .*line 3:"},
        {gf, "absent.glnfc", "GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED!"},
        {extra, "-tmGPT2,GLPT2 -g2empty", "GPT2 TROPOSHPERE MODEL CORRUPTED \\(READING HEADER\\)"},
        {extra, "-tmGPT2,GLPT2 -g2grd_cut.grd", "GPT2 TROPOSHPERE MODEL CORRUPTED \\(#LONGITUDE, #LATITUDE\\)"},
        // A clock file is no grid: its second line holds no node.
        {extra, "-tmGPT2,GLPT2 -g2clk.clk", "GPT2 TROPOSHPERE MODEL CORRUPTED \\(READING 1. DATA LINE\\)"},
        {extra, "-sxcrx_cut.crx", "SATELLITE PROBLEM FILE .*line 7: DATA LINE ENDS INSIDE A DATE"},
        // Header lines of the orbit file have digits in the problem column
        // and end where a date would still run.
        {extra, "-sx" + kSp3, "SATELLITE PROBLEM FILE .*line 20: DATA LINE ENDS INSIDE A DATE"},
        // A wrong sub-selector of -e is fatal before any file is read.
        {extra, "-ex" + kSp3, "EPHEMERIS/PRECISE CLOCKS/ERP FILE NOT SET CORRECTLY"},
        {extra, "-tmFOG", "TROPOSPHERE MODEL NOT SET CORRECTLY"},
    };
    for (const auto& k : rows) {
        Inputs in;
        in.*k.field = k.value;
        SCOPED_TRACE("orvo " + in.Args());
        const RunResult r = RunOn(in);
        const std::string text = FramedErrorText(r);
        EXPECT_TRUE(r.status == 1 && std::regex_search(text, std::regex(k.expected))) << "framed text: \"" << text << "\"\n" << r.out << r.err;
        EXPECT_FALSE(Has(r.out, "PPP PROCESSING RESULTS:") || Has(r.out, "SUCCESFULLY ENDED") || Sanitized(r)) << r.err;
    }
}

TEST(Robustness, DroppedOrEmptyOptionalInputsLeaveTheResult) {
    // A clock file that does not open is dropped, and the clocks of the orbit
    // file serve: the same run as without the option. A grid that does not
    // open gives the defaults Saastamoinen and Niell, the same run as one
    // that chose them. A problem list shorter than its six header lines
    // blanks nothing; the real list removes G05 and moves the code solution.
    // The real grid completes, as a check that the broken grids fail on the
    // file alone.
    Inputs noClock;
    noClock.clk.clear();
    const Xyz none = ExpectCompleted("clk_none", RunOn(noClock));
    enum { Same, SameAsNoClock, Completes, Moves };
    const struct { std::string Inputs::*field; std::string value; std::vector<std::string> warnings; int outcome; } rows[] = {
        {&Inputs::clk, "absent.clk", {"PRECISE MULTI-GNSS SATELLITE CLOCK FILE CAN NOT BE OPENED!"}, SameAsNoClock},
        {&Inputs::extra, "-tmGPT2,GLPT2 -g2absent.grd",
         {"GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!", "TROPOSPHERE MODEL SET TO DEFAULT - SAASTAMOINEN!"}, Same},
        {&Inputs::extra, "-tmGPT2,GLPT2 -g2" + kGrid, {}, Completes}, {&Inputs::extra, "-sxempty", {}, Same},
        {&Inputs::extra, "-sxabsent.crx", {"GPS AND GLONASS SATELLITE PROBLEM FILE CAN NOT BE OPENED!"}, Same},
        {&Inputs::extra, "-sxsat.crx", {}, Moves},
        // An unknown option is only a warning and changes nothing.
        {&Inputs::extra, "-zz", {"UNKNOWN PARAMETHER: -zz"}, Same},
    };
    for (const auto& k : rows) {
        Inputs in;
        in.*k.field = k.value;
        const RunResult r = RunOn(in);
        for (const std::string& w : k.warnings) EXPECT_TRUE(Has(r.err, Warning(w))) << w << "\n" << r.err;
        const Xyz p = ExpectCompleted(k.value, r);
        const long double moved = std::fabs(p.x - Complete().x) + std::fabs(p.y - Complete().y) + std::fabs(p.z - Complete().z);
        const long double off = k.outcome == SameAsNoClock ? Distance(p, none) : moved;
        EXPECT_TRUE(k.outcome == Completes || (k.outcome == Moves ? moved > 1e-3L : off < PrintStep_m / 2)) << k.value << " " << off;
    }
}
