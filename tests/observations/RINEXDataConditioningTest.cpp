// Conditioning of the record store: millisecond clock steps, time-tag
// repairs, linear combinations and presence tests.
#include "ObsSupport.h"

using namespace obstest;

// Phases of a real file are about 1e8 cycles; long double keeps 19 digits,
// so a shift added and compared there is exact to about 1e-11 cycles.
constexpr long double PhaseTol_cyc = 1e-6L;
// Code minus phase between two 30 s epochs moves by twice the ionosphere
// change (cm) plus code noise and multipath (below 2 m for these
// receivers); a missed millisecond step leaves 299792 m.
constexpr long double CodePhaseStepTol_m = 5.0L;

static bool IsGps(short s) { return s >= 1 && s <= 99; }
static bool IsGlonass(short s) { return s >= 101 && s <= 199; }

// A receiver clock step of ms milliseconds at epoch k: every code of the
// records from epoch k on moves by ms·c·1e-3, the phases stay.
static void InjectClockStep(RINEXData& d, long k, long double ms)
{
    for (matrix<gnssobs>* m : {&d.C1, &d.P1, &d.C2, &d.P2, &d.C3R, &d.C5, &d.C6, &d.C7, &d.C8})
        for (long r = EpochStarts(d)[k]; m->Length() == d.nsatall && r < d.nsatall; ++r)
            if (!(*m)(r).IsNull()) (*m)(r) += ms * MSm;
}

// Carrier wavelength (m) of band b of satellite s as the tables hold it,
// 0 where the phase is not turned into metres.
static long double Lambda(short s, int b)
{
    if (IsGps(s)) return b == 0 ? GPSc::lamb1 : GPSc::lamb2;
    return IsGlonass(s) ? GLONASSc::lamb(s - 101, b) : 0.0L;
}

