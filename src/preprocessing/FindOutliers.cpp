#include "preprocessing/FindOutliers.h"

#include <cmath>

long double FindOutliers(long double* f, bool* fo, long& n, long double ThresBlunder)
{
    // An empty sample has no mean; dividing by zero would hand NaN on and
    // the stop test below would never hold.
    if (n <= 0) return 0.0L;

    long double favg = 0.0L;
    for (long j = 0; j < n; ++j) favg += f[j];
    favg /= static_cast<long double>(n);

    // The flags are those of the last round's mean: set once, after the
    // rounds (some forty on real data), not in every one.
    long double flagMean = favg;
    for (long round = 0; round < FindOutliersns::MaxRounds; ++round) {
        long double sumfp = 0.0L, sump = 0.0L;
        for (long j = 0; j < n; ++j) {
            const long double v = f[j] - favg;
            const long double pb = 1.0L / (v * v + 1.0L);
            sumfp += f[j] * pb;
            sump += pb;
        }
        flagMean = favg;
        const long double favg1 = sumfp / sump;
        // Values so far apart that every weight underflows, or a NaN among
        // them, give no better mean than the one at hand.
        if (!std::isfinite(favg1)) break;
        if (std::fabs(favg - favg1) < FindOutliersns::MeanChangeStop_m) break;
        favg = favg1;
    }
    for (long j = 0; j < n; ++j) fo[j] = std::fabs(f[j] - flagMean) > ThresBlunder;
    return favg;
}
