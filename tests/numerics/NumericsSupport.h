#pragma once
// Helpers of the numerics suite: matrices written as lists, and the framed
// report of the matrix family composed from its layout for the death tests.
#include <gtest/gtest.h>

#include <initializer_list>
#include <iostream>
#include <string>

#include "numerics/matrix.h"

namespace orvotest {

/// r by c matrix filled row by row from the list.
template <class T>
matrix<T> Mat(long r, long c, std::initializer_list<T> vals) {
    matrix<T> m(r, c);
    long k = 0;
    for (const T& x : vals) m(k++) = x;
    return m;
}

/// Every element of m equals the list, in storage order, and the counts
/// agree; the list is long double so that it serves every element type.
template <class T>
::testing::AssertionResult Equals(const matrix<T>& m, std::initializer_list<long double> vals)
{
    long k = 0;
    for (long double x : vals)
        if (k >= m.Length() || static_cast<long double>(m(k++)) != x) return ::testing::AssertionFailure() << "element " << k - 1 << " is not " << x;
    if (k == m.Length()) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << m.Length() << " elements, " << k << " expected";
}

/// s escaped so that a death-test regex matches it verbatim.
inline std::string Literal(const std::string& s) {
    std::string out;
    for (char ch : s) {
        if (std::string("\\^$.|?*+()[]{}").find(ch) != std::string::npos) out += '\\';
        out += ch;
    }
    return out;
}

/// A line of 60 stars, the frame of every matrix report.
inline const std::string MatrixStars(60, '*');

/// Regex of the whole error report: a newline, the stars, the kind, a blank
/// line, a tab, the text and its numbers, the stars and the exit line.
inline std::string MatrixErrorReport(const std::string& body) { return Literal("\n" + MatrixStars + "\nMATRIX::ERROR:\n\n\t" + body + MatrixStars + "\nExiting program...\n\n"); }

/// Text of a warning report, which lets the run go on.
inline std::string MatrixWarning(const std::string& body) { return "\n" + MatrixStars + "\nMATRIX::WARNING:\n\n\t" + body + MatrixStars + "\n"; }

}  // namespace orvotest

// MError writes on the output stream; a death test watches the error stream.
#define EXPECT_MATRIX_DEATH(stmt, body) \
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); stmt; }, ::testing::ExitedWithCode(1), ::orvotest::MatrixErrorReport(body))
