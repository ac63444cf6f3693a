#pragma once
// Code-based screening of the ionosphere-free phase: L3 - P3 is the
// ambiguity plus code noise over an arc, so a value far from the arc's mean
// betrays a code blunder or a phase fault at that epoch.
#include "driver/gCPosC.h"

namespace L3Filterns {
/// Variance factor of the ionosphere-free code, LCion1² + LCion2² for GPS:
/// turns the L3 - P3 precision into that of one code.
inline constexpr long double IonoFreeCodeVariance = 8.87000430106258178683L;
}  // namespace L3Filterns

/// Screens L3 - P3 (m) of every arc and stores the arc's final a-priori
/// ambiguity, when gc.ifL3 is set and the solution has an ionosphere-free
/// code (PC3 with ifPc3, else PP3 with ifPp3); nothing otherwise, and xAmb
/// stays what the arcs were built with. An observation takes part when it
/// is of the arc's satellite, OKSAT holds, L3 and the code are not null and
/// ELV is above MinElevation (degrees); its weight is sin²(ELV). One whose
/// standardised residual exceeds P3OutliersThres loses its L3. Then xAmb
/// (m) is the weighted mean of the rest and column 3 of AmbIndex their
/// number. An arc left with fewer than two observations keeps the xAmb it
/// had, so that every ambiguity stays a finite number. Prints per arc the
/// mean, its standard deviation, the deviation of one observation of unit
/// weight and the outliers, then the totals, on the output stream; a
/// precision without redundancy prints "-.--". An arc table or per-record
/// arrays that do not fit the store end the run (status 1).
void L3Filter(gCPosC& gc);
