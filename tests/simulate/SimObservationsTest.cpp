// Simulated observations read back through the program's readers and
// checked against the program's own observation model, against light-time
// geometry, and against the frequency laws of the ionosphere; the requested
// slip and clock step at their epochs; the noise sizes.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <memory>

#include "SimSupport.h"
#include "delays/gTropDelay.h"
#include "delays/gTropModel.h"
#include "geodesy/CoordinateTransforms.h"
#include "geodesy/elipsoid.h"
#include "geodesy/flh.h"
#include "geodesy/mjd.h"
#include "geodesy/neu.h"
#include "geodesy/xyz.h"
#include "observations/GALILEOc.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "observations/RINEX.h"
#include "orbits/GNSSpClk.h"
#include "orbits/GNSSpEph.h"
#include "numerics/NearLD.h"

namespace {

constexpr long double C = 299792458.0L;

struct Loaded {
    RINEXHeader h;
    RINEXData d;
    RINEX r;
    explicit Loaded(const std::string& path) : d(h), r(h, d)
    {
        r.SetFile(path);
        r.ReadFile();
    }
};

const Loaded& Rinex(const simtest::DataSet& set)
{
    static std::map<const simtest::DataSet*, std::unique_ptr<Loaded>> cache;
    std::unique_ptr<Loaded>& l = cache[&set];
    if (!l) l.reset(new Loaded(set.Path(set.names.obs)));
    return *l;
}

// GLONASS channels as the channel file gives them: slot at index 1,
// channel at index 51 of each data line.
std::map<int, int> Channels(const simtest::DataSet& set)
{
    std::map<int, int> ch;
    std::ifstream in(set.Path(set.names.glnfc));
    std::string line;
    while (std::getline(in, line))
        if (!line.empty() && line[0] == 'R' && line.size() > 51)
            ch[std::atoi(line.substr(1, 2).c_str())] = std::atoi(line.substr(51).c_str());
    return ch;
}

// Carrier frequencies from the program's constants, independent of the
// simulator's own table.
void Frequencies(short sat, const std::map<int, int>& ch, long double& f1, long double& f2)
{
    if (sat < 100) {
        f1 = GPSc::freq1;
        f2 = GPSc::freq2;
    } else if (sat < 200) {
        const short row = static_cast<short>(sat - 101);
        GLONASSc::SetFrequency(static_cast<long double>(ch.at(sat - 100)), row);
        f1 = GLONASSc::freq(row, 0);
        f2 = GLONASSc::freq(row, 1);
    } else {
        f1 = GALILEOc::freq1;
        f2 = GALILEOc::freq2;
    }
}

long double Second(const RINEXData& d, long k, short sat) { return sat >= 200 ? d.L7(k).obs : d.L2(k).obs; }
long double SecondCode(const RINEXData& d, long k, short sat) { return sat >= 200 ? d.C7(k).obs : d.P2(k).obs; }

TEST(SimObservations, FilesReadBackRecordForRecord)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    const Loaded& l = Rinex(set);
    ASSERT_EQ(l.d.nepochall, static_cast<long>(set.d.epochs.size()));
    long k = 0;
    for (std::size_t i = 0; i < set.d.epochs.size(); ++i) {
        const SimEpoch& ep = set.d.epochs[i];
        ASSERT_EQ(l.d.nsat(static_cast<long>(i)), static_cast<short>(ep.recs.size()));
        // 1e-6 s: the file prints epochs with 7 decimals of whole-second tags.
        EXPECT_NEAR_LD(l.d.epoch(static_cast<long>(i)) - mjd(set.d.mjday, 0.0L), ep.t, 1e-6L);
        for (const SimRecord& r : ep.recs) {
            ASSERT_EQ(l.d.sat(k), r.sat);
            // The files hold 3 decimals: rounding is at most 0.5e-3.
            EXPECT_NEAR_LD(l.d.C1(k).obs, r.C1, 0.5001e-3L);
            EXPECT_NEAR_LD(l.d.L1(k).obs, r.L1, 0.5001e-3L);
            EXPECT_NEAR_LD(Second(l.d, k, r.sat), r.sat >= 200 ? r.L7 : r.L2, 0.5001e-3L);
            EXPECT_NEAR_LD(SecondCode(l.d, k, r.sat), r.sat >= 200 ? r.C7 : r.P2, 0.5001e-3L);
            if (r.sat >= 200) {
                EXPECT_TRUE(l.d.P1(k).IsNull());
            }
            ++k;
        }
    }
    EXPECT_EQ(k, l.d.nsatall);
}

