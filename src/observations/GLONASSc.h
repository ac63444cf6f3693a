#pragma once
// Signal constants of GLONASS and the per-slot frequency tables. The
// channel frequencies keep the ratio 9/7 for every channel, so the
// combination factors below hold for all slots; only the wavelengths
// depend on the channel and live in the tables.
#include "numerics/MathConstants.h"
#include "numerics/matrix.h"

namespace GLONASSc {

inline constexpr long double c = SpeedOfLight_mps;
inline constexpr long double freq0 = 178000000.0L;     // fundamental clock, Hz
inline constexpr long double freq10 = 1602000000.0L;   // G1 at channel 0, Hz
inline constexpr long double freq20 = 1246000000.0L;   // G2 at channel 0, Hz
inline constexpr long double freq3 = 1202025000.0L;    // G3 (CDMA), Hz
inline constexpr long double dfreq10 = 562500.0L;      // G1 channel step, Hz
inline constexpr long double dfreq20 = 437500.0L;      // G2 channel step, Hz

inline constexpr long double lamb10 = 0.18713636579275905118L;  // m
inline constexpr long double lamb20 = 0.24060389887640449438L;  // m
inline constexpr long double lamb3 = 0.24940617541232503483L;   // m

inline constexpr long double LCion1 = 2.53125L;                 // 81/32
inline constexpr long double LCion2 = 1.53125L;                 // 49/32
inline constexpr long double LCwl1 = 4.5L;
inline constexpr long double LCwl2 = 3.5L;
inline constexpr long double LCnl1 = 0.5625L;
inline constexpr long double LCnl2 = 0.4375L;
inline constexpr long double alpha = 1.65306122448979597728L;   // (9/7)²
inline constexpr long double f1_f2 = 1.28571428571428580945L;   // 9/7

/// Number of slots in the tables (R01 to R32, rows 0 to 31).
inline constexpr long NSlots = 32;

// Per-slot tables, zero until SetFrequency fills a row; row = slot - 1.
extern matrix<long double> freq;    // 32x2: F1, F2 carrier, Hz
extern matrix<long double> lamb;    // 32x2: F1, F2 wavelength, m
extern matrix<long double> lambWL;  // 32x1: wide-lane wavelength, m
extern matrix<long double> lambNL;  // 32x1: narrow-lane wavelength, m
extern matrix<long double> alphaG;  // 32x2: (GPS f1 / slot F1, F2)²

/// Fills row prn (zero-based, slot - 1) of the tables for frequency
/// channel k (may be negative or fractional): F1 = 1602 MHz + 562.5 kHz·k,
/// F2 = 1246 MHz + 437.5 kHz·k (GLONASS ICD, edition 5.1), the wavelengths
/// c/F, the wide- and narrow-lane wavelengths, and the squared ratios of
/// GPS L1 to F1 and F2. A row outside 0..31 stops the run through the
/// matrix bounds check.
void SetFrequency(long double k, short prn);

}  // namespace GLONASSc
