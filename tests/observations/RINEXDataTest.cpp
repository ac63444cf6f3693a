// Epoch-line helpers and the layout rules of the data section that the
// real files do not show, on small files written by the tests: satellite
// letters, unknown columns, event records, code copies, clock offsets and
// their round trip through the writer.
#include "ObsSupport.h"

using namespace obstest;

// Values are written with 3 decimals and read back from that text.
constexpr long double ValueTol = 1e-9L;
constexpr long double ClockTol_s = 1e-12L;  // 9 decimals in the file
// Epoch differences of day-plus-second epochs carry 1e-14 s round-off;
// the smallest digit of an epoch line is 1e-7 s.
constexpr long double EpochTol_s = 1e-9L;

static const std::vector<std::string> kNine = {"C1", "P1", "L1", "S1", "D1", "C2", "P2", "L2", "S2"};

static std::string Temp(const std::string& text) { return WriteTemp("data.o", text); }

// Every field of every record holds Value(i, s, k) with lli k % 10, ss 5.
static void ExpectValues(const Loaded& f, const std::vector<std::string>& types)
{
    for (long i = 0, r = 0; i < f.d.GetNEpoch(); i++)
        for (int s = 0; s < f.d.GetEphNSat(i); s++, r++)
            for (std::size_t k = 0; k < types.size(); k++) {
                const matrix<gnssobs>* m = f.d.ObsMatrix(f.h.obs(k));
                const matrix<gnssobsshort>* sh = f.d.ShortMatrix(f.h.obs(k));
                if (m && m->NRow() == 0) m = nullptr;  // a band not kept
                // An unknown column has no matrix to compare.
                const long double v = Value(i, s, k), got = m ? (*m)(r).GetObs() : sh ? (*sh)(r).GetObs() : v;
                EXPECT_TRUE(!m || ((*m)(r).GetLli() == static_cast<int>(k % 10) && (*m)(r).GetSs() == 5)) << types[k] << " r=" << r;
                EXPECT_NEAR_LD(got, v, ValueTol) << types[k] << " r=" << r;
            }
}

TEST(RinexLineHelpers, EpochLinesSatelliteFieldsAndRecordLines)
{
    // More than 32 characters, a date and seven decimals make an epoch line,
    // whatever its flag; an event record without a date, RINEX 3 lines, six
    // decimals or a comma do not.
    const std::string good = " 20  6 25  0  0  0.0000000  0 30E01";
    for (const auto& [line, is] : std::vector<std::pair<std::string, bool>>{
             {good, true}, {good.substr(0, 33), true}, {good.substr(0, 32), false},
             {" 20  6 25  0  0 30.0000000  4  2   ", true}, {"                            4  2                    ", false},
             {"> 2020 06 25 00 00  0.0000000  0 30      ", false}, {"  27616185.992 6                 145124050.10606", false},
             {" 20  6 25  0  0  0.000000   0 30E01", false}, {" 20  6 25  0  0  0,0000000  0 30E01", false}})
        EXPECT_EQ(IsFirstObsLine(line), is) << line;
    // Two-digit years up to 79 are this century; 59.5 s is exact in binary.
    const std::pair<const char*, std::vector<int>> dates[] = {{" 79 12 31 23 59 59.5000000  0 13G01", {2079, 12, 31, 23, 59, 13}},
                                                              {" 80  1  6  0  0  0.0000000  0  8G01", {1980, 1, 6, 0, 0, 8}},
                                                              {" 00  1  1  0  0  0.0000000  0  1G01", {2000, 1, 1, 0, 0, 1}}};
    for (const auto& [line, want] : dates) {
        std::vector<int> got(6);
        long double s;
        ParseFirstObsLine(line, got[0], got[1], got[2], got[3], got[4], s, got[5]);
        EXPECT_EQ(got, want);
        EXPECT_NEAR_LD(s, want[0] == 2079 ? 59.5L : 0.0L, 1e-15L);
    }
    // Letters without a system of their own stay out of every processed
    // range; X99 is the largest, within the 700 scratch entries.
    for (const auto& [f, n] : std::vector<std::pair<const char*, short>>{
             {"G05", 5}, {" 12", 12}, {"G 7", 7}, {"R24", 124}, {"E36", 236}, {"C19", 319}, {"S20", 420}, {"J01", 501},
             {"I09", 609}, {"X99", 699}}) {
        EXPECT_EQ(RINEXSatNumber(f), n) << f;
        const char back[] = {RINEXSatLetter(n), static_cast<char>('0' + n % 100 / 10), static_cast<char>('0' + n % 10), 0};
        if (n < 600) {
            EXPECT_EQ(RINEXSatNumber(back), n);
        }
    }
    // Record lines are padded or cut to five 16-column fields.
    std::string l = "abc", x(90, 'x'), none = "y";
    FillObsLine(l, 5), FillObsLine(x, 5), FillObsLine(none, 0);
    EXPECT_EQ(l + x + none, "abc" + std::string(77, ' ') + std::string(80, 'x'));
}

