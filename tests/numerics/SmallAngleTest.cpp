// The series sine and cosine against the library's, over the Earth's turn
// during a signal's flight, at the series' bound and beyond it.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "NearLD.h"
#include "numerics/SmallAngle.h"

// Both sides round to long double (LDBL_EPSILON 1.1e-19): two units of the
// last place of the result. A wrong series coefficient misses by a^3/30 at
// the bound, 3e-11.
TEST(SmallAngle, SeriesMatchesTheLibraryToRounding)
{
    const long double angles[] = {0.0L, 5.5e-6L, -5.5e-6L, 7.3e-5L, 1e-4L, 1e-3L, -1e-3L, 2e-3L, 0.7L};
    for (long double a : angles) {
        long double s = 0.0L, c = 0.0L;
        SinCosOfSmallAngle(a, s, c);
        EXPECT_NEAR_LD(s, std::sin(a), 2.0L * LDBL_EPSILON * std::fabs(std::sin(a))) << a;
        EXPECT_NEAR_LD(c, std::cos(a), 2.0L * LDBL_EPSILON) << a;
    }
}