TEST(MSJumps, StepsAreFoundAndPhasesFollowTheCodeOnEveryCarrier)
{
    // Clock steps (epoch, ms) put into the first 40 epochs of a real file;
    // without steps nothing may move. Without GLONASS channels those
    // satellites take no part and stay. The dual-frequency form leaves the
    // GLONASS records of a step's own epoch as read; the single-frequency
    // form shifts them too and sees steps back as well as forward. A
    // 10-cycle slip on L1 of every satellite at the step moves L4 by 1.9 m,
    // beyond the 1 m that a pair may show: no pair is left, no step found.
    using Steps = std::vector<std::pair<long, long double>>;
    const std::tuple<std::string, Steps, bool, bool, bool, long> cases[] = {
        {kEsbc, {}, true, false, false, 0}, {kZimm, {}, true, false, false, 0}, {kEsbc, {}, true, true, false, 0},
        {kZimm, {}, true, true, false, 0}, {kEsbc, {{20, 1.0L}}, true, false, false, 1},
        {kEsbc, {{10, 1.0L}, {25, 1.0L}, {33, -3.0L}}, true, false, false, 3}, {kEsbc, {{20, 1.0L}}, false, false, false, 1},
        {kEsbc, {{12, 1.0L}, {30, -1.0L}}, true, true, false, 2}, {kEsbc, {{20, 1.0L}}, true, false, true, 0}};
    for (const auto& [rel, steps, channels, singleFreq, slip, nWant] : cases) {
        GlobalsGuard guard;
        if (channels) SetGlonassChannels();
        Loaded f(CutFile(rel, 40));
        const std::vector<long> start = EpochStarts(f.d);
        for (auto [k, ms] : steps) InjectClockStep(f.d, k, ms);
        for (long r = start[20]; slip && r < f.d.nsatall; ++r)
            if (!f.d.L1(r).IsNull()) f.d.L1(r) += 10.0L;
        const matrix<gnssobs> l1 = f.d.L1, l2 = f.d.L2;
        long n = -1;
        singleFreq ? f.d.CorrMSJumpsSF(n) : f.d.CorrMSJumps(n);
        EXPECT_EQ(n, nWant) << rel << " case with " << steps.size() << " steps";
        long shifted = 0, continuous = 0;
        for (long i = 0; i < f.d.nepochall; ++i) {
            long double ms = 0.0L;
            bool stepHere = false;
            for (auto [k, step] : steps) {
                ms += i >= k && !slip ? step : 0.0L;
                stepHere = stepHere || i == k;
            }
            for (long r = start[i]; r < start[i + 1]; ++r) {
                const short s = f.d.sat(r);
                const long double want = IsGlonass(s) && stepHere && !singleFreq ? 0.0L : ms;
                for (int b = 0; b < 2; ++b) {
                    if ((b == 0 ? l1 : l2)(r).IsNull()) continue;
                    const long double was = (b == 0 ? l1 : l2)(r).obs, now = (b == 0 ? f.d.L1 : f.d.L2)(r).obs;
                    const long double shift = Lambda(s, b) > 0.0L ? want * MSm / Lambda(s, b) : 0.0L;
                    ASSERT_NEAR_LD(now - was, shift, PhaseTol_cyc) << "epoch " << i << " sat " << s << " band " << b;
                    shifted += shift != 0.0L;
                }
                // Once repaired, GPS code minus phase is continuous across
                // the step.
                for (long a = stepHere && IsGps(s) && !slip ? start[i - 1] : start[i]; a < start[i]; ++a)
                    if (f.d.sat(a) == s && !f.d.C1(a).IsNull() && !f.d.C1(r).IsNull() && !f.d.L1(a).IsNull()
                        && !f.d.L1(r).IsNull()) {
                        const long double cmc = (f.d.C1(r).obs - GPSc::lamb1 * f.d.L1(r).obs)
                                                - (f.d.C1(a).obs - GPSc::lamb1 * f.d.L1(a).obs);
                        EXPECT_NEAR_LD(cmc, 0.0L, CodePhaseStepTol_m) << "G" << s << " epoch " << i;
                        continuous++;
                    }
            }
        }
        EXPECT_GE(shifted, steps.empty() || slip ? 0 : 200);
        EXPECT_GE(continuous, steps.empty() || slip ? 0 : 5 * static_cast<long>(steps.size()));
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
    const std::vector<matrix<gnssobs>*> codes = {&f.d.C1, &f.d.P2, &f.d.C5};
    const std::vector<matrix<gnssobs>> before = {f.d.C1, f.d.P2, f.d.C5, f.d.L1};
    const std::vector<long> start = EpochStarts(f.d);
    // A receiver clock that reads dt ahead (up to 0.8 ms either way) tags
    // the epoch dt late and lengthens every pseudorange by c·dt. Epoch 0 at
    // midnight moves into the day before.
    for (long i = 0; i < f.d.nepochall; ++i) {
        const long double dt = 0.4e-3L * static_cast<long double>(i % 5 - 2);
        f.d.epoch(i) += dt;
        for (long r = start[i]; r < start[i + 1]; ++r)
            for (matrix<gnssobs>* m : codes)
                if (!(*m)(r).IsNull()) (*m)(r) += dt * C;
    }
    ASSERT_EQ(f.d.epoch(0).GetMJDay() + 1, e0(0).GetMJDay());
    f.d.Corr4ClockError();
    for (long i = 0; i < f.d.nepochall; ++i) {
        ASSERT_NEAR_LD(f.d.epoch(i) - e0(i), 0.0L, EpochTol_s) << "epoch " << i;
        // Codes back where they were (a missing one stays 0); phases untouched.
        for (long r = start[i]; r < start[i + 1]; ++r) {
            for (int k = 0; k < 3; ++k) ASSERT_NEAR_LD((*codes[k])(r).obs, before[k](r).obs, CodeTol_m) << r;
            ASSERT_EQ(f.d.L1(r).obs, before[3](r).obs);
        }
    }
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
};

TEST(Combinations, EachCombinationOfTheStoreKeepsWhatItsDefinitionKeeps)
{
    GlobalsGuard guard;
    GLONASSc::SetFrequency(-4.0L, 1);
    // G05, R02 (channel -4), E11 (E5b in the L7/C7 columns), R03 (no
    // channel), then G05 without L2.
    Store s({{5, 102, 211, 103}, {5}},
            {RINEXObs::C1, RINEXObs::P1, RINEXObs::L1, RINEXObs::P2, RINEXObs::L2, RINEXObs::C7, RINEXObs::L7});
    const Signal gps{1575.42e6L, 1227.60e6L, 2.31e7L, 4.2L, 7.0L, 3.0L, 0.3L},
        gln{1602.0e6L - 4 * 0.5625e6L, 1246.0e6L - 4 * 0.4375e6L, 1.98e7L, 6.1L, -12.0L, 5.0L, 0.3L},
        gal{1575.42e6L, 1207.14e6L, 2.77e7L, 3.3L, 25.0L, 11.0L, 0.3L},
        gln0{1602.0e6L, 1246.0e6L, 2.05e7L, 5.0L, 1.0L, 2.0L, 0.3L};
    const Signal* sig[] = {&gps, &gln, &gal, &gln0, &gps};
    for (long r = 0; r < 5; ++r) {
        const Signal& g = *sig[r];
        s.d.C1(r) = g.rho + g.I1;
        s.d.P1(r) = g.rho + g.I1 + g.bias;
        s.d.L1(r) = (g.rho - g.I1) / g.Lam1() + g.N1;
        (r == 2 ? s.d.C7 : s.d.P2)(r) = g.rho + g.I2();
        (r == 2 ? s.d.L7 : s.d.L2)(r) = (g.rho - g.I2()) / g.Lam2() + g.N2;
    }
    s.d.L2(4) = 0.0L;
    s.d.L1(0) = gnssobs(s.d.L1(0).obs, 1, 9);
    for (void (RINEXData::*set)() : {&RINEXData::SetLC_L3, &RINEXData::SetLC_PC3, &RINEXData::SetLC_PP3, &RINEXData::SetLC_L4,
                                     &RINEXData::SetLC_PC4, &RINEXData::SetLC_PP4, &RINEXData::SetLC_CL1, &RINEXData::SetLC_CLI,
                                     &RINEXData::SetLC_PC1})
        (s.d.*set)();
    s.d.SetLC_MW(true);
    ASSERT_TRUE(s.h.iL3 && s.h.iPC3 && s.h.iPP3 && s.h.iL4 && s.h.iPC4 && s.h.iPP4 && s.h.iMW && s.h.iCL1 && s.h.iCLI
                && s.h.iPC1);
    for (long r = 0; r < 3; ++r) {
        const Signal& g = *sig[r];
        const long double f1 = g.f1, f2 = g.f2, dI = g.I2() - g.I1;
        // Ionosphere-free: the range and an ambiguity, the code bias scaled;
        // geometry-free: the ionosphere and ambiguities; Melbourne-Wuebbena:
        // the wide-lane ambiguity; code minus phase doubles the ionosphere,
        // their mean is free of it.
        const std::tuple<const char*, const matrix<gnssobs>&, long double> rows[] = {
            {"L3", s.d.L3, g.rho + C * (f1 * g.N1 - f2 * g.N2) / (f1 * f1 - f2 * f2)}, {"PC3", s.d.PC3, g.rho},
            {"PP3", s.d.PP3, g.rho + f1 * f1 / (f1 * f1 - f2 * f2) * g.bias}, {"PC4", s.d.PC4, dI},
            {"L4", s.d.L4, dI + g.Lam1() * g.N1 - g.Lam2() * g.N2}, {"MW", s.d.MW, C / (f1 - f2) * (g.N1 - g.N2)},
            {"CL1", s.d.CL1, 2.0L * g.I1 - g.Lam1() * g.N1}, {"CLI", s.d.CLI, g.rho + g.Lam1() * g.N1 / 2.0L},
            {"PC1", s.d.PC1, g.bias}};
        for (const auto& [name, m, want] : rows) EXPECT_NEAR_LD(m(r).obs, want, CombTol_m) << name << " record " << r;
    }
    EXPECT_NEAR_LD(s.d.PP4(0).obs, gps.I2() - gps.I1 - gps.bias, CombTol_m);
    EXPECT_EQ(s.d.L3(0).lli + s.d.L3(0).ss, 0);
    // No channel: no phase combination, but the code one needs no
    // wavelength; a missing L2 gives 0; no Galileo pair for P1, P2.
    EXPECT_NEAR_LD(s.d.PC3(3).obs, gln0.rho, CombTol_m);
    EXPECT_NEAR_LD(s.d.PC3(4).obs, gps.rho, CombTol_m);
    for (const matrix<gnssobs>* m : {&s.d.L3, &s.d.L4, &s.d.MW}) EXPECT_TRUE((*m)(3).IsNull() && (*m)(4).IsNull());
    EXPECT_TRUE(s.d.PP4(2).IsNull() && s.d.CL1(3).IsNull());
    // With P1 the first code carries its bias through the narrow lane.
    s.d.SetLC_MW(false);
    EXPECT_NEAR_LD(s.d.MW(0).obs, C / (gps.f1 - gps.f2) * (gps.N1 - gps.N2) - gps.f1 / (gps.f1 + gps.f2) * gps.bias, CombTol_m);

    // Missing sources leave the flag unset and the matrix empty: G05 and
    // E11 with C1, L1 and L2 only, the L2 of E11 a value where no Galileo
    // signal exists.
    Store q({{5, 211}}, {RINEXObs::C1, RINEXObs::L1, RINEXObs::L2});
    const long double values[][3] = {{2.0e7L, 1.0e8L, 0.8e8L}, {0.0L, 1.1e8L, 0.9e8L}};
    for (long r = 0; r < 2; ++r) q.d.C1(r) = values[r][0], q.d.L1(r) = values[r][1], q.d.L2(r) = values[r][2];
    q.h.iMW = true;
    for (void (RINEXData::*set)() : {&RINEXData::SetLC_PC3, &RINEXData::SetLC_PP3, &RINEXData::SetLC_PC4}) (q.d.*set)();
    q.d.SetLC_MW(true);
    EXPECT_FALSE(q.h.iPC3 || q.h.iPP3 || q.h.iPC4 || q.h.iMW);
    EXPECT_EQ(q.d.PC3.Length() + q.d.PC4.Length() + q.d.MW.Length(), 0);
    q.d.SetLC_L3();
    ASSERT_TRUE(q.h.iL3);
    EXPECT_NEAR_LD(q.d.L3(0).obs, GPSc::LCion1 * GPSc::lamb1 * 1.0e8L - GPSc::LCion2 * GPSc::lamb2 * 0.8e8L, CombTol_m);
    EXPECT_EQ(q.d.L3(1).obs, 0.0L);
    // With P2 but without the Galileo pair L7, C7, the Galileo wide lane is
    // left empty and never reads those columns.
    Store p({{5, 211}}, {RINEXObs::C1, RINEXObs::L1, RINEXObs::L2, RINEXObs::P2});
    for (long r = 0; r < 2; ++r) p.d.C1(r) = p.d.P2(r) = 2.0e7L, p.d.L1(r) = 1.0e8L, p.d.L2(r) = 0.8e8L;
    p.d.SetLC_MW(true);
    EXPECT_TRUE(p.h.iMW && !p.d.MW(0).IsNull() && p.d.MW(1).IsNull());
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
                if (f.d.sat(b) != s || f.d.L3(a).IsNull() || f.d.L3(b).IsNull() || f.d.PC3(a).IsNull()
                    || f.d.PC3(b).IsNull())
                    continue;
                const long double d = (f.d.L3(b).obs - f.d.PC3(b).obs) - (f.d.L3(a).obs - f.d.PC3(a).obs);
                EXPECT_LT(std::fabs(d), MaxChange_m) << "sat " << s << " epoch " << i;
                n[s / 100]++;
            }
    for (long k : n) EXPECT_GT(k, 100);  // GPS, GLONASS, Galileo
}

TEST(PresenceTests, ASystemNeedsMoreThanTenPerCentOfTheRecords)
{
    Loaded zimm(CutFile(kZimm, 5)), esbc(CutFile(kEsbc, 5));
    EXPECT_TRUE(zimm.d.HasGPSObs() && esbc.d.HasGPSObs() && esbc.d.HasGLONASSObs() && esbc.d.HasGALILEOObs());
    EXPECT_FALSE(zimm.d.HasGLONASSObs() || zimm.d.HasGALILEOObs());
    // One record of ten is too little, two of eleven enough; R00 and E00
    // belong to no system.
    Store ten({{1, 2, 3, 4, 5, 6, 7, 8, 9, 101}}), more({{1, 2, 3, 4, 5, 6, 7, 8, 101, 201}, {101}}), none({{100, 100, 200, 200}});
    EXPECT_TRUE(ten.d.HasGPSObs() && more.d.HasGLONASSObs());
    EXPECT_FALSE(ten.d.HasGLONASSObs() || more.d.HasGALILEOObs() || none.d.HasGLONASSObs() || none.d.HasGALILEOObs());
}
