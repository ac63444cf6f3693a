#pragma once
// Validation of the command line: turns the raw options into one consistent
// setting before any input is read or any result file is opened.
#include "driver/gCPosC.h"

namespace CheckArgumentsns {
/// Fallback first L4 screening threshold (m) for a negative -tc value.
constexpr long double DefaultThresL40 = 0.05L;
/// Fallback L4-rate threshold (m/sqrt(s)) for a negative -tc value.
constexpr long double DefaultdThresL4 = 0.02L;
/// Reference standard deviation (m) when carrier phase (L3) enters the
/// adjustment: phase residuals, not code ones, then set the scale.
constexpr long double Sig0WithPhase = 0.05L;
/// Highest share (per cent) that -md can ask for.
constexpr double MaxDailyObsShare = 100.0;
/// Most iterations -mi may ask for: the adjustment converges in three to
/// five (the linearisation error falls quadratically), so 100 is ample and
/// still bounds a run whose threshold (-mt) is never met.
constexpr int MaxIterations = 100;
}  // namespace CheckArgumentsns

/// Checks the options of `gc` in a fixed order: satellite systems, the RINEX
/// file, ephemerides and clocks, per-system code bias unknowns, multipath
/// and troposphere files, ionosphere, antenna, code bias and tide files, the
/// a-priori coordinates, the GLONASS channels, the estimation type, the
/// observation list and the numeric settings. A missing must-have file (RINEX,
/// any ephemeris), a named navigation, precise orbit, IONEX, ANTEX, code bias
/// or GLONASS channel file that does not open, or two ionosphere models end
/// the run with a framed error (status 1); every other problem warns on the
/// error stream and drops or resets the setting. Finally derives the
/// reference standard deviation sig0 (0.05 m with L3), the standard
/// deviations of the ionosphere-free combinations per system from the
/// carrier frequencies, and the base weights (sig0/sigma)^2.
/// Also ends the run on a -ti interval that is not positive or a shift not
/// smaller than it, on -mi above MaxIterations, and on GLONASS as the only
/// system with no source of its frequency channels (channel file or GLONASS
/// navigation file); GLONASS beside other systems is dropped with a warning
/// instead. A VMF1 or GPT2 choice in -tm with neither -vm nor -g2 falls
/// back on Saastamoinen and Niell with warnings.
void CheckArguments(gCPosC& gc);

/// After the files are read: when the VIENNA model (4) or the VMF1 mapping
/// function (5) is chosen and the series file lacks one of the site's
/// (marker name's) two series, falls back on Saastamoinen or Niell in
/// gc.TrpModel/TrpMappFun and gc.trpmodel, with a framed warning on the
/// output stream naming point, file and the model used instead.
void CheckTroposphereSite(gCPosC& gc);

/// Standard deviation (m) of the ionosphere-free code combination of two
/// codes with standard deviations sig1 and sig2 (m) on carriers f1_Hz and
/// f2_Hz: sqrt(a^2 sig1^2 + b^2 sig2^2) with a = f1^2/(f1^2-f2^2),
/// b = f2^2/(f1^2-f2^2), by propagation of uncorrelated errors. Needs
/// f1_Hz > f2_Hz > 0.
long double IonoFreeSigma(long double sig1, long double sig2, long double f1_Hz,
                          long double f2_Hz);
