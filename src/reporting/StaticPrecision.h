#pragma once
// A-posteriori standard deviations of the static solution.

/// Standard deviation sqrt(q * s0apost) of an unknown whose cofactor is q
/// (diagonal of QxxAll or of its local rotation) with the a-posteriori
/// variance of unit weight s0apost (m^2); metres for metric unknowns. A
/// negative product has no root and gives NaN, which the report prints as
/// such: it flags a failed solution instead of hiding it.
long double StaticPrecision(long double q, long double s0apost);
