// Precise orbit reader and interpolation, on the GRG MGEX and IGS SP3 files
// of the two real data sets.
#include <random>

#include "OrbitsSupport.h"
#include "orbits/GNSSpEph.h"
#include "orbits/LightTimeHints.h"

using namespace orbtest;

namespace {

// Node epochs are whole seconds: only round-off of day-plus-second epochs.
constexpr long double OmegaEarth = 7.2921151467e-5L, EpochTol_s = 1e-9L;

const std::vector<std::string> kGrgLines = FileLines(kSp3);
GNSSpEph& Grg() { return Shared<GNSSpEph>(kSp3); }

// Index of the first line of data block k (its "*" line).
std::size_t EpochLine(const std::vector<std::string>& lines, int k)
{
    std::size_t i = 0; for (int seen = -1; i < lines.size() && !(!lines[i].empty() && lines[i][0] == '*' && ++seen == k);) ++i;
    return i;
}

// Position (m) and clock (s) of sat in block k of the GRG file, parsed here
// from the km and µs of its text.
xyzt FileNode(int k, int sat)
{
    for (std::size_t i = EpochLine(kGrgLines, k) + 1; i < kGrgLines.size() && kGrgLines[i][0] != '*'; ++i)
        if (kGrgLines[i].compare(0, 4, "P" + SatName(sat)) == 0) {
            long double x, y, z, dt; std::istringstream(kGrgLines[i].substr(4)) >> x >> y >> z >> dt;
            return xyzt(x * 1000.0L, y * 1000.0L, z * 1000.0L, dt * 1e-6L);
        }
    ADD_FAILURE() << SatName(sat) << " not in block " << k;
    return xyzt();
}

// The state of sat at node k plus offset_s; PSisOK and DTisOK tell.
xyzt StateAt(GNSSpEph& e, int sat, long k, long double offset_s, xyzt* v = nullptr)
{
    mjd t = Plus(e.GetMJD(k), offset_s); xyzt p, w;
    return e.CalcSatPosition(static_cast<unsigned short>(sat), t, p, v ? *v : w), p;
}

}  // namespace

TEST(GNSSpEph, HeaderSatelliteListAndAccuracyCodes)
{
    EXPECT_TRUE(Grg().GetNEpoch() == 96 && Grg().GetNSat() == 75);
    // E01 opens the list, E25 the second "+ " line (entry 17), R01 and G01
    // follow with their system bases, G32 closes it.
    const struct { long i; short sat; } list[] = {{0, 201}, {17, 225}, {24, 101}, {45, 1}, {74, 32}};
    for (const auto& l : list) EXPECT_EQ(Grg().GetSatList(l.i), l.sat);
    // 2020-06-25, nodes every 900 s; records stored slot + nsat*epoch.
    EXPECT_TRUE(Grg().GetMJD(0).GetMJDay() == Jun25 && Grg().GetSat(75 * 96 - 1) == 32);
    EXPECT_NEAR_LD(Grg().GetMJD(95) - mjd(Jun25, 0.0L), 95 * 900.0L, EpochTol_s);
    // SP3-c accuracy codes: "PG01 ... 7  5  9  95" are 1.25^n mm and
    // 1.025^95 ps. The bases come from 4-digit fields, the sigmas are small
    // powers of them: a few long double ulps.
    GNSSpEph* e = &Shared<GNSSpEph>(kIgs235);
    EXPECT_TRUE(e->GetNSat() == 31 && e->GetSatList(17) == 19);  // first entry of the second "+ " line
    EXPECT_NEAR_LD(std::fabs(e->GetPositionBase() - 1.25L) + std::fabs(e->GetClockBase() - 1.025L), 0.0L, 1e-15L);
    const xyzt sg = e->GetSatPosSig(0);
    EXPECT_NEAR_LD(Dist(sg, xyz(std::pow(1.25L, 7), std::pow(1.25L, 5), std::pow(1.25L, 9)) * 1e-3L), 0.0L, 1e-15L);
    EXPECT_NEAR_LD(sg.dt, std::pow(1.025L, 95) * 1e-12L, 1e-22L);
}

