// Code copies and code filters on the real days: the P1 - C1 biases against
// a plain median, blunders put into a copy cleared where they were put and
// nowhere else, the arcs and polynomial degrees of the second-code screen,
// and the polynomial normal equations against exact fits.

#include <algorithm>

#include "StagingSupport.h"
#include "numerics/chr.h"
#include "preprocessing/C1P2Filter.h"
#include "preprocessing/CodeBiasFilter.h"
#include "preprocessing/CodeCopy.h"

using namespace stagingtest;

namespace {

// A satellite's P1 - C1 bias is constant over the day; receiver noise of
// decimetres averaged over thousands of records leaves its weighted mean
// and the median within a few millimetres. 5 cm is the bound the day can
// hold; a wrong sign or a missing weight moves it by decimetres to metres.
constexpr long double MedianTol_m = 0.05L;
// Rejections beyond the injected blunders. The weight floor at 30 degrees
// holds the expected deviation of low observations at that of 30 degrees
// while their multipath keeps growing: about one P1 - C1 pair in 140 and one
// P2 in 250 fail 4 sigma on this day (0.55 % of the codes). A filter that
// tests against a wrong deviation or a wrong mean clears several per cent.
constexpr long double OtherRejections = 0.01L;

struct Codes {
    std::vector<gnssobs> c1, p1, c2, p2;
};
Codes Copy(const RINEXData& d)
{
    Codes c;
    for (long k = 0; k < d.GetNObs(); ++k) c.c1.push_back(d.C1(k)), c.p1.push_back(d.P1(k)), c.c2.push_back(d.C2(k)), c.p2.push_back(d.P2(k));
    return c;
}

long double Median(std::vector<long double> v)
{
    std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
    return v[v.size() / 2];
}

TEST(CodeFilters, EsbcBiasesMatchTheMedianAndBlundersAreClearedWhereTheyWere) {
    Options o;
    o.obs = Obs();
    o.gln = true;
    o.gal = false;
    o.channels = Channels();
    Context c;
    Stage(c, o);
    gCPosC& g = c.gc;
    RINEXData& d = c.rnxd;
    g.doCopyFilterC = g.ifL3 = true;
    // Blunders on one GPS satellite with both codes of each frequency at
    // three epochs of its day: 20 m on P1, 30 m and 8 m on P2.
    std::vector<long> recs;
    for (long k = 0; k < d.GetNObs(); ++k)
        if (d.sat(k) == 5 && !d.C1(k).IsNull() && !d.P1(k).IsNull() && !d.P2(k).IsNull() && g.ELV(k) > 0.5L) recs.push_back(k);
    ASSERT_GT(recs.size(), 300u);
    const long kP1 = recs[100], kP2a = recs[200], kP2b = recs[300];
    d.P1(kP1) += 20.0L;
    d.P2(kP2a) += 30.0L;
    d.P2(kP2b) += 8.0L;
    const Codes before = Copy(d);
    std::string out;
    {
        Capture cap(std::cout);
        C1P1Copy(g), C2P2Copy(g), C1P1Filter(g), C2P2Filter(g), C1P2Filter(g);
        out = cap.Text();
    }
    EXPECT_TRUE(Has(out, "FILTERING  C1/P1 OBSERVATIONS:") && Has(out, "FILTERING  C2/P2 OBSERVATIONS:")) << out;
    // The blunders: both codes of the pair where P1 was hit, P2 (and C2, if
    // its pair filter saw it) where P2 was hit; C1 stays there.
    EXPECT_TRUE(d.C1(kP1).IsNull() && d.P1(kP1).IsNull() && !d.P2(kP1).IsNull());
    for (long k : {kP2a, kP2b}) EXPECT_TRUE(d.P2(k).IsNull() && !d.C1(k).IsNull()) << k;
    long cleared = 0, codes = 0;
    std::map<short, std::vector<long double>> raw, merged;
    for (long k = 0; k < d.GetNObs(); ++k) {
        for (const auto& [was, now] : {std::pair{&before.c1, &d.C1}, {&before.p1, &d.P1}, {&before.p2, &d.P2}})
            if (!(*was)[k].IsNull()) ++codes, cleared += (*now)(k).IsNull();
        if (before.c1[k].IsNull() || before.p1[k].IsNull() || d.C1(k).IsNull()) continue;
        raw[d.sat(k)].push_back(before.p1[k].obs - before.c1[k].obs);
        // C1 = (C1 + P1 - x)/2 gives back the satellite's bias x.
        merged[d.sat(k)].push_back(before.c1[k].obs + before.p1[k].obs - 2.0L * d.C1(k).obs);
    }
    EXPECT_LT(cleared - 5, OtherRejections * codes) << cleared << " of " << codes;
    int glonass = 0;
    for (const auto& [sat, xs] : merged) {
        const auto [lo, hi] = std::minmax_element(xs.begin(), xs.end());
        EXPECT_LT(*hi - *lo, 1e-9L) << SatName(sat) << ": one bias per satellite";
        EXPECT_NEAR(xs.front(), Median(raw[sat]), MedianTol_m) << SatName(sat);
        glonass += IsGlonass(sat);
    }
    EXPECT_GT(merged.size(), 40u);
    EXPECT_GT(glonass, 15);
}

TEST(CodeFilters, SecondCodeArcsTakeTheirDegreeFromTheirLengthAndGrowBeyond300) {
    // ZIMM as it is (C1, C2, P2: the pair filter and the arc screen), and
    // the ESBC day (G, R, E; Galileo with C7) cut into 61-minute stretches with 61-minute gaps, so that
    // every pass breaks into several arcs, hundreds in all.
    const std::string z = orvotest::Data("zimm-2015-235/");
    long epoch = -1;
    const orvotest::Selector gaps = [&](const std::vector<std::string>& sats) {
        ++epoch;
        return std::vector<bool>(sats.size(), (epoch / 122) % 2 == 0);
    };
    Options zimm, esbc;
    zimm.obs = z + "ZIMM2350.15O";
    zimm.sp3 = z + "igs18590.sp3";
    zimm.gal = false;
    esbc.obs = orvotest::CutObs(Obs(), "esbc_gaps.20o", 2880, gaps);
    esbc.gln = true;
    esbc.channels = Channels();
    for (const Options* o : {&zimm, &esbc}) {
        Context c;
        Stage(c, *o);
        gCPosC& g = c.gc;
        g.doCopyFilterC = g.ifL3 = true;
        std::string out;
        {
            Capture cap(std::cout);
            C2P2Filter(g);
            C1P2Filter(g);
            out = cap.Text();
        }
        ASSERT_TRUE(Has(out, "FILTERING  C2/P2 OBSERVATIONS:") && Has(out, "POLYNOMIAL")) << out;
        std::istringstream table(out.substr(out.find("POLYNOMIAL")));
        long arcs = 0, degrees[3] = {0, 0, 0};
        for (std::string line; std::getline(table, line);) {
            std::istringstream row(line);
            long id, first, last, n, nOut, degree;
            std::string prn, pct;
            if (!(row >> id >> prn >> first >> last >> n >> nOut >> pct >> degree)) continue;
            const long double hours = (last - first) * 30.0L / 3600.0L;
            EXPECT_EQ(degree, hours <= 1.0L ? 0 : hours <= 4.0L ? 1 : 2) << line;
            ++degrees[degree];
            ++arcs;
        }
        if (o == &esbc) {
            EXPECT_GT(arcs, 300);
        } else {
            EXPECT_TRUE(degrees[0] > 0 && degrees[1] > 0 && degrees[2] > 0) << degrees[0] << " " << degrees[1] << " " << degrees[2];
        }
    }
}

TEST(CodeFilters, ArcWithoutRedundancyRejectsNothing) {
    // G05 keeps C1 at one record only: its arc has one observation and a
    // constant, no degree of freedom, and its 30 m blunder on P2 stays.
    // The pair filters are off (no -pf): the arc screen runs alone.
    Options o;
    o.obs = orvotest::CutObs(Obs(), "esbc_20.20o", 20);
    o.gal = false;
    Context c;
    Stage(c, o);
    gCPosC& g = c.gc;
    g.ifL3 = true;
    RINEXData& d = c.rnxd;
    long kept = -1;
    for (long k = 0; k < d.GetNObs(); ++k) {
        if (d.sat(k) != 5 || d.C1(k).IsNull() || d.P2(k).IsNull()) continue;
        if (kept < 0) kept = k, d.P2(k) += 30.0L;
        else d.C1(k) = gnssobs();
    }
    ASSERT_GE(kept, 0);
    Capture cap(std::cout);
    C1P2Filter(g);
    EXPECT_FALSE(d.P2(kept).IsNull());
}

TEST(CodeFilters, PolynomialNormalsFitExactlyAndTheResidualCofactorKeepsItsForm) {
    // y = 2x^2 - 3x + 1 sampled without noise: the fit gives the
    // coefficients, every residual is 0; taking the points off again leaves
    // nothing.
    matrix<long double> N(3, 3, 0.0L), t(3, 1, 0.0L);
    long double fpf = 0.0L;
    const auto y = [](long double x) { return 2.0L * x * x - 3.0L * x + 1.0L; };
    for (long double x : {0.0L, 0.5L, 1.5L, 2.0L, 3.5L}) UpdateNormalSystem(x, y(x), 0.5L + x, 2, N, t, fpf);
    chr<long double> ch;
    ch.dcmp(N);
    const matrix<long double> X = ch.solve(t);
    EXPECT_NEAR(X(0), 2.0L, 1e-15L);
    EXPECT_NEAR(X(1), -3.0L, 1e-15L);
    EXPECT_NEAR(X(2), 1.0L, 1e-15L);
    for (long double x : {0.25L, 1.0L, 4.0L}) EXPECT_NEAR(GetResidual(y(x), x, X, 2), 0.0L, 1e-14L);
    for (long double x : {0.0L, 0.5L, 1.5L, 2.0L, 3.5L}) ReduceNormalSystem(x, y(x), 0.5L + x, 2, N, t, fpf);
    for (long i = 0; i < 3; ++i) {
        EXPECT_NEAR(t(i), 0.0L, 1e-12L);
        for (long j = 0; j < 3; ++j) EXPECT_NEAR(N(i, j), 0.0L, 1e-12L);
    }
    EXPECT_NEAR(fpf, 0.0L, 1e-12L);
    // The cofactor as written: both off-diagonal entries and the factor 2,
    // so against the textbook 1/p - a'QXa each cross term counts twice. An
    // unsymmetric QX tells the two entries apart.
    const long double q[3][3] = {{0.5L, 0.01L, 0.02L}, {0.03L, 0.7L, 0.04L}, {0.05L, 0.06L, 0.9L}};
    matrix<long double> QX(3, 3, 0.0L);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) QX(i, j) = q[i][j];
    const long double x = 1.5L, p = 0.25L, a[3] = {x * x, x, 1.0L};
    long double textbook = 1.0L / p;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) textbook -= a[i] * q[i][j] * a[j];
    // The form written out doubles every cross term of the textbook sum.
    long double cross = 0.0L;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) cross += i != j ? a[i] * q[i][j] * a[j] : 0.0L;
    EXPECT_NEAR(GetResidualQ(p, x, QX, 2), textbook - cross, 1e-15L);
    EXPECT_NEAR(GetResidualQ(p, x, QX, 1), 1.0L / p - (q[0][0] * x * x + 2.0L * x * (q[1][0] + q[0][1]) + q[1][1]), 1e-15L);
    EXPECT_NEAR(GetResidualQ(p, x, QX, 0), 1.0L / p - q[0][0], 1e-15L);
}

}  // namespace
