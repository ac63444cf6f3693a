#pragma once
// Counts of the static adjustment: iterations, epochs, observations,
// outliers, unknowns and redundancy.
#include "driver/gCPosC.h"

/// Share of rejected observations in per cent: 100 * outliers / observations,
/// and 0 when there are no observations (nothing was rejected from nothing).
long double OutlierShare(long outliers, long observations);

/// Degrees of freedom of the static adjustment: NObs - NUnk - NClk +
/// ndcbConstr + NUnkUndef (each code bias constraint and each unknown fixed
/// for want of observations gives one back).
long StaticRedundancy(const gCPosC& gc);

/// Prints the counter block of the static report on the output stream:
/// iterations with the last correction norm, epochs, observations and
/// outliers per system with their shares, then the unknowns by kind, the
/// epoch clocks, constraints, undetermined unknowns and the redundancy,
/// each block closed by an empty line. Leaves the stream in fixed notation.
void PrintStaticCounters(const gCPosC& gc);
