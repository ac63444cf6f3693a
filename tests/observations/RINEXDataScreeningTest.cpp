// Arc screening: the 18-byte arc file, the threshold, gap, length and
// elevation rules of the L4, MW and CL1 screens on small stores built in
// memory, and cycle slips injected into the real ESBC phase, which must be
// found where they were put while clean arcs stay whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "observations/AmbRecord.h"
#include "observations/GPSc.h"
#include "observations/RINEX.h"
#include "observations/RINEXData.h"

using orvotest::ReadFile;
using orvotest::TempDir;

namespace {

// Margin put around a threshold: a tenth of a millimetre is far beyond the
// round-off of long double on values of tens of metres (1e-17 m) and far
// below any threshold (5 cm and up), so each side is decided by the rule.
constexpr long double Margin_m = 1e-4L;

// L4 thresholds of the defaults, as the ambiguity stage passes them.
constexpr long double dL40 = 0.05L;
constexpr long double ddL4 = 0.02L;
constexpr long double Gap30 = 150.5L;  // 5·30 s + 0.5 s
constexpr long MinObs = 15;
constexpr long double MinElev = 10.0L * 3.14159265358979323846L / 180.0L;
constexpr long double HighElev = 1.0L;  // rad, well above every cut-off

// Reads every record of an arc file.
std::vector<AmbRecord> Arcs(const std::string& path)
{
    std::vector<AmbRecord> v;
    std::ifstream in(path, std::ios::binary);
    AmbRecord a;
    while (ReadAmbRecord(in, a)) v.push_back(a);
    return v;
}

// (sat, first epoch, last epoch, count) of an arc, for readable failures.
struct Arc {
    int sat;
    long first, last, nobs;
    bool operator==(const Arc& o) const
    {
        return sat == o.sat && first == o.first && last == o.last && nobs == o.nobs;
    }
};
std::ostream& operator<<(std::ostream& os, const Arc& a)
{
    return os << "{" << a.sat << ", " << a.first << ", " << a.last << ", " << a.nobs << "}";
}
std::vector<Arc> Brief(const std::vector<AmbRecord>& v)
{
    std::vector<Arc> out;
    for (const AmbRecord& a : v) out.push_back({a.sat, a.iStart, a.iEnd, a.nobs});
    return out;
}

// A store built in memory: epochs at times t (s after midnight of MJD
// 59025), each holding the satellites listed for it; L4, MW and CL1 sized
// and null, elevations high.
struct Store {
    RINEXHeader h;
    RINEXData d{h};
    matrix<long double> elev;
    std::vector<long> blockStart;

    Store(const std::vector<long double>& t, const std::vector<std::vector<short>>& sats,
          const std::string& file)
    {
        const long ne = static_cast<long>(t.size());
        long ns = 0;
        for (const auto& e : sats) ns += static_cast<long>(e.size());
        d.nepochall = ne;
        d.nsatall = ns;
        d.epoch.Resize(ne);
        d.nsat.Resize(ne);
        d.sat.Resize(ns);
        long r = 0;
        for (long i = 0; i < ne; ++i) {
            d.epoch(i) = mjd(59025, t[i]);
            d.nsat(i) = static_cast<short>(sats[i].size());
            blockStart.push_back(r);
            for (short s : sats[i]) d.sat(r++) = s;
        }
        d.satList = UniqList(d.sat);
        h.iL4 = h.iMW = h.iCL1 = true;
        d.L4.Resize(ns, 1, gnssobs());
        d.MW.Resize(ns, 1, gnssobs());
        d.CL1.Resize(ns, 1, gnssobs());
        elev.Resize(ns, 1, HighElev);
        d.SetAmbFile(TempDir() + "/" + file);
    }
    // Record of sat at epoch i, -1 when absent.
    long Rec(long i, short s) const
    {
        for (long j = 0; j < d.nsat(i); ++j)
            if (d.sat(blockStart[i] + j) == s) return blockStart[i] + j;
        return -1;
    }
    void Set(matrix<gnssobs>& m, short s, const std::function<long double(long)>& f)
    {
        for (long i = 0; i < d.nepochall; ++i) {
            const long k = Rec(i, s);
            if (k >= 0) m(k) = f(i);
        }
    }
    std::vector<Arc> Result() const { return Brief(Arcs(d.AmbFile)); }
};

std::vector<long double> Times(long n, long double step = 30.0L, long double start = 0.0L)
{
    std::vector<long double> t;
    for (long i = 0; i < n; ++i) t.push_back(start + step * i);
    return t;
}

std::vector<std::vector<short>> Every(long n, std::vector<short> sats)
{
    return std::vector<std::vector<short>>(n, sats);
}

// A step of size h in L4 at epoch e on a level of 10 m (never null).
std::function<long double(long)> Step(long e, long double h)
{
    return [=](long i) { return 10.0L + (i >= e ? h : 0.0L); };
}

enum class Method { Constant, Linear };

void ScreenL4By(Method m, Store& s, long minObs = MinObs, long double gap = Gap30,
                long* n = nullptr)
{
    long nAmb = -1;
    if (m == Method::Constant)
        s.d.ScreenL4(s.elev, MinElev, minObs, dL40, ddL4, gap, nAmb);
    else
        s.d.ScreenL4Linear(s.elev, MinElev, minObs, dL40, ddL4, gap, nAmb);
    // The count returned must always be the records on file.
    EXPECT_EQ(static_cast<std::size_t>(nAmb), Arcs(s.d.AmbFile).size());
    if (n) *n = nAmb;
}

// ---------------------------------------------------------------- file layout

// Independent little-endian encoder, byte by byte from the field table.
std::string Bytes(int16_t sat, int32_t a, int32_t b, int32_t c, int32_t d)
{
    std::string s;
    const uint16_t u = static_cast<uint16_t>(sat);
    s += static_cast<char>(u & 0xFF);
    s += static_cast<char>(u >> 8);
    for (int32_t v : {a, b, c, d}) {
        const uint32_t w = static_cast<uint32_t>(v);
        for (int k = 0; k < 4; ++k) s += static_cast<char>((w >> (8 * k)) & 0xFF);
    }
    return s;
}

}  // namespace

