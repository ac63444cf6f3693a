#pragma once
// The combinations that the ambiguity stages work on, formed once after all
// code corrections and filters.
#include "driver/gCPosC.h"

/// Forms, on the observations as corrected and filtered so far, the
/// combinations the chosen observation types need and reports each on the
/// output stream: with ifL3 first the millisecond receiver clock jumps are
/// removed from the phases (RINEXData::CorrMSJumps), so that no
/// combination straddles a jump; then P3 from C1 and P2/C7 (ifPc3), P3 from
/// P1 and P2/C7 (ifPp3), and with ifL3 the ionosphere-free phase L3, the
/// geometry-free L4 and the Melbourne-Wuebbena combination, whose code is
/// C1 when ifPc3 is set and P1 otherwise, matching the P3 in use. A pair
/// missing from the file leaves that combination unformed (its header flag
/// unset). Nothing fails here.
void SetLinearCombinations(gCPosC& gc);
