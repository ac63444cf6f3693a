// GLONASS frequency channel file: the real channel file of the ESBC set,
// periods and their ends on files written here, and broken variants cut
// from the real file.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "orbits/GLNSat.h"

using orvotest::Data;
using orvotest::ReadFile;
using orvotest::TempDir;
using orvotest::WriteTemp;

namespace {

const std::string kChannels = Data("esbc-2020-177/esbc1770.20o.glnfc");
// The same channels as "Rnn k" per line, taken from another source (the
// RINEX 3 header) and parsed here independently of the reader.
const std::string kChannelList = Data("esbc-2020-177/esbc1770.20o.glofrq");

// Modified Julian Date of a Gregorian calendar date by the integer
// algorithm of Fliegel & Van Flandern (1968, Comm. ACM 11, 657): an
// oracle independent of the program's time classes.
unsigned long MJD(long y, long m, long d)
{
    const long a = (14 - m) / 12;
    const long yy = y + 4800 - a;
    const long mm = m + 12 * a - 3;
    const long jdn = d + (153 * mm + 2) / 5 + 365 * yy + yy / 4 - yy / 100 + yy / 400 - 32045;
    return static_cast<unsigned long>(jdn - 2400001);
}

struct Epoch {
    int y, m, d, hh, mm;
    double s;
};

// One data line in the documented columns: letter and slot at 0, start at
// 10 (second at 27, 4 wide), end at 31 (second at 48, 3 wide) or blanks
// for an open end, channel from 51.
std::string Line(const std::string& sat, const Epoch& from, const Epoch* to, int channel)
{
    char buf[128];
    std::string s = sat;
    s.resize(10, ' ');
    std::snprintf(buf, sizeof buf, "%4d %02d %02d %02d %02d %4.1f", from.y, from.m, from.d,
                  from.hh, from.mm, from.s);
    s += buf;
    if (to) {
        std::snprintf(buf, sizeof buf, "%4d %02d %02d %02d %02d %3.1f", to->y, to->m, to->d,
                      to->hh, to->mm, to->s);
        s += buf;
    } else {
        s += std::string(20, ' ');
    }
    return s + std::to_string(channel);
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> out;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) out.push_back(line);
    return out;
}

std::string Join(const std::vector<std::string>& lines)
{
    std::string s;
    for (const std::string& l : lines) s += l + "\n";
    return s;
}

GLNSat Read(const std::string& path)
{
    GLNSat g;
    g.SetFile(path.c_str());
    g.ReadFile();
    return g;
}

// The framed error of the channel reader for one line of a file.
std::string LineError(int lineNo, const std::string& text)
{
    return "\\*\\*\\*\\* Orvo: Error -> GLONASS FREQUENCY CHANNEL FILE .*: line "
           + std::to_string(lineNo) + ": " + text;
}

class RealChannelFile : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        std::ifstream in(kChannelList);
        std::string slotText;
        int k = 0;
        while (in >> slotText >> k) list_[100 + std::atoi(slotText.c_str() + 1)] = k;
    }
    static std::map<short, int> list_;
};
std::map<short, int> RealChannelFile::list_;

TEST_F(RealChannelFile, EverySlotOfTheListIsReadWithItsChannel)
{
    ASSERT_EQ(list_.size(), 23u);  // R01-R24 without R22
    GLNSat g = Read(kChannels);
    ASSERT_EQ(g.GetNSat(), 23);
    const mjd open(GLNSatns::LastEphDay, GLNSatns::LastEphSecond);
    const mjd day(MJD(2020, 6, 25), 0.0L);
    std::map<short, int> read;
    for (long i = 0; i < g.GetNSat(); ++i) {
        read[g.GetSat(i)] = static_cast<int>(g.GetFreqChannel(i));
        EXPECT_TRUE(g.GetEph(i, GLNSat::FROM) == day) << i;
        EXPECT_TRUE(g.GetEph(i, GLNSat::TO) == open) << i;
    }
    EXPECT_EQ(read, list_);
}