TEST(AmbRecordFile, LayoutIsEighteenLittleEndianBytesAndRoundTrips)
{
    const AmbRecord recs[] = {{5, 0, 0, 2879, 2880},
                              {203, 1438, 41234, 2081, 644},
                              {-2, -1, 2147483647, -2147483647 - 1, 65536}};
    const std::string path = TempDir() + "/layout.b";
    {
        std::ofstream out(path, std::ios::binary);
        for (const AmbRecord& a : recs) ASSERT_TRUE(WriteAmbRecord(out, a));
    }
    std::string want;
    for (const AmbRecord& a : recs) want += Bytes(a.sat, a.iStart, a.ioStart, a.iEnd, a.nobs);
    EXPECT_EQ(ReadFile(path), want);
    EXPECT_EQ(ReadFile(path).size(), 3u * AmbRecordns::Size);

    const std::vector<AmbRecord> back = Arcs(path);
    ASSERT_EQ(back.size(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(back[i].sat, recs[i].sat);
        EXPECT_EQ(back[i].iStart, recs[i].iStart);
        EXPECT_EQ(back[i].ioStart, recs[i].ioStart);
        EXPECT_EQ(back[i].iEnd, recs[i].iEnd);
        EXPECT_EQ(back[i].nobs, recs[i].nobs);
    }
}

TEST(AmbRecordFile, ShortTailIsNoRecord)
{
    const std::string path = orvotest::WriteTemp("short.b", Bytes(7, 1, 2, 3, 4).substr(0, 17));
    std::ifstream in(path, std::ios::binary);
    AmbRecord a;
    a.sat = 99;
    EXPECT_FALSE(ReadAmbRecord(in, a));
    EXPECT_EQ(a.sat, 99);
}

// --------------------------------------------------------------- L4 constant

TEST(ScreenL4, StepThresholdAt30sIsBasePlusGrowthTimesRootOf29)
{
    const long double dL4Max = 0.05L + 0.02L * std::sqrt(29.0L);
    for (const long double h : {dL4Max - Margin_m, -(dL4Max - Margin_m)}) {
        Store s(Times(40), Every(40, {5}), "c1.b");
        s.Set(s.d.L4, 5, Step(20, h));
        ScreenL4By(Method::Constant, s);
        EXPECT_EQ(s.Result(), (std::vector<Arc>{{5, 0, 39, 40}})) << "step " << h;
    }
    for (const long double h : {dL4Max + Margin_m, -(dL4Max + Margin_m)}) {
        Store s(Times(40), Every(40, {5}), "c2.b");
        s.Set(s.d.L4, 5, Step(20, h));
        ScreenL4By(Method::Constant, s);
        EXPECT_EQ(s.Result(), (std::vector<Arc>{{5, 0, 19, 20}, {5, 20, 39, 20}})) << "step " << h;
    }
}

TEST(ScreenL4, ThresholdGrowsWithTheGap)
{
    // One missing epoch: dt = 60 s, limit 0.05 + 0.02·sqrt(59) ≈ 0.204 m, so
    // a 0.18 m step that cuts at 30 s passes across the gap.
    std::vector<long double> t = Times(40);
    for (long i = 20; i < 40; ++i) t[i] += 30.0L;
    Store s(t, Every(40, {5}), "c3.b");
    const long double h = 0.05L + 0.02L * std::sqrt(59.0L) - Margin_m;
    ASSERT_GT(h, 0.05L + 0.02L * std::sqrt(29.0L));
    s.Set(s.d.L4, 5, Step(20, h));
    ScreenL4By(Method::Constant, s);
    EXPECT_EQ(s.Result(), (std::vector<Arc>{{5, 0, 39, 40}}));
}

TEST(ScreenL4, GapOfExactlyMaxTimeGapStaysOneSecondMoreCuts)
{
    for (const long double extra : {0.0L, 1.0L}) {
        std::vector<long double> t = Times(40);
        for (long i = 20; i < 40; ++i) t[i] += 30.0L + extra;  // gap 60 s (+1)
        Store s(t, Every(40, {5}), "c4.b");
        s.Set(s.d.L4, 5, Step(0, 0.0L));
        ScreenL4By(Method::Constant, s, MinObs, 60.0L);
        if (extra < 0.5L)
            EXPECT_EQ(s.Result(), (std::vector<Arc>{{5, 0, 39, 40}}));
        else
            EXPECT_EQ(s.Result(), (std::vector<Arc>{{5, 0, 19, 20}, {5, 20, 39, 20}}));
    }
}

TEST(ScreenL4, ElevationAtTheCutOffIsOutOfTheSeries)
{
    // Constant method: the low record is skipped, the 60 s step stays in
    // the arc. Linear method: the epoch holds no record, the stretch ends.
    Store c(Times(40), Every(40, {5}), "c5.b");
    c.Set(c.d.L4, 5, Step(0, 0.0L));
    c.elev(c.Rec(20, 5)) = MinElev;
    ScreenL4By(Method::Constant, c);
    EXPECT_EQ(c.Result(), (std::vector<Arc>{{5, 0, 39, 39}}));

    Store l(Times(40), Every(40, {5}), "c6.b");
    l.Set(l.d.L4, 5, Step(0, 0.0L));
    l.elev(l.Rec(20, 5)) = MinElev;
    ScreenL4By(Method::Linear, l);
    EXPECT_EQ(l.Result(), (std::vector<Arc>{{5, 0, 19, 20}, {5, 21, 39, 19}}));

    Store a(Times(40), Every(40, {5}), "c7.b");
    a.Set(a.d.L4, 5, Step(0, 0.0L));
    a.elev(a.Rec(20, 5)) = MinElev + Margin_m;
    ScreenL4By(Method::Linear, a);
    EXPECT_EQ(a.Result(), (std::vector<Arc>{{5, 0, 39, 40}}));
}

TEST(ScreenL4, ArcOfExactlyMinObsAmbIsKeptOneLessIsNot)
{
    for (Method m : {Method::Constant, Method::Linear}) {
        // Satellite 5 from epoch 25 (15 epochs, the last start the linear
        // method still examines), satellite 7 from epoch 26 (14 epochs).
        std::vector<std::vector<short>> sats(40);
        for (long i = 0; i < 40; ++i) {
            if (i >= 25) sats[i].push_back(5);
            if (i >= 26) sats[i].push_back(7);
            sats[i].push_back(12);
        }
        Store s(Times(40), sats, "c8.b");
        for (short sat : {5, 7}) s.Set(s.d.L4, sat, Step(0, 0.0L));
        ScreenL4By(m, s);
        EXPECT_EQ(s.Result(), (std::vector<Arc>{{5, 25, 39, 15}}));
    }
}

TEST(ScreenL4, ArcsComeInSatelliteOrderThenTime)
{
    for (Method m : {Method::Constant, Method::Linear}) {
        Store s(Times(60), Every(60, {203, 5, 112}), "c9.b");
        s.Set(s.d.L4, 203, Step(30, 1.0L));
        s.Set(s.d.L4, 5, Step(25, -1.0L));
        s.Set(s.d.L4, 112, Step(0, 0.0L));
        ScreenL4By(m, s);
        const std::vector<AmbRecord> v = Arcs(s.d.AmbFile);
        EXPECT_EQ(Brief(v), (std::vector<Arc>{{5, 0, 24, 25},
                                               {5, 25, 59, 35},
                                               {112, 0, 59, 60},
                                               {203, 0, 29, 30},
                                               {203, 30, 59, 30}}));
        // ioStart is the start of the epoch's block, not the satellite's
        // own record.
        for (const AmbRecord& a : v) EXPECT_EQ(a.ioStart, s.blockStart[a.iStart]);
    }
}

// ----------------------------------------------------------------- L4 linear

TEST(ScreenL4Linear, RampOfAnySlopePassesAJumpOfTheSecondDifferenceCuts)
{
    // Limits from MaxTimeGap 150.5 s: steps up to sqrt(150.5)·0.02 + 0.05 ≈
    // 0.295 m, second differences up to sqrt(150.5)·0.02 + 0.05/3 ≈ 0.262 m.
    const long double s = std::sqrt(Gap30);
    const long double dL4Max = s * ddL4 + dL40, dAL4Max = s * ddL4 + dL40 / 3.0L;
    for (const long double slope : {-dL4Max + Margin_m, 0.1L, dL4Max - Margin_m}) {
        Store st(Times(40), Every(40, {5}), "l1.b");
        st.Set(st.d.L4, 5, [=](long i) { return 10.0L + slope * i; });
        ScreenL4By(Method::Linear, st);
        EXPECT_EQ(st.Result(), (std::vector<Arc>{{5, 0, 39, 40}})) << "slope " << slope;
    }
    {
        Store st(Times(40), Every(40, {5}), "l2.b");
        st.Set(st.d.L4, 5, Step(20, dAL4Max - Margin_m));
        ScreenL4By(Method::Linear, st);
        EXPECT_EQ(st.Result(), (std::vector<Arc>{{5, 0, 39, 40}}));
    }
    {
        Store st(Times(40), Every(40, {5}), "l3.b");
        st.Set(st.d.L4, 5, [=](long i) { return 10.0L + 0.2L * i + (i >= 20 ? dAL4Max + Margin_m : 0); });
        ScreenL4By(Method::Linear, st);
        EXPECT_EQ(st.Result(), (std::vector<Arc>{{5, 0, 19, 20}, {5, 20, 39, 20}}));
    }
}

TEST(ScreenL4Linear, BadStartIsSkippedAndShortTailAfterSlipIsDropped)
{
    for (Method m : {Method::Constant, Method::Linear}) {
        Store st(Times(40), Every(40, {5}), "l4.b");
        // A spike on the first epoch; a slip at 30 leaves 10 epochs.
        st.Set(st.d.L4, 5, [](long i) { return 10.0L + (i == 0 ? 1.0L : 0.0L) + (i >= 30 ? 1.0L : 0.0L); });
        ScreenL4By(m, st);
        EXPECT_EQ(st.Result(), (std::vector<Arc>{{5, 1, 29, 29}}));
    }
}

TEST(ScreenL4Linear, StretchEndsAtFileGapAndMissingEpoch)
{
    std::vector<long double> t = Times(60);
    for (long i = 20; i < 60; ++i) t[i] += 200.0L;  // a 230 s gap of the file
    std::vector<std::vector<short>> sats = Every(60, {5, 9});
    sats[40] = {9};  // satellite 5 misses one epoch
    Store st(t, sats, "l5.b");
    st.Set(st.d.L4, 5, Step(0, 0.0L));
    st.Set(st.d.L4, 9, Step(0, 0.0L));
    ScreenL4By(Method::Linear, st);
    EXPECT_EQ(st.Result(), (std::vector<Arc>{{5, 0, 19, 20},
                                              {5, 20, 39, 20},
                                              {5, 41, 59, 19},
                                              {9, 0, 19, 20},
                                              {9, 20, 59, 40}}));
}

TEST(ScreenL4Linear, NoL4FormedGivesNoArcs)
{
    Store st(Times(40), Every(40, {5}), "l6.b");
    st.d.L4 = matrix<gnssobs>();
    st.h.iL4 = false;
    long n = -1;
    ScreenL4By(Method::Linear, st, MinObs, Gap30, &n);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(ReadFile(st.d.AmbFile).size(), 0u);
}

// ----------------------------------------------------------------------- MW

namespace {

// One clean L4 arc over 40 epochs of satellite 5, then MW screened.
struct MWCase {
    Store s{Times(40), Every(40, {5}), "mw.b"};
    MWCase() { s.Set(s.d.L4, 5, Step(0, 0.0L)); }
    std::vector<Arc> Run(long double rms = 0.86L)
    {
        long n = 0;
        s.d.ScreenL4(s.elev, MinElev, MinObs, dL40, ddL4, Gap30, n);
        EXPECT_EQ(n, 1);
        s.d.ScreenMW(rms, MinObs, s.elev, n);
        const std::vector<Arc> v = s.Result();
        EXPECT_EQ(static_cast<std::size_t>(n), v.size());
        return v;
    }
};

// ±5 cm of alternating noise on a level: a clean wide lane.
long double Noise(long i) { return (i % 2 ? 0.05L : -0.05L); }

}  // namespace

TEST(ScreenMW, ArcWithoutMWOrQuietMWPassesUnchanged)
{
    MWCase none;
    EXPECT_EQ(none.Run(), (std::vector<Arc>{{5, 0, 39, 40}}));

    MWCase quiet;
    quiet.s.Set(quiet.s.d.MW, 5, [](long i) { return 5.0L + 10.0L * Noise(i); });  // ±0.5 m
    EXPECT_EQ(quiet.Run(), (std::vector<Arc>{{5, 0, 39, 40}}));
}

TEST(ScreenMW, LoneOutlierKeepsTheArcWhole)
{
    MWCase c;
    c.s.Set(c.s.d.MW, 5, [](long i) { return 5.0L + Noise(i) + (i == 20 ? 10.0L : 0.0L); });
    // Scatter is about 10/sqrt(40) = 1.6 m, so the arc is walked: 40
    // values, the last outside the walk, the outlier not accepted, and the
    // part written with one less than its 38 accepted values; it ends at
    // the next to last value.
    EXPECT_EQ(c.Run(), (std::vector<Arc>{{5, 0, 38, 37}}));
}

TEST(ScreenMW, TwoNeighboursOffAlikeSplitThere)
{
    MWCase c;
    c.s.Set(c.s.d.MW, 5, [](long i) { return 5.0L + Noise(i) + (i >= 20 ? 5.0L : 0.0L); });
    // Part one: 20 accepted, 19 written; part two: epochs 20 to 38, 19
    // accepted, 18 written.
    EXPECT_EQ(c.Run(), (std::vector<Arc>{{5, 0, 19, 19}, {5, 20, 38, 18}}));
}

TEST(ScreenMW, TwoNeighboursOffButApartSkipTheFirst)
{
    MWCase c;
    c.s.Set(c.s.d.MW, 5, [](long i) {
        return 5.0L + Noise(i) + (i == 20 ? 5.0L : 0.0L) + (i >= 21 ? 10.0L : 0.0L);
    });
    EXPECT_EQ(c.Run(), (std::vector<Arc>{{5, 0, 19, 19}, {5, 21, 38, 17}}));
}

TEST(ScreenMW, PartShorterThanMinObsAmbIsDropped)
{
    MWCase c;
    // Jump at 10: part one holds 10 values (9 written) and goes.
    c.s.Set(c.s.d.MW, 5, [](long i) { return 5.0L + Noise(i) + (i >= 10 ? 5.0L : 0.0L); });
    EXPECT_EQ(c.Run(), (std::vector<Arc>{{5, 10, 38, 28}}));
}

TEST(ScreenMW, LowElevationValuesWeighLess)
{
    // +2 m on every other value: unweighted RMS about 1.0 m, above the
    // 0.86 m limit. At 0.01 rad these weigh 2·sin(0.01) = 0.02 and the
    // weighted RMS falls to about 0.2 m, so the arc passes as it stands.
    auto mw = [](long i) { return 5.0L + (i % 2 ? 2.0L : 0.0L); };
    MWCase low;
    low.s.Set(low.s.d.MW, 5, mw);
    for (long i = 1; i < 40; i += 2) low.s.elev(low.s.Rec(i, 5)) = 0.01L;
    // The L4 series must not lose them: the cut-off is passed as 0.
    long n = 0;
    low.s.d.ScreenL4(low.s.elev, 0.0L, MinObs, dL40, ddL4, Gap30, n);
    low.s.d.ScreenMW(0.86L, MinObs, low.s.elev, n);
    EXPECT_EQ(low.s.Result(), (std::vector<Arc>{{5, 0, 39, 40}}));

    MWCase high;
    high.s.Set(high.s.d.MW, 5, mw);
    EXPECT_NE(high.Run(), (std::vector<Arc>{{5, 0, 39, 40}}));
}

// ---------------------------------------------------------------------- CL1

TEST(ScreenCL1, LimitIsWavelengthMultipleAndGalileoIsPassedOver)
{
    const long double lam1Mult = 2.0L;
    for (const long double d : {-Margin_m, Margin_m}) {
        Store s(Times(40), Every(40, {5, 203}), "cl1.b");
        const long double h = lam1Mult * GPSc::lamb1 + d;
        s.Set(s.d.CL1, 5, Step(20, h));
        s.Set(s.d.CL1, 203, Step(0, 0.0L));
        long n = -1;
        s.d.ScreenCL1(s.elev, MinElev, MinObs, lam1Mult, n, Gap30);
        const std::vector<Arc> v = s.Result();
        EXPECT_EQ(static_cast<std::size_t>(n), v.size());
        if (d < 0)
            EXPECT_EQ(v, (std::vector<Arc>{{5, 0, 39, 40}}));
        else
            EXPECT_EQ(v, (std::vector<Arc>{{5, 0, 19, 20}, {5, 20, 39, 20}}));
    }
}

TEST(ScreenCL1, GapCutsAndShortArcsAreNotCounted)
{
    std::vector<long double> t = Times(50);
    for (long i = 10; i < 50; ++i) t[i] += 200.0L;
    Store s(t, Every(50, {5}), "cl2.b");
    s.Set(s.d.CL1, 5, Step(0, 0.0L));
    long n = -1;
    s.d.ScreenCL1(s.elev, MinElev, MinObs, 2.0L, n, Gap30);
    EXPECT_EQ(n, 1);
    EXPECT_EQ(s.Result(), (std::vector<Arc>{{5, 10, 49, 40}}));
}

// --------------------------------------------------------------- bad input

TEST(ScreenDeath, UnsetOrUnwritableFileStops)
{
    Store s(Times(20), Every(20, {5}), "d1.b");
    s.d.SetAmbFile("");
    long n = 0;
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            s.d.ScreenL4(s.elev, MinElev, MinObs, dL40, ddL4, Gap30, n);
        },
        ::testing::ExitedWithCode(1),
        "#### RINEXData: Error -> ARC SCREENING: AMBIGUITY FILE NAME NOT SET! ####");
    s.d.SetAmbFile(TempDir() + "/no/such/folder/a.b");
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            s.d.ScreenL4Linear(s.elev, MinElev, MinObs, dL40, ddL4, Gap30, n);
        },
        ::testing::ExitedWithCode(1), "#### RINEXData: Error -> AMBIGUITY FILE .*a.b CAN NOT BE OPENED FOR WRITING! ####");
}