TEST(RinexData, LettersUnknownColumnsEventRecordsAndCodeCopies)
{
    // Continuation lines, blank and short fields and the values themselves
    // come from the real files. Here: other letters keep their order and
    // an unknown column is read over; an event record without a date and
    // comments are passed over, and the epoch flag is stored as written.
    Loaded c(Temp(File({"L1", "X4", "C1"}, {{20, 6, 25, 0, 0, 0.0, {"J01", "C20", "G05", "I02", "S27", "R03"}}})));
    const short want[] = {501, 320, 5, 602, 427, 103}, sorted[] = {5, 103, 320, 427, 501, 602};
    ASSERT_EQ((std::vector<long>{c.d.GetNObs(), c.d.GetNSat(), c.h.obs(1)}), (std::vector<long>{6, 6, RINEXObs::Unknown}));
    for (long r = 0; r < 6; r++) EXPECT_TRUE(c.d.GetObsSat(r) == want[r] && c.d.GetSat(r) == sorted[r]) << r;
    ExpectValues(c, {"L1", "X4", "C1"});
    const std::string two = File(kNine, {{20, 6, 25, 0, 0, 0.0, Sats("G", 1)}, {20, 6, 25, 0, 0, 30.0, Sats("G", 2), '6'}});
    Loaded d(Temp(File(kNine, {{20, 6, 25, 0, 0, 0.0, Sats("G", 2)}}) + "                            4  2\n"
                  + HLine("A COMMENT INSIDE THE DATA", "COMMENT") + HLine("ANOTHER ONE", "COMMENT")
                  + two.substr(two.find(" 20  6 25  0  0 30.0000000"))));
    EXPECT_EQ((std::vector<long>{d.d.GetNEpoch(), d.d.GetNObs(), d.d.nComment, d.d.flag(0), d.d.flag(1)}),
              (std::vector<long>{2, 4, 3, '0', '6'}));

    // Reading copies P1 into a missing C1; C2 goes to P2 when asked; with
    // both codes present the copies change nothing. Reading another file
    // starts afresh.
    Loaded f(Temp(File({"P1", "L1", "C2", "L2"}, {{20, 6, 25, 0, 0, 0.0, Sats("G", 2)}})));
    ASSERT_TRUE(f.h.HasC1() && !f.h.HasP2());
    f.r.copyC2toP2();
    EXPECT_TRUE(f.h.HasP2() && std::fabs(f.d.C1(1).GetObs() - Value(0, 1, 0)) < ValueTol
                && std::fabs(f.d.P2(0).GetObs() - Value(0, 0, 2)) < ValueTol);
    Loaded g(Temp(File({"C1", "P1", "C2", "P2"}, {{20, 6, 25, 0, 0, 0.0, Sats("G", 1)}})));
    g.r.copyP1toC1();
    g.r.copyC2toP2();
    ExpectValues(g, {"C1", "P1", "C2", "P2"});
    g.r.SetFile(Temp(File({"L1", "C1"}, {{20, 6, 25, 0, 0, 0.0, Sats("E", 2)}, {20, 6, 25, 0, 0, 30.0, Sats("E", 1)}})));
    g.r.ReadFile();
    EXPECT_EQ((std::vector<long>{g.d.GetNEpoch(), g.d.GetNObs(), g.d.GetNSat(), g.d.P2.NRow(), g.d.C1.NRow()}),
              (std::vector<long>{2, 3, 2, 0, 3}));
    EXPECT_FALSE(g.h.HasP2() || g.h.HasC2() || g.h.HasP1());
    ExpectValues(g, {"L1", "C1"});
}

