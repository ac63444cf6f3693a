// Layout of the unknowns: troposphere nodes, system biases, code bias
// columns and their constraint rows, sizes of the estimator arrays.
#include <gtest/gtest.h>

#include <sstream>

#include "EstimationSupport.h"
#include "estimation/NormalSystem.h"
#include "estimation/SetUnknowns.h"
#include "numerics/NearLD.h"

using namespace esttest;

namespace {

// mjd keeps the second of day in long double: node sums of whole seconds
// are exact, so node positions are checked to a picosecond.
constexpr long double NodeTol_s = 1e-9L;

mjd At(unsigned long day, long double sec) { return mjd(day, sec); }

// A hand-made record store: one epoch per entry of `sats`, each epoch the
// listed satellites at the given elevation (deg), 30 s apart from 10:00.
void MakeStore(Context& ctx, const std::vector<std::vector<short>>& sats, long double elev_deg)
{
    RINEXData& d = ctx.rnxd;
    long nRec = 0;
    for (const auto& e : sats) nRec += static_cast<long>(e.size());
    d.nepochall = static_cast<long>(sats.size());
    d.nsatall = nRec;
    d.NOKEph = d.nepochall;
    d.epoch.Resize(d.nepochall, 1);
    d.nsat.Resize(d.nepochall, 1);
    d.sat.Resize(nRec, 1);
    for (matrix<gnssobs>* m : {&d.C1, &d.P1, &d.P2, &d.PC3, &d.PP3, &d.L3}) m->Resize(nRec, 1);
    ctx.gc.ELV.Resize(nRec, 1, elev_deg * Pi / 180.0L);
    ctx.gc.OKSAT.Resize(nRec, 1, true);
    std::vector<short> list;
    long k = 0;
    for (long i = 0; i < d.nepochall; ++i) {
        d.epoch(i) = At(59025, 36000.0L + 30.0L * static_cast<long double>(i));
        d.nsat(i) = static_cast<short>(sats[static_cast<size_t>(i)].size());
        for (short s : sats[static_cast<size_t>(i)]) {
            d.sat(k) = s;
            for (matrix<gnssobs>* m : {&d.C1, &d.P1, &d.P2, &d.PC3, &d.PP3, &d.L3}) (*m)(k) = 2.0e7L;
            ++k;
            if (std::find(list.begin(), list.end(), s) == list.end()) list.push_back(s);
        }
    }
    std::sort(list.begin(), list.end());
    d.satList.Resize(static_cast<long>(list.size()), 1);
    for (size_t s = 0; s < list.size(); ++s) d.satList(static_cast<long>(s)) = list[s];
    RINEXHeader& h = ctx.rnxh;
    h.iC1 = h.iP1 = h.iP2 = h.iPC3 = h.iPP3 = h.iL3 = true;
}

}  // namespace

TEST(SetTropoIntervals, NodesEncloseEverySpanAndEndOneBeyondANodeOnTheLastEpoch)
{
    matrix<mjd> nodes;
    long int n = 0;
    // 00:30 .. 05:10 with 2 h: nodes 00:00, 02:00, 04:00, 06:00.
    mjd eS = At(59025, 1800.0L), eE = At(59025, 18600.0L);
    SetTropoIntervals(eS, eE, 7200.0L, 0.0L, nodes, n);
    ASSERT_EQ(n, 4);
    for (long i = 0; i < n; ++i) EXPECT_NEAR_LD(nodes(i) - At(59025, 0.0L), 7200.0L * i, NodeTol_s);

    // The last epoch exactly on a node (06:00) gets one more node behind it.
    eE = At(59025, 21600.0L);
    SetTropoIntervals(eS, eE, 7200.0L, 0.0L, nodes, n);
    ASSERT_EQ(n, 5);
    EXPECT_NEAR_LD(nodes(4) - eE, 7200.0L, NodeTol_s);

    // An interval longer than the whole span: one interval, two nodes.
    eE = At(59025, 2400.0L);
    SetTropoIntervals(eS, eE, 86400.0L, 0.0L, nodes, n);
    ASSERT_EQ(n, 2);
    EXPECT_NEAR_LD(nodes(0) - At(59025, 0.0L), 0.0L, NodeTol_s);
    EXPECT_GT(nodes(1) - eE, 0.0L);

    // A single-epoch file on a node: the node itself and the next one.
    eS = eE = At(59025, 7200.0L);
    SetTropoIntervals(eS, eE, 3600.0L, 0.0L, nodes, n);
    ASSERT_EQ(n, 2);
    EXPECT_NEAR_LD(nodes(0) - eS, 0.0L, NodeTol_s);
}