TEST(ScreenDeath, ShortElevationsStop)
{
    Store s(Times(20), Every(20, {5}), "d2.b");
    s.elev.Resize(10, 1, HighElev);
    long n = 0;
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            s.d.ScreenCL1(s.elev, MinElev, MinObs, 2.0L, n, Gap30);
        },
        ::testing::ExitedWithCode(1), "#### RINEXData: Error -> ARC SCREENING: ELEVATIONS NOT SET FOR ALL OBSERVATIONS! ####");
}

TEST(ScreenDeath, MWFileWithFewerOrForeignArcsStops)
{
    Store s(Times(20), Every(20, {5, 7}), "d3.b");
    {
        std::ofstream out(s.d.AmbFile, std::ios::binary);
        WriteAmbRecord(out, AmbRecord{5, 0, 0, 19, 20});
    }
    long n = 2;
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            s.d.ScreenMW(0.86L, MinObs, s.elev, n);
        },
        ::testing::ExitedWithCode(1), "#### RINEXData: Error -> AMBIGUITY FILE .* HOLDS FEWER THAN 2 ARCS!");
    {
        // ioStart 1 is satellite 7's own record, not the block start.
        std::ofstream out(s.d.AmbFile, std::ios::binary);
        WriteAmbRecord(out, AmbRecord{7, 0, 1, 19, 20});
    }
    n = 1;
    EXPECT_EXIT(
        {
            std::cout.rdbuf(std::cerr.rdbuf());
            s.d.ScreenMW(0.86L, MinObs, s.elev, n);
        },
        ::testing::ExitedWithCode(1), "#### RINEXData: Error -> AMBIGUITY FILE .* HOLDS AN ARC OUTSIDE THE DATA! ####");
}

