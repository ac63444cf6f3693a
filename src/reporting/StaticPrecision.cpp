#include "reporting/StaticPrecision.h"

#include <cmath>

long double StaticPrecision(long double q, long double s0apost)
{
    return std::sqrt(q * s0apost);
}