TEST(RinexWriter, ClockOffsetsFromTheFirstEpochOnAndUnknownColumnsRoundTrip)
{
    // The offset is read only when the first epoch line carries it. The
    // writer puts it back at column 68 of a short first line and of a full
    // one with a continuation; an unknown column is written blank.
    std::vector<std::string> types = kNine;
    types.insert(types.end(), {"C7", "Q9"});
    Epoch a{20, 6, 25, 0, 0, 0.0, Sats("R", 5)}, b{20, 6, 25, 0, 0, 30.0, Sats("G", 13), '0', true, -0.000456};
    Loaded later(Temp(File(kNine, {a, b})));
    EXPECT_TRUE(!later.d.IfTimeCorr && later.d.TCorr.NRow() == 0);
    a.clock = true;
    a.clk = 0.000000123;
    Loaded f(WriteTemp("wsrc.o", File(types, {a, b})));
    const std::string out = TempDir() + "/written.o";
    f.r.PrintFile(out);
    Loaded g(out);
    ASSERT_EQ((std::vector<long>{g.d.GetNEpoch(), g.d.GetNObs(), g.h.GetNObs(), g.h.obs(10)}),
              (std::vector<long>{2, 18, 11, RINEXObs::Unknown}));
    for (const Loaded* x : {&f, &g}) {
        ASSERT_TRUE(x->d.IfTimeCorr);
        EXPECT_NEAR_LD(x->d.TCorr(0), 0.000000123L, ClockTol_s);
        EXPECT_NEAR_LD(x->d.TCorr(1), -0.000456L, ClockTol_s);
        ExpectValues(*x, types);
    }
    for (long r = 0; r < 18; r++) EXPECT_EQ(g.d.GetObsSat(r), r < 5 ? 101 + r : r - 4);
    EXPECT_NEAR_LD(g.d.GetMJD(1) - f.d.GetMJD(1), 0.0L, EpochTol_s);
    EXPECT_NEAR_LD(g.h.GetInterval(), 30.0f, 1e-6f);
    EXPECT_STOP(f.r.PrintFile("/nonexistent-dir/out.o"), "#### RINEX: Error -> FILE /nonexistent-dir/out.o CAN NOT BE OPENED FOR WRITING ####");
}

// ---- Values that cannot be data ------------------------------------------

// File text with field k of satellite s at epoch i (written as
// Value(i, s, k), unique in the file) replaced by 14 columns of v.
static std::string Put(std::string text, long i, long s, long k, const std::string& v)
{
    char was[32];
    std::snprintf(was, sizeof was, "%14.3f", Value(i, s, k));
    return text.replace(text.find(was), 14, (std::string(14, ' ') + v).substr(v.size()));
}

TEST(RinexData, CodeLimitsHoldEverySatelliteInViewButNoBlunder)
{
    // Slant range from a receiver at geocentric distance rho to a satellite
    // at R seen at elevation E: the law of cosines, apart from the limits'
    // own construction. Receivers at the pole at sea level and on an aircraft
    // over the equator; clocks of ±1 ms (receiver) and ±0.98 ms (GPS af0).
    const long double pi = std::acos(-1.0L), clock_m = (1e-3L + 0.98e-3L) * C;
    const auto slant = [](long double rho, long double R, long double E) {
        return std::sqrt(R * R - rho * rho * std::cos(E) * std::cos(E)) - rho * std::sin(E);
    };
    // Nominal orbit radii; E14 at perigee and apogee; a QZSS IGSO at apogee.
    const std::pair<SatSystem, long double> inView[] = {{SysGPS, 26.56e6L}, {SysGLN, 25.508e6L}, {SysGAL, 29.6e6L},
        {SysGAL, 23.717e6L}, {SysGAL, 32.378e6L}, {SysNone, 42.164e6L}, {SysNone, 45.3e6L}};
    for (const auto& [sys, R] : inView)
        for (long double rho : {6356.75e3L, 6390.137e3L})
            for (long double E : {0.0L, pi / 6, pi / 2})
                for (long double sign : {-1.0L, 1.0L}) {
                    long double lo, hi;
                    CodeRangeLimits(sys, lo, hi);
                    const long double code = slant(rho, R, E) + sign * clock_m;
                    EXPECT_TRUE(code > lo && code < hi) << sys << " R=" << R << " E=" << E << " code=" << code;
                }
    // A geostationary range is no GPS range; blunders fit no system.
    long double lo, hi;
    CodeRangeLimits(SysGPS, lo, hi);
    EXPECT_GT(slant(6371e3L, 42.164e6L, 0.0L), hi);
    for (int sys = SysGPS; sys <= SysNone; sys++) {
        CodeRangeLimits(static_cast<SatSystem>(sys), lo, hi);
        for (long double blunder : {-22.0e6L, 1.0L, 15.0e6L, 50.0e6L}) EXPECT_FALSE(blunder > lo && blunder < hi) << sys << " " << blunder;
    }
}

