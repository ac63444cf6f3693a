// GLONASS frequency channel file: the real channel file of the ESBC set,
// periods and their ends on files written here, and broken variants cut
// from the real file.
#include <fstream>

#include "OrbitsSupport.h"
#include "orbits/GLNSat.h"

using namespace orbtest;

namespace {

// Modified Julian Date of a Gregorian calendar date by the integer
// algorithm of Fliegel & Van Flandern (1968, Comm. ACM 11, 657): an
// oracle independent of the program's time classes.
unsigned long MJD(long y, long m, long d)
{
    const long a = (14 - m) / 12, yy = y + 4800 - a, mm = m + 12 * a - 3;
    return static_cast<unsigned long>(d + (153 * mm + 2) / 5 + 365 * yy + yy / 4 - yy / 100 + yy / 400 - 2432046);
}

struct Epoch { int y, m, d, hh, mm; double s; };
const Epoch kDay{2020, 6, 25, 0, 0, 0.0};

// One data line in the documented columns: letter and slot at 0, start at
// 10 (second at 27, 4 wide), end at 31 (second at 48, 3 wide) or blanks
// for an open end, channel from 51.
std::string Line(const std::string& sat, const Epoch& f, const Epoch* t, int channel)
{
    char a[64], b[64] = "                    ";
    std::snprintf(a, sizeof a, "%-10s%4d %02d %02d %02d %02d %4.1f", sat.c_str(), f.y, f.m, f.d, f.hh, f.mm, f.s);
    if (t) std::snprintf(b, sizeof b, "%4d %02d %02d %02d %02d %3.1f", t->y, t->m, t->d, t->hh, t->mm, t->s);
    return a + std::string(b) + std::to_string(channel);
}

constexpr long double None = 99.0L;  // no period holds: channel 0 and the flag down
struct At { short prn; unsigned long day; long double sec, channel; };

// Every look-up gives its channel, and the flag tells whether one was found.
void ExpectLookUps(GLNSat& g, const std::vector<At>& cases)
{
    for (At a : cases) {
        mjd t(a.day, a.sec); EXPECT_TRUE(g.GetFreqNum(a.prn, t) == (a.channel == None ? 0.0L : a.channel) && g.GetIsGLNSat() == (a.channel != None)) << a.prn << " " << a.sec;
    }
}

}  // namespace

TEST(GLNSat, RealFileHoldsTheSlotsAndChannelsOfTheHeaderList)
{
    std::map<short, int> list, read; std::ifstream in(kChannelList); std::string slot;
    for (int k = 0; in >> slot >> k;) list[static_cast<short>(100 + std::atoi(slot.c_str() + 1))] = k;
    ASSERT_EQ(list.size(), 23u);  // R01-R24 without R22
    auto g = Load<GLNSat>(kChannels); const unsigned long day = MJD(2020, 6, 25);
    for (long i = 0; i < g->GetNSat(); ++i) {
        read[g->GetSat(i)] = static_cast<int>(g->GetFreqChannel(i));
        EXPECT_TRUE(g->GetEph(i, GLNSat::FROM) == mjd(day, 0.0L)
                    && g->GetEph(i, GLNSat::TO) == mjd(GLNSatns::LastEphDay, GLNSatns::LastEphSecond)) << i;
    }
    EXPECT_EQ(read, list);
    // First, middle and last epoch of the day; the periods start at
    // midnight, so one second earlier nobody is listed. R22 is not in the
    // file; G01 shares the slot digits, not the number.
    std::vector<At> cases = {{122, day, 0.0L, None}, {1, day, 0.0L, None}};
    for (const auto& [prn, k] : list)
        for (long double s : {-1.0L, 0.0L, 43200.0L, 86370.0L}) cases.push_back({prn, s < 0.0L ? day - 1 : day, s < 0.0L ? 86399.0L : s, s < 0.0L ? None : k});
    ExpectLookUps(*g, cases);
    // The line builder below writes the real file's columns, so the files
    // it makes test the reader, not the builder.
    EXPECT_EQ(Line("R01", kDay, nullptr, 1), FileLines(kChannels).at(2));
}

