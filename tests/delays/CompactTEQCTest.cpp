// teqc COMPACT2 multipath series written here from a table of records and
// read back; broken variants of it stop the run.
#include <cstdio>

#include "DelaysSupport.h"
#include "delays/CompactTEQC.h"

using namespace deltest;
using orvotest::WriteTemp;

namespace {

// Values are written with 3 decimals from long double literals of 3
// decimals: the reader's parse and the literal are the same nearest long
// double. 1e-15 m is round-off room; a neighbouring field is >= 1 mm off.
constexpr long double Value_m = 1e-15L;
// Epochs are a start of whole seconds plus sums of 30 s steps, exact in
// long double; 1 ns is room, a missed step is 30 s.
constexpr long double Epoch_s = 1e-9L;

// One record: the count as written (0 none, < 0 the previous list), its
// slots (3 characters behind the slot's blank), and per value the number
// and whether teqc marked a slip.
struct Rec { int n; std::vector<std::string> slots; std::vector<std::pair<long double, bool>> values; };

// Header with T_SAMP behind START_TIME_MJD, as teqc writes it; a slip is a
// value that stops before column 8 of its field; blanks at line ends cut.
std::string Compact(const std::vector<Rec>& recs, const std::string& first = "COMPACT2")
{
    std::string s = first + "\nGPS_START_TIME 2017  9  4  6  0  0.0000000\nSTART_TIME_MJD 58000.250000\nT_SAMP    30.000\n";
    for (const Rec& r : recs) {
        s += std::to_string(r.n);
        for (const std::string& slot : r.slots) s += " " + slot;
        std::string line;
        for (const auto& [v, slip] : r.values) { char f[16]; std::snprintf(f, sizeof f, slip ? "%8.3Lf  " : "%10.3Lf", v); line += f; }
        s += r.n == 0 ? "\n" : "\n" + line.erase(line.find_last_not_of(' ') + 1) + "\n";
    }
    return s;
}

// Shared satellite number of a slot, by the letter rule of the format.
unsigned short Number(const std::string& slot)
{
    const int base = slot[0] == 'R' ? 100 : slot[0] == 'E' ? 200 : 0;
    return static_cast<unsigned short>(base + std::atoi(slot.substr(1).c_str()));
}

const std::vector<Rec> kRecs = {
    {3, {"G05", "  7", "R12"}, {{0.512L, false}, {-1.234L, true}, {0.003L, false}}},
    {0, {"ignored text"}, {}},
    {-3, {}, {{0.498L, false}, {-1.201L, false}, {12.345L, true}}},  // the slip stands at the cut line end
    {2, {"E01", "G 5"}, {{-123.456L, true}, {0.0L, false}}},
    {0, {}, {}},
    {1, {"R12"}, {{7.25L, false}}},
};

}  // namespace

TEST(CompactTEQC, RecordsRoundTripWithTheirEpochsSatellitesAndSlips)
{
    CompactTEQC c; Read(c, WriteTemp("mp1.compact", Compact(kRecs)));
    EXPECT_EQ(c.GetVersion(), 2);
    EXPECT_NEAR(c.GetInterval(), 30.0L, Epoch_s);
    std::vector<std::string> last;
    long e = 0, k = 0;
    for (std::size_t r = 0; r < kRecs.size(); ++r) {
        if (kRecs[r].n == 0) continue;
        if (kRecs[r].n > 0) last = kRecs[r].slots;
        ASSERT_LT(e, c.NEph());
        // Records are 30 s apart from 06:00:00, the empty ones included.
        EXPECT_NEAR(c.GetEph(e) - mjd(58000, 21600.0L), 30.0L * r, Epoch_s) << r;
        EXPECT_EQ(c.GetNSat(e), static_cast<long>(last.size())) << r;
        for (std::size_t j = 0; j < last.size(); ++j, ++k) {
            EXPECT_EQ(c.GetSat(k), Number(last[j])) << r << " " << j;
            EXPECT_NEAR(c.GetObs(k), kRecs[r].values[j].first, Value_m) << r << " " << j;
            EXPECT_EQ(c.GetSlip(k), kRecs[r].values[j].second) << r << " " << j;
        }
        ++e;
    }
    EXPECT_EQ(c.NEph(), e); EXPECT_EQ(c.NObs(), k);
    EXPECT_EQ(c.GetNEpoch(), e); EXPECT_EQ(c.GetNObs(), k);
    std::vector<unsigned short> list;
    for (long i = 0; i < c.GetNSatList(); ++i) list.push_back(c.GetSatList(i));
    EXPECT_EQ(list, (std::vector<unsigned short>{5, 7, 112, 201}));
}

TEST(CompactTEQCDeath, WrongVersionMissingFileAndBrokenRecordsStop)
{
    EXPECT_EXIT(CompactTEQC().SetFile((orvotest::TempDir() + "/none.compact").c_str()), ::testing::ExitedWithCode(1),
                Framed("TEQC COMPACT FILE DOES NOT EXISTS! \\*\\*\\*\\*"));
    const std::string good = Compact(kRecs);
    auto without = [&](const std::string& label) { const std::size_t p = good.find(label); return good.substr(0, p) + good.substr(good.find('\n', p) + 1); };
    auto with = [&](const std::string& records) { return good.substr(0, good.find("3 G05")) + records; };
    struct Case { std::string name, text, error; };
    const Case cases[] = {
        {"v1.compact", Compact(kRecs, "COMPACT"), "TEQC COMPACT FILE IS NOT WRITTEN IN VERSION COMPACT2! \\*\\*\\*\\*"},
        {"nosamp.compact", without("T_SAMP"), "line 1[0-9]: NO T_SAMP OR NO START_TIME_MJD LINE!"},
        {"zero.compact", with("") .replace(good.find("30.000"), 6, " 0.000"), "line 4: SAMPLING INTERVAL \\(COLUMN 7\\) NOT IN \\(0, 86400\\] s!"},
        {"mjd.compact", with("").replace(good.find("58000"), 5, "2e+05"), "line 3: START TIME \\(MJD FROM COLUMN 15\\) NOT VALID!"},
        {"cut.compact", with("1 G01\n"), "line 5: FILE ENDS BEFORE THE VALUES OF THE RECORD!"},
        {"huge.compact", with("2000000000 G01\n     0.100\n"), "line 5: SATELLITE LIST SHORTER THAN ITS COUNT 2000000000!"},
        {"neg.compact", with("-1\n     0.100\n"), "line 5: NEGATIVE SATELLITE COUNT BEFORE ANY SATELLITE LIST!"},
        {"nocount.compact", with("G01\n"), "line 5: RECORD DOES NOT START WITH A SATELLITE COUNT!"},
        {"slot.compact", with("2 G01 C02\n     0.100     0.200\n"), "line 5: BROKEN SATELLITE SLOT AT COLUMN 6!"},
        {"value.compact", with("2 G01 G02\n     0.100      n/a\n"), "line 6: VALUE AT COLUMN 11 IS NO NUMBER!"},
        {"long.compact", with("1 G01" + std::string(260, ' ') + "\n     0.100\n"), "line 5: LINE LONGER THAN 255 CHARACTERS!"},
    };
    for (const Case& b : cases)
        EXPECT_EXIT({ CompactTEQC c; Read(c, WriteTemp(b.name, b.text)); }, ::testing::ExitedWithCode(1), Framed("(TEQC COMPACT FILE .*: )?" + b.error)) << b.name;
}