TEST(SimObservations, HeaderCarriesApproximatePositionAndAntenna)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    const Loaded& l = Rinex(set);
    const xyz x0 = l.h.GetX0();
    const long double off = std::sqrt(std::pow(x0.x - set.d.opt.x, 2) + std::pow(x0.y - set.d.opt.y, 2)
                                      + std::pow(x0.z - set.d.opt.z, 2));
    // Header position 3 m off the truth, printed to 0.1 mm.
    EXPECT_NEAR_LD(off, set.d.opt.aprioriOffset, 1e-3L);
    // 1e-9 m: 4-decimal eccentricities printed with 4 decimals read back exactly
    // up to round-off.
    EXPECT_NEAR_LD(l.h.GetECC().u, set.d.opt.eccH, 1e-9L);
    EXPECT_NEAR_LD(l.h.GetECC().n, set.d.opt.eccN, 1e-9L);
    EXPECT_FALSE(l.h.rectype.empty());
    EXPECT_FALSE(l.h.anttype.empty());
    EXPECT_TRUE(l.h.HasC1() && l.h.HasP1() && l.h.HasP2() && l.h.HasL1() && l.h.HasL2()
                && l.h.HasC7() && l.h.HasL7());
    // Float field: below one float step at 30, so only 30 itself passes.
    EXPECT_NEAR_LD(l.h.GetInterval(), 30.0f, 1e-6f);
}

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
    const simtest::DataSet& set = simtest::NoiseFree();
    const Loaded& l = Rinex(set);
    GNSSpEph eph;
    const std::string sp3 = set.Path(set.names.sp3), clkPath = set.Path(set.names.clk);
    eph.SetFile(sp3.c_str());
    eph.ReadFile();
    GNSSpClk clk;
    clk.SetFile(clkPath.c_str());
    clk.ReadFile();
    const std::map<int, int> ch = Channels(set);

    const elipsoid wgs(1);
    const xyz marker(set.d.opt.x, set.d.opt.y, set.d.opt.z);
    const xyz dArp = lg2g(neu(set.d.opt.eccN, set.d.opt.eccE, set.d.opt.eccH), marker, wgs);
    xyz arp(marker.x + dArp.x, marker.y + dArp.y, marker.z + dArp.z);
    const flh arpG = xyz2flh(arp, wgs);
    gTropModel trop;
    trop.SetTropModel(0);
    trop.SetMappFunction(0);
    trop.SetAtmParams(arpG);
    const long double rArp = std::sqrt(arp.x * arp.x + arp.y * arp.y + arp.z * arp.z);

    long k = 0, n = 0;
    long double sum2 = 0.0L;
    for (std::size_t i = 0; i < set.d.epochs.size(); ++i) {
        const SimEpoch& ep = set.d.epochs[i];
        mjd t(set.d.mjday, 0.0L);
        t += ep.t - ep.rxClock;
        if (i == 0) clk.SetEpochIndex(t);
        else clk.SetEpochIndex(t, clk.GetEpochIx());
        for (const SimRecord& r : ep.recs) {
            const long kk = k++;
            xyzt ps, vs;
            mjd te = t;
            const long double dist = eph.CalcSatPosition(static_cast<unsigned short>(r.sat), te, arp, ps, vs);
            ASSERT_TRUE(eph.PSisOK);
            long double dtp = 0.0L;
            short prn = r.sat;
            clk.GetSatelliteClock(prn, te, dtp);
            ASSERT_TRUE(clk.DTisOK);
            const long double satDt = dtp - eph.Relativity;
            const long double rs = std::sqrt(ps.x * ps.x + ps.y * ps.y + ps.z * ps.z);
            const long double rel2 = 0.00887005607823534297784L
                                     * std::log((rs + rArp + dist) / (rs + rArp - dist));
            long double E = 0.0L, A = 0.0L;
            SatelliteAzimuthElevation(arp, ps, wgs, &E, &A);
            gTropDelay td;
            trop.GetZenithDelay(td, arpG, te);
            trop.GetMappFunction(td, arpG, te, E);
            const long double tropo = td.tdry * td.mfdry + ep.zwd * td.mfwet;
            const long double model = dist + rel2 - satDt * C + ep.rxClock * C + tropo;

            long double f1 = 0.0L, f2 = 0.0L;
            Frequencies(r.sat, ch, f1, f2);
            const long double a1 = f1 * f1 / (f1 * f1 - f2 * f2), a2 = f2 * f2 / (f1 * f1 - f2 * f2);
            const long double ph1 = C / f1 * (l.d.L1(kk).obs - r.N1);
            const long double ph2 = C / f2 * (Second(l.d, kk, r.sat) - r.N2);
            // The phase runs through the clock step; the model's clock has it.
            const long double l3 = a1 * ph1 - a2 * ph2 + C * ep.msSteps;
            const long double diff = l3 - model;
            EXPECT_LT(std::fabs(diff), ModelMaxTol_m) << "sat " << r.sat << " epoch " << i;
            sum2 += diff * diff;
            ++n;
        }
    }
    ASSERT_GT(n, 1000);
    EXPECT_LT(std::sqrt(sum2 / n), ModelRmsTol_m);

}

