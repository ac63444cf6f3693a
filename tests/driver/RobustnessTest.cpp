// The whole program on broken input, one table per kind of input file and
// one row per class of fault. Every row names what it must end in: a framed
// error (status 1, no result, no result file), or a completed run that
// printed its warnings and whose position is either the clean run's, the
// run without that file, or at least near the marker. Never a signal, a
// hang, or a finished report built on a number that was never in the file.

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

static std::string Scratch(const std::string& name) { return orvotest::TempDir() + "/" + name; }
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
        orvotest::WriteTemp("orb.sp3", orvotest::ReadFile(kSp3));
        // R02 also on channel -2 from the same start: which one holds?
        orvotest::WriteTemp("two.glnfc", orvotest::ReadFile(kChannels) + "R02       2020 06 25 00 00  0.0                    -2\n");
        // The clock file without its epochs from 00:02:00 to 00:04:00: the
        // windows around them are not equally spaced.
        std::istringstream clk(orvotest::ReadFile(Scratch("clk.clk")));
        std::string gap;
        for (std::string l; std::getline(clk, l);)
            if (!(l.compare(0, 3, "AS ") == 0 && l.compare(18, 6, "  0  2") >= 0 && l.compare(18, 6, "  0  4") <= 0)) gap += l + "\n";
        orvotest::WriteTemp("clk_gap.clk", gap);
        EXPECT_EQ(std::system(("gzip -dc " + Esbc("ESBC00DNK_R_20201770000_01D_MN.rnx.gz") + " > " + Scratch("mn.rnx")).c_str()), 0);
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
        // The station's Compact RINEX 3 day: its header alone (57 lines) and
        // its first 1500 lines, cut inside an epoch; gzip streams cut in the
        // middle.
        EXPECT_EQ(std::system(("gzip -dc " + Esbc("ESBC00DNK_R_20201770000_01D_30S_MO.crx.gz") + " | head -n 57 > "
                               + Scratch("head.crx") + " && gzip -dc " + Esbc("ESBC00DNK_R_20201770000_01D_30S_MO.crx.gz") + " | head -n 1500 > "
                               + Scratch("head_cut.crx") + " && gzip -c " + Scratch("obs.20o") + " > " + Scratch("obs.20o.gz")).c_str()), 0);
        EXPECT_EQ(std::system(("grep -v 'ION ALPHA\\|ION BETA' " + kNavG + " > " + Scratch("noion.20n")).c_str()), 0);
        orvotest::WriteTemp("obs_cut.20o.gz", Cut(Scratch("obs.20o.gz"), 20000));
        orvotest::WriteTemp("obs_cut.crx.gz", Cut(Esbc("ESBC00DNK_R_20201770000_01D_30S_MO.crx.gz"), 300000));
        return true;
    }();
}

// A scratch copy of the scratch file `base` with the first `from` replaced
// by `to` (of equal width, so that the columns stay); its name.
static std::string Edited(const std::string& name, const std::string& base, const std::string& from, const std::string& to) {
    WriteInputs();
    std::string text = orvotest::ReadFile(Scratch(base));
    const std::size_t at = text.find(from);
    EXPECT_TRUE(at != std::string::npos && from.size() == to.size()) << name;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    orvotest::WriteTemp(name, text);
    return name;
}

// The options of the full-run example, each input replaceable. Scratch
// inputs are named relative to the scratch folder; a value that starts
// with '-' is a whole option in place of the input's own.
struct Inputs {
    std::string obs = "obs.20o", sp3 = kSp3, clk = "clk.clk", channels = kChannels, systems = "GRE";
    std::string extra;  // further options, e.g. a grid or problem file

    std::string Args() const {
        std::string a = "-cs" + systems + " -ti02:00:00 -tg -xSTA -gpsres.gps";
        if (!Has(systems + extra, "-l")) a += " -lPc3,L3";
        if (!Has(extra, "-tm")) a += " -tmSAAST,NIELL";
        for (const auto& [opt, value] : {std::pair{" -r", obs}, {" -ep", sp3}, {" -ec", clk}, {" -gf", channels}})
            if (!value.empty()) a += value[0] == '-' ? " " + value : opt + (value[0] == '/' ? value : Scratch(value));
        return a + " " + extra;
    }
};

