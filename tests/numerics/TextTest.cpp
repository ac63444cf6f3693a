// The C-string helpers: each edit against text worked out by hand, words
// against stream extraction, and the scientific notation against its own
// reading back.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "numerics/cstringf.h"

namespace {

// An output buffer pre-filled with a marker behind its text, so that a
// missing terminator or a write past the expected end shows.
struct Buf {
    char s[64];
    explicit Buf(const char* init = "") {
        std::memset(s, '#', sizeof s);
        std::strcpy(s, init);
    }
    // Text up to the terminator, a bar, and the character behind it.
    std::string Tail() const
    {
        const char next = s[std::strlen(s) + 1];
        return std::string(s) + "|" + (next == '\0' ? std::string("\\0") : std::string(1, next));
    }
};

}  // namespace

TEST(Text, EditsInPlaceGiveTheHandWrittenText) {
    const char* line = "G01 20 6 25";
    // Each case starts from its text, then runs the edit on the buffer; the
    // expected text carries the character behind the terminator: '#' where
    // nothing may have been written, the old content where the text shrank.
    const struct { const char* init; std::function<void(char*)> edit; const char* expect; } cases[] = {
        {"", [&](char* b) { substr(line, 4, 2, b); }, "20|#"},
        {"", [&](char* b) { substr(line, 7, 50, b); }, "6 25|#"},  // count past the end
        {"", [&](char* b) { substr(line, 4, b); }, "20 6 25|#"},
        {"stale", [&](char* b) { substr(line, 11, 3, b); }, "|t"},  // at the terminator: empty
        {"stale", [](char* b) { substr("abc", 10, 2, b); }, "|t"},  // outside: nothing read beyond
        {"stale", [](char* b) { substr("abc", -1, 2, b); }, "|t"},
        {"stale", [](char* b) { substr("abc", 5, b); }, "|t"},
        {"stale", [](char* b) { substr("abc", -1, b); }, "|t"},
        {"stale", [](char* b) { substr("abc", 1, -3, b); }, "|t"},
        {"stale", [](char* b) { substr(nullptr, 0, 3, b); }, "|t"},
        {"", [](char* b) { strcopy(b, '-', 5); }, "-----|#"},
        {"", [](char* b) { strng(b, '*', 3); }, "***|#"},
        {"xy", [](char* b) { strcopy(b, '-', 0); }, "|y"},
        {"AB", [](char* b) { fillstr(b, 5, '.'); }, "AB...|#"},
        {"AB...", [](char* b) { fillstr(b, 3, '.'); }, "AB.|."},  // a longer text is cut
        {"AB.", [](char* b) { fillstr(b, -2, 'x'); }, "|B"},
        {"  ab c  ", [](char* b) { trimr(b); }, "  ab c| "},
        {"  ab c  ", [](char* b) { triml(b); }, "ab c  | "},
        {"  ab c  ", [](char* b) { trim(b); }, "ab c|c"},
        {"     ", [](char* b) { trimr(b); }, "| "},
        {"\tab \n", [](char* b) { trim(b); }, "\tab \n|#"},  // only character 32 is a blank
        {"0.123D+03 4.5D-02", [](char* b) { creplace(b, 'D', 'E'); }, "0.123E+03 4.5E-02|#"},
        {"DDDD", [](char* b) { creplace(b, 'D', 'E', 2); }, "EEDD|#"},
        {"EEDD", [](char* b) { creplace(b, 'D', 'x', 40); }, "EExx|#"},  // a count past the end stops at it
        {"G01 G02 G03", [](char* b) { sreplace(b, "G0", "R1"); }, "R11 R12 R13|#"},
        {"a-b-c", [](char* b) { sreplace(b, "-", "--"); }, "a-b-c|#"},  // lengths differ: nothing
        {"abc", [](char* b) { sreplace(b, "", ""); }, "abc|#"},
        {"aaa", [](char* b) { sreplace(b, "aa", "bb"); }, "bba|#"},  // left to right, no overlap
        {"ABCDEFG", [](char* b) { instr(b, 2, "xy"); }, "ABxyEFG|#"},
        {"ABCDEFG", [](char* b) { instr(b, 5, "12345"); }, "ABCDE12|#"},  // stops at the end of the target
        {"ABCDEFG", [](char* b) { instr(b, -1, "zz"); }, "ABCDEFG|#"},
        {"Trop-VMF1 cosZ", [](char* b) { slower(b); }, "trop-vmf1 cosz|#"},
        {"Trop-VMF1 cosZ", [](char* b) { supper(b); }, "TROP-VMF1 COSZ|#"},
        {"data/esbc.20o", [](char* b) { gword(b, 1, b); }, "data/esbc.20o|#"},  // into its own buffer
    };
    for (const auto& c : cases) {
        Buf b(c.init);
        c.edit(b.s);
        EXPECT_EQ(b.Tail(), c.expect) << '"' << c.init << '"';
    }
    // Null texts change nothing and do not crash.
    trim(nullptr); slower(nullptr); supper(nullptr); creplace(nullptr, 'a', 'b'); sreplace(nullptr, "a", "b");
    instr(nullptr, 0, "a");
    EXPECT_EQ(cwords(nullptr), 0);
    // The last separator, none, none in an empty or no text, and the terminator itself.
    EXPECT_TRUE(indexLast("data/esbc/esbc1770.20o", '/') == 9 && indexLast("esbc1770.20o", '/') == -1 && indexLast("", '/') == -1);
    EXPECT_TRUE(indexLast(nullptr, 'a') == -1 && indexLast("abc", '\0') == 3);
}

