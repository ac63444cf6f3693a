#pragma once
// The static batch adjustment: one equation per observation, the epoch
// clocks pre-eliminated epoch by epoch, the reduced system solved by LU and
// the state updated until the corrections fall below the threshold.
#include <string>

#include "driver/gCPosC.h"
#include "estimation/NormalSystem.h"

/// Static least-squares solution of gc on the layout of SetUnknowns:
/// iterates (at most MaxIter solves, until the correction norm falls below
/// IterThres m) over all epochs and records above the cut-off, with precise
/// orbits (and clocks), forming code and L3 equations of the types switched
/// on; satellites from the navigation file of their system when one was
/// given (healthy records only), else from the precise orbits and clocks;
/// updates RecPosFC, RecPosEst, dtAll, dtGNSS, code biases, troposphere,
/// ambiguities, xAll, QxxAll and the a-posteriori variances, and prints the
/// iteration log and the reference standard deviations. When no observation
/// entered, the run ends with the framed error naming the reason
/// (NoObservationReason), and without redundancy with its own framed error,
/// before any result is written.
void ProcStatic(gCPosC& gc);

/// Why no observation could enter the adjustment: no record of a processed
/// system has an orbit and clock, none of those stands above the cut-off,
/// or none of them has an observation of the chosen types.
std::string NoObservationReason(const gCPosC& gc);
