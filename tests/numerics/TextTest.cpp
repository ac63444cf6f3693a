#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "numerics/cstringf.h"

namespace {

// Output buffers are pre-filled with a marker so that a missing terminator
// or a write past the expected end shows in the comparison.
struct Buf {
    char s[64];
    Buf() { std::memset(s, '#', sizeof s); }
    explicit Buf(const char* init)
    {
        std::memset(s, '#', sizeof s);
        std::strcpy(s, init);
    }
};

}  // namespace

TEST(TextSubstr, CopiesWindowStopsAtTerminatorAndAlwaysTerminates)
{
    const char* line = "G01 20 6 25";
    Buf b;
    substr(line, 4, 2, b.s);
    EXPECT_STREQ(b.s, "20");
    EXPECT_EQ(b.s[3], '#');  // nothing written behind the terminator

    substr(line, 7, 50, b.s);  // count past the end stops at the terminator
    EXPECT_STREQ(b.s, "6 25");

    substr(line, 4, b.s);
    EXPECT_STREQ(b.s, "20 6 25");

    substr(line, 11, 3, b.s);  // position at the terminator: empty
    EXPECT_STREQ(b.s, "");
    substr(line, 0, 0, b.s);
    EXPECT_STREQ(b.s, "");
}

TEST(TextSubstr, PositionOutsideTheTextGivesEmptyInsteadOfReadingBeyond)
{
    Buf b("stale");
    substr("abc", 10, 2, b.s);
    EXPECT_STREQ(b.s, "");
    std::strcpy(b.s, "stale");
    substr("abc", -1, 2, b.s);
    EXPECT_STREQ(b.s, "");
    std::strcpy(b.s, "stale");
    substr("abc", 5, b.s);
    EXPECT_STREQ(b.s, "");
    std::strcpy(b.s, "stale");
    substr("abc", 1, -3, b.s);
    EXPECT_STREQ(b.s, "");
}

TEST(TextSearch, IndexLastFindsLastOccurrenceOrTerminator)
{
    EXPECT_EQ(indexLast("data/esbc/esbc1770.20o", '/'), 9);
    EXPECT_EQ(indexLast("esbc1770.20o", '/'), -1);
    EXPECT_EQ(indexLast("", '/'), -1);
    EXPECT_EQ(indexLast("abc", '\0'), 3);  // the terminator itself
    EXPECT_EQ(indexLast(nullptr, 'a'), -1);
}

TEST(TextFill, StrcopyStrngAndFillstrGiveExactLengths)
{
    Buf b;
    strcopy(b.s, '-', 5);
    EXPECT_STREQ(b.s, "-----");
    strng(b.s, '*', 3);
    EXPECT_STREQ(b.s, "***");
    strcopy(b.s, '-', 0);
    EXPECT_STREQ(b.s, "");
    strcopy(b.s, '-', -4);
    EXPECT_STREQ(b.s, "");

    Buf f("AB");
    fillstr(f.s, 5, '.');
    EXPECT_STREQ(f.s, "AB...");
    fillstr(f.s, 3, '.');  // a longer text is cut
    EXPECT_STREQ(f.s, "AB.");
    fillstr(f.s, 3, 'x');  // already that long: unchanged
    EXPECT_STREQ(f.s, "AB.");
    fillstr(f.s, -2, 'x');
    EXPECT_STREQ(f.s, "");
}

TEST(TextTrim, RemovesOnlyBlanksAtTheRequestedEnds)
{
    Buf r("  ab c  "), l("  ab c  "), t("  ab c  ");
    trimr(r.s);
    triml(l.s);
    trim(t.s);
    EXPECT_STREQ(r.s, "  ab c");
    EXPECT_STREQ(l.s, "ab c  ");
    EXPECT_STREQ(t.s, "ab c");

    Buf blank("     "), empty("");
    trimr(blank.s);
    trim(empty.s);
    EXPECT_STREQ(blank.s, "");
    EXPECT_STREQ(empty.s, "");
    Buf blank2("   ");
    triml(blank2.s);
    EXPECT_STREQ(blank2.s, "");

    // Only character 32 is a blank: tabs and line ends are content.
    Buf tab("\tab \n"), tab2(" \tab");
    trimr(tab.s);
    triml(tab2.s);
    EXPECT_STREQ(tab.s, "\tab \n");
    EXPECT_STREQ(tab2.s, "\tab");
}

TEST(TextWords, CountAndPickAgreeWithStreamExtraction)
{
    // std::istringstream >> std::string splits on the same white space as
    // the "%s" pattern, an independent reading of the same rule.
    const char* lines[] = {"  G01  R02\tE11\n", "", "   ", "single", "a b\tc\nd  e  "};
    for (const char* line : lines) {
        std::istringstream in(line);
        std::vector<std::string> words;
        for (std::string w; in >> w;) words.push_back(w);
        ASSERT_EQ(cwords(line), static_cast<int>(words.size())) << '"' << line << '"';
        Buf b;
        for (std::size_t i = 0; i < words.size(); ++i) {
            gword(line, static_cast<int>(i) + 1, b.s);
            EXPECT_EQ(std::string(b.s), words[i]);
        }
        std::strcpy(b.s, "stale");
        gword(line, static_cast<int>(words.size()) + 1, b.s);
        EXPECT_STREQ(b.s, "");
        std::strcpy(b.s, "stale");
        gword(line, 0, b.s);
        EXPECT_STREQ(b.s, "");
    }
}

