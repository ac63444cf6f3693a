// Numbers read from fixed fields: the exact fast path against strtold, bit
// for bit, on the forms of the product files and on random fields.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "numerics/FieldText.h"

namespace {

// Same value and sign, bit for bit (the 10 bytes of the x87 format).
bool SameBits(long double a, long double b) { return std::memcmp(&a, &b, 10) == 0; }

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