TEST(GLNSat, PeriodEndsBelongToThePeriodAndTheFirstLineWins)
{
    const Epoch y20{2020, 1, 1, 0, 0, 0.0}, noon{2020, 6, 25, 12, 0, 0.0}, r7from{2020, 6, 25, 3, 0, 0.0},
        r7to{2020, 6, 25, 4, 30, 5.5};
    auto g = Load<GLNSat>(WriteTemp("periods.glnfc",
        Join({"# two periods of R05 meeting at noon, then an earlier one meeting the first",
              Line("R05", y20, &noon, 3), Line("R05", noon, nullptr, -2),
              Line("R05", {2000, 1, 1, 0, 0, 0.0}, &y20, 6), Line("R07", r7from, &r7to, -7)})));
    const unsigned long jun25 = MJD(2020, 6, 25), jan1 = MJD(2020, 1, 1);
    ExpectLookUps(*g, {
        {105, jan1, 0.0L, 3.0L},          // start included
        {105, jun25, 43170.0L, 3.0L},     // 30 s before noon
        {105, jun25, 43200.0L, 3.0L},     // end included, first line wins
        {105, jun25, 43230.0L, -2.0L},    // second period
        {105, jan1 - 1, 86399.0L, 6.0L},  // only the earlier period, listed last
        {105, GLNSatns::LastEphDay, GLNSatns::LastEphSecond, -2.0L},  // open end
        {105, GLNSatns::LastEphDay + 1, 0.0L, None},
        {107, jun25, 3.0L * 3600.0L, -7.0L},  // closed end at 04:30:05.5
        {107, jun25, 4.5L * 3600.0L + 5.5L, -7.0L},
        {107, jun25, 4.5L * 3600.0L + 5.6L, None},
        {107, jun25, 3.0L * 3600.0L - 0.1L, None},
        {106, jun25, 43200.0L, None},  // slot without lines
    });
    // Comment, blank-led and empty lines carry no channel, also with CRLF
    // ends; any letter and both ends of the channel plan are taken.
    const std::string text = "# comment\r\n\r\n" + Line("R03", kDay, nullptr, 5) + "\r\n" + " " + Line("R04", kDay, nullptr, 6)
                             + "\r\n\n#\n" + Line("X01", kDay, nullptr, -7) + "\r\n" + Line("r99", kDay, nullptr, 6) + "\n";
    g = Load<GLNSat>(WriteTemp("comments.glnfc", text));
    std::string read = std::to_string(g->GetNSat()) + ":"; for (long i = 0; i < g->GetNSat(); ++i) read += std::to_string(g->GetSat(i)) + " " + std::to_string(g->GetFreqChannel(i)) + ",";
    EXPECT_EQ(read, "3:103 5.000000,101 -7.000000,199 6.000000,");
}

