// Arc screening: the 18-byte arc file, the threshold, gap, length and
// elevation rules of the L4, MW and CL1 screens on small stores built in
// memory, and cycle slips injected into the real ESBC phase, which must be
// found where they were put while clean arcs stay whole.
#include "ObsSupport.h"

using namespace obstest;

// Margin put around a threshold: a tenth of a millimetre is far beyond the
// round-off of long double on values of tens of metres (1e-17 m) and far
// below any threshold (5 cm and up), so each side is decided by the rule.
constexpr long double Margin_m = 1e-4L;

// L4 thresholds of the defaults, as the ambiguity stage passes them.
constexpr long double dL40 = 0.05L, ddL4 = 0.02L;
constexpr long double Gap30 = 150.5L;  // 5·30 s + 0.5 s
constexpr long MinObs = 15;
constexpr long double MinElev = 10.0L * 3.14159265358979323846L / 180.0L;
constexpr long double MWRms_m = 0.86L;

static std::vector<AmbRecord> Arcs(const std::string& path)
{
    std::vector<AmbRecord> v;
    std::ifstream in(path, std::ios::binary);
    for (AmbRecord a; ReadAmbRecord(in, a);) v.push_back(a);
    return v;
}

// {sat, first epoch, last epoch, count} of an arc.
using Arc = std::array<long, 4>;
using Arcs_t = std::vector<Arc>;

// The arcs on file; each must point at the first record of its epoch's
// block, hold no more observations than epochs and no fewer than
// MinObsAmb, and the count returned must be the records on file.
static Arcs_t Brief(const std::string& file, const std::vector<long>& start, long nAmb)
{
    Arcs_t out;
    for (const AmbRecord& a : Arcs(file)) {
        out.push_back({a.sat, a.iStart, a.iEnd, a.nobs});
        EXPECT_EQ(a.ioStart, start[a.iStart]);
        EXPECT_TRUE(a.nobs <= a.iEnd - a.iStart + 1 && a.nobs >= MinObs);
    }
    EXPECT_EQ(static_cast<std::size_t>(nAmb), out.size());
    return out;
}

// Independent little-endian encoder, byte by byte from the field table.
static std::string Bytes(const AmbRecord& a)
{
    std::string s;
    for (int k = 0; k < 2; ++k) s += static_cast<char>((static_cast<uint16_t>(a.sat) >> (8 * k)) & 0xFF);
    for (int32_t v : {a.iStart, a.ioStart, a.iEnd, a.nobs})
        for (int k = 0; k < 4; ++k) s += static_cast<char>((static_cast<uint32_t>(v) >> (8 * k)) & 0xFF);
    return s;
}

// A store of epochs at times t holding the satellites listed, with the L4,
// MW and CL1 series present and null and the arc file set.
struct ArcStore : Store {
    ArcStore(const std::vector<long double>& t, const std::vector<std::vector<short>>& sats) : Store(sats, {}, t)
    {
        h.iL4 = h.iMW = h.iCL1 = true;
        for (matrix<gnssobs>* m : {&d.L4, &d.MW, &d.CL1}) m->Resize(d.nsatall, 1, gnssobs());
        d.SetAmbFile(TempDir() + "/arcs.b");
        std::remove(d.AmbFile.c_str());
    }
    Arcs_t Result(long nAmb) const { return Brief(d.AmbFile, start, nAmb); }
};

// Epochs 30 s apart, those from gapAt on gap seconds later.
static std::vector<long double> Times(long n, long gapAt = 0, long double gap = 0.0L)
{
    std::vector<long double> t(n);
    for (long i = 0; i < n; ++i) t[i] = 30.0L * i + (gapAt > 0 && i >= gapAt ? gap : 0.0L);
    return t;
}
static std::vector<std::vector<short>> Every(long n, const std::vector<short>& sats) { return {static_cast<std::size_t>(n), sats}; }
// A step of size h at epoch e on a level of 10 m (never null).
static std::function<long double(long)> Step(long e, long double h) { return [=](long i) { return 10.0L + (i >= e ? h : 0.0L); }; }

// The screens: L4 by the constant or the linear method, CL1, and MW on
// the arcs of a constant L4 screen whose cut-off is 0 (so that low MW
// values stay in).
enum Method { Constant = 1, Linear = 2, Both = 3, CL1 = 4, MW = 8 };

