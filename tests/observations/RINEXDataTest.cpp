// Epoch-line helpers and the layout rules of the data section, on small
// files written by the tests: satellite and type continuation lines, clock
// offsets, blank fields, satellite letters, the sampling estimate, and the
// writer's round trip.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "observations/RINEX.h"
#include "numerics/NearLD.h"

using orvotest::TempDir;
using orvotest::WriteTemp;

namespace {

// Values are written with 3 decimals and read back from that text.
constexpr long double ValueTol = 1e-9L;
constexpr long double ClockTol_s = 1e-12L;  // 9 decimals in the file

std::string HLine(const std::string& text, const std::string& label)
{
    std::string l = text;
    l.resize(60, ' ');
    return l + label + "\n";
}

std::string Header(const std::vector<std::string>& types, const std::string& extra = "")
{
    std::string out = HLine("     2.11           OBSERVATION DATA    M (MIXED)",
                            "RINEX VERSION / TYPE");
    char buf[16];
    std::snprintf(buf, sizeof buf, "%6zu", types.size());
    std::string text = buf;
    for (std::size_t k = 0; k < types.size(); k++) {
        if (k > 0 && k % 9 == 0) {
            out += HLine(text, "# / TYPES OF OBSERV");
            text = "      ";
        }
        text += "    " + types[k];
    }
    out += HLine(text, "# / TYPES OF OBSERV");
    return out + extra + HLine("", "END OF HEADER");
}

struct Epoch {
    int yy, mo, dd, hh, mi;
    double sec;
    std::vector<std::string> sats;
    bool clock = false;
    double clk = 0.0;
    char flag = '0';
};

// Epoch line and satellite continuation lines in the RINEX 2 layout.
std::string EpochLines(const Epoch& e)
{
    char buf[128];
    std::snprintf(buf, sizeof buf, " %02d %2d %2d %2d %2d%11.7f  %c%3zu", e.yy, e.mo, e.dd, e.hh,
                  e.mi, e.sec, e.flag, e.sats.size());
    std::string out = buf;
    for (std::size_t s = 0; s < e.sats.size() || s == 0; s += 12) {
        if (s > 0) out += "\n" + std::string(32, ' ');
        for (std::size_t k = s; k < e.sats.size() && k < s + 12; k++) out += e.sats[k];
        if (s == 0 && e.clock) {
            out.resize(68, ' ');
            std::snprintf(buf, sizeof buf, "%12.9f", e.clk);
            out += buf;
        }
        if (e.sats.empty()) break;
    }
    return out + "\n";
}

// The value of satellite s, type k at epoch i: distinct for every field, so
// a field read into the wrong column or record shows.
double Value(int i, int s, int k) { return 20000000.0 + 100000.0 * i + 1000.0 * s + k + 0.125; }

// Observation lines of one record, five fields a line, trailing blanks cut.
std::string RecordLines(const std::vector<std::string>& fields)
{
    std::string out, line;
    for (std::size_t k = 0; k < fields.size(); k++) {
        line += fields[k];
        if (k % 5 == 4 || k + 1 == fields.size()) {
            line.erase(line.find_last_not_of(' ') + 1);
            out += line + "\n";
            line.clear();
        }
    }
    return out;
}

std::string Field(double v, int lli = -1, int ss = -1)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%14.3f%c%c", v, lli < 0 ? ' ' : '0' + lli,
                  ss < 0 ? ' ' : '0' + ss);
    return buf;
}

// A file of the given epochs, every field filled by Value.
std::string File(const std::vector<std::string>& types, const std::vector<Epoch>& epochs,
                 const std::string& extraHeader = "")
{
    std::string out = Header(types, extraHeader);
    for (std::size_t i = 0; i < epochs.size(); i++) {
        out += EpochLines(epochs[i]);
        for (std::size_t s = 0; s < epochs[i].sats.size(); s++) {
            std::vector<std::string> f;
            for (std::size_t k = 0; k < types.size(); k++)
                f.push_back(Field(Value(static_cast<int>(i), static_cast<int>(s), static_cast<int>(k)),
                                  static_cast<int>(k % 10), 5));
            out += RecordLines(f);
        }
    }
    return out;
}

