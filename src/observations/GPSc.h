#pragma once
#include "numerics/MathConstants.h"
// Signal constants of GPS. Wavelengths and combination factors are stored
// to the digits the processing has always used, so that results do not
// move with the compiler's evaluation of c/f.

namespace GPSc {

inline constexpr long double c = SpeedOfLight_mps;
inline constexpr long double freq0 = 10230000.0L;     // fundamental clock, Hz
inline constexpr long double freq1 = 1575420000.0L;   // L1, Hz
inline constexpr long double freq2 = 1227600000.0L;   // L2, Hz
inline constexpr long double freq5 = 1176450000.0L;   // L5, Hz

inline constexpr long double lamb0 = 29.30522561094819167238L;  // m
inline constexpr long double lamb1 = 0.19029367279836488099L;   // m
inline constexpr long double lamb2 = 0.24421021342456826394L;   // m
inline constexpr long double lamb5 = 0.25482804879085384063L;   // m
inline constexpr long double lamWL = 0.86191840032200563735L;   // wide lane, m
inline constexpr long double lamNL = 0.10695337814214668494L;   // narrow lane, m

inline constexpr long double LCion1 = 2.54572778016316014771L;  // f1²/(f1²-f2²)
inline constexpr long double LCion2 = 1.54572778016316014771L;  // f2²/(f1²-f2²)
inline constexpr long double LCwl1 = 4.52941176470588224845L;   // f1/(f1-f2)
inline constexpr long double LCwl2 = 3.52941176470588224845L;   // f2/(f1-f2)
inline constexpr long double LCnl1 = 0.56204379562043793594L;   // f1/(f1+f2)
inline constexpr long double LCnl2 = 0.43795620437956206406L;   // f2/(f1+f2)
inline constexpr long double alpha = 1.64694444444444476616L;   // (f1/f2)²
inline constexpr long double f1_f2 = 1.28333333333333343695L;   // f1/f2

}  // namespace GPSc
