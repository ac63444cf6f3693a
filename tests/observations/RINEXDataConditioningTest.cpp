// Conditioning of the record store: millisecond clock steps, time-tag
// repairs, duplicate epochs, linear combinations and presence tests.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "ConditioningSupport.h"
#include "observations/RINEXData.h"
#include "numerics/NearLD.h"

using namespace condtest;

namespace {

// Phases of a real file are about 1e8 cycles; long double keeps 19 digits,
// so a shift added and compared there is exact to about 1e-11 cycles.
constexpr long double PhaseTol_cyc = 1e-6L;
// Code minus phase between two 30 s epochs moves by twice the ionosphere
// change (cm) plus code noise and multipath (below 2 m for these
// receivers); a missed millisecond step leaves 299792 m.
constexpr long double CodePhaseStepTol_m = 5.0L;

const unsigned short kCodeTypes[] = {RINEXObs::C1, RINEXObs::P1, RINEXObs::C2, RINEXObs::P2,
                                     RINEXObs::C3R, RINEXObs::C5, RINEXObs::C6, RINEXObs::C7,
                                     RINEXObs::C8};

bool IsGps(short s) { return s >= 1 && s <= 99; }
bool IsGlonass(short s) { return s >= 101 && s <= 199; }
bool IsGalileo(short s) { return s >= 201 && s <= 299; }

// First record of each epoch.
std::vector<long> EpochStarts(const RINEXData& d)
{
    std::vector<long> start;
    long r = 0;
    for (long i = 0; i < d.nepochall; ++i) {
        start.push_back(r);
        r += d.nsat(i);
    }
    start.push_back(r);
    return start;
}

// A receiver clock step of ms milliseconds at epoch k: every code of the
// records from epoch k on moves by ms·c·1e-3, the phases stay.
void InjectClockStep(RINEXData& d, long k, long double ms)
{
    const long from = EpochStarts(d)[k];
    for (unsigned short t : kCodeTypes) {
        matrix<gnssobs>* m = d.ObsMatrix(t);
        if (m->Length() != d.nsatall) continue;
        for (long r = from; r < d.nsatall; ++r)
            if (!(*m)(r).IsNull()) (*m)(r) += ms * MSm;
    }
}

long double GlonassL1Wavelength(short s) { return GLONASSc::lamb(s - 101, 0); }

class MSJumps : public ::testing::Test {
protected:
    GlobalsGuard guard;
    static constexpr int kEpochs = 40;
    static constexpr long kStep = 20;
};

TEST_F(MSJumps, RealFilesWithoutStepsAreLeftAlone)
{
    SetGlonassChannels();
    for (const std::string& rel : {kEsbc, kZimm}) {
        Loaded f(CutFile(rel, kEpochs));
        const matrix<gnssobs> l1 = f.d.L1, l2 = f.d.L2;
        long n = -1;
        f.d.CorrMSJumps(n);
        EXPECT_EQ(n, 0) << rel;
        for (long r = 0; r < f.d.nsatall; ++r) {
            ASSERT_EQ(f.d.L1(r).obs, l1(r).obs) << rel << " record " << r;
            ASSERT_EQ(f.d.L2(r).obs, l2(r).obs) << rel << " record " << r;
        }
        long nsf = -1;
        f.d.CorrMSJumpsSF(nsf);
        EXPECT_EQ(nsf, 0) << rel;
    }
}

TEST_F(MSJumps, OneMillisecondStepIsFoundOnceAndPhasesFollowTheCode)
{
    SetGlonassChannels();
    Loaded f(CutFile(kEsbc, kEpochs));
    const std::vector<long> start = EpochStarts(f.d);
    InjectClockStep(f.d, kStep, 1.0L);
    const matrix<gnssobs> l1 = f.d.L1, l2 = f.d.L2;
    long n = 0;
    f.d.CorrMSJumps(n);
    EXPECT_EQ(n, 1);

    long gpsShifted = 0, glnShifted = 0;
    for (long i = 0; i < f.d.nepochall; ++i) {
        for (long r = start[i]; r < start[i + 1]; ++r) {
            const short s = f.d.sat(r);
            if (l1(r).IsNull()) continue;
            long double expect1 = 0.0L, expect2 = 0.0L;
            if (IsGps(s) && i >= kStep) {
                expect1 = MSm / GPSc::lamb1;
                expect2 = MSm / GPSc::lamb2;
                gpsShifted++;
            } else if (IsGlonass(s) && i > kStep) {
                // GLONASS records at the step's own epoch stay as read.
                expect1 = MSm / GlonassL1Wavelength(s);
                expect2 = MSm / GLONASSc::lamb(s - 101, 1);
                glnShifted++;
            }
            ASSERT_NEAR_LD(f.d.L1(r).obs - l1(r).obs, expect1, PhaseTol_cyc)
                << "epoch " << i << " sat " << s;
            if (!l2(r).IsNull()) {
                ASSERT_NEAR_LD(f.d.L2(r).obs - l2(r).obs, expect2, PhaseTol_cyc)
                    << "epoch " << i << " sat " << s;
            }
        }
    }
    EXPECT_GT(gpsShifted, 100);
    EXPECT_GT(glnShifted, 100);

    // Across the step, code minus phase of every GPS satellite is
    // continuous again.
    long checked = 0;
    for (long a = start[kStep - 1]; a < start[kStep]; ++a) {
        for (long b = start[kStep]; b < start[kStep + 1]; ++b) {
            if (f.d.sat(a) != f.d.sat(b) || !IsGps(f.d.sat(a))) continue;
            if (f.d.C1(a).IsNull() || f.d.C1(b).IsNull() || f.d.L1(a).IsNull() || f.d.L1(b).IsNull())
                continue;
            const long double cmc = (f.d.C1(b).obs - GPSc::lamb1 * f.d.L1(b).obs)
                                    - (f.d.C1(a).obs - GPSc::lamb1 * f.d.L1(a).obs);
            EXPECT_NEAR_LD(cmc, 0.0L, CodePhaseStepTol_m) << "G" << f.d.sat(a);
            checked++;
        }
    }
    EXPECT_GE(checked, 5);
}

TEST_F(MSJumps, StepsAccumulateAndKeepTheirSign)
{
    SetGlonassChannels();
    Loaded f(CutFile(kEsbc, kEpochs));
    const std::vector<long> start = EpochStarts(f.d);
    InjectClockStep(f.d, 10, 1.0L);
    InjectClockStep(f.d, 25, 1.0L);
    InjectClockStep(f.d, 33, -3.0L);
    const matrix<gnssobs> l1 = f.d.L1;
    long n = 0;
    f.d.CorrMSJumps(n);
    EXPECT_EQ(n, 3);
    for (long i = 0; i < f.d.nepochall; ++i) {
        const long double ms = i >= 33 ? -1.0L : i >= 25 ? 2.0L : i >= 10 ? 1.0L : 0.0L;
        for (long r = start[i]; r < start[i + 1]; ++r)
            if (IsGps(f.d.sat(r)) && !l1(r).IsNull()) {
                ASSERT_NEAR_LD(f.d.L1(r).obs - l1(r).obs, ms * MSm / GPSc::lamb1, PhaseTol_cyc)
                    << "epoch " << i;
            }
    }
}

TEST_F(MSJumps, EpochWhosePairsAllFailTheSlipTestsYieldsNoStep)
{
    SetGlonassChannels();
    Loaded f(CutFile(kEsbc, kEpochs));
    const std::vector<long> start = EpochStarts(f.d);
    InjectClockStep(f.d, kStep, 1.0L);
    // A 10-cycle slip on L1 of every satellite moves L4 by 1.9 m, beyond
    // the 1 m that a pair may show, so no pair is left at this epoch.
    for (long r = start[kStep]; r < f.d.nsatall; ++r)
        if (!f.d.L1(r).IsNull()) f.d.L1(r) += 10.0L;
    const matrix<gnssobs> l1 = f.d.L1;
    long n = -1;
    f.d.CorrMSJumps(n);
    EXPECT_EQ(n, 0);
    for (long r = 0; r < f.d.nsatall; ++r) ASSERT_EQ(f.d.L1(r).obs, l1(r).obs);
}

TEST_F(MSJumps, GlonassWithoutChannelTakesNoPartAndIsNotShifted)
{
    // No SetGlonassChannels: every GLONASS row has wavelength 0.
    Loaded f(CutFile(kEsbc, kEpochs));
    InjectClockStep(f.d, kStep, 1.0L);
    const matrix<gnssobs> l1 = f.d.L1;
    long n = 0;
    f.d.CorrMSJumps(n);
    EXPECT_EQ(n, 1);
    const std::vector<long> start = EpochStarts(f.d);
    for (long r = start[kStep + 1]; r < f.d.nsatall; ++r) {
        const short s = f.d.sat(r);
        if (l1(r).IsNull()) continue;
        if (IsGlonass(s) || IsGalileo(s))
            ASSERT_EQ(f.d.L1(r).obs, l1(r).obs) << s;
        else
            ASSERT_NEAR_LD(f.d.L1(r).obs - l1(r).obs, MSm / GPSc::lamb1, PhaseTol_cyc) << s;
    }
}

TEST_F(MSJumps, SingleFrequencyFormFollowsStepsBothWays)
{
    SetGlonassChannels();
    Loaded f(CutFile(kEsbc, kEpochs));
    const std::vector<long> start = EpochStarts(f.d);
    InjectClockStep(f.d, 12, 1.0L);
    InjectClockStep(f.d, 30, -1.0L);
    const matrix<gnssobs> l1 = f.d.L1, l2 = f.d.L2;
    long n = 0;
    f.d.CorrMSJumpsSF(n);
    EXPECT_EQ(n, 2);
    for (long i = 0; i < f.d.nepochall; ++i) {
        const long double ms = (i >= 12 && i < 30) ? 1.0L : 0.0L;
        for (long r = start[i]; r < start[i + 1]; ++r) {
            const short s = f.d.sat(r);
            if (l1(r).IsNull()) continue;
            long double lam1 = 0.0L, lam2 = 0.0L;
            if (IsGps(s)) {
                lam1 = GPSc::lamb1;
                lam2 = GPSc::lamb2;
            } else if (IsGlonass(s)) {
                // The single-frequency form shifts GLONASS at the step too.
                lam1 = GLONASSc::lamb(s - 101, 0);
                lam2 = GLONASSc::lamb(s - 101, 1);
            }
            const long double want1 = lam1 > 0.0L ? ms * MSm / lam1 : 0.0L;
            ASSERT_NEAR_LD(f.d.L1(r).obs - l1(r).obs, want1, PhaseTol_cyc) << "epoch " << i << " " << s;
            if (!l2(r).IsNull()) {
                const long double want2 = lam2 > 0.0L ? ms * MSm / lam2 : 0.0L;
                ASSERT_NEAR_LD(f.d.L2(r).obs - l2(r).obs, want2, PhaseTol_cyc) << "epoch " << i;
            }
        }
    }
}

// ---------------------------------------------------------------------------

// Epoch second of day ~86400 in long double: 1e-14 s resolution; the
// shifts applied here are exact to far better than a nanosecond.
constexpr long double EpochTol_s = 1e-9L;
// c times the epoch tolerance, plus long double round-off of 1e7 m codes.
constexpr long double CodeTol_m = 1e-3L;

TEST(Corr4ClockError, MovesEpochsToTheGridAndCodesByTheSameTimeTimesC)
{
    Loaded f(CutFile(kZimm, 20));
    // The interval is a float of a whole second: 1e-6 s admits only 30 itself.
    ASSERT_NEAR_LD(f.h.interval, 30.0L, 1e-6L);
    const matrix<mjd> e0 = f.d.epoch;
    const matrix<gnssobs> c1 = f.d.C1, p2 = f.d.P2, c5 = f.d.C5, l1 = f.d.L1;
    const std::vector<long> start = EpochStarts(f.d);
    // A receiver clock that reads dt ahead (up to 0.8 ms either way) tags
    // the epoch dt late and lengthens every pseudorange by c·dt. Epoch 0 at
    // midnight moves into the day before.
    std::vector<long double> off;
    for (long i = 0; i < f.d.nepochall; ++i) {
        const long double dt = 0.4e-3L * static_cast<long double>(i % 5 - 2);
        off.push_back(dt);
        f.d.epoch(i) += dt;
        for (long r = start[i]; r < start[i + 1]; ++r)
            for (matrix<gnssobs>* m : {&f.d.C1, &f.d.P2, &f.d.C5})
                if (!(*m)(r).IsNull()) (*m)(r) += dt * C;
    }
    ASSERT_EQ(f.d.epoch(0).GetMJDay() + 1, e0(0).GetMJDay());

    f.d.Corr4ClockError();
    for (long i = 0; i < f.d.nepochall; ++i) {
        ASSERT_NEAR_LD(f.d.epoch(i) - e0(i), 0.0L, EpochTol_s) << "epoch " << i;
        for (long r = start[i]; r < start[i + 1]; ++r) {
            ASSERT_NEAR_LD(f.d.C1(r).obs, c1(r).obs, CodeTol_m) << r;
            ASSERT_NEAR_LD(f.d.P2(r).obs, p2(r).obs, CodeTol_m) << r;
            ASSERT_NEAR_LD(f.d.C5(r).obs, c5(r).obs, CodeTol_m) << r;
            // Phases and missing codes are not touched.
            ASSERT_EQ(f.d.L1(r).obs, l1(r).obs);
            if (c5(r).IsNull()) {
                ASSERT_EQ(f.d.C5(r).obs, 0.0L);
            }
        }
    }
}

TEST(Corr4ClockError, WithoutIntervalNothingMoves)
{
    Synthetic s({{1, 2}, {1, 2}}, {RINEXObs::C1});
    s.d.epoch(1) = mjd(59025, 30.0004L);
    s.d.C1(2) = 2.0e7L;
    s.h.interval = -1.0F;
    s.d.Corr4ClockError();
    // 1e-12 s: long double seconds of day near 30 carry 1e-18 s round-off;
    // the 0.4 ms shift under test is nine orders larger.
    EXPECT_NEAR_LD(s.d.epoch(1).GetSecond(), 30.0004L, 1e-12L);
    EXPECT_EQ(s.d.C1(2).obs, 2.0e7L);
    s.h.interval = 30.0F;
    s.d.Corr4ClockError();
    EXPECT_NEAR_LD(s.d.epoch(1).GetSecond(), 30.0L, 1e-12L);
    EXPECT_NEAR_LD(s.d.C1(2).obs, 2.0e7L - 0.0004L * C, CodeTol_m);
}

TEST(CorrRNX_Leap0Red, RunsOfEqualEpochsFoldIntoTheirFirst)
{
    Synthetic s({{1, 2}, {3}, {4, 5, 6}, {7}, {8, 9}}, {RINEXObs::C1});
    s.d.epoch(1) = s.d.epoch(0);
    s.d.epoch(2) = s.d.epoch(0);
    s.d.epoch(4) = s.d.epoch(3);
    s.d.IfTimeCorr = true;
    s.d.TCorr.Resize(5, 1);
    for (long i = 0; i < 5; ++i) s.d.TCorr(i) = 1e-4L * (i + 1);
    s.d.flag(3) = '4';
    s.d.CorrRNX_Leap0Red();
    ASSERT_EQ(s.d.nepochall, 2);
    EXPECT_EQ(s.d.iend, 2);
    ASSERT_EQ(s.d.epoch.NRow(), 2);
    EXPECT_EQ(s.d.nsat(0), 6);
    EXPECT_EQ(s.d.nsat(1), 3);
    EXPECT_EQ(s.d.flag(1), '4');
    // 1e-18 s: the clock offsets are copied, not computed, so only the literal's
    // long double spacing (1e-23 s) separates them; a neighbour's value is 1e-4 s off.
    EXPECT_NEAR_LD(s.d.TCorr(0), 1e-4L, 1e-18L);
    EXPECT_NEAR_LD(s.d.TCorr(1), 4e-4L, 1e-18L);
    // The records stay, so a running index still ends at nsatall.
    EXPECT_EQ(s.d.nsat(0) + s.d.nsat(1), s.d.nsatall);
    for (long r = 0; r < s.d.nsatall; ++r) EXPECT_EQ(s.d.sat(r), r + 1);
}

TEST(CorrRNX_Leap0Red, DistinctEpochsStayAsTheyAre)
{
    Synthetic s({{1}, {2, 3}}, {});
    s.d.CorrRNX_Leap0Red();
    EXPECT_EQ(s.d.nepochall, 2);
    EXPECT_EQ(s.d.nsat(1), 2);
}

// ---------------------------------------------------------------------------
// Combinations against a made-up signal: range rho, a first-order
// ionosphere I(f) = I1·(f1/f)² that delays codes and advances phases, and
// integer ambiguities N1, N2.

// Ranges are 2e7 m and phases 1e8 cycles; long double keeps them to 1e-11 m.
// The tabulated Galileo LCion2 and the GPS wide-lane factors are off their
// exact values by 4e-16 (double round-off), 1e-8 m at 2e7 m.
constexpr long double CombTol_m = 1e-6L;

struct Signal {
    long double f1, f2;  // Hz
    long double rho, I1, N1, N2, bias;
    long double Lam1() const { return C / f1; }
    long double Lam2() const { return C / f2; }
    long double I2() const { return I1 * (f1 / f2) * (f1 / f2); }
    long double Code1() const { return rho + I1; }
    long double Code2() const { return rho + I2(); }
    long double Phase1() const { return (rho - I1) / Lam1() + N1; }
    long double Phase2() const { return (rho - I2()) / Lam2() + N2; }
    long double IonoFreeGain() const { return f1 * f1 / (f1 * f1 - f2 * f2); }
};

constexpr long double kGps1 = 1575.42e6L, kGps2 = 1227.60e6L, kGal7 = 1207.14e6L;
constexpr long double kGlnK = -4.0L;  // channel of R02 in the made-up file
constexpr long double kGln1 = 1602.0e6L + 0.5625e6L * kGlnK;
constexpr long double kGln2 = 1246.0e6L + 0.4375e6L * kGlnK;

class Combinations : public ::testing::Test {
protected:
    GlobalsGuard guard;
    // G05, R02 (channel -4), E11, R03 (no channel), then G05 without L2.
    Synthetic s{{{5, 102, 211, 103}, {5}},
                {RINEXObs::C1, RINEXObs::P1, RINEXObs::L1, RINEXObs::P2, RINEXObs::L2,
                 RINEXObs::C7, RINEXObs::L7}};
    Signal gps{kGps1, kGps2, 2.31e7L, 4.2L, 7.0L, 3.0L, 0.3L};
    Signal gln{kGln1, kGln2, 1.98e7L, 6.1L, -12.0L, 5.0L, 0.3L};
    Signal gal{kGps1, kGal7, 2.77e7L, 3.3L, 25.0L, 11.0L, 0.3L};
    Signal gln0{1602.0e6L, 1246.0e6L, 2.05e7L, 5.0L, 1.0L, 2.0L, 0.3L};

