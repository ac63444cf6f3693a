#pragma once
// Gauss-Jordan inverse for the small systems of the ambiguity connection
// and the kinematic solution. A singular matrix is not a stop here: the
// caller reads invns::IsSingular where it matters.
#include "numerics/matrix.h"

namespace invns {
/// Entries and pivots whose magnitude is below this count as zero.
inline constexpr long double thres = 1e-14L;
/// Cleared by every call of inv, set when it gave up on a singular matrix.
inline bool IsSingular = false;
}  // namespace invns

/// Inverse of the square matrix M by Gauss-Jordan elimination with partial
/// pivoting (the first of equal candidates wins). With dim of 0 or above
/// only the leading dim by dim block is inverted. A 1 by 1 input gives its
/// reciprocal with no test (infinite for 0). A zero pivot column sets
/// invns::IsSingular and returns the partly reduced unit matrix without a
/// message; a last pivot below invns::thres does the same after the framed
/// warning. A dim beyond the shape, a non-square or a 0 by 0 matrix stops
/// the run.
matrix<long double> inv(const matrix<long double>& M, long dim = -1);
