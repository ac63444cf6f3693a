#pragma once
// The static batch adjustment: one equation per observation, the epoch
// clocks pre-eliminated epoch by epoch, the reduced system solved by LU and
// the state updated until the corrections fall below the threshold.
#include "driver/gCPosC.h"
#include "estimation/NormalSystem.h"

/// Static least-squares solution of gc on the layout of SetUnknowns:
/// iterates (at most MaxIter solves, until the correction norm falls below
/// IterThres m) over all epochs and records above the cut-off, with precise
/// orbits (and clocks), forming code and L3 equations of the types switched
/// on; updates RecPosFC, RecPosEst, dtAll, dtGNSS, code biases, troposphere,
/// ambiguities, xAll, QxxAll and the a-posteriori variances, and prints the
/// iteration log and the reference standard deviations. Broadcast orbits
/// are not handled here: without a precise orbit file no record is used.
void ProcStatic(gCPosC& gc);
