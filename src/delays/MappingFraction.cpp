#include "delays/MappingFraction.h"

#include <cmath>

long double MappingFraction(long double a, long double b, long double c,
                            long double E_rad)
{
    const long double s = std::sin(E_rad);
    return (1.0L + a / (1.0L + b / (1.0L + c))) / (s + a / (s + b / (s + c)));
}

long double NiellHeightCorrection(long double h_m, long double E_rad,
                                  long double aht, long double bht,
                                  long double cht)
{
    return (h_m / 1000.0L)
           * (1.0L / std::sin(E_rad) - MappingFraction(aht, bht, cht, E_rad));
}