// At a node the Lagrange sum has one non-zero term, the node value times
// the ratio of two products of the same 13 factors; long double round-off
// on 2.6e7 m is about 1e-11 m, on clocks of 1e-4 s about 1e-20 s.
constexpr long double NodeTol_m = 1e-9L, NodeClkTol_s = 1e-18L;
// Half an interval outside the nodes the Lagrange weights sum in magnitude
// to some thousands, which turns round-off on 2.6e7 m into a few 1e-9 m
// (measured 4e-9 m there, 6e-12 m inside). The file's 1 mm rounding of the
// nodes makes a window shifted by one node land 1e-5 m and more away, which
// the test also demands so that it can tell the windows apart. Clocks
// through four nodes: round-off near 1e-20 s against 1e-12 s rounding.
constexpr long double WindowTol_m = 1e-7L, WindowClkTol_s = 1e-16L;

TEST(GNSSpEph, InterpolationGivesTheNodesAndUsesCentredWindows)
{
    for (int sat : {1, 32, 124, 236, 214})
        for (int k : {0, 3, 6, 7, 50, 88, 95}) {
            const xyzt p = StateAt(Grg(), sat, k, 0.0L), n = FileNode(k, sat);
            EXPECT_TRUE(Grg().PSisOK && Grg().DTisOK && Dist(p, n) < NodeTol_m && std::fabs(p.dt - n.dt) < NodeClkTol_s)
                << sat << " epoch " << k << ": " << Dist(p, n) << " m, " << p.dt - n.dt << " s";
        }
    // Epoch (node k + offset) and the first node of the 14-node position
    // window and of the 4-node clock window that the centring rule gives:
    // near the ends the windows clip.
    const struct { int k; long double off_s; int firstPos, firstClk; } cases[] = {
        {0, 0.5L, 0, 0}, {3, 450.0L, 0, 2}, {40, 450.0L, 34, 39}, {89, 100.0L, 82, 88}, {94, 450.0L, 82, 92}};
    long double t[96], y[4][96];
    for (int k = 0; k < 96; ++k) { const xyzt n = FileNode(k, 5); t[k] = 900.0L * k, y[0][k] = n.x, y[1][k] = n.y, y[2][k] = n.z, y[3][k] = n.dt; }
    for (const auto& c : cases) {
        const long double x = 900.0L * c.k + c.off_s; const xyzt p = StateAt(Grg(), 5, c.k, c.off_s);
        ASSERT_TRUE(Grg().PSisOK && Grg().DTisOK) << c.k;
        auto pos = [&](int f) { return Dist(p, xyz(Lagrange(t + f, y[0] + f, 14, x), Lagrange(t + f, y[1] + f, 14, x),
                                                   Lagrange(t + f, y[2] + f, 14, x))); };
        auto clk = [&](int f) { return std::fabs(p.dt - Lagrange(t + f, y[3] + f, 4, x)); };
        EXPECT_TRUE(pos(c.firstPos) < WindowTol_m && clk(c.firstClk) < WindowClkTol_s) << c.k;
        for (int s : {-1, 1}) {
            EXPECT_TRUE((c.firstPos + s < 0 || c.firstPos + s > 82 || pos(c.firstPos + s) > 50.0L * WindowTol_m)
                        && (c.firstClk + s < 0 || c.firstClk + s > 92 || clk(c.firstClk + s) > 10.0L * WindowClkTol_s)) << c.k << " " << s;
        }
    }
}

// The interpolation works with prefix and suffix products and stored
// reciprocal weights; the plain form above divides per factor. Inside the
// file both round a 2.6e7 m sum of 14 terms whose weights stay below ten in
// magnitude: a few 1e-11 m apart, so 1e-9 m still exposes a wrong weight,
// window or node (a node's 1 mm rounding alone moves the result by 1e-5 m).
// Clocks of 1e-4 s through four nodes round near 1e-20 s. One second beyond
// the end nodes the weights grow only slightly.
constexpr long double FastPos_m = 1e-9L, FastClk_s = 1e-18L;