std::vector<std::string> Sats(const std::string& letter, int n)
{
    std::vector<std::string> v;
    for (int p = 1; p <= n; p++) v.push_back(letter + (p < 10 ? "0" : "") + std::to_string(p));
    return v;
}

struct Reader {
    RINEXHeader h;
    RINEXData d{h};
    RINEX r{h, d};
    explicit Reader(const std::string& path)
    {
        r.SetFile(path);
        r.ReadFile();
    }
};

// Every field of every record holds Value(i, s, k) with lli k % 10, ss 5.
void ExpectValues(const Reader& f, const std::vector<std::string>& types)
{
    long r = 0;
    for (long i = 0; i < f.d.GetNEpoch(); i++) {
        for (int s = 0; s < f.d.GetEphNSat(i); s++, r++) {
            for (std::size_t k = 0; k < types.size(); k++) {
                const unsigned short t = f.h.obs(static_cast<long>(k));
                const long double want = Value(static_cast<int>(i), s, static_cast<int>(k));
                if (const matrix<gnssobs>* m = f.d.ObsMatrix(t)) {
                    EXPECT_NEAR_LD((*m)(r).GetObs(), want, ValueTol) << types[k] << " r=" << r;
                    EXPECT_EQ((*m)(r).GetLli(), k % 10);
                    EXPECT_EQ((*m)(r).GetSs(), 5);
                } else if (const matrix<gnssobsshort>* m = f.d.ShortMatrix(t)) {
                    EXPECT_NEAR_LD((*m)(r).GetObs(), want, ValueTol) << types[k] << " r=" << r;
                }
            }
        }
    }
}

const std::vector<std::string> kNine = {"C1", "P1", "L1", "S1", "D1", "C2", "P2", "L2", "S2"};
const std::vector<std::string> kTen = {"C1", "P1", "L1", "S1", "D1", "C2", "P2", "L2", "S2", "C7"};

}  // namespace

TEST(RinexLineHelpers, EpochLineTest)
{
    const std::string good = " 20  6 25  0  0  0.0000000  0 30E01";
    EXPECT_TRUE(IsFirstObsLine(good));
    EXPECT_TRUE(IsFirstObsLine(good.substr(0, 33)));
    EXPECT_FALSE(IsFirstObsLine(good.substr(0, 32)));  // exactly 32 is too short
    EXPECT_TRUE(IsFirstObsLine(" 20  6 25  0  0 30.0000000  4  2   "));  // any flag
    // An event record without a date is no epoch line.
    EXPECT_FALSE(IsFirstObsLine("                            4  2                    "));
    // RINEX 3 epoch and observation lines.
    EXPECT_FALSE(IsFirstObsLine("> 2020 06 25 00 00  0.0000000  0 30      "));
    EXPECT_FALSE(IsFirstObsLine("  27616185.992 6                 145124050.10606"));
    EXPECT_FALSE(IsFirstObsLine(" 20  6 25  0  0  0.000000   0 30E01"));  // six decimals
    EXPECT_FALSE(IsFirstObsLine(" 20  6 25  0  0  0,0000000  0 30E01"));
}

TEST(RinexLineHelpers, ParseEpochLineAndTwoDigitYears)
{
    int y, mo, d, h, mi, n;
    long double s;
    ParseFirstObsLine(" 79 12 31 23 59 59.5000000  0 13G01", y, mo, d, h, mi, s, n);
    EXPECT_EQ(y, 2079);  // 79 is still this century
    EXPECT_EQ(mo, 12);
    EXPECT_EQ(d, 31);
    EXPECT_EQ(h, 23);
    EXPECT_EQ(mi, 59);
    // 1e-15 s: 59.5 is exact in binary; only strtold round-off could differ.
    EXPECT_NEAR_LD(s, 59.5L, 1e-15L);
    EXPECT_EQ(n, 13);
    ParseFirstObsLine(" 80  1  6  0  0  0.0000000  0  8G01", y, mo, d, h, mi, s, n);
    EXPECT_EQ(y, 1980);
    EXPECT_EQ(n, 8);
    ParseFirstObsLine(" 00  1  1  0  0  0.0000000  0  1G01", y, mo, d, h, mi, s, n);
    EXPECT_EQ(y, 2000);
}

