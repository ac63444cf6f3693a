#include "delays/gMF_Chao.h"

#include <cmath>

#include "numerics/Trigonometry.h"

void gMF_Chao::GetMappFunction(gTropDelay& td, long double E) const
{
    const long double s = trig::Sin(E);
    const long double t = std::tan(E);
    td.mfdry = 1.0L / (s + 0.00143L / (t + 0.0445L));
    td.mfwet = 1.0L / (s + 0.00035L / (t + 0.0017L));
}
