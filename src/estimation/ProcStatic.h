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

/// The troposphere slots (6 to 11) of the design rows of an epoch: the
/// columns of the zenith delay, north and east gradient nodes either side
/// of the epoch (-1 where it has none), the nodes' linear weights at the
/// epoch, and the delays (m, before mapping) that the present estimates
/// give there.
struct TropoSlots {
    long col[6] = {-1, -1, -1, -1, -1, -1};
    long double factor[6] = {};
    long double zenith = 0.0L, north = 0.0L, east = 0.0L;
};

/// The troposphere slots of the epoch t on the node lists of gc.
TropoSlots EpochTropoSlots(gCPosC& gc, mjd& t);

/// The design row of record k (system sys) as the static adjustment last
/// formed it, over ProcStaticns::NSlots slots with their columns (-1 for
/// none): the direction cosines it stored in gc.mB, the system bias, and
/// the epoch's troposphere slots times the record's mapping values; slots 4
/// and 5 (code bias, ambiguity) are left without a column.
void StoredDesignRow(const gCPosC& gc, long k, int sys, const TropoSlots& tropo,
                     long double (&b)[ProcStaticns::NSlots], long (&col)[ProcStaticns::NSlots]);

/// Why no observation could enter the adjustment: no record of a processed
/// system has an orbit and clock, none of those stands above the cut-off,
/// or none of them has an observation of the chosen types.
std::string NoObservationReason(const gCPosC& gc);
