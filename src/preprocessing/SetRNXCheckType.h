#pragma once
// Chooses what an observation must hold for the epoch check.
#include "driver/gCPosC.h"

/// Sets CheckType (see CheckRNXEpochs.h) from the observation types the run
/// uses, the last rule that applies deciding: a first code alone 0, P2
/// alone 1, a first code with P2 2, an ionosphere-free code 2, the
/// ionosphere-free phase 3.
void SetRNXCheckType(gCPosC& gpos);
