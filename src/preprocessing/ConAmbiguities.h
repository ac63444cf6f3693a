#pragma once
// Ambiguity connection: consecutive arcs of one satellite that a cycle
// slip cut apart are repaired by the whole cycles of the slip and joined,
// which saves the adjustment one ambiguity per slip.
#include "driver/gCPosC.h"

namespace ConAmbiguitiesns {
/// Largest gap between the end of one arc and the start of the next (s),
/// exclusive: over longer gaps the ionosphere and the geometry drift too
/// far for the step fits below.
inline constexpr long double dtmax = 300.0L;
/// Largest distance of the wide-lane jump from an integer (cycles).
inline constexpr long double MWth = 0.1L;
/// Largest standard deviation of the wide-lane jump (cycles), exclusive.
inline constexpr long double sMWth = 0.15L;
/// Largest distance of the L2 jump from an integer (cycles).
inline constexpr long double L2th = 0.1L;
/// Largest standard deviation of the L2 jump (cycles), exclusive.
inline constexpr long double sL2th = 0.15L;
/// Observations taken from each side of the gap.
inline constexpr long MaxCSObs = 10;
/// Elevation from which an observation has full weight (degrees); below
/// it the weight is 2·sin E.
inline constexpr long double minE = 30.0L;
}  // namespace ConAmbiguitiesns

/// Wide-lane jump dMW between arcs iamb-1 and iamb of gc, in wide-lane
/// cycles of wavelength lWL (m), and its standard deviation sdMW: the
/// weighted means of the Melbourne-Wuebbena combination over the last
/// MaxCSObs non-null values of the earlier arc and the first MaxCSObs of
/// the later. Weight 1 from minE up, 2·sin E below (none at or below the
/// horizon). Returns false, with both 0, when iamb has no earlier arc,
/// a side has fewer than 2 values or no weight, or lWL is not positive.
bool GetMWCSlip(gCPosC& gc, long iamb, long double lWL, long double& dMW, long double& sdMW);

/// L4 jump dL4 (m) between arcs iamb-1 and iamb of gc and its standard
/// deviation sdL4: one quadratic in time (minutes) fitted by weighted
/// least squares through the L4 of the last MaxCSObs epochs of the earlier
/// arc and the first MaxCSObs non-null values of the later, with a step on
/// the later side; weights as GetMWCSlip. Returns false, with both 0, when
/// iamb has no earlier arc, when both sides hold 4 observations or fewer
/// together (no redundancy), or when the normal matrix is singular, which
/// also gives the warning "PROBLEMS INVERTING MATRIX N - SINGULARITY
/// POSSIBILITY!!!" on the error stream.
bool GetL4CSlip(gCPosC& gc, long iamb, long double& dL4, long double& sdL4);

/// Takes dL1 and dL2 whole cycles out of arc iamb of gc: from its non-null
/// L1, L2 (GPS, GLONASS) or L7 (Galileo) in cycles and, through the
/// combinations of the satellite's system (GLC loaded), from its L3, L4 and
/// MW in metres; flags stay. xAmb(iamb) takes the value of arc iamb-1.
/// Does nothing for iamb outside 1 .. nAmb-1 or a satellite whose
/// combination coefficients cannot be loaded.
void RepairAmb(gCPosC& gc, long iamb, long double dL1, long double dL2);

/// Joins every arc i whose flag isFixAmb(i) is set to arc i-1: the joined
/// arc keeps the first arc's start (columns 0 and 1), xAmb and satellite,
/// takes the last arc's end (column 2) and the sum of the counts
/// (column 3). nAmb falls by the number of joins. The flag of arc 0, and
/// flags beyond the rows of isFixAmb, count as unset.
void ConAmbIntervals(gCPosC& gc, matrix<bool>& isFixAmb);

/// Repairs cycle slips between consecutive arcs of one satellite and joins
/// the arcs, when gc.ifL3 and gc.CorrAmbig are set; nothing otherwise.
/// Each pair of arcs of one satellite less than dtmax apart, visited in
/// table order so that a chain of slips is repaired cumulatively, is
/// connected when the wide-lane jump of GetMWCSlip lies within MWth of a
/// whole number with sdMW below sMWth, and the L2 jump derived from it and
/// the L4 jump of GetL4CSlip, (lamb1·dMWF - dL4)/(lamb2 - lamb1), lies
/// within L2th of a whole number with its deviation below sL2th; a jump of
/// at least one cycle is taken out by RepairAmb (L1 dMWF + dL2F, L2 dL2F).
/// Afterwards the counts and xAmb of all arcs are computed anew (L3 minus
/// the solution's code). Reports the pairs and the connected arc table on
/// the output stream. An arc table that does not fit the store ends the
/// run (status 1).
void ConAmbiguities(gCPosC& gc);