TEST(GNSSpEph, FastFormMatchesThePlainLagrangeFormEverywhereInTheFile)
{
    const int nEp = 96;
    std::mt19937 gen(177);
    std::uniform_real_distribution<long double> anywhere(0.0L, 900.0L * (nEp - 1));
    std::vector<long double> epochs_s = {0.0L, -1.0L, -0.25L, 900.0L * (nEp - 1), 900.0L * (nEp - 1) + 1.0L, 900.0L * 47};
    for (int i = 0; i < 300; ++i) epochs_s.push_back(anywhere(gen));
    long double t[nEp];
    for (int k = 0; k < nEp; ++k) t[k] = 900.0L * k;
    for (int sat : {3, 118, 205}) {
        long double y[4][nEp];
        for (int k = 0; k < nEp; ++k) { const xyzt n = FileNode(k, sat); y[0][k] = n.x, y[1][k] = n.y, y[2][k] = n.z, y[3][k] = n.dt; }
        for (long double x : epochs_s) {
            const xyzt p = StateAt(Grg(), sat, 0, x);
            ASSERT_TRUE(Grg().PSisOK && Grg().DTisOK) << sat << " at " << x << " s";
            // The centring rule of the windows, written from the interval
            // that holds the epoch.
            const int ix = x < 0.0L ? 0 : static_cast<int>(x / 900.0L);
            const int fp = std::clamp(ix - 6, 0, nEp - 14), fc = std::clamp(ix - 1, 0, nEp - 4);
            const xyz plain(Lagrange(t + fp, y[0] + fp, 14, x), Lagrange(t + fp, y[1] + fp, 14, x), Lagrange(t + fp, y[2] + fp, 14, x));
            EXPECT_LT(Dist(p, plain), FastPos_m) << sat << " at " << x << " s";
            EXPECT_NEAR_LD(p.dt, Lagrange(t + fc, y[3] + fc, 4, x), FastClk_s) << sat << " at " << x << " s";
        }
    }
}

// Five-point difference over h = 1 s: truncation h^4/30 times the fifth
// derivative (a n^3 ~ 2e-12 m/s^5 for an orbit) is 1e-13 m/s; long double
// round-off on positions (1e-11 m) gives 2e-11 m/s. 1e-7 m/s bounds both
// with room; the plain central difference would already be off by 1e-5 m/s
// (h^2/6 times the jerk a n), and a velocity per hour misses by 3600 times.
constexpr long double VelocityTol_mps = 1e-7L;

// 1e-6 m: the iteration stops when the range changes by 1e-5 m, which moves
// the emission time by 3e-14 s, the satellite by 1e-10 m. 1e-15 s: the same
// relativity formula on the same state, round-off of a 1e-8 s term.
constexpr long double LightTimeTol_m = 1e-6L, RelativityTol_s = 1e-15L;

TEST(GNSSpEph, VelocityLightTimeAndRelativityAlsoOnANode)
{
    xyz rec = kMarker;
    for (int sat : {1, 21, 105, 224})
        for (long double off : {0.0L, 123.4L, 450.0L})
            for (int k : {0, 47, 94}) {
                // On an inner node the window moves by one between t - 1 s
                // and t, so a difference there would mix two polynomials;
                // the end nodes keep their window and test the on-node branch.
                if ((k == 47 || k == 0) && off == 0.0L) continue;  // node 0: the differences would reach before the file
                xyzt f[4], v, ps, vs, ve, p1, v1;
                for (int i = 0; i < 4; ++i) f[i] = StateAt(Grg(), sat, k, off + (i < 2 ? i - 2.0L : i - 1.0L));
                StateAt(Grg(), sat, k, off, &v);
                for (long double xyz::*c : {&xyz::x, &xyz::y, &xyz::z})
                    EXPECT_NEAR_LD(v.*c, (f[0].*c - 8.0L * f[1].*c + 8.0L * f[2].*c - f[3].*c) / 12.0L, VelocityTol_mps)
                        << sat << " " << k << " " << off;
                mjd tr = Plus(Grg().GetMJD(k), off);
                const long double dist = Grg().CalcSatPosition(static_cast<unsigned short>(sat), tr, rec, ps, vs), relativity = Grg().Relativity;
                // Independent: the state at emission from the plain form,
                // turned by the Earth's rotation during flight into the
                // reception frame, is dist away from the receiver.
                const long double tau = dist / C, a = OmegaEarth * tau; const xyzt pe = StateAt(Grg(), sat, k, off - tau, &ve);
                const xyz rot(pe.x * std::cos(a) + pe.y * std::sin(a), -pe.x * std::sin(a) + pe.y * std::cos(a), pe.z);
                EXPECT_NEAR_LD(Dist(rot, kMarker), dist, LightTimeTol_m);
                // Relativity 2 r.v / c^2 of the emission state, taken off the
                // clock; 2 sqrt(GM a) e sin E / c^2 is 2.3 µs times e: below
                // 100 ns for the eccentricities (< 0.04) of these satellites.
                const long double rel = 2.0L * (pe.x * ve.x + pe.y * ve.y + pe.z * ve.z) / (C * C);
                EXPECT_NEAR_LD(std::fabs(relativity - rel) + std::fabs(ps.dt - pe.dt + rel), 0.0L, RelativityTol_s);
                // The one-pass form fed with the converged range as
                // pseudorange is a further iteration: the same distance.
                gnssobs P(dist); EXPECT_NEAR_LD(Grg().CalcSatPosition(static_cast<unsigned short>(sat), tr, rec, p1, v1, P), dist, LightTimeTol_m);
            }
}

