#pragma once
// Melbourne-Wuebbena screening of the arcs: the wide-lane ambiguity is
// constant over an arc, so an MW value far from the arc's mean betrays a
// code blunder or an undetected slip, and the phase of that epoch goes.
#include "driver/gCPosC.h"

namespace MWAmbiguitiesns {
/// Elevation (degrees) from which an observation has full weight; below
/// it the weight is 2·sin(elevation), 1 at 30°.
inline constexpr long double FullWeightElev_deg = 30.0L;
/// Variance factor of the narrow-lane code in MW, (f1² + f2²)/(f1 + f2)²
/// for GPS: turns the MW precision into that of one code.
inline constexpr long double NarrowLaneCodeVariance = 0.507698865149981347215L;
}  // namespace MWAmbiguitiesns

/// Screens the Melbourne-Wuebbena combination (m) of every arc when
/// gc.ifL3 is set; nothing otherwise. An observation takes part when it is
/// of the arc's satellite, its MW is not null and ELV is above MinElevation
/// (degrees). Its weight is 1 from 30° of elevation up and 2·sin(ELV)
/// below. An observation whose standardised residual from the arc's mean
/// exceeds MWOutliersThres loses L1, L2 (GPS, GLONASS) or L7 (Galileo), L3,
/// L4, PC3 and PP3 (those the header holds); MW stays. Prints per arc the
/// float wide-lane ambiguity and its standard deviation in wide-lane cycles
/// and the outliers, then the totals, on the output stream; an arc with no
/// observation prints dashes, one with a single observation its value and
/// "-.----" for the deviation, and a precision without redundancy prints
/// "-.--". The arc table is not changed. An arc table or per-record arrays
/// that do not fit the store end the run (status 1).
void MWAmbiguities(gCPosC& gc);
