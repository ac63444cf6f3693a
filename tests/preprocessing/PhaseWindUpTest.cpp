// Phase wind-up: the model against a second coding of it (the simulator's)
// and against the one physical law it rests on, one cycle per turn; on the
// real day the correction follows the satellites smoothly and lowers the
// scatter of the ionosphere-free phase.

#include "SimObservations.h"
#include "SimWindUp.h"
#include "StagingSupport.h"
#include "estimation/ProcStatic.h"
#include "estimation/SetUnknowns.h"
#include "observations/GLC.h"
#include "observations/LinearCombinations.h"
#include "preprocessing/AmbiguityTable.h"
#include "preprocessing/GetEclipsing.h"
#include "preprocessing/PhaseWindUp.h"

using namespace stagingtest;

namespace {

// Both codings compute the same few products and one acos: they agree to
// rounding, far below 1e-12 cycle.
constexpr long double Coding_cyc = 1e-12L;
// The program's and the simulator's Sun differ by about 0.01 deg; away from
// the Sun-Earth line (over 15 deg) that turns the yaw by under 0.1 deg,
// 3e-4 cycle.
constexpr long double SunModels_cyc = 1e-3L;
constexpr long double AU_m = 1.495978707e11L;

SimVec ToSim(const xyz& v) { return {v.x, v.y, v.z}; }

// Wrapped difference of two wind-ups, cycles.
long double Wrapped(long double a) { return a - std::round(a); }

struct Dipoles {
    xyz north, west;
};
Dipoles At(long double lat, long double lon)
{
    return {xyz(-std::sin(lat) * std::cos(lon), -std::sin(lat) * std::sin(lon), std::cos(lat)),
            xyz(std::sin(lon), -std::cos(lon), 0.0L)};
}

TEST(PhaseWindUp, ModelAgreesWithSecondCodingAndTurnsOneCyclePerTurn) {
    EXPECT_EQ(sign(-2.5L), -1.0L);
    EXPECT_EQ(sign(0.0L), 0.0L);
    EXPECT_EQ(sign(1e-30L), 1.0L);
    GLC::LoadSystem(1);
    EXPECT_NEAR(GNSS_L3(1.0L, 1.0L), C / (1575.42e6L + 1227.6e6L), 1e-15L);  // 0.1070 m

    // Stations at several latitudes, satellites in many directions above
    // them, the Sun anywhere.
    long n = 0;
    for (const long double latDeg : {-60.0L, 0.0L, 46.9L, 55.5L, 89.0L})
        for (int i = 0; i < 40; ++i) {
            const long double lat = latDeg * Pi / 180.0L, lon = (37.0L * i - 170.0L) * Pi / 180.0L;
            const Dipoles d = At(lat, lon);
            const xyz up(std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon), std::sin(lat));
            const xyz rec = up * 6371000.0L;
            const xyz dir = (up * (0.3L + 0.02L * i) + d.north * std::cos(0.7L * i) + d.west * std::sin(0.7L * i)).GetUnitVector(1.0L);
            const xyz sat = rec + dir * 21000000.0L;
            const xyz sun = xyz(std::cos(1.3L * i), std::sin(1.3L * i), 0.4L * std::sin(0.9L * i)).GetUnitVector(1.0L) * AU_m;
            const long double w = WindUp(sat, rec, d.north, d.west, sun, false);
            EXPECT_LT(std::fabs(Wrapped(w - WindUpCycles(ToSim(sat), ToSim(rec), lat, lon, ToSim(sun)))), Coding_cyc);
            // Block IIR flies with its x and y axes reversed: half a turn.
            EXPECT_LT(std::fabs(Wrapped(WindUp(sat, rec, d.north, d.west, sun, true) - w - 0.5L)), Coding_cyc);
            EXPECT_TRUE(w > -0.5L - Coding_cyc && w <= 0.5L + Coding_cyc);
            ++n;
        }
    EXPECT_EQ(n, 200);

