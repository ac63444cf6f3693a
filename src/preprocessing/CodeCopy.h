#pragma once
// Receivers deliver C1 or P1, C2 or P2, in varying mixes: a satellite whose
// codes never come in pairs has its one code moved to where the rest of the
// program looks for it.
#include "driver/gCPosC.h"

/// With doCopyFilterC and a header holding C1 and P1: for each satellite of
/// a system in use that never has C1 and P1 together, every record with P1
/// and without C1 gets C1 = P1 (value only). Prints the satellites and the
/// totals when anything was copied.
void C1P1Copy(gCPosC& gc);

/// The twin of C1P1Copy for the second frequency: with doCopyFilterC and a
/// header holding C2 and P2, P2 = C2 where a satellite never has both.
void C2P2Copy(gCPosC& gc);