TEST(GNSSpEph, AbsentSatellitesAndEpochsFarOutsideTheFile)
{
    // G04 and G23 are absent from the GRG list; 399 is no satellite at all.
    xyz rec = kMarker; xyzt p, v; mjd t = Plus(Grg().GetMJD(10), 100.0L), late = Plus(Grg().GetMJD(95), 7200.0L), far = Plus(late, 21600.0L);
    for (unsigned short sat : {4, 23, 399}) {
        p = xyzt(1.0L, 2.0L, 3.0L, 4.0L), v = xyzt(5.0L, 6.0L, 7.0L, 8.0L); Grg().CalcSatPosition(sat, t, p, v);
        EXPECT_TRUE(!Grg().PSisOK && !Grg().DTisOK && p.x == 1.0L && p.dt == 4.0L && v.z == 7.0L) << sat;
        EXPECT_EQ(Grg().CalcSatPosition(sat, t, rec, p, v), -1.0L);
    }
    // The polynomial is not carried beyond the nodes by more than a second
    // (0.3 mm of error; 1 cm after 30 s, metres after a quarter hour): no
    // position and no clock there. Up to 900 s outside the file that is
    // silent, beyond it also warned.
    const struct { long k; long double off_s; bool ok, warned; } outs[] = {
        {0, -0.9L, true, false}, {95, 0.9L, true, false}, {0, -1.1L, false, false}, {95, 30.0L, false, false},
        {0, -900.0L, false, false}, {0, -901.0L, false, true}, {95, 901.0L, false, true}};
    for (const auto& o : outs) {
        orvotest::Capture err(std::cerr); StateAt(Grg(), 1, o.k, o.off_s);
        EXPECT_TRUE(Grg().PSisOK == o.ok && Grg().DTisOK == o.ok && Grg().OutOfSpan != o.ok) << o.k << " " << o.off_s;
        EXPECT_EQ(o.warned, err.Text().find("#### Orvo: Warning -> CALCULATION EPOCH NOT IN EPOCH "
                                            "INTERVAL OF INPUT PRECISE ORBIT FILE! ####") != std::string::npos) << o.off_s;
    }
    orvotest::Capture err(std::cerr);
    for (mjd* t : {&late, &far}) EXPECT_TRUE(Grg().CalcSatPosition(1, *t, rec, p, v) == -1.0L && !Grg().PSisOK);
}

