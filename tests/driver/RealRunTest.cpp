// Whole runs of the built program on the real station days: the static PPP
// solution must land on the independently known station coordinates, and bad
// input at program level must give a clear, finite result.

#include "ContextFixture.h"

using namespace drivertest;

// The bound for a first solution without antenna calibration and without
// tides: the unmodelled effects (receiver phase-centre offset and variation
// of about a decimetre on the L3 combination, the solid tide left after
// averaging over the day, satellite offsets not absorbed by the clocks) add
// up to decimetres; half a metre means a fault in the chain.
constexpr long double PositionBound_m = 0.5L;
// Tighter checks per component. Up: below the 0.216 m antenna height of
// ESBC, so that a lost or doubled marker-to-ARP eccentricity fails. North and
// east: the missing models act mostly on the height; 10 cm in the plane is
// three times what a correct run shows on these days.
constexpr long double UpBound_m = 0.15L;
constexpr long double HorizontalBound_m = 0.10L;
// Default iteration limit (MaxIter): a run that uses all of it did not
// converge.
constexpr int MaxIter = 10;
// L3 reference deviation over the full day: the a-priori sigma is 6 mm;
// missing tides, wind-up and antenna models add centimetres, and the last
// quarter of an hour lies beyond the last orbit node, where the 14-node
// polynomial is extrapolated (decimetres to metres on a few arcs). Below
// 0.1 m and above 1 mm separates a working adjustment from broken arcs or
// an idle phase type.
constexpr long double L3FullDayMax_mm = 100.0L;
constexpr long double L3Min_mm = 1.0L;
// Within the span of the orbit file, with the day's calibrations and tides,
// the phase must fit within its own a-priori sigma (6 mm).
constexpr long double L3CalibratedMax_mm = 6.0L;
// Code: P3 amplifies the noise of the raw codes about three times, and
// GLONASS inter-frequency biases are not modelled: tens of centimetres to a
// metre; 3 m is a fault (a clock jump, a wrong frequency).
constexpr long double CodeMin_mm = 100.0L;
constexpr long double CodeMax_mm = 3000.0L;
// Last printed digit of coordinates in the report and the plot file.
constexpr long double PrintStep_m = 1e-4L;
// Two hours of the ESBC day: the bad-input runs below are cut from it.
constexpr long TwoHours = 240;

const char* const L3Label = "REF. STD. APOSTERIORI - L3                     : ";

struct Neu { long double n, e, u, h; };  // north, east, up and horizontal (m)

// North, east and up of est - ref on the GRS80 normal at ref.
static Neu LocalDifference(const Xyz& est, const Xyz& ref) {
    const long double a = 6378137.0L, f = 1.0L / 298.257222101L, e2 = f * (2.0L - f);
    const long double lon = std::atan2(ref.y, ref.x), rho = std::hypot(ref.x, ref.y);
    long double lat = std::atan2(ref.z, rho * (1.0L - e2));
    for (int i = 0; i < 10; ++i)
        lat = std::atan2(ref.z + e2 * a / std::sqrt(1.0L - e2 * std::sin(lat) * std::sin(lat)) * std::sin(lat), rho);
    const long double dx = est.x - ref.x, dy = est.y - ref.y, dz = est.z - ref.z;
    const long double sf = std::sin(lat), cf = std::cos(lat), sl = std::sin(lon), cl = std::cos(lon);
    const long double n = -sf * cl * dx - sf * sl * dy + cf * dz, e = -sl * dx + cl * dy;
    return {n, e, cf * cl * dx + cf * sl * dy + sf * dz, std::hypot(n, e)};
}

// The number after `label` on the first line holding it; NaN when absent.
static long double NumberAfter(const std::string& text, const std::string& label) {
    const auto at = text.find(label);
    long double v = std::nanl("");
    if (at != std::string::npos) std::istringstream(text.substr(at + label.size(), 40)) >> v;
    return v;
}

// A printed not-a-number ("nan", "-nan", "NaN") as a word of its own, so
// that words like "nanoseconds" in a label do not count.
static bool HasNaN(const std::string& text) {
    static const std::regex NaNWord("(^|[^A-Za-z])[-+]?nan([^A-Za-z]|$)", std::regex::icase);
    return std::regex_search(text, NaNWord);
}

