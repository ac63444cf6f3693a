#pragma once
#include "numerics/MathConstants.h"
// Signal constants of Galileo. The second frequency of every combination
// is E5b (the RINEX band "7"), stored as freq2.

namespace GALILEOc {

inline constexpr long double c = SpeedOfLight_mps;
inline constexpr long double freq0 = 10230000.0L;     // fundamental clock, Hz
inline constexpr long double freq1 = 1575420000.0L;   // E1, Hz
inline constexpr long double freq2 = 1207140000.0L;   // E5b, Hz
inline constexpr long double freq5 = 1176450000.0L;   // E5a, Hz
inline constexpr long double freq8 = 1191795000.0L;   // E5 (AltBOC), Hz

inline constexpr long double lamb0 = 29.30522561094819167238L;  // m
inline constexpr long double lamb1 = 0.19029367279836488099L;   // m
inline constexpr long double lamb2 = 0.24834936958430670909L;   // E5b, m
inline constexpr long double lamb5 = 0.25482804879085384063L;   // m
inline constexpr long double lamb8 = 0.25154700095234499289L;   // m
inline constexpr long double lamWL = 0.81403404474856087971L;   // wide lane, m
inline constexpr long double lamNL = 0.10773980004025070468L;   // narrow lane, m

inline constexpr long double LCion1 = 2.42197712418300614701L;  // f1²/(f1²-f2²)
inline constexpr long double LCion2 = 1.42197712418300659110L;  // f2²/(f1²-f2²)
inline constexpr long double LCwl1 = 4.27777777777777767909L;   // f1/(f1-f2)
inline constexpr long double LCwl2 = 3.27777777777777767909L;   // f2/(f1-f2)
inline constexpr long double LCnl1 = 0.56617647058823528106L;   // f1/(f1+f2)
inline constexpr long double LCnl2 = 0.43382352941176471894L;   // f2/(f1+f2)
inline constexpr long double alpha = 1.70324619362252249744L;   // (f1/f2)²
inline constexpr long double f1_f2 = 1.30508474576271193968L;   // f1/f2

}  // namespace GALILEOc
