// Layout of the unknowns: troposphere nodes, system biases, code bias
// columns and their constraint rows, sizes of the estimator arrays.
#include "estimation/SetUnknowns.h"

#include "EstimationSupport.h"
#include "estimation/NormalSystem.h"

using namespace esttest;

namespace {

// mjd keeps the second of day in long double: node sums of whole seconds
// are exact, so node positions are checked to a nanosecond.
constexpr long double NodeTol_s = 1e-9L;

// A hand-made store: one epoch per entry of `sats`, 30 s apart from 10:00,
// every record at 30 degrees with codes of 2e7 m.
void MakeStore(Context& ctx, const std::vector<std::vector<short>>& sats)
{
    std::vector<mjd> epochs;
    std::vector<std::vector<Rec>> recs;
    for (const auto& e : sats) {
        epochs.emplace_back(59025UL, 36000.0L + 30.0L * static_cast<long double>(epochs.size()));
        recs.emplace_back();
        for (short s : e) recs.back().push_back({s, 2.0e7L, 30.0L * Pi / 180.0L});
    }
    Store(ctx, epochs, recs);
}

std::string SetLayout(gCPosC& gc)
{
    Capture out(std::cout);
    SetUnknowns(gc);
    return out.Text();
}

}  // namespace

TEST(SetTropoIntervals, NodesEncloseEverySpanAndGetTropoIndexFindsTheInterval)
{
    // first, last epoch (s of 2020-06-25), interval, shift -> node count,
    // first node (s of the day), last node - last epoch. The last epoch on
    // a node gets one more node behind it; an interval longer than the span
    // gives one interval; a shift, either way, puts the first node at or
    // before the first epoch.
    const long double rows[][7] = {{1800, 18600, 7200, 0, 4, 0, 3000},    {1800, 21600, 7200, 0, 5, 0, 7200},
                                   {1800, 2400, 86400, 0, 2, 0, 84000},  {7200, 7200, 3600, 0, 2, 7200, 3600},
                                   {600, 4000, 3600, 1800, 3, -1800, 1400}, {600, 4000, 3600, -1800, 3, -1800, 1400}};
    for (const auto& r : rows) {
        matrix<mjd> nodes;
        long int n = 0;
        mjd eS(59025UL, r[0]), eE(59025UL, r[1]);
        const mjd day(59025UL, 0.0L);
        SetTropoIntervals(eS, eE, r[2], r[3], nodes, n);
        ASSERT_EQ(n, static_cast<long>(r[4])) << r[0] << " " << r[3];
        for (long i = 0; i < n; ++i) EXPECT_NEAR_LD(nodes(i) - day, r[5] + r[2] * i, NodeTol_s) << i;
        EXPECT_NEAR_LD(nodes(n - 1) - eE, r[6], NodeTol_s);
    }
    matrix<mjd> nodes;
    long int n = 0;
    mjd eS(59025UL, 600.0L), eE(59025UL, 4000.0L);
    SetTropoIntervals(eS, eE, 3600.0L, 1800.0L, nodes, n);
    EXPECT_EQ(nodes(0).GetMJDay(), 59024UL);  // 23:30 of the day before

    // The enclosing interval of an epoch (s of the day) on a 2 h grid over
    // the day; before the first and on the last node: none.
    eS = mjd(59025UL, 0.0L);
    eE = mjd(59025UL, 86370.0L);
    SetTropoIntervals(eS, eE, 7200.0L, 0.0L, nodes, n);
    ASSERT_EQ(n, 13);
    const std::pair<int, long> inside[] = {{0, 0}, {7199, 0}, {7200, 1}, {43210, 6}, {86370, 11}, {-1, -1}, {86400, -1}};
    for (const auto& r : inside) {
        mjd t(59025UL, 0.0L);
        t += static_cast<long double>(r.first);
        long itro = 0;
        GetTropoIndex(t, nodes, itro);
        EXPECT_EQ(itro, r.second) << r.first;
    }
}

