// Code bias files in the published CODE DCB layout and in Meskal's layout,
// and the receiver tracking list, all written here; the receiver types are
// those of the two real observation files.
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "DelaysSupport.h"
#include "delays/DCB.h"
#include "delays/RecCodeTrack.h"
#include "delays/myDCB.h"

using namespace deltest;
using orvotest::WriteTemp;

namespace {

// File values carry 3 (CODE) or 4 (Meskal) decimals; reader and oracle
// turn the same decimal into long double and scale it once, so they agree
// to a few ulps (1e-27 s for biases of ns size). 1e-21 s is far below the
// 1e-12 s of the CODE file's last digit, the smallest misreading possible.
constexpr long double Bias_s = 1e-21L, Meskal_ns = 1e-15L;
// Period ends are one millisecond subtracted from a midnight in long
// double: round-off near 1e-14 s. 1 µs is far below the ms that moves them.
constexpr long double Period_s = 1e-6L;

// MJD of a Gregorian date by the integer algorithm of Fliegel & Van
// Flandern (1968, Comm. ACM 11, 657): independent of the time classes.
unsigned long MJD(long y, long m, long d)
{
    const long a = (14 - m) / 12, yy = y + 4800 - a, mm = m + 12 * a - 3;
    return static_cast<unsigned long>(d + (153 * mm + 2) / 5 + 365 * yy + yy / 4 - yy / 100 + yy / 400 - 2432046);
}

std::string Fmt(const char* f, ...) __attribute__((format(printf, 1, 2)));
std::string Fmt(const char* f, ...) { char t[600]; va_list a; va_start(a, f); std::vsnprintf(t, sizeof t, f, a); va_end(a); return t; }

// CODE layout: name in columns 0-25, value (F9.3, ns) at 26, RMS at 38.
std::string CodeLine(const char* name, double ns, double rms) { return Fmt("%-26s%9.3f   %9.3f", name, ns, rms); }
const std::string kCodeHeader = Join({"CODE'S MONTHLY GPS P1-C1 DCB SOLUTION, YEAR 2013, MONTH 12              06-JAN-14 07:47",
    "G07 looks like a satellite line but stands before the table", std::string(80, '-'), "",
    "DIFFERENTIAL (P1-C1) CODE BIASES FOR SATELLITES AND RECEIVERS:", "",
    "PRN / STATION NAME        VALUE (NS)  RMS (NS)", "***   ****************    *****.***   *****.***", ""});

// Everything written on the error stream while f runs.
template <class F> std::string Warned(F f) { orvotest::Capture c(std::cerr); f(); return c.Text(); }
std::string Warning(const std::string& text) { return "\n#### Orvo: Warning -> " + text + " ####\n     Continuing Orvo ... \n\n"; }
std::string Missing(const char* sat, const char* tail = "") { return Warning(std::string("SATELLITE: ") + sat + " NOT LISTED IN DCB VALUES - SETTING 0.0s VALUES" + tail + "!"); }

struct Broken { std::string name, text, error; };
template <class T> void ExpectEachStops(const std::vector<Broken>& cases)
{
    for (const Broken& b : cases)
        EXPECT_EXIT({ T r; Read(r, WriteTemp(b.name, b.text)); }, ::testing::ExitedWithCode(1), Framed("[A-Z ]*FILE .*" + b.name + ": " + b.error)) << b.name;
}

}  // namespace