TEST(TextReplace, CreplaceAllOrWithinFirstPositions)
{
    Buf b("0.123D+03 4.5D-02");
    creplace(b.s, 'D', 'E');
    EXPECT_STREQ(b.s, "0.123E+03 4.5E-02");

    Buf n("DDDD");
    creplace(n.s, 'D', 'E', 2);
    EXPECT_STREQ(n.s, "EEDD");
    creplace(n.s, 'D', 'x', 40);  // a count past the end stops at it
    EXPECT_STREQ(n.s, "EExx");
    EXPECT_EQ(n.s[5], '#');
}

TEST(TextReplace, SreplaceOnlyWithEqualLengthsAndNeverChangesLength)
{
    Buf b("G01 G02 G03");
    sreplace(b.s, "G0", "R1");
    EXPECT_STREQ(b.s, "R11 R12 R13");

    Buf one("a-b-c");
    sreplace(one.s, "-", "--");  // one character by two: nothing happens
    EXPECT_STREQ(one.s, "a-b-c");

    Buf shortText("ab");
    sreplace(shortText.s, "abc", "xyz");
    EXPECT_STREQ(shortText.s, "ab");

    Buf empty("abc");
    sreplace(empty.s, "", "");
    EXPECT_STREQ(empty.s, "abc");

    // Left to right without overlap: "aaa" has one non-overlapping "aa".
    Buf over("aaa");
    sreplace(over.s, "aa", "bb");
    EXPECT_STREQ(over.s, "bba");
}

TEST(TextInstr, OverwritesInPlaceWithoutExtending)
{
    Buf b("ABCDEFG");
    instr(b.s, 2, "xy");
    EXPECT_STREQ(b.s, "ABxyEFG");
    instr(b.s, 5, "12345");  // stops at the end of the target
    EXPECT_STREQ(b.s, "ABxyE12");
    EXPECT_EQ(b.s[8], '#');
    instr(b.s, 9, "zz");
    EXPECT_STREQ(b.s, "ABxyE12");
    instr(b.s, -1, "zz");
    EXPECT_STREQ(b.s, "ABxyE12");
}

TEST(TextCase, LowerAndUpperTouchOnlyLetters)
{
    Buf l("Trop-VMF1 cosZ"), u("Trop-VMF1 cosZ");
    slower(l.s);
    supper(u.s);
    EXPECT_STREQ(l.s, "trop-vmf1 cosz");
    EXPECT_STREQ(u.s, "TROP-VMF1 COSZ");
}

TEST(TextNullGuard, NullPointersChangeNothingAndDoNotCrash)
{
    trim(nullptr);
    slower(nullptr);
    creplace(nullptr, 'a', 'b');
    sreplace(nullptr, "a", "b");
    instr(nullptr, 0, "a");
    EXPECT_EQ(cwords(nullptr), 0);
    Buf b("stale");
    substr(nullptr, 0, 3, b.s);
    EXPECT_STREQ(b.s, "");
}

// Texts worked out by hand: base width nn - ne - 1, an "e", then the signed
// exponent zero-padded to ne characters.
TEST(TextSciNotation, FormatsCheckedByHand)
{
    Buf b;
    sciNotation(1234.56L, 12, 4, 3, b.s);
    EXPECT_STREQ(b.s, "  1.2346e+03");
    sciNotation(-0.000123L, 12, 4, 3, b.s);
    EXPECT_STREQ(b.s, " -1.2300e-04");
    sciNotation(6.02214076e23L, 14, 6, 3, b.s);
    EXPECT_STREQ(b.s, "  6.022141e+23");
    sciNotation(1.5e-7L, 12, 3, 4, b.s);
    EXPECT_STREQ(b.s, "  1.500e-007");
    sciNotation(1234.56, 12, 4, 3, b.s);  // double form
    EXPECT_STREQ(b.s, "  1.2346e+03");
    // The exponent comes from the value, not from the rounded base.
    sciNotation(9.99999L, 12, 4, 3, b.s);
    EXPECT_STREQ(b.s, " 10.0000e+00");
}

TEST(TextSciNotation, PowersOfTenAndZeroEdges)
{
    Buf b;
    // Exact powers of ten are where floor(log10) is one off if the logarithm
    // lands a hair below the integer.
    sciNotation(1000.0L, 12, 4, 3, b.s);
    EXPECT_STREQ(b.s, "  1.0000e+03");
    sciNotation(1e-5, 12, 4, 3, b.s);
    EXPECT_STREQ(b.s, "  1.0000e-05");
    sciNotation(0.0L, 12, 4, 3, b.s);
    EXPECT_STREQ(b.s, "  0.0000e+00");
    sciNotation(9e-16L, 12, 4, 3, b.s);  // below 1e-15: printed as zero
    EXPECT_STREQ(b.s, "  0.0000e+00");
}

TEST(TextSciNotation, TextReadsBackWithinHalfAUnitOfTheLastDecimal)
{
    // Round trip: the printed base keeps nd decimals, so the text differs
    // from x by at most half a unit of the last decimal times 10^exponent
    // (plus a relative 1e-15 for the decimal conversions).
    const long double xs[] = {3.14159265358979L, -2.5e-3L, 7.77e12L, 1.234e-14L, -9.87654321e5L};
    for (const long double x : xs) {
        for (int nd : {2, 5, 9}) {
            Buf b;
            sciNotation(x, 20, nd, 4, b.s);
            EXPECT_EQ(std::strlen(b.s), 20u) << b.s;
            const long double back = std::strtold(b.s, nullptr);
            const long double unit =
                std::pow(10.0L, std::floor(std::log10(std::fabs(x))) - nd);
            EXPECT_LE(std::fabs(back - x), 0.5L * unit + 1e-15L * std::fabs(x)) << b.s;
        }
    }
}
