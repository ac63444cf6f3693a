#include "delays/MappingFraction.h"

#include <cmath>

#include "numerics/Trigonometry.h"

long double MappingFractionOfSine(long double a, long double b, long double c, long double sinE)
{
    const long double s = sinE;
    return (1.0L + a / (1.0L + b / (1.0L + c))) / (s + a / (s + b / (s + c)));
}

long double MappingFraction(long double a, long double b, long double c,
                            long double E_rad)
{
    return MappingFractionOfSine(a, b, c, trig::Sin(E_rad));
}

long double NiellHeightCorrectionOfSine(long double h_m, long double sinE, long double aht, long double bht,
                                        long double cht)
{
    return (h_m / 1000.0L) * (1.0L / sinE - MappingFractionOfSine(aht, bht, cht, sinE));
}

long double NiellHeightCorrection(long double h_m, long double E_rad,
                                  long double aht, long double bht,
                                  long double cht)
{
    return NiellHeightCorrectionOfSine(h_m, trig::Sin(E_rad), aht, bht, cht);
}
