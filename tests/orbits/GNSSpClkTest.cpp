// RINEX clock reader and the cubic clock interpolation, on the GRG 30-s
// clock file of the ESBC set and variants cut from it.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "orbits/GNSSpClk.h"
#include "orbits/GNSSpEph.h"
#include "numerics/NearLD.h"

using orvotest::Data;
using orvotest::WriteTemp;

namespace {

const std::string kClk = Data("esbc-2020-177/GRG0MGXFIN_20201770000_01D_30S_CLK.CLK");
const std::string kSp3 = Data("esbc-2020-177/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3");

// The file as parsed by the test itself: header lines, and per epoch the
// date text and the AS values by satellite name ("G21").
struct ClockText {
    std::vector<std::string> header;
    std::vector<std::string> dates;
    std::vector<std::map<std::string, std::string>> values;  // value text from column 38
    std::vector<std::vector<std::string>> records;          // AS lines per epoch, in order
};

const ClockText& Parsed()
{
    static ClockText* t = nullptr;
    if (t) return *t;
    t = new ClockText;
    std::ifstream in(kClk);
    std::string line;
    bool header = true;
    while (std::getline(in, line)) {
        if (header) {
            t->header.push_back(line);
            if (line.find("END OF HEADER") != std::string::npos) header = false;
            continue;
        }
        if (line.compare(0, 2, "AS") != 0) continue;
        const std::string date = line.substr(8, 26);
        if (t->dates.empty() || t->dates.back() != date) {
            t->dates.push_back(date);
            t->values.emplace_back();
            t->records.emplace_back();
        }
        t->values.back()[line.substr(3, 3)] = line.substr(38);
        t->records.back().push_back(line);
    }
    return *t;
}

long double Value(long epochIx, const std::string& sat)
{
    return std::strtold(Parsed().values.at(epochIx).at(sat).c_str(), nullptr);
}

std::string Join(const std::vector<std::string>& lines)
{
    std::string s;
    for (const std::string& l : lines) s += l + "\n";
    return s;
}

// A clock file of the header and the AS records of the chosen epochs.
std::string ClockFileOf(const std::vector<long>& epochs)
{
    std::string s = Join(Parsed().header);
    for (long e : epochs) s += Join(Parsed().records.at(e));
    return s;
}

std::unique_ptr<GNSSpClk> Load(const std::string& path)
{
    auto c = std::make_unique<GNSSpClk>();
    c->SetFile(path.c_str());
    c->ReadFile();
    return c;
}

// 2020-06-25 is MJD 59025; epoch k of the file is k*30 s into it.
mjd Epoch(long k, long double offset_s = 0.0L)
{
    mjd t(59025UL, 0.0L);
    t += 30.0L * k + offset_s;
    return t;
}

// Plain Lagrange polynomial through (t_i, y_i) in seconds, written here
// without the program's minute units and fixed denominators.
long double Lagrange(const long double* t, const long double* y, int n, long double x)
{
    long double sum = 0.0L;
    for (int i = 0; i < n; ++i) {
        long double b = 1.0L;
        for (int j = 0; j < n; ++j)
            if (j != i) b *= (x - t[j]) / (t[i] - t[j]);
        sum += y[i] * b;
    }
    return sum;
}

class GrgClock : public ::testing::Test {
protected:
    static void SetUpTestSuite() { clk = Load(kClk).release(); }
    static void TearDownTestSuite() { delete clk; }
    static GNSSpClk* clk;
};
GNSSpClk* GrgClock::clk = nullptr;

// At a node every other term has an exact zero factor and the node's own
// term is the ratio of two equal cubes: 1e-17 s covers the round-off on
// clocks of 1e-3 s.
constexpr long double NodeTol_s = 1e-17L;

}  // namespace

TEST_F(GrgClock, CountsEpochsAndSatellites)
{
    EXPECT_EQ(clk->GetNEpoch(), 2880);
    EXPECT_EQ(clk->GetNSatList(), 75);  // five full list lines of 15
    EXPECT_EQ(static_cast<long>(Parsed().dates.size()), 2880L);
}

