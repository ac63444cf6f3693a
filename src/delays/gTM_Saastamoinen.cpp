#include "delays/gTM_Saastamoinen.h"

#include "delays/stdAtm.h"

#include <algorithm>
#include <cmath>

void gTM_Saastamoinen::SetAtmParams(const flh& pos)
{
    using namespace stdAtm;
    const long double dh = pos.h - h0;
    // Above 44 km the base turns negative and the power would be NaN.
    const long double base = std::max(0.0L, 1.0L - 0.0000226L * dh);
    p = p0 * std::pow(base, 5.225L);
    T = T0 - 0.0065L * dh + 273.16L;
    H = H0 * std::exp(-0.0006369L * dh);
    e = WaterVapourPressure(H, T);
    g = GravityFactor(pos.f, pos.h);
}

void gTM_Saastamoinen::GetZenithDelay(gTropDelay& td) const
{
    td.tdry = stdAtm::SaastamoinenDry(p, g);
    td.twet = stdAtm::SaastamoinenWet(T, e, g);
}
