#include "driver/Console.h"

#include "ContextFixture.h"

using orvotest::Capture;

// The banner is checked with the settings report that opens every run.
TEST(Console, RulesTitlesAndLogColumns) {
    const std::string path = orvotest::TempDir() + "/rule.txt", rule(110, '=');
    std::fstream f(path, std::ios::out | std::ios::trunc);
    PrintChar('=', 4, f), PrintChar('=', 0, f), PrintChar('+', 1, f);
    f.close();
    EXPECT_EQ(orvotest::ReadFile(path), "====\n+\n");
    Capture out(std::cout), err(std::cerr);
    PrintChar('*', 5, 3);
    PrintChar('-', 0, 2);  // blanks only, no new line
    PrintChar('#', 2, 0);
    PrintCharNoEndl('x', 3);
    PrintCharNoEndl('z', -4);
    EXPECT_EQ(std::cout.fill(), ' ');
    ProgramSubTitle("RESULTS:", 2);
    ProgramSubSubTitle("INPUT:", 3);
    ProgramSubSubTitleOver("ABC", 1);
    ProgramSubSubSubTitle("Step");
    ProgramSubSubSubTitle("Go", 2);
    EXPECT_EQ(out.Text(), "   *****\n  ##\nxxx  " + rule + "\n  RESULTS:\n  " + rule + "\n\n   INPUT:\n   ======\n\n ===\n ABC\n ===\n\n"
                          "Step\n----\n\n  Go\n  --\n\n");
    // A long field is not cut; the stream's flags are left as they were.
    std::cerr << std::right;
    ProgramCerrPrint("Orvo", "ReadFiles()", "READING!");
    ProgramCerrPrint("AVeryLongProgram", "f", "x");
    EXPECT_EQ(err.Text(), "Orvo      ::ReadFiles()    :READING!\nAVeryLongProgram::f              :x\n");
    EXPECT_TRUE(std::cerr.flags() & std::ios::right);
}
