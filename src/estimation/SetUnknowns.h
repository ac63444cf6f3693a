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
/// Square unknown-by-unknown long double matrices alive at once at the
/// solve: Nc, Nt, NFin, QxxAll, the two triangles of the LU factors (one
/// square together), the factorisation's working copy and the inverse
/// before it is moved into QxxAll.
constexpr long double DenseCopies = 7.0L;
/// Memory (bytes) the adjustment may take: 2 GiB, half of a 4 GiB machine,
/// the smallest one a day is meant to run on. It admits some 4300
/// unknowns, whose LU solve (n^3/3 multiplications) and per-epoch clock
/// elimination (n^2 per epoch) already take minutes per iteration.
constexpr long double MaxAdjustmentBytes = 2147483648.0L;
/// Troposphere nodes that SetTropoIntervals forms at most: the count of
/// unknowns that MaxAdjustmentBytes admits, so that a direct call can never
/// allocate beyond it.
constexpr long MaxTropoNodes = 4096;
}  // namespace SetUnknownsns

/// Decides the unknowns of the static adjustment of gc and their columns:
/// coordinates (0..2), inter-system clock biases, satellite code biases,
/// troposphere delay and gradient nodes, L3 ambiguities; builds the
/// troposphere time nodes, writes the code bias constraint rows into NFin
/// and sizes every estimator array (all zero, IsUnkOK true). Prints the
/// counts. Epoch clocks are counted in NClk (rnxd.NOKEph) but get no column:
/// they are pre-eliminated. A file without epochs, a troposphere interval or
/// shift that SetTropoIntervals refuses, or sizes that CheckUnknownSizes
/// refuses end the run with the framed error before anything is allocated.
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
/// Fills tropoEpochs (nTEpochs rows). A tI not above 0 or not finite, a tS
/// not finite or not smaller than tI in size, eE before eS, or more than
/// MaxTropoNodes nodes end the run with the framed error.
void SetTropoIntervals(mjd& eS, mjd& eE, long double tI, long double tS,
                       matrix<mjd>& tropoEpochs, long int& nTEpochs);

/// Number of nodes SetTropoIntervals would form for eS..eE, tI, tS (s),
/// without forming them; limit + 1 for any count above limit (>= 1), so
/// that no huge count is ever formed. Ends the run as SetTropoIntervals
/// does on a bad interval, shift or span.
long TropoNodeCount(const mjd& eS, const mjd& eE, long double tI, long double tS, long limit);

/// Bytes of the static adjustment for nUnk unknowns over nEpochs epochs:
/// DenseCopies square nUnk x nUnk long double matrices and the
/// nEpochs x nUnk block of the clock elimination (N21).
long double AdjustmentBytes(long double nUnk, long double nEpochs);

/// Checks, before anything of that size is allocated, what the options
/// multiply against the data of gc.rnxd: with -ti, no more zenith delay
/// intervals than epochs; with -tg, no more gradient intervals than delay
/// intervals; and AdjustmentBytes of all unknowns (coordinates, system
/// biases, gc.NUnkDCB and gc.ndcbConstr, troposphere and gradient nodes,
/// nAmb ambiguities) within MaxAdjustmentBytes. A breach ends the run with
/// the framed error naming the option.
void CheckUnknownSizes(const gCPosC& gc, long nAmb);

/// Writes into NFin, behind the NUnk columns, one bordering row and column
/// per system with code bias unknowns (GPS, GLONASS, Galileo in that
/// order): 1 at each code bias of that system, so that the Lagrange
/// multiplier holds their sum at zero. Diagonal and right side stay 0.
void SetDCBConstraints(gCPosC& gc);
