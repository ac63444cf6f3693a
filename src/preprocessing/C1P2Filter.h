#pragma once
// The second-frequency code against the first: their difference drifts with
// the ionosphere, so it is fitted per arc by a low-degree polynomial in time
// and the second code of a record far off the fit is removed.
#include "driver/gCPosC.h"

namespace C1P2Filterns {
/// Differences beyond this (m) stay out of the fit.
inline constexpr long double Outlier_m = 50.0L;
/// A record further than this (s) from the previous one opens a new arc.
inline constexpr long double ArcGap_s = 3600.0L;
/// Standardised residuals beyond this reject the second code.
inline constexpr long double Threshold = 4.0L;
}  // namespace C1P2Filterns

/// Adds observation y at abscissa x with weight p to the normal equations
/// N (r+1 square), t (r+1 by 1) of a polynomial of degree r (0 to 2, the
/// highest power first), and y^2 p to fpf.
void UpdateNormalSystem(long double x, long double y, long double p, long r,
                        matrix<long double>& N, matrix<long double>& t, long double& fpf);
/// Takes the amounts of UpdateNormalSystem off again.
void ReduceNormalSystem(long double x, long double y, long double p, long r,
                        matrix<long double>& N, matrix<long double>& t, long double& fpf);
/// The polynomial X of degree r (highest power first) at x, minus y.
long double GetResidual(long double y, long double x, const matrix<long double>& X, long r);
/// Cofactor of that residual for weight p: 1/p less the cofactor of the
/// fitted value, the cross terms written with both off-diagonal entries of
/// QX and the factor 2 (for a symmetric QX they count twice what the
/// textbook 1/p - a' QX a has).
long double GetResidualQ(long double p, long double x, const matrix<long double>& QX, long r);

/// With an ionosphere-free solution type (ifPc3, ifPp3 or ifL3) and a
/// header holding C1 and P2 or C7: per satellite of a system in use, arcs
/// of the records with C1 and the second code (P2; C7 for Galileo), cut at
/// gaps over ArcGap_s; per arc a polynomial of P2 - C1 (C7 - C1) in hours,
/// degree 0 up to 1 h, 1 up to 4 h, 2 beyond, fitted with weights sin^2 E
/// (E at least 30 deg) to the differences within Outlier_m; a record whose
/// standardised residual exceeds Threshold loses its second code. An arc
/// with no more observations than unknowns is not fitted, one without
/// redundancy after that rejects nothing. Prints the arcs and totals.
void C1P2Filter(gCPosC& gc);