// The previous day's file ends at 23:45 and the next starts at 00:00, one
// interval later: the end of one day is the next day's to serve, not the
// extrapolated polynomial's (2 to 5 m off there).
TEST(GNSSpEph, ConsecutiveDaysMeetWithoutExtrapolating)
{
    const struct { std::string prev, next; std::vector<int> sats; } pairs[] = {
        {kSp3Before, kSp3, {1, 5, 30, 102, 203}}, {kIgs234, kIgs235, {1, 7, 19, 32}}, {kIgs235, kIgs236, {2, 13, 24, 31}}};
    for (const auto& pr : pairs) {
        GNSSpEph &prev = Shared<GNSSpEph>(pr.prev), &next = Shared<GNSSpEph>(pr.next);
        ASSERT_EQ(prev.GetNEpoch() + next.GetNEpoch(), 2 * 96);
        EXPECT_NEAR_LD(next.GetMJD(0) - prev.GetMJD(95), 900.0L, EpochTol_s);
        for (int sat : pr.sats) {
            StateAt(prev, sat, 95, 900.0L);
            StateAt(next, sat, 0, 0.0L);
            EXPECT_TRUE(!prev.PSisOK && prev.OutOfSpan && next.PSisOK) << pr.next << " " << sat;
        }
    }
}

TEST(GNSSpEph, MissingOrRefusedNodesInvalidateTheirWindows)
{
    // igs18586: every G04 clock is 999999.999999 in a 60-character line, a
    // mark without accuracy fields; G04 has clocks again from block 35.
    GNSSpEph& e = Shared<GNSSpEph>(kIgs234); const struct { int sat; long k; bool clockOK; } marks[] = {{4, 30, false}, {5, 30, true}, {4, 60, true}};
    for (const auto& m : marks) EXPECT_TRUE((StateAt(e, m.sat, m.k, 300.0L), e.PSisOK && e.DTisOK == m.clockOK)) << m.sat;
    // A mark in an 80-character line (with accuracy codes) is stored as
    // 999999 with no sigmas: put on G07 at node 40 of igs18590. An empty
    // G05 node there is a missing position.
    std::vector<std::string> lines = FileLines(kIgs235); std::string &g05 = lines[EpochLine(lines, 40) + 5], &g07 = lines[EpochLine(lines, 40) + 7];
    ASSERT_TRUE(g05.compare(0, 4, "PG05") == 0 && g07.compare(0, 4, "PG07") == 0);
    g07.replace(46, 14, " 999999.999999"); g05.replace(4, 42, "      0.000000      0.000000      0.000000");
    auto m = Load<GNSSpEph>(WriteTemp("mark.sp3", Join(lines)));
    EXPECT_TRUE(m->GetSatPos(6 + 31 * 40).dt == 999999.0L && m->GetSatPosSig(6 + 31 * 40).x + m->GetSatPosSig(6 + 31 * 40).dt == 0.0L);
    // Clock window of ix is ix-1 .. ix+2: node 40 is in it for ix 38 to 41.
    // Position window ix-6 .. ix+7: for ix 33 to 46, even 1.6 h away.
    for (int k = 31; k <= 48; ++k) {
        EXPECT_TRUE((StateAt(*m, 7, k, 450.0L), m->PSisOK && m->DTisOK == (k < 38 || k > 41))) << "ix " << k;
        EXPECT_TRUE((StateAt(*m, 5, k, 10.0L), m->PSisOK == (k < 33 || k > 46))) << "ix " << k;
    }
    xyz rec = kMarker; xyzt p, v; mjd t = Plus(m->GetMJD(40), 10.0L);
    EXPECT_EQ(m->CalcSatPosition(5, t, rec, p, v), -1.0L);
    // G05 at node 40 moved to geocentric distance r_km (0: where it is) with
    // clock clk_us: refused below 20 000 km, above 50 000 km (the clock goes
    // with it) or with a clock beyond 0.1 s; the "no value" mark is none.
    const struct { long double r_km, clk_us; bool refused, posOK, clkOK; } rows[] = {
        {19990.0L, 1.0L, true, false, false}, {20010.0L, 1.0L, false, true, true}, {49990.0L, 1.0L, false, true, true},
        {50010.0L, 1.0L, true, false, false}, {0.0L, 100001.0L, true, true, false}, {0.0L, -99999.0L, false, true, true},
        {0.0L, 999999.999999L, false, true, false}};
    std::size_t at = EpochLine(kGrgLines, 40); while (kGrgLines[at].compare(0, 4, "PG05") != 0) ++at;
    const xyzt n = FileNode(40, 5);
    for (const auto& r : rows) {
        std::vector<std::string> l = kGrgLines; char q[80]; const long double s = r.r_km > 0.0L ? r.r_km / n.GetLength() : 1e-3L;
        std::snprintf(q, sizeof q, "PG05%14.6Lf%14.6Lf%14.6Lf%14.6Lf", n.x * s, n.y * s, n.z * s, r.clk_us), l[at] = q;
        orvotest::Capture out(std::cout); const auto g = Load<GNSSpEph>(WriteTemp("node.sp3", Join(l))); StateAt(*g, 5, 40, 450.0L);
        EXPECT_TRUE(g->PSisOK == r.posOK && g->DTisOK == r.clkOK && g->GetRefused().size() == (r.refused ? 1u : 0u)) << q;
        EXPECT_EQ(r.refused, out.Text().find("1 NODES OUTSIDE THE ORBIT SHELLS OR WITH CLOCKS BEYOND 0.1 S REFUSED AS MISSING, THE FIRST IN LINE "
                                             + std::to_string(at + 1) + "!") != std::string::npos) << out.Text();
    }
}

