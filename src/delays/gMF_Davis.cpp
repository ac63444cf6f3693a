#include "delays/gMF_Davis.h"

#include "delays/stdAtm.h"
#include "numerics/Trigonometry.h"

#include <cmath>

gMF_Davis::gMF_Davis()
{
    using namespace stdAtm;
    alpha = -5.93L - 0.0359L * T0;
    a = 0.001185L * (1.0L + 0.00006071L * (p0 - 1000.0L) - 0.0001471L * e0
                     + 0.003072L * (T0 - 20.0L) + 0.01965L * (alpha + 6.5L));
    b = 0.001144L * (1.0L + 0.00001164L * (p0 - 1000.0L) + 0.0002795L * e0
                     + 0.003109L * (T0 - 20.0L) + 0.03038L * (alpha + 6.5L));
    c = -0.009L;
}

void gMF_Davis::GetMappFunction(gTropDelay& td, long double E) const
{
    const long double s = trig::Sin(E);
    td.mfdry = 1.0L / (s + a / (std::tan(E) + b / (s + c)));
    td.mfwet = td.mfdry;
}
