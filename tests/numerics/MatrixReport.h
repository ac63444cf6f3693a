#pragma once
// The framed report of the matrix family, composed from its layout for the
// death tests of the numerics suite: a newline, 60 stars, the kind, a blank
// line, a tab, the text and its numbers, 60 stars and the exit line.
#include <iostream>
#include <string>

namespace orvotest {

/// s escaped so that a death-test regex matches it verbatim.
inline std::string Literal(const std::string& s)
{
    std::string out;
    for (char ch : s) {
        if (std::string("\\^$.|?*+()[]{}").find(ch) != std::string::npos) out += '\\';
        out += ch;
    }
    return out;
}

/// A line of 60 stars, the frame of every matrix report.
inline const std::string MatrixStars(60, '*');

/// Regex of the whole error report with the given text and numbers.
inline std::string MatrixErrorReport(const std::string& body)
{
    return Literal("\n" + MatrixStars + "\nMATRIX::ERROR:\n\n\t" + body + MatrixStars +
                   "\nExiting program...\n\n");
}

}  // namespace orvotest

// MError writes on the output stream; a death test watches the error stream.
#define EXPECT_MATRIX_DEATH(stmt, regex)                                                            \
    EXPECT_EXIT(                                                                                    \
        {                                                                                           \
            std::cout.rdbuf(std::cerr.rdbuf());                                                     \
            stmt;                                                                                   \
        },                                                                                          \
        ::testing::ExitedWithCode(1), regex)
