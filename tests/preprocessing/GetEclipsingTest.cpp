// Eclipsing: the angle between Sun and Earth seen from a satellite, and on
// the real day the phase removed exactly where an independent Sun puts the
// satellites near the Sun-Earth line.

#include <set>

#include "SimWindUp.h"
#include "StagingSupport.h"
#include "preprocessing/GetEclipsing.h"

using namespace stagingtest;

namespace {

constexpr long double Deg = Pi / 180.0L;
// The program's and the simulator's Sun differ by about 0.01 deg, which
// moves the angle at the satellite by less than that; records closer to the
// limit than this may fall either way.
constexpr long double Margin_rad = 0.05L * Deg;

TEST(GetEclipsing, AngleIsSmallOnBothSidesOfTheSunEarthLine) {
    const xyz sat(0.0L, 26560000.0L, 0.0L);
    const long double au = 1.495978707e11L;
    const struct {
        xyz sun;
        long double angle_deg;
    } rows[] = {
        {sat + xyz(0.0L, -au, 0.0L), 0.0L},  // behind the Earth
        {sat + xyz(0.0L, au, 0.0L), 0.0L},   // the satellite between Earth and Sun
        {sat + xyz(au, 0.0L, 0.0L), 90.0L},  // square to the line
        {sat + xyz(au * std::sin(10.0L * Deg), -au * std::cos(10.0L * Deg), 0.0L), 10.0L},
        {sat + xyz(-au * std::sin(10.0L * Deg), au * std::cos(10.0L * Deg), 0.0L), 10.0L},
    };
    for (const auto& r : rows) EXPECT_NEAR(SunEarthAngle(sat, r.sun) / Deg, r.angle_deg, 1e-12L) << r.angle_deg;
}

TEST(GetEclipsing, RealDayClearsPhaseWhereAnIndependentSunPutsTheLimit) {
    Context c;
    PreprocessDay(c, EsbcDay(2880));
    gCPosC& g = c.gc;
    RINEXData& d = c.rnxd;
    std::vector<gnssobs> l1(d.GetNObs()), p2(d.GetNObs());
    for (long k = 0; k < d.GetNObs(); ++k) l1[k] = d.L1(k), p2[k] = d.P2(k);
    std::string out;
    {
        Capture cap(std::cout);
        GetEclipsing(g);
        out = cap.Text();
    }
    const unsigned long day = d.epoch(0).GetMJDay();
    std::map<short, long> cleared;
    long inside = 0;
    for (long i = 0, k = 0; i < d.GetNEpoch(); ++i) {
        const SimVec s = SunEarthFixed(day, d.epoch(i).GetSecond());
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            if (!g.OKSAT(k)) continue;
            const xyz p = g.SatellitePosition(k);
            const long double a = SunEarthAngle(p, xyz(s.x, s.y, s.z));
            const bool gone = !l1[k].IsNull() && d.L1(k).IsNull();
            if (gone) ++cleared[d.sat(k)];
            EXPECT_EQ(p2[k].obs, d.P2(k).obs);  // codes stay
            if (std::fabs(a - g.satEclipsThres) < Margin_rad || l1[k].IsNull()) continue;
            EXPECT_EQ(gone, a < g.satEclipsThres) << SatName(d.sat(k)) << " epoch " << i << " angle " << a / Deg;
            if (gone) {
                EXPECT_TRUE(d.L2(k).IsNull() && d.L3(k).IsNull() && d.L4(k).IsNull() && d.MW(k).IsNull());
            }
            inside += a < g.satEclipsThres;
        }
    }
    EXPECT_GT(inside, 0);
    // The tables list every satellite with its count, the report the total.
    ASSERT_EQ(g.NEclipsSat, static_cast<long>(cleared.size()));
    for (long i = 0; i < g.NEclipsSat; ++i) EXPECT_GE(g.EclipsNObs(i), cleared[g.EclipsSat(i)]) << g.EclipsSat(i);
    char total[16];
    std::snprintf(total, sizeof total, "%4ld", g.NEclipsSat);
    EXPECT_TRUE(Has(out, std::string("  # satellites in eclipsing seasons   : ") + total)) << out;

    // The limit holds to the last bit of the program's own angle: the
    // record kept with the smallest angle stays at a threshold equal to
    // it (the test is strict) and goes at the next value above.
    long k0 = -1;
    long double a0 = 0.0L;
    for (long i = 0, k = 0; i < d.GetNEpoch(); ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            if (!g.OKSAT(k) || d.L1(k).IsNull()) continue;
            const long double a = SunEarthAngle(g.SatellitePosition(k), g.posSunUnit(i) * g.SunMag(i));
            if (k0 < 0 || a < a0) k0 = k, a0 = a;
        }
    ASSERT_GE(k0, 0);
    for (const long double thres : {a0, std::nextafter(a0, 1.0L)}) {
        g.satEclipsThres = thres;
        Capture cap(std::cout);
        GetEclipsing(g);
        EXPECT_EQ(d.L1(k0).IsNull(), thres > a0) << static_cast<double>(a0);
    }
}

}  // namespace