TEST(RinexLineHelpers, FillObsLinePadsAndCuts)
{
    std::string l = "abc";
    FillObsLine(l, 5);
    EXPECT_EQ(l, "abc" + std::string(77, ' '));
    l = std::string(90, 'x');
    FillObsLine(l, 5);
    EXPECT_EQ(l.size(), 80u);
    FillObsLine(l, 0);
    EXPECT_TRUE(l.empty());
}

TEST(RinexLineHelpers, SatelliteNumbersByLetter)
{
    EXPECT_EQ(RINEXSatNumber("G05"), 5);
    EXPECT_EQ(RINEXSatNumber(" 12"), 12);
    EXPECT_EQ(RINEXSatNumber("G 7"), 7);
    EXPECT_EQ(RINEXSatNumber("R24"), 124);
    EXPECT_EQ(RINEXSatNumber("E36"), 236);
    EXPECT_EQ(RINEXSatNumber("C19"), 319);
    EXPECT_EQ(RINEXSatNumber("S20"), 420);
    // Letters without a system of their own stay out of every processed range.
    EXPECT_EQ(RINEXSatNumber("J01"), 501);
    EXPECT_EQ(RINEXSatNumber("I09"), 609);
    EXPECT_EQ(RINEXSatNumber("X99"), 699);  // the largest: within the 700 scratch entries
    for (short s : {5, 124, 236, 319, 420, 501, 609}) {
        char f[4] = {RINEXSatLetter(s), static_cast<char>('0' + s % 100 / 10),
                     static_cast<char>('0' + s % 10), 0};
        EXPECT_EQ(RINEXSatNumber(f), s);
    }
}

TEST(RinexData, TwelveSatellitesFitOneLineThirteenNeedAContinuation)
{
    std::vector<std::string> twelve = Sats("G", 12), thirteen = Sats("R", 13),
                             twentyFive = Sats("E", 25);
    const std::string p = WriteTemp(
        "sats.o", File(kNine, {{20, 6, 25, 0, 0, 0.0, twelve}, {20, 6, 25, 0, 0, 30.0, thirteen},
                               {20, 6, 25, 0, 1, 0.0, twentyFive}}));
    Reader f(p);
    ASSERT_EQ(f.d.GetNEpoch(), 3);
    ASSERT_EQ(f.d.GetNObs(), 12 + 13 + 25);
    EXPECT_EQ(f.d.GetEphNSat(1), 13);
    EXPECT_EQ(f.d.GetObsSat(11), 12);
    EXPECT_EQ(f.d.GetObsSat(12), 101);
    EXPECT_EQ(f.d.GetObsSat(24), 113);
    EXPECT_EQ(f.d.GetObsSat(25), 201);
    EXPECT_EQ(f.d.GetObsSat(49), 225);
    EXPECT_EQ(f.d.GetNSat(), 50);
    EXPECT_EQ(f.d.nComment, 0);
    ExpectValues(f, kNine);
}

TEST(RinexData, TenTypesTakeTwoLinesARecord)
{
    const std::string p = WriteTemp(
        "ten.o", File(kTen, {{15, 8, 23, 0, 0, 0.0, Sats("G", 3)}, {15, 8, 23, 0, 0, 30.0, Sats("E", 2)}}));
    Reader f(p);
    ASSERT_EQ(f.d.GetNObs(), 5);
    EXPECT_EQ(f.h.GetNObs(), 10);
    ExpectValues(f, kTen);
    // Records of 16 types (four lines): the counting pass skips only two.
    std::vector<std::string> sixteen = kTen;
    for (const char* t : {"L5", "C5", "D5", "S5", "L7", "D7"}) sixteen.push_back(t);
    const std::string q = WriteTemp(
        "sixteen.o", File(sixteen, {{15, 8, 23, 0, 0, 0.0, Sats("G", 14)}, {15, 8, 23, 0, 0, 30.0, Sats("G", 2)}}));
    Reader g(q);
    EXPECT_EQ(g.d.GetNEpoch(), 2);
    EXPECT_EQ(g.d.GetNObs(), 16);
    ExpectValues(g, sixteen);
}

