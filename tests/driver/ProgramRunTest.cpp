#include "driver/ProgramRun.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>

#include "TestSupport.h"

namespace {

// The closing title as ProgramSubTitle frames it on the output stream.
const std::regex ClosingTitle(
    "(^|\n)={110}\nPROGRAM:     Orvo     \\*\\*\\*\\*\\* SUCCESFULLY ENDED \\[\\d+\\.\\d{3} s\\] "
    "\\*\\*\\*\\*\\*\n={110}\n\n$");

struct RunResult {
    int status;
    std::string out, err;
};

// Runs the built program with `args` inside a fresh folder of the scratch
// area and collects its two streams from files. The folder holds two empty
// input files, "obs.20o" and "brdc.20n": they pass the tests of existence
// that follow the command line, so a run with them reaches the settings
// report on the output stream before the readers refuse the empty content.
RunResult RunOrvo(const std::string& dir, const std::string& args)
{
    const std::string work = orvotest::TempDir() + "/" + dir;
    std::system(("mkdir -p '" + work + "'").c_str());
    orvotest::WriteTemp(dir + "/obs.20o", "");
    orvotest::WriteTemp(dir + "/brdc.20n", "");
    const std::string cmd = "cd '" + work + "' && '" + orvotest::OrvoBinary() + "' " + args +
                            " > terminal.out 2> terminal.err";
    const int rc = std::system(cmd.c_str());
    RunResult r;
    r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    r.out = orvotest::ReadFile(work + "/terminal.out");
    r.err = orvotest::ReadFile(work + "/terminal.err");
    return r;
}

// Start of the banner line that ProgramTitle writes first in a run.
const char* const BannerLine = "          PROGRAM:            Orvo";
// Options of a run that gets past the argument checks.
const std::string Inputs = " -robs.20o -egbrdc.20n -csG";

std::string In(const std::string& dir, const std::string& file)
{
    return orvotest::ReadFile(orvotest::TempDir() + "/" + dir + "/" + file);
}

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(ProgramRun, StartAndEndLines)
{
    std::ostringstream out, err;
    std::streambuf* o = std::cout.rdbuf(out.rdbuf());
    std::streambuf* e = std::cerr.rdbuf(err.rdbuf());
    const std::ios::fmtflags ef = std::cerr.flags();
    const std::streamsize ep = std::cerr.precision();
    StartProg(true, ": STARTING");
    EndProg(true, true);
    StartProg(false, ": QUIET");
    EndProg(false, false);
    std::cout.rdbuf(o);
    std::cerr.rdbuf(e);
    std::cerr.flags(ef);
    std::cerr.precision(ep);

    EXPECT_TRUE(std::regex_search(out.str(), ClosingTitle)) << out.str();
    EXPECT_TRUE(std::regex_match(
        err.str(), std::regex("\nOrvo: STARTING\nOrvo: \\*\\*\\*\\*\\* SUCCESFULLY ENDING PROGRAM "
                              "\\[\\d+\\.\\d{3} s\\] \\*\\*\\*\\*\\*!\n\n\n")))
        << err.str();
}

TEST(ProgramRun, NoArgumentPrintsHelpOnErrorStreamAndEnds)
{
    const RunResult r = RunOrvo("noarg", "");
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(Has(r.err, "PROGRAM: Orvo.exe")) << r.err;
    EXPECT_TRUE(Has(r.err, "-help          Izpise datoteko s pomocjo na ekran (to vsebino).\n"));
    // The help is in the Windows-1250 code page: the c with caron of "točk"
    // is the single byte 0xE8.
    EXPECT_TRUE(Has(r.err, "koordinat to\xE8k GNSS."));
    EXPECT_TRUE(std::regex_match(r.out, ClosingTitle)) << r.out;
}

TEST(ProgramRun, RedirectionSendsBothStreamsToFiles)
{
    const RunResult r = RunOrvo("redir", "-woout.txt -weerr.txt -v" + Inputs);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "");
    const std::string out = In("redir", "out.txt");
    const std::string err = In("redir", "err.txt");
    EXPECT_TRUE(Has(out, BannerLine)) << out;
    EXPECT_TRUE(Has(err, "Orvo::GetFiles(): PARSING INPUT PARAMETERS!")) << err;
    EXPECT_TRUE(Has(err, "Orvo::GetFiles():         RINEX file name: obs.20o!")) << err;
    EXPECT_TRUE(Has(err, "Orvo::GetFiles():         COUT redirection file: out.txt!")) << err;
    EXPECT_FALSE(Has(out, "PARSING INPUT PARAMETERS"));
    EXPECT_FALSE(Has(err, BannerLine));
}