TEST(SetTropoIntervals, ShiftMovesTheGridAndNeverPassesTheFirstEpoch)
{
    matrix<mjd> nodes;
    long int n = 0;
    // 00:10 with 1 h and a 30 min shift: 00:30 lies after the first epoch,
    // so the grid starts at 23:30 of the day before.
    mjd eS = At(59025, 600.0L), eE = At(59025, 4000.0L);
    SetTropoIntervals(eS, eE, 3600.0L, 1800.0L, nodes, n);
    ASSERT_EQ(n, 3);
    EXPECT_NEAR_LD(nodes(0) - At(59025, 0.0L), -1800.0L, NodeTol_s);
    EXPECT_EQ(nodes(0).GetMJDay(), 59024UL);
    EXPECT_NEAR_LD(nodes(2) - At(59025, 5400.0L), 0.0L, NodeTol_s);

    // A shift of more than one interval still starts at or before eS.
    SetTropoIntervals(eS, eE, 3600.0L, 9000.0L, nodes, n);
    EXPECT_LE(nodes(0) - eS, 0.0L);
    EXPECT_GT(nodes(0) - eS, -3600.0L);
    EXPECT_GT(nodes(n - 1) - eE, 0.0L);
    EXPECT_LE(nodes(n - 2) - eE, 0.0L);
}

TEST(SetTropoIntervals, GetTropoIndexFindsTheEnclosingInterval)
{
    matrix<mjd> nodes;
    long int n = 0;
    mjd eS = At(59025, 0.0L), eE = At(59025, 86370.0L);
    SetTropoIntervals(eS, eE, 7200.0L, 0.0L, nodes, n);
    ASSERT_EQ(n, 13);
    long itro = 0;
    for (long double s : {0.0L, 7199.0L, 7200.0L, 43210.0L, 86370.0L}) {
        mjd t = At(59025, s);
        GetTropoIndex(t, nodes, itro);
        ASSERT_GE(itro, 0) << s;
        EXPECT_LE(nodes(itro) - t, 0.0L);
        EXPECT_GT(nodes(itro + 1) - t, 0.0L);
    }
    mjd before = At(59024, 86399.0L), onLast = nodes(n - 1);
    GetTropoIndex(before, nodes, itro);
    EXPECT_EQ(itro, -1);
    GetTropoIndex(onLast, nodes, itro);
    EXPECT_EQ(itro, -1);
}

