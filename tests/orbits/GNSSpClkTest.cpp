// RINEX clock reader and the cubic clock interpolation, on the GRG 30-s
// clock file of the ESBC set and variants cut from it.
#include "OrbitsSupport.h"
#include "orbits/GNSSpClk.h"
#include "orbits/GNSSpEph.h"

#include <tuple>

using namespace orbtest;

namespace {

// At a node every other term has an exact zero factor and the node's own
// term is the ratio of two equal cubes: 1e-17 s covers the round-off on
// clocks of 1e-3 s.
constexpr long double NodeTol_s = 1e-17L;

// The file as parsed by the test itself: its header lines, and the AS
// lines of each epoch in order.
struct ClockText { std::vector<std::string> header; std::vector<std::vector<std::string>> epochs; };
const ClockText kText = [] {
    ClockText c;
    for (const std::string& l : FileLines(kClk))
        if (c.header.empty() || c.header.back().find("END OF HEADER") == std::string::npos) c.header.push_back(l);
        else if (l.compare(0, 2, "AS") == 0 && (c.epochs.empty() || c.epochs.back()[0].compare(8, 26, l, 8, 26) != 0))
            c.epochs.push_back({l});
        else if (l.compare(0, 2, "AS") == 0) c.epochs.back().push_back(l);
    return c;
}();

// The clock (s) of satellite name ("G21") at epoch k as the file holds it;
// NaN where it holds none.
long double Value(long k, const std::string& name)
{
    for (const std::string& l : kText.epochs.at(k)) if (l.compare(3, 3, name) == 0) return std::strtold(l.c_str() + 38, nullptr);
    return NAN;
}

// A clock file of the header and the AS records of the chosen epochs.
std::string ClockFileOf(const std::vector<long>& epochs)
{
    std::string s = Join(kText.header); for (long e : epochs) s += Join(kText.epochs.at(e));
    return s;
}

// Epoch k of the file is k*30 s into 2020-06-25.
mjd Epoch(long k, long double offset_s = 0.0L) { return Plus(mjd(Jun25, 0.0L), 30.0L * k + offset_s); }

// The clock of prn at t with the index searched afresh (dt where none);
// DTisOK tells.
long double ClockAt(GNSSpClk& c, short prn, mjd t, long double dt = 0.0L) { return c.SetEpochIndex(t), c.GetSatelliteClock(prn, t, dt), dt; }

GNSSpClk& Grg() { return Shared<GNSSpClk>(kClk); }

// The clock file of epochs 0..7 with G05's bias at epoch 3 written as text.
std::string WithG05Bias(const std::string& name, const std::string& bias)
{
    std::string f = Join(kText.header);
    for (long e = 0; e < 8; ++e) for (std::string l : kText.epochs.at(e)) f += (e == 3 && l.compare(3, 3, "G05") == 0 ? l.replace(40, 19, bias) : l) + "\n";
    return WriteTemp(name, f);
}

}  // namespace

// Between nodes the cubic through the four rows equals the Lagrange
// polynomial computed here in seconds, on real epochs, to round-off; and
// up to 300 s outside the file it extrapolates the end rows, unwarned. At a
// node every other term has an exact zero factor and the node's own term
// is the ratio of two equal cubes.
constexpr long double CubicTol_s = 1e-16L;

