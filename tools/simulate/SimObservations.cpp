#include "SimObservations.h"

#include <cmath>
#include <map>
#include <string>

#include "SimRandom.h"
#include "SimWindUp.h"
#include "delays/gTropDelay.h"
#include "delays/gTropModel.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/flh.h"
#include "geodesy/mjd.h"
#include "geodesy/ymdhms.h"
#include "numerics/ProgramError.h"

namespace {
constexpr long double Pi = 3.14159265358979323846264338327950288L;
constexpr long double WgsA = 6378137.0L;
constexpr long double WgsF = 1.0L / 298.257223563L;

// Receiver clock: an offset and a drift of a good quartz oscillator.
constexpr long double RxClock0_s = 2.0e-5L;
constexpr long double RxClockDrift = 2.0e-10L;

// Ambiguities are drawn from this range (cycles): large enough to look like
// real receiver phase, small enough for the RINEX F14.3 field.
constexpr long AmbRange_cyc = 1000000L;

// The orbit file reaches this far beyond the observations (s): eight 15 min
// nodes, so the 14-node interpolation window is centred at the first and
// last observation epoch instead of sliding to the file's edge.
constexpr long double OrbitMargin_s = 7200.0L;
constexpr long double OrbitStep_s = 900.0L;

SimVec EnuToEarthFixed(long double n, long double e, long double u, long double lat,
                       long double lon)
{
    const long double sf = std::sin(lat), cf = std::cos(lat);
    const long double sl = std::sin(lon), cl = std::cos(lon);
    return {-sf * cl * n - sl * e + cf * cl * u, -sf * sl * n + cl * e + cf * sl * u,
            cf * n + sf * u};
}

// Vertical TEC (TECU) at local solar time tl_s: a night floor and a
// daytime bulge peaking at 14 h, smooth through the whole day.
long double VerticalTEC(long double vtecMax, long double tl_s)
{
    return vtecMax * (0.25L + 0.375L * (1.0L + std::cos(2.0L * Pi * (tl_s - 50400.0L) / 86400.0L)));
}

mjd EpochOf(unsigned long mjday, long double t)
{
    mjd m(mjday, 0.0L);
    m += t;
    return m;
}
}  // namespace

void Geodetic(const SimVec& p, long double& lat, long double& lon, long double& h)
{
    const long double e2 = WgsF * (2.0L - WgsF);
    lon = std::atan2(p.y, p.x);
    const long double r = std::hypot(p.x, p.y);
    lat = std::atan2(p.z, r * (1.0L - e2));
    h = 0.0L;
    for (int it = 0; it < 30; ++it) {
        const long double s = std::sin(lat);
        const long double N = WgsA / std::sqrt(1.0L - e2 * s * s);
        h = r / std::cos(lat) - N;
        const long double latNew = std::atan2(p.z, r * (1.0L - e2 * N / (N + h)));
        const bool done = std::fabs(latNew - lat) < 1e-14L;
        lat = latNew;
        if (done) break;
    }
}

long double Elevation(const SimVec& station, const SimVec& target, long double lat,
                      long double lon)
{
    const SimVec d = target - station;
    const SimVec up = {std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon), std::sin(lat)};
    return std::asin(Dot(d, up) / Norm(d));
}

long double LightTimeRange(const SimSatellite& s, const SimVec& stationEF, long double tRecv,
                           long double& tEmit)
{
    const long double c = simorbitns::C;
    const SimVec rr = ToInertial(stationEF, tRecv);
    long double tau = 0.075L;
    for (int it = 0; it < 20; ++it) {
        const long double tauNew = Norm(InertialPosition(s, tRecv - tau) - rr) / c;
        const bool done = std::fabs(tauNew - tau) < simobsns::LightTimeTol_s;
        tau = tauNew;
        if (done) break;
    }
    tEmit = tRecv - tau;
    return c * tau;
}

long double ShapiroDelay(long double rSat, long double rRec, long double rho)
{
    const long double c = simorbitns::C;
    return 2.0L * simorbitns::GM / (c * c) * std::log((rSat + rRec + rho) / (rSat + rRec - rho));
}