TEST(DCB, SatelliteLinesGiveSecondsAndTheFirstLineOfANumberWins)
{
    struct Sat { const char* name; short number; double ns, rms; };
    const Sat sats[] = {{"G01", 1, -0.812, 0.009}, {"G32", 32, 2.105, 0.011}, {"R01", 101, -1.337, 0.024}, {"R24", 124, 0.418, 0.031}};
    std::string text = kCodeHeader;
    for (const Sat& s : sats) text += CodeLine(s.name, s.ns, s.rms) + "\n";
    // A station, a Galileo line and a one-digit number are no satellite
    // lines; a second G01 is read but never found.
    text += CodeLine("G    ALGO 40104M002", 5.5, 0.1) + "\n" + CodeLine("E11", 3.3, 0.1) + "\n" + CodeLine("G1", 4.4, 0.1) + "\n" + CodeLine("G01", 9.9, 0.9) + "\r\n";
    DCB d; Read(d, WriteTemp("P1C11312.DCB", text));
    ASSERT_EQ(d.GetNSat(), 5);
    for (const Sat& s : sats) {
        long double v = -1.0L, r = -1.0L;
        d.GetDCB(s.number, v, r);
        EXPECT_NEAR(v, s.ns * 1e-9L, Bias_s) << s.name;  // the literal rounds like the file text
        EXPECT_NEAR(r, s.rms * 1e-9L, Bias_s) << s.name;
        EXPECT_EQ(v, d.GetDCBVAL(s.number)) << s.name;
        EXPECT_EQ(r, d.GetDCBRMS(s.number)) << s.name;
    }
    // Satellites not read: each getter says so in its own words and gives 0.
    long double v = 1.0L, r = 1.0L;
    EXPECT_EQ(Warned([&] { d.GetDCB(7, v, r); }), Missing("07"));
    EXPECT_TRUE(v == 0.0L && r == 0.0L);
    EXPECT_EQ(Warned([&] { v = d.GetDCBVAL(211); }), Missing("211", " FOR VAL"));
    EXPECT_EQ(Warned([&] { r = d.GetDCBRMS(1 + 100 * 2); }), Missing("201", " FOR RMS"));
    EXPECT_TRUE(v == 0.0L && r == 0.0L);
    // Without the table header nothing is a satellite line.
    DCB none; Read(none, WriteTemp("none.DCB", CodeLine("G01", 1.0, 0.1) + "\n"));
    EXPECT_EQ(none.GetNSat(), 0);
    EXPECT_EQ(Warned([&] { v = none.GetDCBVAL(1); }), Missing("01", " FOR VAL"));
}

TEST(DCB, ValidityPeriodComesFromTheMonthInTheName)
{
    // Months by name; 0 means the wide period MJD 44250 to 85000.
    struct Case { const char* name; long year, month; };
    const Case cases[] = {{"P1C11312.DCB", 2013, 12}, {"/data/CODE/P1P21312_ALL.DCB", 2013, 12}, {"P2C20802.DCB", 2008, 2},
                          {"P1C17901.DCB", 1979, 1}, {"P1C17807.DCB", 2078, 7}, {"P1C1_ALL.DCB", 0, 0}, {"CODEBIAS.DCB", 0, 0},
                          {"P1C11313.DCB", 0, 0}, {"x.DCB", 0, 0},
                          {"/x/CODE_ALL/P1C11312.DCB", 2013, 12}};  // "_ALL" counts in the name, not the folder
    for (const Case& c : cases) {
        DCB d; d.SetFile(c.name); d.ParseValidDate();
        const unsigned long from = c.month ? MJD(c.year, c.month, 1) : DCBns::WideStartDay;
        const mjd end = c.month ? mjd(MJD(c.year + c.month / 12, c.month % 12 + 1, 1) - 1, 86399.999L) : mjd(DCBns::WideEndDay, 0.0L);
        EXPECT_NEAR(d.GetStartEpoch() - mjd(from, 0.0L), 0.0L, Period_s) << c.name;
        EXPECT_NEAR(d.GetEndEpoch() - end, 0.0L, Period_s) << c.name;
    }
}

TEST(DCBDeath, CutMalformedAndUnreadableFilesStop)
{
    const std::string g01 = CodeLine("G01", -0.812, 0.009);
    EXPECT_EXIT({ DCB d; Read(d, orvotest::TempDir()); }, ::testing::ExitedWithCode(1), Framed("DCB FILE .* CAN NOT BE OPENED!"));
    ExpectEachStops<DCB>({
        {"cut.DCB", kCodeHeader + g01.substr(0, 36) + "\n", "line 10: SATELLITE LINE ENDS BEFORE THE RMS \\(COLUMN 39\\)!"},
        {"word.DCB", kCodeHeader + g01.substr(0, 30) + "x" + g01.substr(31) + "\n", "line 10: BIAS \\(COLUMN 27\\) IS NO NUMBER!"},
        {"rms.DCB", kCodeHeader + g01 + "\n" + g01.substr(0, 40) + "x.009\n", "line 11: RMS \\(COLUMN 39\\) IS NO NUMBER!"},
        {"long.DCB", kCodeHeader + g01 + std::string(480, ' ') + "\n", "line 10: LINE LONGER THAN 511 CHARACTERS!"},
    });
}