TEST(GNSSpClk, CubicThroughTheFourRowsAndNoneBeyondTheFile)
{
    // Epoch index 1000 + 10 s: rows 999..1002; near the end: the last four;
    // nodes at both ends and in the middle.
    const struct { long double offset_s; long first; } cases[] = {
        {30010.0L, 999}, {30.0L * 2877 + 17.0L, 2876}, {0.0L, 0}, {-0.9L, 0}, {30.0L * 2879 + 0.9L, 2876},
        {30.0L, 0}, {30.0L * 1437, 1436}, {30.0L * 2878, 2876}, {30.0L * 2879, 2876}};
    for (const auto& c : cases)
        for (short prn : {5, 201, 124, 32}) {
            long double ts[4], ys[4]; orvotest::Capture err(std::cerr);
            for (int i = 0; i < 4; ++i) ts[i] = 30.0L * (c.first + i), ys[i] = Value(c.first + i, SatName(prn));
            EXPECT_NEAR_LD(ClockAt(Grg(), prn, Epoch(0, c.offset_s)), Lagrange(ts, ys, 4, c.offset_s), CubicTol_s) << prn << " " << c.offset_s;
            EXPECT_TRUE(Grg().DTisOK && err.Text().empty()) << err.Text();
        }
    // More than a second before the first or after the last epoch the cubic
    // is not carried: no clock (the 300 s warning stays as it was).
    for (long double off : {-1.1L, -300.0L, 30.0L * 2879 + 1.1L, 30.0L * 2879 + 200.0L}) {
        orvotest::Capture err(std::cerr);
        EXPECT_TRUE(ClockAt(Grg(), 5, Epoch(0, off), -7.0L) == -7.0L && !Grg().DTisOK) << off;
    }
    // Four rows across a gap in the file are not equally spaced: no clock
    // there, but on both sides of it.
    std::vector<long> kept;
    for (long e = 0; e < 40; ++e) if (e < 15 || e > 19) kept.push_back(e);
    const auto gap = Load<GNSSpClk>(orvotest::WriteTemp("gap.clk", ClockFileOf(kept)));
    for (const auto& [k, ok] : {std::pair{10L, true}, {14L, false}, {15L, false}, {30L, true}}) {
        orvotest::Capture err(std::cerr);
        ClockAt(*gap, 5, Epoch(k < 15 ? k : k + 5, 10.0L));
        EXPECT_EQ(gap->DTisOK, ok) << k;
    }
}

// Same analysis centre, same solution: the SP3 clock is the RINEX clock
// rounded to 1e-6 µs. The measured largest difference is exactly half that
// unit, 5e-13 s; 1e-15 s more covers the decimal-to-binary round-off.
constexpr long double Sp3ClkTol_s = 0.5e-12L + 1e-15L;

TEST(GNSSpClk, AgreesWithTheSp3ClockOfTheSameCentre)
{
    // 2880 epochs; 75 satellites in five full list lines of 15.
    EXPECT_TRUE(Grg().GetNEpoch() == 2880 && kText.epochs.size() == 2880u && Grg().GetNSatList() == 75);
    GNSSpEph& eph = Shared<GNSSpEph>(kSp3); long compared = 0;
    for (long k = 0; k < eph.GetNEpoch(); ++k)
        for (long j = 0; j < eph.GetNSat(); ++j, ++compared) {
            mjd t = eph.GetMJD(k); xyzt p, v; eph.CalcSatPosition(static_cast<unsigned short>(eph.GetSatList(j)), t, p, v);
            EXPECT_NEAR_LD(ClockAt(Grg(), eph.GetSatList(j), t), p.dt, Sp3ClkTol_s) << eph.GetSatList(j) << " " << k;
            ASSERT_TRUE(eph.DTisOK && Grg().DTisOK) << eph.GetSatList(j) << " " << k;
        }
    EXPECT_EQ(compared, 96L * 75L);
}

