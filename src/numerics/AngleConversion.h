#pragma once
// Conversions among radians, degrees, gons and the packed sexagesimal form
// DD.MMSS (degrees, then two digits of minutes and the seconds behind them:
// 45.302512 is 45 deg 30 min 25.12 s). Pi is taken rounded to double
// precision, also in extended-precision work, so that angles agree with
// values written by double-precision programs.
#include <string>
#include <type_traits>

namespace angns {
/// Pi rounded to double precision.
constexpr long double pi = 3.14159265358979311600L;
}  // namespace angns

/// Radians of num degrees: num / 180 * pi.
long double deg2rad(long double num);

/// Double form: pi * (num / 180), in double arithmetic.
double deg2rad(double num);

/// Integer degrees convert in extended precision (without this form an
/// integer argument would be ambiguous between the two above).
template <class T, std::enable_if_t<std::is_integral<T>::value, int> = 0>
long double deg2rad(T num)
{
    return deg2rad(static_cast<long double>(num));
}

/// Degrees of num radians: num * 180 / pi.
long double rad2deg(long double num);

/// Gons of kot degrees: kot * 10/9 (the factor rounded to double precision).
long double deg2gon(long double kot);

/// Gons of kot radians.
long double rad2gon(long double kot);

/// Packed DD.MMSS value of kotv radians, with the sign of the input. Seconds
/// within 1e-13 of 60 carry into the minutes, and 60 minutes into the degrees.
long double rad2dms(long double kotv);

/// Radians of a packed DD.MMSS value, with the sign of the input. A seconds
/// part within 1e-8 s of 100, which no valid packed value has, is the
/// representation error of a whole minute (45.30 stored as 45.2999...) and
/// carries into the minutes.
long double dms2rad(long double kotv);

/// Radians of d degrees, m minutes, s seconds. A negative angle is given by a
/// negative d (minutes and seconds positive): d - m/60 - s/3600; minus zero
/// degrees cannot be expressed.
long double dms2rad(short d, short m, long double s);

/// Decimal degrees of d degrees, m minutes, s seconds, signs as in dms2rad.
long double dms2deg(short d, short m, long double s);

/// The packed value dms as text: degrees in 3 columns, minutes in 3, seconds
/// in ndec + 4 columns with ndec decimals (ndec below 0 counts as 0). A
/// negative angle smaller than one degree is written " -0" followed by the
/// minutes and seconds, so that its sign shows. Seconds within 1e-8 s of 100
/// carry as in dms2rad.
std::string dms2dms(long double dms, int ndec);