TEST(SetTropoIntervalsDeath, NonPositiveIntervalStopsWithFramedError)
{
    matrix<mjd> nodes;
    long int n = 0;
    mjd eS = At(59025, 0.0L), eE = At(59025, 100.0L);
    EXPECT_EXIT(SetTropoIntervals(eS, eE, 0.0L, 0.0L, nodes, n), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> TROPOSPHERE ESTIMATION INTERVAL MUST BE A POSITIVE");
}

TEST(SetUnknowns, SystemBiasesReferToTheFirstSystemPresent)
{
    struct Case {
        bool g, r, e;
        long ix1, ix2, n;
    } cases[] = {{true, false, false, -1, -1, 0}, {true, true, false, 3, -1, 1},
                 {true, false, true, -1, 3, 1},   {false, true, true, -1, 3, 1},
                 {true, true, true, 3, 4, 2},     {false, false, true, -1, -1, 0}};
    for (const Case& c : cases) {
        Context ctx;
        MakeStore(ctx, {{1, 105, 211}, {1, 105, 211}}, 30.0L);
        gCPosC& gc = ctx.gc;
        gc.isGPS = c.g;
        gc.isGLN = c.r;
        gc.isGAL = c.e;
        gc.ifPc3 = true;
        Capture out(std::cout);
        SetUnknowns(gc);
        EXPECT_EQ(gc.ixDTsys[0], -1);
        EXPECT_EQ(gc.ixDTsys[1], c.ix1);
        EXPECT_EQ(gc.ixDTsys[2], c.ix2);
        EXPECT_EQ(gc.nDTsys, c.n);
        EXPECT_EQ(gc.NUnk, 3 + c.n);
        EXPECT_EQ(gc.NFin.NRow(), gc.NUnk);
        EXPECT_EQ(gc.fc3.NRow(), gc.rnxd.nsatall);
        EXPECT_EQ(gc.fl3.NRow(), 0);  // L3 not switched on
        EXPECT_NE(out.Text().find("  GNSS inter-system clock biases      : " +
                                  std::string(c.n == 0 ? "     0" : c.n == 1 ? "     1" : "     2") +
                                  "  [YES]"),
                  std::string::npos);
    }
}

TEST(SetUnknowns, CodeBiasNeedsThreeUsableRecordsAndSumsToZeroPerSystem)
{
    Context ctx;
    // G01 and E11 in three epochs; G02 only twice; G03 three times but once
    // at the cut-off and once without orbit; G04 three times with one null P3.
    MakeStore(ctx, {{1, 2, 3, 4, 211}, {1, 2, 3, 4, 211}, {1, 3, 4, 211}}, 30.0L);
    gCPosC& gc = ctx.gc;
    gc.ELV(2) = gc.MinElevation * Pi / 180.0L;  // G03 epoch 0: exactly at the cut-off
    gc.OKSAT(7) = false;                        // G03 epoch 1
    gc.rnxd.PC3(8) = 0.0L;                      // G04 epoch 1
    gc.isGPS = gc.isGAL = true;
    gc.ifPc3 = true;
    gc.isGPSxdcb = gc.isGALxdcb = true;
    gc.nAmb = 2;
    gc.ifL3 = true;
    gc.ifEstTropo = true;
    gc.TropoInterval = 3600.0L;
    {
        Capture out(std::cout);
        SetUnknowns(gc);
    }
    ASSERT_TRUE(gc.isdcbPc3);
    // satList: 1 2 3 4 211; only G01 and E11 qualify.
    EXPECT_EQ(gc.ixdcbPc3(0), 4);   // after dX dY dZ and the Galileo bias
    EXPECT_EQ(gc.ixdcbPc3(1), -1);
    EXPECT_EQ(gc.ixdcbPc3(2), -1);
    EXPECT_EQ(gc.ixdcbPc3(3), -1);
    EXPECT_EQ(gc.ixdcbPc3(4), 5);
    EXPECT_EQ(gc.ndcbPc3, 2);
    EXPECT_EQ(gc.NUnkDCB, 2);
    EXPECT_TRUE(gc.isDCB_Gc);
    EXPECT_FALSE(gc.isDCB_Rc);
    EXPECT_TRUE(gc.isDCB_Ec);
    EXPECT_EQ(gc.ndcbConstr, 2);
    // Troposphere (10:00..10:01 with 1 h: 2 nodes), then the ambiguities.
    ASSERT_EQ(gc.nTropoUnk, 2);
    EXPECT_EQ(gc.ixTropo(0), 6);
    EXPECT_EQ(gc.ixTropo(1), 7);
    EXPECT_EQ(gc.ixAmb(0), 8);
    EXPECT_EQ(gc.ixAmb(1), 9);
    ASSERT_EQ(gc.NUnk, 10);
    ASSERT_EQ(gc.NFin.NRow(), 12);
    ASSERT_EQ(gc.xAll.NRow(), 12);
    // Row 10 holds the GPS sum, row 11 the Galileo sum, nothing else.
    for (long i = 0; i < 12; ++i)
        for (long j = 0; j < 12; ++j) {
            long double want = 0.0L;
            if ((i == 10 && j == 4) || (j == 10 && i == 4)) want = 1.0L;
            if ((i == 11 && j == 5) || (j == 11 && i == 5)) want = 1.0L;
            EXPECT_EQ(gc.NFin(i, j), want) << i << "," << j;
        }
}

TEST(SetUnknowns, RawAndCombinedCodeBiasesTogetherAreAllDropped)
{
    Context ctx;
    MakeStore(ctx, {{1, 2}, {1, 2}, {1, 2}}, 30.0L);
    gCPosC& gc = ctx.gc;
    gc.isGPS = true;
    gc.ifC1 = gc.ifPc3 = true;
    gc.isGPSxdcb = true;
    Capture out(std::cout);
    testing::internal::CaptureStderr();
    SetUnknowns(gc);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("UNKONWNS UNSET!"), std::string::npos);
    EXPECT_FALSE(gc.isdcbC1 || gc.isdcbPc3);
    EXPECT_EQ(gc.NUnkDCB, 0);
    EXPECT_EQ(gc.ndcbConstr, 0);
    EXPECT_EQ(gc.NUnk, 3);
}