TEST(RinexData, CodesOutOfRangeClearedRepeatedSatellitesDroppedAndReported)
{
    // Codes out of range are cleared with their flags; phase and signal
    // strength have no such bound; the rest of the record stays. A satellite
    // listed twice keeps its record when the second is an exact copy (G02,
    // epoch 0) and loses both when they differ (G01, epoch 1).
    std::string text = File(kNine, {{20, 6, 25, 0, 0, 0.0, {"G01", "R01", "C01", "G02", "G02"}},
                                     {20, 6, 25, 0, 0, 30.0, {"G01", "R01", "G01"}}});
    char copy[32];
    for (long k = 0; k < 9; k++) std::snprintf(copy, sizeof copy, "%.3f", Value(0, 3, k)), text = Put(text, 0, 4, k, copy);
    const struct { long s, k; std::string v; bool cleared; } cases[] = {
        {0, 0, "-22000000.000", true}, {0, 6, "123456.789", true}, {1, 0, "40000000.000", true},
        {2, 0, "40000000.000", false}, {0, 2, "-22000000.000", false}, {1, 3, "-5.000", false}};
    for (const auto& c : cases) text = Put(text, 0, c.s, c.k, c.v);
    Capture out(std::cout);
    const Loaded f(Temp(text));
    EXPECT_EQ(f.d.CodeOutsideRange, (std::map<short, long>{{1, 2}, {101, 1}}));
    EXPECT_EQ(f.d.RepeatedRecords, (std::map<short, long>{{1, 2}, {2, 1}}));
    for (const auto& c : cases) {
        const matrix<gnssobs>* m = f.d.ObsMatrix(f.h.obs(c.k));
        if (c.cleared) EXPECT_TRUE((*m)(c.s).IsNull() && (*m)(c.s).GetLli() == 0) << c.v;
        else EXPECT_NEAR_LD(m ? (*m)(c.s).GetObs() : f.d.S1(c.s).GetObs(), std::stold(c.v), ValueTol) << c.v;
    }
    for (long r : {4L, 5L, 7L}) EXPECT_TRUE(f.d.C1(r).IsNull() && f.d.L2(r).IsNull() && f.d.S2(r).IsNull()) << r;
    EXPECT_NEAR_LD(f.d.L2(3).GetObs(), Value(0, 3, 7), ValueTol);
    EXPECT_NEAR_LD(f.d.L2(6).GetObs(), Value(1, 1, 7), ValueTol);
    EXPECT_NEAR_LD(f.d.P1(0).GetObs(), Value(0, 0, 1), ValueTol);
    EXPECT_NE(out.Text().find("  Code observations outside the range of any GNSS satellite (not used):\n"
                              "    Satellite: G01    #OBS:        2\n    Satellite: R01    #OBS:        1\n"), std::string::npos);
    EXPECT_NE(out.Text().find("OUTSIDE THE RANGE OF ANY GNSS SATELLITE - 3 OBSERVATIONS NOT USED!"), std::string::npos);
    EXPECT_NE(out.Text().find("SATELLITES LISTED TWICE IN ONE EPOCH - 3 RECORDS NOT USED!"), std::string::npos);
}

TEST(RinexDataDeath, ClockOffsetThatIsNoNumberStops)
{
    std::string text = File(kNine, {{20, 6, 25, 0, 0, 0.0, Sats("G", 2), '0', true, -0.000456}});
    text.replace(text.find("-0.000456000"), 12, "         nan");
    EXPECT_STOP(Loaded f(Temp(text)), "#### RINEXData: Error -> .*data.o: RECEIVER CLOCK OFFSET \"nan\" IS NOT A NUMBER -> line: 4 ####");
}

// Doppler, signal strength and the bands not processed not kept: they get
// no storage, every other value reads as with them, a field of them that is
// no number still stops the run, and a code of them out of every range is
// not counted (it has no value to clear).
TEST(RinexDataDeath, AuxiliaryTypesNotKeptAreCheckedAndLeftEmpty)
{
    const std::vector<std::string> types = {"C1", "P1", "L1", "S1", "D1", "C5", "L5", "P2", "L2", "C8"};
    std::string text = File(types, {{20, 6, 25, 0, 0, 0.0, Sats("G", 2)}, {20, 6, 25, 0, 0, 30.0, Sats("E", 3)}});
    const Loaded f(Temp(text), false);
    ExpectValues(f, types);
    for (const matrix<gnssobsshort>* m : {&f.d.S1, &f.d.D1}) EXPECT_EQ(m->NRow(), 0);
    for (const matrix<gnssobs>* m : {&f.d.C5, &f.d.L5, &f.d.C8}) EXPECT_EQ(m->NRow(), 0);
    EXPECT_EQ(f.d.P2.NRow(), 5);
    const Loaded far(Temp(Put(text, 1, 0, 5, "-22000000.000")), false);
    EXPECT_TRUE(far.d.CodeOutsideRange.empty());
    for (const char* bad : {"D1", "C5"}) {
        const int k = bad[0] == 'D' ? 4 : 5;
        EXPECT_STOP(Loaded g(Temp(Put(text, 1, 2, k, "x")), false),
                    std::string("#### RINEXData: Error -> .*data.o: ") + bad + " OF E03 IS NOT A NUMBER: .* -> line: .* ####");
    }
}