TEST(RinexData, SamplingIsTheSmallestStepAndRoundsNearWholeSeconds)
{
    // A header INTERVAL of 30 is only an upper bound.
    const std::string p = WriteTemp(
        "fifteen.o", File(kNine, {{20, 6, 25, 0, 0, 0.0, Sats("G", 1)},
                                  {20, 6, 25, 0, 0, 15.0, Sats("G", 1)},
                                  {20, 6, 25, 0, 0, 45.0, Sats("G", 1)}},
                          HLine("    30.000", "INTERVAL")));
    // The interval is a float: 1e-6 s is below its step at 15 to 30 s and a few
    // steps at 1 s, so only the float of the expected decimal passes.
    EXPECT_NEAR_LD(Reader(p).h.GetInterval(), 15.0f, 1e-6f);
    // A receiver that tags 0.9999 s: the interval becomes 1 s.
    const std::string q = WriteTemp(
        "onesec.o", File(kNine, {{20, 6, 25, 0, 0, 0.0, Sats("G", 1)},
                                 {20, 6, 25, 0, 0, 0.9999, Sats("G", 1)},
                                 {20, 6, 25, 0, 0, 1.9998, Sats("G", 1)}}));
    EXPECT_NEAR_LD(Reader(q).h.GetInterval(), 1.0f, 1e-6f);
    // 0.99 s is a true rate and stays.
    const std::string r = WriteTemp(
        "rate099.o", File(kNine, {{20, 6, 25, 0, 0, 0.0, Sats("G", 1)},
                                  {20, 6, 25, 0, 0, 0.99, Sats("G", 1)}}));
    EXPECT_NEAR_LD(Reader(r).h.GetInterval(), 0.99f, 1e-6f);
    // Across midnight the step of the second of day is large: no change.
    const std::string m = WriteTemp(
        "midnight.o", File(kNine, {{20, 6, 25, 23, 59, 30.0, Sats("G", 1)},
                                   {20, 6, 26, 0, 0, 0.0, Sats("G", 1)},
                                   {20, 6, 26, 0, 0, 30.0, Sats("G", 1)}}));
    Reader mid(m);
    EXPECT_NEAR_LD(mid.h.GetInterval(), 30.0f, 1e-6f);
    // 1e-9 s: a difference of day-plus-second epochs carries 1e-14 s round-off.
    EXPECT_NEAR_LD(mid.d.GetMJD(1) - mid.d.GetMJD(0), 30.0L, 1e-9L);
}

TEST(RinexData, BlankFieldsAndBlankSatelliteLetter)
{
    std::string text = Header(kTen) + EpochLines({20, 6, 25, 0, 0, 0.0, {" 07", "G08"}});
    std::vector<std::string> first(10, std::string(16, ' '));
    first[2] = Field(123456.789, 1, 7);
    text += RecordLines(first);  // one short line and one empty line
    std::vector<std::string> second(10, std::string(16, ' '));
    second[9] = Field(-5.5);
    text += RecordLines(second);
    Reader f(WriteTemp("blank.o", text));
    ASSERT_EQ(f.d.GetNObs(), 2);
    EXPECT_EQ(f.d.GetObsSat(0), 7);   // blank letter: GPS
    EXPECT_TRUE(f.d.C1(0).IsNull());
    EXPECT_EQ(f.d.C1(0).GetLli() + f.d.C1(0).GetSs(), 0);
    EXPECT_NEAR_LD(f.d.L1(0).GetObs(), 123456.789L, ValueTol);
    EXPECT_EQ(f.d.L1(0).GetLli(), 1);
    EXPECT_EQ(f.d.L1(0).GetSs(), 7);
    EXPECT_TRUE(f.d.C7(0).IsNull());
    EXPECT_NEAR_LD(f.d.C7(1).GetObs(), -5.5L, ValueTol);
    EXPECT_TRUE(f.d.L2(1).IsNull());
    EXPECT_TRUE(f.d.S1(1).IsNull());
}

