// Simulated observations read back through the program's readers and
// checked against the program's own observation model (its SP3 light-time
// solution, clocks, relativity and troposphere) and against the frequency
// laws of the ionosphere; the requested slip and clock step at their
// epochs; the noise sizes.

#include <array>

#include "SimSupport.h"
#include "delays/gTropDelay.h"
#include "delays/gTropModel.h"
#include "geodesy/CoordinateTransforms.h"
#include "geodesy/elipsoid.h"

using namespace simtest;

namespace {

// What the program computes for an ion-free phase at convergence: its own
// SP3 light-time solution, RINEX clock minus the periodic relativity term,
// the path delay with its constant, Saastamoinen and Niell at the antenna
// reference point. The files round: SP3 coordinates to 1 mm (at most 0.87
// mm along the line of sight), SP3 and clock-file clocks to 1 ps (0.3 mm),
// phase to 1e-3 cycles (0.43 mm in the ion-free phase). 2 mm bounds the sum;
// the RMS stays under 1 mm. A missing term (Sagnac 30 m, relativity metres,
// path delay 2 cm) is far beyond.
constexpr long double ModelMaxTol_m = 2e-3L;
constexpr long double ModelRmsTol_m = 1e-3L;

TEST(SimObservations, IonFreePhaseMatchesProgramModelToMillimetre)
{
    const DataSet& set = NoiseFree();
    const Loaded& l = *set.rinex;
    GNSSpEph eph;
    GNSSpClk clk;
    Load(eph, set.Path(set.names.sp3));
    Load(clk, set.Path(set.names.clk));
    // At the simulated antenna reference point: its eccentricity from the
    // marker is held against the truth by the end-to-end runs.
    const elipsoid wgs(1);
    xyz arp(set.d.arp.x, set.d.arp.y, set.d.arp.z);
    const flh arpG = xyz2flh(arp, wgs);
    gTropModel trop;
    trop.SetTropModel(0);
    trop.SetMappFunction(0);
    trop.SetAtmParams(arpG);
    long n = 0;
    long double sum2 = 0.0L;
    ForEachRecord(set, [&](long i, const SimEpoch& ep, const SimRecord& r, long k) {
        mjd t(set.d.mjday, 0.0L);
        t += ep.t - ep.rxClock;
        if (i == 0) clk.SetEpochIndex(t);
        else clk.SetEpochIndex(t, clk.GetEpochIx());
        xyzt ps, vs;
        const long double dist = eph.CalcSatPosition(static_cast<unsigned short>(r.sat), t, arp, ps, vs);
        ASSERT_TRUE(eph.PSisOK);
        long double dtp = 0.0L;
        short prn = r.sat;
        clk.GetSatelliteClock(prn, t, dtp);
        ASSERT_TRUE(clk.DTisOK);
        const long double rs = std::hypot(ps.x, ps.y, ps.z), rArp = std::hypot(arp.x, arp.y, arp.z);
        const long double rel2 = 0.00887005607823534297784L * std::log((rs + rArp + dist) / (rs + rArp - dist));
        long double E = 0.0L, A = 0.0L;
        SatelliteAzimuthElevation(arp, ps, wgs, &E, &A);
        gTropDelay td;
        trop.GetZenithDelay(td, arpG, t);
        trop.GetMappFunction(td, arpG, t, E);
        const long double model = dist + rel2 - (dtp - eph.Relativity) * C + ep.rxClock * C
                                  + td.tdry * td.mfdry + ep.zwd * td.mfwet;
        long double f1 = 0.0L, f2 = 0.0L;
        Frequencies(set, r.sat, f1, f2);
        const long double a1 = f1 * f1 / (f1 * f1 - f2 * f2), a2 = f2 * f2 / (f1 * f1 - f2 * f2);
        // The phase runs through the clock step; the model's clock has it.
        const long double l3 = a1 * C / f1 * (l.d.L1(k).obs - r.N1 - r.windUp) - a2 * C / f2 * (l.L2(k, r.sat) - r.N2 - r.windUp) + C * ep.msSteps;
        EXPECT_LT(std::fabs(l3 - model), ModelMaxTol_m) << "sat " << r.sat << " epoch " << i;
        sum2 += (l3 - model) * (l3 - model);
        ++n;
    });
    ASSERT_GT(n, 1000);
    EXPECT_LT(std::sqrt(sum2 / n), ModelRmsTol_m);
}

// First-order ionosphere: code delayed and phase advanced by the same
// amount, scaling as 1/f^2. Code-minus-phase on one carrier is twice the
// delay; the two carriers' delays stand in the ratio f1^2/f2^2. Rounding of
// code (0.5 mm) and phase (0.1 mm) gives at most 0.3 mm per delay; the
// test asks 2 mm, far below the 10 cm to metres of a wrong law or sign.
constexpr long double IonoTol_m = 2e-3L;

TEST(SimObservations, IonosphereFollowsInverseSquareOfFrequency)
{
    const DataSet& set = NoiseFree();
    const Loaded& l = *set.rinex;
    ForEachRecord(set, [&](long, const SimEpoch& ep, const SimRecord& r, long k) {
        long double f1 = 0.0L, f2 = 0.0L;
        Frequencies(set, r.sat, f1, f2);
        const long double i1 = (l.d.C1(k).obs - C / f1 * (l.d.L1(k).obs - r.N1 - r.windUp) - C * ep.msSteps) / 2.0L;
        const long double i2 = (l.P2(k, r.sat) - C / f2 * (l.L2(k, r.sat) - r.N2 - r.windUp) - C * ep.msSteps) / 2.0L;
        EXPECT_GT(i1, 0.1L);  // 7.5 TECU at night: over 1 m
        EXPECT_NEAR_LD(i2, i1 * f1 * f1 / (f2 * f2), IonoTol_m) << "sat " << r.sat;
        EXPECT_NEAR_LD(i1, r.ion1, IonoTol_m);
    });
}

TEST(SimObservations, SlipAtItsEpochOnlyAndClockStepMovesCodesNotPhases)
{
    const DataSet& set = NoiseFree();
    const Loaded& l = *set.rinex;
    const long double lam1 = C / GPSc::freq1, lam2 = C / GPSc::freq2;
    // Per satellite: epoch, geometry-free phase and code-minus-phase of its last record.
    std::map<short, std::array<long double, 3>> prev;
    long slips = 0, stepped = 0;
    ForEachRecord(set, [&](long i, const SimEpoch&, const SimRecord& r, long k) {
        long double f1 = 0.0L, f2 = 0.0L;
        Frequencies(set, r.sat, f1, f2);
        const long double gf = C / f1 * l.d.L1(k).obs - C / f2 * l.L2(k, r.sat), cmp = l.d.C1(k).obs - C / f1 * l.d.L1(k).obs;
        const bool slip = r.sat == SlipSat && i == SlipEpoch;
        if (r.sat == SlipSat) { EXPECT_EQ(l.d.L1(k).lli, slip ? 1u : 0u) << "epoch " << i; }
        if (prev.count(r.sat) && prev[r.sat][0] == i - 1) {
            // The ionosphere moves the geometry-free phase of the slipping
            // satellite by millimetres in 30 s; the slip is over a metre.
            if (r.sat == SlipSat) { EXPECT_NEAR_LD(gf - prev[r.sat][1], slip ? lam1 * SlipN1 - lam2 * SlipN2 : 0.0L, 0.01L) << i; }
            // Code minus phase moves by twice the ionosphere change, a few cm
            // for a rising satellite; the step is 300 km.
            const long double jump = cmp - prev[r.sat][2] + (slip ? lam1 * SlipN1 : 0.0L);
            EXPECT_NEAR_LD(jump, i == JumpEpoch ? C * 1e-3L : 0.0L, 0.1L) << "sat " << r.sat << " epoch " << i;
            slips += slip;
            stepped += i == JumpEpoch;
        }
        prev[r.sat] = {static_cast<long double>(i), gf, cmp};
    });
    EXPECT_EQ(slips, 1);
    EXPECT_GT(stepped, 10);
}

// Noise sizes: P1 - C1 carries two independent code errors (sqrt(2) 0.3
// m), the second time difference of the geometry-free phase six phase
// errors (sqrt(6) sqrt(2) 2 mm) while the ionosphere's curvature over a
// minute is below 0.1 mm. With thousands of samples the sample deviation
// is within 2 % of the true one; 6 % allows three sigma.
constexpr long double NoiseRelTol = 0.06L;

TEST(SimObservations, WhiteNoiseHasRequestedSize)
{
    // Two hours with the default noise.
    SimOptions o;
    o.hours = 2.0L, o.seed = 7;
    const DataSet set = Make(o, "noisy");
    const Loaded& l = *set.rinex;
    long double sc = 0.0L, sp = 0.0L, nc = 0.0L, np = 0.0L;
    std::map<short, std::vector<std::pair<long, long double>>> gf;
    ForEachRecord(set, [&](long i, const SimEpoch&, const SimRecord& r, long k) {
        if (r.sat >= 100) return;
        sc += std::pow(l.d.P1(k).obs - l.d.C1(k).obs, 2);
        ++nc;
        gf[r.sat].push_back({i, C / GPSc::freq1 * l.d.L1(k).obs - C / GPSc::freq2 * l.d.L2(k).obs});
    });
    for (const auto& s : gf)
        for (std::size_t j = 2; j < s.second.size(); ++j)
            if (s.second[j].first == s.second[j - 2].first + 2) {
                sp += std::pow(s.second[j].second - 2.0L * s.second[j - 1].second + s.second[j - 2].second, 2);
                ++np;
            }
    ASSERT_GT(nc, 1000);
    ASSERT_GT(np, 1000);
    const long double expectC = std::sqrt(2.0L) * set.d.opt.sigCode, expectP = std::sqrt(12.0L) * set.d.opt.sigPhase;
    EXPECT_NEAR_LD(std::sqrt(sc / nc), expectC, NoiseRelTol * expectC);
    EXPECT_NEAR_LD(std::sqrt(sp / np), expectP, NoiseRelTol * expectP);
}

}  // namespace