// -------------------------------------------------------- real ESBC phase

namespace {

// The real day read once; tests put slips into the phase and restore it.
class RealDay : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        h_ = std::make_unique<RINEXHeader>();
        d_ = std::make_unique<RINEXData>(*h_);
        r_ = std::make_unique<RINEX>(*h_, *d_);
        r_->SetFile(orvotest::Data("esbc-2020-177/esbc1770.20o"));
        r_->ReadFile();
        L1_ = d_->L1;
        L2_ = d_->L2;
        L7_ = d_->L7;
    }
    static void TearDownTestSuite()
    {
        r_.reset();
        d_.reset();
        h_.reset();
    }
    void SetUp() override
    {
        d_->L1 = L1_;
        d_->L2 = L2_;
        d_->L7 = L7_;
        elev_.Resize(d_->nsatall, 1, HighElev);
        d_->SetAmbFile(TempDir() + "/real.b");
    }
    static void Form()
    {
        d_->SetLC_L4();
        d_->SetLC_MW(false);
    }
    // Adds n whole cycles to obs for sat from epoch e on: a slip persists.
    static void Slip(matrix<gnssobs>& obs, short sat, long e, long double n)
    {
        long k = 0;
        for (long i = 0; i < d_->nepochall; ++i)
            for (long j = 0; j < d_->nsat(i); ++j, ++k)
                if (i >= e && d_->sat(k) == sat && !obs(k).IsNull()) obs(k) += n;
    }
    std::vector<Arc> ScreenL4(Method m)
    {
        long n = 0;
        if (m == Method::Constant)
            d_->ScreenL4(elev_, MinElev, MinObs, dL40, ddL4, Gap30, n);
        else
            d_->ScreenL4Linear(elev_, MinElev, MinObs, dL40, ddL4, Gap30, n);
        const std::vector<Arc> v = Brief(Arcs(d_->AmbFile));
        EXPECT_EQ(static_cast<std::size_t>(n), v.size());
        return v;
    }
    std::vector<Arc> ScreenMW()
    {
        long n = static_cast<long>(Arcs(d_->AmbFile).size());
        d_->ScreenMW(0.86L, MinObs, elev_, n);
        const std::vector<Arc> v = Brief(Arcs(d_->AmbFile));
        EXPECT_EQ(static_cast<std::size_t>(n), v.size());
        return v;
    }
    // The arc of sat holding epoch e, or none.
    static const Arc* Holding(const std::vector<Arc>& v, int sat, long e)
    {
        for (const Arc& a : v)
            if (a.sat == sat && a.first <= e && e <= a.last) return &a;
        return nullptr;
    }

    static std::unique_ptr<RINEXHeader> h_;
    static std::unique_ptr<RINEXData> d_;
    static std::unique_ptr<RINEX> r_;
    static matrix<gnssobs> L1_, L2_, L7_;
    matrix<long double> elev_;
};

