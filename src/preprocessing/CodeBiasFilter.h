#pragma once
// The bias between the two codes of one frequency (P1 - C1, P2 - C2) is a
// constant of the satellite and receiver: its mean over the day, screened
// for blunders, lets the two codes be merged into one on a single datum.
#include "driver/gCPosC.h"

namespace CodeBiasFilterns {
/// Code differences beyond this (m) stay out of the first mean.
inline constexpr long double Outlier_m = 50.0L;
/// Elevations below this (deg) weigh as this one: p = sin^2 E is never
/// below 0.25.
inline constexpr long double MinWeightElevation_deg = 30.0L;
}  // namespace CodeBiasFilterns

/// Weight sin^2 E of record k at its elevation E, held at 30 degrees or
/// more.
long double CodeWeight(const gCPosC& gc, long k);

/// With doCopyFilterC, an ionosphere-free solution type (ifPc3, ifPp3 or
/// ifL3) and a header holding C1 and P1: per satellite of a system in use,
/// the weighted mean x of P1 - C1 over the records with both (first from
/// those within 50 m, then from all that pass the test of the standardised
/// residual against P3OutliersThres; a failing record loses both codes),
/// then C1 = P1 - x where only P1 exists and C1 = (C1 + P1 - x)/2 where both
/// do. Prints the biases (m), their deviations, counts and the precisions.
void C1P1Filter(gCPosC& gc);

/// The twin of C1P1Filter on P2 - C2, merging into P2: P2 = C2 + x where
/// only C2 exists, P2 = (C2 + P2 + x)/2 where both do.
void C2P2Filter(gCPosC& gc);