TEST_F(RealChannelFile, LookUpOverTheObservationDay)
{
    GLNSat g = Read(kChannels);
    const unsigned long day = MJD(2020, 6, 25);
    for (const auto& [prn, k] : list_) {
        for (long double s : {0.0L, 43200.0L, 86370.0L}) {  // first, middle, last epoch
            mjd t(day, s);
            EXPECT_EQ(g.GetFreqNum(prn, t), static_cast<long double>(k)) << prn;
            EXPECT_TRUE(g.GetIsGLNSat()) << prn;
        }
        // The periods start at midnight: one second earlier nobody is listed.
        mjd before(day - 1, 86399.0L);
        EXPECT_EQ(g.GetFreqNum(prn, before), 0.0L);
        EXPECT_FALSE(g.GetIsGLNSat());
    }
    mjd t(day, 0.0L);
    EXPECT_EQ(g.GetFreqNum(122, t), 0.0L);  // R22 is not in the file
    EXPECT_FALSE(g.GetIsGLNSat());
    EXPECT_EQ(g.GetFreqNum(1, t), 0.0L);  // G01 shares the slot digits, not the number
    EXPECT_FALSE(g.GetIsGLNSat());
}

TEST(GLNSat, TestLineBuilderMatchesTheRealLayout)
{
    // Pins the helper that writes the period files below to the columns of
    // the real file, so those files test the reader, not the helper.
    const std::vector<std::string> real = Lines(ReadFile(kChannels));
    ASSERT_GE(real.size(), 3u);
    EXPECT_EQ(Line("R01", {2020, 6, 25, 0, 0, 0.0}, nullptr, 1), real[2]);
}

class ChannelPeriods : public ::testing::Test {
protected:
    void SetUp() override
    {
        const Epoch y20{2020, 1, 1, 0, 0, 0.0}, noon{2020, 6, 25, 12, 0, 0.0};
        const Epoch r7from{2020, 6, 25, 3, 0, 0.0}, r7to{2020, 6, 25, 4, 30, 5.5};
        const std::string text =
            Join({"# two periods of R05 meeting at noon, then a wider late line",
                  Line("R05", y20, &noon, 3), Line("R05", noon, nullptr, -2),
                  Line("R05", {2000, 1, 1, 0, 0, 0.0}, nullptr, 6),
                  Line("R07", r7from, &r7to, -7)});
        g_ = Read(WriteTemp("periods.glnfc", text));
    }
    long double At(short prn, unsigned long day, long double sec)
    {
        mjd t(day, sec);
        return g_.GetFreqNum(prn, t);
    }
    GLNSat g_;
    const unsigned long jun25_ = MJD(2020, 6, 25);
    const unsigned long jan1_ = MJD(2020, 1, 1);
};

TEST_F(ChannelPeriods, BothEndsBelongToThePeriodAndTheFirstLineWins)
{
    ASSERT_EQ(g_.GetNSat(), 4);
    EXPECT_EQ(At(105, jan1_, 0.0L), 3.0L);         // start included
    EXPECT_EQ(At(105, jun25_, 43170.0L), 3.0L);    // 30 s before noon
    EXPECT_EQ(At(105, jun25_, 43200.0L), 3.0L);    // end included, first line wins
    EXPECT_EQ(At(105, jun25_, 43230.0L), -2.0L);   // second period
    EXPECT_TRUE(g_.GetIsGLNSat());
    // Before 2020 only the late wide line holds: order, not width, decides.
    EXPECT_EQ(At(105, jan1_ - 1, 86399.0L), 6.0L);
}

TEST_F(ChannelPeriods, OpenEndHoldsToTheLastSecondOfDay88068)
{
    EXPECT_EQ(At(105, GLNSatns::LastEphDay, GLNSatns::LastEphSecond), -2.0L);
    EXPECT_TRUE(g_.GetIsGLNSat());
    EXPECT_EQ(At(105, GLNSatns::LastEphDay + 1, 0.0L), 0.0L);
    EXPECT_FALSE(g_.GetIsGLNSat());
}

TEST_F(ChannelPeriods, ClosedEndWithFractionalSecondAndMissesResetTheFlag)
{
    // R07: 03:00:00 to 04:30:05.5.
    EXPECT_EQ(At(107, jun25_, 3.0L * 3600.0L), -7.0L);
    EXPECT_EQ(At(107, jun25_, 4.5L * 3600.0L + 5.5L), -7.0L);
    EXPECT_TRUE(g_.GetIsGLNSat());
    EXPECT_EQ(At(107, jun25_, 4.5L * 3600.0L + 5.6L), 0.0L);
    EXPECT_FALSE(g_.GetIsGLNSat());
    EXPECT_EQ(At(107, jun25_, 3.0L * 3600.0L - 0.1L), 0.0L);
    EXPECT_FALSE(g_.GetIsGLNSat());
    EXPECT_EQ(At(106, jun25_, 43200.0L), 0.0L);  // slot without lines
    EXPECT_FALSE(g_.GetIsGLNSat());
}

