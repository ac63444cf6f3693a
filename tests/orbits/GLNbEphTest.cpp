// GLONASS broadcast ephemeris: the real navigation file of the ESBC set,
// checked against a parse of its own, against the precise orbits of the
// same day, and through the light-time forms; broken variants cut from it.
#include <iostream>

#include "OrbitsSupport.h"
#include "orbits/GLNSat.h"
#include "orbits/GLNbEph.h"
#include "orbits/GNSSpEph.h"

using namespace orbtest;

namespace {

// GPS - UTC in June 2020 (IERS Bulletin C); day-plus-second epochs differ
// from whole seconds by round-off only.
constexpr long double GpsUtc_s = 18.0L, EpochTol_s = 1e-9L;
// 15 m: broadcast GLONASS orbits are good to a few metres (IGS product
// table: about 5 m), the broadcast state refers to the antenna rather than
// the centre of mass of the precise orbit (about 2 m), and PZ-90.11 and
// IGb14 differ by centimetres. A wrong sign of the Coriolis term puts the
// satellite 100 km off after 15 min, a lost J2 term tens of metres.
constexpr long double OrbitTol_m = 15.0L;
// 1 mm: the two light-time forms differ only in second-order terms of the
// Earth rotation angle (5e-6 rad over the travel): (5e-6)^2 * 2.5e7 m. The
// iteration closes to 1e-5 m, while a missed light time (70 ms at 3.9 km/s)
// puts the satellite some 270 m off.
constexpr long double LightFormTol_m = 1e-3L;

// Over the day, each healthy record within the reader's 16-min limit:
// 5 m RMS (IGS product table: about 5 m for broadcast GLONASS orbits) and
// 10 m at most. Clocks after the per-epoch median: 12 ns RMS and 40 ns at
// most, since broadcast GLONASS clocks differ from an analysis centre's by
// per-satellite biases of up to tens of ns that a median over satellites
// can't take out; a wrong sign of TauN is microseconds.
constexpr long double DayPosRms_m = 5.0L, DayPosMax_m = 10.0L, DayClkRms_s = 12e-9L, DayClkMax_s = 40e-9L;

long double Num(std::string t) { return std::strtold(t.replace(t.find('D'), 1, "E").c_str(), nullptr); }

GLNbEph& Nav() { return Shared<GLNbEph>(kNav); }

}  // namespace

TEST(GLNbEph, HeaderAndEveryRecordReadAsTheFileHoldsThem)
{
    const GLNbEphHeader& h = Nav().GetHeader();
    EXPECT_NEAR_LD(h.version, 2.11f, 1e-6f);  // a float field: a few float steps
    EXPECT_EQ(std::string(h.type) + "|" + h.pgm + "|" + std::to_string(h.leaps), "G: GLONASS NAV DATA|rnx3nav2|18");
    // The records cut here by the fixed columns of RINEX 2.11 (epoch line:
    // I2, 5 I3, F5.1, 3D19.12; orbit lines: 3X, 4D19.12).
    const std::vector<std::string> l = FileLines(kNav);
    ASSERT_EQ(l.size(), 2045u);  // 5 header lines and 510 records of 4 lines
    ASSERT_EQ(Nav().GetNSat(), 510);
    for (long i = 0; i < 510; ++i) {
        const std::string& e = l[5 + 4 * i];
        EXPECT_EQ(Nav().GetData().sat(i), std::atoi(e.substr(0, 2).c_str()));
        // Held on GPS time: the UTC epoch plus 18 s; 24 June is the day before.
        const long double sod = 3600.0L * std::atoi(e.substr(12, 2).c_str()) + 60.0L * std::atoi(e.substr(15, 2).c_str())
                                + std::strtold(e.substr(17, 5).c_str(), nullptr) + GpsUtc_s;
        EXPECT_NEAR_LD(Nav().GetMJD(i) - mjd(Jun25 - 25 + std::atoi(e.substr(9, 2).c_str()), 0.0L), sod, EpochTol_s) << i;
        for (int j = 0; j < 15; ++j) {  // mantissa times power of ten: a few ulps
            const long double v = Num(j < 3 ? e.substr(22 + 19 * j, 19) : l[6 + 4 * i + (j - 3) / 4].substr(3 + 19 * ((j - 3) % 4), 19));
            EXPECT_NEAR_LD(Nav().GetData().data(i, j), v, 1e-15L * std::fabs(v)) << i << " " << j;
        }
    }
    const matrix<short>& list = Nav().GetSatList(); EXPECT_TRUE(list.NRow() == 23 && list(0) == 1 && list(22) == 24);  // R01-R24 without R22
}