static long Screen(int m, ArcStore& s, long double gap)
{
    long n = -1;
    if (m == Linear) s.d.ScreenL4Linear(s.elev, MinElev, MinObs, dL40, ddL4, gap, n);
    if (m == Constant || m == MW) s.d.ScreenL4(s.elev, m == MW ? 0.0L : MinElev, MinObs, dL40, ddL4, gap, n);
    if (m == CL1) s.d.ScreenCL1(s.elev, MinElev, MinObs, 2.0L, n, gap);
    if (m == MW) s.d.ScreenMW(MWRms_m, MinObs, s.elev, n);
    return n;
}

TEST(AmbRecordFile, LayoutIsEighteenLittleEndianBytesAndRoundTrips)
{
    const std::vector<AmbRecord> recs = {
        {5, 0, 0, 2879, 2880}, {203, 1438, 41234, 2081, 644}, {-2, -1, 2147483647, -2147483647 - 1, 65536}};
    const std::string path = TempDir() + "/layout.b";
    std::string want, back;
    std::ofstream out(path, std::ios::binary);
    for (const AmbRecord& a : recs) want += WriteAmbRecord(out, a) ? Bytes(a) : "";
    out.close();
    for (const AmbRecord& a : Arcs(path)) back += Bytes(a);
    ASSERT_EQ(want.size(), 3u * AmbRecordns::Size);
    EXPECT_EQ(ReadFile(path) + "|" + back, want + "|" + want);
    // A short tail is no record and leaves the target alone.
    std::ifstream in(WriteTemp("short.b", want.substr(0, 17)), std::ios::binary);
    AmbRecord a{99, 0, 0, 0, 0};
    EXPECT_TRUE(!ReadAmbRecord(in, a) && a.sat == 99);
}