    void SetUp() override
    {
        GLONASSc::SetFrequency(kGlnK, 1);
        Fill(0, gps, false);
        Fill(1, gln, false);
        Fill(2, gal, true);
        Fill(3, gln0, false);
        Fill(4, gps, false);
        s.d.L2(4) = 0.0L;
        s.d.L1(0).lli = 1;
        s.d.L1(0).ss = 9;
    }
    void Fill(long r, const Signal& g, bool galileo)
    {
        s.d.C1(r) = g.Code1();
        s.d.P1(r) = g.Code1() + g.bias;
        s.d.L1(r) = g.Phase1();
        (galileo ? s.d.C7 : s.d.P2)(r) = g.Code2();
        (galileo ? s.d.L7 : s.d.L2)(r) = g.Phase2();
    }
};

TEST_F(Combinations, IonosphereFreeRemovesTheInverseSquareDelay)
{
    s.d.SetLC_L3();
    s.d.SetLC_PC3();
    s.d.SetLC_PP3();
    ASSERT_TRUE(s.h.iL3 && s.h.iPC3 && s.h.iPP3);
    const Signal* sig[] = {&gps, &gln, &gal};
    for (long r = 0; r < 3; ++r) {
        const Signal& g = *sig[r];
        const long double amb = C * (g.f1 * g.N1 - g.f2 * g.N2) / (g.f1 * g.f1 - g.f2 * g.f2);
        EXPECT_NEAR_LD(s.d.L3(r).obs, g.rho + amb, CombTol_m) << r;
        EXPECT_NEAR_LD(s.d.PC3(r).obs, g.rho, CombTol_m) << r;
        EXPECT_NEAR_LD(s.d.PP3(r).obs, g.rho + g.IonoFreeGain() * g.bias, CombTol_m) << r;
    }
    EXPECT_EQ(s.d.L3(0).lli, 0);
    EXPECT_EQ(s.d.L3(0).ss, 0);
    // No channel: no phase combination, but the code one needs no wavelength.
    EXPECT_EQ(s.d.L3(3).obs, 0.0L);
    EXPECT_NEAR_LD(s.d.PC3(3).obs, gln0.rho, CombTol_m);
    // A missing L2 gives 0.
    EXPECT_EQ(s.d.L3(4).obs, 0.0L);
    EXPECT_NEAR_LD(s.d.PC3(4).obs, gps.rho, CombTol_m);
}

TEST_F(Combinations, GeometryFreeKeepsOnlyIonosphereAndAmbiguity)
{
    s.d.SetLC_L4();
    s.d.SetLC_PC4();
    s.d.SetLC_PP4();
    ASSERT_TRUE(s.h.iL4 && s.h.iPC4 && s.h.iPP4);
    const Signal* sig[] = {&gps, &gln, &gal};
    for (long r = 0; r < 3; ++r) {
        const Signal& g = *sig[r];
        const long double iono = g.I2() - g.I1;
        EXPECT_NEAR_LD(s.d.L4(r).obs, iono + g.Lam1() * g.N1 - g.Lam2() * g.N2, CombTol_m) << r;
        EXPECT_NEAR_LD(s.d.PC4(r).obs, iono, CombTol_m) << r;
    }
    EXPECT_NEAR_LD(s.d.PP4(0).obs, gps.I2() - gps.I1 - gps.bias, CombTol_m);
    // No Galileo pair for P1, P2.
    EXPECT_EQ(s.d.PP4(2).obs, 0.0L);
    EXPECT_EQ(s.d.L4(3).obs, 0.0L);
    EXPECT_EQ(s.d.L4(4).obs, 0.0L);
}

TEST_F(Combinations, MelbourneWuebbenaIsTheWideLaneAmbiguity)
{
    s.d.SetLC_MW(true);
    ASSERT_TRUE(s.h.iMW);
    const Signal* sig[] = {&gps, &gln, &gal};
    for (long r = 0; r < 3; ++r) {
        const Signal& g = *sig[r];
        EXPECT_NEAR_LD(s.d.MW(r).obs, C / (g.f1 - g.f2) * (g.N1 - g.N2), CombTol_m) << r;
    }
    EXPECT_EQ(s.d.MW(3).obs, 0.0L);
    EXPECT_EQ(s.d.MW(4).obs, 0.0L);
    // With P1 the first code carries its bias through the narrow lane.
    s.d.SetLC_MW(false);
    EXPECT_NEAR_LD(s.d.MW(0).obs,
                C / (gps.f1 - gps.f2) * (gps.N1 - gps.N2) - gps.f1 / (gps.f1 + gps.f2) * gps.bias,
                CombTol_m);
}

TEST_F(Combinations, FirstFrequencyCodePhasePairs)
{
    s.d.SetLC_CL1();
    s.d.SetLC_CLI();
    s.d.SetLC_PC1();
    ASSERT_TRUE(s.h.iCL1 && s.h.iCLI && s.h.iPC1);
    const Signal* sig[] = {&gps, &gln, &gal};
    for (long r = 0; r < 3; ++r) {
        const Signal& g = *sig[r];
        // Code minus phase is twice the ionosphere; their mean is free of it.
        EXPECT_NEAR_LD(s.d.CL1(r).obs, 2.0L * g.I1 - g.Lam1() * g.N1, CombTol_m) << r;
        EXPECT_NEAR_LD(s.d.CLI(r).obs, g.rho + g.Lam1() * g.N1 / 2.0L, CombTol_m) << r;
        EXPECT_NEAR_LD(s.d.PC1(r).obs, g.bias, CombTol_m) << r;
    }
    EXPECT_EQ(s.d.CL1(3).obs, 0.0L);
}

TEST(CombinationFlags, MissingSourcesLeaveFlagUnsetAndMatrixEmpty)
{
    Synthetic s({{5, 211}}, {RINEXObs::C1, RINEXObs::L1, RINEXObs::L2});
    s.d.C1(0) = 2.0e7L;
    s.d.L1(0) = 1.0e8L;
    s.d.L1(1) = 1.1e8L;
    s.d.L2(0) = 0.8e8L;
    s.d.L2(1) = 0.9e8L;  // a Galileo value where no Galileo signal exists
    s.h.iMW = true;
    s.d.SetLC_PC3();
    s.d.SetLC_PP3();
    s.d.SetLC_MW(true);
    EXPECT_FALSE(s.h.iPC3);
    EXPECT_FALSE(s.h.iPP3);
    EXPECT_FALSE(s.h.iMW);
    EXPECT_EQ(s.d.PC3.Length(), 0);
    EXPECT_EQ(s.d.MW.Length(), 0);
    s.d.SetLC_L3();
    ASSERT_TRUE(s.h.iL3);
    EXPECT_NEAR_LD(s.d.L3(0).obs,
                GPSc::LCion1 * GPSc::lamb1 * 1.0e8L - GPSc::LCion2 * GPSc::lamb2 * 0.8e8L,
                CombTol_m);
    EXPECT_EQ(s.d.L3(1).obs, 0.0L);
}

TEST(CombinationsOnRealData, IonosphereFreePhaseAndCodeMoveTogether)
{
    GlobalsGuard guard;
    SetGlonassChannels();
    Loaded f(CutFile(kEsbc, 20));
    f.d.SetLC_L3();
    f.d.SetLC_PC3();
    ASSERT_TRUE(f.h.iL3 && f.h.iPC3);
    // Between two epochs L3 - PC3 keeps the ambiguity and changes by the
    // code noise of the combination (about 3 times 0.3 m) and multipath; a
    // wrong wavelength would leave a part of the 20 km range change.
    constexpr long double MaxChange_m = 10.0L;
    const std::vector<long> start = EpochStarts(f.d);
    long n[3] = {0, 0, 0};
    for (long i = 1; i < f.d.nepochall; ++i)
        for (long a = start[i - 1]; a < start[i]; ++a)
            for (long b = start[i]; b < start[i + 1]; ++b) {
                const short s = f.d.sat(a);
                if (f.d.sat(b) != s || f.d.L3(a).IsNull() || f.d.L3(b).IsNull()
                    || f.d.PC3(a).IsNull() || f.d.PC3(b).IsNull())
                    continue;
                const long double d = (f.d.L3(b).obs - f.d.PC3(b).obs) - (f.d.L3(a).obs - f.d.PC3(a).obs);
                EXPECT_LT(std::fabs(d), MaxChange_m) << "sat " << s << " epoch " << i;
                n[s / 100]++;
            }
    EXPECT_GT(n[0], 100);  // GPS
    EXPECT_GT(n[1], 100);  // GLONASS
    EXPECT_GT(n[2], 100);  // Galileo
}

// ---------------------------------------------------------------------------

TEST(PresenceTests, RealFilesShowTheirSystems)
{
    Loaded zimm(CutFile(kZimm, 5));
    EXPECT_TRUE(zimm.d.HasGPSObs());
    EXPECT_FALSE(zimm.d.HasGLONASSObs());
    EXPECT_FALSE(zimm.d.HasGALILEOObs());
    Loaded esbc(CutFile(kEsbc, 5));
    EXPECT_TRUE(esbc.d.HasGPSObs());
    EXPECT_TRUE(esbc.d.HasGLONASSObs());
    EXPECT_TRUE(esbc.d.HasGALILEOObs());
}

TEST(PresenceTests, AShareOfExactlyTenPerCentIsTooLittle)
{
    Synthetic ten({{1, 2, 3, 4, 5, 6, 7, 8, 9, 101}}, {});
    EXPECT_FALSE(ten.d.HasGLONASSObs());
    EXPECT_TRUE(ten.d.HasGPSObs());
    Synthetic more({{1, 2, 3, 4, 5, 6, 7, 8, 101, 201}, {101}}, {});
    EXPECT_TRUE(more.d.HasGLONASSObs());   // 2 of 11
    EXPECT_FALSE(more.d.HasGALILEOObs());  // 1 of 11
    // R00 and E00 belong to no system.
    Synthetic none({{100, 100, 200, 200}}, {});
    EXPECT_FALSE(none.d.HasGLONASSObs());
    EXPECT_FALSE(none.d.HasGALILEOObs());
}

}  // namespace