TEST(RinexData, OtherLettersAndUnknownTypesKeepRecordsAligned)
{
    const std::vector<std::string> types = {"L1", "X4", "C1"};
    const std::string p = WriteTemp(
        "letters.o", File(types, {{20, 6, 25, 0, 0, 0.0, {"J01", "C20", "G05", "I02", "S27", "R03"}}}));
    Reader f(p);
    ASSERT_EQ(f.d.GetNObs(), 6);
    const short want[] = {501, 320, 5, 602, 427, 103};
    for (long r = 0; r < 6; r++) EXPECT_EQ(f.d.GetObsSat(r), want[r]);
    ASSERT_EQ(f.d.GetNSat(), 6);
    const short sorted[] = {5, 103, 320, 427, 501, 602};
    for (long i = 0; i < 6; i++) EXPECT_EQ(f.d.GetSat(i), sorted[i]);
    // The unknown middle column is read over: C1 is the third field.
    EXPECT_EQ(f.h.obs(1), RINEXObs::Unknown);
    for (long r = 0; r < 6; r++) {
        EXPECT_NEAR_LD(f.d.L1(r).GetObs(), Value(0, static_cast<int>(r), 0), ValueTol);
        EXPECT_NEAR_LD(f.d.C1(r).GetObs(), Value(0, static_cast<int>(r), 2), ValueTol);
    }
}

TEST(RinexData, EventRecordsWithoutDateArePassedOver)
{
    std::string text = File(kNine, {{20, 6, 25, 0, 0, 0.0, Sats("G", 2)}});
    text += "                            4  2\n";
    text += HLine("A COMMENT INSIDE THE DATA", "COMMENT");
    text += HLine("ANOTHER ONE", "COMMENT");
    std::string second = File(kNine, {{20, 6, 25, 0, 0, 0.0, Sats("G", 1)},
                                       {20, 6, 25, 0, 0, 30.0, Sats("G", 2)}});
    text += second.substr(second.find(" 20  6 25  0  0 30.0000000"));
    Reader f(WriteTemp("event.o", text));
    EXPECT_EQ(f.d.GetNEpoch(), 2);
    EXPECT_EQ(f.d.GetNObs(), 4);
    EXPECT_EQ(f.d.nComment, 3);
    EXPECT_EQ(f.d.flag(1), '0');
}

TEST(RinexData, EpochFlagIsStoredAsWritten)
{
    Epoch e{20, 6, 25, 0, 0, 0.0, Sats("G", 1)};
    e.flag = '6';
    Reader f(WriteTemp("flag.o", File(kNine, {e})));
    EXPECT_EQ(f.d.flag(0), '6');
}

TEST(RinexData, ClockOffsetIsReadOnlyWhenTheFirstEpochCarriesIt)
{
    Epoch a{20, 6, 25, 0, 0, 0.0, Sats("G", 3)}, b{20, 6, 25, 0, 0, 30.0, Sats("G", 14)};
    b.clock = true;
    b.clk = 0.000123456;
    Reader later(WriteTemp("clklater.o", File(kNine, {a, b})));
    EXPECT_FALSE(later.d.IfTimeCorr);
    EXPECT_EQ(later.d.TCorr.NRow(), 0);

    a.clock = true;
    a.clk = -0.000987654;
    Reader first(WriteTemp("clkfirst.o", File(kNine, {a, b})));
    ASSERT_TRUE(first.d.IfTimeCorr);
    EXPECT_NEAR_LD(first.d.TCorr(0), -0.000987654L, ClockTol_s);
    EXPECT_NEAR_LD(first.d.TCorr(1), 0.000123456L, ClockTol_s);
}

TEST(RinexData, CodeCopiesFillTheMissingCode)
{
    const std::vector<std::string> types = {"P1", "L1", "C2", "L2"};
    Reader f(WriteTemp("p1only.o", File(types, {{20, 6, 25, 0, 0, 0.0, Sats("G", 2)}})));
    // Reading already copies P1 into C1.
    ASSERT_TRUE(f.h.HasC1());
    EXPECT_NEAR_LD(f.d.C1(1).GetObs(), f.d.P1(1).GetObs(), ValueTol);
    EXPECT_NEAR_LD(f.d.C1(1).GetObs(), Value(0, 1, 0), ValueTol);
    EXPECT_FALSE(f.h.HasP2());
    f.r.copyC2toP2();
    ASSERT_TRUE(f.h.HasP2());
    EXPECT_NEAR_LD(f.d.P2(0).GetObs(), Value(0, 0, 2), ValueTol);
    // With both codes present the copies leave the data alone.
    const std::vector<std::string> both = {"C1", "P1", "C2", "P2"};
    Reader g(WriteTemp("bothcodes.o", File(both, {{20, 6, 25, 0, 0, 0.0, Sats("G", 1)}})));
    g.r.copyP1toC1();
    g.r.copyC2toP2();
    EXPECT_NEAR_LD(g.d.C1(0).GetObs(), Value(0, 0, 0), ValueTol);
    EXPECT_NEAR_LD(g.d.P2(0).GetObs(), Value(0, 0, 3), ValueTol);
}

