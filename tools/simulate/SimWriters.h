#pragma once
// The files of a simulation run: RINEX 2.11 observations, SP3-c orbits,
// RINEX clock 3.00 satellite clocks, the GLONASS frequency channel list and
// the truth. Every writer checks that its file opens; one that does not
// ends the run with the framed error before anything else is written.
#include <string>

#include "SimObservations.h"

/// Names of the files of one run, without folder: ssssddd0.yyo and its
/// ".glnfc" companion, ssssddd0.sp3, ssssddd0.clk, ssssddd0.truth.
struct SimFileNames {
    std::string obs, sp3, clk, glnfc, truth;
};

/// File names for data set d (marker name, day of year, two-digit year).
SimFileNames FileNames(const SimData& d);

/// RINEX 2.11 observation file of d: header (approximate position,
/// eccentricity, receiver and antenna types, seven observation types C1 P1
/// P2 L1 L2 C7 L7), epochs with 12 satellites a line, 5 values a line.
void WriteRinexObs(const SimData& d, const std::string& path);
/// SP3-c position file of d: every satellite at d.orbitTimes, km and
/// microseconds (the clock polynomial without the relativistic term).
void WriteSP3(const SimData& d, const std::string& path);
/// RINEX clock 3.00 file of d: AS records of every satellite at
/// d.clockTimes, seconds (the clock polynomial).
void WriteClockRinex(const SimData& d, const std::string& path);
/// GLONASS frequency channel file of d, one open-ended line per slot,
/// in the fixed columns of the program's channel reader.
void WriteGlonassChannels(const SimData& d, const std::string& path);
/// Truth of d: marker, antenna reference point, eccentricity, header
/// position, and per epoch the zenith delays and the receiver clock.
void WriteTruth(const SimData& d, const std::string& path);

/// Checks that d.opt.outDir takes files, then writes all files of d into it
/// (the channel file only with GLONASS) and returns their names.
SimFileNames WriteAll(const SimData& d);