// Options shared by all full runs: ionosphere-free code and phase,
// Saastamoinen with Niell mapping, troposphere nodes with gradients, static
// solution and its plot file; the observation file and the ESBC products.
static std::string Args(const std::string& obs, const std::string& systems, const std::string& code = "Pc3",
                 const std::string& interval = "02:00:00") {
    return "-r" + obs + " -ep" + kSp3 + " -ec" + kClk + " -cs" + systems + " -l" + code + ",L3 -tmSAAST,NIELL -ti" +
           interval + " -tg -xSTA -gpsplot.txt";
}

// A run that ends normally with a report free of not-a-number.
static RunResult RunClean(const std::string& dir, const std::string& args) {
    const RunResult r = RunOrvo(dir, args);
    EXPECT_TRUE(r.status == 0 && !HasNaN(r.out)) << dir << "\n" << r.err;
    return r;
}

// The checks every complete real run must pass.
static void ExpectGoodDay(const std::string& set, const std::string& dir, const std::string& args, const std::string& code) {
    SCOPED_TRACE(dir);
    const RunResult r = RunClean(dir, args);
    const long double iters = NumberAfter(r.out, "# of ITERATIONS :"), l3 = NumberAfter(r.out, L3Label),
                      cd = NumberAfter(r.out, "REF. STD. APOSTERIORI - " + code + std::string(23 - code.size(), ' ') + ": ");
    EXPECT_TRUE(iters >= 1.0L && iters < MaxIter) << iters << " iterations: did not converge";
    EXPECT_TRUE(l3 > L3Min_mm && l3 < L3FullDayMax_mm) << l3;
    EXPECT_TRUE(cd > CodeMin_mm && cd < CodeMax_mm) << cd;

    const Xyz inReport = Estimated(r.out);
    const Neu d = LocalDifference(inReport, Reference(set));
    EXPECT_LT(std::hypot(d.h, d.u), PositionBound_m) << "horizontal " << d.h << " up " << d.u;
    EXPECT_TRUE(std::fabs(d.u) < UpBound_m && d.h < HorizontalBound_m) << "horizontal " << d.h << " up " << d.u;

    // The plot file carries the same solution as the report: both print the
    // position with 4 decimals, so they agree to the last printed digit.
    const std::string plot = orvotest::ReadFile(orvotest::TempDir() + "/" + dir + "/plot.txt");
    EXPECT_FALSE(HasNaN(plot));
    std::istringstream data(plot.substr(std::min(plot.find('\n'), plot.size())));
    std::string skip;
    for (int i = 0; i < 13; ++i) data >> skip;  // epoch (2), counts (9), S0, GTEST
    Xyz inPlot{std::nanl(""), std::nanl(""), std::nanl("")};
    data >> inPlot.x >> inPlot.y >> inPlot.z;
    EXPECT_LE(Distance(inPlot, inReport), PrintStep_m * std::sqrt(3.0L)) << plot;
}

TEST(RealRun, FullDaysLandOnTheReference) {
    // Galileo has no P1 in the ESBC file, so the P1-based code runs on G and
    // R. ZIMM has no clock file for its day: without -ec the 15-minute
    // clocks of the orbit file stand in (cubic over four nodes). The ESBC
    // calibrations have no Galileo satellite: such a run warns once per
    // satellite and goes on with its offset at zero.
    const std::string gf = " -gf" + kChannels, z = orvotest::Data("zimm-2015-235/");
    ExpectGoodDay("esbc-2020-177", "esbc_ge", Args(kObs, "GE"), "Pc3");
    ExpectGoodDay("esbc-2020-177", "esbc_gre", Args(kObs, "GRE") + gf + " -pv" + kAtx, "Pc3");
    ExpectGoodDay("esbc-2020-177", "esbc_gr_pp3", Args(kObs, "GR", "Pp3") + gf, "Pp3");
    ExpectGoodDay("zimm-2015-235", "zimm_g",
                  "-r" + z + "ZIMM2350.15O -ep" + z + "igs18590.sp3 -csG -lPc3,L3 -tmSAAST,NIELL -ti02:00:00 -tg -xSTA -gpsplot.txt",
                  "Pc3");
}

