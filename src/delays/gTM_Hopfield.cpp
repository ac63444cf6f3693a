#include "delays/gTM_Hopfield.h"

#include "delays/stdAtm.h"

void gTM_Hopfield::SetAtmParams(const flh& pos)
{
    T = stdAtm::T0 - 0.0065L * (pos.h - stdAtm::h0);
}

void gTM_Hopfield::GetZenithDelay(gTropDelay& td, const flh& pos) const
{
    using namespace stdAtm;
    const long double Hd = 148.72L * T + 40136.0L;
    const long double g = GravityFactor(pos.f, pos.h);
    const long double Ts = T0 + 273.16L;
    td.tdry = K1 * 1e-5L * p0 / Ts * Hd / g;
    td.twet = (-0.0282L * e0 / Ts + 830.72L * e0 / Ts / Ts) / g;
}
