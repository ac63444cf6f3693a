#pragma once
// The epoch-by-epoch solution that follows the static one: position and
// clock corrections per epoch from the rows and misclosures that the last
// static iteration stored; troposphere, ambiguities and code biases stay
// at their static values.
#include "driver/gCPosC.h"

namespace ProcKinematicns {
/// Metres of range to microseconds of clock: 1e6 / c.
inline constexpr long double multip = 0.00333564095198152049574L;
/// A diagonal below this marks a clock column without observations: it is
/// set to 1 and not counted among the unknowns.
inline constexpr long double FreeDiag = 1e-6L;
/// Unknowns of an epoch: dX, dY, dZ, then the clocks of GPS, GLONASS, Galileo.
inline constexpr int NUnkEpoch = 6;
}  // namespace ProcKinematicns

/// Adds one equation to the upper triangle of the epoch system N (6 by 6),
/// t: position coefficients bx, by, bz, clock coefficient -1 in column ixT,
/// misclosure f (m), weight p; ff collects f p f. The clock columns do not
/// couple with each other.
void SetNormalSystem(matrix<long double>& N, matrix<long double>& t, long double& bx,
                     long double& by, long double& bz, long double& f, long double& p,
                     long double& ff, int& ixT);

/// With gc.ifEstKin, solves every epoch on its own from the stored rows
/// (mB) and misclosures of the used, not rejected observations: the
/// position correction to RecPosEst and one clock correction per system.
/// Prints one line per epoch on the output stream (an empty line for an
/// epoch with 3 or fewer observations) and, with isGNUPlotKin, one line in
/// the file gnuplotKin with the local north, east, up corrections as well.
/// Leaves Nc, tc, QxxAll, vtPv, s0apost and the observation counters with
/// the values of the last solved epoch: it runs after the static reports.
/// Without the stored rows the run ends (status 1). Nothing without ifEstKin.
void ProcKinematic(gCPosC& gc);
