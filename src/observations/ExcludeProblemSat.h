#pragma once
// First stage of the preprocessing: the observations that the user's
// satellite problem list names are cleared before anything else sees them.
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"
#include "observations/SatCRX.h"

/// Clears, for every period of the list, the phases (problem 1: L1, L2),
/// the codes (2: C1, P1, P2) or both (3) of the period's satellite at every
/// epoch inside the period, both ends included, and reports the counts on
/// the output stream (totals also on the error stream when verbose). Only
/// types the header lists and values not already null count. Any other
/// problem code warns once per record it meets and clears nothing. Does
/// nothing when isSCrx is false.
void ExcludeProblemSat(RINEXHeader& rnxh, RINEXData& rnxd, SatCRX& scrx, bool isSCrx,
                       bool verbose);
