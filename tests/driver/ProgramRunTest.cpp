#include "driver/ProgramRun.h"

#include "ContextFixture.h"

using namespace drivertest;

// The closing title as ProgramSubTitle frames it on the output stream.
const std::regex ClosingTitle("(^|\n)={110}\nPROGRAM:     Orvo     \\*\\*\\*\\*\\* SUCCESFULLY ENDED \\[\\d+\\.\\d{3} s\\] "
                              "\\*\\*\\*\\*\\*\n={110}\n\n$");
// Start of the banner line that ProgramTitle writes first in a run.
const char* const BannerLine = "          PROGRAM:            Orvo";
const std::string Inputs = " -robs.20o -egbrdc.20n -csG";

// Runs the program in the scratch sub-folder `dir`, which holds two empty
// input files, "obs.20o" and "brdc.20n": they pass the tests of existence
// that follow the command line, so a run with them reaches the settings
// report on the output stream before the readers refuse the empty content.
static RunResult RunIn(const std::string& dir, const std::string& args) {
    std::system(("mkdir -p '" + orvotest::TempDir() + "/" + dir + "'").c_str());
    orvotest::WriteTemp(dir + "/obs.20o", "");
    orvotest::WriteTemp(dir + "/brdc.20n", "");
    return RunOrvo(dir, args);
}

static std::string In(const std::string& dir, const std::string& file) { return orvotest::ReadFile(orvotest::TempDir() + "/" + dir + "/" + file); }

TEST(ProgramRun, StartAndEndLines) {
    Capture o(std::cout), e(std::cerr);
    StartProg(true, ": STARTING");
    EndProg(true, true);
    StartProg(false, ": QUIET");
    EndProg(false, false);
    EXPECT_TRUE(std::regex_search(o.Text(), ClosingTitle)) << o.Text();
    EXPECT_TRUE(std::regex_match(e.Text(), std::regex("\nOrvo: STARTING\nOrvo: \\*\\*\\*\\*\\* SUCCESFULLY ENDING PROGRAM "
                                                      "\\[\\d+\\.\\d{3} s\\] \\*\\*\\*\\*\\*!\n\n\n"))) << e.Text();
}

TEST(ProgramRun, HelpRunReadsNothingAndEnds) {
    // The help is in the Windows-1250 code page: the c with caron of "točk"
    // is the single byte 0xE8. Two arguments, neither verbose: no help, the
    // run goes on.
    const RunResult r = RunIn("help", "");
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(Has(r.err, "PROGRAM: Orvo.exe") && Has(r.err, "koordinat to\xE8k GNSS.")) << r.err;
    EXPECT_TRUE(Has(r.err, "-help          Izpise datoteko s pomocjo na ekran (to vsebino).\n"));
    EXPECT_TRUE(std::regex_match(r.out, ClosingTitle)) << r.out;
    RunIn("helpredir", "-help -weerr.txt");
    EXPECT_FALSE(Has(In("helpredir", "err.txt"), "PROGRAM: Orvo.exe"));
}

TEST(ProgramRun, RedirectionSendsBothStreamsToFiles) {
    // Equal names give the log a second file; the warning comes before the
    // streams are handed over, and the second pass echoes the plain name.
    const std::string same = "#### Orvo: Warning -> COUT AND CERR REDIRECTION FILE SET EQUALLY: APPENDING .CERR TO CERR FILENAME! ####";
    const struct { const char *dir, *args, *out, *err; std::string warning; const char* echo; } rows[] = {
        {"redir", "-woout.txt -weerr.txt -v", "out.txt", "err.txt", "", "COUT redirection file: out.txt!"},
        {"same", "-wosame.txt -WEsame.txt -v", "same.txt", "same.txt.CERR", same, "CERR redirection file: same.txt!"}};
    for (const auto& k : rows) {
        const RunResult r = RunIn(k.dir, k.args + Inputs);
        const std::string out = In(k.dir, k.out), err = In(k.dir, k.err);
        EXPECT_EQ(r.out, "");
        EXPECT_TRUE(k.warning.empty() ? r.err.empty() : Has(r.err, k.warning)) << r.err;
        EXPECT_TRUE(Has(out, BannerLine) && !Has(out, "PARSING INPUT PARAMETERS")) << out;
        EXPECT_TRUE(Has(err, "Orvo::GetFiles(): PARSING INPUT PARAMETERS!") && !Has(err, BannerLine)) << err;
        EXPECT_TRUE(Has(err, "Orvo::GetFiles():         RINEX file name: obs.20o!") && Has(err, k.echo)) << err;
    }
    // Without a name the stream stays on the terminal.
    const RunResult r = RunIn("noname", "-we -v" + Inputs), o = RunIn("nonameout", "-WO" + Inputs);
    EXPECT_TRUE(Has(r.err, "#### Orvo: Warning -> CERR REDIRECTION FILE SET WITHOUT FILENAME: CERR GOES TO TERMINAL! ####")) << r.err;
    EXPECT_TRUE(Has(r.err, "PARSING INPUT PARAMETERS!") && Has(r.out, BannerLine)) << r.out;
    EXPECT_TRUE(Has(o.err, "COUT REDIRECTION FILE SET WITHOUT FILENAME: COUT GOES TO TERMINAL!") && Has(o.out, BannerLine));
}