TEST(myDCB, ReceiverAndSatelliteLinesInTheirColumns)
{
    // Receiver and satellite lines: tag, values (%11.4f) from column 10.
    auto values = [](double a, double b, double c, double d) { return Fmt("%11.4f%11.4f%11.4f%11.4f", a, b, c, d); };
    const std::string text = Join({"# Meskal DCB estimates", "#REFERECNE EPOCH: 56627 43200.000", "R  ZIMM   " + values(1.2345, 0.0123, -2.5, 0.034),
                                   "S     G05 " + values(-0.5, 0.01, 1.75, 0.02), "S     R12 " + values(2.0625, 0.05, -3.125, 0.06),
                                   "S     E19 " + values(0.125, 0.001, 0.25, 0.002), "S     G05 " + values(9, 9, 9, 9)});
    myDCB m; Read(m, WriteTemp("meskal.dcb", text));
    ASSERT_EQ(m.GetNSat(), 4);
    EXPECT_TRUE(m.GetRefEpoch() == mjd(56627, 43200.0L));
    EXPECT_NEAR(m.GetRecP1C1(), 1.2345L, Meskal_ns); EXPECT_NEAR(m.GetRecP1C1rms(), 0.0123L, Meskal_ns);
    EXPECT_NEAR(m.GetRecP2C1(), -2.5L, Meskal_ns); EXPECT_NEAR(m.GetRecP2C1rms(), 0.034L, Meskal_ns);
    struct Sat { short number; long double v1, r1, v2, r2; };
    for (const Sat& s : {Sat{5, -0.5L, 0.01L, 1.75L, 0.02L}, Sat{112, 2.0625L, 0.05L, -3.125L, 0.06L}, Sat{219, 0.125L, 0.001L, 0.25L, 0.002L}}) {
        long double v[4] = {}, w[4] = {};
        m.GetDCB(s.number, v[0], v[1], v[2], v[3]);
        m.GetDCBVAL(s.number, w[0], w[2]); m.GetDCBRMS(s.number, w[1], w[3]);
        const long double want[4] = {s.v1, s.r1, s.v2, s.r2};
        for (int j = 0; j < 4; ++j) EXPECT_TRUE(std::fabs(v[j] - want[j]) < Meskal_ns && std::fabs(w[j] - want[j]) < Meskal_ns) << s.number << " " << j;
    }
    long double a = 1.0L, b = 1.0L, c = 1.0L, d = 1.0L;
    EXPECT_EQ(Warned([&] { m.GetDCB(105, a, b, c, d); }), Missing("105"));
    EXPECT_EQ(Warned([&] { m.GetDCBRMS(19, a, b); }), Missing("19"));
    EXPECT_TRUE(a == 0.0L && b == 0.0L && c == 0.0L && d == 0.0L);
    ExpectEachStops<myDCB>({
        {"sys.dcb", "S     C05 " + values(1, 1, 1, 1) + "\n", "line 1: SYSTEM LETTER \\(COLUMN 7\\) NOT G, R OR E!"},
        {"cut.dcb", "S     G05 " + values(1, 1, 1, 1).substr(0, 30) + "\n", "line 1: LINE ENDS BEFORE THE LAST VALUE"},
        {"day.dcb", "#REFERECNE EPOCH: 56627 86400.000\n", "line 1: REFERENCE EPOCH .* NOT VALID!"},
    });
}

namespace {
// Receiver list entry: name in columns 0-19, number of frequencies at 23,
// code at 29; the second frequency's code at 29 of the next line.
std::string Entry(const char* name, const char* c1, const char* c2 = nullptr)
{
    return Fmt("%-20s   %d     %s   %s\n", name, c2 ? 2 : 1, c1, "CODE TRACKING") + (c2 ? std::string(29, ' ') + c2 + "\n" : "");
}
// Receiver type of a real RINEX header, columns 20-39, blanks kept.
std::string RinexReceiver(const std::string& path)
{
    std::ifstream in(path);
    for (std::string l; std::getline(in, l);) if (l.find("REC # / TYPE / VERS") != std::string::npos) return l.substr(20, 20);
    return "";
}
}  // namespace