TEST(GLNbEph, RecordChoiceTakesTheNearerAndTiesToTheEarlier)
{
    // R01 records at 23:15, 23:45 (24 June), 00:15, 00:45 ... UTC.
    std::vector<long> ix;
    for (long i = 0; i < Nav().GetNSat(); ++i) if (Nav().GetData().sat(i) == 1) ix.push_back(i);
    ASSERT_GE(ix.size(), 4u);
    const mjd a = Nav().GetMJD(ix[2]);
    const struct { mjd t; long expected; } cases[] = {
        {Plus(a, 900.0L), ix[2]}, {Plus(a, 901.0L), ix[3]}, {Nav().GetMJD(ix[3]), ix[3]},
        {mjd(Jun25 - 2, 0.0L), ix.front()}, {mjd(Jun25 + 3, 0.0L), ix.back()}};
    for (const auto& c : cases) EXPECT_EQ(Nav().GetDataIndex(1, c.t), c.expected);
}

TEST(GLNbEph, IntegratedOrbitsMeetThePreciseOrbitsBothWays)
{
    GNSSpEph& sp3 = Shared<GNSSpEph>(kSp3); int checked = 0;
    for (long i = 0; i < Nav().GetNSat(); ++i) {
        if (Nav().GetMJD(i).GetMJDay() != Jun25) continue;
        const short slot = Nav().GetData().sat(i);
        // The 15-min nodes before and after the record epoch (GPS): 18 s
        // back, and 882 s ahead (29 full steps and a 12 s step).
        const long k = std::lround(Nav().GetMJD(i).GetSecond()) / 900;
        for (long node : {k, k + 1}) {
            if (node >= sp3.GetNEpoch()) continue;
            mjd t = sp3.GetMJD(node); xyzt p, v, ps, vs; sp3.CalcSatPosition(static_cast<unsigned short>(100 + slot), t, ps, vs);
            if (!sp3.PSisOK) continue;
            Nav().CalcSatPosition(slot, t, t, p, v, 0);
            EXPECT_LT(Dist(p, ps), OrbitTol_m) << slot << " node " << node;
            ++checked;
        }
    }
    EXPECT_GT(checked, 600);  // about 23 slots x 20 records x 2 nodes
}

TEST(GLNbEph, OverTheDayOrbitsClocksAndChannelsAgreeWithTheirOtherSources)
{
    Spread pos, clk;
    CompareWithPrecise(Nav().GetSatList(), 100, [](short s, mjd& t, xyzt& p) {
        const short slot = static_cast<short>(s - 100); const long ix = Nav().GetDataIndex(slot, t); xyzt v;
        if (std::fabs(t - Nav().GetMJD(ix)) > GLNbEphns::StaleLimit_s || Nav().GetData().data(ix, GLNbEphData::HEALTH) != 0.0L) return false;
        Nav().CalcSatPosition(slot, t, t, p, v, 0);
        return p.dt += Nav().GetRelativity(), true; }, pos, clk);
    EXPECT_GT(clk.n, 800);
    EXPECT_TRUE(pos.Rms() < DayPosRms_m && pos.max < DayPosMax_m && clk.Rms() < DayClkRms_s && clk.max < DayClkMax_s) << Figures(pos, clk);
    // The channel file's channel of every slot it lists at a record's epoch.
    GLNSat& fc = Shared<GLNSat>(kChannels); int same = 0;
    for (long i = 0; i < Nav().GetNSat(); ++i) {
        mjd t = Nav().GetMJD(i); const long double k = fc.GetFreqNum(static_cast<short>(100 + Nav().GetData().sat(i)), t);
        if (fc.GetIsGLNSat()) { EXPECT_EQ(k, Nav().GetData().data(i, GLNbEphData::FRQNUM)) << i; ++same; }
    }
    EXPECT_GT(same, 400);  // the records of 25 June
}