void Carriers(const SimSatellite& s, long double& f1_Hz, long double& f2_Hz)
{
    if (s.number < 100) {
        f1_Hz = 1575420000.0L;
        f2_Hz = 1227600000.0L;
    } else if (s.number < 200) {
        f1_Hz = 1602000000.0L + 562500.0L * s.channel;
        f2_Hz = 1246000000.0L + 437500.0L * s.channel;
    } else {
        f1_Hz = 1575420000.0L;
        f2_Hz = 1207140000.0L;
    }
}

SimData Simulate(const SimOptions& o)
{
    const long double c = simorbitns::C;
    SimData d;
    d.opt = o;
    d.sats = NominalConstellation(o.useGPS, o.useGLN, o.useGAL, o.seed);
    for (const SimSlip& sl : o.slips) {
        bool found = false;
        for (const SimSatellite& s : d.sats) found = found || s.number == sl.sat;
        if (!found)
            ProgramError("Orvo", "orvo-simulate option -slip: satellite "
                                     + std::to_string(sl.sat) + " is not simulated");
    }
    d.mjday = ymdhms2mjd(ymdhms(o.year, o.month, o.day, 0, 0, 0.0L)).GetMJDay();

    long double latM = 0.0L, lonM = 0.0L, hM = 0.0L;
    d.marker = {o.x, o.y, o.z};
    Geodetic(d.marker, latM, lonM, hM);
    d.arp = d.marker + EnuToEarthFixed(o.eccN, o.eccE, o.eccH, latM, lonM);
    Geodetic(d.arp, d.lat, d.lon, d.h);

    SimRandom rnd(o.seed * 7ULL + 5ULL);
    {
        // Header position: the truth moved by aprioriOffset in a random
        // direction, as a receiver's own navigation solution would be.
        const long double az = rnd.Uniform(0.0L, 2.0L * Pi);
        const long double zc = rnd.Uniform(-1.0L, 1.0L);
        const long double sz = std::sqrt(1.0L - zc * zc);
        d.approx = d.marker + o.aprioriOffset * SimVec{sz * std::cos(az), sz * std::sin(az), zc};
    }

    gTropModel trop;
    trop.SetTropModel(0);      // Saastamoinen with the standard atmosphere
    trop.SetMappFunction(0);   // Niell
    const flh pos(d.lat, d.lon, d.h);
    trop.SetAtmParams(pos);

    const long nEpoch = static_cast<long>(std::floor(o.hours * 3600.0L / o.interval + 1e-9L));
    const long double lastT = (nEpoch - 1) * o.interval;
    for (long double t = -OrbitMargin_s;
         t <= std::ceil(lastT / OrbitStep_s) * OrbitStep_s + OrbitMargin_s + 1e-6L; t += OrbitStep_s)
        d.orbitTimes.push_back(t);
    for (long k = -2; k < nEpoch + 2; ++k) d.clockTimes.push_back(k * o.interval);

    struct Arc {
        bool open = false;
        long double N1 = 0.0L, N2 = 0.0L;
        long double windUp = 0.0L;  // cycles, at the arc's previous epoch
    };
    std::map<short, Arc> arcs;
    const long double rArp = Norm(d.arp);

    d.epochs.resize(static_cast<std::size_t>(nEpoch));
    for (long i = 0; i < nEpoch; ++i) {
        SimEpoch& ep = d.epochs[static_cast<std::size_t>(i)];
        ep.t = i * o.interval;
        ep.msSteps = (o.msJumpEpoch >= 0 && i >= o.msJumpEpoch) ? simobsns::MsJump_s : 0.0L;
        ep.rxClock = RxClock0_s + RxClockDrift * ep.t + ep.msSteps;
        // The time tag is receiver time: the signal really arrived earlier
        // by the receiver clock offset.
        const long double tRecv = ep.t - ep.rxClock;
        const mjd eph = EpochOf(d.mjday, tRecv);
        gTropDelay td;
        trop.GetZenithDelay(td, pos, eph);
        ep.zhd = td.tdry;
        ep.zwd = td.twet * (1.0L + o.wetVar * std::sin(2.0L * Pi * tRecv / 86400.0L));
        const long double tLocal = tRecv + d.lon / Pi * 43200.0L;
        const long double vtec = VerticalTEC(o.vtecMax_TECU, tLocal);
        const SimVec sun = SunEarthFixed(d.mjday, ep.t);

        for (const SimSatellite& s : d.sats) {
            SimRecord r;
            r.sat = s.number;
            r.range = LightTimeRange(s, d.arp, tRecv, r.tEmit);
            const SimVec satEF = EarthFixedPosition(s, r.tEmit);
            // Elevation of the satellite's Earth-fixed position at emission,
            // as the estimator computes it; the line of sight rotated by the
            // flight time differs by under 6 microradians.
            r.elev = Elevation(d.arp, satEF, d.lat, d.lon);
            Arc& arc = arcs[s.number];
            if (!(r.elev > o.elevMask_deg * Pi / 180.0L)) {
                arc.open = false;
                for (const SimSlip& sl : o.slips)
                    if (sl.sat == s.number && sl.epoch == i)
                        ProgramError("Orvo", "orvo-simulate option -slip: satellite "
                                                 + std::to_string(sl.sat) + " is not observed at epoch "
                                                 + std::to_string(i));
                continue;
            }
            // The antenna turns continuously: within an arc the wind-up
            // follows the previous epoch's value beyond one cycle.
            r.windUp = WindUpCycles(satEF, d.arp, d.lat, d.lon, sun);
            if (!arc.open) {
                arc.open = true;
                arc.N1 = static_cast<long double>(rnd.Integer(-AmbRange_cyc, AmbRange_cyc));
                arc.N2 = static_cast<long double>(rnd.Integer(-AmbRange_cyc, AmbRange_cyc));
            } else {
                r.windUp -= std::round(r.windUp - arc.windUp);
            }
            arc.windUp = r.windUp;
            for (const SimSlip& sl : o.slips)
                if (sl.sat == s.number && sl.epoch == i) {
                    arc.N1 += static_cast<long double>(sl.n1_cyc);
                    arc.N2 += static_cast<long double>(sl.n2_cyc);
                    r.lli = 1;
                }
            r.N1 = arc.N1;
            r.N2 = arc.N2;
            Carriers(s, r.f1_Hz, r.f2_Hz);
            r.shapiro = ShapiroDelay(Norm(satEF), rArp, r.range);
            r.satClock = ClockModel(s, r.tEmit) + RelativisticClock(s, r.tEmit);
            if (o.useTrop) {
                trop.GetMappFunction(td, pos, eph, r.elev);
                r.tropo = ep.zhd * td.mfdry + ep.zwd * td.mfwet;
            }
            // Thin-shell slant factor 1/cos z' with sin z' = R/(R+H) cos E.
            const long double sz = simobsns::ShellEarthRadius
                                   / (simobsns::ShellEarthRadius + simobsns::ShellHeight)
                                   * std::cos(r.elev);
            const long double stec = vtec / std::sqrt(1.0L - sz * sz);
            r.ion1 = simobsns::IonoK * stec / (r.f1_Hz * r.f1_Hz);
            r.ion2 = simobsns::IonoK * stec / (r.f2_Hz * r.f2_Hz);

            const long double geo = r.range + r.shapiro + r.tropo - c * r.satClock;
            const long double code = geo + c * ep.rxClock;
            // The receiver keeps its phase running through a clock step:
            // only the codes carry it.
            const long double phase = geo + c * (ep.rxClock - ep.msSteps);
            const long double lam1 = c / r.f1_Hz, lam2 = c / r.f2_Hz;
            const long double l1 = (phase - r.ion1 + rnd.Gauss(o.sigPhase)) / lam1 + r.N1 + r.windUp;
            const long double l2 = (phase - r.ion2 + rnd.Gauss(o.sigPhase)) / lam2 + r.N2 + r.windUp;
            r.C1 = code + r.ion1 + rnd.Gauss(o.sigCode);
            r.L1 = l1;
            if (s.number < 200) {
                r.P1 = code + r.ion1 + rnd.Gauss(o.sigCode);
                r.P2 = code + r.ion2 + rnd.Gauss(o.sigCode);
                r.L2 = l2;
            } else {
                r.C7 = code + r.ion2 + rnd.Gauss(o.sigCode);
                r.L7 = l2;
            }
            ep.recs.push_back(r);
        }
    }
    return d;
}
