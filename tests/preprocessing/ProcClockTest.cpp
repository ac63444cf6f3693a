#include "preprocessing/ProcClock.h"

#include <algorithm>

#include "preprocessing/StagingSupport.h"

using namespace stagingtest;

namespace {

// ---------------------------------------------------------------------------
// Made-up epochs: satellites 20 000 km from the receiver in chosen
// directions, with a satellite clock of tens of kilometres, so that a
// wrong distance (geocentric instead of topocentric) or a wrong sign of the
// satellite clock would move the result by thousands of kilometres.

// Round-off of sums of 2e7 m values in long double is 1e-11 m; a micrometre
// is far above it and far below any modelling slip.
constexpr long double ExactTol_m = 1e-6L;
// The reweighting stops within 0.1 mm of its fixed point.
constexpr long double MeanTol_m = 1e-3L;

// A record: code misclosures with respect to the epoch's clock (m, NaN for
// an absent code), elevation, whether orbit and clock exist.
struct Rec {
    short sat;
    long double c1, p1 = NAN, p2 = NAN, c7 = NAN, elev_deg = 45.0L;
    bool ok = true;
};
Rec O(short sat, long double c1, long double p1 = NAN, long double p2 = NAN, long double c7 = NAN) { return {sat, c1, p1, p2, c7}; }
Rec Low(short sat, long double c1, long double elev_deg, bool ok = true) { return {sat, c1, NAN, NAN, NAN, elev_deg, ok}; }

const xyz kRec(3582105.0L, 532590.0L, 5232755.0L);

// Fills the context with the epochs: header flags for the codes, records,
// satellite positions and clocks, elevations; each present code is
// distance + clock - c*dt_sat + its misclosure.
void Build(Context& c, const std::vector<std::vector<Rec>>& epochs, long double clock_m, bool p1InHeader = true)
{
    RINEXData& d = c.rnxd;
    c.rnxh.iC1 = c.rnxh.iP2 = c.rnxh.iC7 = true;
    c.rnxh.iP1 = p1InHeader;
    long n = 0;
    for (const auto& e : epochs) n += static_cast<long>(e.size());
    d.SetNRecords(static_cast<long>(epochs.size()), n);
    d.epoch.Resize(d.nepochall, 1, mjd());
    d.nsat.Resize(d.nepochall, 1, 0);
    d.sat.Resize(n, 1, 0);
    // Every code matrix exists, so that a flag the header lacks is the only
    // thing that keeps a code out.
    for (matrix<gnssobs>* m : {&d.C1, &d.P1, &d.P2, &d.C7}) m->Resize(n, 1, gnssobs());
    c.gc.OKSAT.Resize(n, 1, false);
    c.gc.ELV.Resize(n, 1, 0.0L);
    c.gc.SAT_POS.Resize(n, 1, xyzt());
    c.gc.RecPosFC = kRec;
    long k = 0;
    for (size_t i = 0; i < epochs.size(); ++i) {
        d.epoch(i) = mjd(59025, 30.0L * i);  // 2020-06-25, 30 s
        d.nsat(i) = static_cast<short>(epochs[i].size());
        for (const Rec& o : epochs[i]) {
            d.sat(k) = o.sat;
            c.gc.OKSAT(k) = o.ok;
            c.gc.ELV(k) = Pi * o.elev_deg / 180.0L;
            // A direction, distance and satellite clock of its own for each record.
            const long double a = 0.7L * k + 0.3L, b = 0.4L * k - 1.1L, rho = 2.0e7L + 1.0e5L * k;
            const long double dts = 1.0e-4L * ((k % 3) - 1.0L) + 3.0e-6L;
            c.gc.SAT_POS(k) = xyzt(kRec.GetX() + rho * std::cos(a) * std::cos(b),
                                   kRec.GetY() + rho * std::sin(a) * std::cos(b), kRec.GetZ() + rho * std::sin(b), dts);
            for (const auto& cd : {std::make_pair(&d.C1, o.c1), {&d.P1, o.p1}, {&d.P2, o.p2}, {&d.C7, o.c7}})
                if (!std::isnan(cd.second)) (*cd.first)(k) = gnssobs(rho + clock_m - C * dts + cd.second);
            ++k;
        }
    }
}

std::string RunStage(gCPosC& g)
{
    Capture out(std::cout);
    ProcClock(g);
    return out.Text();
}

}  // namespace