TEST(GLNSat, CommentsBlankLedAndEmptyLinesArePassedOverAlsoWithCRLF)
{
    const Epoch d{2020, 6, 25, 0, 0, 0.0};
    const std::string text = "# comment\r\n\r\n" + Line("R03", d, nullptr, 5) + "\r\n"
                             + " " + Line("R04", d, nullptr, 6) + "\r\n\n#\n"
                             + Line("R24", d, nullptr, -1) + "\r\n";
    GLNSat g = Read(WriteTemp("comments.glnfc", text));
    ASSERT_EQ(g.GetNSat(), 2);
    EXPECT_EQ(g.GetSat(0), 103);
    EXPECT_EQ(g.GetFreqChannel(0), 5.0L);
    EXPECT_EQ(g.GetSat(1), 124);
    EXPECT_EQ(g.GetFreqChannel(1), -1.0L);
}

TEST(GLNSat, AnyLetterAndChannelsAtBothEndsOfThePlanAreTaken)
{
    const Epoch d{2020, 6, 25, 0, 0, 0.0};
    GLNSat g = Read(WriteTemp("edges.glnfc", Join({Line("X01", d, nullptr, -7),
                                                    Line("r99", d, nullptr, 6)})));
    ASSERT_EQ(g.GetNSat(), 2);
    EXPECT_EQ(g.GetSat(0), 101);
    EXPECT_EQ(g.GetFreqChannel(0), -7.0L);
    EXPECT_EQ(g.GetSat(1), 199);
    EXPECT_EQ(g.GetFreqChannel(1), 6.0L);
}

// --- error paths -----------------------------------------------------------

// The real file with its first data line (file line 3) replaced.
std::string WithLine3(const std::string& name, const std::string& line3)
{
    std::vector<std::string> lines = Lines(ReadFile(kChannels));
    lines.at(2) = line3;
    return WriteTemp(name, Join(lines));
}

const std::string kLine3 = "R01       2020 06 25 00 00  0.0                    1";

TEST(GLNSatDeath, MissingAndUnopenableFilesStop)
{
    EXPECT_EXIT(
        {
            GLNSat g;
            g.SetFile((TempDir() + "/no-such.glnfc").c_str());
        },
        ::testing::ExitedWithCode(1),
        "\\*\\*\\*\\* Orvo: Error -> GLONASS FREQUENCY CHANNEL FILE DOES NOT EXIST! \\*\\*\\*\\*");
    // A folder exists but yields no lines.
    EXPECT_EXIT(
        {
            GLNSat g;
            g.SetFile(TempDir().c_str());
            g.ReadFile();
        },
        ::testing::ExitedWithCode(1),
        "\\*\\*\\*\\* Orvo: Error -> GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED! "
        "\\*\\*\\*\\*");
}

TEST(GLNSatDeath, TruncatedFileStopsAtItsCutLine)
{
    ASSERT_EQ(Lines(ReadFile(kChannels)).size(), 25u);
    const std::string text = ReadFile(kChannels);
    // Cut inside the last line, before its channel.
    const std::string path = WriteTemp("cut.glnfc", text.substr(0, text.size() - 25));
    EXPECT_EXIT(Read(path), ::testing::ExitedWithCode(1),
                LineError(25, "LINE ENDS BEFORE THE CHANNEL"));
}

TEST(GLNSatDeath, ChannelOutsideThePlanStops)
{
    const std::string seven = WithLine3("k7.glnfc", kLine3.substr(0, 51) + "7");
    EXPECT_EXIT(Read(seven), ::testing::ExitedWithCode(1),
                LineError(3, "FREQUENCY CHANNEL 7 NOT IN -7\\.\\.\\+6!"));
    const std::string minus8 = WithLine3("km8.glnfc", kLine3.substr(0, 51) + "-8");
    EXPECT_EXIT(Read(minus8), ::testing::ExitedWithCode(1),
                LineError(3, "FREQUENCY CHANNEL -8 NOT IN -7\\.\\.\\+6!"));
    const std::string half = WithLine3("khalf.glnfc", kLine3.substr(0, 51) + "1.5");
    EXPECT_EXIT(Read(half), ::testing::ExitedWithCode(1),
                LineError(3, "FREQUENCY CHANNEL IS NO WHOLE NUMBER"));
}