TEST(GNSSpEphDeath, MissingTruncatedForeignOrMisorderedFilesStop)
{
    const std::vector<std::string>& l = kGrgLines;
    std::vector<std::string> shortRec = l, swapped = l, few(l.begin(), l.begin() + EpochLine(l, 10)), gap = few;
    shortRec[EpochLine(l, 3) + 2].resize(40);
    std::vector<std::string> blank = l, nan = l;
    blank[EpochLine(l, 7) + 2].replace(4, 14, 14, ' '), nan[EpochLine(l, 7) + 3].replace(46, 14, "           nan");
    // Two records swapped: the slot order would lend E01's orbit to E02.
    std::swap(swapped[EpochLine(l, 5) + 1], swapped[EpochLine(l, 5) + 2]);
    // A missing block whose successor's epoch line no longer fits the spacing.
    gap.insert(gap.end(), l.begin() + EpochLine(l, 11), l.end()); gap.push_back(l[EpochLine(l, 95)]); few[0].replace(32, 7, "     10");
    ExpectEachStops<GNSSpEph>({
        // Cut in the satellite list, in the comments, in the records: whole
        // blocks missing are caught before allocating.
        {"cut4.sp3", Join(l, 4), Framed(".*satellite count 75 does not fit the satellite list lines")},
        {"cut9.sp3", Join(l, 9), Framed(".*file ends in the header \\(accuracy list\\)")},
        {"cut20.sp3", Join(l, 20), Framed(".*header announces 96 epochs, the file holds 0")},
        {"cut95.sp3", Join(l, EpochLine(l, 95) + 10), Framed(".*file ends in the records of epoch 96")},
        {"short.sp3", Join(shortRec), Framed(".*line [0-9]+: position record shorter than 60")},
        // A blank field is no zero, and "nan" no clock.
        {"blank.sp3", Join(blank), Framed(".*line " + std::to_string(EpochLine(l, 7) + 3) + ": x coordinate \"\" is not a number")},
        {"nan.sp3", Join(nan), Framed(".*line " + std::to_string(EpochLine(l, 7) + 4) + ": clock \"nan\" is not a number")},
        {"swap.sp3", Join(swapped), Framed(".*record of satellite 202 where the header order has 201")},
        {"gap.sp3", Join(gap), Framed(".*not the header's start plus a whole number of intervals")},
        {"foreign.sp3", "     3.00           C\nsomething else\n*\n", Framed(".*first line is not an SP3 header line")},
        {"few.sp3", Join(few), Framed(".*fewer than 14 epochs")},
    });
    EXPECT_EXIT(Load<GNSSpEph>("none.sp3"), ::testing::ExitedWithCode(1), Framed("PRECISE ORBIT FILE none.sp3 CAN NOT BE OPENED!"));
}