// Light time: the satellite at the emission time, from the program's SP3
// interpolation, and the station turned by the Earth's rotation during the
// flight, are c times the flight time apart. SP3 rounding (0.87 mm) and the
// 14-node interpolation (well under 0.1 mm for these orbits) bound it.
constexpr long double LightTimeTol_m = 1.5e-3L;

TEST(SimObservations, RangesAreLightTimeConsistent)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    GNSSpEph eph;
    const std::string sp3 = set.Path(set.names.sp3);
    eph.SetFile(sp3.c_str());
    eph.ReadFile();
    const SimVec arp = set.d.arp;
    for (std::size_t i = 0; i < set.d.epochs.size(); i += 17) {
        const SimEpoch& ep = set.d.epochs[i];
        const long double tRecv = ep.t - ep.rxClock;
        for (const SimRecord& r : ep.recs) {
            mjd te(set.d.mjday, 0.0L);
            te += r.tEmit;
            xyzt ps, vs;
            eph.CalcSatPosition(static_cast<unsigned short>(r.sat), te, ps, vs);
            ASSERT_TRUE(eph.PSisOK);
            const long double tau = tRecv - r.tEmit;
            EXPECT_GT(tau, 0.06L);
            EXPECT_LT(tau, 0.1L);
            const long double a = simorbitns::OmegaE * tau;
            const long double x = arp.x * std::cos(a) - arp.y * std::sin(a);
            const long double y = arp.y * std::cos(a) + arp.x * std::sin(a);
            const long double d = std::sqrt((x - ps.x) * (x - ps.x) + (y - ps.y) * (y - ps.y)
                                            + (arp.z - ps.z) * (arp.z - ps.z));
            EXPECT_NEAR_LD(d, C * tau, LightTimeTol_m) << "sat " << r.sat;
            // 1e-6 m: the stored range is c times the same travel time; round-off at
            // 2e7 m is 1e-11 m.
            EXPECT_NEAR_LD(r.range, C * tau, 1e-6L);
        }
    }
}