TEST(Text, WordsAgreeWithStreamExtraction) {
    // std::istringstream >> std::string splits on the same white space as
    // the "%s" pattern, an independent reading of the same rule.
    for (const char* line : {"  G01  R02\tE11\n", "", "   ", "single", "a b\tc\nd  e  "}) {
        std::istringstream in(line);
        std::vector<std::string> words;
        for (std::string w; in >> w;) words.push_back(w);
        ASSERT_EQ(cwords(line), static_cast<int>(words.size())) << '"' << line << '"';
        for (int i = 0; i <= static_cast<int>(words.size()) + 1; ++i) {
            Buf b("stale");
            gword(line, i, b.s);
            EXPECT_EQ(std::string(b.s), i >= 1 && i <= static_cast<int>(words.size()) ? words[i - 1] : "");
        }
    }
}

TEST(Text, SciNotationByHandAndReadBack) {
    // Base width nn - ne - 1, an "e", then the signed exponent zero-padded
    // to ne characters. Exact powers of ten are where floor(log10) is one off
    // if the logarithm lands a hair below the integer; below 1e-15 is zero.
    const struct { long double x; int nn, nd, ne; const char* text; } cases[] = {
        {1234.56L, 12, 4, 3, "  1.2346e+03"}, {-0.000123L, 12, 4, 3, " -1.2300e-04"},
        {6.02214076e23L, 14, 6, 3, "  6.022141e+23"}, {1.5e-7L, 12, 3, 4, "  1.500e-007"},
        {9.99999L, 12, 4, 3, " 10.0000e+00"},  // the exponent comes from the value, not the rounded base
        {1000.0L, 12, 4, 3, "  1.0000e+03"}, {0.0L, 12, 4, 3, "  0.0000e+00"}, {9e-16L, 12, 4, 3, "  0.0000e+00"}};
    char b[64];
    for (const auto& c : cases) {
        sciNotation(c.x, c.nn, c.nd, c.ne, b);
        EXPECT_STREQ(b, c.text);
    }
    sciNotation(1e-5, 12, 4, 3, b);  // double form
    EXPECT_STREQ(b, "  1.0000e-05");

    // The printed base keeps nd decimals, so the text differs from x by at
    // most half a unit of the last decimal times 10^exponent (plus a
    // relative 1e-15 for the decimal conversions).
    for (const long double x : {3.14159265358979L, -2.5e-3L, 7.77e12L, 1.234e-14L, -9.87654321e5L})
        for (int nd : {2, 5, 9}) {
            sciNotation(x, 20, nd, 4, b);
            EXPECT_EQ(std::strlen(b), 20u) << b;
            const long double unit = std::pow(10.0L, std::floor(std::log10(std::fabs(x))) - nd);
            EXPECT_LE(std::fabs(std::strtold(b, nullptr) - x), 0.5L * unit + 1e-15L * std::fabs(x)) << b;
        }
}