TEST(ScreenArcs, StepGapElevationLengthAndScatterRulesOfEachScreen)
{
    // L4, constant method: a step limit of dL40 + ddL4·sqrt(dt - 1) for
    // epochs dt apart. Linear method, from MaxTimeGap 150.5 s: steps up to
    // sqrt(150.5)·0.02 + 0.05 ≈ 0.295 m, second differences up to
    // sqrt(150.5)·0.02 + 0.05/3 ≈ 0.262 m. CL1: steps up to 2·λ1.
    const long double dL4Max30 = dL40 + ddL4 * std::sqrt(29.0L), dL4Max60 = dL40 + ddL4 * std::sqrt(59.0L);
    const long double dL4Lin = std::sqrt(Gap30) * ddL4 + dL40, dAL4Lin = std::sqrt(Gap30) * ddL4 + dL40 / 3.0L;
    ASSERT_GT(dL4Max60 - Margin_m, dL4Max30);
    const Arcs_t whole = {{5, 0, 39, 40}}, split = {{5, 0, 19, 20}, {5, 20, 39, 20}};
    // Satellite 5 from epoch 25 (15 epochs, the last start the linear
    // method still examines), satellite 7 from epoch 26 (14 epochs).
    std::vector<std::vector<short>> late = Every(25, {12}), missing = Every(60, {5, 9});
    late.push_back({5, 12});
    late.resize(40, {5, 7, 12});
    missing[40] = {9};  // satellite 5 misses one epoch
    using Set = std::function<void(ArcStore&)>;
    auto l4 = [](short sat, std::function<long double(long)> f) -> Set { return [=](ArcStore& s) { s.Set(s.d.L4, sat, f); }; };
    auto lowAt20 = [](long double e) -> Set { return [=](ArcStore& s) { s.Set(s.d.L4, 5, Step(0, 0)), s.elev(s.Rec(20, 5)) = e; }; };
    // MW on a level L4 arc; ±5 cm of alternating noise is a clean wide lane.
    auto mw = [](std::function<long double(long)> f, bool lowOdd = false) -> Set {
        return [=](ArcStore& s) {
            s.Set(s.d.L4, 5, Step(0, 0));
            if (f) s.Set(s.d.MW, 5, f);
            for (long i = 1; lowOdd && i < 40; i += 2) s.elev(s.Rec(i, 5)) = 0.01L;
        };
    };
    auto noise = [](long i) { return i % 2 ? 0.05L : -0.05L; };
    auto cl1 = [](long double h) -> Set { return [=](ArcStore& s) { s.Set(s.d.CL1, 5, Step(20, h)), s.Set(s.d.CL1, 203, Step(0, 0)); }; };
    const Arcs_t cut = {{-1, 0, 0, 0}};  // anything but the whole arc
    const auto alt2 = [](long i) { return 5.0L + (i % 2 ? 2.0L : 0.0L); };
    const auto t40 = Times(40);
    const auto s40 = Every(40, {5});
    const std::tuple<const char*, std::vector<long double>, std::vector<std::vector<short>>, Set, int, long double, Arcs_t> cases[] = {
        {"step below", t40, s40, l4(5, Step(20, dL4Max30 - Margin_m)), Constant, Gap30, whole},
        {"step above, down", t40, s40, l4(5, Step(20, -(dL4Max30 + Margin_m))), Constant, Gap30, split},
        // One missing epoch: the limit grows to the 60 s value.
        {"step across a gap", Times(40, 20, 30.0L), s40, l4(5, Step(20, dL4Max60 - Margin_m)), Constant, Gap30, whole},
        {"gap of exactly MaxTimeGap", Times(40, 20, 30.0L), s40, l4(5, Step(0, 0)), Constant, 60.0L, whole},
        {"gap one second more", Times(40, 20, 31.0L), s40, l4(5, Step(0, 0)), Constant, 60.0L, split},
        // At the cut-off the record is out of the series: the constant
        // method skips it, the linear one ends its stretch there.
        {"elevation at cut-off", t40, s40, lowAt20(MinElev), Constant, Gap30, {{5, 0, 39, 39}}},
        {"elevation at cut-off", t40, s40, lowAt20(MinElev), Linear, Gap30, {{5, 0, 19, 20}, {5, 21, 39, 19}}},
        {"elevation above cut-off", t40, s40, lowAt20(MinElev + Margin_m), Linear, Gap30, whole},
        {"arc of exactly MinObsAmb", t40, late, [](ArcStore& s) { for (short sat : {5, 7}) s.Set(s.d.L4, sat, Step(0, 0)); },
         Both, Gap30, {{5, 25, 39, 15}}},
        {"satellite order then time", Times(60), Every(60, {203, 5, 112}),
         [](ArcStore& s) { s.Set(s.d.L4, 203, Step(30, 1.0L)), s.Set(s.d.L4, 5, Step(25, -1.0L)), s.Set(s.d.L4, 112, Step(0, 0)); }, Both,
         Gap30, {{5, 0, 24, 25}, {5, 25, 59, 35}, {112, 0, 59, 60}, {203, 0, 29, 30}, {203, 30, 59, 30}}},
        {"ramp up", t40, s40, l4(5, [=](long i) { return 10.0L + (dL4Lin - Margin_m) * i; }), Linear, Gap30, whole},
        {"second difference below", t40, s40, l4(5, Step(20, dAL4Lin - Margin_m)), Linear, Gap30, whole},
        {"second difference above", t40, s40, l4(5, [=](long i) { return 10.0L + 0.2L * i + (i >= 20 ? dAL4Lin + Margin_m : 0); }),
         Linear, Gap30, split},
        // A spike on the first epoch; a slip at 30 leaves 10 epochs.
        {"bad start, short tail", t40, s40, l4(5, [](long i) { return 10.0L + (i == 0) + (i >= 30); }), Both, Gap30, {{5, 1, 29, 29}}},
        {"file gap and missing epoch", Times(60, 20, 200.0L), missing,
         [](ArcStore& s) { for (short sat : {5, 9}) s.Set(s.d.L4, sat, Step(0, 0)); }, Linear, Gap30,
         {{5, 0, 19, 20}, {5, 20, 39, 20}, {5, 41, 59, 19}, {9, 0, 19, 20}, {9, 20, 59, 40}}},
        {"no L4", t40, s40, [](ArcStore& s) { s.h.iL4 = false, s.d.L4 = matrix<gnssobs>(); }, Linear, Gap30, {}},
        // CL1 of GPS against 2·λ1; Galileo (E03 beside) is passed over.
        {"CL1 below", t40, Every(40, {5, 203}), cl1(2.0L * GPSc::lamb1 - Margin_m), CL1, Gap30, whole},
        {"CL1 above", t40, Every(40, {5, 203}), cl1(2.0L * GPSc::lamb1 + Margin_m), CL1, Gap30, split},
        {"no MW", t40, s40, mw(nullptr), MW, Gap30, whole},
        // A lone outlier: scatter about 10/sqrt(40) = 1.6 m, so the arc is
        // walked; the outlier is not accepted, the last value is outside the
        // walk, and the part is written with one less than its 38 values.
        {"lone outlier", t40, s40, mw([=](long i) { return 5.0L + noise(i) + (i == 20 ? 10.0L : 0.0L); }), MW, Gap30, {{5, 0, 38, 37}}},
        // Two neighbours off alike split there. Part one: 20 accepted, 19
        // written; part two: epochs 20 to 38, 19 accepted, 18 written.
        {"neighbours off alike", t40, s40, mw([=](long i) { return 5.0L + noise(i) + (i >= 20 ? 5.0L : 0.0L); }), MW, Gap30,
         {{5, 0, 19, 19}, {5, 20, 38, 18}}},
        // Jump at 10: part one holds 10 values (9 written), short, and goes.
        {"short part", t40, s40, mw([=](long i) { return 5.0L + noise(i) + (i >= 10 ? 5.0L : 0.0L); }), MW, Gap30, {{5, 10, 38, 28}}},
        // +2 m on every other value: unweighted RMS about 1.0 m, above the
        // limit, so at full weight the arc is cut; at 0.01 rad these weigh
        // 2·sin(0.01) = 0.02, the weighted RMS falls to about 0.2 m, and the
        // arc passes as it stands.
        {"low values weigh less", t40, s40, mw(alt2, true), MW, Gap30, whole},
        {"high values weigh fully", t40, s40, mw(alt2), MW, Gap30, cut}, };
    for (const auto& [what, t, sats, set, methods, gap, want] : cases)
        for (int m : {Constant, Linear, CL1, MW}) {
            if (!(methods & m)) continue;
            ArcStore s(t, sats);
            set(s);
            const Arcs_t got = s.Result(Screen(m, s, gap));
            if (want == cut) {
                EXPECT_NE(got, whole) << what;
            } else {
                EXPECT_EQ(got, want) << what << ", method " << m;
            }
        }
}