// First-order ionosphere: code delayed and phase advanced by the same
// amount, scaling as 1/f^2. Code-minus-phase on one carrier is twice the
// delay; the two carriers' delays stand in the ratio f1^2/f2^2. Rounding of
// code (0.5 mm) and phase (0.1 mm) gives at most 0.3 mm per delay; the
// test asks 2 mm, far below the 10 cm to metres of a wrong law or sign.
constexpr long double IonoTol_m = 2e-3L;

TEST(SimObservations, IonosphereFollowsInverseSquareOfFrequency)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    const Loaded& l = Rinex(set);
    const std::map<int, int> ch = Channels(set);
    long k = 0, checked = 0;
    for (std::size_t i = 0; i < set.d.epochs.size(); ++i) {
        const SimEpoch& ep = set.d.epochs[i];
        for (const SimRecord& r : ep.recs) {
            const long kk = k++;
            long double f1 = 0.0L, f2 = 0.0L;
            Frequencies(r.sat, ch, f1, f2);
            const long double ph1 = C / f1 * (l.d.L1(kk).obs - r.N1) + C * ep.msSteps;
            const long double ph2 = C / f2 * (Second(l.d, kk, r.sat) - r.N2) + C * ep.msSteps;
            const long double i1 = (l.d.C1(kk).obs - ph1) / 2.0L;
            const long double i2 = (SecondCode(l.d, kk, r.sat) - ph2) / 2.0L;
            EXPECT_GT(i1, 0.1L);  // 7.5 TECU at night: over 1 m
            EXPECT_NEAR_LD(i2, i1 * f1 * f1 / (f2 * f2), IonoTol_m) << "sat " << r.sat;
            EXPECT_NEAR_LD(i1, r.ion1, IonoTol_m);
            ++checked;
        }
    }
    EXPECT_GT(checked, 1000);
}

TEST(SimObservations, SlipAppearsAtRequestedEpochOnly)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    const Loaded& l = Rinex(set);
    const long double lam1 = C / GPSc::freq1, lam2 = C / GPSc::freq2;
    const long double expected = lam1 * simtest::SlipN1 - lam2 * simtest::SlipN2;
    long k = 0;
    long double prevGF = 0.0L;
    bool havePrev = false, seen = false;
    for (std::size_t i = 0; i < set.d.epochs.size(); ++i) {
        bool inView = false;
        for (const SimRecord& r : set.d.epochs[i].recs) {
            const long kk = k++;
            if (r.sat != simtest::SlipSat) continue;
            inView = true;
            const long double gf = lam1 * l.d.L1(kk).obs - lam2 * l.d.L2(kk).obs;
            const bool slipEpoch = static_cast<long>(i) == simtest::SlipEpoch;
            // The ionosphere moves the geometry-free phase by millimetres in
            // 30 s; the slip is over a metre.
            if (havePrev) {
                EXPECT_NEAR_LD(gf - prevGF, slipEpoch ? expected : 0.0L, 0.01L) << "epoch " << i;
            }
            EXPECT_EQ(l.d.L1(kk).lli, slipEpoch ? 1u : 0u);
            seen = seen || slipEpoch;
            prevGF = gf;
            havePrev = true;
        }
        if (!inView) havePrev = false;
    }
    EXPECT_TRUE(seen);
}