TEST(GLNbEph, StateAtTheRecordEpochAndTheLightTimeForms)
{
    const long i = 100; mjd t = Nav().GetMJD(i); xyzt p, v; Nav().CalcSatPosition(Nav().GetData().sat(i), t, t, p, v, 0);
    const matrix<long double>& d = Nav().GetData().data;
    EXPECT_EQ(Dist(p, 1000.0L * xyz(d(i, GLNbEphData::X0), d(i, GLNbEphData::Y0), d(i, GLNbEphData::Z0))), 0.0L);
    EXPECT_EQ(Dist(v, 1000.0L * xyz(d(i, GLNbEphData::XD0), d(i, GLNbEphData::YD0), d(i, GLNbEphData::ZD0))), 0.0L);
    // Clock: -TauN of the file, no GammaN term at dt 0, less 2 r.v/c^2; for
    // a near-circular orbit (e ~ 0.001) 2 sqrt(GM a) e / c^2 is about 2 ns.
    EXPECT_NEAR_LD(p.dt, d(i, GLNbEphData::TAUN) - 2.0L * (p.x * v.x + p.y * v.y + p.z * v.z) / (C * C), 1e-20L);
    EXPECT_LT(std::fabs(Nav().GetRelativity()), 5e-9L);
    xyz rec = kMarker; mjd eph(Jun25, 36018.0L);
    for (short slot : {1, 10, 24}) {
        xyzt ps, vs, pe, ve, pp, vp; const long double d = Nav().CalcSatPosition(slot, eph, eph, rec, ps, vs, 0);
        // The satellite stands where it was at eph - d/c.
        mjd te = Plus(eph, -d / C); Nav().CalcSatPosition(slot, te, eph, pe, ve, 0);
        EXPECT_NEAR_LD(Dist(ps, pe), 0.0L, LightFormTol_m);
        gnssobs P(d); EXPECT_NEAR_LD(Nav().CalcSatPosition(slot, eph, eph, rec, pp, vp, P, 0), d, LightFormTol_m) << slot;
    }
}

TEST(GLNbEph, RecordEpochOffWholeMinutesIsWarnedAndKept)
{
    std::string text = ReadFile(kNav);
    const std::string path = WriteTemp("seconds.20g", text.replace(text.find(" 1 20  6 24 23 15  0.0"), 22, " 1 20  6 24 23 15 30.0"));
    orvotest::Capture err(std::cerr); auto g = Load<GLNbEph>(path);
    EXPECT_NE(err.Text().find("GLONASS EPHEMERIS DATA: SATELLITE R01 EPOCH SECONDS  30.0 [NOT FULL MINUTES]"), std::string::npos);
    EXPECT_EQ(g->GetNSat(), 510);
    EXPECT_NEAR_LD(g->GetMJD(0) - mjd(Jun25 - 1, 0.0L), 83700.0L + 30.0L + GpsUtc_s, EpochTol_s);
}

