#pragma once
// Sine and cosine in long double for the angles this program meets:
// elevations, tidal and lunar arguments, sidereal angles. The library
// reduces every argument beyond π/4 by its multi-precision method, which
// costs four times the sine itself; below some 1e6 rad a three-part π/2
// (Cody and Waite) reduces as exactly, the library's own kernel then
// answering on |r| <= π/4.

namespace trig {
/// Largest |x| (rad) reduced here; beyond it the library reduces. k·π/2 is
/// then formed with k below 2^20, so that its first two parts are exact.
inline constexpr long double MaxReduced_rad = 1.0e6L;

/// Sine s and cosine c of x (rad), within an ulp or two of the library's.
void SinCos(long double x, long double& s, long double& c);
/// Sine of x (rad).
long double Sin(long double x);
/// Cosine of x (rad).
long double Cos(long double x);
}  // namespace trig