TEST(RinexData, ReadingAnotherFileStartsAfresh)
{
    Reader f(WriteTemp("first.o", File(kTen, {{20, 6, 25, 0, 0, 0.0, Sats("G", 4)}})));
    f.r.SetFile(WriteTemp("second.o", File({"L1", "C1"}, {{20, 6, 25, 0, 0, 0.0, Sats("E", 2)},
                                                         {20, 6, 25, 0, 0, 30.0, Sats("E", 1)}})));
    f.r.ReadFile();
    EXPECT_EQ(f.d.GetNEpoch(), 2);
    EXPECT_EQ(f.d.GetNObs(), 3);
    EXPECT_EQ(f.d.GetNSat(), 2);
    EXPECT_FALSE(f.h.HasP2() || f.h.HasC7() || f.h.HasP1());
    EXPECT_EQ(f.d.P2.NRow(), 0);
    EXPECT_EQ(f.d.C1.NRow(), 3);
    ExpectValues(f, {"L1", "C1"});
}

TEST(RinexWriter, RoundTripKeepsContinuationsClockAndUnknownColumns)
{
    std::vector<std::string> types = kTen;
    types.push_back("Q9");
    Epoch a{20, 6, 25, 0, 0, 0.0, Sats("G", 13)}, b{20, 6, 25, 0, 0, 30.0, Sats("R", 5)};
    a.clock = b.clock = true;
    a.clk = 0.000000123;
    b.clk = -0.000456;
    Reader f(WriteTemp("wsrc.o", File(types, {a, b})));
    const std::string out = TempDir() + "/written.o";
    f.r.PrintFile(out);
    Reader g(out);
    ASSERT_EQ(g.d.GetNEpoch(), 2);
    ASSERT_EQ(g.d.GetNObs(), 18);
    ASSERT_EQ(g.h.GetNObs(), 11);
    EXPECT_EQ(g.h.obs(10), RINEXObs::Unknown);
    ASSERT_TRUE(g.d.IfTimeCorr);
    EXPECT_NEAR_LD(g.d.TCorr(0), 0.000000123L, ClockTol_s);
    EXPECT_NEAR_LD(g.d.TCorr(1), -0.000456L, ClockTol_s);
    for (long r = 0; r < 18; r++) EXPECT_EQ(g.d.GetObsSat(r), f.d.GetObsSat(r));
    ExpectValues(g, types);
    // 1e-9 s: epochs printed with 7 decimals and read back agree to round-off;
    // the smallest printed digit is 1e-7 s.
    EXPECT_NEAR_LD(g.d.GetMJD(1) - f.d.GetMJD(1), 0.0L, 1e-9L);
    // The header comes back too.
    EXPECT_NEAR_LD(g.h.GetInterval(), 30.0f, 1e-6f);
    EXPECT_EQ(g.h.obsfirst.GetMJDay(), f.h.obsfirst.GetMJDay());
    EXPECT_NEAR_LD(g.h.obslast - f.h.obslast, 0.0L, 1e-9L);
}

TEST(RinexWriter, UnwritableFileStops)
{
    Reader f(WriteTemp("wsrc2.o", File(kNine, {{20, 6, 25, 0, 0, 0.0, Sats("G", 1)}})));
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            f.r.PrintFile("/nonexistent-dir/out.o");
        },
        ::testing::ExitedWithCode(1),
        "#### RINEX: Error -> FILE /nonexistent-dir/out.o CAN NOT BE OPENED FOR WRITING ####");
}