TEST_F(GrgClock, NodeValuesComeBackAtTheirEpochs)
{
    const char* names[] = {"E01", "R24", "G32", "G01"};
    const short numbers[] = {201, 124, 32, 1};
    for (int s = 0; s < 4; ++s)
        for (long k : {0L, 1L, 2L, 1437L, 2877L, 2878L, 2879L}) {
            mjd t = Epoch(k);
            clk->SetEpochIndex(t);
            EXPECT_EQ(clk->GetEpochIx(), k);
            long double dt = 0.0L;
            short prn = numbers[s];
            clk->GetSatelliteClock(prn, t, dt);
            ASSERT_TRUE(clk->DTisOK) << names[s] << " " << k;
            EXPECT_NEAR_LD(dt, Value(k, names[s]), NodeTol_s) << names[s] << " " << k;
        }
}

// Same analysis centre, same solution: the SP3 clock is the RINEX clock
// rounded to 1e-6 µs. The measured largest difference is exactly half that
// unit, 5e-13 s; 1e-15 s more covers the decimal-to-binary round-off.
constexpr long double Sp3ClkTol_s = 0.5e-12L + 1e-15L;

TEST_F(GrgClock, AgreesWithTheSp3ClockOfTheSameCentre)
{
    GNSSpEph eph;
    eph.SetFile(kSp3.c_str());
    eph.ReadFile();
    long compared = 0;
    for (long k = 0; k < eph.GetNEpoch(); ++k) {
        mjd t = eph.GetMJD(k);
        clk->SetEpochIndex(t);
        for (long j = 0; j < eph.GetNSat(); ++j) {
            short sat = eph.GetSatList(j);
            xyzt p, v;
            eph.CalcSatPosition(static_cast<unsigned short>(sat), t, p, v);
            long double dt = 0.0L;
            clk->GetSatelliteClock(sat, t, dt);
            ASSERT_TRUE(eph.DTisOK && clk->DTisOK) << sat << " " << k;
            EXPECT_NEAR_LD(dt, p.dt, Sp3ClkTol_s) << sat << " epoch " << k;
            ++compared;
        }
    }
    EXPECT_EQ(compared, 96L * 75L);
}

// Between nodes: the cubic through the four rows equals the Lagrange
// polynomial computed here in seconds, on real epochs, to round-off; and
// 300 s before the file it extrapolates the first four rows, unwarned.
constexpr long double CubicTol_s = 1e-16L;

TEST_F(GrgClock, CubicThroughTheFourRowsAndExtrapolationAtTheEnds)
{
    struct Case { long double offset_s; long first; };
    // Epoch index 1000 + 10 s: rows 999..1002; 2879 + 200 s: last four.
    const Case cases[] = {{30000.0L + 10.0L, 999}, {30.0L * 2879 + 200.0L, 2876}, {-300.0L, 0},
                          {30.0L * 2877 + 17.0L, 2876}};
    for (const Case& c : cases) {
        mjd t = Epoch(0, c.offset_s);
        testing::internal::CaptureStderr();
        clk->SetEpochIndex(t);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        long double ts[4], ys[4];
        for (int i = 0; i < 4; ++i) {
            ts[i] = 30.0L * (c.first + i);
            ys[i] = Value(c.first + i, "G05");
        }
        short prn = 5;
        long double dt = 0.0L;
        clk->GetSatelliteClock(prn, t, dt);
        ASSERT_TRUE(clk->DTisOK);
        EXPECT_NEAR_LD(dt, Lagrange(ts, ys, 4, c.offset_s), CubicTol_s) << c.offset_s;
    }
}

// Every second epoch dropped (60 s): the removed 30-s values come back from
// the cubic within the clocks' own short-term noise. Measured worst over
// these eleven clocks and 195 epochs: 0.35 ns (G05, a noisy rubidium
// clock), most below 0.1 ns. 1 ns bounds it; the exact arithmetic of the
// cubic is pinned by the test above.
constexpr long double ThinnedClockTol_s = 1e-9L;

TEST(GNSSpClkReader, ThinnedFileReproducesTheRemovedEpochs)
{
    std::vector<long> even;
    for (long k = 0; k < 400; k += 2) even.push_back(k);
    auto thin = Load(WriteTemp("thin.clk", ClockFileOf(even)));
    ASSERT_EQ(thin->GetNEpoch(), 200);
    long double worst = 0.0L;
    long checked = 0;
    for (short prn : {1, 2, 5, 12, 30, 101, 107, 124, 201, 211, 236}) {
        const std::string name = std::string(1, prn > 200 ? 'E' : prn > 100 ? 'R' : 'G')
                                 + (prn % 100 < 10 ? "0" : "") + std::to_string(prn % 100);
        for (long k = 5; k < 395; k += 2) {
            mjd t = Epoch(k);
            thin->SetEpochIndex(t);
            long double dt = 0.0L;
            thin->GetSatelliteClock(prn, t, dt);
            if (!thin->DTisOK) continue;
            ++checked;
            const long double err = std::fabs(dt - Value(k, name));
            EXPECT_LT(err, ThinnedClockTol_s) << name << " " << k;
            if (err > worst) worst = err;
        }
    }
    // The skip above must not thin the comparison: every one of the 11
    // satellites has a clock at each of the 195 removed epochs.
    EXPECT_EQ(checked, 11L * 195L);
    // Exactly zero everywhere would mean the dropped rows were still read.
    EXPECT_GT(worst, 1e-12L);
}