std::unique_ptr<RINEXHeader> RealDay::h_;
std::unique_ptr<RINEXData> RealDay::d_;
std::unique_ptr<RINEX> RealDay::r_;
matrix<gnssobs> RealDay::L1_, RealDay::L2_, RealDay::L7_;

// A slip of n cycles to inject, and where.
struct Injection {
    matrix<gnssobs>* obs;
    short sat;
    long epoch;
    long double cycles;
};

}  // namespace

TEST_F(RealDay, InjectedL4SlipsAreFoundWhereTheyWerePutAndNothingElseMoves)
{
    // Sizes in L4: 2·λ1 = 0.38 m, 2·λ2 = 0.49 m, 3·λ(E5b) = 0.75 m; all above
    // the linear method's 0.262 m and the constant one's 0.158 m, while the
    // ionosphere moves L4 by millimetres in 30 s.
    for (Method m : {Method::Constant, Method::Linear}) {
        SetUp();
        Form();
        const std::vector<Arc> clean = ScreenL4(m);
        ASSERT_GT(clean.size(), 50u);

        const Injection inj[] = {{&d_->L1, 5, 1100, 2.0L},
                                 {&d_->L2, 8, 1700, 2.0L},
                                 {&d_->L7, 203, 300, 3.0L}};
        // Each slip lies well inside a clean arc, 100 epochs from its ends.
        for (const Injection& s : inj) {
            const Arc* a = Holding(clean, s.sat, s.epoch);
            ASSERT_NE(a, nullptr) << s.sat;
            ASSERT_GT(s.epoch - a->first, 100);
            ASSERT_GT(a->last - s.epoch, 100);
        }
        for (const Injection& s : inj) Slip(*s.obs, s.sat, s.epoch, s.cycles);
        Form();
        const std::vector<Arc> cut = ScreenL4(m);

        // Expected: the clean list with exactly the three arcs split at
        // the slip epochs, all else equal.
        std::vector<Arc> want;
        for (const Arc& a : clean) {
            bool split = false;
            for (const Injection& s : inj)
                if (a.sat == s.sat && a.first < s.epoch && s.epoch <= a.last) {
                    want.push_back({a.sat, a.first, s.epoch - 1, s.epoch - a.first});
                    want.push_back({a.sat, s.epoch, a.last, a.last - s.epoch + 1});
                    split = true;
                }
            if (!split) want.push_back(a);
        }
        EXPECT_EQ(cut.size(), clean.size() + 3);
        EXPECT_EQ(cut, want);
    }
}