// A span keeps its epochs and five on either side, whose clocks are the
// whole file's to the bit (the same four nodes, the same cubic) at nodes,
// between them and at an emission just before the first; a span beyond the
// file keeps all of it. Past the margin behind the span the file is not
// read: a disorder there stops the whole file's reading but not the span's.
TEST(GNSSpClk, ASpanKeepsItsEpochsWithTheWholeFilesClocks)
{
    GNSSpClk part, beyond;
    part.SetFile(kClk.c_str());
    part.SetSpan(Epoch(1000), Epoch(1719));
    part.ReadFile();
    ASSERT_EQ(part.GetNEpoch(), 720 + 2 * GNSSpClkns::SpanMarginEpochs);
    EXPECT_NEAR_LD(part.GetMJD(0) - Epoch(1000 - GNSSpClkns::SpanMarginEpochs), 0.0L, 0.0L);
    GNSSpEph& eph = Shared<GNSSpEph>(kSp3);
    long compared = 0;
    for (long k = 1000; k <= 1719; k += 7)
        for (long double offset : {0.0L, 12.5L, -0.075L})
            for (long j = 0; j < eph.GetNSat(); j += 4) {
                const short prn = eph.GetSatList(j);
                const long double whole = ClockAt(Grg(), prn, Epoch(k, offset));
                const bool wholeOK = Grg().DTisOK;
                EXPECT_NEAR_LD(ClockAt(part, prn, Epoch(k, offset)), whole, 0.0L) << prn << " " << k;
                EXPECT_EQ(part.DTisOK, wholeOK) << prn << " " << k;
                compared += wholeOK ? 1 : 0;
            }
    EXPECT_GT(compared, 1500);
    beyond.SetFile(kClk.c_str());
    beyond.SetSpan(Epoch(5000), Epoch(6000));
    beyond.ReadFile();
    EXPECT_EQ(beyond.GetNEpoch(), 2880);

    std::vector<long> disordered;
    for (long e = 0; e < 40; ++e) disordered.push_back(e == 22 ? 3 : e);
    const std::string name = WriteTemp("late_disorder.clk", ClockFileOf(disordered));
    for (const auto& [first, last, kept] : {std::tuple{10L, 13L, 14L}, {10L, 15L, 16L}}) {
        GNSSpClk early;
        early.SetFile(name.c_str());
        early.SetSpan(Epoch(first), Epoch(last));
        early.ReadFile();
        ASSERT_EQ(early.GetNEpoch(), kept) << first << " " << last;
        EXPECT_NEAR_LD(ClockAt(early, 5, Epoch(12, 3.0L)), ClockAt(Grg(), 5, Epoch(12, 3.0L)), 0.0L);
    }
    EXPECT_EXIT(Load<GNSSpClk>(name), ::testing::ExitedWithCode(1), Framed(".*epochs are not in increasing time order"));
    // A file cut short is seen at its end all the same, on its own line.
    std::vector<long> forty(40);
    for (long e = 0; e < 40; ++e) forty[static_cast<size_t>(e)] = e;
    const std::string whole = ClockFileOf(forty), cut = whole.substr(0, whole.size() - 30) + "\n";
    const std::string cutName = WriteTemp("cut_behind_span.clk", cut);
    const auto lines = std::count(cut.begin(), cut.end(), '\n');
    EXPECT_EXIT({
        GNSSpClk c;
        c.SetFile(cutName.c_str());
        c.SetSpan(Epoch(10), Epoch(13));
        c.ReadFile();
    }, ::testing::ExitedWithCode(1), Framed(".*line " + std::to_string(lines) + ": AS record too short"));
}

TEST(GNSSpClk, EpochIndexSearchesAndTheirWarnings)
{
    // Search from an old index 1000: inside [1000, 1001) it stays; walking
    // up stops on the first epoch not before the request (one above the
    // full search between two epochs); walking down on the last one not
    // after it. Old index -1 is a full search.
    const struct { long k; long double off_s; long old, ix; } walks[] = {
        {1000, 10.0L, -1, 1000}, {1000, 10.0L, 1000, 1000}, {1005, 10.0L, 1000, 1006},
        {1005, 0.0L, 1000, 1005}, {996, 10.0L, 1000, 996}, {2879, 0.0L, -1, 2879}};
    for (const auto& w : walks) {
        mjd t = Epoch(w.k, w.off_s); w.old < 0 ? Grg().SetEpochIndex(t) : Grg().SetEpochIndex(t, w.old);
        EXPECT_EQ(Grg().GetEpochIx(), w.ix) << w.k << " from " << w.old;
    }
    const std::string out = "#### Orvo: Warning -> RINEX CLOCK - GETTING INDEX - INPUT EPOCH OUT OF DATA INTERVAL ";
    const struct { long double offset_s; long ix; std::string text; } outs[] = {
        {-300.0L, 0, ""}, {-301.0L, 0, out + "(<-300s) ####"},
        {30.0L * 2879 + 300.0L, 2879, ""}, {30.0L * 2879 + 301.0L, 2879, out + "(>300s) ####"}};
    for (const auto& o : outs)
        for (long old : {-1L, 1500L}) {
            mjd r = Epoch(0, o.offset_s); orvotest::Capture err(std::cerr); old < 0 ? Grg().SetEpochIndex(r) : Grg().SetEpochIndex(r, old);
            EXPECT_TRUE(Grg().GetEpochIx() == o.ix && o.text.empty() ? err.Text().empty() : err.Text().find(o.text) != std::string::npos) << err.Text();
        }
}