TEST_F(GrgClock, EpochIndexSearchesAndTheirWarnings)
{
    mjd t = Epoch(1000, 10.0L);
    clk->SetEpochIndex(t);
    EXPECT_EQ(clk->GetEpochIx(), 1000);
    // From the old index: inside [1000, 1001) it stays.
    clk->SetEpochIndex(t, 1000);
    EXPECT_EQ(clk->GetEpochIx(), 1000);
    // Walking up stops on the first epoch not before the request: one above
    // the full search when the request lies between two epochs.
    mjd between = Epoch(1005, 10.0L);
    clk->SetEpochIndex(between, 1000);
    EXPECT_EQ(clk->GetEpochIx(), 1006);
    mjd onNode = Epoch(1005);
    clk->SetEpochIndex(onNode, 1000);
    EXPECT_EQ(clk->GetEpochIx(), 1005);
    // Walking down ends on the last epoch not after the request.
    mjd down = Epoch(996, 10.0L);
    clk->SetEpochIndex(down, 1000);
    EXPECT_EQ(clk->GetEpochIx(), 996);
    mjd last = Epoch(2879);
    clk->SetEpochIndex(last);
    EXPECT_EQ(clk->GetEpochIx(), 2879);

    struct Out { long double offset_s; long ix; const char* text; };
    const Out outs[] = {
        {-300.0L, 0, nullptr},
        {-301.0L, 0, "RINEX CLOCK - GETTING INDEX - INPUT EPOCH OUT OF DATA INTERVAL (<-300s)"},
        {30.0L * 2879 + 300.0L, 2879, nullptr},
        {30.0L * 2879 + 301.0L, 2879, "RINEX CLOCK - GETTING INDEX - INPUT EPOCH OUT OF DATA INTERVAL (>300s)"},
    };
    for (const Out& o : outs)
        for (int form = 0; form < 2; ++form) {
            mjd r = Epoch(0, o.offset_s);
            testing::internal::CaptureStderr();
            if (form == 0) clk->SetEpochIndex(r);
            else clk->SetEpochIndex(r, 1500);
            const std::string err = testing::internal::GetCapturedStderr();
            EXPECT_EQ(clk->GetEpochIx(), o.ix);
            if (o.text) {
                EXPECT_NE(err.find(std::string("#### Orvo: Warning -> ") + o.text + " ####"), std::string::npos)
                    << err;
            } else {
                EXPECT_EQ(err, "");
            }
        }
}

TEST_F(GrgClock, MissingRowLosesTheClockOfEveryWindowHoldingIt)
{
    long missing = -1;
    for (long k = 0; k < static_cast<long>(Parsed().values.size()); ++k)
        if (!Parsed().values[k].count("G21")) missing = k;
    ASSERT_GE(missing, 4);  // the README: G21 misses one epoch
    // Rows of index e are e-1 .. e+2: the gap is in them for e from
    // missing-2 to missing+1.
    for (long e = missing - 4; e <= missing + 3; ++e) {
        mjd t = Epoch(e, 10.0L);
        clk->SetEpochIndex(t);
        short prn = 21;
        long double dt = -7.0L;
        clk->GetSatelliteClock(prn, t, dt);
        const bool expectOK = e < missing - 2 || e > missing + 1;
        EXPECT_EQ(clk->DTisOK, expectOK) << "index " << e;
        if (!expectOK) {
            EXPECT_EQ(dt, -7.0L);
        }
    }
}

TEST_F(GrgClock, UnknownSatellitesGiveNoClock)
{
    mjd t = Epoch(100);
    clk->SetEpochIndex(t);
    for (short prn : {4, 0, -1, 150, 699, 700, 32000}) {
        long double dt = 3.0L;
        clk->GetSatelliteClock(prn, t, dt);
        EXPECT_FALSE(clk->DTisOK) << prn;
        EXPECT_EQ(dt, 3.0L);
    }
}

