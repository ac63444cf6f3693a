#include <gtest/gtest.h>

#include "TestSupport.h"

#include <iostream>
#include <sstream>

#include "numerics/ProgramError.h"

namespace {

// Swaps a stream's buffer for a string buffer for the life of the object.
using orvotest::Capture;

}  // namespace

// The regexes are anchored at both ends: the frame, its blank lines and the
// trailing blank of the "Exiting" line are all part of the contract.
TEST(ProgramErrorDeath, ErrorPrintsFrameOnErrorStreamOnlyAndExitsWithOne)
{
    EXPECT_EXIT(
        {
            std::ostringstream sink;
            std::cout.rdbuf(sink.rdbuf());
            ProgramError("Orvo", "FILE x.20o: LINE 7 TOO SHORT");
        },
        ::testing::ExitedWithCode(1),
        "^\n\\*\\*\\*\\* Orvo: Error -> FILE x\\.20o: LINE 7 TOO SHORT \\*\\*\\*\\*\n"
        "     Exiting Orvo \\.\\.\\. \n\n$");
}

TEST(ProgramErrorDeath, ErrorCoutPrintsFrameOnOutputStreamOnlyAndExitsWithOne)
{
    // The output stream is sent to the error stream, which the death test
    // reads, and the error stream itself is silenced: only text written to
    // std::cout can match.
    EXPECT_EXIT(
        {
            std::ostringstream sink;
            std::cout.rdbuf(std::cerr.rdbuf());
            std::cerr.rdbuf(sink.rdbuf());
            ProgramErrorCout("Orvo", "NO EPOCHS");
        },
        ::testing::ExitedWithCode(1),
        "^\n\\*\\*\\*\\* Orvo: Error -> NO EPOCHS \\*\\*\\*\\*\n     Exiting Orvo \\.\\.\\. \n\n$");
}

TEST(ProgramWarning, PrintsFrameOnItsOwnStreamAndReturns)
{
    const std::string expected =
        "\n#### Orvo: Warning -> UNKNOWN PARAMETHER: -zz ####\n     Continuing Orvo ... \n\n";
    {
        Capture err(std::cerr), out(std::cout);
        ProgramWarning("Orvo", "UNKNOWN PARAMETHER: -zz");
        EXPECT_EQ(err.Text(), expected);
        EXPECT_EQ(out.Text(), "");
    }
    {
        Capture err(std::cerr), out(std::cout);
        ProgramWarningCout("Orvo", "UNKNOWN PARAMETHER: -zz");
        EXPECT_EQ(out.Text(), expected);
        EXPECT_EQ(err.Text(), "");
    }
}