TEST(SetTropoIntervalsDeath, NonPositiveIntervalOrAShiftOfAWholeIntervalStops)
{
    matrix<mjd> nodes;
    long int n = 0;
    mjd eS(59025UL, 0.0L), eE(59025UL, 100.0L);
    EXPECT_EXIT(SetTropoIntervals(eS, eE, 0.0L, 0.0L, nodes, n), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> TROPOSPHERE ESTIMATION INTERVAL \\[-ti\\] MUST BE A POSITIVE");
    // A shift of 1e30 s was stepped back by 60 s at a time, for ever.
    for (const long double shift : {60.0L, -60.0L, 1e30L, std::nanl("")})
        EXPECT_EXIT(SetTropoIntervals(eS, eE, 60.0L, shift, nodes, n), ::testing::ExitedWithCode(1),
                    "Error -> TROPOSPHERE EPOCH SHIFT \\[-ti...d\\] MUST BE SMALLER THAN THE INTERVAL!") << shift;
}

TEST(SetUnknowns, SizesThatOptionsMultiplyAreBoundedByTheDataBeforeAnyAllocation)
{
    // Five epochs 30 s apart: a 30 s interval gives five delay intervals,
    // one per epoch, and a 20 s one seven; gradients up to five intervals.
    // An interval of 1 ns over a day is counted no further than the limit.
    Context ctx;
    MakeStore(ctx, {{1}, {1}, {1}, {1}, {1}});
    gCPosC& gc = ctx.gc;
    gc.isGPS = gc.ifEstTropo = gc.ifEstTropoGrad = true;
    gc.TropoInterval = 30.0L;
    gc.nTropoGradInt = 5;
    CheckUnknownSizes(gc, 0);
    EXPECT_EQ(TropoNodeCount(mjd(59025UL, 0.0L), mjd(59025UL, 86370.0L), 1e-9L, 0.0L, 1000), 1001);
    const std::string ti = "TROPOSPHERE INTERVAL \\[-ti\\] OF 20.0 s GIVES MORE ZENITH DELAY INTERVALS THAN THE 5 EPOCHS";
    EXPECT_EXIT((gc.TropoInterval = 20.0L, CheckUnknownSizes(gc, 0)), ::testing::ExitedWithCode(1), ti);
    EXPECT_EXIT((gc.nTropoGradInt = 6, CheckUnknownSizes(gc, 0)), ::testing::ExitedWithCode(1),
                "NUMBER OF TROPOSPHERE GRADIENT INTERVALS \\[-tgi\\] 6 EXCEEDS THE 5 ZENITH DELAY INTERVALS!");
    // Ten hours of 30 s data with half-hour delays and gradients and 600
    // arcs (about 60 MB) pass; 20000 arcs, as thresholds of -tc near zero
    // could cut, would need some 43 GB: 7 square matrices of 16-byte cells.
    Context day;
    std::vector<std::vector<short>> epochs(1200, std::vector<short>{1});
    MakeStore(day, epochs);
    day.gc.isGPS = day.gc.ifEstTropo = day.gc.ifEstTropoGrad = true;
    day.gc.TropoInterval = 1800.0L;
    day.gc.nTropoGradInt = 0;
    CheckUnknownSizes(day.gc, 600);
    EXPECT_EXIT(CheckUnknownSizes(day.gc, 20000), ::testing::ExitedWithCode(1),
                "THE ADJUSTMENT WOULD NEED 20066 UNKNOWNS \\(21 TROPOSPHERE NODES \\[-ti\\], 42 GRADIENT NODES \\[-tg\\], "
                "20000 AMBIGUITIES \\[-tc\\]\\) OVER 1200 EPOCHS: ABOUT 4[0-9]{4} MB, MORE THAN THE LIMIT OF 2048 MB!");
}

TEST(SetUnknowns, SystemBiasesReferToTheFirstSystemPresentAndRawWithCombinedCodeBiasesAreDropped)
{
    // Code biases of a raw code and of a combination of it together would
    // leave the normal system singular: all are dropped with a warning.
    const struct {
        bool g, r, e;
        long ix1, ix2, n;
    } cases[] = {{true, false, false, -1, -1, 0}, {true, true, false, 3, -1, 1}, {true, false, true, -1, 3, 1},
                 {false, true, true, -1, 3, 1},   {true, true, true, 3, 4, 2},   {false, false, true, -1, -1, 0}};
    for (const auto& c : cases) {
        Context ctx;
        MakeStore(ctx, {{1, 105, 211}, {1, 105, 211}, {1, 105, 211}});
        gCPosC& gc = ctx.gc;
        std::tie(gc.isGPS, gc.isGLN, gc.isGAL) = std::make_tuple(c.g, c.r, c.e);
        gc.ifPc3 = gc.ifC1 = gc.isGPSxdcb = true;
        Capture err(std::cerr);
        const std::string out = SetLayout(gc);
        EXPECT_EQ((std::vector<long>{gc.ixDTsys[0], gc.ixDTsys[1], gc.ixDTsys[2], gc.nDTsys, gc.NUnk}),
                  (std::vector<long>{-1, c.ix1, c.ix2, c.n, 3 + c.n}));
        EXPECT_EQ(gc.NFin.NRow(), gc.NUnk);
        EXPECT_EQ(gc.fc3.NRow(), gc.rnxd.nsatall);
        EXPECT_EQ(gc.fl3.NRow(), 0);  // L3 not switched on
        EXPECT_TRUE(Has(out, "  GNSS inter-system clock biases      :      " + std::to_string(c.n) + "  [YES]"));
        EXPECT_TRUE(Has(err.Text(), "UNKONWNS UNSET!"));
        EXPECT_FALSE(gc.isdcbC1 || gc.isdcbPc3);
        EXPECT_EQ(gc.NUnkDCB + gc.ndcbConstr, 0);
    }
}

TEST(SetUnknowns, CodeBiasNeedsThreeUsableRecordsAndSumsToZeroPerSystem)
{
    // G01 and E11 in three epochs; G02 only twice; G03 three times but once
    // at the cut-off and once without orbit; G04 three times with one null P3.
    Context ctx;
    MakeStore(ctx, {{1, 2, 3, 4, 211}, {1, 2, 3, 4, 211}, {1, 3, 4, 211}});
    gCPosC& gc = ctx.gc;
    gc.ELV(2) = gc.MinElevation * Pi / 180.0L;  // G03 epoch 0: exactly at the cut-off
    gc.OKSAT(7) = false;                        // G03 epoch 1
    gc.rnxd.PC3(8) = 0.0L;                      // G04 epoch 1: null
    gc.isGPS = gc.isGAL = gc.ifPc3 = gc.isGPSxdcb = gc.isGALxdcb = gc.ifL3 = gc.ifEstTropo = gc.ifEstTropoGrad = true;
    gc.nAmb = 2;
    gc.TropoInterval = 30.0L;
    gc.nTropoGradInt = 0;  // one gradient interval per delay interval
    const std::string out = SetLayout(gc);
    ASSERT_TRUE(gc.isdcbPc3);
    // satList 1 2 3 4 211: only G01 and E11 qualify, after dX dY dZ and the
    // Galileo bias; then the delay (10:00..10:01 every 30 s, one node past
    // the last epoch: 4 nodes), as many gradient nodes east and north, the
    // ambiguities: 20 unknowns, and the constraint rows 20 (GPS) and 21
    // (Galileo) with nothing else in them.
    const long want[] = {4, -1, -1, -1, 5};
    for (long s = 0; s < 5; ++s) EXPECT_EQ(gc.ixdcbPc3(s), want[s]) << s;
    EXPECT_TRUE(gc.isDCB_Gc && gc.isDCB_Ec && !gc.isDCB_Rc);
    ASSERT_EQ(gc.nTropoUnk + gc.nTropoUnkGradE + gc.nTropoUnkGradN, 12);
    EXPECT_EQ(gc.nTropoGradInt, 3);
    EXPECT_NEAR_LD(gc.TropoGradInterval, 30.0L, NodeTol_s);
    for (long i = 0; i < 4; ++i) EXPECT_NEAR_LD(gc.TropoGradEpoch(i) - gc.TropoEpoch(i), 0.0L, NodeTol_s);
    EXPECT_EQ((std::vector<long>{gc.ixTropo(0), gc.ixTropo(3), gc.ixTropoGradE(0), gc.ixTropoGradN(3), gc.ixAmb(0), gc.ixAmb(1)}),
              (std::vector<long>{6, 9, 10, 17, 18, 19}));
    ASSERT_EQ(gc.NUnk, 20);
    ASSERT_EQ(gc.NFin.NRow() + gc.xAll.NRow(), 44);
    for (long i = 0; i < 22; ++i)
        for (long j = 0; j < 22; ++j) {
            const bool one = (std::min(i, j) == 4 && std::max(i, j) == 20) || (std::min(i, j) == 5 && std::max(i, j) == 21);
            EXPECT_EQ(gc.NFin(i, j), one ? 1.0L : 0.0L) << i << "," << j;
        }
    // Counts in six columns; three epoch clocks besides.
    for (const char* line : {"  Differential code biases (DCB)      :      2\n", "               P3[C1,P2/C7] DCB       :      2\n",
                             "                DCB constraints       :      2\n", "  Troposphere Gradient parameters [N] :      4\n",
                             "  Number of all estimated unknowns    :     20\n", "  Number of all unknowns (+clock unk) :     23\n\n\n"})
        EXPECT_TRUE(Has(out, line)) << line << out;
}

TEST(SetUnknownsDeath, FileWithoutEpochsStopsWithFramedError)
{
    Context ctx;
    ctx.gc.isGPS = true;
    EXPECT_EXIT({ SetLayout(ctx.gc); }, ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> NO OBSERVATION EPOCHS: NO UNKNOWNS CAN BE SET!");
}