TEST(GLNSatDeath, MissingBrokenAndMisplacedFieldsStop)
{
    EXPECT_EXIT(GLNSat().SetFile((orvotest::TempDir() + "/no-such.glnfc").c_str()), ::testing::ExitedWithCode(1),
                Framed("GLONASS FREQUENCY CHANNEL FILE DOES NOT EXIST! \\*\\*\\*\\*"));
    // A folder exists but yields no lines.
    EXPECT_EXIT(Load<GLNSat>(orvotest::TempDir()), ::testing::ExitedWithCode(1),
                Framed("GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED! \\*\\*\\*\\*"));
    const std::vector<std::string> real = FileLines(kChannels); ASSERT_EQ(real.size(), 25u);
    const std::string all = ReadFile(kChannels), l3 = real[2];
    // The real file with its first data line (file line 3) replaced.
    auto with3 = [&](const std::string& line) { auto v = real; v[2] = line; return Join(v); };
    auto err = [](int n, const std::string& t) { return Framed("GLONASS FREQUENCY CHANNEL FILE .*: line " + std::to_string(n) + ": " + t); };
    // A two-character channel one column to the left: its sign stands in
    // the open end's columns.
    const std::string wide = l3.substr(0, 51) + "-4"; const Epoch noon{2020, 6, 25, 12, 0, 0.0}, before{2020, 6, 25, 11, 59, 0.0};
    ExpectEachStops<GLNSat>({
        {"cut.glnfc", all.substr(0, all.size() - 25), err(25, "LINE ENDS BEFORE THE CHANNEL")},
        {"k7.glnfc", with3(l3.substr(0, 51) + "7"), err(3, "FREQUENCY CHANNEL 7 NOT IN -7\\.\\.\\+6!")},
        {"khalf.glnfc", with3(l3.substr(0, 51) + "1.5"), err(3, "FREQUENCY CHANNEL IS NO WHOLE NUMBER")},
        {"left.glnfc", with3(l3.substr(0, 50) + "-4"), err(3, "TEXT IN THE COLUMNS OF AN OPEN PERIOD END")},
        // Everything after the letter one column left: the year's first
        // digit falls into the slot field.
        {"shift.glnfc", with3("R" + wide.substr(2) + " "), err(3, "SLOT NUMBER MISSING OR NOT IN 1\\.\\.99!")},
        {"label.glnfc", with3("1" + l3.substr(1)), err(3, "NO SYSTEM LETTER IN COLUMN 1!")},
        {"feb30.glnfc", with3(l3.substr(0, 15) + "02 30" + l3.substr(20)), err(3, "EPOCH FROM NOT VALID!")},
        {"word.glnfc", with3(l3.substr(0, 21) + "xx" + l3.substr(23)), err(3, "HOUR FROM IS NO NUMBER \\(COLUMN 22\\)!")},
        {"reversed.glnfc", with3(Line("R01", noon, &before, 1)), err(3, "PERIOD ENDS BEFORE IT STARTS!")},
        {"comments-only.glnfc", "# nothing\n\n", err(2, "NO FREQUENCY CHANNEL LINES!")},
        {"long.glnfc", with3(l3 + std::string(460, ' ')), err(3, "LINE LONGER THAN 511 CHARACTERS!")},
    });
}

TEST(GLNSat, OverlapsOnOneChannelAreAcceptedAndOnTwoChannelsStop)
{
    // A repeated line, a wide period around a narrow one of the same
    // channel, other slots overlapping, and a change of channel at a shared
    // instant are all one channel at any time.
    const Epoch jun24{2020, 6, 24, 0, 0, 0.0}, noon{2020, 6, 25, 12, 0, 0.0}, jun26{2020, 6, 26, 0, 0, 0.0},
        before{2020, 6, 25, 11, 59, 0.0};
    auto g = Load<GLNSat>(WriteTemp("agree.glnfc", Join({Line("R01", kDay, nullptr, 1), Line("R01", kDay, nullptr, 1),
        Line("R01", jun24, &jun26, 1), Line("R02", kDay, &noon, -4), Line("R03", kDay, &noon, 5), Line("R02", noon, nullptr, 3)})));
    const unsigned long jun25 = MJD(2020, 6, 25);
    ExpectLookUps(*g, {{101, jun25, 60.0L, 1.0L}, {102, jun25, 43200.0L, -4.0L}, {102, jun25, 43201.0L, 3.0L}, {103, jun25, 0.0L, 5.0L}});
    // Two channels over a shared stretch stop, the lines named in file
    // order: apart in the file; an overlap with a wide line that the
    // line just before only touches; the later period listed first.
    auto err = [](int a, int b) { return Framed("GLONASS FREQUENCY CHANNEL FILE .*: lines " + std::to_string(a) + " and "
                                                + std::to_string(b) + ": SLOT [0-9]+ ON TWO CHANNELS IN OVERLAPPING PERIODS!"); };
    ExpectEachStops<GLNSat>({
        {"apart.glnfc", Join({Line("R02", kDay, &noon, -4), Line("R01", kDay, nullptr, 1), Line("R02", before, nullptr, 3)}), err(1, 3)},
        {"wide.glnfc", Join({Line("R01", jun24, &jun26, 1), Line("R01", kDay, &noon, 1), Line("R01", noon, nullptr, 2)}), err(1, 3)},
        {"order.glnfc", Join({Line("R05", noon, nullptr, 2), Line("R05", kDay, &jun26, 1)}), err(1, 2)},
    });
}
