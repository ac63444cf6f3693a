#pragma once
// The correction stage: frequency channels, then, once for the whole run,
// the geometry and model values of every observation record.
#include "driver/gCPosC.h"

namespace ApplyCorrectionsns {
/// 2GM/c^2 of the Earth (m), the scale of the relativistic path term
/// (IERS Conventions 2010, eq. 11.17).
constexpr long double Rel2Const = 0.00887005607823534297784L;
/// Added to tan(E) sin(E) in the gradient mapping function (Chen & Herring
/// 1997, J. Geophys. Res. 102(B9)), which keeps it finite at the horizon.
constexpr long double GradMappingC = 0.0032L;
/// Radians to degrees.
constexpr long double Deg = 57.2957795130823208767981548141051703L;
}  // namespace ApplyCorrectionsns

/// Fills the GLONASS frequency tables (GLONASSc) for every GLONASS
/// satellite of the observation file when GLONASS is processed and a
/// channel or navigation file was named. The channel file (isGLNfrch) wins:
/// a satellite takes the channel that it gives at the first observation
/// epoch. Otherwise the first record of the slot in the GLONASS navigation
/// file gives it (column FRQNUM). An unlisted satellite gets channel 0 with
/// a warning on the error stream naming the source it is missing from;
/// slots above 32 have no row in the tables and are skipped with a warning.
/// Each satellite and its channel are listed on the output stream.
void SetGlonassFrequency(gCPosC& gc);

/// Sizes the per-record arrays of gc (nsatall rows; MFGRAD two columns;
/// posSunUnit, SunMag nepochall rows; with isPRCorr the correction print
/// arrays) at their start values and, for every record of a processed
/// system, computes at the observation epoch corrected by the a-priori
/// receiver clock (isClkErr): the satellite position and clock at
/// transmission from the precise orbits (light time, Earth rotation),
/// whether orbit and clock exist (OKSAT), elevation and azimuth (rad) on
/// the system's ellipsoid, the geocentric satellite distance SAT_DIST (m),
/// the relativistic path term REL2 = 2GM/c^2 ln((rs + rr + d)/(rs + rr - d))
/// (m), the weight sin^2(E) with obsP COSZ, and with isTrpModel the slant
/// troposphere (dry only when the wet delay is estimated), the wet mapping
/// value and the gradient mapping values (Chen & Herring 1997). A record
/// without orbit or clock keeps the start values with OKSAT false. With
/// isSkyPlot writes epoch, satellite, elevation and azimuth (degrees) per
/// record with an orbit to skyplotfile; a file that does not open ends the
/// run before anything is computed.
void CalculateAE(gCPosC& gc);

/// Runs SetGlonassFrequency, then CalculateAE. Code biases are not applied:
/// no code bias source (navigation group delay, IONEX, bias files) is read
/// by the program yet.
void ApplyCorrections(gCPosC& gc);