TEST(ProcClock, RobustMeanOfTheUsableCodesOfEachEpoch)
{
    // Roots of the robust mean's defining equation, sum (x - m)/((x - m)^2 + 1)
    // = 0: 0.09798 m for {0, 0, 0.3} (every present code of a satellite is
    // one value: counted per satellite it would be 0.15 m), 0.06516 m for
    // {0, 0, 0, 5}. Each excluded record carries 5 m, which would move the
    // mean of three clean values by 6 cm. Limit 2 * 500 m: a code 1500 m off
    // is counted as exceeded, one 900 m off only with a bound of 400 m;
    // neither moves the clock by more than a millimetre.
    const std::vector<Rec> four = {O(1, 0), O(2, 0), O(3, 0), O(4, 0)};
    auto with = [&](long double off) { std::vector<Rec> e = four; e.push_back(O(5, off)); return e; };
    const struct {
        const char* what;
        bool gal;
        std::vector<std::vector<Rec>> epochs;
        long double clock, want, tol;
        bool p1InHeader = true;
        long double maxf = 500.0L;
        int exceeded = 0;
    } rows[] = {
        {"consistent codes, both epochs", true, {{O(3, 0, 0, 0), O(17, 0, NAN, 0), O(211, 0, NAN, NAN, 0)}, {O(17, 0, NAN, 0), O(211, 0, NAN, NAN, 0)}},
         1234.5678L, 1234.5678L, ExactTol_m},
        {"single code", false, {{O(5, NAN, NAN, 3.75L)}}, -250.0L, -246.25L, ExactTol_m},
        {"per code, GPS", false, {{O(1, 0, 0), O(2, 0.3L)}}, 0.0L, 0.09798L, MeanTol_m},
        {"per code, Galileo", true, {{O(212, 0, NAN, NAN, 0), O(230, 0.3L)}}, 0.0L, 0.09798L, MeanTol_m},
        {"P1 not in the header", false, {{O(1, 0.5L, 40, 0.5L), O(2, 0.5L, 40)}}, 100.0L, 100.5L, ExactTol_m, false},
        {"at the mask, low, no orbit, GLONASS off, foreign", true,
         {{O(4, 0), Low(6, 5, 10), Low(7, 5, 3), O(9, 0), Low(8, 5, 45, false), O(105, 5), O(220, 0), O(330, 5)}}, 7.0L, 7.0L, ExactTol_m},
        {"just above the mask", true, {{O(4, 0), Low(6, 5, 10.0000001L), O(9, 0), O(220, 0)}}, 7.0L, 7.06516L, MeanTol_m},
        {"blunders", false, {with(1500), with(900), with(1500)}, -20.0L, -20.0L, MeanTol_m, true, 500.0L, 2},
        {"blunders, lower bound", false, {with(1500), with(900), with(1500)}, -20.0L, -20.0L, MeanTol_m, true, 400.0L, 3},
    };
    for (const auto& r : rows) {
        Context c;
        c.gc.isGPS = true;
        c.gc.isGAL = r.gal;
        c.gc.MinElevation = 10.0;
        c.gc.MaxfDiff = r.maxf;
        Build(c, r.epochs, r.clock, r.p1InHeader);
        const std::string out = RunStage(c.gc);
        ASSERT_EQ(c.gc.dtAll.NRow(), static_cast<long>(r.epochs.size()));
        for (long i = 0; i < c.gc.dtAll.NRow(); ++i) EXPECT_NEAR_LD(c.gc.dtAll(i), r.want, r.tol) << r.what;
        const std::string n = std::to_string(r.exceeded) + "\n";
        EXPECT_TRUE(Has(out, "  # of EXCEEDED F VALUES :          " + n) && Has(out, "  # of ESTIMATED OUTLIERS:          " + n)) << r.what;
    }
}