TEST(SimObservations, ClockStepMovesCodesNotPhases)
{
    const simtest::DataSet& set = simtest::NoiseFree();
    const Loaded& l = Rinex(set);
    std::map<short, long double> prev;  // last code-minus-phase per satellite
    std::map<short, long> prevEpoch;
    const std::map<int, int> ch = Channels(set);
    long k = 0, stepped = 0;
    for (std::size_t i = 0; i < set.d.epochs.size(); ++i)
        for (const SimRecord& r : set.d.epochs[i].recs) {
            const long kk = k++;
            long double f1 = 0.0L, f2 = 0.0L;
            Frequencies(r.sat, ch, f1, f2);
            const long double cmp = l.d.C1(kk).obs - C / f1 * l.d.L1(kk).obs;
            if (prev.count(r.sat) && prevEpoch[r.sat] == static_cast<long>(i) - 1) {
                long double jump = cmp - prev[r.sat];
                if (r.sat == simtest::SlipSat && static_cast<long>(i) == simtest::SlipEpoch)
                    jump += C / f1 * simtest::SlipN1;
                const bool step = static_cast<long>(i) == simtest::JumpEpoch;
                // Twice the ionosphere change in 30 s: up to a few cm for a
                // rising satellite; the step is 300 km.
                EXPECT_NEAR_LD(jump, step ? C * 1e-3L : 0.0L, 0.1L) << "sat " << r.sat << " epoch " << i;
                if (step) ++stepped;
            }
            prev[r.sat] = cmp;
            prevEpoch[r.sat] = static_cast<long>(i);
        }
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
    const simtest::DataSet& set = simtest::Noisy();
    const Loaded& l = Rinex(set);
    long double sc = 0.0L, sp = 0.0L;
    long nc = 0, np = 0;
    std::map<short, std::vector<std::pair<long, long double>>> gf;
    long k = 0;
    for (std::size_t i = 0; i < set.d.epochs.size(); ++i)
        for (const SimRecord& r : set.d.epochs[i].recs) {
            const long kk = k++;
            if (r.sat >= 100) continue;
            const long double d = l.d.P1(kk).obs - l.d.C1(kk).obs;
            sc += d * d;
            ++nc;
            gf[r.sat].push_back({static_cast<long>(i), C / GPSc::freq1 * l.d.L1(kk).obs
                                                          - C / GPSc::freq2 * l.d.L2(kk).obs});
        }
    for (const auto& s : gf)
        for (std::size_t j = 2; j < s.second.size(); ++j)
            if (s.second[j].first == s.second[j - 2].first + 2) {
                const long double d2 = s.second[j].second - 2.0L * s.second[j - 1].second + s.second[j - 2].second;
                sp += d2 * d2;
                ++np;
            }
    ASSERT_GT(nc, 1000);
    ASSERT_GT(np, 1000);
    EXPECT_NEAR_LD(std::sqrt(sc / nc), std::sqrt(2.0L) * set.d.opt.sigCode,
                NoiseRelTol * std::sqrt(2.0L) * set.d.opt.sigCode);
    const long double expectP = std::sqrt(12.0L) * set.d.opt.sigPhase;
    EXPECT_NEAR_LD(std::sqrt(sp / np), expectP, NoiseRelTol * expectP);
}

TEST(SimObservationsDeath, SlipOfSatelliteOutOfViewStops)
{
    SimOptions o;
    o.hours = 0.5L;
    o.useGLN = o.useGAL = false;
    SimSlip sl;
    sl.sat = 24;
    sl.epoch = 10;
    sl.n1_cyc = 1;
    o.slips.push_back(sl);
    // Find a GPS satellite that is below the horizon at epoch 10.
    const SimData probe = Simulate([] { SimOptions p; p.hours = 0.5L; p.useGLN = p.useGAL = false; return p; }());
    for (short s = 1; s <= 24; ++s) {
        bool seen = false;
        for (const SimRecord& r : probe.epochs[10].recs) seen = seen || r.sat == s;
        if (!seen) { o.slips[0].sat = s; break; }
    }
    EXPECT_EXIT(Simulate(o), ::testing::ExitedWithCode(1),
                "\\*\\*\\*\\* Orvo: Error -> orvo-simulate option -slip: satellite [0-9]+ is not observed at epoch 10");
}

}  // namespace
