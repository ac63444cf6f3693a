#pragma once
// Comparison of a positioning result with the truth of a simulated data
// set: the truth file of orvo-simulate, the static plot file (-gps) and the
// troposphere file (-ot) of orvo. The geometry is the simulator's own.
#include <string>
#include <vector>

#include "SimOrbit.h"

/// Truth of one simulated data set as its truth file holds it.
struct SimTruth {
    SimVec marker, arp, approx;            // Earth-fixed, m
    long double eccH = 0.0L, eccE = 0.0L, eccN = 0.0L;  // antenna eccentricity, m
    /// Per epoch: day number, second of day of the time tag, zenith
    /// hydrostatic and wet delay (m), receiver clock (s).
    std::vector<unsigned long> mjday;
    std::vector<long double> second, zhd, zwd, rxClock;
};

/// One node of orvo's troposphere file: epoch as day number and second of
/// day, modelled dry and estimated wet zenith delay (m).
struct SimTropoNode {
    unsigned long mjday = 0;
    long double second = 0.0L;
    long double dry = 0.0L, wet = 0.0L;
};

/// Reads the truth file written by WriteTruth. A missing file, a missing
/// position record or an unreadable epoch line ends the run with the
/// framed error (status 1).
SimTruth ReadTruth(const std::string& path);

/// Estimated marker position (m) from the data line of orvo's static plot
/// file (-gps), whose marker name must be one word. A file without a data line, a data line commented out with
/// "#" (the adjustment had no solution) or an unreadable one ends the run
/// with the framed error.
SimVec ReadStaticPlot(const std::string& path);

/// Nodes of orvo's troposphere file (-ot), in file order. A missing file or
/// an unreadable node line ends the run with the framed error; a file
/// without nodes gives an empty list.
std::vector<SimTropoNode> ReadTropoFile(const std::string& path);

/// North, east and up components (m) of the Earth-fixed difference d at
/// geodetic latitude lat and longitude lon (rad): the rotation into the
/// local level frame (Hofmann-Wellenhof et al., GNSS, 2008, eq. 10.12).
void NorthEastUp(const SimVec& d, long double lat, long double lon, long double& n,
                 long double& e, long double& u);

/// Zenith wet delay of the truth (m) at the epoch of node, interpolated
/// linearly between the two truth epochs around it. Returns false, and
/// leaves zwd alone, when the node lies outside the truth's epochs.
bool TruthWetDelayAt(const SimTruth& truth, const SimTropoNode& node, long double& zwd);

/// The "--compare" task of orvo-simulate: prints on the output stream the
/// north, east and up difference (m) of the estimated marker of plotPath
/// from the truth of truthPath, and, when tropoPath is not empty, the
/// estimated minus true zenith wet delay of every troposphere node inside
/// the truth's span with their largest absolute value.
void CompareWithTruth(const std::string& truthPath, const std::string& plotPath,
                      const std::string& tropoPath);