TEST_F(RealDay, SlipInvisibleToL4IsSplitByMW)
{
    // 13 cycles on L1 with 10 on L2 move L4 by 13·λ1 - 10·λ2 = 3 cm, below
    // both L4 limits, but the wide lane by 3 cycles (2.6 m): an RMS of about
    // 1.3 m over the arc, above the 0.86 m limit.
    Form();
    const std::vector<Arc> cleanL4 = ScreenL4(Method::Linear);
    const std::vector<Arc> clean = ScreenMW();
    const Arc* a = Holding(clean, 6, 800);
    ASSERT_NE(a, nullptr);
    const Arc arc = *a;
    ASSERT_EQ(arc.last - arc.first + 1, arc.nobs);  // present every epoch
    ASSERT_GT(800 - arc.first, 100);
    ASSERT_GT(arc.last - 800, 100);

    Slip(d_->L1, 6, 800, 13.0L);
    Slip(d_->L2, 6, 800, 10.0L);
    Form();
    EXPECT_EQ(ScreenL4(Method::Linear), cleanL4);
    const std::vector<Arc> cut = ScreenMW();
    EXPECT_EQ(cut.size(), clean.size() + 1);
    // The first part ends just before the slip and records one less than
    // its epochs; the second starts at the slip.
    const Arc* p1 = Holding(cut, 6, 799);
    const Arc* p2 = Holding(cut, 6, 800);
    ASSERT_NE(p1, nullptr);
    ASSERT_NE(p2, nullptr);
    EXPECT_EQ(*p1, (Arc{6, arc.first, 799, 799 - arc.first}));
    EXPECT_EQ(p2->first, 800);
    EXPECT_LE(p2->last, arc.last);
    for (const Arc& c : clean)
        if (!(c == arc)) {
            EXPECT_NE(std::find(cut.begin(), cut.end(), c), cut.end()) << c;
        }
}

