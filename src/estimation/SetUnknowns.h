#pragma once
// The layout of the static adjustment: which unknowns exist and which
// column of the normal equations each one owns. Fixed once before the
// adjustment; the solution only fills it.
#include "driver/gCPosC.h"
#include "geodesy/mjd.h"
#include "numerics/matrix.h"

namespace SetUnknownsns {
/// A code bias is estimated only for a satellite with at least this many
/// usable records of the kind: fewer leave the bias and the clocks of those
/// epochs inseparable in practice.
constexpr long MinDCBRecords = 3;
}  // namespace SetUnknownsns

/// Decides the unknowns of the static adjustment of gc and their columns:
/// coordinates (0..2), inter-system clock biases, satellite code biases,
/// troposphere delay and gradient nodes, L3 ambiguities; builds the
/// troposphere time nodes, writes the code bias constraint rows into NFin
/// and sizes every estimator array (all zero, IsUnkOK true). Prints the
/// counts. Epoch clocks are counted in NClk (rnxd.NOKEph) but get no column:
/// they are pre-eliminated. A file without epochs, or a troposphere interval
/// that is not positive, ends the run with the framed error.
void SetUnknowns(gCPosC& gc);

/// Gives each satellite of rnxd.satList a code bias column for the kinds
/// C1, P1, P2, Pc3, Pp3 whose flag is set and whose observable the header
/// has, when its system estimates code biases and it has at least three
/// records above the elevation cut-off with orbit and a non-null value.
/// `ix` is the last column used so far and is advanced; ixdcb... hold -1
/// where no column is given. Sets isDCB_Gc/Rc/Ec and ndcbConstr.
void SetUnknowns_SatDCB(gCPosC& gc, long int& ix);

/// Time nodes of a piecewise-linear troposphere over the span eS..eE: the
/// first node is the last multiple of tI (s), shifted by tS (s), on the day
/// of eS that is not after eS; then one node every tI until a node lies
/// strictly after eE, so every epoch of the span lies in [node k, node k+1).
/// Fills tropoEpochs (nTEpochs rows). A tI not above 0 or not finite, or
/// eE before eS, ends the run with the framed error.
void SetTropoIntervals(mjd& eS, mjd& eE, long double tI, long double tS,
                       matrix<mjd>& tropoEpochs, long int& nTEpochs);

/// Writes into NFin, behind the NUnk columns, one bordering row and column
/// per system with code bias unknowns (GPS, GLONASS, Galileo in that
/// order): 1 at each code bias of that system, so that the Lagrange
/// multiplier holds their sum at zero. Diagonal and right side stay 0.
void SetDCBConstraints(gCPosC& gc);
