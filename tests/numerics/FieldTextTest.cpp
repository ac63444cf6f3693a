// Numbers read from fixed fields: the exact fast path against strtold, bit
// for bit, on the forms of the product files and on random fields.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "numerics/NearLD.h"
#include "numerics/FieldText.h"

namespace {

using orvotest::SameBits;

}  // namespace

TEST(FieldText, ToLongDoubleReadsAsStrtoldDoesBitForBit)
{
    std::vector<std::string> texts = {"0", "-0.0", "+7", "1.", ".5", "-.25e+01", "123456789012345678.9",
                                      "1234567890123456789", "12345678901234567890", "1e27", "1e-27", "1e-28",
                                      "9.999999999999E-01", "-1.234567890123E-04", "0.1234567890123D-04",
                                      "3.3333333333333333333", "2.5e400", "1E+003"};
    // Clock biases (E19.12), orbit coordinates (F14.6) and weights, random.
    unsigned long long lcg = 20200625;
    char t[64];
    for (int i = 0; i < 3000; ++i) {
        lcg = lcg * 6364136223846793005ULL + 1442695040888963407ULL;
        const unsigned long long m = lcg >> 20;
        const int e = static_cast<int>(lcg % 23) - 16;
        if (i % 3 == 0) std::snprintf(t, sizeof t, "%c%llu.%012llu%c%+03d", i % 2 ? '-' : ' ', m % 10, m % 1000000000000ULL, 'E', e);
        else if (i % 3 == 1) std::snprintf(t, sizeof t, "%lld.%06llu", static_cast<long long>(m % 30000000ULL) - 15000000, m % 1000000ULL);
        else std::snprintf(t, sizeof t, "%llu.%llue%d", m % 100000, m % 99999999999ULL, e);
        texts.emplace_back(t[0] == ' ' ? t + 1 : t);
    }
    for (const std::string& s : texts) {
        char* end = nullptr;
        const long double ref = std::strtold(s.c_str(), &end);
        const bool refOK = *end == '\0' && std::isfinite(ref);
        long double v = -99.0L;
        ASSERT_EQ(fieldtext::ToLongDouble(s, v), refOK) << s;
        if (refOK) {
            EXPECT_TRUE(SameBits(v, ref)) << s;
        }
    }
    for (const char* bad : {"", "1e", "nan", "inf", "1.2.3", "--1", "e5", ".", "1 "}) {
        long double v = 0.0L;
        EXPECT_FALSE(fieldtext::ToLongDouble(bad, v)) << bad;
    }
}

// The block scanner hands out the lines getline would, ends of line cut
// (a DOS return too), with each line's start in the text, across block
// boundaries, for a last line without its newline and for a line longer
// than a block.
TEST(FieldText, LineScannerSplitsAsGetlineDoesAndTellsWhereLinesStart)
{
    std::string many;
    for (int i = 0; i < 20000; ++i) many += "AS G" + std::to_string(i % 32) + std::string(static_cast<std::size_t>(i % 97), 'x') + (i % 5 ? "\n" : "\r\n");
    const std::vector<std::string> texts = {"", "\n", "one", "one\n", "a\r\nb\r\n\r\nc", "\n\nx\n\n",
                                            std::string(200000, 'y') + "\nz", many};
    for (const std::string& text : texts) {
        std::vector<std::string> expected;
        std::istringstream ref(text);
        for (std::string l; std::getline(ref, l);) expected.push_back(!l.empty() && l.back() == '\r' ? l.substr(0, l.size() - 1) : l);
        std::istringstream in(text);
        fieldtext::LineScanner scan(in);
        std::string_view line;
        std::size_t n = 0;
        while (scan.Next(line)) {
            ASSERT_LT(n, expected.size()) << text.size();
            EXPECT_EQ(line, expected[n]) << n;
            EXPECT_EQ(text.compare(scan.Offset(), line.size(), line), 0) << n;
            ++n;
        }
        EXPECT_EQ(n, expected.size()) << text.size();
    }
}

// Whole numbers and trimmed fields as the readers take them: a sign and
// digits and nothing else, within a long; a field cut to its line and to
// the buffer, blank and tab ends dropped.
TEST(FieldText, WholeNumbersAndTrimmedFieldsAtTheirEdges)
{
    const struct { const char* text; bool ok; long value; } numbers[] = {
        {"12", true, 12}, {"-7", true, -7}, {"+0", true, 0}, {"", false, 0}, {"-", false, 0},
        {"1 2", false, 0}, {"1.0", false, 0}, {"99999999999999999999", false, 0}};
    for (const auto& c : numbers) {
        long v = -1;
        EXPECT_EQ(fieldtext::ToLong(c.text, v), c.ok) << c.text;
        if (c.ok) {
            EXPECT_EQ(v, c.value) << c.text;
        }
    }
    const struct { const char* line; std::size_t pos, len, n; const char* out; } fields[] = {
        {"AS G05  2020", 3, 4, 8, "G05"}, {"AB   CD", 2, 3, 8, ""}, {"AB      x", 2, 3, 8, ""}, {"AB \t\tCD", 2, 3, 8, ""},
        {"\t x y \t", 0, 7, 8, "x y"}, {"short", 3, 10, 8, "rt"}, {"short", 9, 3, 8, ""},
        {"abcdefgh", 0, 8, 4, "abc"}};
    for (const auto& c : fields) {
        char out[16];
        std::memset(out, '#', sizeof out);
        fieldtext::CopyTrimmedField(c.line, c.pos, c.len, out, c.n);
        EXPECT_STREQ(out, c.out) << c.line << " " << c.pos;
    }
}
