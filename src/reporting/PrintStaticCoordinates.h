#pragma once
// The estimated station position: Earth-centred and geodetic tables.
#include "driver/gCPosC.h"
#include "numerics/matrix.h"

/// Prints the ECEF table (a-priori marker RecPos0, correction xAll(0..2),
/// estimate RecPosEst, precision from the diagonal of QxxAll) and the
/// geodetic table (latitude and longitude as degrees, minutes, seconds with
/// 5 decimals, height in metres; corrections RecPosCorrG north, east, up in
/// metres; precisions from the diagonal of Qddg, the 3 x 3 cofactor matrix
/// of the position rotated into north, east, up). Precisions are
/// sqrt(Q * s0apost) in metres. Qddg must be at least 3 x 3; QxxAll too
/// (see CheckStaticSolution).
void PrintStaticCoordinates(const gCPosC& gc, const matrix<long double>& Qddg);
