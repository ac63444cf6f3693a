#pragma once
// Vector norms over a leading part of a vector, so that the estimator can
// leave the constraint rows at the end out of its misclosure norm.
#include "numerics/matrix.h"

namespace normns {
/// Kind of norm: 0 sum of magnitudes, 1 Euclidean, 2 p-norm, 1000 largest
/// magnitude, 64536 smallest magnitude. Any other value is reset to 1 with a
/// warning at the next subnorm.
inline int norm = 1;
}  // namespace normns

/// Norm of the first nr elements (in storage order) of the vector A, a
/// matrix with one row or one column, of the kind normns::norm; p is the
/// power of kind 2 and is ignored otherwise. nr = 0 gives 0 for kinds 0, 1
/// and 2; kinds 1000 and 64536 start from |A(0)|. A matrix that is not a
/// vector gives 0 after a framed warning. A 0 by 0 A, or nr negative or
/// beyond the length of A, stops the run.
long double subnorm(const matrix<long double>& A, long nr, long double p);