TEST(ProcClock, EpochWithoutCodesKeepsZeroAndIsReported)
{
    Context c;
    c.gc.isGPS = c.gc.isGAL = true;
    Build(c, {{O(10, 0.2L), O(204, 0.2L)}, {O(10, 0.2L)}, {Low(11, 0.2L, 5)}}, 55.0L);
    const std::string out = RunStage(c.gc);
    EXPECT_NEAR_LD(c.gc.dtAll(1), 55.2L, ExactTol_m);
    EXPECT_EQ(c.gc.dtAll(2), 0.0L);
    // Epoch numbers count from 1; the date is that of the epoch.
    for (const char* line : {"DETERMINATION OF A-PRIORI CLOCK ERORRS:", "Epoch-by-epoch screening:",
                             "    EPOCH:       2 [ 2020-06-25 00:00:30.0]     NO GALILEO OBSERVATIONS!\n",
                             "    EPOCH:       3 [ 2020-06-25 00:01:00.0]     NO GPS OBSERVATIONS!\n",
                             "    EPOCH:       3 [ 2020-06-25 00:01:00.0]     NO GALILEO OBSERVATIONS!\n",
                             "  # of ALL EPOCHS IN RINEX FILE:                  3\n",
                             "    # of GPS EPOCHS            :                  2\n",
                             "    # of GALILEO EPOCHS        :                  1\n",
                             "    # of ALL GNSS OK EPOCHS    :                  2\n"})
        EXPECT_TRUE(Has(out, line)) << line << out;
    EXPECT_FALSE(Has(out, "EPOCH:       1 "));
    EXPECT_FALSE(Has(out, "GLONASS EPOCHS"));  // GLONASS is off
}

TEST(ProcClockDeath, ArraysThatDoNotCoverTheRecordsEndTheRun)
{
    // Corrections not run on all records; an epoch count that would walk
    // past the end; a listed code not stored for every record.
    const char* const what[] = {"OBSERVATION CORRECTIONS NOT SET", "EPOCH SATELLITE COUNTS DISAGREE", "CODE OBSERVATIONS NOT STORED"};
    for (int fault = 0; fault < 3; ++fault) {
        Context c;
        c.gc.isGPS = true;
        Build(c, {{O(1, 0), O(1, 0)}}, 0.0L);
        if (fault == 0) c.gc.OKSAT.Resize(1, 1, true);
        if (fault == 1) c.rnxd.nsat(0) = 3;
        if (fault == 2) c.rnxd.C7.Resize(1, 1, gnssobs());
        EXPECT_EXIT(ProcClock(c.gc), ::testing::ExitedWithCode(1), std::string("\\*\\*\\*\\* Orvo: Error -> A-PRIORI CLOCK: ") + what[fault]);
    }
}

// ---------------------------------------------------------------------------
// The real day, GPS and Galileo, 08:00 to 09:00 (121 epochs at 30 s). The
// clock file carries satellite clocks only (ESBC is not among its
// stations), so the reference is a clock computed here: at each 15-min
// orbit node, the plain mean of C1 minus the range over the satellites
// above 30 degrees, from the orbit file alone.
namespace {

constexpr long kEpochs = 121;

std::string StageDay(Context& c, long blunderRecord = -1, long double blunder_m = 0.0L)
{
    Options o;
    o.obs = CutObs("clock-window.20o", 960, kEpochs);  // from 08:00:00
    o.clk = CutClk("clock-window.clk", 7 * 60 + 45, 9 * 60 + 15);
    Stage(c, o);
    if (blunderRecord >= 0) c.rnxd.C1(blunderRecord) += blunder_m;
    return RunStage(c.gc);
}

// Receiver clock of epoch ix (a multiple of 30, an orbit node): plain mean
// of C1 - range + c(dt_sat - 2 r.v/c^2) over the GPS and Galileo satellites
// above 30 degrees, seen from the reference marker's antenna point. r.v is
// the same in the rotating and the inertial frame since omega x r is normal
// to r. Fills n with the number of satellites used.
long double IndependentClock(const RINEXData& d, long ix, int& n)
{
    const int minute = 8 * 60 + static_cast<int>(ix / 2);
    const V3 rec = AntennaPoint(kRef), up = Enu(kRef)[2];
    long double sum = 0.0L;
    n = 0;
    for (long k : Records(d, ix)) {
        if (IsGlonass(d.sat(k)) || d.C1(k).IsNull()) continue;
        const Emission e = Emit(SatName(d.sat(k)), minute, rec);
        if (!e.ok || Dot(Sub(e.xs, rec), up) / e.rho < std::sin(30.0L * Pi / 180.0L)) continue;
        const Sp3Sat& node = Sp3Node(minute).at(SatName(d.sat(k)));
        sum += d.C1(k).GetObs() - e.rho + C * (node.clk - 2.0L * Dot(node.p, e.v) / (C * C));
        ++n;
    }
    return n > 0 ? sum / n : 0.0L;
}

// The clean day, staged once for both tests.
struct Day {
    Context c;
    std::string report = StageDay(c);
};
const Day& CleanDay()
{
    static const Day day;
    return day;
}

}  // namespace

