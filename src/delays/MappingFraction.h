#pragma once
// The normalised continued fraction of Marini (1972) in the form of Herring
// (1992), shared by the UNB3, Niell and VMF1 mapping functions, and the
// Niell height correction used by Niell and VMF1.

/// F(a,b,c,E) = (1 + a/(1 + b/(1 + c))) / (sin E + a/(sin E + b/(sin E + c))):
/// the mapping value for elevation E_rad with coefficients a, b, c. Exactly 1
/// at the zenith; about 1/sin E at high elevation. Meant for 0 < E <= pi/2;
/// at or below the horizon the value is finite but meaningless.
long double MappingFraction(long double a, long double b, long double c,
                            long double E_rad);

/// Niell (1996) hydrostatic height correction (h/1000)(1/sin E - F(aht,
/// bht, cht, E)), to be added to the hydrostatic mapping value of a site at
/// ellipsoidal height h_m (metres); aht, bht, cht are the height
/// coefficients per km (2.53e-5, 5.49e-3, 1.14e-3 in the publication).
/// 0 at h = 0, and at the zenith within round-off.
long double NiellHeightCorrection(long double h_m, long double E_rad,
                                  long double aht, long double bht,
                                  long double cht);
/// MappingFraction and NiellHeightCorrection from sin E, for a caller that
/// evaluates several of them at one elevation: the sine (a long double sine
/// of an angle beyond pi/4 costs a full argument reduction) is taken once.
long double MappingFractionOfSine(long double a, long double b, long double c, long double sinE);
long double NiellHeightCorrectionOfSine(long double h_m, long double sinE, long double aht, long double bht,
                                        long double cht);

/// The numerator 1 + a/(1 + b/(1 + c)) of F, kept for the coefficients it
/// was last formed of: they change once a day at most, the elevation at
/// every record. The values are those of the functions above, bit for bit.
class MappingNumerator {
public:
    long double Of(long double a, long double b, long double c);
    /// F(a, b, c, E) of sin E.
    long double Fraction(long double a, long double b, long double c, long double sinE);
    /// NiellHeightCorrection of sin E.
    long double HeightCorrection(long double h_m, long double sinE, long double aht, long double bht,
                                 long double cht);

private:
    bool set_ = false;
    long double a_ = 0.0L, b_ = 0.0L, c_ = 0.0L, top_ = 0.0L;
};
