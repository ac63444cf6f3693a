#include "delays/gMF_Marini.h"

#include <cmath>

#include "numerics/Trigonometry.h"

void gMF_Marini::SetAtmParams(const flh& pos)
{
    // 0.0028 per km here, ten times the delay models' factor: kept as the
    // function was published with it.
    g = 1.0L - 0.0026L * trig::Cos(2.0L * pos.f) - 0.0028L * pos.h / 1000.0L;
    ksi = 0.02644L * std::exp(-0.14372L * pos.h / 1000.0L) / g;
}

void gMF_Marini::GetMappFunction(gTropDelay& td, long double E) const
{
    const long double s = trig::Sin(E);
    td.mfdry = (1.0L + ksi) / (s + (ksi / (1.0L + ksi)) / (s + 0.015L));
    td.mfwet = td.mfdry;
}