// The 3.04 layout: label at column 65 and type at 21, sixteen satellites a
// list line, date text from column 13. The same records written that way
// must give the same clocks.
TEST(GNSSpClkReader, Version304LayoutReadsTheSameClocks)
{
    auto pad = [](std::string s, std::size_t n) { s.resize(n, ' '); return s; };
    std::string f = pad(pad("     3.04", 21) + "C", 65) + "RINEX VERSION / TYPE\n";
    f += pad("    75", 65) + "# OF SOLN SATS\n";
    std::vector<std::string> sats;
    for (const auto& kv : Parsed().values[0]) sats.push_back(kv.first);
    ASSERT_EQ(sats.size(), 75u);
    std::string list;
    for (std::size_t i = 0; i < sats.size(); ++i) {
        list += sats[i] + " ";
        if (i % 16 == 15 || i + 1 == sats.size()) {
            f += pad(list, 65) + "PRN LIST\n";
            list.clear();
        }
    }
    f += pad("", 65) + "END OF HEADER\n";
    for (long k = 0; k < 8; ++k)
        for (const auto& kv : Parsed().values[k]) {
            const std::string& d = Parsed().dates[k];  // "2020  6 25  0  0  0.000000"
            const std::string date = d.substr(0, 4) + " 0" + d.substr(6, 1) + " " + d.substr(8, 2) + " 0"
                                     + d.substr(12, 1) + " 0" + d.substr(15, 1) + d.substr(16);
            f += "AS " + kv.first + "      " + " " + date + "  2 " + kv.second + "\n";
        }
    auto c304 = Load(WriteTemp("v304.clk", f));
    EXPECT_EQ(c304->GetNEpoch(), 8);
    EXPECT_EQ(c304->GetNSatList(), 75);
    std::vector<long> first8 = {0, 1, 2, 3, 4, 5, 6, 7};
    auto c300 = Load(WriteTemp("v300.clk", ClockFileOf(first8)));
    for (short prn : {1, 32, 101, 124, 201, 236}) {
        for (long double off : {0.0L, 45.0L, 200.0L}) {
            mjd t = Epoch(0, off);
            c304->SetEpochIndex(t);
            c300->SetEpochIndex(t);
            long double a = 0.0L, b = 0.0L;
            c304->GetSatelliteClock(prn, t, a);
            c300->GetSatelliteClock(prn, t, b);
            ASSERT_TRUE(c304->DTisOK && c300->DTisOK);
            // 1e-20 s: both files hold the same digits, so the two readings must give
            // the same clock up to long double round-off of values near 1e-4 s.
            EXPECT_NEAR_LD(a, b, 1e-20L) << prn;
        }
    }
}

TEST(GNSSpClkReader, WholeListLinesStopAtTheLastNeededLine)
{
    // Exactly 15 satellites in a version 3.00 file: one list line, and the
    // very next line is END OF HEADER. Reading nsat/15 + 1 = 2 list lines
    // would swallow it and never find the header's end. The AS records of
    // the 60 satellites outside the list are passed over.
    const std::vector<std::string>& h = Parsed().header;
    std::size_t list = 0;
    while (list < h.size() && h[list].find("PRN LIST") == std::string::npos) ++list;
    ASSERT_LT(list, h.size());
    std::string sats = h[list];  // E01 ... E19
    std::string f = h[0] + "\n";
    f += std::string("    15") + std::string(54, ' ') + "# OF SOLN SATS\n";
    f += sats + "\n";
    f += std::string(60, ' ') + "END OF HEADER\n";
    for (long k = 0; k < 5; ++k) f += Join(Parsed().records.at(k));
    auto c = Load(WriteTemp("fifteen.clk", f));
    EXPECT_EQ(c->GetNSatList(), 15);
    EXPECT_EQ(c->GetNEpoch(), 5);
    // The 15th entry is readable at a node; the first one left out is not.
    const std::string last = sats.substr(4 * 14, 3);
    short prn = static_cast<short>(200 + std::atoi(last.c_str() + 1));
    mjd t = Epoch(2);
    c->SetEpochIndex(t);
    long double dt = 0.0L;
    c->GetSatelliteClock(prn, t, dt);
    ASSERT_TRUE(c->DTisOK);
    EXPECT_NEAR_LD(dt, Value(2, last), NodeTol_s);
    short outside = 221;  // E21 opens the second list line of the real file
    c->GetSatelliteClock(outside, t, dt);
    EXPECT_FALSE(c->DTisOK);
}