TEST(ProgramRun, EqualRedirectionNamesGiveASecondFileForTheLog)
{
    const RunResult r = RunOrvo("same", "-wosame.txt -WEsame.txt -v" + Inputs);
    // The warning comes before the streams are handed over.
    EXPECT_TRUE(Has(r.err, "#### Orvo: Warning -> COUT AND CERR REDIRECTION FILE SET EQUALLY: "
                           "APPENDING .CERR TO CERR FILENAME! ####"))
        << r.err;
    EXPECT_EQ(r.out, "");
    const std::string out = In("same", "same.txt");
    const std::string err = In("same", "same.txt.CERR");
    EXPECT_TRUE(Has(out, BannerLine)) << out;
    EXPECT_FALSE(Has(out, "PARSING INPUT PARAMETERS"));
    EXPECT_TRUE(Has(err, "PARSING INPUT PARAMETERS!")) << err;
    // The second pass writes the plain name back.
    EXPECT_TRUE(Has(err, "CERR redirection file: same.txt!")) << err;
}

TEST(ProgramRun, RedirectionWithoutNameStaysOnTheTerminal)
{
    const RunResult r = RunOrvo("noname", "-we -v" + Inputs);
    EXPECT_TRUE(Has(r.err, "#### Orvo: Warning -> CERR REDIRECTION FILE SET WITHOUT FILENAME: "
                           "CERR GOES TO TERMINAL! ####"))
        << r.err;
    EXPECT_TRUE(Has(r.err, "PARSING INPUT PARAMETERS!"));
    EXPECT_TRUE(Has(r.out, BannerLine)) << r.out;

    const RunResult o = RunOrvo("nonameout", "-WO" + Inputs);
    EXPECT_TRUE(Has(o.err, "COUT REDIRECTION FILE SET WITHOUT FILENAME: COUT GOES TO TERMINAL!"));
    EXPECT_TRUE(Has(o.out, BannerLine)) << o.out;
}

TEST(ProgramRun, HelpOnlyForAHelpRun)
{
    // Two arguments, neither verbose: no help, the run goes on.
    RunOrvo("helpredir", "-help -weerr.txt");
    EXPECT_FALSE(Has(In("helpredir", "err.txt"), "PROGRAM: Orvo.exe"));

    const RunResult h = RunOrvo("helpv", "-help -v");
    EXPECT_EQ(h.status, 0);
    EXPECT_TRUE(Has(h.err, "PROGRAM: Orvo.exe"));
    EXPECT_TRUE(std::regex_match(h.out, ClosingTitle)) << h.out;
}

TEST(ProgramRun, BadOptionEndsWithStatusOne)
{
    const RunResult r = RunOrvo("bad", "-exfile -rX");
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(Has(r.err, "**** Orvo: Error -> EPHEMERIS/PRECISE CLOCKS/ERP FILE NOT SET "
                           "CORRECTLY [ use -e[p|g|r|e|c|o]FILENAME ]! ****\n     Exiting Orvo ... "))
        << r.err;
    EXPECT_FALSE(Has(r.out, "SUCCESFULLY ENDED"));
}