// The day up to 23:44:30, before the last orbit node at 23:45 (beyond it the
// 14-node polynomial is extrapolated, decimetres to metres on a few arcs),
// with the antenna calibrations of the day.
static std::string CalibratedEsbc(const std::string& extra) {
    return Args(CutObs("esbc_2850.20o", 2850), "GR") + " -gf" + kChannels + " -pv" + kAtx + " " + extra;
}
static std::string CalibratedZimm(const std::string& extra) {
    const std::string z = orvotest::Data("zimm-2015-235/");
    return "-r" + z + "ZIMM2350.15O -ep" + z + "igs18590.sp3 -pv" + z + "igs08_trimmed.atx -bq" + z
           + "zimm.blq -csG -lPc3,L3 -tmSAAST,NIELL -ti02:00:00 -tg -xSTA -gpsplot.txt " + extra;
}

// The reference coordinates themselves are good to about 5 mm in the plane
// and 10 mm in height: a calibrated, tide-corrected day must land there.
constexpr long double CalibratedHorizontal_m = 0.005L;
constexpr long double CalibratedUp_m = 0.010L;
// ZIMM's 15-minute satellite clocks leave about 4 cm of L3 noise, and its
// calibration file lacks three satellites (G03, G08, G26, no offsets):
// twice the reference's uncertainty.
constexpr long double ZimmHorizontal_m = 0.020L;
constexpr long double ZimmUp_m = 0.030L;
// Switching the solid tide off moves a day's solution by the daily mean of
// the tide, which is the permanent tide (IERS 2010: 0.1206 P2(sin phi) m up,
// 0.0252 sin 2phi m north) plus the fortnightly and monthly tides of the day
// (under 5 mm at these sites), and by the uneven weighting of the day's
// +-15 cm swing in height, which the epoch clocks and troposphere nodes take
// up unevenly (a tenth of the swing); in the plane the swing is a third.
constexpr long double TideNorth_m = 0.005L;
constexpr long double TideUp_m = 0.020L;

TEST(RealRun, CalibratedDaysLandOnTheReferenceAndCarryThePermanentTide) {
    struct Row {
        const char* set;
        std::string on, off;
        long double horizontal, up;
    } rows[] = {
        {"esbc-2020-177", CalibratedEsbc(""), CalibratedEsbc("-st"), CalibratedHorizontal_m, CalibratedUp_m},
        {"zimm-2015-235", CalibratedZimm(""), CalibratedZimm("-st"), ZimmHorizontal_m, ZimmUp_m},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.set);
        const RunResult on = RunClean(std::string(row.set) + "_on", row.on), off = RunClean(std::string(row.set) + "_off", row.off);
        const Xyz ref = Reference(row.set);
        const Neu d = LocalDifference(Estimated(on.out), ref), dOff = LocalDifference(Estimated(off.out), ref);
        EXPECT_TRUE(d.h < row.horizontal && std::fabs(d.u) < row.up) << "N " << d.n << " E " << d.e << " U " << d.u;
        EXPECT_TRUE(Has(on.out, "All satellites OK") == (row.set[0] == 'e')) << "every satellite calibrated only at ESBC";
        if (row.set[0] == 'e') {
            EXPECT_LT(NumberAfter(on.out, L3Label), L3CalibratedMax_mm);
        }
        const long double r = std::sqrt(ref.x * ref.x + ref.y * ref.y), lat = std::atan2(ref.z, r * (1.0L - 0.00669438L));
        const long double s = std::sin(lat), p2 = 1.5L * s * s - 0.5L;
        EXPECT_NEAR(d.n - dOff.n, 0.0252L * std::sin(2.0L * lat), TideNorth_m);
        EXPECT_NEAR(d.u - dOff.u, 0.1206L * p2, TideUp_m);
    }
}

