#include "driver/Console.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>

#include "TestSupport.h"
#include "driver/ProgramRun.h"

namespace {

// Collects what a routine writes on one standard stream and gives the stream
// its own buffer and format back afterwards.
using orvotest::Capture;

std::string Rule(char c, size_t n) { return std::string(n, c); }

}  // namespace

TEST(Console, PrintCharBlanksRuleAndFill)
{
    Capture out(std::cout);
    PrintChar('*', 5, 3);
    PrintChar('-', 0, 2);  // blanks only, no new line
    PrintChar('#', 2, 0);
    PrintCharNoEndl('x', 3);
    PrintCharNoEndl('y', 0);
    PrintCharNoEndl('z', -4);
    EXPECT_EQ(out.Text(), "   *****\n  ##\nxxx");
    EXPECT_EQ(std::cout.fill(), ' ');
}

TEST(Console, PrintCharIntoFile)
{
    const std::string path = orvotest::TempDir() + "/rule.txt";
    {
        std::fstream f(path, std::ios::out | std::ios::trunc);
        PrintChar('=', 4, f);
        PrintChar('=', 0, f);
        PrintChar('+', 1, f);
    }
    EXPECT_EQ(orvotest::ReadFile(path), "====\n+\n");
}

TEST(Console, TitlesHaveTheirRulesAndIndents)
{
    {
        Capture out(std::cout);
        ProgramSubTitle("RESULTS:", 2);
        EXPECT_EQ(out.Text(), "  " + Rule('=', 110) + "\n  RESULTS:\n  " + Rule('=', 110) + "\n\n");
    }
    {
        Capture out(std::cout);
        ProgramSubSubTitle("INPUT:", 3);
        EXPECT_EQ(out.Text(), "   INPUT:\n   ======\n\n");
    }
    {
        Capture out(std::cout);
        ProgramSubSubTitleOver("ABC", 1);
        EXPECT_EQ(out.Text(), " ===\n ABC\n ===\n\n");
    }
    {
        Capture out(std::cout);
        ProgramSubSubSubTitle("Step");
        ProgramSubSubSubTitle("Go", 2);
        EXPECT_EQ(out.Text(), "Step\n----\n\n  Go\n  --\n\n");
    }
}

TEST(Console, CerrPrintColumnsAndRestoredFlags)
{
    Capture err(std::cerr);
    std::cerr << std::right;
    ProgramCerrPrint("Orvo", "ReadFiles()", "READING!");
    ProgramCerrPrint("AVeryLongProgram", "f", "x");  // a long field is not cut
    EXPECT_EQ(err.Text(),
              "Orvo      ::ReadFiles()    :READING!\nAVeryLongProgram::f              :x\n");
    EXPECT_TRUE(std::cerr.flags() & std::ios::right);
}

TEST(Console, BannerLayout)
{
    Capture out(std::cout);
    ProgramTitle();
    std::istringstream in(out.Text());
    std::string l[8];
    for (std::string& s : l) std::getline(in, s);
    EXPECT_EQ(l[0], Rule('_', 110));
    EXPECT_EQ(l[1], Rule('*', 110));
    // 30 columns of label, name left in 35, description right in 45.
    std::string name = POut::ProgramName;
    name.resize(35, ' ');
    EXPECT_EQ(l[2], "          PROGRAM:            " + name +
                        std::string(45 - POut::ProgramDescription.size(), ' ') +
                        POut::ProgramDescription);
    std::string release = POut::Release;
    release.resize(35, ' ');
    ASSERT_EQ(l[3].size(), 110u);
    EXPECT_EQ(l[3].substr(0, 65), "          RELEASE:            " + release);
    EXPECT_TRUE(std::regex_match(l[3].substr(65),
                                 std::regex(" +DATE: \\d{4}-\\d{2}-\\d{2}  \\d{2}:\\d{2}:\\d{2}")))
        << l[3];
    EXPECT_EQ(l[4], Rule('_', 110));
    EXPECT_EQ(l[5], Rule('*', 110));
    EXPECT_EQ(l[6], "");
    EXPECT_EQ(l[7], "");
    EXPECT_TRUE(in.peek() == EOF);
    EXPECT_TRUE(std::cout.flags() & std::ios::fixed);
}
