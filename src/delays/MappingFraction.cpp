#include "delays/MappingFraction.h"

#include <cmath>

#include "numerics/Trigonometry.h"

namespace {

long double Numerator(long double a, long double b, long double c) { return 1.0L + a / (1.0L + b / (1.0L + c)); }

long double Denominator(long double a, long double b, long double c, long double s) { return s + a / (s + b / (s + c)); }

// The height correction of the fraction f at sin E.
long double Height(long double h_m, long double sinE, long double f) { return (h_m / 1000.0L) * (1.0L / sinE - f); }

}  // namespace

long double MappingFractionOfSine(long double a, long double b, long double c, long double sinE)
{
    return Numerator(a, b, c) / Denominator(a, b, c, sinE);
}

long double MappingNumerator::Of(long double a, long double b, long double c)
{
    if (!set_ || a != a_ || b != b_ || c != c_) {
        a_ = a;
        b_ = b;
        c_ = c;
        top_ = Numerator(a, b, c);
        set_ = true;
    }
    return top_;
}

long double MappingNumerator::Fraction(long double a, long double b, long double c, long double sinE)
{
    return Of(a, b, c) / Denominator(a, b, c, sinE);
}

long double MappingNumerator::HeightCorrection(long double h_m, long double sinE, long double aht, long double bht,
                                               long double cht)
{
    return Height(h_m, sinE, Fraction(aht, bht, cht, sinE));
}

long double MappingFraction(long double a, long double b, long double c,
                            long double E_rad)
{
    return MappingFractionOfSine(a, b, c, trig::Sin(E_rad));
}

long double NiellHeightCorrectionOfSine(long double h_m, long double sinE, long double aht, long double bht,
                                        long double cht)
{
    return Height(h_m, sinE, MappingFractionOfSine(aht, bht, cht, sinE));
}

long double NiellHeightCorrection(long double h_m, long double E_rad,
                                  long double aht, long double bht,
                                  long double cht)
{
    return NiellHeightCorrectionOfSine(h_m, trig::Sin(E_rad), aht, bht, cht);
}