TEST_F(RealDay, ArcFileOfTheRealDayRoundTripsByteForByte)
{
    Form();
    ScreenL4(Method::Linear);
    const std::string bytes = ReadFile(d_->AmbFile);
    const std::vector<AmbRecord> v = Arcs(d_->AmbFile);
    ASSERT_FALSE(v.empty());
    ASSERT_EQ(bytes.size(), v.size() * AmbRecordns::Size);

    std::string again;
    long k = 0;
    for (const AmbRecord& a : v) {
        again += Bytes(a.sat, a.iStart, a.ioStart, a.iEnd, a.nobs);
        // Each record points at a real block start and counts no more
        // observations than its epochs.
        long start = 0;
        for (long i = 0; i < a.iStart; ++i) start += d_->nsat(i);
        EXPECT_EQ(a.ioStart, start) << k;
        EXPECT_LE(a.nobs, a.iEnd - a.iStart + 1) << k;
        EXPECT_GE(a.nobs, MinObs) << k;
        ++k;
    }
    EXPECT_EQ(again, bytes);

    const std::string copy = TempDir() + "/copy.b";
    {
        std::ofstream out(copy, std::ios::binary);
        for (const AmbRecord& a : v) WriteAmbRecord(out, a);
    }
    EXPECT_EQ(ReadFile(copy), bytes);
}