TEST(SetUnknowns, GradientNodesSpanTheDelayNodes)
{
    Context ctx;
    std::vector<std::vector<short>> ep(300, std::vector<short>{1, 2});  // 10:00 .. 12:29:30
    MakeStore(ctx, ep, 30.0L);
    gCPosC& gc = ctx.gc;
    gc.isGPS = true;
    gc.ifPc3 = true;
    gc.ifEstTropo = gc.ifEstTropoGrad = true;
    gc.TropoInterval = 3600.0L;
    gc.nTropoGradInt = 0;  // one gradient interval per delay interval
    Capture out(std::cout);
    SetUnknowns(gc);
    ASSERT_EQ(gc.nTropoUnk, 4);  // 10, 11, 12, 13 h
    EXPECT_EQ(gc.nTropoGradInt, 3);
    ASSERT_EQ(gc.nTropoUnkGradE, 4);
    EXPECT_NEAR_LD(gc.TropoGradInterval, 3600.0L, NodeTol_s);
    for (long i = 0; i < 4; ++i) EXPECT_NEAR_LD(gc.TropoGradEpoch(i) - gc.TropoEpoch(i), 0.0L, NodeTol_s);
    EXPECT_EQ(gc.ixTropoGradE(0), 3 + 4);
    EXPECT_EQ(gc.ixTropoGradN(0), 3 + 4 + 4);
    EXPECT_EQ(gc.NUnk, 3 + 4 + 8);
}

TEST(SetUnknowns, CountListHasEveryLineInSixColumns)
{
    // G01, G02, E11 in three epochs: Galileo bias against GPS, a Pc3 bias
    // for each of the three satellites with one constraint per system,
    // 10:00..10:01 on a 1 h grid (2 nodes), one gradient interval (2 nodes
    // each way), two arcs.
    Context ctx;
    MakeStore(ctx, {{1, 2, 211}, {1, 2, 211}, {1, 2, 211}}, 30.0L);
    gCPosC& gc = ctx.gc;
    gc.isGPS = gc.isGAL = true;
    gc.ifPc3 = true;
    gc.isGPSxdcb = gc.isGALxdcb = true;
    gc.ifEstTropo = gc.ifEstTropoGrad = true;
    gc.TropoInterval = 3600.0L;
    gc.nTropoGradInt = 1;
    gc.ifL3 = true;
    gc.nAmb = 2;
    Capture out(std::cout);
    SetUnknowns(gc);
    std::vector<std::string> lines;
    {
        std::istringstream in(out.Text());
        for (std::string l; std::getline(in, l);) lines.push_back(l);
    }
    const auto first = std::find(lines.begin(), lines.end(), "  Coordinate unknowns dX, dY, dZ      :      3");
    ASSERT_NE(first, lines.end()) << out.Text();
    // 3 + 1 + 3 + 2 + 2 * 2 + 2 = 15 unknowns, 3 epoch clocks.
    const std::vector<std::string> want = {
        "  Coordinate unknowns dX, dY, dZ      :      3",
        "  GNSS inter-system clock biases      :      1  [YES]",
        "  Differential code biases (DCB)      :      3",
        "                         C1 DCB       :      0",
        "                         P1 DCB       :      0",
        "                         P2 DCB       :      0",
        "               P3[C1,P2/C7] DCB       :      3",
        "               P3[P1,P2/C7] DCB       :      0",
        "                DCB constraints       :      2",
        "  Troposphere zenit delays (wet)      :      2",
        "  Troposphere Gradient parameters [E] :      2",
        "  Troposphere Gradient parameters [N] :      2",
        "  L3 ambiguity parameters             :      2",
        "  GNSS clk parameters [preeliminated] :      3",
        "",
        "  Number of all estimated unknowns    :     15",
        "  Number of all unknowns (+clock unk) :     18",
        "",
        "",
    };
    const size_t at = static_cast<size_t>(first - lines.begin());
    ASSERT_EQ(lines.size(), at + want.size()) << out.Text();
    for (size_t i = 0; i < want.size(); ++i) EXPECT_EQ(lines[at + i], want[i]) << i;
    EXPECT_EQ(gc.NUnk, 15);
}

TEST(SetUnknownsDeath, FileWithoutEpochsStopsWithFramedError)
{
    Context ctx;
    ctx.gc.isGPS = true;
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            SetUnknowns(ctx.gc);
        },
        ::testing::ExitedWithCode(1), "\\*\\*\\*\\* Orvo: Error -> NO OBSERVATION EPOCHS: NO UNKNOWNS CAN BE SET!");
}
