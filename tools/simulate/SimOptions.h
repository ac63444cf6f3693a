#pragma once
// Settings of one simulation run of orvo-simulate: station, day, sampling,
// systems and error sources, read from the command line.
#include <string>
#include <vector>

/// One requested cycle slip: from epoch index `epoch` (0 = first epoch) on,
/// the phase of satellite `sat` (shared numbering: G 0, R 100, E 200) gains
/// n1_cyc cycles on the first and n2_cyc on the second carrier.
struct SimSlip {
    short sat = 0;
    long epoch = 0;
    long n1_cyc = 0;
    long n2_cyc = 0;
};

struct SimOptions {
    std::string outDir = ".";        // folder of the files written
    std::string marker = "SIMU";     // four-character marker name
    long double x = 4331297.0L;      // station marker, Earth-fixed, m
    long double y = 567555.0L;
    long double z = 4633133.0L;
    unsigned short year = 2020, month = 6, day = 25;  // GPS time
    long double interval = 30.0L;    // observation sampling, s
    long double hours = 24.0L;       // span from 00:00, h
    bool useGPS = true, useGLN = true, useGAL = true;
    long double elevMask_deg = 5.0L; // cut-off, degrees, 0 to 5
    long double sigCode = 0.3L;      // code white noise, m
    long double sigPhase = 0.002L;   // phase white noise, m
    long double vtecMax_TECU = 30.0L;// daytime vertical TEC; 0 switches the ionosphere off
    bool useTrop = true;             // troposphere on
    long double wetVar = 0.3L;       // relative daily swing of the zenith wet delay, 0 to 0.9
    long double eccH = 0.1L, eccE = 0.0L, eccN = 0.0L;  // antenna eccentricity, m
    long double aprioriOffset = 3.0L;// distance of the header position from the truth, m
    std::vector<SimSlip> slips;
    long msJumpEpoch = -1;           // epoch index of a +1 ms receiver clock step, -1 none
    unsigned long seed = 1;          // random stream of noise and ambiguities
};

namespace simoptns {
/// Greatest accepted span: one day, since all files are named for one day.
constexpr long double MaxHours = 24.0L;
/// Cut-off range accepted, degrees: low masks keep the low-elevation
/// geometry that the estimator must cope with.
constexpr long double MaxElevMask_deg = 5.0L;
}

/// Reads the options of orvo-simulate (argv[1..argc-1]); each is a hyphen,
/// a selector and its value glued on, as listed by PrintSimHelp. An unknown
/// option or a value out of range ends the run with the framed error
/// (status 1). "-help" prints the help and exits with status 0.
SimOptions ParseSimOptions(int argc, const char* const* argv);

/// Prints the option list of orvo-simulate on the output stream.
void PrintSimHelp();