TEST(RealRunBadInput, FileWithoutPhaseGivesCodeOnlySolutionAndUndefinedL3Variance) {
    // The type sums of the variances each lose the whole x'tc, so the L3 sum
    // of a run without any phase ends just below zero: it has no root, and
    // its line, and only its line, prints as not-a-number (a clamp to zero
    // would read as a perfect phase fit).
    const RunResult r = RunOrvo("nophase", Args(CutObs("nophase.20o", TwoHours, KeepAll, "", "", true), "G"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(NumberAfter(r.out, "L3 ambiguity parameters             :") + NumberAfter(r.out, "# of AMBIGUITIES:"), 0.0L);
    const auto l3 = r.out.find(L3Label);
    ASSERT_NE(l3, std::string::npos);
    const std::string l3Line = r.out.substr(l3, r.out.find('\n', l3) - l3);
    EXPECT_TRUE(HasNaN(l3Line)) << l3Line;
    std::string others = r.out;
    others.erase(l3, l3Line.size());
    const auto l3Early = others.find("A-posteriori L3 :");
    if (l3Early != std::string::npos) others.erase(l3Early, others.find('\n', l3Early) - l3Early);
    EXPECT_FALSE(HasNaN(others));
    EXPECT_GT(NumberAfter(r.out, "# of OBS        :"), 0.0L);
    // Code alone over two hours with the troposphere free: the P3 noise of
    // several decimetres and its correlation with height and troposphere
    // leave metre-level errors, mostly in height; 2 m keeps a solution that
    // took blanks for zero phase (kilometres) out.
    EXPECT_LT(Distance(Estimated(r.out), Reference("esbc-2020-177")), 2.0L);
}

TEST(RealRunBadInput, TroposphereIntervalLongerThanDataSpanGivesOnePiece) {
    // Six-hour interval on two hours of data: one node before the first
    // epoch and one after the last, so one linear piece over the span.
    const RunResult r = RunClean("long_tropo", Args(CutObs("two_hours.20o", TwoHours), "GE", "Pc3", "06:00:00"));
    EXPECT_EQ(NumberAfter(r.out, "Troposphere zenit delays (wet)      :"), 2.0L);
    EXPECT_TRUE(NumberAfter(r.out, "# of ITERATIONS :") < MaxIter && NumberAfter(r.out, "# of UNDEF UNKS :") == 0.0L);
    // Two hours of phase: the ambiguities are weakly separated from the
    // position, so the bound is the half metre, not the day's.
    EXPECT_LT(Distance(Estimated(r.out), Reference("esbc-2020-177")), PositionBound_m);
}

TEST(RealRunBadInput, AnEpochWithoutRedundancyEndsWithItsReason) {
    // One epoch of five GPS satellites: as many codes as the epoch has
    // unknowns (coordinates, clock and the code's bias) leave nothing to
    // check the fit with, and a report of that fit would read as a result.
    const Selector fiveGps = [](const std::vector<std::string>& sats) {
        std::vector<bool> k(sats.size(), false);
        for (size_t i = 0, n = 0; i < sats.size(); ++i) k[i] = sats[i][0] == 'G' && n++ < 5;
        return k;
    };
    const RunResult run = RunOrvo("fivecodes", "-r" + CutObs("five.20o", 1, fiveGps) + " -ep" + kSp3 + " -ec" + kClk + " -csG -lPc3 -xSTA");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Has(run.err, "NO REDUNDANT OBSERVATIONS IN STATIC SOLUTION")) << run.err;
    EXPECT_FALSE(Has(run.out, "ECEF COORDINATES:"));
}

// Broadcast orbits are good to a metre or two and their clocks to a few
// nanoseconds: a day of phase averages that to decimetres. 2 m is a fault
// (a wrong clock sign, a GPS week or time scale off).
constexpr long double BroadcastBound_m = 2.0L;

TEST(RealRun, NavigationFilesAloneGiveADecimetreDayAndYieldToPreciseOrbits) {
    const std::string nav = " -eg" + kNavG + " -er" + kNavR + " -csGR -lPc3,L3 -tmSAAST,NIELL -ti02:00:00 -tg -xSTA -gpsplot.txt";
    const RunResult r = RunClean("esbc_nav", "-r" + kObs + nav);
    EXPECT_TRUE(NumberAfter(r.out, "# of ITERATIONS :") < MaxIter && NumberAfter(r.out, "# of OBS        :") > 50000.0L);
    const Neu d = LocalDifference(Estimated(r.out), Reference("esbc-2020-177"));
    EXPECT_LT(std::hypot(d.h, d.u), BroadcastBound_m) << "N " << d.n << " E " << d.e << " U " << d.u;
    // With an orbit file as well, the navigation files are dropped and the
    // settings report says so.
    const RunResult both = RunClean("esbc_nav_sp3", Args(CutObs("two_hours_nav.20o", TwoHours), "GR") + nav);
    EXPECT_TRUE(Has(both.err, "BOTH PRECISE EPHEMERIS AND (SOME) NAVIGATION FILES FOR SET")) << both.err;
    EXPECT_FALSE(Has(both.out, "GPS broadcast navigation file       : " + kNavG));
}

TEST(RealRun, IonosphereModelsTakeTheDelayOutOfSingleFrequencyCode) {
    // Code on the first frequency alone carries the whole ionosphere: an
    // unmodelled delay, larger at low elevation, lifts the height by metres.
    // A model takes it down. ZIMM's global maps of its day bring the
    // solution closer. At ESBC (June 2020, deep solar minimum) the broadcast
    // coefficients give a vertical delay of 5 ns (1.5 m) all day, the
    // model's floor, about three times what the day had: the height must go
    // down, and overshoots.
    const std::string z = orvotest::Data("zimm-2015-235/");
    const struct {
        const char* set;
        std::string run, model;
        bool closer;
    } rows[] = {
        {"esbc-2020-177", "-r" + kObs + " -ep" + kSp3 + " -ec" + kClk + " -csG -lP1 -tmSAAST,NIELL -xSTA", " -ik" + kNavG, false},
        {"zimm-2015-235", "-r" + z + "ZIMM2350.15O -ep" + z + "igs18590.sp3 -csG -lC1 -tmSAAST,NIELL -xSTA", " -ii" + z + "corg2350.15i", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.set);
        const Xyz ref = Reference(row.set);
        const Neu without = LocalDifference(Estimated(RunClean(std::string(row.set) + "_noion", row.run).out), ref);
        const Neu with = LocalDifference(Estimated(RunClean(std::string(row.set) + "_ion", row.run + row.model).out), ref);
        EXPECT_GT(without.u, 0.5L);
        EXPECT_LT(with.u, without.u - 0.5L);
        if (row.closer) {
            EXPECT_LT(std::hypot(with.h, with.u), 0.7L * std::hypot(without.h, without.u)) << with.u << " " << without.u;
        }
    }
}

// STAX, STAY, STAZ of the SOLUTION/ESTIMATE block of a SINEX file (m).
static Xyz SinexStation(const std::string& path) {
    const std::string text = orvotest::ReadFile(path);
    long double v[3] = {std::nanl(""), std::nanl(""), std::nanl("")};
    std::istringstream in(text.substr(std::min(text.find("+SOLUTION/ESTIMATE"), text.size())));
    std::string line, index, type, site, point, soln, epoch, unit, s;
    while (std::getline(in, line) && line.rfind("-SOLUTION/ESTIMATE", 0) != 0) {
        std::istringstream f(line);
        long double value;
        if (f >> index >> type >> site >> point >> soln >> epoch >> unit >> s >> value && type.size() == 4
            && type.compare(0, 3, "STA") == 0 && type[3] >= 'X' && type[3] <= 'Z')
            v[type[3] - 'X'] = value;
    }
    return {v[0], v[1], v[2]};
}

TEST(RealRun, StationFilesAsPublishedGiveTheRinex2Solution) {
    // The README's G+R+E example from the station's gzipped Compact RINEX 3
    // file, of which the RINEX 2 file is a translation: the same records, so
    // the same solution. 1e-6 m: the SINEX file prints 14 significant
    // digits (1e-7 m at 5000 km); any record read differently moves it more.
    constexpr long double SameSolution_m = 1e-6L;
    const std::string crx = orvotest::Data("esbc-2020-177/ESBC00DNK_R_20201770000_01D_30S_MO.crx.gz");
    const std::string extra = " -gf" + kChannels + " -pv" + kAtx + " -me10 -osday.snx";
    RunClean("fmt_rnx2", Args(kObs, "GRE") + extra);
    const RunResult r = RunClean("fmt_crx", Args(crx, "GRE") + extra);
    const Xyz a = SinexStation(orvotest::TempDir() + "/fmt_rnx2/day.snx"), b = SinexStation(orvotest::TempDir() + "/fmt_crx/day.snx");
    EXPECT_LT(Distance(a, b), SameSolution_m) << a.x << " " << b.x;
    EXPECT_LT(Distance(a, Reference("esbc-2020-177")), PositionBound_m);
    EXPECT_NE(r.out.find("RECORDS OF SYSTEMS NOT PROCESSED LEFT OUT (C 33325, J 1481, S 12435)"), std::string::npos);
}