TEST(GNSSpEph, VelocityLinesAndForeignSystemsLeaveTheRecordsAsRead)
{
    // A position-velocity file ('V' flag, a V line behind each P line) holds
    // the same nodes. An I01 listed and recorded just before G01, with G02's
    // values, is passed over: G01 keeps its orbit and clock to the last bit.
    std::vector<std::string> vel, foreign; std::string list;
    for (std::size_t i = 2; i < 7; ++i) list += kGrgLines[i].substr(9, 51);
    list.insert(list.find("G01"), "I01");
    for (std::size_t i = 0; i < kGrgLines.size(); ++i) {
        const std::string& l = kGrgLines[i];
        vel.push_back(i == 0 ? l.substr(0, 2) + "V" + l.substr(3) : l);
        if (l[0] == 'P') vel.push_back("V" + l.substr(1));
        if (l.compare(0, 4, "PG01") == 0) foreign.push_back("PI01" + kGrgLines[i + 1].substr(4));
        foreign.push_back(i < 2 || i > 6 ? l : (i == 2 ? "+   76   " : "+        ") + list.substr(51 * (i - 2), 51));
    }
    const auto v = Load<GNSSpEph>(WriteTemp("vel.sp3", Join(vel))), f = Load<GNSSpEph>(WriteTemp("i01.sp3", Join(foreign)));
    for (long i = 0; i < 75 * 96; ++i)
        ASSERT_TRUE(Dist(v->GetSatPos(i), Grg().GetSatPos(i)) == 0.0L && v->GetSatPos(i).dt == Grg().GetSatPos(i).dt) << i;
    EXPECT_TRUE(f->GetNSat() == 76 && f->GetSatList(45) == -1 && f->GetSatList(46) == 1);
    for (long k : {0L, 40L, 94L}) {
        const xyzt a = StateAt(*f, 1, k, 450.0L), b = StateAt(Grg(), 1, k, 450.0L);
        EXPECT_TRUE(Dist(a, b) == 0.0L && a.dt == b.dt && f->PSisOK && f->DTisOK) << k;
    }
}

// A saved light-time solution carried over a receiver clock change and a
// receiver move must give what a fresh solution gives, up to the 2 ms that
// a receiver clock may stand off. 1e-9 m: the light time converges to 1e-5
// m, i.e. 3e-14 s of emission time, and the motion left out over 2 ms is
// below 1e-9 m. The relativity term 2 r·v/c² to 1e-17 s (3e-9 m) and
// 4e-14 s a second of shift: the velocity is carried with the central and
// frame accelerations, and the 1e-4 m/s² left out (J2, Sun, Moon) times r
// moves the term by 6e-14 s/s at most (1e-8 m over 0.5 ms); left as saved,
// the velocity would miss by 3e-10 s/s, 5e-5 m over 0.5 ms. The orbit clock
// keeps its value and may drift by 3e-10 s/s of emission time.
TEST(GNSSpEph, MovedLightTimeSolutionEqualsAFreshOne)
{
    constexpr long double MoveTol_m = 1e-9L, RelativityTol_s = 1e-17L, RelativityRate = 4e-14L, ClockDrift = 3e-10L;
    const struct { long double shift_s, north_m; } moves[] = {{0.0L, 0.0L}, {1e-9L, 0.0L}, {-1e-5L, 0.0L}, {1e-5L, 30.0L},
                                                             {0.0L, -100.0L}, {-4.8e-4L, 0.0L}, {1e-3L, 10.0L}, {-2e-3L, 0.0L}};
    for (int sat : {3, 113, 211})
        for (long k : {5L, 60L}) {
            xyz rec = kMarker; xyzt p0, v0;
            mjd t0 = Plus(Grg().GetMJD(k), 77.0L);
            Grg().CalcSatPosition(static_cast<unsigned short>(sat), t0, rec, p0, v0);
            ASSERT_TRUE(Grg().PSisOK) << sat;
            const GNSSpEph::LightTimeState saved = Grg().LastState();
            for (const auto& m : moves) {
                xyz moved = kMarker; moved.z += m.north_m;  // near north at 55 deg latitude
                mjd t = Plus(t0, m.shift_s); xyzt pf, vf, pm;
                const long double fresh = Grg().CalcSatPosition(static_cast<unsigned short>(sat), t, moved, pf, vf), relF = Grg().Relativity;
                const long double carried = Grg().MovedSatPosition(saved, m.shift_s, moved, pm);
                EXPECT_NEAR_LD(carried, fresh, MoveTol_m) << sat << " " << m.shift_s << " " << m.north_m;
                EXPECT_NEAR_LD(Dist(pm, pf), 0.0L, MoveTol_m) << sat;
                const long double relTol = RelativityTol_s + RelativityRate * std::fabs(m.shift_s);
                EXPECT_NEAR_LD(Grg().Relativity, relF, relTol) << sat << " " << m.shift_s;
                // The emission moves by the shift and the change of flight time.
                const long double emission_s = std::fabs(m.shift_s) + std::fabs(m.north_m) / GNSSpEphns::C_mps;
                EXPECT_NEAR_LD(pm.dt, pf.dt, relTol + ClockDrift * emission_s) << sat;
            }
            // The solution as found gives the position and clock the search gave.
            const xyzt solved = GNSSpEph::SolvedPosition(saved);
            EXPECT_TRUE(Dist(solved, p0) == 0.0L && solved.dt == p0.dt) << sat;
        }
}

