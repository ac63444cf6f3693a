#pragma once
// The simulator's own satellites: nominal constellations on Keplerian orbits
// whose node and perigee drift with the secular J2 rates, and a polynomial
// clock per satellite. Independent of the program's orbit classes on purpose,
// so that a mistake shared by simulator and estimator cannot hide.
#include <vector>

/// A Cartesian vector, m or m/s.
struct SimVec {
    long double x = 0.0L, y = 0.0L, z = 0.0L;
};
/// Sum of two vectors.
SimVec operator+(const SimVec& a, const SimVec& b);
/// Difference a - b.
SimVec operator-(const SimVec& a, const SimVec& b);
/// Vector a scaled by s.
SimVec operator*(long double s, const SimVec& a);
/// Scalar product (m^2 for positions).
long double Dot(const SimVec& a, const SimVec& b);
/// Length (m for positions).
long double Norm(const SimVec& a);

namespace simorbitns {
constexpr long double GM = 3.986004418e14L;       // Earth, m^3/s^2 (IERS 2010)
constexpr long double J2 = 1.0826359e-3L;         // Earth oblateness (EGM2008)
constexpr long double Re = 6378137.0L;            // equatorial radius, m
constexpr long double OmegaE = 7.2921151467e-5L;  // Earth rotation, rad/s
constexpr long double C = 299792458.0L;           // m/s
/// Kepler's equation is solved until the eccentric anomaly changes by less
/// than this (rad): 1e-18 rad at 30 000 km is 3e-11 m.
constexpr long double KeplerTol_rad = 1e-18L;
}

/// One simulated satellite. Times t are seconds of GPS time from 00:00 of
/// the simulated day.
struct SimSatellite {
    short number = 0;        // shared numbering: G 0, R 100, E 200 plus PRN
    long double a = 0.0L;    // semi-major axis, m
    long double e = 0.0L;    // eccentricity
    long double inc = 0.0L;  // inclination, rad
    long double raan0 = 0.0L, argp0 = 0.0L, M0 = 0.0L;  // at t = 0, rad
    long double raanDot = 0.0L, argpDot = 0.0L, MDot = 0.0L;  // rad/s, J2 secular
    int channel = 0;         // GLONASS frequency channel, 0 for others
    long double clk0 = 0.0L, clk1 = 0.0L, clk2 = 0.0L;  // s, s/s, s/s^2
};

/// Fills the secular rates of node, perigee and mean anomaly of s from its
/// a, e and inc: first-order J2 theory (Kaula 1966; Vallado, Fundamentals of
/// Astrodynamics, eq. 9-41). Valid for e < 1.
void SetSecularRates(SimSatellite& s);

/// Nominal constellations with a deterministic element scatter from seed:
/// GPS 6 planes of 4 (G01-G24, a 26 559.7 km, i 55 deg), GLONASS 3 planes
/// of 8 (R01-R24, a 25 507.8 km, i 64.8 deg, antipodal slots sharing a
/// channel), Galileo 3 planes of 8 (E01-E24, a 29 599.8 km, i 56 deg).
/// Eccentricities 0.001 to 0.02 so that the periodic relativistic clock
/// term is of metre size. Clock offsets up to 0.5 ms, drifts up to 3e-12.
std::vector<SimSatellite> NominalConstellation(bool gps, bool glonass, bool galileo,
                                               unsigned long seed);

/// Inertial position (m) at t: Kepler's equation by Newton iteration.
SimVec InertialPosition(const SimSatellite& s, long double t);
/// Inertial velocity (m/s) at t: central difference of InertialPosition
/// over 1 s, whose truncation error (~1e-5 m/s) is far below what any
/// velocity-dependent term here can show.
SimVec InertialVelocity(const SimSatellite& s, long double t);

/// Angle (rad) of the Earth-fixed frame against the inertial one at t; the
/// frames coincide at t = 0 (the simulated world needs no sidereal time).
long double EarthAngle(long double t);
/// Inertial vector p at t expressed in the Earth-fixed frame.
SimVec ToEarthFixed(const SimVec& p, long double t);
/// Earth-fixed vector p at t expressed in the inertial frame.
SimVec ToInertial(const SimVec& p, long double t);

/// Earth-fixed position (m) of the satellite at t.
SimVec EarthFixedPosition(const SimSatellite& s, long double t);
/// Clock polynomial (s) at t: what the clock products publish. The signal
/// leaves with this plus the periodic relativistic term.
long double ClockModel(const SimSatellite& s, long double t);
/// Periodic relativistic clock term -2 r.v/c^2 (s) at t (IS-GPS-200,
/// 20.3.3.3.3.1): added to the clock polynomial it gives the clock that
/// really times the signal.
long double RelativisticClock(const SimSatellite& s, long double t);