TEST(ScreenDeath, UnsetOrUnwritableFileShortElevationsAndForeignArcsStop)
{
    ArcStore s(Times(20), Every(20, {5, 7}));
    long n = 0;
    s.d.SetAmbFile("");
    EXPECT_STOP(s.d.ScreenL4(s.elev, MinElev, MinObs, dL40, ddL4, Gap30, n),
                "#### RINEXData: Error -> ARC SCREENING: AMBIGUITY FILE NAME NOT SET! ####");
    s.d.SetAmbFile(TempDir() + "/no/such/folder/a.b");
    EXPECT_STOP(s.d.ScreenL4Linear(s.elev, MinElev, MinObs, dL40, ddL4, Gap30, n),
                "#### RINEXData: Error -> AMBIGUITY FILE .*a.b CAN NOT BE OPENED FOR WRITING! ####");
    s.d.SetAmbFile(TempDir() + "/arcs.b");
    matrix<long double> shortElev(10, 1, 1.0L);
    EXPECT_STOP(s.d.ScreenCL1(shortElev, MinElev, MinObs, 2.0L, n, Gap30),
                "#### RINEXData: Error -> ARC SCREENING: ELEVATIONS NOT SET FOR ALL OBSERVATIONS! ####");
    // One arc on file where two are announced; an arc whose ioStart 1 is
    // satellite 7's own record, not the block start.
    for (const auto& [rec, count, re] :
         {std::tuple<AmbRecord, long, const char*>{{5, 0, 0, 19, 20}, 2, "AMBIGUITY FILE .* HOLDS FEWER THAN 2 ARCS!"},
          {{7, 0, 1, 19, 20}, 1, "#### RINEXData: Error -> AMBIGUITY FILE .* HOLDS AN ARC OUTSIDE THE DATA! ####"}}) {
        std::ofstream(s.d.AmbFile, std::ios::binary).write(Bytes(rec).data(), AmbRecordns::Size);
        n = count;
        EXPECT_STOP(s.d.ScreenMW(MWRms_m, MinObs, s.elev, n), re);
    }
}

// -------------------------------------------------------- real ESBC phase

// The real day as read once per process; tests put slips into its phase
// and the original phase is put back after each.
class RealDay : public ::testing::Test {
protected: RINEXData& d = Load(kEsbc).d;
    const matrix<gnssobs> L1_ = d.L1, L2_ = d.L2, L7_ = d.L7;
    matrix<long double> elev_{d.nsatall, 1, 1.0L};
    std::vector<long> start_ = EpochStarts(d);