namespace {
void ReadClk(const std::string& path)
{
    GNSSpClk c;
    c.SetFile(path.c_str());
    c.ReadFile();
}
const char* kFramed = "\\*\\*\\*\\* Orvo: Error -> ";
}  // namespace

TEST(GNSSpClkDeath, FirstLineProblems)
{
    std::vector<std::string> h = Parsed().header;
    std::string body = ClockFileOf({0, 1, 2, 3});
    body = body.substr(body.find('\n') + 1);  // without its first line
    EXPECT_EXIT(ReadClk(WriteTemp("nolabel.clk", "     3.00           C\n" + body)), ::testing::ExitedWithCode(1),
                std::string(kFramed) + "INPUT RINEX CLOCK FILE IS NOT IN RINEX FORMAT - RINEX VERSION / TYPE NOT IN FIRST LINE");
    EXPECT_EXIT(ReadClk(WriteTemp("shifted.clk", "  " + h[0] + "\n" + body)), ::testing::ExitedWithCode(1),
                std::string(kFramed) + "INPUT RINEX CLOCK FILE FIRST LINE PROBLEM - RINEX VERSION / TYPE NOT AT POSITION 60 OR 65");
    std::string obsType = h[0];
    obsType[20] = 'O';
    EXPECT_EXIT(ReadClk(WriteTemp("type.clk", obsType + "\n" + body)), ::testing::ExitedWithCode(1),
                std::string(kFramed) + "RINEX CLOCK FILE IS NOT IN RINEX CLOCK FORMAT - RINEX TYPE IS NOT 'C'");
    EXPECT_EXIT(ReadClk(orvotest::TempDir() + "/absent.clk"), ::testing::ExitedWithCode(1),
                std::string(kFramed) + "RINEX CLOCK FILE .*absent.clk CAN NOT BE OPENED!");
}

TEST(GNSSpClkDeath, CutOrShortFilesStop)
{
    const std::vector<std::string>& h = Parsed().header;
    // Cut in the header, and cut inside the satellite list.
    EXPECT_EXIT(ReadClk(WriteTemp("cuthead.clk", Join(std::vector<std::string>(h.begin(), h.begin() + 100)))),
                ::testing::ExitedWithCode(1), std::string(kFramed) + "RINEX CLOCK FILE - UNSUCCESFUL READING \\(HEADER\\)");
    std::size_t soln = 0;
    while (h[soln].find("# OF SOLN SATS") == std::string::npos) ++soln;
    EXPECT_EXIT(ReadClk(WriteTemp("cutlist.clk", Join(std::vector<std::string>(h.begin(), h.begin() + soln + 3)))),
                ::testing::ExitedWithCode(1), std::string(kFramed) + "RINEX CLOCK FILE - UNSUCCESFUL READING \\(HEADER\\)");
    // A list line shorter than its entries.
    std::vector<std::string> shortList = h;
    shortList[soln + 2].resize(20);
    EXPECT_EXIT(ReadClk(WriteTemp("shortlist.clk", Join(shortList) + Join(Parsed().records[0]))),
                ::testing::ExitedWithCode(1), std::string(kFramed) + ".*satellite list line ends before entry 21");
    // Three epochs are too few for the four-node cubic.
    EXPECT_EXIT(ReadClk(WriteTemp("three.clk", ClockFileOf({0, 1, 2}))), ::testing::ExitedWithCode(1),
                std::string(kFramed) + ".*fewer than four epochs of AS records \\(3\\)");
    // An AS record cut before its clock value.
    std::string cutRec = ClockFileOf({0, 1, 2, 3, 4});
    const std::size_t at = cutRec.rfind("AS ");
    cutRec = cutRec.substr(0, at + 30) + "\n";
    EXPECT_EXIT(ReadClk(WriteTemp("cutrec.clk", cutRec)), ::testing::ExitedWithCode(1),
                std::string(kFramed) + ".*line [0-9]+: AS record too short");
    // Epochs out of time order.
    EXPECT_EXIT(ReadClk(WriteTemp("order.clk", ClockFileOf({0, 1, 3, 2, 4}))), ::testing::ExitedWithCode(1),
                std::string(kFramed) + ".*epochs are not in increasing time order");
}