// Runs the program on `in` in a folder of its own, so that a result file
// left behind is this run's.
static RunResult RunOn(const Inputs& in, const std::string& dir) {
    WriteInputs();
    return RunOrvo(dir, in.Args());
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

// The complete inputs and the run without a clock file, each run once.
static const Xyz& Complete() {
    static const Xyz p = ExpectCompleted("reference", RunOn(Inputs(), "complete"));
    return p;
}
static const Xyz& WithoutClockFile() {
    static const Xyz p = [] { Inputs in; in.clk.clear(); return ExpectCompleted("no clock file", RunOn(in, "noclock")); }();
    return p;
}

// What a row must end in. Fails: status 1 with the framed error `messages[0]`,
// no coordinates and no result file. The others complete with every warning
// of `messages` printed and the position: Same
// as the complete run, SameAsNoClock as the run without a clock file, Moves
// away from the complete run, or only Completes near the marker.
enum class Outcome { Fails, Same, SameAsNoClock, Moves, Completes };

struct Case {
    std::string Inputs::*field;
    std::string value;
    Outcome outcome;
    std::vector<std::string> messages;  // regular expressions
    std::string Inputs::*field2 = nullptr;  // a second input changed with the first
    std::string value2 = "";
};

static void ExpectOutcomes(const std::string& table, const std::vector<Case>& cases) {
    int row = 0;
    for (const Case& k : cases) {
        Inputs in;
        in.*k.field = k.value;
        if (k.field2 != nullptr) in.*k.field2 = k.value2;
        SCOPED_TRACE("orvo " + in.Args());
        const std::string dir = table + std::to_string(row++);
        const RunResult r = RunOn(in, dir);
        if (k.outcome == Outcome::Fails) {
            const std::string text = FramedErrorText(r);
            EXPECT_TRUE(r.status == 1 && std::regex_search(text, std::regex(k.messages.at(0))))
                << "framed text: \"" << text << "\"\n" << r.out << r.err;
            EXPECT_FALSE(Has(r.out, "ECEF COORDINATES:") || Has(r.out, "SUCCESFULLY ENDED") || Sanitized(r)) << r.err;
            EXPECT_FALSE(std::filesystem::exists(Scratch(dir + "/res.gps")));
            continue;
        }
        for (const std::string& w : k.messages)
            EXPECT_TRUE(std::regex_search(r.err + r.out, std::regex(": Warning -> " + w + " ####"))) << w << "\n" << r.err;
        const Xyz p = ExpectCompleted(k.value, r);
        const Xyz& ref = k.outcome == Outcome::SameAsNoClock ? WithoutClockFile() : Complete();
        const long double moved = std::fabs(p.x - ref.x) + std::fabs(p.y - ref.y) + std::fabs(p.z - ref.z);
        if (k.outcome == Outcome::Moves) {
            EXPECT_GT(moved, 1e-3L) << k.value;
        } else if (k.outcome != Outcome::Completes) {
            EXPECT_LT(moved, PrintStep_m / 2) << k.value;
        }
    }
}

using O = Outcome;
const auto kObsF = &Inputs::obs, kSp3F = &Inputs::sp3, kClkF = &Inputs::clk, kGfF = &Inputs::channels, kSysF = &Inputs::systems,
           kExtraF = &Inputs::extra;

TEST(Robustness, ObservationFile) {
    const std::string firstCode = "  27616185.992 6", header = "        0.2160        0.0000        0.0000  ";
    ExpectOutcomes("obs", {
        // A code beyond any satellite's range (E01's first C1, which the
        // Galileo ionosphere-free code uses) is not data: it goes, and the
        // run says so.
        {kObsF, Edited("code.20o", "obs.20o", firstCode, " -22000000.000 6"), O::Completes,
         {"CODE OBSERVATIONS OUTSIDE THE RANGE OF ANY GNSS SATELLITE - 1 OBSERVATIONS NOT USED!"}},
        {kObsF, Edited("nan.20o", "obs.20o", firstCode, "           nan 6"), O::Fails, {"C1 OF E01 IS NOT A NUMBER.*line: 30"}},
        // G05 listed as a second G02 in the first epoch: neither record can
        // be told to be G02's.
        {kObsF, Edited("twice.20o", "obs.20o", "G02G05", "G02G02"), O::Completes,
         {"SATELLITES LISTED TWICE IN ONE EPOCH - 2 RECORDS NOT USED!"}},
        {kObsF, Edited("height.20o", "obs.20o", header, "      150.2160        0.0000        0.0000  "), O::Fails,
         {"ANTENNA: DELTA H/E/N BEYOND ANY MONUMENT.*line: 17"}},
        {kObsF, Edited("space.20o", "obs.20o", "  5232754.8054", " 15232754.8054"), O::Fails, {"APPROX POSITION XYZ IS NOT ON THE EARTH.*line: 18"}},
        // On the Earth but 1 km off: the adjustment finds the site, but the
        // models were computed at the header's position.
        {kObsF, Edited("far.20o", "obs.20o", "  3582105.2910", "  3583105.2910"), O::Fails,
         {"THE ESTIMATE 35821[0-9.]+ 5325[0-9.]+ 52327[0-9.]+ LIES (99[0-9]|100[0-9])\\.[0-9] M FROM THE A-PRIORI POSITION"}},
        {kObsF, "empty", O::Fails, {"NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED"}},
        {kObsF, "obs_cut.20o", O::Fails, {"RINEX FILE ENDS INSIDE THE EPOCH OF LINE"}},
        {kObsF, "obs_cutvalue.15o", O::Fails, {"RINEX FILE ENDS INSIDE AN OBSERVATION VALUE"}},
        {kObsF, kSp3, O::Fails, {"NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED"}},
        {kObsF, "absent.20o", O::Fails, {"RINEX \\(OBSERVATION\\) FILE CAN NOT BE OPENED!"}},
        // Files as stations publish them: gzip, Compact RINEX, RINEX 3.
        {kObsF, "obs.20o.gz", O::Completes, {}},
        {kObsF, "obs_cut.20o.gz", O::Fails, {"obs_cut.20o.gz: GZIP STREAM CUT BEFORE ITS END AT BYTE 20000!"}},
        {kObsF, "obs_cut.crx.gz", O::Fails, {"obs_cut.crx.gz: GZIP STREAM CUT BEFORE ITS END"}},
        {kObsF, "head_cut.crx", O::Fails, {"COMPACT RINEX FILE .*head_cut.crx: line 1501: file ends inside an epoch block"}},
        {kObsF, Edited("v2.crx", "head.crx", "3.0                 COMPACT", "2.0                 COMPACT"), O::Fails,
         {"v2.crx: line 1: unknown Compact RINEX version"}},
        {kObsF, Edited("v301.crx", "head.crx", "     3.05           OBSERVATION", "     3.01           OBSERVATION"), O::Fails,
         {"v301.crx: UNKNOWN RINEX VERSION 3.01"}},
        {kObsF, Edited("q1c.crx", "head.crx", "E   20 C1C", "E   20 Q1C"), O::Fails, {"OBSERVATION CODE \"Q1C\" OF SYSTEM E NOT VALID"}},
        {kObsF, "", O::Fails, {"NO RINEX \\(OBSERVATION\\) FILE SET!"}},
    });
}

TEST(Robustness, OrbitFile) {
    ExpectOutcomes("sp3", {
        {kSp3F, "empty", O::Fails, {"PRECISE ORBIT FILE .*file ends in the header"}},
        {kSp3F, "orb_cut.sp3", O::Fails, {"PRECISE ORBIT FILE .*header announces 96 epochs"}},
        {kSp3F, "clk.clk", O::Fails, {"PRECISE ORBIT FILE .*not an SP3 header line"}},
        {kSp3F, "absent.sp3", O::Fails, {"MULTI-GNSS PRECISE EPHEMERIS FILE CAN NOT BE OPENED!"}},
        // The orbits of another day: no observation epoch lies in the file.
        {kSp3F, orvotest::Data("zimm-2015-235/igs18590.sp3"), O::Fails, {"PRECISE ORBIT FILE .*igs18590.sp3 SPANS 2015-08-23 "
         "00:00:00.0 TO 2015-08-23 23:45:00.0, THE OBSERVATIONS 2020-06-25 00:00:00.0 TO 2020-06-25 00:06:00.0 - NO OBSERVATION EPOCH"}},
        {kSp3F, "-eg" + Scratch(Edited("mn301.rnx", "mn.rnx", "     3.05 ", "     3.01 ")), O::Fails,
         {"mn301.rnx.*RINEX 3.01 NAVIGATION FILE - ONLY VERSIONS 3.02-3.05 AND 4.00 CAN BE READ!"}},
        // A blank coordinate is no zero; a node far outside every orbit
        // shell is refused as missing, and G02 goes for the window.
        {kSp3F, Edited("blank.sp3", "orb.sp3", "PG02  21815.313784", "PG02              "), O::Fails,
         {"PRECISE ORBIT FILE .*blank.sp3: line 70: x coordinate \"\" is not a number"}},
        {kSp3F, Edited("far.sp3", "orb.sp3", "PG02  21815.313784", "PG02 218150.313784"), O::Completes,
         {"PRECISE ORBIT FILE " + Scratch("far.sp3") + ": 1 NODES OUTSIDE THE ORBIT SHELLS OR WITH CLOCKS BEYOND 0.1 S REFUSED AS MISSING, THE FIRST IN LINE 70!"}},
    });
}

TEST(Robustness, ClockFile) {
    ExpectOutcomes("clk", {
        {kClkF, "empty", O::Fails, {"RINEX VERSION / TYPE NOT IN FIRST LINE"}},
        {kClkF, "clk_cut.clk", O::Fails, {"RINEX CLOCK FILE .*AS record too short"}},
        {kClkF, kSp3, O::Fails, {"RINEX VERSION / TYPE NOT IN FIRST LINE"}},
        {kClkF, Edited("nan.clk", "clk.clk", "AS G02  2020  6 25  0  0  0.000000  2   -0.477325535811E-03",
                                                             "AS G02  2020  6 25  0  0  0.000000  2   nan                "),
         O::Fails, {"RINEX CLOCK FILE .*nan.clk: line 248: clock bias \"nan\" is not a number"}},
        // Across a gap the clock is not interpolated; the orbit file's
        // clock stands in, and the report says for how many records.
        {kClkF, "clk_gap.clk", O::Completes,
         {"OBSERVATION EPOCHS BEYOND OR ACROSS A GAP OF THE CLOCK FILE, OR WITHOUT ITS VALUE - [0-9]+ OBSERVATIONS ORBIT FILE CLOCK USED!"}},
        // A clock file that does not open is dropped, and the clocks of the
        // orbit file serve.
        {kClkF, "absent.clk", O::SameAsNoClock, {"PRECISE MULTI-GNSS SATELLITE CLOCK FILE CAN NOT BE OPENED!"}},
    });
}

TEST(Robustness, ChannelFile) {
    ExpectOutcomes("glnfc", {
        {kGfF, "empty", O::Fails, {"GLONASS FREQUENCY CHANNEL FILE .*NO FREQUENCY CHANNEL LINES"}},
        {kGfF, "glnfc_cut", O::Fails, {"GLONASS FREQUENCY CHANNEL FILE .*line 13:"}},
        {kGfF, kSp3, O::Fails, {"GLONASS FREQUENCY CHANNEL FILE .*line 3:"}},
        {kGfF, "absent.glnfc", O::Fails, {"GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED!"}},
        {kGfF, "two.glnfc", O::Fails, {"GLONASS FREQUENCY CHANNEL FILE .*two.glnfc: lines 4 and [0-9]+: SLOT 2 ON TWO CHANNELS IN OVERLAPPING PERIODS!"}},
        // Without a source of channels GLONASS can't be used: dropped when
        // other systems are set, fatal when it is the only one.
        {kGfF, "", O::Completes, {"NO FREQUENCY CHANNEL FILE \\[-gf\\] NOR GLONASS NAVIGATION FILE \\[-er\\] GIVES THE GLONASS CHANNELS - NOT PROCESSING GLONASS SYSTEM!"}},
        {kGfF, "", O::Fails, {"GLONASS IS THE ONLY SYSTEM SET BUT NO FREQUENCY CHANNEL FILE"}, kSysF, "R"},
    });
}

TEST(Robustness, TroposphereGrid) {
    ExpectOutcomes("grid", {
        {kExtraF, "-tmGPT2,GLPT2 -g2" + Scratch("empty"), O::Fails, {"GPT2 TROPOSHPERE MODEL CORRUPTED \\(READING HEADER\\)"}},
        {kExtraF, "-tmGPT2,GLPT2 -g2" + Scratch("grd_cut.grd"), O::Fails, {"GPT2 TROPOSHPERE MODEL CORRUPTED \\(#LONGITUDE, #LATITUDE\\)"}},
        // A clock file is no grid: its second line holds no node.
        {kExtraF, "-tmGPT2,GLPT2 -g2" + Scratch("clk.clk"), O::Fails, {"GPT2 TROPOSHPERE MODEL CORRUPTED \\(READING 1. DATA LINE\\)"}},
        // A grid that does not open gives the defaults Saastamoinen and
        // Niell, the same run as one that chose them; the real grid
        // completes, as a check that the broken grids fail on the file alone.
        {kExtraF, "-tmGPT2,GLPT2 -g2absent.grd", O::Same,
         {"GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!", "TROPOSPHERE MODEL SET TO DEFAULT - SAASTAMOINEN!"}},
        {kExtraF, "-tmGPT2,GLPT2 -g2" + kGrid, O::Completes, {}},
        // A model that needs a VMF1 or GPT2 file, with none: the defaults.
        {kExtraF, "-tmVIENNA,NIELL", O::Same,
         {"TROPOSPHERE MODEL/MAPPING FUNCTION \\[-tm\\] NEEDS A VMF1 OR GPT2 FILE \\[-vm\\|-g2\\] - NONE SET!", "TROPOSPHERE MODEL SET TO DEFAULT - SAASTAMOINEN!"}},
    });
}

TEST(Robustness, SatelliteProblemFile) {
    ExpectOutcomes("crx", {
        {kExtraF, "-sx" + Scratch("crx_cut.crx"), O::Fails, {"SATELLITE PROBLEM FILE .*line 7: DATA LINE ENDS INSIDE A DATE"}},
        // Header lines of the orbit file have digits in the problem column
        // and end where a date would still run.
        {kExtraF, "-sx" + kSp3, O::Fails, {"SATELLITE PROBLEM FILE .*line 20: DATA LINE ENDS INSIDE A DATE"}},
        // A list shorter than its six header lines blanks nothing; the real
        // list removes G05 and moves the code solution.
        {kExtraF, "-sx" + Scratch("empty"), O::Same, {}},
        {kExtraF, "-sxabsent.crx", O::Same, {"GPS AND GLONASS SATELLITE PROBLEM FILE CAN NOT BE OPENED!"}},
        {kExtraF, "-sx" + Scratch("sat.crx"), O::Moves, {}},
    });
}

TEST(Robustness, Options) {
    ExpectOutcomes("opt", {
        // A wrong sub-selector of -e is fatal before any file is read.
        {kExtraF, "-ex" + kSp3, O::Fails, {"EPHEMERIS/PRECISE CLOCKS/ERP FILE NOT SET CORRECTLY"}},
        {kExtraF, "-tmFOG", O::Fails, {"TROPOSPHERE MODEL NOT SET CORRECTLY"}},
        // A cut-off above every satellite, or a code combination that one of
        // the systems asked for lacks: no observation enters, and a report of
        // the a-priori position would read as a result.
        {kExtraF, "-ft0", O::Fails, {"NO OBSERVATION ENTERED THE STATIC SOLUTION - NO OBSERVATION OF THE CHOSEN TYPES LEFT"}},
        {kExtraF, "-me89", O::Fails, {"NO OBSERVATION ENTERED THE STATIC SOLUTION - NO SATELLITE ABOVE THE ELEVATION CUT-OFF"}},
        {kSysF, "E -lPp3,L3", O::Fails, {"NO OBSERVATION ENTERED THE STATIC SOLUTION - NO OBSERVATION OF THE CHOSEN TYPES LEFT"}},
        // A result file in place of an input, or in a missing folder.
        {kExtraF, "-cf" + Scratch("obs.20o"), O::Fails, {"RESULT FILE -.*obs.20o- WOULD OVERWRITE THE INPUT FILE"}},
        {kExtraF, "-cf/nonexistent/folder/day.clk", O::Fails, {"RESULT FILE -/nonexistent/folder/day.clk- LIES IN A FOLDER THAT DOES NOT EXIST!"}},
        // Unknowns beyond what the data can determine, or a shift that
        // never reaches the first epoch, stop before anything is allocated.
        {kExtraF, "-ti00:00:01", O::Fails, {"TROPOSPHERE INTERVAL \\[-ti\\] OF 1.0 s GIVES MORE ZENITH DELAY INTERVALS THAN THE 13 EPOCHS"}},
        {kExtraF, "-ti02:00:00d0:0:1e30", O::Fails, {"TROPOSPHERE EPOCH SHIFT \\[-ti...d\\] MUST BE SMALLER THAN THE INTERVAL!"}},
        {kExtraF, "-tgi100000000", O::Fails, {"NUMBER OF TROPOSPHERE GRADIENT INTERVALS \\[-tgi\\] 100000000 EXCEEDS THE 1 ZENITH DELAY INTERVALS!"}},
        // A Klobuchar file without coefficients would leave the ionosphere
        // out without a word.
        {kExtraF, "-ik" + Scratch("noion.20n"), O::Fails, {"noion.20n: NO ION ALPHA/BETA OR IONOSPHERIC CORR GPSA/GPSB COEFFICIENTS"}},
        {kExtraF, "-os" + Scratch("obs.20o"), O::Fails, {"RESULT FILE -.*obs.20o- WOULD OVERWRITE THE INPUT FILE"}},
        // An unknown option is only a warning and changes nothing.
        {kExtraF, "-zz", O::Same, {"UNKNOWN PARAMETHER: -zz"}},
    });
}