TEST(RecCodeTrack, CodesOfTheEntryGiveTheClass)
{
    const std::string list = WriteTemp("receivers.lst", "RECEIVER TYPE          #F    CODES\n" + Entry("TRIMBLE 4000SSI", "C1", "X2") + Entry("TRIMBLE NETR9", "C1", "P2")
                                       + Entry("SEPT POLARX5", "P1", "P2") + Entry("TRIMBLE 4000SE", "C1") + Entry("ASHTECH Z-XII3", "P1", "X2"));
    const std::string notListed = " NOT LISTED IN RECEIVER TYPES LIST - SETTING CODE TRACKING TO P1P2 VALUE!";
    const std::string noClass = " DETERMINATION OF CODE TRACKING NOT SUCCESFUL - SETTING TO P1P2 VALUE!";
    struct Case { std::string rec; short cls; bool listed; std::string warning; };
    const Case cases[] = {
        {RinexReceiver(orvotest::Data("esbc-2020-177/esbc1770.20o")), RecCodeTrack::P1P2, true, ""},  // "SEPT POLARX5" + blanks
        {RinexReceiver(orvotest::Data("zimm-2015-235/ZIMM2350.15O")), RecCodeTrack::C1P2, true, ""},  // "TRIMBLE NETR9" + blanks
        {"TRIMBLE 4000SSI", RecCodeTrack::C1X2, true, ""},
        {"TRIMBLE 4000SE", RecCodeTrack::P1P2, true, Warning("RECEIVER: TRIMBLE 4000SE" + noClass)},  // one frequency
        {"ASHTECH Z-XII3", RecCodeTrack::P1P2, true, Warning("RECEIVER: ASHTECH Z-XII3" + noClass)},  // P1 with X2: no class
        {"JAVAD TRE_G3TH DELTA", RecCodeTrack::P1P2, false, Warning("RECEIVER: JAVAD TRE_G3TH DELTA" + notListed)},
        {"    ", RecCodeTrack::P1P2, false, Warning("RECEIVER: " + notListed)},  // no name matches no line
    };
    ASSERT_EQ(cases[0].rec.substr(0, 13), "SEPT POLARX5 ");
    RecCodeTrack t; t.SetFile(list.c_str());
    for (const Case& c : cases) {
        short cls = -1;
        EXPECT_EQ(Warned([&] { cls = t.GetRecCodeTrack(c.rec.c_str()); }), c.warning) << c.rec;
        EXPECT_EQ(cls, c.cls) << c.rec;
        EXPECT_EQ(t.CheckRecName(c.rec.c_str()), c.listed) << c.rec;
    }
    // A list gone after the argument checks gives P1P2 without a word.
    std::remove(list.c_str());
    EXPECT_EQ(Warned([&] { EXPECT_EQ(t.GetRecCodeTrack("TRIMBLE NETR9"), RecCodeTrack::P1P2); }), "");
}

TEST(RecCodeTrackDeath, MissingListAndBrokenEntriesStop)
{
    EXPECT_EXIT(RecCodeTrack().SetFile((orvotest::TempDir() + "/none.lst").c_str()), ::testing::ExitedWithCode(1),
                Framed("RECEIVER LIST FILE CAN NOT BE OPENED \\(CODE TRACKING TECHNIQUE\\)! \\*\\*\\*\\*"));
    const std::string netr9 = Entry("TRIMBLE NETR9", "C1", "P2");
    const Broken cases[] = {{"three.lst", Fmt("%-20s   3     C1\n", "TRIMBLE NETR9"), "line 1: NUMBER OF FREQUENCIES \\(COLUMN 24\\) NOT 1 OR 2!"},
                            {"end.lst", netr9.substr(0, netr9.find('\n') + 1), "line 1: FILE ENDS BEFORE THE SECOND FREQUENCY!"},
                            {"cut.lst", netr9.substr(0, netr9.size() - 3) + "\n", "line 2: LINE ENDS BEFORE THE CODE \\(COLUMNS 30-31\\)!"}};
    for (const Broken& b : cases) {
        RecCodeTrack t; t.SetFile(WriteTemp(b.name, b.text).c_str());
        EXPECT_EXIT(t.GetRecCodeTrack("TRIMBLE NETR9"), ::testing::ExitedWithCode(1), Framed("RECEIVER LIST FILE .*" + b.error)) << b.name;
    }
}