TEST(GLNbEphDeath, MissingCutAndUnlistedStop)
{
    // The reader reports on the output stream.
    auto stops = [](const std::string& path, const std::string& re) {
        EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); Load<GLNbEph>(path); }, ::testing::ExitedWithCode(1), re);
    };
    stops("no-such-file.20g", "\\*\\*\\*\\* GLNbEph: Error -> GLONASS NAVIGATION FILE CAN NOT BE OPENED! \\*\\*\\*\\*");
    stops(WriteTemp("noend.20g", orvotest::FirstLines(kNav, 4)), "GLNbEph: Error -> NO END OF HEADER");
    // Cut in the middle of the third record's second line.
    stops(WriteTemp("cut.20g", orvotest::FirstLines(kNav, 14) + "    1.3720"), "GLNbEph: Error -> RECORD 3: FILE ENDS INSIDE THE RECORD!");
    mjd t(Jun25, 0.0L); EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); Nav().GetDataIndex(22, t); }, ::testing::ExitedWithCode(1),
                "GLNbEph: Error -> SAT: R22 IS NOT LISTED IN GLONASS NAVIGATION FILE!!!");
}

// Found by fuzzing: a record of no orbit (here a shifted value taken for an
// acceleration) ran every light-time iteration to its limit, and a record
// over five lines left a zero record of satellite 0 at the end.
TEST(GLNbEphDeath, RecordsOutsideTheICDRangesOrOffTheirLinesStop)
{
    // First record: header 5 lines, epoch line 6, value lines 7-9.
    const std::vector<std::string> l = FileLines(kNav);
    auto first2 = [&](int line, std::size_t col, const std::string& field) {
        std::string t;
        for (int i = 0; i < 13; ++i) t += (i == line ? std::string(l[i]).replace(col, 19, field) : l[i]) + "\n";
        return t;
    };
    const struct { int line; std::size_t col; const char* field; const char* name; } cases[] = {
        {5, 22, " 1.960000000000D-03", "CLOCK OFFSET"},    // just over 2^-9 s
        {6, 3, " 2.701000000000D+04", "X"},                // just over 2.7e4 km
        {8, 22, "-4.310000000000D+00", "Z VELOCITY"},      // just over 4.3 km/s
        {7, 41, " 6.300000000000D-09", "Y ACCELERATION"}}; // just over 6.2e-9 km/s^2
    for (const auto& c : cases)
        EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); Load<GLNbEph>(WriteTemp("range.20g", first2(c.line, c.col, c.field))); },
                    ::testing::ExitedWithCode(1), std::string("GLNbEph: Error -> .*range.20g: RECORD 1: ") + c.name
                                                      + " OUTSIDE THE RANGE OF THE GLONASS ICD!") << c.name;
    // The first record's second value line broken in two: the count sees a
    // third record start that the values never reach.
    std::string split;
    for (int i = 0; i < 13; ++i) split += (i == 7 ? l[i].substr(0, 41) + "\n   " + l[i].substr(41) : l[i]) + "\n";
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); Load<GLNbEph>(WriteTemp("split.20g", split)); },
                ::testing::ExitedWithCode(1), "GLNbEph: Error -> .*split.20g: RECORD 3: RECORD LINES DO NOT HOLD 15 VALUES!");
}

TEST(GLNbEph, RecordOfNoOrbitGivesNoDistance)
{
    // Found by fuzzing: a record within every ICD range that puts its
    // satellite 1.7 m from the geocentre falls through it when integrated;
    // the light-time iteration spun to its limit on the wreck. Farther than
    // any satellite's light time, it now yields no distance at once.
    const std::vector<std::string> l = FileLines(kNav);
    std::string t;
    for (int i = 0; i < 13; ++i) t += (i >= 6 && i <= 8 ? std::string(l[i]).replace(3, 19, " 1.000000000000D-03") : l[i]) + "\n";
    const auto n = Load<GLNbEph>(WriteTemp("centre.20g", t));
    mjd e = n->GetMJD(0);
    e += 900.0L;
    mjd ti = e;
    xyz rec(3582105.291L, 532589.731L, 5232754.805L);
    xyzt p, v;
    EXPECT_EQ(n->CalcSatPosition(n->GetData().sat(0), e, ti, rec, p, v, 0), -1.0L);
}