TEST(ClockOnRealDay, SmoothClockAgreeingWithAPlainCodeMinusRangeClock)
{
    // Every epoch has a clock; every code lies within tens of metres of it
    // (the limit is 2 * 500 m).
    const std::string& report = CleanDay().report;
    const matrix<long double>& dt = CleanDay().c.gc.dtAll;
    ASSERT_EQ(dt.NRow(), kEpochs);
    EXPECT_TRUE(Has(report, "    # of ALL GNSS OK EPOCHS    :                121\n") && !Has(report, " OBSERVATIONS!"));
    EXPECT_TRUE(Has(report, "  # of EXCEEDED F VALUES :          0\n"));

    // Measured on this hour: the clock stays near 144 180 m (the PolaRx5
    // steers its frequency, not its offset); the median epoch-to-epoch
    // change is 0.33 m and the largest 11.0 m, when the robust mean moves
    // between the zenith codes and the low ones (up to 20 m more atmosphere
    // at 10 degrees) as a satellite rises or sets; the first and last ten
    // epochs differ by 0.8 m. Bounds: 2 m on the median (code noise of
    // decimetres, averaged), 25 m on any step (that atmospheric spread), 15 m
    // between the ends. A free-running oscillator (1e-7 s/s) would move 900 m
    // per epoch, a lost millisecond 300 km, a satellite clock of the wrong
    // sign tens of kilometres.
    std::vector<long double> steps;
    for (long i = 1; i < dt.NRow(); ++i) steps.push_back(std::fabs(dt(i) - dt(i - 1)));
    std::sort(steps.begin(), steps.end());
    EXPECT_LT(steps[steps.size() / 2], 2.0L);
    EXPECT_LT(steps.back(), 25.0L);
    long double ends = 0.0L;
    for (long i = 0; i < 10; ++i) ends += (dt(dt.NRow() - 1 - i) - dt(i)) / 10.0L;
    EXPECT_LT(std::fabs(ends), 15.0L);

    // The stage's robust mean may settle among the codes down to 10 degrees.
    // Measured differences at the five nodes: 0.1, -2.5, 6.1, 1.9, -0.1 m,
    // so 10 m per node and 3 m for the mean over the nodes, where the
    // settling averages out. Any modelling slip is kilometres.
    constexpr long double NodeTol_m = 10.0L, NodeMeanTol_m = 3.0L;
    long double sumDiff = 0.0L;
    for (long ix = 0; ix < kEpochs; ix += 30) {
        int n = 0;
        const long double diff = dt(ix) - IndependentClock(CleanDay().c.rnxd, ix, n);
        ASSERT_GE(n, 4) << ix;  // at least four satellites above 30 degrees
        EXPECT_NEAR_LD(diff, 0.0L, NodeTol_m) << ix;
        sumDiff += diff;
    }
    EXPECT_NEAR_LD(sumDiff / 5.0L, 0.0L, NodeMeanTol_m);
}

TEST(ClockOnRealDay, InjectedCodeBlunderIsFoundAndDoesNotMoveTheClock)
{
    // 5 km on C1 of the first GPS record of epoch 10 above 20 degrees. It
    // weighs nothing once the mean is near the others, but it moves the
    // plain mean that starts the reweighting by 125 m, and from there the
    // mean may settle on another cluster of the atmospheric spread
    // (measured: 9.0 m higher): within the 25 m spread bound, far from the
    // 125 m of a plain mean; all other epochs are untouched.
    const Context& clean = CleanDay().c;
    long rec = Records(clean.rnxd, 10)[0];
    while (clean.rnxd.sat(rec) > 100 || !clean.gc.OKSAT(rec) || clean.gc.ELV(rec) < 20.0L * Pi / 180.0L || clean.rnxd.C1(rec).IsNull()) ++rec;
    ASSERT_LT(rec, Records(clean.rnxd, 11)[0]);
    Context d;
    const std::string dirty = StageDay(d, rec, 5000.0L);
    // Identical input elsewhere: only round-off could differ, and none does.
    constexpr long double SameTol_m = 1e-9L;
    for (long i = 0; i < kEpochs; ++i)
        EXPECT_NEAR_LD(d.gc.dtAll(i), clean.gc.dtAll(i), i == 10 ? 25.0L : SameTol_m) << i;
    EXPECT_TRUE(Has(dirty, "  # of EXCEEDED F VALUES :          1\n") && Has(dirty, "  # of ESTIMATED OUTLIERS:          1\n"));
}
