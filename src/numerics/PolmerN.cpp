#include "numerics/PolmerN.h"

#include <cmath>

#include "numerics/Trigonometry.h"

long double PolmerN(long double fi, long double a, long double e)
{
    const long double es = e * trig::Sin(fi);
    return a / std::sqrt((1.0L - es) * (1.0L + es));
}
