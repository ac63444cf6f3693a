#pragma once
// Data snooping after the first static adjustment: every observation that
// entered it is tested against a bound from its own residual cofactor.
#include "driver/gCPosC.h"
#include "estimation/NormalSystem.h"

/// Cofactor of the residual of an observation with weight p: 1/p less the
/// quadratic form of its design row (coefficients b, columns col, -1 for an
/// empty slot) with Qxx. The epoch clock is no part of Qxx, so its share is
/// not taken out. Negative when the row's share exceeds 1/p (a badly
/// determined unknown); the caller decides. A column outside Qxx stops the
/// run with the framed report.
long double GetQVV(const long double (&b)[ProcStaticns::NSlots], const long (&col)[ProcStaticns::NSlots],
                   const matrix<long double>& Qxx, long double p);

/// With gc.isThresBlunder, tests each used code observation (C1, P1, P2,
/// PC3, PP3) and each used L3 against ThresBlunder times its a-posteriori
/// residual deviation sqrt(s0apost qv); a phase whose deviation is below
/// sigL3G, or whose cofactor is negative, is judged against
/// sqrt(s0apost_L3) ThresBlunder / sin(ELV) instead. An outlier gets its
/// rejection flag (ifX..) and is counted by kind and system (NObsOutl...);
/// an L3 whose satellite has no arc at its epoch is rejected uncounted.
/// A bound that is not a number rejects nothing. Reports on the output
/// stream; without the stored design rows of the adjustment the run ends
/// (status 1). Does nothing without isThresBlunder.
void ResCheck(gCPosC& gc);
