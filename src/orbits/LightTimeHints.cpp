#include "orbits/LightTimeHints.h"

#include <cmath>

#include "numerics/MathConstants.h"

long double LightTimeHints::Predict(short sat, const mjd& t) const
{
    if (sat < 0 || sat >= Numbers || !last[sat].kept) return 0.0L;
    const Solution& s = last[sat];
    const long double age = t - s.t;
    if (!(std::fabs(age) <= MaxAge_s)) return 0.0L;
    return s.tau + (s.rate + 0.5L * s.change * age) * age;
}

void LightTimeHints::Keep(short sat, const mjd& t, long double tau, const xyz& prec, const xyzt& psat,
                          const xyzt& vsat)
{
    if (sat < 0 || sat >= Numbers) return;
    const long double dx = prec.x - psat.x, dy = prec.y - psat.y, dz = prec.z - psat.z;
    const long double dist = std::sqrt(dx * dx + dy * dy + dz * dz);
    // The range shrinks as the satellite moves towards the receiver.
    const long double rate = dist > 0.0L ? -(dx * vsat.x + dy * vsat.y + dz * vsat.z) / (dist * SpeedOfLight_mps) : 0.0L;
    // The rate's change from the solution before, where there is one near.
    const Solution& before = last[sat];
    const long double step = before.kept ? t - before.t : 0.0L;
    const long double change = step != 0.0L && std::fabs(step) <= MaxAge_s ? (rate - before.rate) / step : 0.0L;
    last[sat] = {t, tau, rate, change, true};
}
