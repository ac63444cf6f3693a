#include "SimOrbit.h"

#include <cmath>

#include "SimRandom.h"

namespace {
constexpr long double Pi = 3.14159265358979323846264338327950288L;
constexpr long double Deg = Pi / 180.0L;

// GLONASS channel plan: antipodal slots (k and k+4 of one plane) share a
// channel so that a receiver never sees both.
constexpr int GlonassChannel[24] = {1, -4, 5, 6, 1, -4, 5, 6, -2, -7, 0, -1,
                                    -2, -7, 0, -1, 4, -3, 3, 2, 4, -3, 3, 2};

void AddPlanes(std::vector<SimSatellite>& sats, short base, int nPlanes, int perPlane,
               long double a, long double inc_deg, long double phaseShift_deg,
               SimRandom& rnd)
{
    for (int p = 0; p < nPlanes; ++p)
        for (int k = 0; k < perPlane; ++k) {
            SimSatellite s;
            const int slot = p * perPlane + k + 1;
            s.number = static_cast<short>(base + slot);
            s.a = a + rnd.Uniform(-2000.0L, 2000.0L);
            s.e = rnd.Uniform(0.001L, 0.02L);
            s.inc = (inc_deg + rnd.Uniform(-1.0L, 1.0L)) * Deg;
            s.raan0 = (360.0L / nPlanes * p + rnd.Uniform(-0.5L, 0.5L)) * Deg;
            s.argp0 = rnd.Uniform(0.0L, 360.0L) * Deg;
            // Mean argument of latitude evenly spaced, shifted from plane to
            // plane; the perigee is taken back out of the mean anomaly.
            const long double u = (360.0L / perPlane * k + phaseShift_deg * p) * Deg;
            s.M0 = std::remainder(u - s.argp0, 2.0L * Pi);
            s.channel = base == 100 ? GlonassChannel[(slot - 1) % 24] : 0;
            s.clk0 = rnd.Uniform(-5e-4L, 5e-4L);
            s.clk1 = rnd.Uniform(-3e-12L, 3e-12L);
            s.clk2 = rnd.Uniform(-1e-19L, 1e-19L);
            SetSecularRates(s);
            sats.push_back(s);
        }
}
}  // namespace

SimVec operator+(const SimVec& a, const SimVec& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
SimVec operator-(const SimVec& a, const SimVec& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
SimVec operator*(long double s, const SimVec& a) { return {s * a.x, s * a.y, s * a.z}; }
long double Dot(const SimVec& a, const SimVec& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
long double Norm(const SimVec& a) { return std::sqrt(Dot(a, a)); }

void SetSecularRates(SimSatellite& s)
{
    using namespace simorbitns;
    const long double n = std::sqrt(GM / (s.a * s.a * s.a));
    const long double p = s.a * (1.0L - s.e * s.e);
    const long double k = J2 * (Re / p) * (Re / p);
    const long double ci = std::cos(s.inc);
    s.raanDot = -1.5L * n * k * ci;
    s.argpDot = 0.75L * n * k * (5.0L * ci * ci - 1.0L);
    s.MDot = n * (1.0L + 0.75L * k * std::sqrt(1.0L - s.e * s.e) * (3.0L * ci * ci - 1.0L));
}

std::vector<SimSatellite> NominalConstellation(bool gps, bool glonass, bool galileo,
                                               unsigned long seed)
{
    std::vector<SimSatellite> sats;
    // One stream per system, so that switching a system off leaves the
    // others' orbits and clocks unchanged.
    if (gps) {
        SimRandom rnd(seed * 3ULL + 11ULL);
        AddPlanes(sats, 0, 6, 4, 26559700.0L, 55.0L, 15.0L, rnd);
    }
    if (glonass) {
        SimRandom rnd(seed * 3ULL + 12ULL);
        AddPlanes(sats, 100, 3, 8, 25507800.0L, 64.8L, 15.0L, rnd);
    }
    if (galileo) {
        SimRandom rnd(seed * 3ULL + 13ULL);
        AddPlanes(sats, 200, 3, 8, 29599800.0L, 56.0L, 15.0L, rnd);
    }
    return sats;
}

SimVec InertialPosition(const SimSatellite& s, long double t)
{
    const long double M = s.M0 + s.MDot * t;
    long double E = M;
    for (int it = 0; it < 50; ++it) {
        const long double dE = (E - s.e * std::sin(E) - M) / (1.0L - s.e * std::cos(E));
        E -= dE;
        if (std::fabs(dE) < simorbitns::KeplerTol_rad) break;
    }
    const long double xp = s.a * (std::cos(E) - s.e);
    const long double yp = s.a * std::sqrt(1.0L - s.e * s.e) * std::sin(E);
    const long double w = s.argp0 + s.argpDot * t;
    const long double O = s.raan0 + s.raanDot * t;
    const long double cw = std::cos(w), sw = std::sin(w);
    const long double cO = std::cos(O), sO = std::sin(O);
    const long double ci = std::cos(s.inc), si = std::sin(s.inc);
    // Orbit plane -> inertial: R3(-O) R1(-i) R3(-w).
    const long double x1 = cw * xp - sw * yp;
    const long double y1 = sw * xp + cw * yp;
    const long double y2 = ci * y1;
    const long double z2 = si * y1;
    return {cO * x1 - sO * y2, sO * x1 + cO * y2, z2};
}

SimVec InertialVelocity(const SimSatellite& s, long double t)
{
    return 0.5L * (InertialPosition(s, t + 1.0L) - InertialPosition(s, t - 1.0L));
}

long double EarthAngle(long double t) { return simorbitns::OmegaE * t; }

SimVec ToEarthFixed(const SimVec& p, long double t)
{
    const long double th = EarthAngle(t);
    const long double c = std::cos(th), s = std::sin(th);
    return {c * p.x + s * p.y, -s * p.x + c * p.y, p.z};
}

SimVec ToInertial(const SimVec& p, long double t)
{
    const long double th = EarthAngle(t);
    const long double c = std::cos(th), s = std::sin(th);
    return {c * p.x - s * p.y, s * p.x + c * p.y, p.z};
}

SimVec EarthFixedPosition(const SimSatellite& s, long double t)
{
    return ToEarthFixed(InertialPosition(s, t), t);
}

long double ClockModel(const SimSatellite& s, long double t)
{
    return s.clk0 + s.clk1 * t + s.clk2 * t * t;
}

long double RelativisticClock(const SimSatellite& s, long double t)
{
    const long double c = simorbitns::C;
    return -2.0L * Dot(InertialPosition(s, t), InertialVelocity(s, t)) / (c * c);
}