TEST(GNSSpClk, MissingOrImpossibleRowsAndUnknownSatellitesGiveNoClock)
{
    long missing = -1;
    for (long k = 0; k < 2880; ++k) missing = std::isnan(Value(k, "G21")) ? k : missing;
    ASSERT_GE(missing, 4);  // the README: G21 misses one epoch
    // Rows of index e are e-1 .. e+2: the gap is in them for e from
    // missing-2 to missing+1, and the clock is left alone there.
    for (long e = missing - 4; e <= missing + 3; ++e) {
        const bool ok = e < missing - 2 || e > missing + 1, kept = ClockAt(Grg(), 21, Epoch(e, 10.0L), -7.0L) == -7.0L;
        EXPECT_TRUE(Grg().DTisOK == ok && (ok || kept)) << "index " << e;
    }
    for (short prn : {4, 0, -1, 150, 699, 700, 32000})
        EXPECT_TRUE(ClockAt(Grg(), prn, Epoch(100), 3.0L) == 3.0L && !Grg().DTisOK) << prn;
    // A system the program does not process (I, S) stays its own: its
    // records, listed or not, never stand in for the GPS satellite of the
    // same number.
    std::vector<std::string> lines;
    for (const std::string& l : kText.header) lines.push_back(l);
    for (long e = 0; e < 8; ++e)
        for (const std::string& l : kText.epochs.at(e)) {
            lines.push_back(l);
            if (l.compare(3, 3, "G01") == 0)
                for (const char* other : {"I01", "S01"}) lines.push_back(l.substr(0, 3) + other + l.substr(6, 32) + "  5.000000000000E-01");
        }
    const auto foreign = Load<GNSSpClk>(orvotest::WriteTemp("foreign.clk", Join(lines)));
    EXPECT_EQ(ClockAt(*foreign, 1, Epoch(3)), Value(3, "G01"));
    // A bias beyond 0.1 s is refused as missing, counted and warned with its
    // line; the other satellites keep their values.
    std::size_t line = kText.header.size() + kText.epochs[0].size() + kText.epochs[1].size() + kText.epochs[2].size();
    for (const std::string& l : kText.epochs[3]) if (++line, l.compare(3, 3, "G05") == 0) break;
    for (const auto& [bias, refused] : {std::pair{" 0.100001000000E+00", true}, {"-0.999990000000E-01", false}}) {
        orvotest::Capture out(std::cout); const auto c = Load<GNSSpClk>(WithG05Bias("bound.clk", bias));
        EXPECT_EQ(out.Text().find("1 CLOCK VALUES BEYOND 0.1 S REFUSED AS MISSING, THE FIRST IN LINE " + std::to_string(line) + "!") != std::string::npos, refused);
        EXPECT_TRUE(c->GetRefused().size() == (refused ? 1u : 0u) && (ClockAt(*c, 5, Epoch(3)), c->DTisOK != refused)) << bias;
        EXPECT_NEAR_LD(ClockAt(*c, 6, Epoch(3)), Value(3, "G06"), NodeTol_s);
    }
}

// The 3.04 layout: label at column 65 and type at 21, sixteen satellites a
// list line, date text from column 13. The same records written that way
// must give the same clocks.
TEST(GNSSpClk, Version304LayoutReadsTheSameClocks)
{
    auto pad = [](std::string s, std::size_t n) { s.resize(n, ' '); return s; };
    std::string f = pad(pad("     3.04", 21) + "C", 65) + "RINEX VERSION / TYPE\n" + pad("    75", 65) + "# OF SOLN SATS\n";
    const std::vector<std::string>& first = kText.epochs[0]; ASSERT_EQ(first.size(), 75u);
    std::string list, data; for (std::size_t i = 0; i < first.size(); ++i)
        if ((list += first[i].substr(3, 4)).size() == 64 || i + 1 == first.size()) f += pad(list, 65) + "PRN LIST\n", list.clear();
    for (long k = 0; k < 8; ++k)
        for (const std::string& l : kText.epochs[k]) {
            // "2020  6 25  0  0  0.000000" written as "2020 06 25 00 00  0.000000"
            const std::string d = l.substr(8, 26);
            data += l.substr(0, 6) + "       " + d.substr(0, 4) + " 0" + d.substr(6, 1) + " " + d.substr(8, 2) + " 0"
                    + d.substr(12, 1) + " 0" + d.substr(15, 1) + d.substr(16) + "  2 " + l.substr(38) + "\n";
        }
    auto c304 = Load<GNSSpClk>(WriteTemp("v304.clk", f + pad("", 65) + "END OF HEADER\n" + data)),
         c300 = Load<GNSSpClk>(WriteTemp("v300.clk", ClockFileOf({0, 1, 2, 3, 4, 5, 6, 7})));
    EXPECT_TRUE(c304->GetNEpoch() == 8 && c304->GetNSatList() == 75);
    for (short prn : {1, 32, 101, 124, 201, 236})
        for (long double off : {0.0L, 45.0L, 200.0L}) {
            // Both files hold the same digits: round-off of values near 1e-4 s.
            EXPECT_NEAR_LD(ClockAt(*c304, prn, Epoch(0, off)), ClockAt(*c300, prn, Epoch(0, off)), 1e-20L) << prn;
            EXPECT_TRUE(c304->DTisOK && c300->DTisOK);
        }
}