    void SetUp() override { d.SetAmbFile(TempDir() + "/real.b"); }
    void TearDown() override { d.L1 = L1_, d.L2 = L2_, d.L7 = L7_; }
    // Adds n whole cycles to obs for sat from epoch e on: a slip persists.
    void Slip(matrix<gnssobs>& obs, short sat, long e, long double n)
    {
        for (long r = start_[e]; r < d.nsatall; ++r)
            if (d.sat(r) == sat && !obs(r).IsNull()) obs(r) += n;
    }
    // L4 screened by method m (0 for MW on the arcs on file).
    Arcs_t Screen(int m)
    {
        d.SetLC_L4();
        d.SetLC_MW(false);
        long n = static_cast<long>(Arcs(d.AmbFile).size());
        if (m == 0) d.ScreenMW(MWRms_m, MinObs, elev_, n);
        if (m != 0) (d.*(m == Constant ? &RINEXData::ScreenL4 : &RINEXData::ScreenL4Linear))(elev_, MinElev, MinObs, dL40, ddL4, Gap30, n);
        return Brief(d.AmbFile, start_, n);
    }
};

// The arc of sat holding epoch e, or {0, 0, 0, 0}.
static Arc Holding(const Arcs_t& v, long sat, long e)
{
    for (const Arc& a : v)
        if (a[0] == sat && a[1] <= e && e <= a[2]) return a;
    return {0, 0, 0, 0};
}

TEST_F(RealDay, InjectedL4SlipsAreFoundWhereTheyWerePutAndNothingElseMoves)
{
    // Sizes in L4: 2·λ1 = 0.38 m, 2·λ2 = 0.49 m, 3·λ(E5b) = 0.75 m; all above
    // the linear method's 0.262 m and the constant one's 0.158 m, while the
    // ionosphere moves L4 by millimetres in 30 s.
    const std::tuple<matrix<gnssobs>*, short, long, long double> inj[] = {
        {&d.L1, 5, 1100, 2.0L}, {&d.L2, 8, 1700, 2.0L}, {&d.L7, 203, 300, 3.0L}};
    for (int m : {Constant, Linear}) {
        TearDown();
        const Arcs_t clean = Screen(m);
        ASSERT_GT(clean.size(), 50u);
        // Each slip lies well inside a clean arc, 100 epochs from its ends;
        // expected is the clean list with exactly those arcs split there.
        Arcs_t want;
        for (const Arc& a : clean) {
            bool split = false;
            for (const auto& [obs, sat, e, n] : inj)
                if (a[0] == sat && a[1] + 100 < e && e + 100 < a[2]) {
                    want.push_back({a[0], a[1], e - 1, e - a[1]});
                    want.push_back({a[0], e, a[2], a[2] - e + 1});
                    split = true;
                }
            if (!split) want.push_back(a);
        }
        ASSERT_EQ(want.size(), clean.size() + 3);
        for (const auto& [obs, sat, e, n] : inj) Slip(*obs, sat, e, n);
        EXPECT_EQ(Screen(m), want) << m;
    }
}

TEST_F(RealDay, SlipInvisibleToL4IsSplitByMW)
{
    // 13 cycles on L1 with 10 on L2 move L4 by 13·λ1 - 10·λ2 = 3 cm, below
    // both L4 limits, but the wide lane by 3 cycles (2.6 m): an RMS of about
    // 1.3 m over the arc, above the 0.86 m limit.
    const Arcs_t cleanL4 = Screen(Linear);
    const Arcs_t clean = Screen(0);
    const Arc arc = Holding(clean, 6, 800);
    ASSERT_EQ(arc[2] - arc[1] + 1, arc[3]);  // present every epoch
    ASSERT_TRUE(arc[1] + 100 < 800 && 800 + 100 < arc[2]);
    Slip(d.L1, 6, 800, 13.0L);
    Slip(d.L2, 6, 800, 10.0L);
    EXPECT_EQ(Screen(Linear), cleanL4);
    const Arcs_t cut = Screen(0);
    EXPECT_EQ(cut.size(), clean.size() + 1);
    // The first part ends just before the slip and records one less than
    // its epochs; the second starts at the slip; all other arcs stay.
    EXPECT_EQ(Holding(cut, 6, 799), (Arc{6, arc[1], 799, 799 - arc[1]}));
    EXPECT_EQ(Holding(cut, 6, 800)[1], 800);
    EXPECT_LE(Holding(cut, 6, 800)[2], arc[2]);
    for (const Arc& c : clean)
        if (c != arc) {
            EXPECT_NE(std::find(cut.begin(), cut.end(), c), cut.end()) << c[0] << " " << c[1];
        }
}
