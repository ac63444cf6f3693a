#pragma once
// The normal equations of the static adjustment: one equation at a time
// into the global part and the epoch clock rows, the epoch clock's
// reduction term, and the lookups of a design row's columns.
#include "geodesy/mjd.h"
#include "numerics/MathConstants.h"
#include "numerics/matrix.h"

namespace ProcStaticns {
/// Speed of light (m/s).
constexpr long double C_mps = SpeedOfLight_mps;
/// Squared ratio f1/f2 of GPS L1/L2 (1575.42/1227.60 MHz): scales the L1
/// ionosphere delay to L2.
constexpr long double AlphaGPS = 1.64694444444444476616L;
/// Squared ratio f1/f7 of Galileo E1/E5b (1575.42/1207.14 MHz).
constexpr long double AlphaGAL = 1.70324619362252249744L;
/// An epoch whose summed weight is at or below this adds no reduction term:
/// it has no accepted equation (weights are of order 1e-4 and up).
constexpr long double ElimMinWeight = 1e-12L;
/// An unknown whose reduced diagonal is below this has no observations; it
/// is fixed by a unit diagonal instead of making the system singular.
constexpr long double UndefDiag = 1e-6L;
/// An epoch whose summed weight is below this gets no clock solution.
constexpr long double ClockMinWeight = 1e-5L;
/// Slots of a design row: 3 coordinates, system bias, code bias,
/// ambiguity, 2 delay, 2 north and 2 east gradient nodes.
constexpr int NSlots = 12;
/// Largest distance (m) between the a-priori position and the estimate for
/// which the site models, computed once at the a-priori position, still
/// hold: moving the a-priori of a real day (ESBC) along its parallel by
/// 100 km moved the estimate by 0.14 m, about 1.4 mm per km, so 100 m costs
/// some 0.1 mm.
constexpr long double MaxAprioriOffset_m = 100.0L;
}  // namespace ProcStaticns

/// Adds one equation (row B with columns iB, -1 marking empty slots,
/// misclosure f computed minus observed in m, weight p) of epoch ieph to the
/// normal system N, t of the global unknowns (upper triangle of N) and to
/// the epoch's clock rows: N22(ieph) += p, t2(ieph) -= f p and
/// N21(ieph, iB) -= B p, the clock having coefficient -1.
void SetCRDNormalSystem(matrix<long double>& N, matrix<long double>& t, long double* B,
                        long double& f, long double& p, long int* iB, matrix<long double>& N21,
                        matrix<long double>& N22, matrix<long double>& t2, long int& ieph);

/// Adds the reduction term of the finished epoch ieph to N (upper triangle
/// of N21^T N21 / N22) and t (t2 N21 / N22) over the first nunk unknowns;
/// subtracted later from the full system, it eliminates the epoch clock.
/// An epoch with |N22| not above ProcStaticns::ElimMinWeight adds nothing.
void SetElimNormalSystem(matrix<long double>& N, matrix<long double>& t, matrix<long double>& N21,
                         matrix<long double>& N22, matrix<long double>& t2, long int& ieph,
                         long int& nunk);

/// Code bias column of satellite prn: walks the first nsat entries of
/// prnList; k becomes its position and ixdcb ixbSAT(k). Both are -1 when
/// the satellite is not listed, ixdcb also when it has no column.
void GetIndexSatDCB(short& prn, matrix<short>& prnList, matrix<long>& ixbSAT, long& nsat,
                    long& ixdcb, long& k);

/// Interval itro of the node list TI that holds the epoch ieph:
/// TI(itro) <= ieph < TI(itro + 1); -1 when ieph lies before the first or
/// at/after the last node.
void GetTropoIndex(mjd& ieph, matrix<mjd>& TI, long& itro);