TEST(GNSSpClk, WholeListLinesStopAtTheLastNeededLine)
{
    // Exactly 15 satellites in a version 3.00 file: one list line, and the
    // very next line is END OF HEADER. Reading nsat/15 + 1 = 2 list lines
    // would swallow it. The AS records of the 60 satellites outside the
    // list are passed over.
    std::size_t list = 0; while (list < kText.header.size() && kText.header[list].find("PRN LIST") == std::string::npos) ++list;
    ASSERT_LT(list, kText.header.size());
    std::string f = kText.header[0] + "\n    15" + std::string(54, ' ') + "# OF SOLN SATS\n" + kText.header[list] + "\n"
                    + std::string(60, ' ') + "END OF HEADER\n";
    auto c = Load<GNSSpClk>(WriteTemp("fifteen.clk", f + ClockFileOf({0, 1, 2, 3, 4}).substr(Join(kText.header).size())));
    EXPECT_TRUE(c->GetNSatList() == 15 && c->GetNEpoch() == 5);
    // The 15th entry (E19) is readable at a node; E21, the first one left
    // out, is not.
    EXPECT_NEAR_LD(ClockAt(*c, 219, Epoch(2)), Value(2, "E19"), NodeTol_s);
    EXPECT_TRUE(c->DTisOK && (ClockAt(*c, 221, Epoch(2)), !c->DTisOK));
}

TEST(GNSSpClkDeath, ForeignFirstLinesAndCutOrShortFilesStop)
{
    const std::vector<std::string>& h = kText.header;
    const std::string body = ClockFileOf({0, 1, 2, 3}).substr(h[0].size() + 1);  // without the first line
    std::size_t soln = 0; while (h[soln].find("# OF SOLN SATS") == std::string::npos) ++soln;
    std::vector<std::string> shortList = h; shortList[soln + 2].resize(20);
    const std::string cutRec = ClockFileOf({0, 1, 2, 3, 4}), header = "RINEX CLOCK FILE - UNSUCCESFUL READING \\(HEADER\\)";
    ExpectEachStops<GNSSpClk>({
        {"nolabel.clk", "     3.00           C\n" + body,
         Framed("INPUT RINEX CLOCK FILE IS NOT IN RINEX FORMAT - RINEX VERSION / TYPE NOT IN FIRST LINE")},
        {"shifted.clk", "  " + h[0] + "\n" + body,
         Framed("INPUT RINEX CLOCK FILE FIRST LINE PROBLEM - RINEX VERSION / TYPE NOT AT POSITION 60 OR 65")},
        {"type.clk", h[0].substr(0, 20) + "O" + h[0].substr(21) + "\n" + body,
         Framed("RINEX CLOCK FILE IS NOT IN RINEX CLOCK FORMAT - RINEX TYPE IS NOT 'C'")},
        // Cut inside the satellite list.
        {"cutlist.clk", Join(h, soln + 3), Framed(header)},
        {"shortlist.clk", Join(shortList) + Join(kText.epochs[0]), Framed(".*satellite list line ends before entry 21")},
        // Three epochs are too few for the four-node cubic.
        {"three.clk", ClockFileOf({0, 1, 2}), Framed(".*fewer than four epochs of AS records \\(3\\)")},
        {"cutrec.clk", cutRec.substr(0, cutRec.rfind("AS ") + 30) + "\n", Framed(".*line [0-9]+: AS record too short")},
        {"order.clk", ClockFileOf({0, 1, 3, 2, 4}), Framed(".*epochs are not in increasing time order")},
        // A blank bias is no zero, and "nan" no clock.
        {"blank.clk", orvotest::ReadFile(WithG05Bias("b.clk", std::string(19, ' '))), Framed(".*line [0-9]+: clock bias \"\" is not a number")},
        {"nan.clk", orvotest::ReadFile(WithG05Bias("n.clk", std::string(16, ' ') + "nan")), Framed(".*line [0-9]+: clock bias \"nan\" is not a number")},
    });
    EXPECT_EXIT(Load<GNSSpClk>(orvotest::TempDir() + "/absent.clk"), ::testing::ExitedWithCode(1),
                Framed("RINEX CLOCK FILE .*absent.clk CAN NOT BE OPENED!"));
}