    // A satellite in the zenith yaws with the Sun about its boresight: a yaw
    // of a adds a/360 cycle, always with the same sign.
    const xyz rec(6371000.0L, 0.0L, 0.0L), sat(26560000.0L, 0.0L, 0.0L);
    const Dipoles d = At(0.0L, 0.0L);
    const auto sunAt = [&](long double a_deg) {
        const long double a = a_deg * Pi / 180.0L;
        return sat + xyz(0.0L, std::cos(a), std::sin(a)) * AU_m;
    };
    const long double w0 = WindUp(sat, rec, d.north, d.west, sunAt(0.0L), false);
    EXPECT_FALSE(std::isnan(w0));  // dipoles aligned to the last bit: the cosine is clamped
    for (const long double a : {10.0L, 45.0L, 120.0L, 170.0L})
        EXPECT_NEAR(std::fabs(Wrapped(WindUp(sat, rec, d.north, d.west, sunAt(a), false) - w0)), a / 360.0L, Coding_cyc) << a;
}

TEST(PhaseWindUp, RealDayFollowsTheSatellitesAndLowersTheL3Scatter) {
    // The ESBC day up to its last orbit node (beyond it extrapolated orbits
    // swamp the phase), twice: with and without wind-up.
    Context with, without;
    const std::string opts = EsbcDay(2850, "-xSTA");
    PreprocessDay(with, opts);
    PreprocessDay(without, opts);
    gCPosC& g = with.gc;
    std::vector<long double> before(with.rnxd.GetNObs());  // L3 (m), 0 where null
    for (long k = 0; k < with.rnxd.GetNObs(); ++k) before[k] = with.rnxd.L3(k).obs;
    Capture out(std::cout);
    PhaseWindUp(g);
    long double lat = 0.0L, lon = 0.0L, h = 0.0L;
    Geodetic(ToSim(g.RecPosFC), lat, lon, h);
    const unsigned long day = g.rnxd.epoch(0).GetMJDay();
    long compared = 0, restarts = 0;
    for (const auto& [sat, recs] : RecordsBySatellite(with.rnxd)) {
        if (!GLC::LoadSystem(sat)) continue;
        const long double perCycle = GNSS_L3(1.0L, 1.0L);
        long double last = 0.0L;
        long lastEpoch = -1;
        bool haveLast = false;
        for (const SatRecord& r : recs) {
            const long k = r.k;
            if (!g.OKSAT(k)) continue;
            const bool gap = lastEpoch >= 0 && with.rnxd.epoch(r.epoch) - with.rnxd.epoch(lastEpoch) > PhaseWindUpns::RestartGap_s;
            const bool fresh = lastEpoch < 0 || gap;
            lastEpoch = r.epoch;
            haveLast = haveLast && !fresh;
            restarts += gap ? 1 : 0;
            if (before[k] == 0.0L) continue;  // no L3 to carry the correction
            const long double w = -(with.rnxd.L3(k).obs - before[k]) / perCycle;
            if (fresh) {
                EXPECT_LE(std::fabs(w), 0.5L + Coding_cyc) << SatName(sat);  // each pass starts afresh
            } else if (haveLast) {
                EXPECT_LT(std::fabs(w - last), 0.5L) << SatName(sat) << " epoch " << r.epoch;
            }
            last = w;
            haveLast = true;
            const xyz sun = g.posSunUnit(r.epoch) * g.SunMag(r.epoch);
            if (SunEarthAngle(g.SatellitePosition(k), sun) < 15.0L * Pi / 180.0L) continue;
            const SimVec simSun = SunEarthFixed(day, with.rnxd.epoch(r.epoch).GetSecond());
            const long double ref = WindUpCycles(ToSim(g.SatellitePosition(k)), ToSim(g.RecPosFC), lat, lon, simSun);
            EXPECT_LT(std::fabs(Wrapped(w - ref)), SunModels_cyc) << SatName(sat) << " epoch " << r.epoch;
            ++compared;
        }
    }
    EXPECT_GT(compared, 10000);
    EXPECT_GT(restarts, 0);

    // The same adjustment with and without the correction.
    long double s0[2];
    Context* runs[2] = {&with, &without};
    for (int i = 0; i < 2; ++i) {
        SetUnknowns(runs[i]->gc);
        ProcStatic(runs[i]->gc);
        s0[i] = runs[i]->gc.s0apost_L3;
    }
    EXPECT_LT(s0[0], s0[1]) << "with wind-up " << s0[0] << ", without " << s0[1];
}

}  // namespace
