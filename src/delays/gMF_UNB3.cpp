#include "delays/gMF_UNB3.h"

#include "delays/MappingFraction.h"
#include "numerics/Trigonometry.h"

#include <cmath>

void gMF_UNB3::SetAtmParams(const flh& pos)
{
    const long double cf = trig::Cos(pos.f);
    ad = (1.18972L - 0.000026855L * pos.h + 0.10664L * cf) / 1000.0L;
    bd = 0.0035716L;
    cd = 0.082456L;
    aw = (0.6112L - 0.000035348L * pos.h - 0.01526L * cf) / 1000.0L;
    bw = 0.0018576L;
    cw = 0.062741L;
}

void gMF_UNB3::GetMappFunction(gTropDelay& td, long double E) const
{
    td.mfdry = MappingFraction(ad, bd, cd, E);
    td.mfwet = MappingFraction(aw, bw, cw, E);
}
