// The satellite problem list and the stage that clears what it names.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "ConditioningSupport.h"
#include "observations/ExcludeProblemSat.h"
#include "observations/SatCRX.h"

using namespace condtest;

namespace {

const std::string kHeader =
    "SATELLITE PROBLEMS\n"
    "------------------\n"
    " SAT  PROBLEM  ACTION      FROM                 TO\n"
    "\n"
    "     (1 phase, 2 code, 3 both)\n"
    "-----------------------------------------------------------------------\n";

struct Stamp {
    int y, mo, d, h, mi, s;
};

// Writes text into line from column col, widening the line with blanks.
void Put(std::string& line, std::size_t col, const std::string& text)
{
    if (line.size() < col + text.size()) line.resize(col + text.size(), ' ');
    line.replace(col, text.size(), text);
}

std::string Two(int v)
{
    char b[8];
    std::snprintf(b, sizeof b, "%02d", v);
    return b;
}

// One data line in the file's columns: satellite at 1, problem at 13 (its
// digit at 14), action at 21, start at 32..50, end at 53..71 when given.
std::string DataLine(int sat, int problem, int action, Stamp from, const Stamp* to = nullptr)
{
    std::string l;
    char b[16];
    std::snprintf(b, sizeof b, "%3d", sat);
    Put(l, 1, b);
    std::snprintf(b, sizeof b, "%2d", problem);
    Put(l, 13, b);
    Put(l, 21, std::to_string(action));
    const std::size_t cf[] = {32, 37, 40, 43, 46, 49};
    const std::size_t ct[] = {53, 58, 61, 64, 67, 70};
    auto stamp = [&](const std::size_t* c, const Stamp& t) {
        Put(l, c[0], std::to_string(t.y));
        Put(l, c[1], Two(t.mo));
        Put(l, c[2], Two(t.d));
        Put(l, c[3], Two(t.h));
        Put(l, c[4], Two(t.mi));
        Put(l, c[5], Two(t.s));
    };
    stamp(cf, from);
    if (to) stamp(ct, *to);
    return l + "\n";
}

// 2020-06-25 is MJD 59025 (JD 2459025.5).
constexpr unsigned long kDay = 59025;
const Stamp kFrom5{2020, 6, 25, 0, 5, 0}, kTo10{2020, 6, 25, 0, 10, 0};

SatCRX ReadList(const std::string& name, const std::string& text)
{
    SatCRX x;
    x.SetFile(orvotest::WriteTemp(name, text));
    x.ReadFile();
    return x;
}

TEST(SatCRX, ReadsPeriodsUpToTheFirstShortLine)
{
    const std::string text = kHeader + DataLine(5, 3, 1, kFrom5, &kTo10)
                             + DataLine(105, 1, 0, kFrom5)
                             + "   a remark line that is long but has no problem digit\n"
                             + DataLine(211, 2, 2, kFrom5, &kTo10) + "  end \n"
                             + DataLine(7, 2, 0, kFrom5);
    const SatCRX x = ReadList("list.crx", text);
    ASSERT_EQ(x.GetNSat(), 3);
    EXPECT_EQ(x.sat(0), 5);
    EXPECT_EQ(x.sat(1), 105);
    EXPECT_EQ(x.sat(2), 211);
    EXPECT_EQ(x.TypAct(0, SatCRX::PROBLEM), 3);
    EXPECT_EQ(x.TypAct(0, SatCRX::ACTION), 1);
    EXPECT_EQ(x.TypAct(1, SatCRX::PROBLEM), 1);
    EXPECT_EQ(x.TypAct(2, SatCRX::PROBLEM), 2);
    EXPECT_EQ(x.TypAct(2, SatCRX::ACTION), 2);
    EXPECT_TRUE(x.eph(0, SatCRX::FROM) == mjd(kDay, 300.0L));
    EXPECT_TRUE(x.eph(0, SatCRX::TO) == mjd(kDay, 600.0L));
    // Without an end the period runs to 2099-12-31 23:59:59.
    EXPECT_TRUE(x.eph(1, SatCRX::TO) == mjd(88068, 86399.0L));
}

TEST(SatCRX, PeriodHoldsBothOfItsEnds)
{
    const SatCRX x = ReadList("ends.crx", kHeader + DataLine(5, 3, 1, kFrom5, &kTo10)
                                              + DataLine(5, 1, 4, kTo10));
    short p = -1, a = -1;
    x.GetSatelliteProblem(5, mjd(kDay, 300.0L), p, a);
    EXPECT_EQ(p, 3);
    EXPECT_EQ(a, 1);
    // The first period that holds the epoch wins over the open one.
    x.GetSatelliteProblem(5, mjd(kDay, 600.0L), p, a);
    EXPECT_EQ(p, 3);
    x.GetSatelliteProblem(5, mjd(kDay, 601.0L), p, a);
    EXPECT_EQ(p, 1);
    EXPECT_EQ(a, 4);
    x.GetSatelliteProblem(5, mjd(kDay, 299.0L), p, a);
    EXPECT_EQ(p, 0);
    EXPECT_EQ(a, 0);
    x.GetSatelliteProblem(6, mjd(kDay, 400.0L), p, a);
    EXPECT_EQ(p, 0);
}

TEST(SatCRX, FileOfFewerThanSixLinesIsAnEmptyList)
{
    const SatCRX x = ReadList("short.crx", "SATELLITE PROBLEMS\n\n" + DataLine(5, 3, 1, kFrom5));
    EXPECT_EQ(x.GetNSat(), 0);
}

TEST(SatCRXDeath, MissingFileStops)
{
    SatCRX x;
    EXPECT_EXIT(x.SetFile(orvotest::TempDir() + "/no_such.crx"), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> SATELLITE PROBLEM FILE DOES NOT EXIST! \\*\\*\\*\\*");
}

TEST(SatCRXDeath, FileGoneBeforeReadingStops)
{
    SatCRX x;
    const std::string p = orvotest::WriteTemp("gone.crx", kHeader);
    x.SetFile(p);
    std::remove(p.c_str());
    EXPECT_EXIT(x.ReadFile(), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> SATELLITE PROBLEM FILE CAN NOT BE OPENED! \\*\\*\\*\\*");
}

// ---------------------------------------------------------------------------

const unsigned short kCleared[] = {RINEXObs::L1, RINEXObs::L2, RINEXObs::C1, RINEXObs::P1,
                                   RINEXObs::P2};

bool IsPhase(unsigned short t) { return t == RINEXObs::L1 || t == RINEXObs::L2; }

// Non-null values of the five types that a problem may clear, for the
// records of satellite s whose epoch lies in [from, to] (s of day 59025).
struct Counted {
    long phase = 0, code = 0;
};
Counted CountInPeriod(const RINEXData& d, short s, long double from, long double to)
{
    Counted c;
    long r = 0;
    for (long i = 0; i < d.nepochall; ++i) {
        const long double t = d.epoch(i).GetSecond();
        for (long k = 0; k < d.nsat(i); ++k, ++r) {
            if (d.sat(r) != s || t < from || t > to) continue;
            for (unsigned short ty : kCleared) {
                const matrix<gnssobs>* m = d.ObsMatrix(ty);
                if (m->Length() == d.nsatall && !(*m)(r).IsNull()) (IsPhase(ty) ? c.phase : c.code)++;
            }
        }
    }
    return c;
}

class ExcludeOnRealData : public ::testing::Test {
protected:
    Loaded f{CutFile(kEsbc, 30)};
    std::vector<matrix<gnssobs>> before;
    void SetUp() override
    {
        for (unsigned short t : kCleared) before.push_back(*f.d.ObsMatrix(t));
    }
    // True when record r of type k still holds its value as read.
    bool Kept(int k, long r) { return (*f.d.ObsMatrix(kCleared[k]))(r).obs == before[k](r).obs; }
};

TEST_F(ExcludeOnRealData, PhaseAndCodeOfOneSatelliteClearedInsideItsPeriod)
{
    SatCRX x = ReadList("g05.crx", kHeader + DataLine(5, 3, 0, kFrom5, &kTo10)
                                       + DataLine(108, 1, 0, kTo10));
    const Counted g05 = CountInPeriod(f.d, 5, 300.0L, 600.0L);
    const Counted r08 = CountInPeriod(f.d, 108, 600.0L, 86400.0L);
    ASSERT_GT(g05.phase, 0);
    ASSERT_GT(g05.code, 0);
    ASSERT_GT(r08.phase, 0);

    Capture out(std::cout);
    ExcludeProblemSat(f.h, f.d, x, true, false);
    long r = 0;
    for (long i = 0; i < f.d.nepochall; ++i) {
        const long double t = f.d.epoch(i).GetSecond();
        for (long k = 0; k < f.d.nsat(i); ++k, ++r) {
            const short s = f.d.sat(r);
            for (int ty = 0; ty < 5; ++ty) {
                const bool gone = (s == 5 && t >= 300.0L && t <= 600.0L)
                                  || (s == 108 && t >= 600.0L && IsPhase(kCleared[ty]));
                if (gone)
                    ASSERT_TRUE((*f.d.ObsMatrix(kCleared[ty]))(r).IsNull()) << s << " " << t;
                else
                    ASSERT_TRUE(Kept(ty, r)) << s << " " << t << " type " << ty;
            }
        }
    }
    const std::string text = out.Text();
    char line[512];
    std::snprintf(line, sizeof line, "  SAT:    5    #OBS: %6ld    #PHS: %6ld    #COD: %6ld\n",
                  g05.phase + g05.code, g05.phase, g05.code);
    EXPECT_NE(text.find(line), std::string::npos) << text;
    std::snprintf(line, sizeof line, "  SAT:  108    #OBS: %6ld    #PHS: %6ld    #COD: %6ld\n",
                  r08.phase, r08.phase, 0L);
    EXPECT_NE(text.find(line), std::string::npos) << text;
    std::snprintf(line, sizeof line,
                  "  Number of problematic satellites    : %6d\n"
                  "  Number of problematic observations  : %6ld\n"
                  "                 PHASE observations   : %6ld\n"
                  "                 CODE observations    : %6ld\n",
                  2, g05.phase + g05.code + r08.phase, g05.phase + r08.phase, g05.code);
    EXPECT_NE(text.find(line), std::string::npos) << text;
    EXPECT_NE(text.find("EXCLUDING PROBLEMATIC SATELLITES:"), std::string::npos);
}

TEST_F(ExcludeOnRealData, UnknownProblemWarnsPerRecordAndClearsNothing)
{
    SatCRX x = ReadList("bad.crx", kHeader + DataLine(5, 3, 0, kFrom5, &kTo10));
    x.TypAct(0, SatCRX::PROBLEM) = 7;  // the file's digit test lets only 1-3 in
    long records = 0;
    for (long r = 0, i = 0; i < f.d.nepochall; ++i)
        for (long k = 0; k < f.d.nsat(i); ++k, ++r)
            if (f.d.sat(r) == 5 && f.d.epoch(i).GetSecond() >= 300.0L
                && f.d.epoch(i).GetSecond() <= 600.0L)
                records++;
    ASSERT_GT(records, 0);
    Capture out(std::cout);
    Capture err(std::cerr);
    ExcludeProblemSat(f.h, f.d, x, true, true);
    EXPECT_EQ(Occurrences(err.Text(), "#### Orvo: Warning -> UNKNOWN PROBLEM FROM SATELLITE "
                                      "PROBLEM FILE - EXPECTED 1|2|3 ####"),
              records);
    EXPECT_NE(err.Text().find("Orvo::ExcludeProblemSat():         Excluding: 0 sats  0 obs  ->  "
                              "0 phase  0 code\n"),
              std::string::npos);
    EXPECT_EQ(out.Text().find("  SAT: "), std::string::npos);
    for (int ty = 0; ty < 5; ++ty)
        for (long r = 0; r < f.d.nsatall; ++r) ASSERT_TRUE(Kept(ty, r));
}

TEST_F(ExcludeOnRealData, WithoutAListNothingHappens)
{
    SatCRX x = ReadList("unused.crx", kHeader + DataLine(5, 3, 0, kFrom5, &kTo10));
    Capture out(std::cout);
    ExcludeProblemSat(f.h, f.d, x, false, true);
    EXPECT_TRUE(out.Text().empty());
    SatCRX empty = ReadList("empty.crx", "only\ntwo lines\n");
    ExcludeProblemSat(f.h, f.d, empty, true, false);
    EXPECT_NE(out.Text().find("  Number of problematic observations  :      0\n"), std::string::npos);
    for (int ty = 0; ty < 5; ++ty)
        for (long r = 0; r < f.d.nsatall; ++r) ASSERT_TRUE(Kept(ty, r));
}

TEST(ExcludeProblemSat, BothProblemsOnAFileWithoutP1AndP2ClearL1L2C1)
{
    Synthetic s({{5, 7}, {5, 7}}, {RINEXObs::C1, RINEXObs::L1, RINEXObs::L2});
    for (long r = 0; r < 4; ++r) {
        s.d.C1(r) = 2.0e7L + r;
        s.d.L1(r) = 1.0e8L + r;
        s.d.L2(r) = 0.8e8L + r;
    }
    s.d.L2(2) = 0.0L;  // already missing: not counted again
    // The period ends exactly at the second epoch (00:00:30).
    const Stamp from{2020, 6, 25, 0, 0, 0}, to{2020, 6, 25, 0, 0, 30};
    SatCRX x = ReadList("nop.crx", kHeader + DataLine(5, 3, 0, from, &to));
    Capture out(std::cout);
    ExcludeProblemSat(s.h, s.d, x, true, false);
    for (long r : {0L, 2L}) {
        EXPECT_TRUE(s.d.C1(r).IsNull());
        EXPECT_TRUE(s.d.L1(r).IsNull());
        EXPECT_TRUE(s.d.L2(r).IsNull());
    }
    for (long r : {1L, 3L}) EXPECT_FALSE(s.d.C1(r).IsNull() || s.d.L1(r).IsNull());
    EXPECT_NE(out.Text().find("  SAT:    5    #OBS:      5    #PHS:      3    #COD:      2\n"),
              std::string::npos)
        << out.Text();
}

}  // namespace
