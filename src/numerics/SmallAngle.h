#pragma once
// Sine and cosine of the angles the Earth turns through while a signal is
// in flight (about 5e-6 rad): the library's long double sine and cosine cost
// a hundred times more than the few terms of their series that such an
// angle needs.
#include <cmath>

#include "numerics/Trigonometry.h"

namespace smallanglens {
/// Largest angle (rad) summed by its series: the first terms left out,
/// a^9/9! and a^8/8!, are then below 1e-27 against results of order a and 1,
/// far below the rounding of long double (5e-20 relative).
inline constexpr long double MaxSeriesAngle_rad = 1e-3L;
/// The series' factors as reciprocals: a product costs a fraction of a
/// division. Their rounding (5e-20 relative) enters a term below a2/6, so
/// that a result of order 1 moves by under 1e-26 (at the bound): a last
/// bit then flips in some ten million evaluations.
inline constexpr long double Inv6 = 1.0L / 6.0L, Inv12 = 1.0L / 12.0L, Inv20 = 1.0L / 20.0L,
                             Inv30 = 1.0L / 30.0L, Inv42 = 1.0L / 42.0L;
}  // namespace smallanglens

/// Sine s and cosine c of angle a (rad); by their Taylor series up to a^7
/// and a^6 where |a| <= smallanglens::MaxSeriesAngle_rad, by trig::SinCos
/// elsewhere.
inline void SinCosOfSmallAngle(long double a, long double& s, long double& c)
{
    if (!(std::fabs(a) <= smallanglens::MaxSeriesAngle_rad)) {
        trig::SinCos(a, s, c);
        return;
    }
    using namespace smallanglens;
    const long double a2 = a * a;
    s = a * (1.0L - a2 * Inv6 * (1.0L - a2 * Inv20 * (1.0L - a2 * Inv42)));
    c = 1.0L - a2 * 0.5L * (1.0L - a2 * Inv12 * (1.0L - a2 * Inv30));
}