// A hinted light-time solution must give what the full iteration gives, to
// the bound MaxHintError_s is documented with (1e-9 m of range and orbit,
// 1e-7 m/s of velocity, 1e-17 s = 3e-9 m of clock and relativity), whatever
// the hint within it; a worse hint, or none, falls back to the iteration
// itself. Either stops within 1e-5 m of range, 3.3e-14 s of flight time.
// The hints kept from the solutions 60 and 30 s before predict the flight
// time to 1e-8 s (the rate alone would miss by up to 3e-7 s).
TEST(GNSSpEph, HintedLightTimeSolutionEqualsTheIteratedOne)
{
    constexpr long double HintTol_m = 1e-9L, HintClockTol_s = 1e-17L, PredictTol_s = 1e-8L, StopTol_s = 4e-14L;
    xyz rec = kMarker;
    for (int sat : {3, 113, 211})
        for (long double off : {0.0L, 31.0L, 899.9L, 5000.0L}) {
            mjd t = Plus(Grg().GetMJD(20), off), before = Plus(t, -30.0L); xyzt pf, vf, ph, vh, pb, vb;
            const long double fresh = Grg().CalcSatPosition(static_cast<unsigned short>(sat), t, rec, pf, vf), relF = Grg().Relativity;
            ASSERT_TRUE(Grg().PSisOK) << sat;
            const long double tau = Grg().LastState().tau;
            LightTimeHints hints;
            EXPECT_EQ(hints.Predict(static_cast<short>(sat), t), 0.0L);
            for (mjd kept : {Plus(before, -30.0L), before}) {
                Grg().CalcSatPosition(static_cast<unsigned short>(sat), kept, rec, pb, vb);
                hints.Keep(static_cast<short>(sat), kept, Grg().LastState().tau, rec, pb, vb);
            }
            EXPECT_NEAR_LD(hints.Predict(static_cast<short>(sat), t), tau, PredictTol_s) << sat;
            EXPECT_EQ(hints.Predict(static_cast<short>(sat), Plus(t, LightTimeHints::MaxAge_s)), 0.0L);
            // Numbers outside the shared numbering are neither kept nor asked.
            for (short none : {-1, 300}) {
                hints.Keep(none, t, tau, rec, pb, vb);
                EXPECT_EQ(hints.Predict(none, t), 0.0L) << none;
            }
            for (long double hint : {tau, tau + 3e-7L, tau - 0.99e-4L, tau + 0.99e-4L, tau + 2e-3L, 0.0L, -1.0L}) {
                const long double dist = Grg().CalcSatPosition(static_cast<unsigned short>(sat), t, rec, ph, vh, hint);
                EXPECT_NEAR_LD(dist, fresh, HintTol_m) << sat << " " << off << " " << hint - tau;
                EXPECT_NEAR_LD(Dist(ph, pf), 0.0L, HintTol_m) << sat << " " << hint - tau;
                EXPECT_NEAR_LD(Dist(vh, vf), 0.0L, 1e-7L) << sat << " " << hint - tau;
                EXPECT_NEAR_LD(ph.dt, pf.dt, HintClockTol_s) << sat << " " << hint - tau;
                EXPECT_NEAR_LD(Grg().Relativity, relF, HintClockTol_s) << sat;
                EXPECT_NEAR_LD(Grg().LastState().tau, tau, StopTol_s) << sat;
            }
        }
}