TEST(GLNSatDeath, FieldsOutOfTheirColumnsStop)
{
    // A two-character channel one column to the left: its sign stands in
    // the open end's columns. (A one-character one makes the line short.)
    const std::string wide = "R01       2020 06 25 00 00  0.0                    -4";
    const std::string left = WithLine3("left.glnfc", wide.substr(0, 50) + "-4");
    EXPECT_EXIT(Read(left), ::testing::ExitedWithCode(1),
                LineError(3, "TEXT IN THE COLUMNS OF AN OPEN PERIOD END"));
    const std::string leftShort = WithLine3("leftshort.glnfc", kLine3.substr(0, 50) + "1");
    EXPECT_EXIT(Read(leftShort), ::testing::ExitedWithCode(1),
                LineError(3, "LINE ENDS BEFORE THE CHANNEL"));
    // Everything after the letter one column to the left: the year's first
    // digit falls into the slot field.
    const std::string shifted = WithLine3("shift.glnfc", "R" + wide.substr(2) + " ");
    EXPECT_EXIT(Read(shifted), ::testing::ExitedWithCode(1),
                LineError(3, "SLOT NUMBER MISSING OR NOT IN 1\\.\\.99!"));
    // Only the date one column to the right: the year reads "202".
    const std::string right =
        WithLine3("right.glnfc", kLine3.substr(0, 10) + " " + kLine3.substr(10, 41));
    EXPECT_EXIT(Read(right), ::testing::ExitedWithCode(1), LineError(3, "EPOCH FROM NOT VALID!"));
    // A digit where the system letter belongs.
    const std::string label = WithLine3("label.glnfc", "1" + kLine3.substr(1));
    EXPECT_EXIT(Read(label), ::testing::ExitedWithCode(1),
                LineError(3, "NO SYSTEM LETTER IN COLUMN 1!"));
    // No slot number.
    const std::string slot = WithLine3("slot.glnfc", "R  " + kLine3.substr(3));
    EXPECT_EXIT(Read(slot), ::testing::ExitedWithCode(1),
                LineError(3, "SLOT NUMBER MISSING OR NOT IN 1\\.\\.99!"));
}

TEST(GLNSatDeath, InvalidEpochsAndReversedPeriodsStop)
{
    std::string month = kLine3;
    month.replace(15, 2, "13");
    EXPECT_EXIT(Read(WithLine3("month.glnfc", month)), ::testing::ExitedWithCode(1),
                LineError(3, "EPOCH FROM NOT VALID!"));
    std::string feb30 = kLine3;
    feb30.replace(15, 5, "02 30");
    EXPECT_EXIT(Read(WithLine3("feb30.glnfc", feb30)), ::testing::ExitedWithCode(1),
                LineError(3, "EPOCH FROM NOT VALID!"));
    std::string word = kLine3;
    word.replace(21, 2, "xx");
    EXPECT_EXIT(Read(WithLine3("word.glnfc", word)), ::testing::ExitedWithCode(1),
                LineError(3, "HOUR FROM IS NO NUMBER \\(COLUMN 22\\)!"));
    const Epoch from{2020, 6, 25, 12, 0, 0.0}, to{2020, 6, 25, 11, 59, 0.0};
    EXPECT_EXIT(Read(WithLine3("reversed.glnfc", Line("R01", from, &to, 1))),
                ::testing::ExitedWithCode(1), LineError(3, "PERIOD ENDS BEFORE IT STARTS!"));
}

TEST(GLNSatDeath, FileWithoutChannelLinesOrWithAnOverlongLineStops)
{
    const std::string onlyComments = WriteTemp("comments-only.glnfc", "# nothing\n\n");
    EXPECT_EXIT(Read(onlyComments), ::testing::ExitedWithCode(1),
                LineError(2, "NO FREQUENCY CHANNEL LINES!"));
    const std::string longLine = WithLine3("long.glnfc", kLine3 + std::string(460, ' '));
    EXPECT_EXIT(Read(longLine), ::testing::ExitedWithCode(1),
                LineError(3, "LINE LONGER THAN 511 CHARACTERS!"));
}

}  // namespace
