// The observation value types: null rule, field decoding, arithmetic and
// the listing formats.
#include "ObsSupport.h"

#include <limits>

// Values decoded from text are compared to the decimal they were written
// as; a long double parse is exact to ~1e-19 relative, far below 1e-12.
constexpr long double DecodeTol = 1e-12L;

template <class T>
static std::string Printed(const T& o, int type, int& printType)
{
    const int keep = printType;
    std::ostringstream s;
    printType = type;
    s << o;
    printType = keep;
    return s.str();
}

TEST(GnssObs, NullLimitsDecodingAndFlags)
{
    EXPECT_TRUE(gnssobs().IsNull() && gnssobs(0.00009L).IsNull() && gnssobs(-0.00009L).IsNull() && gnssobsshort(0.000009L).IsNull());
    EXPECT_FALSE(gnssobs(0.00011L).IsNull() || gnssobsshort(0.00009L).IsNull());
    // A blank field, and text that is no number (atof rule), are missing.
    const std::tuple<const char*, long double, int, int> fields[] = {
        {" 145124050.10606", 145124050.106L, 0, 6}, {"     -2620.70216", -2620.702L, 1, 6},
        {"                ", 0.0L, 0, 0}, {"  abcdefghijk 5 ", 0.0L, 5, 0}};
    for (const auto& [text, value, lli, ss] : fields) {
        gnssobs o(9.0L, 3, 3);
        o >> text;
        EXPECT_NEAR_LD(o.GetObs(), value, DecodeTol * (1.0L + std::fabs(value))) << text;
        EXPECT_EQ((std::pair<int, int>(o.GetLli(), o.GetSs())), std::pair(lli, ss)) << text;
    }
    gnssobsshort doppler;
    doppler >> "     -1957.227 5";
    EXPECT_NEAR_LD(doppler.GetObs(), -1957.227L, DecodeTol * 1957.227L);
    // Adding keeps the flags, and so does a copy; assigning clears them.
    gnssobs o(100.0L, 1, 7);
    o += 0.5L;
    const gnssobs copy(o);
    o = 3.0L;
    EXPECT_TRUE(std::fabs(copy.GetObs() - 100.5L) < DecodeTol && std::fabs(o.GetObs() - 3.0L) < DecodeTol);
    EXPECT_EQ((std::vector<int>{copy.GetLli(), copy.GetSs(), o.GetLli(), o.GetSs()}), (std::vector<int>{1, 7, 0, 0}));
    // Scaling carries the flags, sums and differences do not.
    const gnssobs a(10.0L, 1, 8), b(4.0L, 2, 9), null;
    const gnssobs s1 = 2.5L * a, s2 = a * 2.5L, d = a - b, p = a + b;
    for (auto [got, want] : {std::pair{s1.GetObs(), 25.0L}, {s2.GetObs(), 25.0L}, {d.GetObs(), 6.0L}, {p.GetObs(), 14.0L}})
        EXPECT_NEAR_LD(got, want, DecodeTol);
    EXPECT_EQ((std::vector<int>{s1.GetLli(), s1.GetSs(), s2.GetLli(), s2.GetSs(), d.GetLli() + d.GetSs() + p.GetLli() + p.GetSs()}),
              (std::vector<int>{1, 8, 1, 8, 0}));
    // A null operand makes the whole result null, whatever the other holds.
    EXPECT_TRUE((a - null).IsNull() && (null + b).IsNull() && (a + gnssobs(0.00005L)).IsNull());
}

// The value beside the flags keeps every bit of an extended number, the
// specials and the smallest and largest included, and writing it, whole or
// by a compound operator, leaves the flags where they are.
TEST(GnssObs, PackedValueKeepsEveryBitAndTheFlags)
{
    using L = std::numeric_limits<long double>;
    const long double values[] = {0.0L, -0.0L, 27616185.992L, -2620.70216L, L::denorm_min(), L::min(),
                                  L::max(), -L::infinity(), L::quiet_NaN(), 1.0L / 3.0L};
    for (const long double v : values) {
        gnssobs o(v, 7, 9), arr[3] = {gnssobs(1.0L, 1, 2), gnssobs(2.0L, 5, 6), gnssobs(3.0L, 3, 4)};
        EXPECT_TRUE(orvotest::SameBits(o.GetObs(), v) && o.GetLli() == 7 && o.GetSs() == 9) << v;
        arr[1].obs = v;
        arr[1].obs += 0.0L;
        arr[1].obs *= 1.0L;
        EXPECT_TRUE(orvotest::SameBits(arr[1].GetObs(), v + 0.0L) && arr[1].GetLli() == 5 && arr[1].GetSs() == 6) << v;
        EXPECT_TRUE(arr[0].GetObs() == 1.0L && arr[0].GetSs() == 2 && arr[2].GetObs() == 3.0L && arr[2].GetLli() == 3) << v;
    }
    gnssobs o(10.0L, 5, 6);
    o.obs -= 4.0L;
    o.obs /= 3.0L;
    EXPECT_TRUE(o.GetObs() == 2.0L && o.GetLli() == 5 && o.GetSs() == 6);
}

TEST(GnssObs, ListingFormatsLeaveTheStreamFormatAlone)
{
    const gnssobs o(1234.5678L, 1, 7), none;
    const gnssobsshort d(-12.25L), dnone;
    int &t = gnssobsns::PrintType, &ts = gnssobsshortns::PrintType;
    // 0.00009 is null by IsNull, yet above the print limit of 0.00001.
    EXPECT_EQ(Printed(o, 1, t) + Printed(o, 0, t) + Printed(none, 1, t) + Printed(none, 0, t)
                  + Printed(gnssobs(0.00009L), 1, t),
              "      1234.568 1 7      1234.56817         *.*** * *         0.000           0.000 0 0");
    EXPECT_EQ(Printed(o, 2, t) + Printed(none, 2, t), "      1234.568         *.***");
    EXPECT_EQ(Printed(d, 1, ts) + Printed(dnone, 1, ts) + Printed(d, 0, ts) + Printed(dnone, 0, ts),
              "   -12.250 0 0     *.*** * *       -12.250               0  ");
    std::ostringstream s;
    s.precision(9);
    s << gnssobs(1.0L) << ' ' << 0.5;
    EXPECT_EQ(s.precision(), 9);
    EXPECT_EQ(s.str().substr(s.str().size() - 4), " 0.5");
}
