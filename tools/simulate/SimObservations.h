#pragma once
// The simulated observations of one station: geometry by the simulator's own
// orbits and light-time solution, the clocks, troposphere, ionosphere,
// ambiguities, phase wind-up, slips, a receiver millisecond step and white noise.
#include <vector>

#include "SimOptions.h"
#include "SimOrbit.h"

namespace simobsns {
/// The light-time loop stops when the flight time changes by less than
/// this (s): 1e-13 s is 0.03 mm of range.
constexpr long double LightTimeTol_s = 1e-13L;
/// Size of the receiver clock step of -jump, s.
constexpr long double MsJump_s = 1e-3L;
/// Ionospheric delay constant: 40.3 m^3/s^2 per electron/m^2, times 1e16
/// for TEC units (m per TECU at 1 Hz^2).
constexpr long double IonoK = 40.3e16L;
/// Thin-shell height and mean Earth radius of the slant factor, m.
constexpr long double ShellHeight = 450000.0L;
constexpr long double ShellEarthRadius = 6371000.0L;
}

/// One satellite at one epoch: the observed values (0 for a type the system
/// does not have) and the truth behind them.
struct SimRecord {
    short sat = 0;
    // Observed: codes in m, phases in cycles. GPS, GLONASS: C1 P1 P2 L1 L2;
    // Galileo: C1 L1 C7 L7.
    long double C1 = 0.0L, P1 = 0.0L, P2 = 0.0L, L1 = 0.0L, L2 = 0.0L, C7 = 0.0L, L7 = 0.0L;
    unsigned short lli = 0;          // 1 at a slip or the start of an arc
    // Truth.
    long double f1_Hz = 0.0L, f2_Hz = 0.0L;  // carriers of the two frequencies
    long double tEmit = 0.0L;        // emission time, s of GPS time from 00:00
    long double range = 0.0L;        // geometric light-time range, m
    long double shapiro = 0.0L;      // relativistic path delay, m
    long double satClock = 0.0L;     // clock that times the signal, s (polynomial + relativistic)
    long double tropo = 0.0L;        // slant troposphere, m
    long double ion1 = 0.0L;         // ionosphere group delay on the first carrier, m
    long double ion2 = 0.0L;         // on the second carrier, m
    long double N1 = 0.0L, N2 = 0.0L;// ambiguities in force, cycles
    long double windUp = 0.0L;       // phase wind-up, cycles, the same on both carriers
    long double elev = 0.0L;         // elevation, rad
};

/// One epoch: time tag, truth of station clock and atmosphere, records.
struct SimEpoch {
    long double t = 0.0L;            // time tag (receiver time), s from 00:00
    long double rxClock = 0.0L;      // receiver clock offset incl. steps, s
    long double msSteps = 0.0L;      // accumulated clock steps, s (not in the phase)
    long double zhd = 0.0L, zwd = 0.0L;  // zenith hydrostatic and wet delay, m
    std::vector<SimRecord> recs;
};

/// Everything one run produces.
struct SimData {
    SimOptions opt;
    std::vector<SimSatellite> sats;
    unsigned long mjday = 0;         // day number of 00:00
    SimVec marker, arp, approx;      // truth marker, antenna reference point, header position
    long double lat = 0.0L, lon = 0.0L, h = 0.0L;  // geodetic ARP (WGS84), rad, m
    std::vector<SimEpoch> epochs;
    /// Epoch times of the orbit and clock files, s from 00:00.
    std::vector<long double> orbitTimes, clockTimes;
};

/// Geodetic latitude, longitude (rad) and height (m) of p on WGS84, by the
/// iteration of Heiskanen and Moritz (1967) to 1e-14 rad.
void Geodetic(const SimVec& p, long double& lat, long double& lon, long double& h);

/// Elevation (rad) of target seen from station at geodetic lat, lon.
long double Elevation(const SimVec& station, const SimVec& target, long double lat,
                      long double lon);

/// Geometric range (m) from the satellite at emission to the station at
/// reception time tRecv (s of GPS time), solved in the inertial frame; tEmit
/// returns the emission time. Converges in three or four passes.
long double LightTimeRange(const SimSatellite& s, const SimVec& stationEF,
                           long double tRecv, long double& tEmit);

/// Relativistic path delay (m) for geocentric distances rSat, rRec and
/// range rho: 2GM/c^2 ln((rSat + rRec + rho)/(rSat + rRec - rho))
/// (IERS Conventions 2010, eq. 11.17).
long double ShapiroDelay(long double rSat, long double rRec, long double rho);

/// Carrier frequencies (Hz) of the two simulated signals of s: GPS L1, L2;
/// GLONASS G1, G2 of its channel; Galileo E1, E5b.
void Carriers(const SimSatellite& s, long double& f1_Hz, long double& f2_Hz);

/// Runs the simulation of options o. A slip on a satellite that is not in
/// the constellations ends the run with the framed error.
SimData Simulate(const SimOptions& o);
